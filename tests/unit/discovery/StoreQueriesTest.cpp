// How the system's package manager is had, and a package from it.

#include "unit/discovery/StoreQueries.h"

#include "common/Apartment.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using namespace store_test;
using test::Apartment;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The system's package manager.

class GetPackageManager : public StoreQueries
{
protected:
    // Whether there is a manager, which is given back, and the flag.
    bool Get() { return CQanhPackageManager::GetPackageManager(&m_needsUninitialize) != nullptr; }
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
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x00000000",
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
        EXPECT_THAT(log.Lines(),
                    ElementsAre("CQanhPackageManager::GetPackageManager IN",
                                "CQanhPackageManager::GetPackageManager " + Message(E_ACCESSDENIED)));
    }
}

// The first package of a family. Whoever looks for one holds an apartment around it: the thread is out of the
// one of the search when it has the package.

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

    const ComApartment m_apartment{CoInitialize(nullptr)};
};

TEST_F(FindPackage, IsTheFirstOfItsFamily)
{
    m_store.Add(L"other");
    test::FakePackage* first = m_store.Add(kFamily);
    m_store.Add(kFamily);
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded, [&] {
        const test::LogCapture log;
        EXPECT_EQ(Find(), first);
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::FindPackageByName(mail_1) IN",
                                             "CQanhPackageManager::GetPackageManager IN",
                                             "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                             "CQanhPackageManager::FindPackageByName OUT"));
    }));
    // The current user has an empty ID. No package but the first is looked at.
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x00000001",
                                       "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                                       "ActivateInstance", "QueryInterface",
                                       "FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First",
                                       "HasCurrent", "Current", "RoUninitialize"));
}

TEST_F(FindPackage, EntersTheRuntimeForAThreadWithoutAnApartment)
{
    m_store.Add(L"other");
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(Find(), nullptr); }));
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x00000000",
                                       "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                                       "ActivateInstance", "QueryInterface",
                                       "FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First",
                                       "HasCurrent", "RoUninitialize"));
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(FindEx(L""), nullptr); }));
    EXPECT_EQ(Journal().back(), "RoUninitialize");
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

// Half of a surrogate pair stands for itself.
TEST_F(FindPackage, HandsOnWhatIsNoWholeCharacter)
{
    m_store.Add(L"f\xD801");
    test::FakePackage* package = m_store.Add(L"f\xD800");
    EXPECT_EQ(Find(L"f\xD800"), package);
    EXPECT_EQ(FindEx(L"x", L"f\xDC00"), nullptr);
}

TEST_F(FindPackage, IsLookedForAnewEachTime)
{
    m_store.Add(L"other");
    EXPECT_EQ(Find(), nullptr);
    EXPECT_EQ(FindEx(L"part"), nullptr);
    test::FakePackage* package = m_store.Add(kFamily, {L"part"});
    EXPECT_EQ(Find(), package);
    EXPECT_EQ(FindEx(L"part"), package);
    EXPECT_EQ(m_store.objects.Calls("ActivateInstance"), 4u);
}

// The exit line comes when the thread is out of the Windows Runtime again.
TEST_F(FindPackage, LeavesTheRuntimeBeforeItsExitLine)
{
    m_store.Add(kFamily, {L"part"});
    const test::LogCapture log;
    std::vector<std::string> lastLines;
    m_store.onUninitialize = [&] { lastLines.push_back(log.Lines().back()); };
    Find();
    FindEx(L"part");
    EXPECT_THAT(lastLines, ElementsAre("CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                       "CQanhPackageManager::GetPackageManager OUT(0x00000000)"));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::FindPackageByNameEx OUT");
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

TEST_F(FindPackage, WorksInTheApartmentOfTheCaller)
{
    test::FakePackage* package = m_store.Add(kFamily, {L"part"});
    for (const Apartment apartment : {Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
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
    for (const char* call :
         {"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent", "Current"}) {
        Journal().clear();
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        const test::LogCapture log;
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            try {
                Find();
                ADD_FAILURE() << call;
            } catch (const WinRtError& error) {
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
    EXPECT_TRUE(test::KeepsApartment(Apartment::kSingleThreaded, [&] { EXPECT_EQ(FindEx(L"word"), third); }));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhPackageManager::FindPackageByNameEx(mail_1) IN",
                                         "CQanhPackageManager::GetPackageManager IN",
                                         "CQanhPackageManager::GetPackageManager OUT(0x00000000)",
                                         "CQanhPackageManager::FindPackageByNameEx OUT"));
    // The walk over dependencies ends at the first that matches; the walk over packages goes on to the end,
    // without asking the rest for dependencies.
    EXPECT_THAT(std::vector<std::string>(Journal().begin() + 4, Journal().end()),
                ElementsAre("FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First", "HasCurrent",
                            "Current", "Dependencies", "Size", "MoveNext", "Current", "Dependencies", "Size",
                            "GetAt(0)", "Id", "FamilyName", "GetAt(1)", "Id", "FamilyName", "MoveNext",
                            "Current", "Dependencies", "Size", "GetAt(0)", "Id", "FamilyName", "GetAt(1)",
                            "Id", "FamilyName", "MoveNext", "Current", "MoveNext", "RoUninitialize"));
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
    {"UmlautInTheNameAgainstItsCapital", L"\u00e4", L"\u00c4", false},
    {"CapitalUmlautInTheNameAgainstTheSmallOne", L"\u00c4", L"\u00e4", false},
    {"TheSameUmlautBesideLetters", L"H\u00c4USER", L"h\u00c4user", true},
    {"CharactersWithTheLowByteOfALetter", L"\u0141", L"\u0161", false},
    {"CharactersWithTheLowByteOfALetterAgainstIt", L"\u0141", L"A", false},
    {"FullWidthLettersKeepTheirCase", L"\uff57", L"\uff37", false},
    {"CharactersBesideTheLetters", L"@[`{", L"`{@[", false},
    {"PatternsAreText", L"word", L"w*", false},
    {"HalfOfASurrogatePair", L"x\xD83D\xDE00y", L"\xD83D", true},
    {"TheOtherHalfOfAnotherPair", L"x\xD83D\xDE00y", L"\xDE01", false},
};

INSTANTIATE_TEST_SUITE_P(Of, Fragment, ::testing::ValuesIn(kFragments),
                         [](const auto& each) { return std::string(each.param.name); });

class LatinLetter : public FindPackage, public ::testing::WithParamInterface<wchar_t>
{
protected:
    static std::wstring Capital() { return std::wstring(1, GetParam()); }
    static std::wstring Small() { return std::wstring(1, static_cast<wchar_t>(GetParam() + 0x20)); }
};

TEST_P(LatinLetter, IsTheSameInEitherCase)
{
    test::FakePackage* capital = m_store.Add(L"capital", {L"1" + Capital() + L"2"});
    test::FakePackage* small = m_store.Add(L"small", {L"1" + Small() + L"2"});
    for (const std::wstring& letter : {Capital(), Small()}) {
        EXPECT_EQ(FindEx(letter.c_str(), L"capital"), capital);
        EXPECT_EQ(FindEx(letter.c_str(), L"small"), small);
    }
}

TEST_P(LatinLetter, IsNoOtherCharacter)
{
    std::wstring others; // every other printable ASCII character
    for (wchar_t other = L' '; other <= L'~'; ++other) {
        if (other != Capital()[0] && other != Small()[0]) {
            others += other;
        }
    }
    m_store.Add(kFamily, {others});
    EXPECT_EQ(FindEx(Capital().c_str()), nullptr);
    EXPECT_EQ(FindEx(Small().c_str()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, LatinLetter, ::testing::Range(L'A', static_cast<wchar_t>(L'Z' + 1)),
                         [](const auto& each) { return std::string(1, static_cast<char>(each.param)); });

TEST_F(FindPackage, ExTakesFragmentsOfAnyLength)
{
    const std::wstring fragment(5000, L'F');
    test::FakePackage* package = m_store.Add(kFamily, {L"x" + std::wstring(5000, L'f') + L"y"});
    EXPECT_EQ(FindEx(fragment.c_str()), package);
    EXPECT_EQ(FindEx((fragment + L"z").c_str()), nullptr);
}

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
    for (const char* call : {"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent",
                             "Current", "Dependencies", "Size", "GetAt", "Id", "FamilyName", "MoveNext"}) {
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] {
            try {
                FindEx(L"word");
                ADD_FAILURE() << call;
            } catch (const WinRtError& error) {
                EXPECT_EQ(error.Result(), E_ACCESSDENIED);
            }
        }));
        EXPECT_EQ(Journal().back(), "RoUninitialize");
    }
}

} // namespace
