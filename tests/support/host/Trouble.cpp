#include "support/host/Trouble.h"

#include "support/PiecewiseStream.h"
#include "support/host/Patch.h"

#include <shlwapi.h>

#include <atomic>
#include <cwchar>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

std::atomic<LONGLONG> g_bytesLeft;
constexpr ULONG pieceSize = 64;
DWORD g_pause = 0;         // before each piece; milliseconds
DWORD volatile g_hang = 0; // milliseconds
std::atomic<void (*)()> g_function;

BOOL WINAPI WriteToFullDisk(HANDLE file, const void* bytes, DWORD size, DWORD* pWritten,
                            OVERLAPPED* overlapped)
{
    if (GetFileType(file) == FILE_TYPE_DISK && g_bytesLeft.fetch_sub(size) < static_cast<LONGLONG>(size)) {
        if (pWritten) {
            *pWritten = 0;
        }
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
    return WriteFile(file, bytes, size, pWritten, overlapped);
}

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

BOOL WINAPI FlushNothing(HANDLE)
{
    return TRUE;
}

// False: the path is of this machine.
bool HangsAt(const wchar_t* path)
{
    constexpr std::wstring_view share = L"\\\\dead\\";
    if (!path || std::wcsncmp(path, share.data(), share.size()) != 0) {
        return false;
    }
    Sleep(g_hang);
    SetLastError(ERROR_BAD_NETPATH);
    return true;
}

BOOL WINAPI ExistsOnShare(const wchar_t* path)
{
    return HangsAt(path) ? FALSE : PathFileExistsW(path);
}

HANDLE WINAPI FindOnShare(const wchar_t* pattern, WIN32_FIND_DATAW* found)
{
    return HangsAt(pattern) ? INVALID_HANDLE_VALUE : FindFirstFileW(pattern, found);
}

BOOL WINAPI ExistsAndCalls(const wchar_t* path)
{
    if (const auto function = g_function.exchange(nullptr)) {
        function();
    }
    return PathFileExistsW(path);
}

DWORD WINAPI Crash(void*)
{
    RaiseException(static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION), EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return 0;
}

} // namespace

namespace host {

void FillDisk(LONGLONG bytesLeft)
{
    g_bytesLeft = bytesLeft;
    // Not this program's, whose answers go through it, nor that by which kernel32.dll itself gets it.
    static const unsigned s_patched = standin::PatchImports(
        {"kernel32.dll", "WriteFile", reinterpret_cast<void*>(&WriteToFullDisk)}, GetModuleHandleW(nullptr));
    if (s_patched == 0) {
        throw std::runtime_error("no module imports WriteFile");
    }
}

void SlowDownSaves(HMODULE library, DWORD pause)
{
    g_pause = pause;
    Patch(library, "SHCreateStreamOnFileW", &OpenSlowly);
}

void QuickenDisk(HMODULE library)
{
    Patch(library, "FlushFileBuffers", &FlushNothing);
}

void HangShare(HMODULE library, DWORD milliseconds)
{
    g_hang = milliseconds;
    Patch(library, "PathFileExistsW", &ExistsOnShare);
    Patch(library, "FindFirstFileW", &FindOnShare);
}

void CallInPass(HMODULE library, void (*function)())
{
    g_function = function;
    Patch(library, "PathFileExistsW", &ExistsAndCalls);
}

void CrashElsewhere()
{
    CreateThread(nullptr, 0, &Crash, nullptr, 0, nullptr);
    Sleep(INFINITE);
}

} // namespace host
