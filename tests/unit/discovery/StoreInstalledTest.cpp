// Whether a Store package is installed.

#include "unit/discovery/StoreQueries.h"

#include <gmock/gmock.h>

#include <new>
#include <string>
#include <vector>

namespace {

using namespace store_test;
using test::Apartment;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

// The package's apartment is entered before the search and left after the package is given back.

TEST_F(IsInstalled, HoldsAnApartmentAroundThePackage)
{
    const test::FakePackage* package = m_store.Add(kFamily, {L"word"});
    std::vector<LONG> references;
    m_store.onUninitialize = [&] { references.push_back(package->References()); };
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), S_OK); }));
    EXPECT_EQ(m_isInstalled, 1);
    EXPECT_THAT(Journal(), ElementsAre("RoInitialize(0) = 0x00000000", "RoInitialize(0) = 0x00000001",
                                       "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)",
                                       "ActivateInstance", "QueryInterface",
                                       "FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First",
                                       "HasCurrent", "Current", "RoUninitialize", "RoUninitialize"));
    EXPECT_THAT(references, ElementsAre(1, 0));
    references.clear();
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(AskEx(L"word"), S_OK); }));
    EXPECT_THAT(references, ElementsAre(1, 0));
}

TEST_F(IsInstalled, WorksInEveryApartmentAndLeavesWhatItEntered)
{
    m_store.Add(kFamily, {L"word"});
    for (const Apartment apartment :
         {Apartment::kNone, Apartment::kSingleThreaded, Apartment::kMultithreaded}) {
        EXPECT_TRUE(test::KeepsApartment(apartment, [&] {
            m_isInstalled = 7;
            EXPECT_EQ(Ask(), S_OK);
            EXPECT_EQ(m_isInstalled, 1);
            m_isInstalled = 7;
            EXPECT_EQ(AskEx(L"word"), S_OK);
            EXPECT_EQ(m_isInstalled, 1);
        })) << ::testing::PrintToString(apartment);
    }
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
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            "CQanhPackageManager::IsInstalled((null)) IN", "CQanhPackageManager::IsInstalled OUT(0x80004003)",
            "CQanhPackageManager::IsInstalled(mail_1) IN", "CQanhPackageManager::IsInstalled OUT(0x80004003)",
            "CQanhPackageManager::IsInstalled() IN", "CQanhPackageManager::IsInstalled OUT(0x80004003)",
            "CQanhPackageManager::IsInstalled() IN", "CQanhPackageManager::IsInstalled OUT(0x80070057)",
            "CQanhPackageManager::IsInstalledEx((null)) IN",
            "CQanhPackageManager::IsInstalledEx OUT(0x80004003)",
            "CQanhPackageManager::IsInstalledEx(mail_1) IN",
            "CQanhPackageManager::IsInstalledEx OUT(0x80004003)", "CQanhPackageManager::IsInstalledEx() IN",
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

TEST_F(IsInstalled, WithoutAManagerIsLoggedAsNotInstalled)
{
    m_store.Add(kFamily, {L"word"});
    m_store.initializeResult = E_OUTOFMEMORY;
    const test::LogCapture log;
    Ask();
    AskEx(L"word");
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackageManager::IsInstalled(mail_1) IN",
                            "CQanhPackageManager::FindPackageByName(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x8007000E)",
                            "CQanhPackageManager::FindPackageByName OUT(GetPackageManager failed.)",
                            "CQanhPackageManager::IsInstalled OUT(*pIsInstalled = 0)",
                            "CQanhPackageManager::IsInstalledEx(mail_1) IN",
                            "CQanhPackageManager::FindPackageByNameEx(mail_1) IN",
                            "CQanhPackageManager::GetPackageManager IN",
                            "CQanhPackageManager::GetPackageManager OUT(0x8007000E)",
                            "CQanhPackageManager::FindPackageByNameEx OUT(GetPackageManager failed.)",
                            "CQanhPackageManager::IsInstalledEx OUT(*pIsInstalled = 0)"));
}

TEST_F(IsInstalled, ExWithAnEmptyFragmentAsksForAnyDependency)
{
    m_store.Add(kFamily);
    EXPECT_EQ(AskEx(L""), S_OK);
    EXPECT_EQ(m_isInstalled, 0);
    m_store.Add(kFamily, {L"any"});
    EXPECT_EQ(AskEx(L""), S_OK);
    EXPECT_EQ(m_isInstalled, 1);
}

TEST_F(IsInstalled, ExNullArgumentsComeBeforeAnEmptyName)
{
    EXPECT_EQ(CQanhPackageManager::IsInstalledEx(L"", L"x", nullptr), E_POINTER);
    EXPECT_THAT(Journal(), IsEmpty());
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

TEST_F(IsInstalled, AnExceptionOfAnotherKindIsOutOfMemory)
{
    m_store.Add(kFamily);
    m_store.objects.At("First", [] { throw std::bad_alloc(); });
    const test::LogCapture log;
    EXPECT_TRUE(test::KeepsApartment(Apartment::kNone, [&] { EXPECT_EQ(Ask(), E_OUTOFMEMORY); }));
    EXPECT_EQ(m_isInstalled, 7);
    EXPECT_EQ(log.Lines().back(), "CQanhPackageManager::IsInstalled OUT(0x8007000E)");
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

} // namespace
