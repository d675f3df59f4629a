#include "support/host/Library.h"

#include "standin/ModulePath.h"

#include <stdexcept>

namespace {

constexpr wchar_t libraryName[] = L"QanHelper.dll";

template <typename Function> void Find(HMODULE module, const char* name, Function& function)
{
    function = standin::FunctionOf<Function>(module, name);
    if (!function) {
        throw std::runtime_error(std::string("no export ") + name);
    }
}

} // namespace

namespace host {

void Load(Library& library, DWORD flags)
{
    library.module = LoadLibraryExW((standin::ModuleFolder() + L"\\" + libraryName).c_str(), nullptr, flags);
    if (!library.module) {
        throw std::runtime_error("not loaded, error " + std::to_string(GetLastError()));
    }
    Find(library.module, "QanhInitialize", library.initialize);
    Find(library.module, "QanhFinalize", library.finalize);
    Find(library.module, "QanhReleaseString", library.releaseString);
    Find(library.module, "QanhIsInstalled", library.isInstalled);
    Find(library.module, "QanhIsInstalledByAppUserModeID", library.isInstalledById);
    Find(library.module, "QanhGetAppDisplayNameByPFN", library.getDisplayName);
    Find(library.module, "QanhLaunchBySearch", library.launchBySearch);
    Find(library.module, "QanhLaunchIEBySearch", library.launchBrowser);
    Find(library.module, "QanhLaunchByManager", library.launchByManager);
}

bool Unload(Library& library)
{
    const bool freed = FreeLibrary(library.module) != FALSE;
    library.module = nullptr;
    return freed;
}

bool IsInMemory()
{
    return GetModuleHandleW(libraryName) != nullptr;
}

} // namespace host
