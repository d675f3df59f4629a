// The manifest reader that asks the system's own interfaces.

#include "support/Allocations.h"
#include "support/Apartments.h"
#include "unit/manifest/FakeManifest.h"
#include "unit/manifest/ManifestFile.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace {

using namespace manifest_test;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::StartsWith;

class ManifestApi : public ManifestFile
{
protected:
    ManifestApi() { Write("the manifest"); }
    ~ManifestApi() override
    {
        EXPECT_THAT(m_manifest.Leaks(), IsEmpty());
        EXPECT_TRUE(IsClosed() || GetFileAttributesW(Path().c_str()) == INVALID_FILE_ATTRIBUTES);
    }

    HRESULT Get() { return CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &m_package); }

    FakeManifest m_manifest;
};

TEST_F(ManifestApi, StoresDisplayNamesAsTheyStandAndNoShortNames)
{
    m_manifest.displayNames = {L"Weather", L"ms-resource:AppName", L"", L"Weather"};
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"Weather", L""), Pair(L"ms-resource:AppName", L""),
                                                Pair(L"", L""), Pair(L"Weather", L"")));
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

TEST_F(ManifestApi, StoresNamesOfEveryScriptAndLengthWhole)
{
    const std::vector<std::wstring> names = {L"\u00c9T\u00c9 \u0416\u30e1", L"\xD83D\xDE00 A\xD83D",
                                             std::wstring(256, L'A'), std::wstring(70000, L'B')};
    m_manifest.displayNames = names;
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(names[0], L""), Pair(names[1], L""), Pair(names[2], L""),
                                                Pair(names[3], L"")));
}

TEST_F(ManifestApi, HandsTheFileToTheSystem)
{
    EXPECT_EQ(Get(), S_OK);
    EXPECT_EQ(m_manifest.factory->manifest, "the manifest");
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

TEST_F(ManifestApi, StepsOfOneApplication)
{
    m_manifest.displayNames = {L"Weather"};
    Get();
    EXPECT_THAT(m_manifest.objects.journal,
                ElementsAre("CoInitializeEx(2) = 0x00000000",
                            "CoCreateInstance{5842A140-FF9F-4166-8F5C-62F5B7B0C781} 1",
                            "SHCreateStreamOnFileEx(0x10, 0, 0, null)", "CreateManifestReader",
                            "GetApplications", "GetHasCurrent", "GetCurrent", "GetStringValue(DisplayName)",
                            "MoveNext", "GetHasCurrent", "CoUninitialize"));
}

TEST_F(ManifestApi, HoldsTheFileUntilTheLastApplication)
{
    m_manifest.displayNames = {L"Weather", L"Mail"};
    std::size_t looks = 0;
    m_manifest.objects.At("MoveNext", [&] {
        ++looks;
        EXPECT_EQ(m_manifest.factory->References(), 1);
        EXPECT_FALSE(IsClosed());
    });
    EXPECT_EQ(Get(), S_OK);
    EXPECT_EQ(looks, 2u);
}

TEST_F(ManifestApi, WholeLog)
{
    m_manifest.displayNames = {L"Weather"};
    const test::LogCapture log;
    Get();
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingAPI IN",
                                         "CQanhPackage::AddApplication(Weather, (null)) IN",
                                         "CQanhPackage::AddApplication OUT(0x00000000)",
                                         "CQanhManifestReader::GetAppNameUsingAPI OUT(0x00000000)"));
}

TEST_F(ManifestApi, NullAndEmptyArguments)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(nullptr, &m_package), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(L"", nullptr), E_POINTER);
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(L"", &m_package), E_INVALIDARG);
    EXPECT_THAT(m_manifest.objects.journal, IsEmpty());
    const std::string in = "CQanhManifestReader::GetAppNameUsingAPI IN";
    const std::string out = "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80004003)";
    EXPECT_THAT(log.Lines(), ElementsAre(in, out, in, out, in, out, in,
                                         "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80070057)"));
}

TEST_F(ManifestApi, AFileThatIsNotThere)
{
    DeleteFileW(Path().c_str());
    const test::LogCapture log;
    EXPECT_EQ(Get(), kNotFound);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80070002)");
    EXPECT_THAT(m_manifest.objects.journal, Contains("CoUninitialize"));
    EXPECT_THAT(m_manifest.objects.journal, Not(Contains("CreateManifestReader")));
}

// Each step that must succeed.

struct FailingStep
{
    const char* call;
    std::size_t index;
    std::size_t applications; // that are added all the same
};

class ManifestApiStep : public ManifestApi, public ::testing::WithParamInterface<FailingStep>
{
};

TEST_P(ManifestApiStep, ThatFailsEndsTheReading)
{
    m_manifest.displayNames = {L"A", L"B", L"C"};
    m_manifest.objects.Fail(GetParam().call, E_ACCESSDENIED, GetParam().index);
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_ACCESSDENIED);
    EXPECT_EQ(m_package.Apps().Size(), GetParam().applications);
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80070005)");
    EXPECT_EQ(m_manifest.objects.journal.back(), "CoUninitialize");
    // It was the last one.
    EXPECT_EQ(m_manifest.objects.Calls(GetParam().call), GetParam().index + 1);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ManifestApiStep,
    ::testing::Values(FailingStep{"CoCreateInstance", 0, 0}, FailingStep{"SHCreateStreamOnFileEx", 0, 0},
                      FailingStep{"CreateManifestReader", 0, 0}, FailingStep{"GetApplications", 0, 0},
                      FailingStep{"GetHasCurrent", 0, 0}, FailingStep{"GetHasCurrent", 1, 1},
                      FailingStep{"MoveNext", 0, 1}, FailingStep{"MoveNext", 1, 2},
                      FailingStep{"MoveNext", 2, 3}, FailingStep{"GetHasCurrent", 3, 3}));

// The steps that only cost their application.

TEST_F(ManifestApi, AnApplicationThatCannotBeHadIsSkipped)
{
    m_manifest.displayNames = {L"A", L"B", L"C"};
    m_manifest.objects.Fail("GetCurrent", E_ACCESSDENIED, 1);
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"A", L""), Pair(L"C", L"")));
}

TEST_F(ManifestApi, AnApplicationWithoutADisplayNameIsSkipped)
{
    m_manifest.displayNames = {L"A", L"B", L"C"};
    m_manifest.objects.Fail("GetStringValue", E_ACCESSDENIED, 0);
    m_manifest.objects.Fail("GetStringValue", E_ACCESSDENIED, 2);
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"B", L"")));
}

TEST_F(ManifestApi, ASkippedApplicationAtTheEndLeavesTheResultAlone)
{
    for (const char* call : {"GetCurrent", "GetStringValue"}) {
        m_manifest.displayNames = {L"A"};
        m_manifest.objects.Fail(call, E_ACCESSDENIED, m_manifest.objects.Calls(call));
        const test::LogCapture log;
        EXPECT_EQ(Get(), S_OK) << call;
        EXPECT_THAT(NamesOf(m_package), IsEmpty());
        EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(0x00000000)");
    }
}

TEST_F(ManifestApi, ResultsThatAreNoFailuresGoOn)
{
    m_manifest.displayNames = {L"A", L"B"};
    for (const char* call : {"CreateManifestReader", "GetApplications", "MoveNext"}) {
        m_manifest.objects.Fail(call, S_FALSE);
    }
    m_manifest.objects.Fail("GetHasCurrent", S_FALSE, 0);
    EXPECT_EQ(Get(), S_OK);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"A", L""), Pair(L"B", L"")));
}

TEST_F(ManifestApi, TheLastResultIsReturnedAlsoWhenItIsNoFailure)
{
    m_manifest.displayNames = {L"A"};
    m_manifest.objects.Fail("GetHasCurrent", S_FALSE, 1);
    const test::LogCapture log;
    EXPECT_EQ(Get(), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"A", L"")));
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(0x00000001)");
}

TEST_F(ManifestApi, AnApplicationAndItsTextAreGivenBackBeforeTheNextOne)
{
    m_manifest.displayNames = {L"A", L"B"};
    m_manifest.objects.At("MoveNext", [&] {
        EXPECT_THAT(m_manifest.Leaks(), Not(Contains(StartsWith("application:"))));
        EXPECT_THAT(FakeApplication::s_values, IsEmpty());
    });
    EXPECT_EQ(Get(), S_OK);
    EXPECT_EQ(m_manifest.objects.Calls("MoveNext"), 2u);
}

TEST_F(ManifestApi, AListThatIsFullDoesNotEndTheReading)
{
    CQanhPackage package(L"N", L"F", L"N", {}, 1);
    m_manifest.displayNames = {L"A", L"B", L"C"};
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &package), S_OK);
    EXPECT_THAT(NamesOf(package), ElementsAre(Pair(L"A", L"")));
    EXPECT_EQ(m_manifest.objects.Calls("GetStringValue"), 3u);
}

TEST_F(ManifestApi, AnExceptionIsAFailure)
{
    m_manifest.displayNames = {L"A", L"B"};
    m_manifest.objects.At(
        "GetCurrent", [] { throw std::runtime_error("of the system's reader"); }, 1);
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_FAIL);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"A", L"")));
    EXPECT_EQ(log.Lines().back(), "CQanhManifestReader::GetAppNameUsingAPI OUT(0x80004005)");
    EXPECT_EQ(m_manifest.objects.journal.back(), "CoUninitialize");
}

// Apartments.

TEST_F(ManifestApi, EntersAndLeavesAnApartmentOfItsOwn)
{
    EXPECT_TRUE(test::KeepsApartment(test::Apartment::kNone, [&] {
        m_manifest.objects.At("GetApplications",
                              [] { EXPECT_EQ(test::ApartmentOfThread(), test::Apartment::kSingleThreaded); });
        EXPECT_EQ(Get(), S_OK);
    }));
}

TEST_F(ManifestApi, WorksInTheApartmentOfASingleThread)
{
    EXPECT_TRUE(test::KeepsApartment(test::Apartment::kSingleThreaded, [&] {
        m_manifest.objects.journal.clear();
        EXPECT_EQ(Get(), S_OK);
        EXPECT_EQ(m_manifest.objects.journal.front(), "CoInitializeEx(2) = 0x00000001");
        EXPECT_EQ(m_manifest.objects.journal.back(), "CoUninitialize");
    }));
}

TEST_F(ManifestApi, WorksInTheApartmentOfManyThreadsAndStaysThere)
{
    m_manifest.displayNames = {L"A"};
    EXPECT_TRUE(test::KeepsApartment(test::Apartment::kMultithreaded, [&] {
        m_manifest.objects.journal.clear();
        EXPECT_EQ(Get(), S_OK);
        EXPECT_EQ(m_manifest.objects.journal.front(), "CoInitializeEx(2) = 0x80010106");
        EXPECT_THAT(m_manifest.objects.journal, Not(Contains("CoUninitialize")));
    }));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"A", L"")));
}

TEST_F(ManifestApi, WithoutAnApartmentThereIsNothingToRead)
{
    m_manifest.initializeResult = E_OUTOFMEMORY;
    const test::LogCapture log;
    EXPECT_EQ(Get(), E_OUTOFMEMORY);
    EXPECT_THAT(m_manifest.objects.journal, ElementsAre("CoInitializeEx(2) = 0x8007000E"));
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingAPI IN",
                                         "CQanhManifestReader::GetAppNameUsingAPI OUT(0x8007000E)"));
}

TEST_F(ManifestApi, RunningOutOfMemoryCostsAnApplicationAndNoText)
{
    m_manifest.displayNames = {L"A display name that is long", L"Another one of that length"};
    for (std::size_t failing = 0; failing < 2; ++failing) {
        CQanhPackage package(L"N", L"F", L"N", {});
        // The record of the application is what is allocated next.
        test::FakeObjects& objects = m_manifest.objects;
        const std::size_t before = objects.Calls("GetStringValue");
        static thread_local bool s_fails;
        s_fails = false;
        // Patching itself allocates, before the patch knows the function that it stands in for.
        static const auto s_original = reinterpret_cast<void* (*)(std::size_t)>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "malloc")));
        const test::ImportPatch<void* (*)(std::size_t)> patch("malloc", [](std::size_t size) -> void* {
            if (s_fails && size == sizeof(CQanhMetroApp)) {
                s_fails = false;
                return nullptr;
            }
            return s_original(size);
        });
        objects.At(
            "GetStringValue", [] { s_fails = true; }, before + failing);
        EXPECT_EQ(CQanhManifestReader::GetAppNameUsingAPI(Path().c_str(), &package), S_OK);
        EXPECT_EQ(package.Apps().Size(), 1u);
        EXPECT_FALSE(s_fails);
    }
}

} // namespace
