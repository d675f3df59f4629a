// What the package manager learns from the system about the Store packages of the current user.

#include "discovery/PackageManager.h"

#include "common/RuntimeError.h"
#include "support/Apartments.h"
#include "support/FakePackages.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using test::Apartment;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr wchar_t kFamily[] = L"mail_1";
constexpr HRESULT kNoPackage = static_cast<HRESULT>(0xA0000001);

std::string Message(HRESULT result)
{
    return test::ToUtf8(RuntimeError(result).Message());
}

class StoreQueries : public ::testing::Test
{
protected:
    ~StoreQueries() override { EXPECT_THAT(m_store.objects.Leaks(), IsEmpty()); }

    std::vector<std::string>& Journal() { return m_store.objects.journal; }

    test::FakeStore m_store;
};

// The system's package manager.

class GetPackageManager : public StoreQueries
{
protected:
    // Whether there is a manager, which is given back, and the flag.
    bool Get()
    {
        return CQanhPackageManager::GetPackageManager(&m_needsUninitialize) != nullptr;
    }
    void Leave() const
    {
        if (m_needsUninitialize == 1) {
            RoUninitialize();
        }
    }

    BOOL m_needsUninitialize = 7; // neither true nor false: shows whether it was set
};

TEST_F(GetPackageManager, EntersTheRuntimeForAThreadWithoutAnApartment)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
        const test::LogCapture log;
        EXPECT_TRUE(Get());
        EXPECT_EQ(m_needsUninitialize, 1);
        EXPECT_EQ(test::ApartmentOfThread(), Apartment::kSingleThreaded);
        Leave();
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::GetPackageManager IN",
                                             "CQanhPackageManager::GetPackageManager OUT(0x00000000)"));
    }));
    EXPECT_THAT(Journal(),
                ElementsAre("RoInitialize(0) = 0x00000000",
                            "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                            "ActivateInstance", "QueryInterface", "RoUninitialize"));
}

TEST_F(GetPackageManager, EntersASingleThreadedApartmentOnceMore)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded, [&] {
        EXPECT_TRUE(Get());
        EXPECT_EQ(m_needsUninitialize, 1);
        Leave();
    }));
    EXPECT_EQ(Journal().front(), "RoInitialize(0) = 0x00000001");
}

TEST_F(GetPackageManager, WorksInTheMultithreadedApartmentWhichIsNotLeft)
{
    EXPECT_TRUE(test::KeepsApartment(Apartment::kMultithreaded, [&] {
        EXPECT_TRUE(Get());
        EXPECT_EQ(m_needsUninitialize, 0);
    }));
    EXPECT_EQ(Journal().front(), "RoInitialize(0) = 0x80010106");
}

TEST_F(GetPackageManager, WithoutAFlagThereIsNone)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhPackageManager::GetPackageManager(nullptr), nullptr);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x80004003)"));
}

TEST_F(GetPackageManager, WithoutTheRuntimeThereIsNone)
{
    m_store.initializeResult = E_OUTOFMEMORY;
    const test::LogCapture log;
    EXPECT_FALSE(Get());
    EXPECT_EQ(m_needsUninitialize, 7);
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x8007000E"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x8007000E)"));
}

TEST_F(GetPackageManager, AFailingStepIsLoggedAndTheRuntimeStaysTheCallersToLeave)
{
    for (const char* call : {"RoGetActivationFactory", "ActivateInstance", "QueryInterface"}) {
        m_needsUninitialize = 7;
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        const test::LogCapture log;
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            EXPECT_FALSE(Get()) << call;
            EXPECT_EQ(m_needsUninitialize, 1);
            Leave();
        }));
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::GetPackageManager IN",
                                             "CQanhPackageManager::GetPackageManager " +
                                                 Message(E_ACCESSDENIED)));
    }
}

// The first package of a family.

class FindPackage : public StoreQueries
{
protected:
    // The package that is found, which is given back.
    test::FakePackage* Find(const wchar_t* familyName = kFamily)
    {
        return static_cast<test::FakePackage*>(CQanhPackageManager::FindPackageByName(familyName).Get());
    }
    test::FakePackage* FindEx(const wchar_t* fragment, const wchar_t* familyName = kFamily)
    {
        return static_cast<test::FakePackage*>(
            CQanhPackageManager::FindPackageByNameEx(familyName, fragment).Get());
    }
};

TEST_F(FindPackage, IsTheFirstOfItsFamily)
{
    m_store.Add(L"other");
    test::FakePackage* first = m_store.Add(kFamily);
    m_store.Add(kFamily);
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
        const test::LogCapture log;
        EXPECT_EQ(Find(), first);
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::FindPackageByName(mail_1) IN",
                                             "CQanhPackageManager::GetPackageManager IN",
                                             "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                             "CQanhPackageManager::FindPackageByName OUT"));
    }));
    // The current user has an empty ID. No package but the first is looked at.
    EXPECT_THAT(Journal(),
                ElementsAre("RoInitialize(0) = 0x00000000",
                            "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                            "ActivateInstance", "QueryInterface",
                            "FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First", "HasCurrent",
                            "Current", "RoUninitialize"));
}

TEST_F(FindPackage, IsHandedOutWithOneReference)
{
    test::FakePackage* package = m_store.Add(kFamily);
    {
        const auto found = CQanhPackageManager::FindPackageByName(kFamily);
        EXPECT_EQ(package->References(), 1);
        const auto foundEx = CQanhPackageManager::FindPackageByNameEx(kFamily, L"");
        EXPECT_EQ(foundEx, nullptr);
        EXPECT_EQ(package->References(), 1);
    }
    EXPECT_EQ(package->References(), 0);
}

TEST_F(FindPackage, IsNoneWhenTheFamilyHasNone)
{
    m_store.Add(L"other");
    const test::LogCapture log;
    EXPECT_EQ(Find(), nullptr);
    EXPECT_EQ(m_store.objects.Calls("Current"), 0u);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::FindPackageByName OUT");
}

TEST_F(FindPackage, HandsTheNameOnAsItIs)
{
    m_store.Add(kFamily);
    EXPECT_EQ(Find(L"MAIL_1"), nullptr);
    EXPECT_EQ(Find(L" \u5929%s"), nullptr);
    EXPECT_THAT(Journal(), ::testing::Contains("FindPackagesByUserSecurityIdPackageFamilyName(, MAIL_1)"));
    EXPECT_THAT(Journal(),
                ::testing::Contains("FindPackagesByUserSecurityIdPackageFamilyName(,  \xE5\xA4\xA9%s)"));
}

TEST_F(FindPackage, TakesNamesOfAnyLength)
{
    const std::wstring family(5000, L'f');
    test::FakePackage* package = m_store.Add(family.c_str());
    EXPECT_EQ(Find(family.c_str()), package);
}

TEST_F(FindPackage, WithoutANameIsNone)
{
    const test::LogCapture log;
    EXPECT_EQ(Find(nullptr), nullptr);
    EXPECT_EQ(Find(L""), nullptr);
    EXPECT_EQ(FindEx(L"x", nullptr), nullptr);
    EXPECT_EQ(FindEx(L"x", L""), nullptr);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::FindPackageByName((null)) IN",
                                         "CQanhPackageManager::FindPackageByName OUT(0x80004003)",
                                         "CQanhPackageManager::FindPackageByName() IN",
                                         "CQanhPackageManager::FindPackageByName OUT(0x80070057)",
                                         "CQanhPackageManager::FindPackageByNameEx((null)) IN",
                                         "CQanhPackageManager::FindPackageByNameEx OUT(0x80004003)",
                                         "CQanhPackageManager::FindPackageByNameEx() IN",
                                         "CQanhPackageManager::FindPackageByNameEx OUT(0x80070057)"));
}

TEST_F(FindPackage, WithoutAManagerIsNone)
{
    m_store.Add(kFamily);
    m_store.objects.Fail("ActivateInstance", E_ACCESSDENIED);
    const test::LogCapture log;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
        EXPECT_EQ(Find(), nullptr);
        EXPECT_EQ(FindEx(L"x"), nullptr);
    }));
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackageManager::FindPackageByName(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager " + Message(E_ACCESSDENIED),
                            "CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)",
                            "CQanhPackageManager::FindPackageByNameEx(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager " + Message(E_ACCESSDENIED),
                            "CQanhPackageManager::FindPackageByNameEx OUT(GetPackageManager failed.)"));
}

TEST_F(FindPackage, WithoutTheRuntimeIsNone)
{
    m_store.Add(kFamily);
    m_store.initializeResult = E_OUTOFMEMORY;
    EXPECT_EQ(Find(), nullptr);
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x8007000E"));
}

TEST_F(FindPackage, WorksInEveryApartment)
{
    test::FakePackage* package = m_store.Add(kFamily, {L"part"});
    for (const Apartment apartment :
         {Apartment::kNone, Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        Journal().clear();
        EXPECT_TRUE(test::KeepsApartment(apartment, [&] {
            EXPECT_EQ(Find(), package);
            EXPECT_EQ(FindEx(L"part"), package);
        }));
        const bool leaves = apartment != Apartment::kMultithreaded;
        EXPECT_EQ(Journal().back() == "RoUninitialize", leaves);
    }
}

TEST_F(FindPackage, RaisesTheFailureOfACallAfterLeavingEverything)
{
    m_store.Add(kFamily);
    for (const char* call : {"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent", "Current"}) {
        Journal().clear();
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        const test::LogCapture log;
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            try {
                Find();
                ADD_FAILURE() << call;
            } catch (const RuntimeError& error) {
                EXPECT_EQ(error.Result(), E_ACCESSDENIED);
            }
        }));
        EXPECT_EQ(Journal().back(), "RoUninitialize");
        EXPECT_EQ(log.Lines().size(), 3u); // no exit line
    }
}

// The first package of a family that depends on another one.

TEST_F(FindPackage, ExIsTheFirstThatDependsOnTheFragment)
{
    m_store.Add(kFamily);
    m_store.Add(kFamily, {L"other_1", L"something_1"});
    test::FakePackage* third = m_store.Add(kFamily, {L"other_1", L"the.word.part_1", L"last_1"});
    m_store.Add(kFamily, {L"the.word.part_1"});
    const test::LogCapture log;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(FindEx(L"word"), third); }));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::FindPackageByNameEx(mail_1) IN",
                                         "CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                         "CQanhPackageManager::FindPackageByNameEx OUT"));
    // The walk over dependencies ends at the first that matches; the walk over packages goes on to the end,
    // without asking the rest for dependencies.
    EXPECT_THAT(
        std::vector<std::string>(Journal().begin() + 4, Journal().end()),
        ElementsAre("FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First", "HasCurrent",
                    "Current", "Dependencies", "Size", "MoveNext",
                    "Current", "Dependencies", "Size", "GetAt(0)", "Id", "FamilyName", "GetAt(1)", "Id",
                    "FamilyName", "MoveNext",
                    "Current", "Dependencies", "Size", "GetAt(0)", "Id", "FamilyName", "GetAt(1)", "Id",
                    "FamilyName", "MoveNext",
                    "Current", "MoveNext", "RoUninitialize"));
}

struct FragmentCase
{
    const char* name;
    const wchar_t* dependency;
    const wchar_t* fragment;
    bool isFound;
};

class Fragment : public FindPackage, public ::testing::WithParamInterface<FragmentCase>
{
};

TEST_P(Fragment, IsLookedForInTheFamilyNameOfTheDependency)
{
    test::FakePackage* package = m_store.Add(kFamily, {GetParam().dependency});
    EXPECT_EQ(FindEx(GetParam().fragment), GetParam().isFound ? package : nullptr);
}

const FragmentCase kFragments[] = {
    {"AtTheStart", L"word.part_1", L"word", true},
    {"InTheMiddle", L"word.part_1", L"d.p", true},
    {"AtTheEnd", L"word.part_1", L"_1", true},
    {"TheWholeName", L"word", L"word", true},
    {"Longer", L"word", L"words", false},
    {"Scattered", L"word", L"wd", false},
    {"Empty", L"word", L"", true},
    {"EmptyInAnEmptyName", L"", L"", true},
    {"SomethingInAnEmptyName", L"", L"x", false},
    {"UpperCaseFragment", L"word", L"WORD", true},
    {"UpperCaseName", L"WORD", L"word", true},
    {"BothMixed", L"WoRd", L"wOrD", true},
    {"OtherLettersKeepTheirCase", L"\u00e9t\u00e9", L"\u00c9T\u00c9", false},
    {"OtherLettersOfTheSameCase", L"\u00c9T\u00c9", L"\u00c9t\u00c9", true},
    {"FullWidthLettersKeepTheirCase", L"\uff57", L"\uff37", false},
    {"CharactersBesideTheLetters", L"@[`{", L"`{@[", false},
    {"PatternsAreText", L"word", L"w*", false},
};

INSTANTIATE_TEST_SUITE_P(Of, Fragment, ::testing::ValuesIn(kFragments),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(FindPackage, ExWithAnEmptyFragmentIsTheFirstWithAnyDependency)
{
    m_store.Add(kFamily);
    test::FakePackage* second = m_store.Add(kFamily, {L"any"});
    m_store.Add(kFamily, {L"other"});
    EXPECT_EQ(FindEx(L""), second);
}

TEST_F(FindPackage, ExLooksAtDependenciesOfItsFamilyOnly)
{
    m_store.Add(L"other", {L"word"});
    m_store.Add(kFamily, {L"sheet"});
    EXPECT_EQ(FindEx(L"word"), nullptr);
}

TEST_F(FindPackage, ExDoesNotLookAtThePackagesOwnName)
{
    m_store.Add(kFamily, {L"word"});
    EXPECT_EQ(FindEx(L"mail"), nullptr);
}

TEST_F(FindPackage, ExRaisesTheFailureOfACallAfterLeavingEverything)
{
    m_store.Add(kFamily, {L"other"});
    m_store.Add(kFamily, {L"word"});
    for (const char* call : {"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent", "Current",
                             "Dependencies", "Size", "GetAt", "Id", "FamilyName", "MoveNext"}) {
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            try {
                FindEx(L"word");
                ADD_FAILURE() << call;
            } catch (const RuntimeError& error) {
                EXPECT_EQ(error.Result(), E_ACCESSDENIED);
            }
        }));
        EXPECT_EQ(Journal().back(), "RoUninitialize");
    }
}

// Whether a package is installed.

class IsInstalled : public StoreQueries
{
protected:
    HRESULT Ask(const wchar_t* familyName = kFamily)
    {
        return CQanhPackageManager::IsInstalled(familyName, &m_isInstalled);
    }
    HRESULT AskEx(const wchar_t* fragment, const wchar_t* familyName = kFamily)
    {
        return CQanhPackageManager::IsInstalledEx(familyName, fragment, &m_isInstalled);
    }

    BOOL m_isInstalled = 7; // neither true nor false: shows whether it was set
};

TEST_F(IsInstalled, TellsWhatWasFound)
{
    m_store.Add(kFamily);
    const test::LogCapture log;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::IsInstalled(mail_1) IN",
                                         "CQanhPackageManager::FindPackageByName(mail_1) IN",
                                         "CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                         "CQanhPackageManager::FindPackageByName OUT",
                                         "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 1)"));
    EXPECT_EQ(Ask(L"none"), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)");
}

TEST_F(IsInstalled, ExTellsWhatWasFound)
{
    m_store.Add(kFamily, {L"word"});
    const test::LogCapture log;
    EXPECT_EQ(AskEx(L"Word"), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::IsInstalledEx(mail_1) IN",
                                         "CQanhPackageManager::FindPackageByNameEx(mail_1) IN",
                                         "CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                         "CQanhPackageManager::FindPackageByNameEx OUT",
                                         "CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 1)"));
    EXPECT_EQ(AskEx(L"sheet"), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 0)");
}

TEST_F(IsInstalled, NullAndEmptyArguments)
{
    const test::LogCapture log;
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalled(kFamily, nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalled(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_EQ(AskEx(L"x", nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalledEx(kFamily, L"x", nullptr), E_POINTER);
    EXPECT_EQ(AskEx(L"x", L""), E_INVALIDARG);
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::IsInstalled((null)) IN",
                                         "CQanhPackageManager::IsInstalled OUT(0x80004003)",
                                         "CQanhPackageManager::IsInstalled(mail_1) IN",
                                         "CQanhPackageManager::IsInstalled OUT(0x80004003)",
                                         "CQanhPackageManager::IsInstalled() IN",
                                         "CQanhPackageManager::IsInstalled OUT(0x80004003)",
                                         "CQanhPackageManager::IsInstalled() IN",
                                         "CQanhPackageManager::IsInstalled OUT(0x80070057)",
                                         "CQanhPackageManager::IsInstalledEx((null)) IN",
                                         "CQanhPackageManager::IsInstalledEx OUT(0x80004003)",
                                         "CQanhPackageManager::IsInstalledEx(mail_1) IN",
                                         "CQanhPackageManager::IsInstalledEx OUT(0x80004003)",
                                         "CQanhPackageManager::IsInstalledEx() IN",
                                         "CQanhPackageManager::IsInstalledEx OUT(0x80070057)"));
}

TEST_F(IsInstalled, NothingIsWithoutAManager)
{
    m_store.Add(kFamily, {L"word"});
    m_store.initializeResult = E_OUTOFMEMORY;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    m_isInstalled = 7;
    EXPECT_EQ(AskEx(L"word"), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    m_store.initializeResult.reset();
    m_store.objects.Fail("RoGetActivationFactory", REGDB_E_CLASSNOTREG);
    m_isInstalled = 7;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
}

TEST_F(IsInstalled, AFailureOfTheFindingIsLoggedAndReturned)
{
    m_store.Add(kFamily);
    m_store.objects.Fail("First", E_ACCESSDENIED);
    const test::LogCapture log;
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalled OUT(" + Message(E_ACCESSDENIED) + ")");
    EXPECT_EQ(AskEx(L"word"), E_FAIL);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalledEx OUT(" + Message(E_ACCESSDENIED) + ")");
    EXPECT_EQ(m_isInstalled, 7);
}

// Whatever call of the platform fails, nothing is left behind.
TEST_F(IsInstalled, SurvivesEveryFailingCall)
{
    m_store.Add(kFamily, {L"sheet", L"word"});
    EXPECT_EQ(AskEx(L"word"), S_OK);
    const std::size_t calls = m_store.objects.Calls();
    ASSERT_GT(calls, 10u);
    for (std::size_t index = 0; index < calls; ++index) {
        m_store.objects.FailCall(m_store.objects.Calls() + index, E_ACCESSDENIED);
        m_isInstalled = 7;
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            // Before the manager is there: not installed. After that: a failure.
            const HRESULT hr = AskEx(L"word");
            EXPECT_EQ(hr, index < 3 ? S_OK : E_FAIL) << index;
            EXPECT_EQ(m_isInstalled, index < 3 ? 0 : 7) << index;
        }));
        EXPECT_EQ(Journal().back(), "RoUninitialize");
    }
}

// The display name of a package.

class DisplayNameOfFamily : public StoreQueries
{
protected:
    ~DisplayNameOfFamily() override { LocalFree(m_name); }

    void Install(const std::string& applications)
    {
        test::WriteFileBytes(m_folder / L"AppxManifest.xml",
                             "<Package><Applications>" + applications + "</Applications></Package>");
        test::PackageFacts facts;
        facts.familyName = kFamily;
        facts.path = m_folder.Path();
        m_store.Add(facts);
    }
    HRESULT Ask(const wchar_t* familyName = kFamily)
    {
        return CQanhPackageManager::GetAppDisplayNameByPFN(familyName, &m_name);
    }
    // The entry line shows the lower half of the out pointer.
    std::string EntryLine(const char* familyName, const void* pointer) const
    {
        char text[16];
        wsprintfA(text, "0x%08X", static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(pointer)));
        return std::string("CQanhPackageManager::GetAppDisplayNameByPFN(") + familyName + ", " + text + ") IN";
    }

    test::TemporaryFolder m_folder;
    wchar_t* m_name = nullptr;
};

TEST_F(DisplayNameOfFamily, IsThatOfItsManifest)
{
    Install("<Application><VisualElements DisplayName=\"Weather\"/></Application>");
    const test::LogCapture log;
    EXPECT_EQ(Ask(), S_OK);
    EXPECT_STREQ(m_name, L"weather");
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 6u);
    EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 6),
                ElementsAre(EntryLine("mail_1", &m_name), "CQanhPackageManager::FindPackageByName(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                            "CQanhPackageManager::FindPackageByName OUT",
                            "CQanhManifestReader::GetAppDisplayName IN"));
    // A wide name, printed as a narrow one.
    EXPECT_EQ(lines[lines.size() - 2], "CQanhManifestReader::GetAppDisplayName OUT(0x00000000)");
    EXPECT_EQ(lines.back(), "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000000) DisplayName = w");
}

TEST_F(DisplayNameOfFamily, OfAnUnknownFamilyIsLeftAsItWas)
{
    wchar_t before[] = L"before";
    wchar_t* name = before;
    const test::LogCapture log;
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"none", &name), kNoPackage);
    EXPECT_EQ(name, before);
    EXPECT_EQ(Ask(L"none"), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
    const std::vector<std::string> finding = {
        "CQanhPackageManager::FindPackageByName(none) IN", "CQanhPackageManager::GetPackageManager IN",
        "CQanhPackageManager::GetPackageManager OUT(0x00000000)", "CQanhPackageManager::FindPackageByName OUT"};
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(EntryLine("none", &name), finding[0], finding[1], finding[2], finding[3],
                    "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = b",
                    EntryLine("none", &m_name), finding[0], finding[1], finding[2], finding[3],
                    "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0xA0000001) DisplayName = (null)"));
}

TEST_F(DisplayNameOfFamily, OfSeveralApplicationsIsNone)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application><Application/>");
    EXPECT_EQ(Ask(), static_cast<HRESULT>(0xA0000002));
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, ThatIsMissingIsEmpty)
{
    Install("<Application><VisualElements/></Application>");
    const test::LogCapture log;
    EXPECT_EQ(Ask(), S_FALSE);
    EXPECT_STREQ(m_name, L"");
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x00000001) DisplayName = ");
}

TEST_F(DisplayNameOfFamily, OfAnUnresolvedResourceIsHandedOutWithTheFailure)
{
    Install("<Application><VisualElements DisplayName=\"ms-resource:No\"/></Application>");
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_NE(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, NullAndEmptyArguments)
{
    const test::LogCapture log;
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(kFamily, nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::GetAppDisplayNameByPFN(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(log.Lines(),
                ElementsAre(EntryLine("(null)", &m_name),
                            "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
                            EntryLine("mail_1", nullptr),
                            "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
                            EntryLine("", nullptr),
                            "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80004003)",
                            EntryLine("", &m_name),
                            "CQanhPackageManager::GetAppDisplayNameByPFN OUT(0x80070057)"));
}

TEST_F(DisplayNameOfFamily, WithoutAManagerIsAsOfAnUnknownFamily)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    m_store.initializeResult = E_OUTOFMEMORY;
    EXPECT_EQ(Ask(), kNoPackage);
    EXPECT_EQ(m_name, nullptr);
}

TEST_F(DisplayNameOfFamily, AFailureOfTheFindingIsLoggedAndReturned)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    m_store.objects.Fail("Current", E_ACCESSDENIED);
    const test::LogCapture log;
    EXPECT_EQ(Ask(), E_FAIL);
    EXPECT_EQ(m_name, nullptr);
    EXPECT_EQ(log.Lines().back(),
              "CQanhPackageManager::GetAppDisplayNameByPFN OUT(" + Message(E_ACCESSDENIED) + ")");
}

TEST_F(DisplayNameOfFamily, SurvivesEveryFailingCall)
{
    Install("<Application><VisualElements DisplayName=\"A\"/></Application>");
    EXPECT_EQ(Ask(), S_OK);
    const std::size_t calls = m_store.objects.Calls();
    ASSERT_GT(calls, 8u);
    for (std::size_t index = 0; index < calls; ++index) {
        LocalFree(m_name);
        m_name = nullptr;
        m_store.objects.FailCall(m_store.objects.Calls() + index, E_ACCESSDENIED);
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            EXPECT_EQ(Ask(), index < 3 ? kNoPackage : E_FAIL) << index;
            EXPECT_EQ(m_name, nullptr);
        }));
    }
}

} // namespace
