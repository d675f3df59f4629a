// The exports that answer questions about Store packages.

#include "QanHelper.h"

#include "common/WinRtError.h"
#include "support/Allocations.h"
#include "support/Apartments.h"
#include "support/FakePackages.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <new>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr wchar_t kOffice[] = L"Microsoft.Office.Desktop_8wekyb3d8bbwe";

class Queries : public ::testing::Test
{
protected:
    ~Queries() override { EXPECT_THAT(m_store.objects.Leaks(), IsEmpty()); }

    HRESULT Ask(const wchar_t* id) { return QanhIsInstalledByAppUserModeID(id, &m_isInstalled); }

    // The families that the system was asked for.
    std::vector<std::string> Asked() const
    {
        const std::string call = "FindPackagesByUserSecurityIdPackageFamilyName(, ";
        std::vector<std::string> families;
        for (const std::string& event : m_store.objects.journal) {
            if (event.rfind(call, 0) == 0) {
                families.push_back(event.substr(call.size(), event.size() - call.size() - 1));
            }
        }
        return families;
    }

    test::FakeStore m_store;
    BOOL m_isInstalled = 7; // neither true nor false: shows whether it was set
};

TEST_F(Queries, IsInstalledTellsWhetherTheFamilyHasAPackage)
{
    m_store.Add(L"mail_1");
    const test::LogCapture log;
    EXPECT_EQ(QanhIsInstalled(L"mail_1", &m_isInstalled), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_THAT(log.Lines(),
                ElementsAre("QanhIsInstalled(mail_1) IN", "CQanhPackageManager::IsInstalled(mail_1) IN",
                            "CQanhPackageManager::FindPackageByName(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                            "CQanhPackageManager::FindPackageByName OUT",
                            "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)",
                            "QanhIsInstalled OUT(0x00000000)"));
    EXPECT_EQ(QanhIsInstalled(L"none", &m_isInstalled), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
}

TEST_F(Queries, IsInstalledTakesAnIdForAFamily)
{
    EXPECT_EQ(QanhIsInstalled(L"mail_1!App", &m_isInstalled), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    EXPECT_THAT(Asked(), ElementsAre("mail_1!App"));
}

TEST_F(Queries, IsInstalledReturnsTheFailureOfTheSystem)
{
    m_store.objects.Fail("First", E_ACCESSDENIED);
    const test::LogCapture log;
    EXPECT_EQ(QanhIsInstalled(L"mail_1", &m_isInstalled), E_FAIL);
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_EQ(log.Lines().back(), "QanhIsInstalled OUT(0x80004005)");
}

TEST_F(Queries, WorkWithoutInitializationInEveryApartment)
{
    m_store.Add(L"mail_1");
    for (const test::Apartment apartment :
         {test::Apartment::kNone, test::Apartment::kSingleThreaded, test::Apartment::kMultithreaded}) {
        m_isInstalled = 7;
        EXPECT_TRUE(test::KeepsApartment(
            apartment, [&] { EXPECT_EQ(QanhIsInstalled(L"mail_1", &m_isInstalled), S_OK); }));
        EXPECT_EQ(m_isInstalled, 1);
    }
}

TEST_F(Queries, NullArgumentsComeBeforeEmptyOnes)
{
    wchar_t* name = nullptr;
    const test::LogCapture log;
    EXPECT_EQ(QanhIsInstalled(nullptr, &m_isInstalled), E_POINTER);
    EXPECT_EQ(QanhIsInstalled(L"mail_1", nullptr), E_POINTER);
    EXPECT_EQ(QanhIsInstalled(L"", nullptr), E_POINTER);
    EXPECT_EQ(QanhIsInstalled(L"", &m_isInstalled), E_INVALIDARG);
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(QanhIsInstalledByAppUserModeID(L"mail_1!App", nullptr), E_POINTER);
    EXPECT_EQ(QanhIsInstalledByAppUserModeID(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(nullptr, &name), E_POINTER);
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"mail_1", nullptr), E_POINTER);
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"", nullptr), E_POINTER);
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"", &name), E_INVALIDARG);
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_EQ(name, nullptr);
    EXPECT_THAT(m_store.objects.journal, IsEmpty());
    char out[16];
    wsprintfA(out, "0x%08X", static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(&name)));
    const std::string pointer = out;
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            "QanhIsInstalled((null)) IN", "QanhIsInstalled OUT(0x80004003)", "QanhIsInstalled(mail_1) IN",
            "QanhIsInstalled OUT(0x80004003)", "QanhIsInstalled() IN", "QanhIsInstalled OUT(0x80004003)",
            "QanhIsInstalled() IN", "QanhIsInstalled OUT(0x80070057)",
            "QanhIsInstalledByAppUserModeID((null)) IN", "QanhIsInstalledByAppUserModeID OUT(0x80004003)",
            "QanhIsInstalledByAppUserModeID(mail_1!App) IN", "QanhIsInstalledByAppUserModeID OUT(0x80004003)",
            "QanhIsInstalledByAppUserModeID() IN", "QanhIsInstalledByAppUserModeID OUT(0x80004003)",
            "QanhIsInstalledByAppUserModeID() IN", "QanhIsInstalledByAppUserModeID OUT(0x80070057)",
            "QanhGetAppDisplayNameByPFN((null), " + pointer + ") IN",
            "QanhGetAppDisplayNameByPFN OUT(0x80004003)", "QanhGetAppDisplayNameByPFN(mail_1, 0x00000000) IN",
            "QanhGetAppDisplayNameByPFN OUT(0x80004003)", "QanhGetAppDisplayNameByPFN(, 0x00000000) IN",
            "QanhGetAppDisplayNameByPFN OUT(0x80004003)", "QanhGetAppDisplayNameByPFN(, " + pointer + ") IN",
            "QanhGetAppDisplayNameByPFN OUT(0x80070057)"));
}

// IDs of applications: a family, "!", and the application.

TEST_F(Queries, ByIdAsksForTheFamily)
{
    m_store.Add(L"Mail_1");
    const test::LogCapture log;
    EXPECT_EQ(Ask(L"Mail_1!App"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_THAT(log.Lines(), ElementsAre("QanhIsInstalledByAppUserModeID(Mail_1!App) IN",
                                         "CQanhPackageManager::IsInstalled(Mail_1) IN",
                                         "CQanhPackageManager::FindPackageByName(Mail_1) IN",
                                         "CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                         "CQanhPackageManager::FindPackageByName OUT",
                                         "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)",
                                         "QanhIsInstalledByAppUserModeID OUT(0x00000000)"));
}

TEST_F(Queries, ByIdSplitsAtTheLastSeparatorAndKeepsTheCase)
{
    Ask(L"A!B!C");
    Ask(L"Mail_1!");
    Ask(L"NoSeparator");
    Ask(L"UPPER_1!APP");
    Ask(L"!!x");
    EXPECT_THAT(Asked(), ElementsAre("A!B", "Mail_1", "NoSeparator", "UPPER_1", "!"));
    // Only one family is asked about its dependencies.
    EXPECT_EQ(m_store.objects.Calls("Dependencies"), 0u);
}

TEST_F(Queries, TakeTextsOfAnyLengthAndOfAnyCharacters)
{
    const std::wstring longFamily(5000, L'f');
    // Letters of another script, halves of surrogate pairs, the format's own sign.
    const std::wstring oddFamily = L"\u30e1\u30fc\u30eb_\xDC00\xD800%s\u00c4";
    m_store.Add(longFamily.c_str());
    m_store.Add(oddFamily.c_str());
    for (const std::wstring& family : {longFamily, oddFamily}) {
        for (const std::wstring& tail : {std::wstring(), std::wstring(L"!\xD83D"), L"!" + longFamily}) {
            m_isInstalled = 7;
            EXPECT_EQ(Ask((family + tail).c_str()), S_OK);
            EXPECT_EQ(m_isInstalled, 1);
        }
        m_isInstalled = 7;
        EXPECT_EQ(QanhIsInstalled(family.c_str(), &m_isInstalled), S_OK);
        EXPECT_EQ(m_isInstalled, 1);
    }
    EXPECT_EQ(Ask((longFamily + L"f!App").c_str()), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
}

TEST_F(Queries, WithoutAManagerNothingIsInstalled)
{
    m_store.Add(L"mail_1");
    m_store.Add(kOffice, {L"word"});
    m_store.initializeResult = E_OUTOFMEMORY;
    EXPECT_EQ(QanhIsInstalled(L"mail_1", &m_isInstalled), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    for (const wchar_t* id : {L"mail_1", L"mail_1!App", L"Microsoft.Office.Desktop_8wekyb3d8bbwe!word"}) {
        m_isInstalled = 7;
        EXPECT_EQ(Ask(id), S_OK);
        EXPECT_EQ(m_isInstalled, 0);
    }
    wchar_t* name = nullptr;
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"mail_1", &name), static_cast<HRESULT>(0xA0000001));
    EXPECT_EQ(name, nullptr);
}

TEST_F(Queries, ByIdReturnsTheFailureOfTheSystem)
{
    m_store.objects.Fail("First", E_ACCESSDENIED);
    for (const wchar_t* id : {L"mail_1", L"mail_1!App", L"Microsoft.Office.Desktop_8wekyb3d8bbwe!word"}) {
        const test::LogCapture log;
        EXPECT_EQ(Ask(id), E_FAIL);
        EXPECT_EQ(m_isInstalled, 7);
        EXPECT_EQ(log.Lines().back(), "QanhIsInstalledByAppUserModeID OUT(0x80004005)");
    }
}

TEST_F(Queries, ByIdWithoutAFamilyIsInvalid)
{
    const test::LogCapture log;
    EXPECT_EQ(Ask(L"!"), E_INVALIDARG);
    EXPECT_EQ(Ask(L"!App"), E_INVALIDARG);
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_THAT(Asked(), IsEmpty());
    EXPECT_THAT(log.Lines(),
                ElementsAre("QanhIsInstalledByAppUserModeID(!) IN", "CQanhPackageManager::IsInstalled() IN",
                            "CQanhPackageManager::IsInstalled OUT(0x80070057)",
                            "QanhIsInstalledByAppUserModeID OUT(0x80070057)",
                            "QanhIsInstalledByAppUserModeID(!App) IN",
                            "CQanhPackageManager::IsInstalled() IN",
                            "CQanhPackageManager::IsInstalled OUT(0x80070057)",
                            "QanhIsInstalledByAppUserModeID OUT(0x80070057)"));
}

// The suite whose applications show as dependencies of its package.

TEST_F(Queries, ByIdOfTheSuiteAsksForTheApplicationAmongTheDependencies)
{
    m_store.Add(kOffice, {L"Microsoft.Office.Desktop.Word_8wekyb3d8bbwe"});
    const test::LogCapture log;
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Word"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Excel"), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_THAT(
        std::vector<std::string>(lines.begin(), lines.begin() + 8),
        ElementsAre("QanhIsInstalledByAppUserModeID(Microsoft.Office.Desktop_8wekyb3d8bbwe!Word) IN",
                    "CQanhPackageManager::IsInstalledEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN",
                    "CQanhPackageManager::FindPackageByNameEx(Microsoft.Office.Desktop_8wekyb3d8bbwe) IN",
                    "CQanhPackageManager::GetPackageManager IN",
                    "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                    "CQanhPackageManager::FindPackageByNameEx OUT",
                    "CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 1)",
                    "QanhIsInstalledByAppUserModeID OUT(0x00000000)"));
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
    m_store.Add(test::FromUtf8(GetParam().family).c_str(), {L"something else"});
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

TEST_F(Queries, ByIdOfTheSuiteIgnoresTheCaseOfTheApplication)
{
    m_store.Add(kOffice, {L"Microsoft.Office.Desktop.WORD_8wekyb3d8bbwe"});
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!word"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
}

TEST_F(Queries, ByIdOfTheSuiteTakesTheApplicationFromBehindTheLastSeparator)
{
    m_store.Add(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools", {L"Word"});
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools!Word"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools!ord!"), S_OK);
    EXPECT_EQ(m_isInstalled, 0); // another family
    EXPECT_THAT(Asked(), ElementsAre("Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools",
                                     "Microsoft.Office.Desktop_8wekyb3d8bbwe!Tools!ord"));
}

TEST_F(Queries, ByIdOfTheSuiteLooksAtEachPackageOfIt)
{
    m_store.Add(kOffice, {L"sheet"});
    m_store.Add(kOffice, {L"word"});
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!Word"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
}

TEST_F(Queries, ByIdOfTheSuiteWithoutAnApplicationIsInstalledWithAnyDependency)
{
    m_store.Add(kOffice);
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!"), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    m_store.Add(kOffice, {L"any"});
    EXPECT_EQ(Ask(L"Microsoft.Office.Desktop_8wekyb3d8bbwe!"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
}

TEST_F(Queries, ByIdWithoutMemoryForTheSplittingIsRaised)
{
    const wchar_t id[] = L"Microsoft.Office.Desktop_8wekyb3d8bbwe!An application of some length";
    bool raised = false;
    {
        const test::AllocationWatch watch(0);
        try {
            Ask(id);
        } catch (const std::bad_alloc&) {
            raised = true;
        }
    }
    EXPECT_TRUE(raised);
    EXPECT_EQ(m_isInstalled, 7);
}

// Display names.

class DisplayNameExport : public Queries
{
protected:
    ~DisplayNameExport() override { QanhReleaseString(m_name); }

    void Install(const std::string& displayName, const std::string& tail = "")
    {
        test::WriteFileBytes(m_folder / L"AppxManifest.xml",
                             "<Applications><Application><VisualElements DisplayName=\"" + displayName +
                                 "\"/></Application>" + tail + "</Applications>");
        test::PackageFacts facts;
        facts.familyName = L"mail_1";
        facts.path = m_folder.Path();
        m_store.Add(facts);
    }
    HRESULT Get() { return QanhGetAppDisplayNameByPFN(L"mail_1", &m_name); }

    test::TemporaryFolder m_folder;
    wchar_t* m_name = nullptr;
};

TEST_F(DisplayNameExport, HandsOutATextForTheHostToRelease)
{
    Install("Weather");
    EXPECT_EQ(Get(), S_OK);
    EXPECT_STREQ(m_name, L"weather");
    EXPECT_EQ(LocalSize(m_name), 512u);
}

TEST_F(DisplayNameExport, LogsTheFirstLetterOfANameTwice)
{
    Install("Weather");
    const test::LogCapture log;
    Get();
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(lines[1].rfind("CQanhPackageManager::GetAppDisplayNameByPFN(mail_1, 0x", 0), 0u);
    EXPECT_EQ(lines[lines.size() - 2],
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000000) DisplayName = w");
    EXPECT_EQ(lines.back(), "QanhGetAppDisplayNameByPFN OUT(0x00000000) DisplayName = w");
}

TEST_F(DisplayNameExport, LogsTheBytesOfANameUpToTheFirstZero)
{
    Install("\xE5\xA4\xA9\xE6\xB0\x97 A"); // U+5929 U+6C17, a blank
    const test::LogCapture log;
    Get();
    EXPECT_STREQ(m_name, L"\u5929\u6c17 a");
    EXPECT_EQ(log.Lines().back(),
              "QanhGetAppDisplayNameByPFN OUT(0x00000000) DisplayName = \x29\x59\x17\x6C ");
}

TEST_F(DisplayNameExport, OfAnUnknownFamilyIsLeftAsItWas)
{
    wchar_t before[] = L"before";
    wchar_t* name = before;
    const test::LogCapture log;
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"none", &name), static_cast<HRESULT>(0xA0000001));
    EXPECT_EQ(name, before);
    EXPECT_EQ(log.Lines().back(), "QanhGetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = b");
    name = nullptr;
    EXPECT_EQ(QanhGetAppDisplayNameByPFN(L"none", &name), static_cast<HRESULT>(0xA0000001));
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(log.Lines().back(), "QanhGetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)");
}

TEST_F(DisplayNameExport, OfSeveralApplicationsIsNone)
{
    Install("Mail", "<Application/>");
    const test::LogCapture log;
    EXPECT_EQ(Get(), static_cast<HRESULT>(0xA0000002));
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(), "QanhGetAppDisplayNameByPFN OUT(0xA0000002) DisplayName = (null)");
}

TEST_F(DisplayNameExport, ReturnsTheFailureOfTheSystem)
{
    Install("Mail");
    m_store.objects.Fail("Current", E_ACCESSDENIED);
    EXPECT_EQ(Get(), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayNameExport, LogsTheLowerHalfOfTheOutPointer)
{
    const test::LogCapture log;
    Get();
    char out[64];
    wsprintfA(out, "QanhGetAppDisplayNameByPFN(mail_1, 0x%08X) IN",
              static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(&m_name)));
    EXPECT_EQ(log.Lines().front(), out);
}

} // namespace
