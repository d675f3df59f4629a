// The manifest reader that asks the system's own interfaces.

#include "support/Allocations.h"
#include "support/Apartments.h"
#include "unit/manifest/FakeManifest.h"
#include "unit/manifest/ManifestFile.h"

#include <stdexcept>

namespace {

using namespace manifest_test;

class ManifestApi : public ManifestFile
{
protected:
    ManifestApi() { Write("the manifest"); }
    ~ManifestApi() override { EXPECT_TRUE(IsClosed()); }

    HRESULT Get() { return CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &m_package); }

    // Reads a manifest that declares these names; the result is the one that is logged.
    void ExpectResult(const std::string& logged, const std::vector<std::wstring>& declared,
                      const std::vector<std::wstring>& added)
    {
        m_manifest.displayNames = declared;
        const LogCapture log;
        EXPECT_EQ(Get(), Result(logged));
        EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(" + logged + ")");
        ExpectNames(m_package, added);
    }
    // There are no short names.
    static void ExpectNames(const CQanhPackage& package, const std::vector<std::wstring>& displayNames)
    {
        NameList names;
        for (const std::wstring& displayName : displayNames) {
            names.emplace_back(displayName, L"");
        }
        EXPECT_EQ(NamesOf(package), names);
    }

    FakeManifest m_manifest;
    FakeObjects& m_objects = m_manifest.objects;
};

TEST_F(ManifestApi, StoresDisplayNamesAsTheyStandAndNoShortNames)
{
    const std::vector<std::wstring> names = {L"Weather",
                                             L"ms-resource:AppName",
                                             L"",
                                             L"Weather",
                                             L"\u00c9T\u00c9 \u0416\u30e1",
                                             L"\xD83D\xDE00 A\xD83D",
                                             std::wstring(256, L'A'),
                                             std::wstring(70000, L'B')};
    ExpectResult("0x00000000", names, names);
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

TEST_F(ManifestApi, HandsTheFileToTheSystem)
{
    EXPECT_EQ(Get(), S_OK);
    EXPECT_EQ(m_manifest.factory->manifest, "the manifest");
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

TEST_F(ManifestApi, StepsAndLogOfOneApplication)
{
    m_manifest.displayNames = {L"Weather"};
    const LogCapture log;
    Get();
    EXPECT_THAT(m_objects.journal,
                ElementsAre("CoInitializeEx(2) = 0x00000000",
                            "CoCreateInstance{5842A140-FF9F-4166-8F5C-62F5B7B0C781} 1",
                            "SHCreateStreamOnFileEx(0x10, 0, 0, null)", "CreateManifestReader",
                            "GetApplications", "GetHasCurrent", "GetCurrent", "GetStringValue(DisplayName)",
                            "MoveNext", "GetHasCurrent", "CoUninitialize"));
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppNameUsingAPI", "(0x00000000)",
                                Call("CQanhPackage::AddApplication(Weather, (null))", "(0x00000000)")));
}

TEST_F(ManifestApi, HoldsTheFileUntilTheLastApplicationAndEachApplicationUntilTheNextOne)
{
    m_manifest.displayNames = {L"Weather", L"Mail"};
    std::size_t looks = 0;
    m_objects.At("MoveNext", [&] {
        ++looks;
        EXPECT_EQ(m_manifest.factory->References(), 1);
        EXPECT_FALSE(IsClosed());
        EXPECT_THAT(m_manifest.objects.Leaks(), Not(Contains(StartsWith("application:"))));
        EXPECT_THAT(FakeApplication::s_values, IsEmpty());
    });
    EXPECT_EQ(Get(), S_OK);
    EXPECT_EQ(looks, 2u);
}

TEST_F(ManifestApi, NullAndEmptyArguments)
{
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(nullptr, &m_package), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(L"", nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(L"", &m_package), E_INVALIDARG);
    EXPECT_THAT(m_objects.journal, IsEmpty());
    const auto refused = Call("CQanhManifestReader::GetAppNameUsingAPI", "(0x80004003)");
    EXPECT_EQ(log.Lines(),
              refused + refused + refused + Call("CQanhManifestReader::GetAppNameUsingAPI", "(0x80070057)"));
}

TEST_F(ManifestApi, AFileThatIsNotThere)
{
    DeleteFileW(Path().c_str());
    ExpectResult("0x80070002", {L"A"}, {});
    EXPECT_THAT(m_objects.journal, Contains("CoUninitialize"));
    EXPECT_THAT(m_objects.journal, Not(Contains("CreateManifestReader")));
}

// What becomes of the reading when one of its steps has another result.

struct StepResult
{
    const char* call;
    std::size_t index;
    HRESULT result;
    const char* logged;
    std::vector<std::wstring> added;
};

class ManifestApiStep : public ManifestApi, public WithParamInterface<StepResult>
{
};

TEST_P(ManifestApiStep, HasThisResult)
{
    m_objects.Fail(GetParam().call, GetParam().result, GetParam().index);
    ExpectResult(GetParam().logged, {L"A", L"B", L"C"}, GetParam().added);
    EXPECT_EQ(m_objects.journal.back(), "CoUninitialize");
    if (Result(GetParam().logged) != S_OK) {
        // It was the last one.
        EXPECT_EQ(m_objects.Calls(GetParam().call), GetParam().index + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(ThatMustSucceed, ManifestApiStep,
                         Values(StepResult{"CoCreateInstance", 0, E_ACCESSDENIED, "0x80070005", {}},
                                StepResult{"SHCreateStreamOnFileEx", 0, E_ACCESSDENIED, "0x80070005", {}},
                                StepResult{"CreateManifestReader", 0, E_ACCESSDENIED, "0x80070005", {}},
                                StepResult{"GetApplications", 0, E_ACCESSDENIED, "0x80070005", {}},
                                StepResult{"GetHasCurrent", 0, E_ACCESSDENIED, "0x80070005", {}},
                                StepResult{"GetHasCurrent", 1, E_ACCESSDENIED, "0x80070005", {L"A"}},
                                StepResult{"MoveNext", 0, E_ACCESSDENIED, "0x80070005", {L"A"}},
                                StepResult{"MoveNext", 1, E_ACCESSDENIED, "0x80070005", {L"A", L"B"}},
                                StepResult{"MoveNext", 2, E_ACCESSDENIED, "0x80070005", {L"A", L"B", L"C"}},
                                StepResult{
                                    "GetHasCurrent", 3, E_ACCESSDENIED, "0x80070005", {L"A", L"B", L"C"}}));

INSTANTIATE_TEST_SUITE_P(ThatOnlyCostsItsApplication, ManifestApiStep,
                         Values(StepResult{"GetCurrent", 0, E_ACCESSDENIED, "0x00000000", {L"B", L"C"}},
                                StepResult{"GetCurrent", 1, E_ACCESSDENIED, "0x00000000", {L"A", L"C"}},
                                StepResult{"GetCurrent", 2, E_ACCESSDENIED, "0x00000000", {L"A", L"B"}},
                                StepResult{"GetStringValue", 0, E_ACCESSDENIED, "0x00000000", {L"B", L"C"}},
                                StepResult{"GetStringValue", 1, E_ACCESSDENIED, "0x00000000", {L"A", L"C"}},
                                StepResult{"GetStringValue", 2, E_ACCESSDENIED, "0x00000000", {L"A", L"B"}}));

// The last result is returned also when it is none.
INSTANTIATE_TEST_SUITE_P(
    ThatIsNoFailure, ManifestApiStep,
    Values(StepResult{"CreateManifestReader", 0, S_FALSE, "0x00000000", {L"A", L"B", L"C"}},
           StepResult{"GetApplications", 0, S_FALSE, "0x00000000", {L"A", L"B", L"C"}},
           StepResult{"MoveNext", 0, S_FALSE, "0x00000000", {L"A", L"B", L"C"}},
           StepResult{"MoveNext", 2, S_FALSE, "0x00000000", {L"A", L"B", L"C"}},
           StepResult{"GetHasCurrent", 0, S_FALSE, "0x00000000", {L"A", L"B", L"C"}},
           StepResult{"GetHasCurrent", 3, S_FALSE, "0x00000001", {L"A", L"B", L"C"}}));

TEST_F(ManifestApi, AListThatIsFullDoesNotEndTheReading)
{
    CQanhPackage package(L"N", L"F", L"N", {}, 1);
    m_manifest.displayNames = {L"A", L"B", L"C"};
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &package), S_OK);
    ExpectNames(package, {L"A"});
    EXPECT_EQ(m_objects.Calls("GetStringValue"), 3u);
}

TEST_F(ManifestApi, AnExceptionIsAFailure)
{
    m_objects.At(
        "GetCurrent", [] { throw std::runtime_error("of the system's reader"); }, 1);
    ExpectResult("0x80004005", {L"A", L"B"}, {L"A"});
    EXPECT_EQ(m_objects.journal.back(), "CoUninitialize");
}

// Apartments.

TEST_F(ManifestApi, EntersAndLeavesAnApartmentOfItsOwn)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [&] {
        m_objects.At("GetApplications", [] { EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded); });
        EXPECT_EQ(Get(), S_OK);
    }));
}

TEST_F(ManifestApi, WorksInTheApartmentOfASingleThread)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [&] {
        m_objects.journal.clear();
        EXPECT_EQ(Get(), S_OK);
        EXPECT_EQ(m_objects.journal.front(), "CoInitializeEx(2) = 0x00000001");
        EXPECT_EQ(m_objects.journal.back(), "CoUninitialize");
    }));
}

TEST_F(ManifestApi, WorksInTheApartmentOfManyThreadsAndStaysThere)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kMultithreaded, [&] {
        m_objects.journal.clear();
        ExpectResult("0x00000000", {L"A"}, {L"A"});
        EXPECT_EQ(m_objects.journal.front(), "CoInitializeEx(2) = 0x80010106");
        EXPECT_THAT(m_objects.journal, Not(Contains("CoUninitialize")));
    }));
}

TEST_F(ManifestApi, WithoutAnApartmentThereIsNothingToRead)
{
    m_manifest.initializeResult = E_OUTOFMEMORY;
    const LogCapture log;
    EXPECT_EQ(Get(), E_OUTOFMEMORY);
    EXPECT_THAT(m_objects.journal, ElementsAre("CoInitializeEx(2) = 0x8007000E"));
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppNameUsingAPI", "(0x8007000E)"));
}

TEST_F(ManifestApi, RunningOutOfMemoryCostsAnApplicationAndNoText)
{
    m_manifest.displayNames = {L"A display name that is long", L"Another one of that length"};
    for (std::size_t failing = 0; failing < 2; ++failing) {
        CQanhPackage package(L"N", L"F", L"N", {});
        // The record of the application, with what stands before it, is what is allocated next.
        static thread_local bool s_fails;
        s_fails = false;
        // Patching itself allocates, before the patch knows the function that it stands in for.
        static const auto s_original =
            standin::FunctionOf<void* (*)(std::size_t)>(GetModuleHandleW(L"msvcrt.dll"), "malloc");
        const ImportPatch<void* (*)(std::size_t)> patch("malloc", [](std::size_t size) -> void* {
            if (s_fails && size >= sizeof(CQanhMetroApp) && size <= sizeof(CQanhMetroApp) + sizeof(void*)) {
                s_fails = false;
                return nullptr;
            }
            return s_original(size);
        });
        m_objects.At(
            "GetStringValue", [] { s_fails = true; }, m_objects.Calls("GetStringValue") + failing);
        EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &package), S_OK);
        EXPECT_EQ(package.Apps().Size(), 1u);
        EXPECT_FALSE(s_fails);
    }
}

} // namespace
