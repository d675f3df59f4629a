#include "proof/Stage.h"

#include "proof/FakeDesk.h"
#include "proof/Held.h"
#include "standin/ModulePath.h"
#include "standin/Names.h"
#include "standin/Settings.h"
#include "standin/store/PackageFiles.h"
#include "support/Apartments.h"
#include "support/LogCapture.h"
#include "support/Text.h"
#include "support/host/Measures.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using proof::CallGate;
using proof::FakeDesk;
using proof::Held;
using proof::Operation;
using test::ToUtf8;

constexpr wchar_t kTileSetting[] = L"ApplicationTileImmersiveActivation";
constexpr wchar_t kPrograms[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";

std::mutex g_sayLock;
std::string g_said;
std::atomic<ULONGLONG> g_saidAt = 0;

void EndWith(const std::string& what)
{
    const std::lock_guard lock(g_sayLock);
    std::printf("%s: %s\n", what.c_str(), g_said.c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* exception)
{
    char text[64];
    std::snprintf(text, sizeof text, "crash 0x%08X at %p",
                  static_cast<unsigned>(exception->ExceptionRecord->ExceptionCode),
                  exception->ExceptionRecord->ExceptionAddress);
    EndWith(text);
    return EXCEPTION_EXECUTE_HANDLER;
}

// Ends the process when an attempt hangs.
void WatchForHang()
{
    constexpr ULONGLONG kLongest = 30000; // milliseconds
    for (;;) {
        Sleep(500);
        const ULONGLONG saidAt = g_saidAt;
        if (saidAt != 0 && GetTickCount64() - saidAt > kLongest) {
            EndWith("hang");
        }
    }
}

// A catalogue whose folder cannot be had lands in the root of the drive.
void DeleteStrayCatalog()
{
    for (const wchar_t* file : {L"\\AppNameList.xml", L"\\AppNameList.xml.bak", L"\\AppNameList.xml.tmp"}) {
        DeleteFileW(file);
    }
}

std::string Manifest(const std::string& name, const std::string& version,
                     const std::vector<std::string>& displayNames)
{
    std::string applications;
    for (const std::string& displayName : displayNames) {
        applications += "<Application Id=\"App\"><VisualElements DisplayName=\"" + displayName +
                        "\"><DefaultTile ShortName=\"" + displayName +
                        " short\" /></VisualElements></Application>";
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Package><Identity Name=\"" + name +
           "\" Publisher=\"CN=Test\" Version=\"" + version + "\" /><Applications>" + applications +
           "</Applications></Package>\n";
}

std::string PackageElement(const std::string& name, const std::string& displayName)
{
    return "<Package PackageFamilyName=\"Vel." + name +
           "_0standin00000\" Version=\"1.0.0.0\"><MetroApp DisplayName=\"" + displayName +
           "\" RubyDisplayName=\"x reading\" /></Package>";
}

std::optional<ULONG_PTR> RefuseMemory(const proof::GateCall&, const proof::Import&)
{
    return 0;
}

// Lets the library raise the one exception that leaves it, of which there must be no memory for the first
// thing, and calls the function while it is there.
template <typename Function> void Raise(const host::Library& library, Function whileRaised)
{
    BOOL isInstalled = FALSE;
    try {
        (void)library.isInstalledById(L"Vel.LongerThanAStringHoldsItself_0standin00000!App", &isInstalled);
    } catch (const std::bad_alloc&) {
        whileRaised();
    }
}

} // namespace

namespace proof {

Stage::Stage() : m_settings(HKEY_LOCAL_MACHINE, test::kSettingsKey)
{
    SetUnhandledExceptionFilter(OnCrash);
    std::thread(WatchForHang).detach();
    FakeDesk::onEnd = [](const char* function) { EndWith(std::string("the library calls ") + function); };

    const HMODULE platform = LoadLibraryW((standin::ModuleFolder() + L"\\StandInPlatform.dll").c_str());
    const auto registerServer =
        standin::FunctionOf<HRESULT(STDAPICALLTYPE*)()>(platform, "DllRegisterServer");
    if (!registerServer || FAILED(registerServer())) {
        throw std::runtime_error("the stand-in cannot be registered");
    }
    standin::ClearSettings();
    standin::SetText(standin::TextSetting::PackageStore, m_folder / L"packages");
    m_settings.SetDword(L"DebugLog", 1);
    SetEnvironmentVariableW(L"LOCALAPPDATA", (m_folder / L"local").c_str());
    SetEnvironmentVariableW(L"APPDATA", (m_folder / L"roaming").c_str());
    SetEnvironmentVariableW(L"ALLUSERSPROFILE", (m_folder / L"allusers").c_str());
    FakeDesk::executable = m_folder / L"host\\Proof.exe";
    SetCurrentDirectoryW(m_folder.Path().c_str());

    const auto addPackage = [&](const wchar_t* name, const std::string& version,
                                const std::vector<std::string>& displayNames, std::string_view ini) {
        standin::WritePackage(m_folder / (std::wstring(L"packages\\") + name),
                              Manifest("Vel." + ToUtf8(name), version, displayNames), ini);
    };
    addPackage(L"Kept", "1.0.0.0", {"x kept"}, "");
    addPackage(L"Changed", "2.0.0.0", {"x new", "x newer"}, "");
    addPackage(L"Amiss", "1.0.0.0", {"x amiss"}, "fail_version = 0x80070005\n");
    addPackage(L"Fresh", "1.0.0.0", {"ms-resource:Name"}, "[en-US]\nresources/Name = x resolved\n");
    addPackage(L"Suite", "1.0.0.0", {"x suite"},
               "family_name = Microsoft.Office.Desktop_8wekyb3d8bbwe\n"
               "dependencies = Vel.Other_0standin00000, Vel.Mail_0standin00000\n");
    test::MakeFolder(m_folder / L"host");
    test::MakeFile(m_folder / (std::wstring(L"allusers") + kPrograms + L"\\x old menu.lnk"));
    test::MakeFile(m_folder / (std::wstring(L"allusers") + kPrograms + L"\\x web.url"));
    test::MakeFile(m_folder / (std::wstring(L"roaming") + kPrograms + L"\\Sub\\x new menu.lnk"));

    host::LookUpPackageManagerClass(); // the first one brings more
    const auto before = static_cast<std::ptrdiff_t>(host::CountHandles());
    host::LookUpPackageManagerClass();
    m_handlesOfALookUp = static_cast<std::ptrdiff_t>(host::CountHandles()) - before;

    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = standin::startScreenClass;
    RegisterClassW(&windowClass);
    m_startScreen = CreateWindowExW(0, standin::startScreenClass, L"", WS_POPUP | WS_VISIBLE, 0, 0, 10, 10,
                                    nullptr, nullptr, nullptr, nullptr);
}

Stage::~Stage()
{
    DeleteStrayCatalog();
    DestroyWindow(m_startScreen);
    SetCurrentDirectoryW(standin::ModuleFolder().c_str());
    standin::ClearSettings();
}

void Stage::Say(std::string_view what)
{
    const std::lock_guard lock(g_sayLock);
    g_said = what;
    g_saidAt = GetTickCount64();
}

void Stage::Reset(Operation operation)
{
    const std::wstring folder = m_folder / L"local\\Vel\\QanHelper\\Proof";
    test::MakeFolder(folder);
    for (const wchar_t* file : {L"\\QanHelperLog.txt", L"\\AppNameList.xml.bak", L"\\AppNameList.xml.tmp"}) {
        DeleteFileW((folder + file).c_str());
    }
    DeleteFileW((m_folder / L"QanHelperLog.txt").c_str());
    DeleteStrayCatalog();
    const std::string menu = ToUtf8(m_folder / (std::wstring(L"allusers") + kPrograms));
    const std::string catalog =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Applications><MetroApps>" +
        PackageElement("Kept", "x kept") + PackageElement("Changed", "x old") +
        PackageElement("Gone", "x gone") +
        "</MetroApps><DesktopApps><DesktopApp DisplayName=\"x old menu\" LnkFileName=\"" + menu +
        "\\x old menu.lnk\" /><DesktopApp DisplayName=\"x lost\" LnkFileName=\"%ALLUSERSPROFILE%\\x lost.lnk\" />"
        "</DesktopApps></Applications>";
    test::WriteFileBytes(folder + L"\\AppNameList.xml", catalog);
    test::WriteFileBytes(m_folder / L"host\\PresetAppNameList.xml", catalog);
    m_settings.SetDword(L"ManifestReaderSetting", operation == Operation::PassOfPlatform ? 0 : 1);
    m_settings.SetDword(L"ClearClipboardWaitTime", 7);
    ShowWindow(m_startScreen, operation == Operation::SearchToShow ? SW_HIDE : SW_SHOWNA);
    FakeDesk::Reset();
    FakeDesk::isThreadHung = operation == Operation::StopOfHung;
    Held::Clear();
}

Outcome Stage::Run(Operation operation, const CallGate::Fault* fault, Runtime runtime)
{
    Reset(operation);
    test::ScopedKey browser(HKEY_CURRENT_USER, test::kBrowserKey);
    if (operation == Operation::BrowserWithoutSetting) {
        browser.Create();
    } else {
        browser.SetDword(kTileSetting, 1);
    }
    HANDLE other = nullptr; // that another process is in its first pass
    if (operation == Operation::StartBeside) {
        other = CreateMutexW(nullptr, FALSE, L"QanHelper_Proof");
    }
    Outcome outcome;
    const auto before = static_cast<std::ptrdiff_t>(host::CountHandles());
    std::thread([&] {
        RunOnThread(operation, fault, runtime, outcome);
        outcome.isApartmentKept = test::ApartmentOfThread() == test::Apartment::kNone;
    }).join();
    outcome.handles = static_cast<std::ptrdiff_t>(host::CountHandles()) - before -
                      m_handlesOfALookUp * static_cast<std::ptrdiff_t>(Held::LookUps());
    if (other) {
        CloseHandle(other);
    }
    outcome.tileSetting = browser.Dword(kTileSetting);
    outcome.held = Held::Describe(runtime == Runtime::Warm);
    return outcome;
}

void Stage::RunOnThread(Operation operation, const CallGate::Fault* fault, Runtime runtime, Outcome& outcome)
{
    Load();
    if (runtime == Runtime::Warm) {
        RaiseFirst();
    }
    const bool isStart = operation == Operation::Start || operation == Operation::StartBeside;
    const bool isStop = operation == Operation::Stop || operation == Operation::StopOfHung;
    const bool isPass = operation == Operation::Pass || operation == Operation::PassOfPlatform ||
                        operation == Operation::PassBesideLaunches;
    if (!isStart) {
        m_isUp = SUCCEEDED(m_library.initialize());
        outcome.namesBefore = Names();
    }
    const std::size_t logBegin = LogBytes().size();
    outcome.result = Carry(operation, fault, outcome);
    outcome.imports = CallGate::Imports();
    outcome.log = Log(logBegin);
    if (isStart) {
        m_isUp = SUCCEEDED(outcome.result);
    }
    outcome.namesAfter = Names();
    if (isPass) {
        (void)RunPass(nullptr);
        outcome.again = Names();
    } else if (!isStart && !isStop) {
        Outcome again;
        const HRESULT hr = Carry(operation, nullptr, again);
        outcome.again = std::to_string(hr) + " " + again.answer;
    }
    if (m_isUp) {
        m_library.finalize();
    }
    FakeDesk::isThreadHung = false;
    if (m_library.initialize() >= 0) {
        outcome.namesAtNextStart = Names();
        m_library.finalize();
    } else {
        outcome.namesAtNextStart = "no start";
    }
    Unload(outcome);
}

void Stage::Load()
{
    host::Load(m_library);
    // The stand-in leads imports of what was loaded to itself when a class of it is asked for.
    const auto getClass = standin::FunctionOf<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(
        GetModuleHandleW(L"StandInPlatform.dll"), "DllGetClassObject");
    void* nothing = nullptr;
    getClass(GUID{}, GUID{}, &nothing);
    std::map<std::string, void*> functions = Held::Functions();
    functions.merge(FakeDesk::Functions());
    CallGate::Install(m_library.module, functions);
}

// The first exception makes the C++ runtime in the library ask for what it keeps for the next ones: some for
// the process, some for each thread, to be used again by later threads, and none of it is given back. That is
// counted with what it has asked for while it was loaded. Two threads of an operation raise at most.
void Stage::RaiseFirst()
{
    const auto raise = [this] {
        const CallGate::Fault fault{{"malloc"}, 0, false, RefuseMemory};
        CallGate::Watch(&fault);
        Raise(m_library, Held::Clear);
        CallGate::Ignore();
    };
    raise();
    std::thread(raise).join();
}

int Stage::RaiseOnThreads(int threads, int rounds, Exceptions exceptions)
{
    const bool areKept = exceptions == Exceptions::Keep;
    std::atomic<int> raised = 0;
    std::thread([&] {
        Load();
        const CallGate::Fault fault{{"malloc", "calloc", "realloc"}, 0, true, RefuseMemory, true};
        for (int round = 0; round < rounds; ++round) {
            const int all = raised + threads;
            const auto waitForAll = [&] {
                for (++raised; raised < all;) {
                    SwitchToThread();
                }
            };
            CallGate::Watch(&fault);
            std::vector<std::thread> running;
            for (int left = threads; left-- > 0;) {
                running.emplace_back([&] {
                    bool isOver = false;
                    Raise(m_library, [&] { areKept ? waitForAll() : void(isOver = true); });
                    if (isOver) {
                        waitForAll();
                    }
                });
                while (!areKept && raised < all - left) {
                    SwitchToThread();
                }
            }
            for (std::thread& thread : running) {
                thread.join();
            }
            CallGate::Ignore();
        }
        Outcome outcome;
        Unload(outcome);
    }).join();
    return raised;
}

void Stage::Unload(Outcome& outcome)
{
    // Threads that were never run have not given back their references.
    for (; FakeDesk::waitingThreads > 0; --FakeDesk::waitingThreads) {
        Held::GiveBack(Held::Kind::Module, m_library.module);
        FreeLibrary(m_library.module);
    }
    FreeLibrary(m_library.module);
    outcome.isUnloaded = !host::IsInMemory();
    while (host::IsInMemory()) {
        FreeLibrary(m_library.module);
    }
    (void)Held::FreeThreadPlaces();
}

} // namespace proof
