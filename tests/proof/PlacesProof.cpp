// Files, disks and shares that do not do what they should: the library's work is not done or waits, and its
// host goes on.
#include "proof/HostileTest.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/SlowManifest.h"

#include <gmock/gmock.h>

namespace {

using proof::Names;
using proof::ok;
using proof::ScopedFile;
using testing::HasSubstr;

using Places = proof::HostileTest;

TEST_F(Places, ManifestsThatCannotBeReadCostTheirPackagesNames)
{
    const auto install = [&](const std::wstring& name) {
        const std::wstring folder = m_sandbox.Folder() + L"\\installed " + name;
        test::MakeFolder(folder);
        const std::string text = test::ToUtf8(name);
        m_sandbox.WritePackage(name, test::Manifest(text, "1.0.0.0", "mail of " + text, "s"),
                               "location = " + test::ToUtf8(folder));
        return folder + L"\\AppxManifest.xml";
    };
    test::MakeFolder(install(L"A folder"));
    const ScopedFile locked(install(L"B locked"), 0, CREATE_ALWAYS);
    install(L"C missing");
    test::WriteFileBytes(install(L"D empty"), "");
    test::WriteFileBytes(install(L"E zeros"), std::string(1 << 20, '\0'));
    test::WriteFileBytes(install(L"F sound"), test::Manifest("F sound", "1.0.0.0", "sound mail", "s"));
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    WriteCatalog(proof::CatalogOf("", Kept("kept mail")));
    const auto host = Start();
    Pass(*host);
    EXPECT_EQ(NamesOf(*host), Names({"sound mail", "kept mail", "found mail"}));
    Stop(*host);
    ExpectWell(*host);
    const std::string saved = test::ReadFileBytes(m_sandbox.CatalogFile());
    EXPECT_THAT(saved, HasSubstr("A folder_"));
    EXPECT_THAT(saved, HasSubstr("F sound_"));
}

TEST_F(Places, CatalogThatIsLockedIsSavedWhenItIsFree)
{
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    m_sandbox.Settings().SetDword(L"DebugLog", 1);
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    WriteCatalog(proof::CatalogOf("", ""));
    auto locked = std::make_unique<ScopedFile>(m_sandbox.CatalogFile(), 0, OPEN_EXISTING);
    const auto host = Start();
    Pass(*host);
    EXPECT_EQ(NamesOf(*host), Names({"found mail"}));
    m_sandbox.WaitForLogLine("CQanhPackageManager::RefreshThread "
                             "pPyxPackageManager->m_AppNameList.Save() failed. ErrCode = 0x80070020 ");
    locked.reset();
    m_sandbox.WaitForLogLine(test::passEnd, m_sandbox.LogLength());
    Stop(*host);
    ExpectWell(*host);
    EXPECT_THAT(test::ReadFileBytes(m_sandbox.CatalogFile()), HasSubstr("found mail"));
}

TEST_F(Places, FullDiskKeepsTheOldCatalog)
{
    const int rounds = proof::Count(6, 200);
    m_sandbox.Settings().SetDword(L"RefreshInterval", 0);
    std::string records;
    for (int index = 0; index < 30; ++index) {
        records += Kept("kept mail " + std::to_string(index));
    }
    WriteCatalog(proof::CatalogOf("", records));
    proof::Random random;
    int failed = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        const std::string name = "new mail " + std::to_string(round);
        m_sandbox.AddCommonShortcut(test::FromUtf8(name) + L".lnk");
        const std::string old = test::ReadFileBytes(m_sandbox.CatalogFile());
        // Enough for a part of the copy, for the copy and a part of the save, or for both.
        const unsigned room = round == 0 ? 0 : random.UpTo(static_cast<unsigned>(old.size() * 5 / 2));
        SCOPED_TRACE("round " + std::to_string(round) + ", room for " + std::to_string(room) +
                     " bytes, seed " + std::to_string(proof::Seed()));
        const auto host = Start();
        host->Do("pace\t20");
        host->Do("disk\t" + std::to_string(room));
        Pass(*host);
        const auto isSaved = [&] {
            const std::string now = test::ReadFileBytes(m_sandbox.CatalogFile());
            return now.find("\"" + name + "\"") != std::string::npos && now.ends_with("</DesktopApps>");
        };
        // Passes go on; between two of them the file is the old one or the new one.
        Stop(*host);
        const std::string now = test::ReadFileBytes(m_sandbox.CatalogFile());
        EXPECT_TRUE(now == old || isSaved()) << now.size() << " bytes of " << old.size();
        failed += now == old;
        EXPECT_EQ(host->Command("init"), ok);
        host->Do("disk\t1000000000");
        EXPECT_TRUE(test::WaitUntil(isSaved, 30000)) << "there is room again";
        Stop(*host);
        ExpectWell(*host);
        EXPECT_FALSE(test::Exists(m_sandbox.CatalogFile() + L".bak"));
        EXPECT_FALSE(test::Exists(m_sandbox.CatalogFile() + L".tmp"));
        proof::Progress(round + 1, rounds);
    }
    EXPECT_GT(failed, 0);
    const auto host = Start();
    EXPECT_EQ(NamesOf(*host).size(), 30u + static_cast<std::size_t>(rounds));
    proof::Figure("disks that were full at a moment of chance of a save", rounds);
    proof::Figure("saves that failed by it", failed);
}

// The manifest of a package comes through a pipe at whose other end nobody says anything.
TEST_F(Places, ManifestThatNeverComesDelaysTheStopByTheRules)
{
    test::SlowManifest never;
    m_sandbox.WritePackage(L"A", test::Manifest("Vel.A", "1.0.0.0", "A", "A"),
                           "location = " + never.Folder());
    WriteCatalog(proof::CatalogOf("", Kept("kept mail")));
    const std::string before = test::ReadFileBytes(m_sandbox.CatalogFile());
    const DWORD faster = proof::Count<DWORD>(30, 1);
    const auto host = Start();
    host->Do("pace\t" + std::to_string(faster));
    const std::size_t threads = host->Measure("threads");
    host->Do("go");
    never.WaitForReader();
    EXPECT_EQ(NamesOf(*host), Names({"kept mail"})) << "launches go on";
    const double stop = Stop(*host);
    EXPECT_GE(stop, 39000.0 / faster) << "10 s for the first pass, 30 s for the thread";
    proof::Figure("QanhFinalize while a manifest does not come", stop, "ms");
    EXPECT_EQ(host->Measure("threads"), threads - 1) << "terminated";
    EXPECT_FALSE(host->HasExitEvent());
    EXPECT_FALSE(test::IsFirstPassRunning());
    EXPECT_EQ(test::ReadFileBytes(m_sandbox.CatalogFile()), before);

    m_sandbox.RemovePackage(L"A");
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    EXPECT_EQ(host->Command("init"), ok) << "and all is well again";
    test::WaitForFirstPass();
    EXPECT_EQ(NamesOf(*host), Names({"kept mail", "found mail"}));
    Stop(*host);
    EXPECT_EQ(host->Command("unload"), "1");
    EXPECT_EQ(host->Command("in-memory"), "1") << "the thread's reference went with it";
    EXPECT_EQ(host->Exit(), 0u);
}

// Shortcuts on a share that takes its time before it says that it is not there.
TEST_F(Places, SlowShareDelaysTheStopByOneShortcut)
{
    std::string records;
    for (int index = 0; index < 1000; ++index) {
        records += proof::DesktopRecord("far mail " + std::to_string(index),
                                        "\\\\dead\\share\\" + std::to_string(index) + ".lnk", true);
    }
    WriteCatalog(proof::CatalogOf("", records));
    const auto host = Start();
    host->Do("dead-share\t300");
    host->Do("pace\t20");
    host->Do("go");
    EXPECT_EQ(NamesOf(*host).size(), 1000u) << "a launch waits for nobody";
    proof::Figure(
        "QanhFinalize with a share that takes 300 ms for each shortcut, and a first pass of 0.5 s at most",
        Stop(*host), "ms");
    ExpectWell(*host);
    EXPECT_EQ(NamesOf(*Start()).size(), 1000u) << "nothing was saved";
}

TEST_F(Places, ShareThatHangsDelaysTheStopByTheRules)
{
    const DWORD faster = proof::Count<DWORD>(30, 1);
    const test::ScopedEnvironment allUsers(L"ALLUSERSPROFILE", L"\\\\dead\\users");
    WriteCatalog(proof::CatalogOf("", Kept("kept mail")));
    const auto host = Start();
    host->Do("dead-share\t600000");
    host->Do("pace\t" + std::to_string(faster));
    const std::size_t threads = host->Measure("threads");
    host->Do("go");
    Sleep(300);
    EXPECT_EQ(NamesOf(*host), Names({"kept mail"})) << "launches go on";
    const double stop = Stop(*host);
    EXPECT_GE(stop, 39000.0 / faster);
    proof::Figure("QanhFinalize while a share hangs", stop, "ms");
    EXPECT_EQ(host->Measure("threads"), threads - 1) << "terminated";
    EXPECT_FALSE(host->HasExitEvent());
    EXPECT_FALSE(test::IsFirstPassRunning());
    EXPECT_EQ(host->Exit(), 0u);
    EXPECT_EQ(NamesOf(*Start()), Names({"kept mail"}));
}

} // namespace
