// The exports that answer questions about Store packages. What they do with null and empty arguments is
// tested with those of the other exports (ArgumentsTest.cpp).

#include "QanHelper.h"

#include "support/Allocations.h"
#include "support/FakePackages.h"
#include "support/Test.h"

namespace {

using namespace test;

const std::wstring kOffice = L"Microsoft.Office.Desktop_8wekyb3d8bbwe";
constexpr HRESULT kNoPackage = static_cast<HRESULT>(0xA0000001);

class Queries : public ::testing::Test
{
protected:
    HRESULT Ask(const std::wstring& id) { return QanhIsInstalledByAppUserModeID(id.c_str(), &m_isInstalled); }
    void ExpectInstalled(const std::wstring& id, BOOL expected)
    {
        m_isInstalled = 7;
        EXPECT_EQ(Ask(id), S_OK);
        EXPECT_EQ(m_isInstalled, expected);
    }
    void ExpectFamilyInstalled(const std::wstring& family, BOOL expected)
    {
        m_isInstalled = 7;
        EXPECT_EQ(QanhIsInstalled(family.c_str(), &m_isInstalled), S_OK);
        EXPECT_EQ(m_isInstalled, expected);
    }

    // The lines of a question whose answer is yes. With "Ex" it is about the dependencies too.
    static Lines InstalledLines(const std::string& entry, const std::string& family,
                                const std::string& ex = "")
    {
        return Call(entry, "(0x00000000)",
                    Call("CQanhPackageManager::IsInstalled" + ex + "(" + family + ")", "(*pIsInstalled = 1)",
                         Call("CQanhPackageManager::FindPackageByName" + ex + "(" + family + ")", "",
                              Call("CQanhPackageManager::GetPackageManager", "(0x00000000)"))));
    }

    // The families that the system was asked for.
    Lines Asked() const
    {
        const std::string call = "FindPackagesByUserSecurityIdPackageFamilyName(, ";
        Lines families;
        for (const std::string& event : m_store.objects.journal) {
            if (event.starts_with(call)) {
                families.push_back(event.substr(call.size(), event.size() - call.size() - 1));
            }
        }
        return families;
    }

    FakeStore m_store;
    BOOL m_isInstalled = 7; // neither true nor false: shows whether it was set
};

TEST_F(Queries, IsInstalledTellsWhetherTheFamilyHasAPackage)
{
    m_store.Add(L"mail_1");
    const LogCapture log;
    ExpectFamilyInstalled(L"mail_1", 1);
    EXPECT_EQ(log.Lines(), InstalledLines("QanhIsInstalled(mail_1)", "mail_1"));
    ExpectFamilyInstalled(L"none", 0);
}

TEST_F(Queries, IsInstalledTakesAnIdForAFamily)
{
    ExpectFamilyInstalled(L"mail_1!App", 0);
    EXPECT_THAT(Asked(), ElementsAre("mail_1!App"));
}

// IDs of applications: a family, "!", and the application.

TEST_F(Queries, ByIdAsksForTheFamily)
{
    m_store.Add(L"Mail_1");
    const LogCapture log;
    ExpectInstalled(L"Mail_1!App", 1);
    EXPECT_EQ(log.Lines(), InstalledLines("QanhIsInstalledByAppUserModeID(Mail_1!App)", "Mail_1"));
}

TEST_F(Queries, ByIdSplitsAtTheLastSeparatorAndKeepsTheCase)
{
    for (const wchar_t* id : {L"A!B!C", L"Mail_1!", L"NoSeparator", L"UPPER_1!APP", L"!!x"}) {
        Ask(id);
    }
    EXPECT_THAT(Asked(), ElementsAre("A!B", "Mail_1", "NoSeparator", "UPPER_1", "!"));
    // Only one family is asked about its dependencies.
    EXPECT_EQ(m_store.objects.Calls("Dependencies"), 0u);
}

TEST_F(Queries, TakeTextsOfAnyLengthAndOfAnyCharacters)
{
    const std::wstring longFamily(5000, L'f');
    // Letters of another script, halves of surrogate pairs, the format's own sign.
    const std::wstring oddFamily = L"\u30e1\u30fc\u30eb_\xDC00\xD800%s\u00c4";
    for (const std::wstring& family : {longFamily, oddFamily}) {
        m_store.Add(family.c_str());
        for (const std::wstring& tail : {std::wstring(), std::wstring(L"!\xD83D"), L"!" + longFamily}) {
            ExpectInstalled(family + tail, 1);
        }
        ExpectFamilyInstalled(family, 1);
    }
    ExpectInstalled(longFamily + L"f!App", 0);
}

TEST_F(Queries, WithoutAManagerNothingIsInstalled)
{
    m_store.Add(L"mail_1");
    m_store.Add(kOffice.c_str(), {L"word"});
    m_store.initializeResult = E_OUTOFMEMORY;
    ExpectFamilyInstalled(L"mail_1", 0);
    for (const std::wstring& id :
         {std::wstring(L"mail_1"), std::wstring(L"mail_1!App"), kOffice + L"!word"}) {
        ExpectInstalled(id, 0);
    }
    wchar_t* name = nullptr;
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"mail_1", &name), kNoPackage);
    EXPECT_EQ(name, nullptr);
}

TEST_F(Queries, ReturnTheFailureOfTheSystem)
{
    m_store.objects.Fail("First", E_ACCESSDENIED);
    const LogCapture log;
    EXPECT_EQ(QanhIsInstalled(L"mail_1", &m_isInstalled), E_FAIL);
    EXPECT_EQ(log.Lines().back(), "QanhIsInstalled OUT(0x80004005)");
    for (const std::wstring& id :
         {std::wstring(L"mail_1"), std::wstring(L"mail_1!App"), kOffice + L"!word"}) {
        EXPECT_EQ(Ask(id), E_FAIL);
        EXPECT_EQ(log.Lines().back(), "QanhIsInstalledByAppUserModeID OUT(0x80004005)");
    }
    EXPECT_EQ(m_isInstalled, 7);
}

TEST_F(Queries, ByIdWithoutAFamilyIsInvalid)
{
    for (const std::string& id : {std::string("!"), std::string("!App")}) {
        const LogCapture log;
        EXPECT_EQ(Ask(FromUtf8(id)), E_INVALIDARG);
        EXPECT_EQ(log.Lines(), Call("QanhIsInstalledByAppUserModeID(" + id + ")", "(0x80070057)",
                                    Call("CQanhPackageManager::IsInstalled()", "(0x80070057)")));
    }
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_THAT(Asked(), IsEmpty());
}

// The suite whose applications show as dependencies of its package.

TEST_F(Queries, ByIdOfTheSuiteAsksForTheApplicationAmongTheDependencies)
{
    m_store.Add(kOffice.c_str(), {L"Microsoft.Office.Desktop.Word_8wekyb3d8bbwe"});
    LogCapture log;
    ExpectInstalled(kOffice + L"!Word", 1);
    EXPECT_EQ(log.Lines(),
              InstalledLines("QanhIsInstalledByAppUserModeID(Microsoft.Office.Desktop_8wekyb3d8bbwe!Word)",
                             "Microsoft.Office.Desktop_8wekyb3d8bbwe", "Ex"));
    log.Clear();
    ExpectInstalled(kOffice + L"!Excel", 0);
    EXPECT_EQ(log.Lines().size(), 8u);
}

struct SuiteCase
{
    const char* name;
    const wchar_t* id;
    const char* family;
    bool asksDependencies;
};

class SuiteId : public Queries, public ::testing::WithParamInterface<SuiteCase>
{
};

TEST_P(SuiteId, IsKnownByTheFamilyAnywhereInIt)
{
    // Whatever family is asked for, there is a package of it.
    m_store.Add(FromUtf8(GetParam().family).c_str(), {L"something else"});
    EXPECT_EQ(Ask(GetParam().id), S_OK);
    EXPECT_THAT(Asked(), ElementsAre(GetParam().family));
    EXPECT_EQ(m_store.objects.Calls("Dependencies") == 1, GetParam().asksDependencies);
}

const SuiteCase kSuiteCases[] = {
    {"AsItIs", L"Microsoft.Office.Desktop_8wekyb3d8bbwe!x", "Microsoft.Office.Desktop_8wekyb3d8bbwe", true},
    {"UpperCase", L"MICROSOFT.OFFICE.DESKTOP_8WEKYB3D8BBWE!X", "MICROSOFT.OFFICE.DESKTOP_8WEKYB3D8BBWE",
     true},
    {"LowerCase", L"microsoft.office.desktop_8wekyb3d8bbwe!x", "microsoft.office.desktop_8wekyb3d8bbwe",
     true},
    {"WithTextAround", L"x.Microsoft.Office.Desktop_8wekyb3d8bbwe2!x",
     "x.Microsoft.Office.Desktop_8wekyb3d8bbwe2", true},
    {"AsTheApplication", L"mail_1!Microsoft.Office.Desktop_8wekyb3d8bbwe", "mail_1", true},
    {"BetweenTwoSeparators", L"mail_1!Microsoft.Office.Desktop_8wekyb3d8bbwe!x",
     "mail_1!Microsoft.Office.Desktop_8wekyb3d8bbwe", true},
    {"WithoutASeparator", L"Microsoft.Office.Desktop_8wekyb3d8bbwe", "Microsoft.Office.Desktop_8wekyb3d8bbwe",
     false},
    {"AnotherPublisher", L"Microsoft.Office.Desktop_8wekyb3d8bbw!x", "Microsoft.Office.Desktop_8wekyb3d8bbw",
     false},
    {"AnotherName", L"Microsoft.Office.Desktop.Word_8wekyb3d8bbwe!x",
     "Microsoft.Office.Desktop.Word_8wekyb3d8bbwe", false},
    {"UpperCaseWithTextAround", L"X.MICROSOFT.OFFICE.DESKTOP_8WEKYB3D8BBWE.Y!Z",
     "X.MICROSOFT.OFFICE.DESKTOP_8WEKYB3D8BBWE.Y", true},
    {"OnlyTheStart", L"Microsoft.Office.Desktop!x", "Microsoft.Office.Desktop", false},
    {"CutByASeparator", L"Microsoft.Office!.Desktop_8wekyb3d8bbwe", "Microsoft.Office", false},
};

INSTANTIATE_TEST_SUITE_P(Of, SuiteId, ::testing::ValuesIn(kSuiteCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(Queries, ByIdOfTheSuiteTakesTheApplicationFromBehindTheLastSeparator)
{
    m_store.Add((kOffice + L"!Tools").c_str(), {L"Word"});
    ExpectInstalled(kOffice + L"!Tools!Word", 1);
    ExpectInstalled(kOffice + L"!Tools!ord!", 0); // another family
    EXPECT_THAT(Asked(), ElementsAre("Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools",
                                     "Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools!ord"));
}

TEST_F(Queries, ByIdOfTheSuiteLooksAtEachPackageOfIt)
{
    m_store.Add(kOffice.c_str(), {L"sheet"});
    m_store.Add(kOffice.c_str(), {L"word"});
    ExpectInstalled(kOffice + L"!Word", 1);
}

TEST_F(Queries, ByIdOfTheSuiteWithoutAnApplicationIsInstalledWithAnyDependency)
{
    m_store.Add(kOffice.c_str());
    ExpectInstalled(kOffice + L"!", 0);
    m_store.Add(kOffice.c_str(), {L"any"});
    ExpectInstalled(kOffice + L"!", 1);
}

TEST_F(Queries, ByIdWithoutMemoryForTheSplittingIsRaised)
{
    const wchar_t id[] = L"Microsoft.Office.Desktop_8wekyb3d8bbwe!An application of some length";
    const auto ask = [&] { QanhIsInstalledByAppUserModeID(id, &m_isInstalled); };
    EXPECT_EQ(TryRaisingWithFailingAllocation(0, ask).result, E_OUTOFMEMORY);
    EXPECT_EQ(m_isInstalled, 7);
}

// Display names.

class DisplayNameExport : public Queries
{
protected:
    ~DisplayNameExport() override { QanhReleaseString(m_name); }

    void Install(const std::string& displayName, const std::string& tail = "")
    {
        WriteFileBytes(m_folder / L"AppxManifest.xml",
                       "<Applications><Application><VisualElements DisplayName=\"" + displayName +
                           "\"/></Application>" + tail + "</Applications>");
        PackageFacts facts;
        facts.familyName = L"mail_1";
        facts.path = m_folder.Path();
        m_store.Add(facts);
    }
    // The last line tells the result and the name.
    void ExpectName(HRESULT result, const wchar_t* name, const std::string& told)
    {
        EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"mail_1", &m_name), result);
        EXPECT_STREQ(m_name, name);
        EXPECT_EQ(m_log.Lines().back(), "QanhGetAppDisplayNameByPFN OUT(" + told);
    }

    LogCapture m_log;
    TemporaryFolder m_folder;
    wchar_t* m_name = nullptr;
};

TEST_F(DisplayNameExport, HandsOutATextForTheHostToReleaseAndLogsItsFirstLetterTwice)
{
    Install("Weather");
    ExpectName(S_OK, L"weather", "0x00000000) DisplayName = w");
    EXPECT_EQ(LocalSize(m_name), 512u);
    const Lines lines = m_log.Lines();
    ASSERT_GT(lines.size(), 3u);
    // The lower half of the out pointer.
    EXPECT_EQ(lines[0], "QanhGetAppDisplayNameByPFN(mail_1, " + Hexadecimal(&m_name) + ") IN");
    EXPECT_TRUE(lines[1].starts_with("CQanhPackageManager::GetAppDisplayNameByPFN(mail_1, 0x"));
    EXPECT_EQ(lines[lines.size() - 2],
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000000) DisplayName = w");
}

TEST_F(DisplayNameExport, LogsTheBytesOfANameUpToTheFirstZero)
{
    Install("\xE5\xA4\xA9\xE6\xB0\x97 A"); // U+5929 U+6C17, a blank
    ExpectName(S_OK, L"\u5929\u6c17 a", "0x00000000) DisplayName = \x29\x59\x17\x6C ");
}

TEST_F(DisplayNameExport, OfAnUnknownFamilyIsLeftAsItWas)
{
    wchar_t before[] = L"before";
    m_name = before;
    ExpectName(kNoPackage, L"before", "0xA0000001) DisplayName = b");
    EXPECT_EQ(m_name, before);
    m_name = nullptr;
    ExpectName(kNoPackage, nullptr, "0xA0000001) DisplayName = (null)");
}

TEST_F(DisplayNameExport, OfSeveralApplicationsIsNone)
{
    Install("Mail", "<Application/>");
    ExpectName(static_cast<HRESULT>(0xA0000002), nullptr, "0xA0000002) DisplayName = (null)");
}

TEST_F(DisplayNameExport, ReturnsTheFailureOfTheSystem)
{
    Install("Mail");
    m_store.objects.Fail("Current", E_ACCESSDENIED);
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"mail_1", &m_name), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
}

} // namespace
