// Sizes and places that nobody would choose: the library's work takes longer or is not done, and its host
// goes on.
#include "proof/Hosts.h"
#include "system/Manifest.h"
#include "system/Passes.h"
#include "system/SlowManifest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

using proof::ok;
using testing::HasSubstr;

using Names = std::vector<std::string>;

// What QanhFinalize may take by its rules: 10 s for the first pass, 30 s and 3 s for a thread that hangs.
constexpr DWORD longestStop = 60000; // milliseconds, on a machine that is busy

class ScopedFile
{
public:
    ScopedFile(const std::wstring& path, DWORD sharing, DWORD disposition)
        : m_file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, sharing, nullptr, disposition, 0,
                             nullptr))
    {
        EXPECT_NE(m_file, INVALID_HANDLE_VALUE) << "error " << GetLastError();
    }
    ~ScopedFile() { CloseHandle(m_file); }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    void Write(const std::string& text)
    {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(m_file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    }
    // Zeros behind what has been written.
    void EnlargeTo(LONGLONG size)
    {
        LARGE_INTEGER end;
        end.QuadPart = size;
        EXPECT_TRUE(SetFilePointerEx(m_file, end, nullptr, FILE_BEGIN) && SetEndOfFile(m_file));
    }

private:
    HANDLE m_file;
};

class Sizes : public testing::Test
{
protected:
    Sizes() { m_sandbox.Settings().DeleteValue(L"DebugLog"); }

    // A shortcut that no pass finds, as a record that only the file knows.
    std::string Kept(const std::string& name)
    {
        const std::wstring path = m_sandbox.Folder() + L"\\kept\\x.lnk";
        test::MakeFile(path);
        return proof::DesktopRecord(name, test::ToUtf8(path), true);
    }

    void WriteCatalog(const std::string& text) const
    {
        test::MakeFolder(m_sandbox.CatalogFolder());
        test::WriteFileBytes(m_sandbox.CatalogFile(), text);
    }

    // A host that has loaded, and begins its first pass with "go".
    std::unique_ptr<test::HostProcess> Start(const char* figure = nullptr)
    {
        auto host = std::make_unique<test::HostProcess>(m_sandbox);
        host->Do("pane");
        host->Do("hold");
        const double milliseconds = Time([&] { EXPECT_EQ(host->Command("init", 600000), ok); });
        if (figure) {
            proof::Figure(figure, milliseconds, "ms");
        }
        return host;
    }

    static double Time(const std::function<void()>& action)
    {
        const ULONGLONG begin = GetTickCount64();
        action();
        return static_cast<double>(GetTickCount64() - begin);
    }

    // By a file: the pipe to the host is made for short answers.
    std::string Query(test::HostProcess& host) const
    {
        const std::wstring file = m_sandbox.Folder() + L"\\query.txt";
        host.Do("queries\t1\tmail\t" + test::ToUtf8(file), 300000);
        std::string query = test::ReadFileBytes(file);
        query.pop_back();
        return query;
    }
    Names NamesOf(test::HostProcess& host) const { return proof::NamesIn(Query(host)); }

    static double Pass(test::HostProcess& host, DWORD limit = 600000)
    {
        return Time([&] {
            host.Do("go");
            EXPECT_TRUE(test::WaitUntil([] { return !test::IsFirstPassRunning(); }, limit));
        });
    }

    static double Stop(test::HostProcess& host)
    {
        return Time([&] { host.Do("finalize", longestStop); });
    }

    // Its end is the usual one, and nothing is left in memory.
    static void ExpectWell(test::HostProcess& host)
    {
        EXPECT_FALSE(host.HasExitEvent());
        EXPECT_EQ(host.Command("unload"), "1");
        EXPECT_EQ(host.Command("in-memory"), "0");
        EXPECT_EQ(host.Exit(), 0u);
    }

    test::Sandbox m_sandbox;
};

TEST_F(Sizes, CatalogOfManyPackages)
{
    const int count = proof::Count(1500, 100000);
    std::string packages;
    Names mails;
    for (int index = 0; index < count; ++index) {
        const bool isMail = index % 1000 == 0;
        const std::string name = (isMail ? "mail " : "tool ") + std::to_string(index);
        if (isMail) {
            mails.push_back(name);
        }
        packages += "<Package PackageFamilyName=\"Vel.P" + std::to_string(index) +
                    "_0standin00000\" Version=\"1.0.0.0\" NeedReserve=\"1\"><MetroApp DisplayName=\"" + name +
                    "\"/></Package>\r\n";
    }
    WriteCatalog(proof::CatalogOf(packages, ""));
    const auto host = Start("QanhInitialize with that catalogue");
    proof::Figure("packages of the catalogue", count);
    proof::Figure("a query then", Time([&] { EXPECT_EQ(NamesOf(*host), mails); }), "ms");
    host->Do("go");
    Sleep(300);
    // Each of them is asked about; the stop comes between two.
    proof::Figure("QanhFinalize while a pass asks about each of them", Stop(*host), "ms");
    ExpectWell(*host);
    const auto next = Start();
    // A pass that came to its end has found that none is installed.
    EXPECT_THAT(NamesOf(*next), testing::AnyOf(testing::Eq(mails), testing::IsEmpty()));
}

TEST_F(Sizes, StoreOfManyPackages)
{
    const int count = proof::Count(100, 2000);
    for (int index = 0; index < count; ++index) {
        const std::string name = "Vel.P" + std::to_string(10000 + index);
        m_sandbox.WritePackage(test::FromUtf8(name),
                               test::Manifest(name, "1.0.0.0", "mail " + std::to_string(index), "short"), "");
    }
    const auto host = Start();
    proof::Figure("packages of the store", count);
    proof::Figure("first pass over them", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host).size(), static_cast<std::size_t>(count));
    Stop(*host);
    ExpectWell(*host);
}

TEST_F(Sizes, NamesOf16MebibytesAreNamesLikeOthers)
{
    const std::size_t size = proof::Count<std::size_t>(1 << 20, 16 << 20);
    const std::string big = "big mail " + std::string(size, 'x');
    const std::string store = "store mail " + std::string(size, 'y');
    WriteCatalog(
        proof::CatalogOf("", Kept(big) + proof::DesktopRecord("tool", "C:\\" + std::string(size, 'z'), true) +
                                 Kept("kept mail")));
    m_sandbox.WritePackage(L"Vel.Big", test::Manifest("Vel.Big", "1.0.0.0", store, "s"), "");
    const auto host = Start("QanhInitialize with names of that length");
    proof::Figure("characters of a name", static_cast<double>(size));
    EXPECT_EQ(NamesOf(*host), Names({big, "kept mail"}));
    proof::Figure("first pass with them", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host), Names({store, big, "kept mail"}));
    Stop(*host);
    ExpectWell(*host);
    const auto next = Start();
    EXPECT_EQ(NamesOf(*next), Names({store, big, "kept mail"})) << "saved and read again";
}

TEST_F(Sizes, NestingEndsTheReadingAndNothingElse)
{
    constexpr int depth = 10000;
    std::string nested;
    for (int level = 0; level < depth; ++level) {
        nested += "<a>";
    }
    WriteCatalog("<Applications><MetroApps/><DesktopApps>" + Kept("kept mail") + nested);
    const std::string manifest = test::Manifest("Vel.Deep", "1.0.0.0", "deep mail", "d");
    m_sandbox.WritePackage(L"Vel.Deep", manifest.substr(0, manifest.find("  </Applications>")) + nested,
                           "name = Vel.Deep\nversion = 1.0.0.0");
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    const auto host = Start();
    EXPECT_EQ(NamesOf(*host), Names({"kept mail"}));
    Pass(*host);
    EXPECT_EQ(NamesOf(*host), Names({"deep mail", "kept mail", "found mail"}));
    Stop(*host);
    ExpectWell(*host);
}

TEST_F(Sizes, CatalogOfAGibibyteIsReadAndMadeSmallAgain)
{
    const std::size_t size = proof::Count<std::size_t>(8 << 20, 1 << 30);
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    test::MakeFolder(m_sandbox.CatalogFolder());
    {
        ScopedFile file(m_sandbox.CatalogFile(), 0, CREATE_ALWAYS);
        file.Write("<Applications><MetroApps/><DesktopApps>" + Kept("first mail"));
        const std::string element = "<Unknown Value=\"" + std::string(4000, 'v') + "\"/>\r\n";
        std::string portion;
        while (portion.size() < 1 << 20) {
            portion += element;
        }
        for (std::size_t written = 0; written < size; written += portion.size()) {
            file.Write(portion);
        }
        file.Write(Kept("last mail") + "</DesktopApps></Applications>");
    }
    const auto host = Start("QanhInitialize with that catalogue");
    proof::Figure("bytes of the catalogue", static_cast<double>(size));
    EXPECT_EQ(NamesOf(*host), Names({"first mail", "last mail"}));
    proof::Figure("first pass with its save, which copies it", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host), Names({"first mail", "last mail", "found mail"}));
    Stop(*host);
    ExpectWell(*host);
    EXPECT_LT(test::ReadFileBytes(m_sandbox.CatalogFile()).size(), 2000u);
    EXPECT_EQ(NamesOf(*Start()), Names({"first mail", "last mail", "found mail"}));
}

TEST_F(Sizes, CatalogWithAGibibyteOfZerosBehindItKeepsWhatStandsBefore)
{
    m_sandbox.AddCommonShortcut(L"found mail.lnk");
    test::MakeFolder(m_sandbox.CatalogFolder());
    {
        ScopedFile file(m_sandbox.CatalogFile(), 0, CREATE_ALWAYS);
        file.Write("<Applications><MetroApps/><DesktopApps>" + Kept("first mail"));
        file.EnlargeTo(proof::Count<LONGLONG>(8 << 20, 1 << 30));
    }
    const auto host = Start();
    EXPECT_EQ(NamesOf(*host), Names({"first mail"}));
    Pass(*host);
    Stop(*host);
    ExpectWell(*host);
    EXPECT_EQ(NamesOf(*Start()), Names({"first mail", "found mail"}));
}

TEST_F(Sizes, ManifestsThatCannotBeReadCostTheirPackagesNames)
{
    const auto write = [&](const std::wstring& name) {
        const std::wstring folder = m_sandbox.Folder() + L"\\installed " + name;
        test::MakeFolder(folder);
        const std::string text = test::ToUtf8(name);
        m_sandbox.WritePackage(name, test::Manifest(text, "1.0.0.0", "mail of " + text, "s"),
                               "location = " + test::ToUtf8(folder));
        return folder + L"\\AppxManifest.xml";
    };
    test::MakeFolder(write(L"A folder"));
    const ScopedFile locked(write(L"B locked"), 0, CREATE_ALWAYS);
    write(L"C missing");
    test::WriteFileBytes(write(L"D empty"), "");
    test::WriteFileBytes(write(L"E zeros"), std::string(1 << 20, '\0'));
    test::WriteFileBytes(write(L"F sound"), test::Manifest("F sound", "1.0.0.0", "sound mail", "s"));
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

TEST_F(Sizes, CatalogThatIsLockedIsSavedWhenItIsFree)
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

TEST_F(Sizes, FullDiskKeepsTheOldCatalog)
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

TEST_F(Sizes, FolderOfManyShortcuts)
{
    const int count = proof::Count(1000, 50000);
    for (int index = 0; index < count; ++index) {
        m_sandbox.AddCommonShortcut((index % 1000 == 0 ? L"mail " : L"tool ") +
                                    std::to_wstring(100000 + index) + L".lnk");
    }
    const auto host = Start();
    proof::Figure("shortcuts of one folder", count);
    proof::Figure("first pass over it", Pass(*host), "ms");
    EXPECT_EQ(NamesOf(*host).size(), static_cast<std::size_t>(count / 1000));
    proof::Figure("QanhFinalize then", Stop(*host), "ms");
    ExpectWell(*host);
    const auto next = Start("QanhInitialize with them in the catalogue");
    EXPECT_EQ(NamesOf(*next).size(), static_cast<std::size_t>(count / 1000));
    next->Do("go");
    Sleep(200);
    proof::Figure("QanhFinalize in the middle of a pass over it", Stop(*next), "ms");
    ExpectWell(*next);
}

// The manifest of a package comes through a pipe at whose other end nobody says anything.
TEST_F(Sizes, ManifestThatNeverComesDelaysTheStopByTheRules)
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
TEST_F(Sizes, SlowShareDelaysTheStopByOneShortcut)
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

TEST_F(Sizes, ShareThatHangsDelaysTheStopByTheRules)
{
    const DWORD faster = proof::Count<DWORD>(30, 1);
    m_sandbox.SetVariable(L"ALLUSERSPROFILE", L"\\\\dead\\users");
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
