#include "support/host/FileWatch.h"

#include "standin/platform/ImportPatch.h"

#include <windows.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::mutex g_lock;
std::vector<std::wstring> g_paths;

HANDLE WINAPI CreateFileNoted(const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD flags, HANDLE model)
{
    {
        const std::lock_guard<std::mutex> lock(g_lock);
        g_paths.emplace_back(path ? path : L"");
    }
    return CreateFileW(path, access, sharing, security, disposition, flags, model);
}

} // namespace

namespace host {

void WatchFiles()
{
    // Not that by which kernel32.dll itself gets it.
    if (standin::PatchImports({"kernel32.dll", "CreateFileW", reinterpret_cast<void*>(&CreateFileNoted)},
                              GetModuleHandleW(nullptr)) == 0) {
        throw std::runtime_error("no module imports CreateFileW");
    }
}

std::size_t CountOpenings(std::wstring_view end)
{
    const std::lock_guard<std::mutex> lock(g_lock);
    return static_cast<std::size_t>(std::count_if(
        g_paths.begin(), g_paths.end(), [end](const std::wstring& path) { return path.ends_with(end); }));
}

} // namespace host
