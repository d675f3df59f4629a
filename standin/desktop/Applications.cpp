#include "standin/desktop/Applications.h"

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
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring name = entry.cFileName;
        const std::wstring path = folder + L"\\" + name;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            const bool isLoop = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if (name != L"." && name != L".." && !isLoop) {
                AddShortcuts(path, applications);
            }
        } else if (IsShortcut(name)) {
            applications.push_back(
                {name.substr(0, name.find_last_of(L'.')), path, Application::Kind::Shortcut});
        }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
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

bool IsProgram(const std::wstring& target) noexcept
{
    const wchar_t* extension = PathFindExtensionW(target.c_str());
    return CompareStringOrdinal(extension, -1, L".exe", -1, TRUE) == CSTR_EQUAL;
}

HRESULT LastError() noexcept
{
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

// Without the shell between, so that a program gets its arguments letter for letter.
HRESULT StartProgram(const Shortcut& shortcut)
{
    std::wstring commandLine = L"\"" + shortcut.target + L"\"";
    if (!shortcut.arguments.empty()) {
        commandLine += L" " + shortcut.arguments;
    }
    const bool hasFolder = PathIsDirectoryW(shortcut.workingFolder.c_str()) != FALSE;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(shortcut.target.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        hasFolder ? shortcut.workingFolder.c_str() : nullptr, &startup, &process)) {
        return LastError();
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return S_OK;
}

HRESULT OpenByShell(const Shortcut& shortcut)
{
    SHELLEXECUTEINFOW execute = {};
    execute.cbSize = sizeof(execute);
    execute.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    execute.lpFile = shortcut.target.c_str();
    execute.lpParameters = shortcut.arguments.c_str();
    execute.lpDirectory = shortcut.workingFolder.empty() ? nullptr : shortcut.workingFolder.c_str();
    execute.nShow = SW_SHOWNORMAL;
    return ShellExecuteExW(&execute) ? S_OK : LastError();
}

HRESULT ActivateStoreApplication(const std::wstring& id)
{
    Microsoft::WRL::ComPtr<IApplicationActivationManager> manager;
    const HRESULT hr = CoCreateInstance(__uuidof(ApplicationActivationManager), nullptr, CLSCTX_INPROC_SERVER,
                                        __uuidof(IApplicationActivationManager),
                                        reinterpret_cast<void**>(manager.GetAddressOf()));
    DWORD processId = 0;
    return SUCCEEDED(hr) ? manager->ActivateApplication(id.c_str(), nullptr, AO_NONE, &processId) : hr;
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
    if (application.kind == Application::Kind::Store) {
        return ActivateStoreApplication(application.origin);
    }
    Shortcut shortcut;
    const HRESULT hr = ReadShortcut(application.origin, shortcut);
    if (FAILED(hr)) {
        return hr;
    }
    return IsProgram(shortcut.target) ? StartProgram(shortcut) : OpenByShell(shortcut);
}

} // namespace standin
