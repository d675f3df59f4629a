// How the system's package manager is had, and a package from it.

#include "unit/discovery/StoreQueries.h"

#include "common/Apartment.h"

namespace {

using namespace store_test;

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

TEST_F(GetPackageManager, EntersTheRuntimeWhichIsNotLeftInTheMultithreadedApartment)
{
    const struct
    {
        Apartment apartment;
        const char* entered;
        BOOL needsUninitialize;
        Apartment inside;
    } rows[] = {{Apartment::kNone, "0x00000000", 1, Apartment::kSingleThreaded},
                {Apartment::kSingleThreaded, "0x00000001", 1, Apartment::kSingleThreaded},
                {Apartment::kMultithreaded, "0x80010106", 0, Apartment::kMultithreaded}};
    for (const auto& row : rows) {
        Journal().clear();
        InApartment(row.apartment, [&] {
            const LogCapture log;
            EXPECT_TRUE(Get());
            EXPECT_EQ(m_needsUninitialize, row.needsUninitialize);
            EXPECT_EQ(ApartmentOfThread(), row.inside);
            Leave();
            EXPECT_EQ(log.Lines(), ManagerLines());
        });
        const Lines left(row.needsUninitialize ? 1 : 0, "RoUninitialize");
        EXPECT_EQ(Journal(), ManagerSteps(row.entered, left));
    }
}

TEST_F(GetPackageManager, WithoutAFlagThereIsNone)
{
    const LogCapture log;
    EXPECT_EQ(CQanhPackageManager::GetPackageManager(nullptr), nullptr);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_EQ(log.Lines(), ManagerLines("(0x80004003)"));
}

TEST_F(GetPackageManager, WithoutTheRuntimeThereIsNone)
{
    m_store.initializeResult = E_OUTOFMEMORY;
    const LogCapture log;
    EXPECT_FALSE(Get());
    EXPECT_EQ(m_needsUninitialize, 7);
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x8007000E"));
    EXPECT_EQ(log.Lines(), ManagerLines("(0x8007000E)"));
}

TEST_F(GetPackageManager, AFailingStepIsLoggedAndTheRuntimeStaysTheCallersToLeave)
{
    for (const char* call : {"RoGetActivationFactory", "ActivateInstance", "QueryInterface"}) {
        m_needsUninitialize = 7;
        m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
        const LogCapture log;
        InApartment(Apartment::kNone, [&] {
            EXPECT_FALSE(Get()) << call;
            EXPECT_EQ(m_needsUninitialize, 1);
            Leave();
        });
        EXPECT_EQ(log.Lines(), FailedManagerLines());
    }
}

// The first package of a family. Whoever looks for one holds an apartment around it: the thread is out of the
// one of the search when it has the package.

class FindPackage : public StoreQueries
{
protected:
    // The package that is found, which is given back.
    FakePackage* Find(const wchar_t* familyName = kFamily)
    {
        return static_cast<FakePackage*>(CQanhPackageManager::FindPackageByName(familyName).Get());
    }
    FakePackage* FindEx(const wchar_t* fragment, const wchar_t* familyName = kFamily)
    {
        return static_cast<FakePackage*>(
            CQanhPackageManager::FindPackageByNameEx(familyName, fragment).Get());
    }

    // Each of the calls fails in turn: the search raises that, and has left the Windows Runtime.
    template <typename Search>
    void ExpectFailuresRaised(std::initializer_list<const char*> calls, Search search)
    {
        for (const char* call : calls) {
            SCOPED_TRACE(call);
            Journal().clear();
            m_store.objects.Fail(call, E_ACCESSDENIED, m_store.objects.Calls(call));
            const LogCapture log;
            InApartment(Apartment::kNone, [&] {
                try {
                    search();
                    ADD_FAILURE() << "nothing was raised";
                } catch (const WinRtError& error) {
                    EXPECT_EQ(error.Result(), E_ACCESSDENIED);
                }
            });
            EXPECT_EQ(Journal().back(), "RoUninitialize");
            EXPECT_EQ(log.Lines().size(), 3u); // no exit line
        }
    }

    const ComApartment m_apartment{CoInitialize(nullptr)};
};

TEST_F(FindPackage, IsTheFirstOfItsFamily)
{
    m_store.Add(L"other");
    FakePackage* first = m_store.Add(kFamily);
    m_store.Add(kFamily);
    InApartment(Apartment::kSingleThreaded, [&] {
        const LogCapture log;
        EXPECT_EQ(Find(), first);
        EXPECT_EQ(log.Lines(), Call("CQanhPackageManager::FindPackageByName(mail_1)", "", ManagerLines()));
    });
    // The current user has an empty ID. No package but the first is looked at.
    EXPECT_EQ(Journal(), FindSteps("0x00000001", {"Current", "RoUninitialize"}));
}

TEST_F(FindPackage, EntersTheRuntimeForAThreadWithoutAnApartment)
{
    m_store.Add(L"other");
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(Find(), nullptr); });
    EXPECT_EQ(Journal(), FindSteps("0x00000000", {"RoUninitialize"}));
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(FindEx(L""), nullptr); });
    EXPECT_EQ(Journal().back(), "RoUninitialize");
}

TEST_F(FindPackage, IsHandedOutWithOneReference)
{
    FakePackage* package = m_store.Add(kFamily);
    {
        const auto found = CQanhPackageManager::FindPackageByName(kFamily);
        EXPECT_EQ(package->References(), 1);
        const auto foundEx = CQanhPackageManager::FindPackageByNameEx(kFamily, L"");
        EXPECT_EQ(foundEx, nullptr);
        EXPECT_EQ(package->References(), 1);
    }
    EXPECT_EQ(package->References(), 0);
}

TEST_F(FindPackage, IsLookedForAnewEachTimeAndNoneWhenTheFamilyHasNone)
{
    m_store.Add(L"other");
    const LogCapture log;
    EXPECT_EQ(Find(), nullptr);
    EXPECT_EQ(m_store.objects.Calls("Current"), 0u);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::FindPackageByName OUT");
    EXPECT_EQ(FindEx(L"part"), nullptr);
    FakePackage* package = m_store.Add(kFamily, {L"part"});
    EXPECT_EQ(Find(), package);
    EXPECT_EQ(FindEx(L"part"), package);
    EXPECT_EQ(m_store.objects.Calls("ActivateInstance"), 4u);
}

TEST_F(FindPackage, HandsTheNameOnAsItIs)
{
    const std::string find = "FindPackagesByUserSecurityIdPackageFamilyName(, ";
    m_store.Add(kFamily);
    EXPECT_EQ(Find(L"MAIL_1"), nullptr);
    EXPECT_EQ(Find(L" \u5929%s"), nullptr);
    EXPECT_THAT(Journal(), Contains(find + "MAIL_1)"));
    EXPECT_THAT(Journal(), Contains(find + " \xE5\xA4\xA9%s)"));
}

// Half of a surrogate pair stands for itself.
TEST_F(FindPackage, HandsOnWhatIsNoWholeCharacter)
{
    m_store.Add(L"f\xD801");
    FakePackage* package = m_store.Add(L"f\xD800");
    EXPECT_EQ(Find(L"f\xD800"), package);
    EXPECT_EQ(FindEx(L"x", L"f\xDC00"), nullptr);
}

// The exit line comes when the thread is out of the Windows Runtime again.
TEST_F(FindPackage, LeavesTheRuntimeBeforeItsExitLine)
{
    m_store.Add(kFamily, {L"part"});
    const LogCapture log;
    Lines lastLines;
    m_store.onUninitialize = [&] { lastLines.push_back(log.Lines().back()); };
    Find();
    FindEx(L"part");
    EXPECT_EQ(lastLines, Lines(2, "CQanhPackageManager::GetPackageManager OUT(0x00000000)"));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::FindPackageByNameEx OUT");
}

TEST_F(FindPackage, WithoutANameIsNone)
{
    const LogCapture log;
    EXPECT_EQ(Find(nullptr), nullptr);
    EXPECT_EQ(Find(L""), nullptr);
    EXPECT_EQ(FindEx(L"x", nullptr), nullptr);
    EXPECT_EQ(FindEx(L"x", L""), nullptr);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_EQ(log.Lines(), Call("CQanhPackageManager::FindPackageByName((null))", "(0x80004003)") +
                               Call("CQanhPackageManager::FindPackageByName()", "(0x80070057)") +
                               Call("CQanhPackageManager::FindPackageByNameEx((null))", "(0x80004003)") +
                               Call("CQanhPackageManager::FindPackageByNameEx()", "(0x80070057)"));
}

TEST_F(FindPackage, WithoutAManagerIsNone)
{
    m_store.Add(kFamily);
    m_store.objects.Fail("ActivateInstance", E_ACCESSDENIED);
    const LogCapture log;
    InApartment(Apartment::kNone, [&] {
        EXPECT_EQ(Find(), nullptr);
        EXPECT_EQ(FindEx(L"x"), nullptr);
    });
    const std::string failed = "(GetPackageManager failed.)";
    EXPECT_EQ(log.Lines(),
              Call("CQanhPackageManager::FindPackageByName(mail_1)", failed, FailedManagerLines()) +
                  Call("CQanhPackageManager::FindPackageByNameEx(mail_1)", failed, FailedManagerLines()));
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
    FakePackage* package = m_store.Add(kFamily, {L"part"});
    for (const Apartment apartment : {Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        Journal().clear();
        InApartment(apartment, [&] {
            EXPECT_EQ(Find(), package);
            EXPECT_EQ(FindEx(L"part"), package);
        });
        EXPECT_EQ(Journal().back() == "RoUninitialize", apartment != Apartment::kMultithreaded);
    }
}

TEST_F(FindPackage, RaisesTheFailureOfACallAfterLeavingEverything)
{
    m_store.Add(kFamily);
    ExpectFailuresRaised({"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent", "Current"},
                         [this] { Find(); });
}

// The first package of a family that depends on another one.

TEST_F(FindPackage, ExIsTheFirstThatDependsOnTheFragment)
{
    m_store.Add(kFamily);
    m_store.Add(kFamily, {L"other_1", L"something_1"});
    FakePackage* third = m_store.Add(kFamily, {L"other_1", L"the.word.part_1", L"last_1"});
    m_store.Add(kFamily, {L"the.word.part_1"});
    const LogCapture log;
    InApartment(Apartment::kSingleThreaded, [&] { EXPECT_EQ(FindEx(L"word"), third); });
    EXPECT_EQ(log.Lines(), Call("CQanhPackageManager::FindPackageByNameEx(mail_1)", "", ManagerLines()));
    // The walk over dependencies ends at the first that matches; the walk over packages goes on to the end,
    // without asking the rest for dependencies.
    const Lines dependencies = {"Current", "Dependencies", "Size"};
    const Lines firstTwo = {"GetAt(0)", "Id", "FamilyName", "GetAt(1)", "Id", "FamilyName"};
    EXPECT_EQ(Journal(),
              FindSteps("0x00000001", dependencies + Lines{"MoveNext"} + dependencies + firstTwo +
                                          Lines{"MoveNext"} + dependencies + firstTwo +
                                          Lines{"MoveNext", "Current", "MoveNext", "RoUninitialize"}));
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
    FakePackage* package = m_store.Add(kFamily, {GetParam().dependency});
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
    FakePackage* capital = m_store.Add(L"capital", {L"1" + Capital() + L"2"});
    FakePackage* small = m_store.Add(L"small", {L"1" + Small() + L"2"});
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
    FakePackage* package = m_store.Add(kFamily, {L"x" + std::wstring(5000, L'f') + L"y"});
    EXPECT_EQ(FindEx(fragment.c_str()), package);
    EXPECT_EQ(FindEx((fragment + L"z").c_str()), nullptr);
}

TEST_F(FindPackage, ExWithAnEmptyFragmentIsTheFirstWithAnyDependency)
{
    m_store.Add(kFamily);
    FakePackage* second = m_store.Add(kFamily, {L"any"});
    m_store.Add(kFamily, {L"other"});
    EXPECT_EQ(FindEx(L""), second);
}

TEST_F(FindPackage, ExLooksAtDependenciesOfItsFamilyOnly)
{
    m_store.Add(L"other", {L"word"});
    m_store.Add(kFamily, {L"sheet"});
    EXPECT_EQ(FindEx(L"word"), nullptr);
    EXPECT_EQ(FindEx(L"mail"), nullptr) << "the package's own name";
}

TEST_F(FindPackage, ExRaisesTheFailureOfACallAfterLeavingEverything)
{
    m_store.Add(kFamily, {L"other"});
    m_store.Add(kFamily, {L"word"});
    ExpectFailuresRaised({"FindPackagesByUserSecurityIdPackageFamilyName", "First", "HasCurrent", "Current",
                          "Dependencies", "Size", "GetAt", "Id", "FamilyName", "MoveNext"},
                         [this] { FindEx(L"word"); });
}

} // namespace
