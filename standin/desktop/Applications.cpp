#include "standin/desktop/Applications.h"

#include "standin/Files.h"
#include "standin/Result.h"
#include "standin/Shortcuts.h"
#include "standin/desktop/Query.h"
#include "standin/store/Resources.h"

#include <shellapi.h>
#include <shlwapi.h>
#include <shobjidl.h>

#include <wrl/client.h>

#include <algorithm>

namespace standin {

namespace {

constexpr wchar_t programsFolder[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";

std::wstring EnvironmentVariable(const wchar_t* name)
{
    std::wstring value(32768, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

void AddShortcuts(const std::wstring& folder, std::vector<Application>& applications)
{
    ForEachEntry(folder, [&](const std::wstring& name, DWORD attributes) {
        const std::wstring path = folder + L"\\" + name;
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
            const bool isLoop = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if (!isLoop) {
                AddShortcuts(path, applications);
            }
        } else if (IsShortcut(name)) {
            applications.push_back(
                {name.substr(0, name.find_last_of(L'.')), path, Application::Kind::Shortcut});
        }
    });
}

void AddStoreApplications(std::vector<Application>& applications)
{
    for (const auto& package : ReadPackageStore()) {
        if (!package->isInstalled || package->isFramework) {
            continue;
        }
        for (const ManifestApplication& application : package->manifest.applications) {
            applications.push_back({DisplayName(*package, application), package->UserModelId(application),
                                    Application::Kind::Store});
        }
    }
}

void Open(const Shortcut& shortcut)
{
    const bool hasFolder = PathIsDirectoryW(shortcut.workingFolder.c_str()) != FALSE;
    if (HasExtension(shortcut.target, L".exe")) {
        StartProgram(shortcut.target, shortcut.arguments,
                     hasFolder ? shortcut.workingFolder : std::wstring());
        return;
    }
    SHELLEXECUTEINFOW execute = {};
    execute.cbSize = sizeof(execute);
    execute.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    execute.lpFile = shortcut.target.c_str();
    execute.lpParameters = shortcut.arguments.c_str();
    execute.lpDirectory = shortcut.workingFolder.empty() ? nullptr : shortcut.workingFolder.c_str();
    execute.nShow = SW_SHOWNORMAL;
    if (!ShellExecuteExW(&execute)) {
        throw Failure(LastError());
    }
}

void ActivateStoreApplication(const std::wstring& id)
{
    Microsoft::WRL::ComPtr<IApplicationActivationManager> manager;
    Check(CoCreateInstance(__uuidof(ApplicationActivationManager), nullptr, CLSCTX_INPROC_SERVER,
                           __uuidof(IApplicationActivationManager),
                           reinterpret_cast<void**>(manager.GetAddressOf())));
    DWORD processId = 0;
    Check(manager->ActivateApplication(id.c_str(), nullptr, AO_NONE, &processId));
}

} // namespace

std::vector<Application> ListApplications()
{
    std::vector<Application> applications;
    for (const wchar_t* variable : {L"ALLUSERSPROFILE", L"APPDATA"}) {
        const std::wstring base = EnvironmentVariable(variable);
        if (!base.empty()) {
            AddShortcuts(base + programsFolder, applications);
        }
    }
    AddStoreApplications(applications);
    std::sort(applications.begin(), applications.end(),
              [](const Application& left, const Application& right) {
                  const int order = CompareNames(left.name, right.name);
                  return order != 0 ? order < 0 : CompareNames(left.origin, right.origin) < 0;
              });
    return applications;
}

HRESULT StartApplication(const Application& application)
{
    return ResultOf([&] {
        if (application.kind == Application::Kind::Store) {
            ActivateStoreApplication(application.origin);
        } else {
            Open(ReadShortcut(application.origin));
        }
    });
}

} // namespace standin
