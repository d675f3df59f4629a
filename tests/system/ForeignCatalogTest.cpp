// What a catalogue does that somebody else has written: it changes the names in a query, and with them what
// the search finds, and nothing else. The same goes for a Store package's names.
#include "standin/Names.h"
#include "support/Text.h"
#include "system/LaunchTest.h"
#include "system/Manifest.h"
#include "system/QueryFor.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

class ForeignCatalog : public test::LaunchTest
{
protected:
    // A catalogue with one record, which counts as installed as long as the path exists.
    void WriteCatalog(const std::string& name, const std::wstring& path,
                      const std::string& attributes = "") const
    {
        test::MakeFolder(sandbox.CatalogFolder());
        test::WriteFileBytes(sandbox.CatalogFile(),
                             test::CatalogueOf(name, test::ToUtf8(path), "NeedReserve=\"1\" " + attributes));
    }
    void WriteName(const std::string& name) const { WriteCatalog(name, sandbox.HostFolder()); }

    // Brings the library up for a pass, and has it noted which files are opened from then on.
    static void PassWatched(test::HostProcess& watched)
    {
        watched.Do("watch-files");
        watched.InitializeAndPass();
        EXPECT_GT(watched.Measure("opened\tQanHelperLog.txt"), 0u) << "the library's own are noted";
    }

    // The query for "Mail" with this name in the catalogue.
    std::string Query(const std::string& name)
    {
        WriteName(name);
        test::HostProcess asked(sandbox);
        EXPECT_EQ(asked.Command("init"), "0x00000000");
        return test::QueryFor(sandbox, asked, "Mail");
    }

    // What a launch of "Mail" searches for, and what it starts.
    void ExpectLaunch(const std::string& query, const std::string& started, int mode = 0,
                      bool excludesOthers = true)
    {
        LaunchTest::ExpectLaunch("Mail", mode, excludesOthers, started, "query\t" + query);
    }
};

TEST_F(ForeignCatalog, NamesArePastedAsTheyStand)
{
    const struct
    {
        const char* name;
        const char* query;
    } cases[] = {
        {"x mail", R"("Mail" NOT("x mail"))"},
        // Words and signs of the query language, inside the quotes of the name
        {"x mail NOT(y) OR z", R"("Mail" NOT("x mail NOT(y) OR z"))"},
        {"(x mail", R"("Mail" NOT("(x mail"))"},
        {"%s%n mail %d", R"("Mail" NOT("%s%n mail %d"))"},
        // Quotes, which end the phrase
        {"the &quot;x&quot; mail", R"("Mail" NOT("the "x" mail"))"},
        {"x mail&quot; OR &quot;y", R"("Mail" NOT("x mail" OR "y"))"},
        {"x mail&quot;) OR (&quot;y", R"("Mail" NOT("x mail") OR ("y"))"},
        // All of its words stand in the wanted name: it is taken for it.
        {"&quot;mail&quot;", R"("Mail")"},
        // No word of the wanted name
        {"&quot;) OR (&quot;y", R"("Mail")"},
    };
    for (const auto& [name, query] : cases) {
        EXPECT_EQ(Query(name), query);
    }
}

// Whatever there is, a folder as well.
TEST_F(ForeignCatalog, ARecordStaysAsLongAsItsPathExists)
{
    WriteName("x mail");
    Start({L"Mail.lnk"});
    EXPECT_EQ(test::QueryFor(sandbox, *host, "Mail"), R"("Mail" NOT("x mail"))") << "after the first pass";
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), HasSubstr("\"x mail\""));
}

TEST_F(ForeignCatalog, WordsOfTheQueryLanguageAreWordsOfTheName)
{
    WriteName("x mail NOT(Mail) OR Reader");
    Start({L"Mail.lnk", L"Mail Reader.lnk"});
    ExpectLaunch(R"("Mail" NOT("x mail NOT(Mail) OR Reader"))", "Mail");
}

TEST_F(ForeignCatalog, ANameWithQuotesCanChooseAmongTheApplicationsThatThereAre)
{
    WriteName("x mail&quot; OR &quot;y&quot;) Reader NOT(&quot;z");
    Start({L"Mail.lnk", L"Mail Reader.lnk"});
    ExpectLaunch(R"("Mail" NOT("x mail" OR "y") Reader NOT("z"))", "Mail Reader");
}

TEST_F(ForeignCatalog, ANameWithQuotesCanHideTheWantedApplication)
{
    constexpr char query[] = R"("Mail" NOT("x mail" OR "Mail"))";
    WriteName("x mail&quot; OR &quot;Mail");
    Start({L"Mail.lnk"});
    host->Send("search\t0\t1\tMail");
    desktop->WaitFor(std::string("no hit\t") + query);
    desktop->ClosePane();
    EXPECT_EQ(host->Answer(30000), "0x00000000");
    EXPECT_TRUE(desktop->HasStartedNothing());
}

TEST_F(ForeignCatalog, WithoutExclusionsItHasNoPartInALaunch)
{
    WriteName("x mail&quot; OR &quot;Mail");
    Start({L"Mail.lnk"});
    ExpectLaunch("\"Mail\"", "Mail", 0, false);
}

// By what counts as the wanted application in mode 2: its name is pasted without quotes and exclusions then.
TEST_F(ForeignCatalog, ANameCanTakeTheExclusionsFromModeTwo)
{
    WriteName("mail");
    Start({L"Big Mail.lnk"});
    ExpectLaunch("Mail", "Big Mail", 2);
}

// The path is looked for, and that is all: not even when the record's name is the one that is launched.
TEST_F(ForeignCatalog, TheProgramOfARecordIsNeitherStartedNorOpened)
{
    const std::wstring program = sandbox.Folder() + L"\\Planted.exe";
    ASSERT_TRUE(CopyFileW((test::BuildFolder() + L"\\StandInApp.exe").c_str(), program.c_str(), FALSE));
    WriteCatalog("Planted", program, "LocalizeName=\"Mail\"");
    Start({L"Mail.lnk"});
    host->Do("finalize");
    PassWatched(*host);
    EXPECT_EQ(host->Search("Mail", 0, true), "0x00000000");
    EXPECT_EQ(desktop->Started(), "Mail");
    EXPECT_EQ(FindWindowW(standin::appClass, L"Planted"), nullptr);
    host->Do("finalize");
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()),
                HasSubstr("\\Planted.exe\" LocalizeName=\"Mail\""))
        << "it was found to be there";
    EXPECT_EQ(host->Measure("opened\tPlanted.exe"), 0u);
}

// Who makes a package chooses its names.
TEST_F(ForeignCatalog, APackageWithQuotesInItsNameCanHideAnotherApplication)
{
    sandbox.WritePackage(L"A", test::Manifest("Vel.A", "1.0.0.0", "x mail&quot; OR &quot;Mail", ""), "");
    Start({L"Mail.lnk"});
    EXPECT_EQ(test::QueryFor(sandbox, *host, "Mail"), R"("Mail" NOT("x mail" or "mail"))")
        << "in small letters, as they are kept";
}

// The settings are those of the machine.
TEST_F(ForeignCatalog, SettingsOfAUserAreNotLookedAt)
{
    sandbox.Settings().Delete();
    test::ScopedKey user(HKEY_CURRENT_USER, test::kSettingsKey);
    user.SetDword(L"DebugLog", 1);
    user.SetDword(L"RefreshInterval", 0);
    sandbox.AddCommonShortcut(L"A.lnk");
    test::HostProcess asked(sandbox);
    asked.InitializeAndPass();
    asked.Do("finalize");
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), HasSubstr("A.lnk"));
    EXPECT_FALSE(test::Exists(sandbox.LogFile()));
    // The machine's log tells the interval.
    sandbox.Settings().SetDword(L"DebugLog", 1);
    asked.Do("line-up");
    EXPECT_EQ(asked.Command("init"), "0x00000000");
    asked.Do("open");
    test::WaitForFirstPass();
    asked.Do("finalize");
    EXPECT_THAT(sandbox.Log(), testing::Contains("CQanhReg::GetRefreshInterval OUT(720)"));
}

// Of a shortcut only its name and its path are taken.
TEST_F(ForeignCatalog, ShortcutsAreNotOpened)
{
    sandbox.AddCommonShortcut(L"A.lnk");
    test::HostProcess asked(sandbox);
    PassWatched(asked);
    EXPECT_THAT(test::ReadFileBytes(sandbox.CatalogFile()), HasSubstr("DisplayName=\"A\""));
    EXPECT_EQ(asked.Measure("opened\tA.lnk"), 0u);
    EXPECT_GT(asked.Measure("opened\tPresetAppNameList.xml"), 0u) << "those of the platform are noted";
}

} // namespace
