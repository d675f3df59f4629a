// Whether a Store package is installed.

#include "unit/discovery/StoreQueries.h"

namespace {

using namespace store_test;

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
    // Both questions about the family with the dependency "word" have this answer.
    void ExpectBoth(HRESULT result, BOOL isInstalled)
    {
        m_isInstalled = 7;
        EXPECT_EQ(Ask(), result);
        EXPECT_EQ(m_isInstalled, isInstalled);
        m_isInstalled = 7;
        EXPECT_EQ(AskEx(L"word"), result);
        EXPECT_EQ(m_isInstalled, isInstalled);
    }

    // The lines of a question about the family (the one with "Ex" or the one without) without a manager.
    static Lines AskLines(const std::string& ex)
    {
        return Call("CQanhPackageManager::IsInstalled" + ex + "(mail_1)", "(*pIsInstalled = 0)",
                    Call("CQanhPackageManager::FindPackageByName" + ex + "(mail_1)",
                         "(GetPackageManager failed.)", ManagerLines("(0x8007000E)")));
    }

    BOOL m_isInstalled = 7; // neither true nor false: shows whether it was set
};

// The package's apartment is entered before the search and left after the package is given back.

TEST_F(IsInstalled, HoldsAnApartmentAroundThePackage)
{
    const FakePackage* package = m_store.Add(kFamily, {L"word"});
    std::vector<LONG> references;
    m_store.onUninitialize = [&] { references.push_back(package->References()); };
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), S_OK); });
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_EQ(Journal(), Lines{"RoInitialize(0) = 0x00000000"} +
                             FindSteps("0x00000001", {"Current", "RoUninitialize", "RoUninitialize"}));
    EXPECT_THAT(references, ElementsAre(1, 0));
    references.clear();
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(AskEx(L"word"), S_OK); });
    EXPECT_THAT(references, ElementsAre(1, 0));
}

TEST_F(IsInstalled, WorksInEveryApartmentAndLeavesWhatItEntered)
{
    m_store.Add(kFamily, {L"word"});
    for (const Apartment apartment : kEveryApartment) {
        InApartment(apartment, [&] { ExpectBoth(S_OK, 1); });
    }
}

TEST_F(IsInstalled, NullAndEmptyArguments)
{
    const LogCapture log;
    EXPECT_EQ(Ask(nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalled(kFamily, nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalled(L"", nullptr), E_POINTER);
    EXPECT_EQ(Ask(L""), E_INVALIDARG);
    EXPECT_EQ(AskEx(L"x", nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalledEx(kFamily, L"x", nullptr), E_POINTER);
    EXPECT_EQ(CQanhPackageManager::IsInstalledEx(L"", L"x", nullptr), E_POINTER);
    EXPECT_EQ(AskEx(L"x", L""), E_INVALIDARG);
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_EQ(log.Lines(), Call("CQanhPackageManager::IsInstalled((null))", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalled(mail_1)", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalled()", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalled()", "(0x80070057)") +
                               Call("CQanhPackageManager::IsInstalledEx((null))", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalledEx(mail_1)", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalledEx()", "(0x80004003)") +
                               Call("CQanhPackageManager::IsInstalledEx()", "(0x80070057)"));
}

TEST_F(IsInstalled, NothingIsWithoutAManager)
{
    m_store.Add(kFamily, {L"word"});
    m_store.initializeResult = E_OUTOFMEMORY;
    const LogCapture log;
    ExpectBoth(S_OK, 0);
    EXPECT_EQ(log.Lines(), AskLines("") + AskLines("Ex"));
    m_store.initializeResult.reset();
    m_store.objects.Fail("RoGetActivationFactory", REGDB_E_CLASSNOTREG);
    ExpectBoth(S_OK, 0);
}

TEST_F(IsInstalled, AFailureOfTheFindingIsLoggedAndReturned)
{
    m_store.Add(kFamily);
    m_store.objects.Fail("First", E_ACCESSDENIED);
    const LogCapture log;
    ExpectBoth(E_FAIL, 7);
    const std::string out = " OUT(" + Message(E_ACCESSDENIED) + ")";
    EXPECT_THAT(log.Lines(), Contains("CQanhPackageManager::IsInstalled" + out));
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalledEx" + out);
}

TEST_F(IsInstalled, AnExceptionOfAnotherKindIsOutOfMemory)
{
    m_store.Add(kFamily);
    m_store.objects.At("First", [] { throw std::bad_alloc(); });
    const LogCapture log;
    InApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), E_OUTOFMEMORY); });
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalled OUT(0x8007000E)");
}

// Whatever call of the platform fails, nothing is left behind.
TEST_F(IsInstalled, SurvivesEveryFailingCall)
{
    m_store.Add(kFamily, {L"sheet", L"word"});
    EXPECT_EQ(AskEx(L"word"), S_OK);
    FailEachCall(10, [&](std::size_t index) {
        m_isInstalled = 7;
        // Before the manager is there: not installed. After that: a failure.
        EXPECT_EQ(AskEx(L"word"), index < 3 ? S_OK : E_FAIL);
        EXPECT_EQ(m_isInstalled, index < 3 ? 0 : 7);
    });
}

} // namespace
