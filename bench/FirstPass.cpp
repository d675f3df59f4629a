// The first refresh pass of a machine: the real thread, over folders and manifests on the disk. The system's
// packages are objects of the tests, which answer at once.

#include "BareXml.h"
#include "Catalogs.h"
#include "Library.h"
#include "Measures.h"
#include "discovery/PackageManager.h"
#include "support/FakePackages.h"
#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr wchar_t kProgramsFolder[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";
constexpr DWORD kFirstWait = 1000; // milliseconds, of the thread before its first pass
constexpr DWORD kLongWait = 60000; // the shortest pause between two passes

// As the tools of the Store make them.
std::string Manifest(const std::wstring& name, const StoreApp& app)
{
    const std::string package = test::ToUtf8(name);
    const std::string displayName = test::ToUtf8(app.displayName);
    std::string resources;
    for (const char* language : {"en-US", "de-DE", "fr-FR", "es-ES", "it-IT", "ja-JP", "ko-KR", "pt-BR",
                                 "ru-RU", "zh-CN", "zh-TW", "nl-NL"}) {
        resources += "    <Resource Language=\"" + std::string(language) + "\" />\r\n";
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
           "<Package xmlns=\"http://schemas.microsoft.com/appx/2010/manifest\" "
           "xmlns:build=\"http://schemas.microsoft.com/developer/appx/2012/build\" IgnorableNamespaces=\"build\">\r\n"
           "  <Identity Name=\"" +
           package +
           "\" Publisher=\"CN=Contoso Corporation, O=Contoso Corporation, L=Redmond, S=Washington, C=US\" "
           "Version=\"1.2.0.0\" ProcessorArchitecture=\"x64\" />\r\n"
           "  <Properties>\r\n    <DisplayName>" +
           displayName +
           "</DisplayName>\r\n"
           "    <PublisherDisplayName>Contoso Corporation</PublisherDisplayName>\r\n"
           "    <Logo>Assets\\StoreLogo.png</Logo>\r\n"
           "    <Description>Does what it says, and shows it on a tile.</Description>\r\n"
           "  </Properties>\r\n"
           "  <Prerequisites>\r\n    <OSMinVersion>6.2.1</OSMinVersion>\r\n"
           "    <OSMaxVersionTested>6.2.1</OSMaxVersionTested>\r\n  </Prerequisites>\r\n"
           "  <Resources>\r\n" +
           resources +
           "  </Resources>\r\n"
           "  <Dependencies>\r\n    <PackageDependency Name=\"Microsoft.VCLibs.110.00\" "
           "Publisher=\"CN=Microsoft Corporation\" MinVersion=\"11.0.50727.1\" />\r\n"
           "    <PackageDependency Name=\"Microsoft.WinJS.1.0\" Publisher=\"CN=Microsoft Corporation\" "
           "MinVersion=\"1.0.9200.20512\" />\r\n  </Dependencies>\r\n"
           "  <Applications>\r\n    <Application Id=\"App\" Executable=\"App.exe\" EntryPoint=\"App.Main\">\r\n"
           "      <VisualElements DisplayName=\"" +
           displayName + "\" Logo=\"Assets\\Logo.png\" SmallLogo=\"Assets\\SmallLogo.png\" Description=\"" +
           displayName +
           "\" ForegroundText=\"light\" BackgroundColor=\"#464646\">\r\n"
           "        <DefaultTile ShowName=\"allLogos\" ShortName=\"" +
           test::ToUtf8(app.shortName) +
           "\" WideLogo=\"Assets\\WideLogo.png\" />\r\n"
           "        <SplashScreen Image=\"Assets\\SplashScreen.png\" />\r\n"
           "        <InitialRotationPreference>\r\n          <Rotation Preference=\"portrait\" />\r\n"
           "          <Rotation Preference=\"landscape\" />\r\n        </InitialRotationPreference>\r\n"
           "      </VisualElements>\r\n      <Extensions>\r\n"
           "        <Extension Category=\"windows.search\" />\r\n"
           "        <Extension Category=\"windows.protocol\">\r\n          <Protocol Name=\"contoso\" />\r\n"
           "        </Extension>\r\n"
           "        <Extension Category=\"windows.backgroundTasks\" EntryPoint=\"Tasks.Update\">\r\n"
           "          <BackgroundTasks>\r\n            <Task Type=\"timer\" />\r\n          </BackgroundTasks>\r\n"
           "        </Extension>\r\n      </Extensions>\r\n    </Application>\r\n  </Applications>\r\n"
           "  <Capabilities>\r\n    <Capability Name=\"internetClient\" />\r\n"
           "    <Capability Name=\"picturesLibrary\" />\r\n    <DeviceCapability Name=\"webcam\" />\r\n"
           "  </Capabilities>\r\n</Package>\r\n";
}

// Folders of a Start menu, seven tenths of it all users', manifests of packages, and a place for the
// catalogue.
class Machine
{
public:
    Machine(std::size_t shortcuts, std::size_t packages)
        : m_local(L"LOCALAPPDATA", (m_folder / L"local").c_str()),
          m_roaming(L"APPDATA", (m_folder / L"roaming").c_str()),
          m_common(L"ALLUSERSPROFILE", (m_folder / L"common").c_str())
    {
        programs = {(m_folder / L"common") + kProgramsFolder, (m_folder / L"roaming") + kProgramsFolder};
        for (const std::wstring& folder : programs) {
            test::MakeFolder(folder);
            // Not all files there are shortcuts.
            test::MakeFile(folder + L"\\desktop.ini");
        }
        for (std::size_t number = 0; number < shortcuts; ++number) {
            AddShortcut(number);
        }
        for (std::size_t number = 0; number < packages; ++number) {
            AddPackage(number);
        }
    }

    // Where the library saves.
    [[nodiscard]] std::wstring CatalogFile() const
    {
        return m_folder / (L"local\\Vel\\QanHelper\\" + HostName() + L"\\AppNameList.xml");
    }
    [[nodiscard]] std::wstring OtherFile() const { return m_folder / L"bare.xml"; }

    std::vector<std::wstring> programs;
    std::vector<test::PackageFacts> packages;
    Catalog catalog; // what there is to be found

private:
    void AddShortcut(std::size_t number)
    {
        const std::wstring folder = MenuFolder(number);
        const std::wstring name = AppName(number);
        std::wstring path = programs[number / 6 % 10 < 7 ? 0 : 1];
        path +=
            (folder.empty() ? L"\\" : L"\\" + folder + L"\\") + name + (number % 10 == 9 ? L".url" : L".lnk");
        test::MakeFile(path);
        catalog.desktopApps.push_back({name, path, L""});
    }

    void AddPackage(std::size_t number)
    {
        StorePackage package = MakePackage(number, number);
        package.version = L"1.2.0.0";
        package.apps.front().reading.clear();
        test::PackageFacts facts;
        facts.familyName = package.familyName;
        facts.name = package.familyName.substr(0, package.familyName.find(L'_'));
        facts.fullName = facts.name + L"_1.2.0.0_x64__8wekyb3d8bbwe";
        facts.version = {1, 2, 0, 0};
        facts.path = m_folder / (L"WindowsApps\\" + facts.fullName);
        test::MakeFolder(facts.path);
        test::WriteFileBytes(facts.path + L"\\AppxManifest.xml", Manifest(facts.name, package.apps.front()));
        packages.push_back(std::move(facts));
        catalog.packages.push_back(std::move(package));
    }

    test::TemporaryFolder m_folder;
    test::ScopedEnvironment m_local;
    test::ScopedEnvironment m_roaming;
    test::ScopedEnvironment m_common;
};

// The thread's pauses take no time: it begins its pass at once, and behind the pass it is told to stop.
class NoPauses
{
public:
    NoPauses() : m_patch("WaitForSingleObject", Wait) { s_original = m_patch.Original(); }

    static DWORD WaitFor(HANDLE handle) { return s_original(handle, INFINITE); }

private:
    static DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds)
    {
        if (milliseconds == kFirstWait) {
            return WAIT_TIMEOUT;
        }
        return milliseconds >= kLongWait ? WAIT_OBJECT_0 : s_original(handle, milliseconds);
    }

    static inline decltype(&WaitForSingleObject) s_original = &WaitForSingleObject;

    test::ImportPatch<decltype(&WaitForSingleObject)> m_patch;
};

// One run of the library's thread over a machine.
class Pass
{
public:
    explicit Pass(const Machine& machine)
    {
        DeleteFileW(machine.CatalogFile().c_str());
        m_store.objects.isQuiet = true;
        for (const test::PackageFacts& facts : machine.packages) {
            m_store.Add(facts);
        }
        m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    ~Pass() { CloseHandle(m_manager.m_hExitEvent); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    void Run()
    {
        // The thread gives this back.
        HMODULE module = nullptr;
        GetModuleHandleExW(0, nullptr, &module);
        const HANDLE thread =
            CreateThread(nullptr, 0, CQanhPackageManager::RefreshThread, &m_manager, 0, nullptr);
        NoPauses::WaitFor(thread);
        CloseHandle(thread);
    }

private:
    const NoPauses m_noPauses;
    test::FakeStore m_store;
    CQanhPackageManager m_manager;
};

bool IsShortcut(std::wstring_view name)
{
    return name.ends_with(L".lnk") || name.ends_with(L".url");
}

void WalkFolder(const std::wstring& folder, std::vector<std::wstring>& shortcuts)
{
    WIN32_FIND_DATAW entry;
    const HANDLE find = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (find == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("a folder cannot be listed");
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
            if (IsShortcut(name)) {
                shortcuts.push_back(folder + L"\\" + entry.cFileName);
            }
        } else if (name != L"." && name != L"..") {
            WalkFolder(folder + L"\\" + entry.cFileName, shortcuts);
        }
    } while (FindNextFileW(find, &entry));
    FindClose(find);
}

// The same work by bare calls: the walk of the folders, the reading of the manifests, the save.
void RunBare(const Machine& machine)
{
    std::vector<std::wstring> shortcuts;
    for (const std::wstring& folder : machine.programs) {
        WalkFolder(folder, shortcuts);
    }
    if (shortcuts.size() != machine.catalog.desktopApps.size()) {
        throw std::runtime_error("the bare walk finds other shortcuts than there are");
    }
    std::size_t characters = 0;
    for (const test::PackageFacts& facts : machine.packages) {
        characters += WalkXml(facts.path + L"\\AppxManifest.xml");
    }
    g_sink = characters;
    WriteXml(machine.catalog, machine.OtherFile());
}

bool Measure(Session& session, const std::string& measure, std::size_t shortcuts, std::size_t packages)
{
    std::fprintf(stderr, "making %zu shortcuts and %zu packages\n", shortcuts, packages);
    const Machine machine(shortcuts, packages);
    std::unique_ptr<Pass> pass;
    const bool isQuick = session.Compare(measure, shortcuts,
                                         {{kOurs, [&] { pass->Run(); },
                                           [&] {
                                               pass.reset();
                                               pass = std::make_unique<Pass>(machine);
                                           }},
                                          {"bare pass", [&] { RunBare(machine); }}});
    // The order of the records is the folders' own.
    if (test::ReadFileBytes(machine.CatalogFile()).size() !=
        test::ReadFileBytes(machine.OtherFile()).size()) {
        throw std::runtime_error("the pass has found other applications than there are");
    }
    return isQuick;
}

} // namespace

void MeasureFirstPass(Session& session)
{
    for (const std::size_t shortcuts :
         session.isShort ? Sizes{100, 300, 1000, 3000} : Sizes{300, 1000, 3000, 10000}) {
        if (!Measure(session, "first-pass", shortcuts, 60)) {
            break;
        }
    }
}

void MeasureFirstPassOfManyPackages(Session& session)
{
    Measure(session, "first-pass-packages", session.isShort ? 300 : 10000, 500);
}

} // namespace bench
