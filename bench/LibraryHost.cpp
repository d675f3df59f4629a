#include "Library.h"

#include "QanHelper.h"
#include "Session.h"
#include "standin/ModulePath.h"
#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/TryStart.h"
#include "standin/platform/ImportPatch.h"

#include <stdexcept>

namespace bench {

namespace {

double g_slept;

void WINAPI CountedSleep(DWORD milliseconds)
{
    const double begin = Now();
    Sleep(milliseconds);
    g_slept += Now() - begin;
}

template <typename Function> Function Find(HMODULE module, const char* name)
{
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (!function) {
        throw std::runtime_error(std::string("no function ") + name);
    }
    return function;
}

HMODULE LoadBeside(const wchar_t* name)
{
    const HMODULE module = LoadLibraryW((standin::ModuleFolder() + L"\\" + name).c_str());
    if (!module) {
        throw std::runtime_error("a library cannot be loaded");
    }
    return module;
}

void RegisterPlatform()
{
    const HMODULE platform = LoadBeside(L"StandInPlatform.dll");
    if (FAILED(Find<HRESULT(STDAPICALLTYPE*)()>(platform, "DllRegisterServer")())) {
        throw std::runtime_error("the stand-in's classes cannot be registered");
    }
    FreeLibrary(platform);
}

template <typename Condition> void WaitUntil(Condition condition, const char* what)
{
    for (const ULONGLONG end = GetTickCount64() + 20000; !condition(); Sleep(5)) {
        if (GetTickCount64() > end) {
            throw std::runtime_error(std::string("in vain waited for ") + what);
        }
    }
}

bool IsThere(HANDLE object)
{
    if (object) {
        CloseHandle(object);
    }
    return object != nullptr;
}

} // namespace

std::wstring HostName()
{
    const std::wstring path = standin::ModulePath();
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    return name.substr(0, name.find(L'.'));
}

Library::Library()
    : m_local(L"LOCALAPPDATA", (m_folder / L"local").c_str()),
      m_roaming(L"APPDATA", (m_folder / L"roaming").c_str()),
      m_common(L"ALLUSERSPROFILE", (m_folder / L"common").c_str())
{
    RegisterPlatform();
    standin::SetText(standin::TextSetting::PackageStore, m_folder / L"packages");
    test::MakeFolder(m_folder / L"packages");
    test::MakeFolder(m_folder / (L"local\\Vel\\QanHelper\\" + HostName()));
    m_module = LoadBeside(L"QanHelper.dll");
}

Library::~Library()
{
    FreeLibrary(m_module);
    standin::SetText(standin::TextSetting::PackageStore, L"");
}

ULONGLONG Library::FileSize()
{
    WIN32_FILE_ATTRIBUTE_DATA file{};
    if (!GetFileAttributesExW((standin::ModuleFolder() + L"\\QanHelper.dll").c_str(), GetFileExInfoStandard,
                              &file)) {
        throw std::runtime_error("the library's file is not there");
    }
    return (ULONGLONG{file.nFileSizeHigh} << 32) + file.nFileSizeLow;
}

std::wstring Library::CatalogFile() const
{
    return m_folder / (L"local\\Vel\\QanHelper\\" + HostName() + L"\\AppNameList.xml");
}

void Library::Initialize() const
{
    if (Find<decltype(&QanhInitialize)>(m_module, "QanhInitialize")() != S_OK) {
        throw std::runtime_error("the library does not come up");
    }
}

void Library::WaitForFirstPass() const
{
    WaitUntil([] { return !IsThere(OpenMutexW(SYNCHRONIZE, FALSE, (L"QanHelper_" + HostName()).c_str())); },
              "the end of the first pass");
    // Until the thread waits again.
    Sleep(20);
}

void Library::Finalize() const
{
    Find<decltype(&QanhFinalize)>(m_module, "QanhFinalize")();
}

double Library::LaunchBeyondPauses() const
{
    void* const sleep =
        standin::PatchImport(m_module, {nullptr, "Sleep", reinterpret_cast<void*>(&CountedSleep)});
    if (!sleep) {
        throw std::runtime_error("the library does not sleep");
    }
    g_slept = 0;
    const double begin = Now();
    const HRESULT hr =
        Find<decltype(&QanhLaunchBySearch)>(m_module, "QanhLaunchBySearch")(L"Mail", QANH_SEARCH_SHOW, TRUE);
    const double taken = Now() - begin;
    standin::PatchImport(m_module, {nullptr, "Sleep", sleep});
    if (hr != S_OK) {
        throw std::runtime_error("the launch fails");
    }
    return taken - g_slept;
}

StandInDesktop::StandInDesktop()
{
    std::wstring program = L"\"" + standin::ModuleFolder() + L"\\StandInDesktop.exe\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    const BOOL isStarted = standin::TryStart([&] {
        return CreateProcessW(nullptr, program.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                              &process);
    });
    if (!isStarted) {
        throw std::runtime_error("the stand-in desktop cannot be started");
    }
    CloseHandle(process.hThread);
    m_process = process.hProcess;
    WaitUntil(
        [] {
            const HANDLE ready = OpenEventW(SYNCHRONIZE, FALSE, standin::readyEventName);
            const bool isSet = ready && WaitForSingleObject(ready, 0) == WAIT_OBJECT_0;
            return IsThere(ready) && isSet;
        },
        "the stand-in desktop");
}

StandInDesktop::~StandInDesktop()
{
    PostMessageW(FindWindowW(standin::startScreenClass, nullptr), WM_CLOSE, 0, 0);
    if (WaitForSingleObject(m_process, 5000) != WAIT_OBJECT_0) {
        TerminateProcess(m_process, 1);
    }
    CloseHandle(m_process);
}

void StandInDesktop::ClosePane() const
{
    const auto isOpen = [] {
        const HWND pane = FindWindowW(standin::searchPaneClass, nullptr);
        return pane && IsWindowVisible(pane);
    };
    PostMessageW(FindWindowW(standin::searchPaneClass, nullptr), WM_CLOSE, 0, 0);
    WaitUntil([&] { return !isOpen(); }, "the end of the search pane");
}

} // namespace bench
