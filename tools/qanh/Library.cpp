#include "Library.h"

#include "Failure.h"
#include "common/HostEnvironment.h"

namespace {

// Without a search: not in the current folder, and not along the PATH.
std::wstring FullPath(const std::wstring& path)
{
    wchar_t full[MAX_PATH];
    if (path.empty()) {
        if (!GetHostExecutablePath(full)) {
            throw Failure{L"cannot tell where this program is", E_FAIL};
        }
        const std::wstring program = full;
        return program.substr(0, program.rfind(L'\\') + 1) + L"QanHelper.dll";
    }
    const DWORD length = GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    if (length == 0 || length >= MAX_PATH) {
        throw Failure{L"cannot load " + path, HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE)};
    }
    return full;
}

HMODULE Load(const std::wstring& path)
{
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        throw Failure{L"cannot load " + path, HRESULT_FROM_WIN32(GetLastError())};
    }
    return module;
}

// The function of this name, as one of the type that it is wanted for.
class Export
{
public:
    Export(HMODULE module, const char* name) : m_address(GetProcAddress(module, name))
    {
        if (!m_address) {
            throw Failure{L"this is not the library, or one of another version",
                          HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND)};
        }
    }

    template <typename Function> operator Function*() const
    {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(m_address));
    }

private:
    FARPROC m_address;
};

} // namespace

Library::Library(const std::wstring& path)
    : m_module(Load(FullPath(path))), initialize(Export(m_module.Get(), "QanhInitialize")),
      finalize(Export(m_module.Get(), "QanhFinalize")),
      releaseString(Export(m_module.Get(), "QanhReleaseString")),
      isInstalledByAppUserModeId(Export(m_module.Get(), "QanhIsInstalledByAppUserModeID")),
      getAppDisplayNameByPfn(Export(m_module.Get(), "QanhGetAppDisplayNameByPFN")),
      launchBySearch(Export(m_module.Get(), "QanhLaunchBySearch")),
      launchBrowserBySearch(Export(m_module.Get(), "QanhLaunchIEBySearch")),
      launchByManager(Export(m_module.Get(), "QanhLaunchByManager"))
{
}
