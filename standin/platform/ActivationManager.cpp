#include "standin/platform/Makers.h"

#include "standin/Files.h"
#include "standin/Journal.h"
#include "standin/ModulePath.h"
#include "standin/Settings.h"
#include "standin/Text.h"
#include "standin/platform/ServedObject.h"
#include "standin/store/Resources.h"

#include <shobjidl.h>

#include <string>

namespace standin {

namespace {

constexpr auto notRegistered = static_cast<HRESULT>(0x80270254);   // E_APPLICATION_NOT_REGISTERED
constexpr auto cannotBeStarted = static_cast<HRESULT>(0x8027025B); // E_APPLICATION_ACTIVATION_EXEC_FAILURE

constexpr wchar_t ownApplication[] = L"StandInApp.exe"; // beside this library

struct Found
{
    std::shared_ptr<const StorePackage> package; // null: there is no such application
    const ManifestApplication* application = nullptr;
};

Found FindApplication(std::wstring_view userModelId)
{
    for (const auto& package : ReadPackageStore()) {
        if (!package->isInstalled) {
            continue;
        }
        for (const ManifestApplication& application : package->manifest.applications) {
            if (EqualIgnoringCase(package->UserModelId(application), userModelId)) {
                return {package, &application};
            }
        }
    }
    return {};
}

std::wstring OwnFolder()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(ownApplication), &module);
    return ModuleFolder(module);
}

// One argument for a program that takes its command line apart in the usual way.
std::wstring Quoted(const std::wstring& argument)
{
    std::wstring quoted = L"\"";
    size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L"\"";
}

// The package's own program, or a window with the application's name when the package brings none.
DWORD Start(const Found& found, const wchar_t* arguments)
{
    const std::wstring* executable = found.application->Find(L"Executable");
    const std::wstring program = found.package->folder + L"\\" + (executable ? *executable : std::wstring());
    const DWORD attributes = GetFileAttributesW(program.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return StartProgram(program, arguments ? arguments : L"", found.package->folder);
    }
    const std::wstring folder = OwnFolder();
    return StartProgram(folder + L"\\" + ownApplication,
                        Quoted(DisplayName(*found.package, *found.application)), folder);
}

class ActivationManager final : public ServedObject<IApplicationActivationManager>
{
public:
    HRESULT STDMETHODCALLTYPE ActivateApplication(LPCWSTR userModelId, LPCWSTR arguments, ACTIVATEOPTIONS,
                                                  DWORD* processId) override
    {
        return Give(processId, [&] {
            Check(userModelId ? S_OK : E_POINTER);
            Check(GetFailure(Setting::FailActivation));
            const Found found = FindApplication(userModelId);
            Check(found.package && found.application ? S_OK : notRegistered);
            try {
                *processId = Start(found, arguments);
            } catch (const Failure&) {
                return cannotBeStarted;
            }
            WriteJournal({L"activated", userModelId, arguments ? arguments : L"(null)"});
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE ActivateForFile(LPCWSTR, IShellItemArray*, LPCWSTR, DWORD*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ActivateForProtocol(LPCWSTR, IShellItemArray*, DWORD*) override
    {
        return E_NOTIMPL;
    }
};

} // namespace

HRESULT CreateActivationManager(REFIID interfaceId, void** object) noexcept
{
    const HRESULT failure = GetFailure(Setting::FailActivationManager);
    return FAILED(failure) ? failure : CreateComObject<ActivationManager>(interfaceId, object);
}

} // namespace standin
