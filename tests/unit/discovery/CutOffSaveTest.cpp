// The process is killed at every step of a save in turn: what the next start finds.

#include "discovery/PackageManager.h"

#include "support/OtherProcess.h"
#include "support/PiecewiseStream.h"
#include "unit/discovery/FileSteps.h"
#include "unit/discovery/Start.h"

#include <roapi.h>
#include <shlwapi.h>

namespace {

using namespace discovery_test;

constexpr DWORD kKilled = 77; // the exit code
constexpr ULONG kPieceSize = 512;

// A process that starts the library, lets it do its first pass, and is killed at a step of it. The argument:
// the step's number, 1 is the first, the number of the piece that finds the disk full, and the executable.
// Its result is 0 when there are fewer steps.
class KilledProcess
{
public:
    explicit KilledProcess(const std::wstring& argument)
        : m_killAt(std::stoi(argument)), m_fullAt(std::stoi(argument.substr(argument.find(L'|') + 1))),
          m_host(argument.substr(argument.rfind(L'|') + 1))
    {
    }

    int Run()
    {
        if (m_manager.Initialize() == S_OK) {
            m_wait.Original(m_manager.m_hRefreshThread, 20000);
            return 0;
        }
        return 1;
    }

private:
    DWORD Step()
    {
        if (++m_step == m_killAt) {
            TerminateProcess(GetCurrentProcess(), kKilled);
        }
        return ERROR_SUCCESS;
    }
    // The first second is over at once, and one pass is enough.
    DWORD Wait(HANDLE handle, DWORD milliseconds)
    {
        if (handle != m_manager.m_hExitEvent || milliseconds == 0) {
            return m_wait.Original(handle, milliseconds);
        }
        return ++m_waits == 1 ? WAIT_TIMEOUT : WAIT_OBJECT_0;
    }
    HRESULT OpenStream(const wchar_t* path, DWORD mode, IStream** stream)
    {
        if (mode == STGM_READ) {
            return m_stream.Original(path, mode, stream);
        }
        Step();
        const HRESULT hr = m_stream.Original(path, mode, stream);
        *stream = new PiecewiseStream(*stream, kPieceSize, [this] {
            Step();
            return ++m_piece == m_fullAt ? STG_E_MEDIUMFULL : S_OK;
        });
        return hr;
    }

    int m_killAt;
    int m_fullAt;
    int m_step = 0;
    int m_piece = 0;
    int m_waits = 0;
    HostExecutable m_host;
    CQanhPackageManager m_manager;
    CapturingPatch<decltype(&WaitForSingleObject)> m_wait{
        "WaitForSingleObject",
        [this](HANDLE handle, DWORD milliseconds) { return Wait(handle, milliseconds); }};
    CapturingPatch<decltype(&RoInitialize)> m_store{"RoInitialize", Answer(E_FAIL)};
    CapturingPatch<decltype(&SHCreateStreamOnFileW)> m_stream{
        "SHCreateStreamOnFileW",
        [this](const wchar_t* path, DWORD mode, IStream** stream) { return OpenStream(path, mode, stream); }};
    FileSteps m_steps{[this](const std::string&) { return Step(); }};
};

const Part g_killedProcess(L"KilledProcess", [](const Part::Context& context) {
    return KilledProcess(context.Argument()).Run();
});

// A catalogue with records that no refresh pass would find again, and one that the pass drops.
class CutOffSave : public PackageManagerStart
{
protected:
    CutOffSave()
    {
        std::wstring xml =
            L"<Applications><Package PackageFamilyName=\"mail_1\" NeedReserve=\"1\"/><DesktopApps>";
        for (const std::wstring& shortcut : kOld) {
            xml += L"<DesktopApp DisplayName=\"x\" LnkFileName=\"" + shortcut +
                   (shortcut == kOld[0] ? L"\" />" : L"\" NeedReserve=\"1\" />");
        }
        m_old = ToUtf8(xml + L"</DesktopApps></Applications>");
        MakeFile(kFound);
        MakeFolder(m_folder / L"Me\\Microsoft\\Windows\\Start Menu\\Programs");
        // The child is this executable too, with another one's name.
        m_host.Set(m_folder / (BaseName() + L".exe"));
    }

    struct Outcome
    {
        int steps = 0; // that were tried: all there are, and one more
        int old = 0;   // after which the old catalogue was there
    };

    // Kills a process at each step in turn, from the files that prepare() makes.
    template <typename Prepare> Outcome KillAtEveryStep(Prepare prepare, int fullAt = 0)
    {
        Outcome outcome;
        DWORD result = kKilled;
        while (result == kKilled) {
            prepare();
            result = OtherProcess(L"KilledProcess", std::to_wstring(++outcome.steps) + L"|" +
                                                        std::to_wstring(fullAt) + L"|" + m_host.Path())
                         .End();
            const std::vector<std::wstring> shortcuts = ShortcutsOfNextStart();
            EXPECT_THAT(shortcuts, AnyOf(Eq(kOld), Eq(kNew))) << "killed at step " << outcome.steps;
            outcome.old += shortcuts == kOld ? 1 : 0;
        }
        EXPECT_EQ(result, 0u);
        return outcome;
    }

    // The shortcuts that a start finds then, as the owner. Its thread never runs.
    std::vector<std::wstring> ShortcutsOfNextStart()
    {
        CQanhPackageManager manager;
        m_threadError = ERROR_NOT_ENOUGH_MEMORY;
        const HRESULT hr = manager.Initialize();
        m_threadError = 0;
        EXPECT_EQ(hr, E_FAIL);
        EXPECT_NE(manager.m_AppNameList.GetPackage(L"mail_1"), nullptr);
        EXPECT_FALSE(Exists(CatalogFile() + L".bak"));
        EXPECT_FALSE(Exists(CatalogFile() + L".tmp"));
        return Shortcuts(manager);
    }

    const std::wstring kFound = m_folder / L"All\\Microsoft\\Windows\\Start Menu\\Programs\\New.lnk";
    // The shortcuts before the pass, which drops the first of them, and after it.
    const std::vector<std::wstring> kOld = {L"C:\\gone.lnk", L"C:\\a.lnk", L"C:\\b.lnk",
                                            L"C:\\c.lnk",    L"C:\\d.lnk", L"C:\\e.lnk"};
    const std::vector<std::wstring> kNew = {L"C:\\a.lnk", L"C:\\b.lnk", L"C:\\c.lnk",
                                            L"C:\\d.lnk", L"C:\\e.lnk", kFound};
    std::string m_old;
    ScopedEnvironment m_allUsers{L"ALLUSERSPROFILE", (m_folder / L"All").c_str()};
    ScopedEnvironment m_appData{L"APPDATA", (m_folder / L"Me").c_str()};
};

TEST_F(CutOffSave, LeavesTheOldCatalogOrTheNewOne)
{
    const Outcome outcome = KillAtEveryStep([this] { WriteFileBytes(CatalogFile(), m_old); });
    // At the start one step, before the writing of the catalogue seven, then the opening and the pieces.
    EXPECT_GE(outcome.old, 11);
    EXPECT_GE(outcome.steps, 14);
    EXPECT_GT(outcome.steps, outcome.old) << "without the killing the new one is there";
}

TEST_F(CutOffSave, OfAFirstCatalogLeavesThePresetsRecordsOrTheNewCatalog)
{
    WriteFileBytes(PresetFile(), m_old);
    const Outcome outcome = KillAtEveryStep([this] { DeleteFileW(CatalogFile().c_str()); });
    EXPECT_GE(outcome.old, 8);
    EXPECT_GT(outcome.steps, outcome.old);
}

TEST_F(CutOffSave, WhileTheOldCatalogIsBroughtBackLeavesIt)
{
    const Outcome outcome = KillAtEveryStep([this] { WriteFileBytes(CatalogFile(), m_old); }, 2);
    EXPECT_GE(outcome.steps, 10);
    EXPECT_EQ(outcome.old, outcome.steps);
}

TEST_F(CutOffSave, AfterAnotherOneThatWasCutOffLeavesTheOldCatalogOrTheNewOne)
{
    const Outcome outcome = KillAtEveryStep([this] {
        WriteFileBytes(CatalogFile(), m_old.substr(0, 100));
        WriteFileBytes(CatalogFile() + L".bak", m_old);
    });
    EXPECT_GE(outcome.old, 11);
    EXPECT_GT(outcome.steps, outcome.old);
}

} // namespace
