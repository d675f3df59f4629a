#include "support/host/SlowDisk.h"

#include "standin/platform/ImportPatch.h"
#include "support/PiecewiseStream.h"

#include <shlwapi.h>

namespace {

constexpr ULONG pieceSize = 64;

DWORD g_pause = 0; // milliseconds

HRESULT WINAPI OpenSlowly(const wchar_t* path, DWORD mode, IStream** stream)
{
    const HRESULT hr = SHCreateStreamOnFileW(path, mode, stream);
    if (SUCCEEDED(hr) && (mode & STGM_WRITE) != 0) {
        *stream = new test::PiecewiseStream(*stream, pieceSize, [] {
            Sleep(g_pause);
            return S_OK;
        });
    }
    return hr;
}

} // namespace

namespace host {

void SlowDownSaves(DWORD pause)
{
    g_pause = pause;
    standin::PatchImports({"shlwapi.dll", "SHCreateStreamOnFileW", reinterpret_cast<void*>(&OpenSlowly)},
                          GetModuleHandleW(nullptr));
}

} // namespace host
