#pragma once

#include "support/Registry.h"
#include "support/TemporaryFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

// A catalogue with nothing in it.
inline constexpr char emptyCatalog[] = "<Applications><MetroApps/><DesktopApps/></Applications>";

// A catalogue with one shortcut, which may have further attributes. What XML escapes must be escaped.
inline std::string CatalogueOf(const std::string& name, const std::string& path,
                               const std::string& attributes = "")
{
    return "<Applications><DesktopApps><DesktopApp DisplayName=\"" + name + "\" LnkFileName=\"" + path +
           "\" " + attributes + "/></DesktopApps></Applications>";
}

// A process that a sandbox started and ends when nobody else has; the handle is closed by who asked for it.
struct StartedProcess
{
    HANDLE process = nullptr;
    DWORD id = 0;
};

// The machine that a test's processes see: folders of the test's own in the place of the user's and of all
// users', the library's settings and the stand-in desktop's switches, both absent at first but for the log,
// which is on. At the end of the scope all processes that were started in it, and theirs, are ended, and the
// test fails when one of them did what the real platform would not forgive (standin/Faults.h). One at a time.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Values of LOCALAPPDATA and the folder that the hosts stand in; they exist.
    [[nodiscard]] std::wstring Local() const { return m_folder / L"local"; }
    [[nodiscard]] std::wstring HostFolder() const { return m_folder / L"host"; }
    // The Start menu's folders below ALLUSERSPROFILE and APPDATA; they do not exist before something is put
    // there.
    [[nodiscard]] std::wstring CommonPrograms() const;
    [[nodiscard]] std::wstring UserPrograms() const;
    // The current folder of the processes.
    [[nodiscard]] const std::wstring& Folder() const { return m_folder.Path(); }

    // Where a host keeps its files; base is its name up to the first dot.
    [[nodiscard]] std::wstring CatalogFolder(const std::wstring& base = L"TestHost") const;
    [[nodiscard]] std::wstring CatalogFile(const std::wstring& base = L"TestHost") const;
    [[nodiscard]] std::wstring LogFile(const std::wstring& base = L"TestHost") const;
    // The name of the mutex of whose turn it is at the catalogue file.
    [[nodiscard]] std::wstring TurnName() const;
    [[nodiscard]] std::wstring PresetFile() const { return HostFolder() + L"\\PresetAppNameList.xml"; }

    // The log from the offset on, without time stamps, in lines (LogLines in support/LogCapture.h); the
    // sandbox's folders in it stand as "<local>", "<roaming>", "<allusers>", "<host>". No log: no lines.
    [[nodiscard]] std::vector<std::string> Log(std::size_t offset = 0) const;
    // The log's length in bytes.
    [[nodiscard]] std::size_t LogLength() const;
    // Waits until such a line stands in the log behind the offset; throws when it does not come.
    void WaitForLogLine(const std::string& line, std::size_t offset = 0) const;
    // Names with the folders' placeholders, for what the processes write.
    [[nodiscard]] std::string WithPlaceholders(std::string text) const;

    // An empty file, which is all that the library sees of a shortcut.
    void AddCommonShortcut(const std::wstring& name) const { MakeFile(CommonPrograms() + L"\\" + name); }
    void AddUserShortcut(const std::wstring& name) const { MakeFile(UserPrograms() + L"\\" + name); }
    // A shortcut that starts a window with the name.
    void AddApplication(const std::wstring& relativePath) const;

    // The folder of the Store's packages. There are none at first; samples of the stand-in can be added, and
    // others written.
    [[nodiscard]] std::wstring Packages() const { return m_folder / L"packages"; }
    void AddSamplePackage(const std::wstring& name) const;
    // Whoever looks at the packages meanwhile sees a new one not at all or whole, of a changed one each file
    // as it was or as it is, and one that goes whole or not at all.
    void WritePackage(const std::wstring& name, std::string_view manifest, std::string_view ini) const;
    void RemovePackage(const std::wstring& name) const;
    // All samples instead, where they were built.
    void UseSamplePackages() const;

    // The library's settings.
    [[nodiscard]] ScopedKey& Settings() { return m_settings; }

    // Copies the host to the file name, with the library beside it, and returns its path.
    std::wstring AddHost(const std::wstring& fileName) const;

    // The handles become the process's standard input and output when they are not null.
    StartedProcess Start(const std::wstring& program, HANDLE input = nullptr, HANDLE output = nullptr);

private:
    TemporaryFolder m_folder;
    // Of this process: those that it starts have them from it.
    ScopedEnvironment m_local{L"LOCALAPPDATA", Local().c_str()};
    ScopedEnvironment m_roaming{L"APPDATA", (m_folder / L"roaming").c_str()};
    ScopedEnvironment m_allUsers{L"ALLUSERSPROFILE", (m_folder / L"allusers").c_str()};
    ScopedKey m_settings;
    HANDLE m_job;
};

// The folder of this program, where everything that was built stands.
[[nodiscard]] std::wstring BuildFolder();

// The stand-in's sample packages.
[[nodiscard]] std::wstring SamplePackages();

// Whether the mutex of a host's first refresh pass exists.
[[nodiscard]] bool IsFirstPassRunning(const std::wstring& base = L"TestHost");
// Throws when it does not end.
void WaitForFirstPass(const std::wstring& base = L"TestHost");

// Calls the condition every few milliseconds until it is true; false: the time is over.
template <typename Condition> bool WaitUntil(Condition condition, DWORD timeout)
{
    for (const ULONGLONG end = GetTickCount64() + timeout; !condition(); Sleep(5)) {
        if (GetTickCount64() > end) {
            return false;
        }
    }
    return true;
}

} // namespace test
