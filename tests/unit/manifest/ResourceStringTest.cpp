// How resource references of a manifest become text.

#include "manifest/ManifestReader.h"

#include "support/Allocations.h"
#include "support/FakeResources.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cwchar>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Sources = std::vector<std::wstring>;

class ResourceString : public ::testing::Test
{
protected:
    BOOL Convert(const wchar_t* resource, const wchar_t* fullName = L"F", const wchar_t* name = L"N")
    {
        return CQanhManifestReader::ConvertMsResourceToString(resource, fullName, name, m_buffer);
    }

    test::FakeResources m_resources;
    wchar_t m_buffer[256] = {};
};

struct SourcesCase
{
    const char* name;
    const wchar_t* resource;
    Sources sources;
};

class ResourceSources : public ResourceString, public ::testing::WithParamInterface<SourcesCase>
{
};

// Nothing can be loaded, so that the second source is asked for too.
TEST_P(ResourceSources, AreMadeOfThePackagesNamesAndTheKey)
{
    EXPECT_FALSE(Convert(GetParam().resource));
    EXPECT_THAT(m_resources.Sources(), ElementsAreArray(GetParam().sources));
}

const SourcesCase kSources[] = {
    {"APlainKey",
     L"ms-resource:AppName",
     {L"@{F?ms-resource://N/resources/appname}", L"@{F? ms-resource://N/appname}"}},
    {"SlashesAroundTheKey",
     L"ms-resource:/Strings/Title/",
     {L"@{F?ms-resource://N/resources/strings/title}", L"@{F? ms-resource://N/strings/title}"}},
    {"ThreeSlashesAndNoSecondTry",
     L"ms-resource:///Resources/AppName",
     {L"@{F?ms-resource://N/resources/appname}"}},
    {"TwoSlashes",
     L"ms-resource://appname",
     {L"@{F?ms-resource://N/resources/appname}", L"@{F? ms-resource://N/appname}"}},
    {"ManySlashesAtTheEnd",
     L"ms-resource:AppName///",
     {L"@{F?ms-resource://N/resources/appname}", L"@{F? ms-resource://N/appname}"}},
    {"SlashesInsideStay",
     L"ms-resource:/a//b/",
     {L"@{F?ms-resource://N/resources/a//b}", L"@{F? ms-resource://N/a//b}"}},
    {"ThePrefixAlone", L"ms-resource:", {L"@{F?ms-resource://N/resources/}", L"@{F? ms-resource://N/}"}},
    {"NothingButTwoSlashes",
     L"ms-resource://",
     {L"@{F?ms-resource://N/resources/}", L"@{F? ms-resource://N/}"}},
    {"NothingButThreeSlashes", L"ms-resource:///", {L"@{F?ms-resource://N/}"}},
    {"FourSlashesKeepOne", L"ms-resource:////Title", {L"@{F?ms-resource://N//title}"}},
    {"ASlashBehindARootedKeyStays", L"ms-resource:///Title/", {L"@{F?ms-resource://N/title/}"}},
    {"UpperCase",
     L"MS-RESOURCE:APPNAME",
     {L"@{F?ms-resource://N/resources/appname}", L"@{F? ms-resource://N/appname}"}},
    {"UpperCaseWithThreeSlashes", L"Ms-Resource:///App", {L"@{F?ms-resource://N/app}"}},
    {"ABlankInTheKey",
     L"ms-resource: App",
     {L"@{F?ms-resource://N/resources/ app}", L"@{F? ms-resource://N/ app}"}},
    {"ThePrefixTwice",
     L"ms-resource:ms-resource:App",
     {L"@{F?ms-resource://N/resources/ms-resource:app}", L"@{F? ms-resource://N/ms-resource:app}"}},
    {"OtherScripts",
     L"ms-resource:\u30e1\u30fc\u30eb",
     {L"@{F?ms-resource://N/resources/\u30e1\u30fc\u30eb}", L"@{F? ms-resource://N/\u30e1\u30fc\u30eb}"}},
    {"HalfOfASurrogatePair",
     L"ms-resource:A\xD83D/B",
     {L"@{F?ms-resource://N/resources/a\xD83D/b}", L"@{F? ms-resource://N/a\xD83D/b}"}},
};

INSTANTIATE_TEST_SUITE_P(Of, ResourceSources, ::testing::ValuesIn(kSources),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(ResourceString, TheFirstSourceIsEnoughWhenItLoads)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    const test::LogCapture log;
    EXPECT_TRUE(Convert(L"ms-resource:AppName"));
    EXPECT_STREQ(m_buffer, L"My App");
    EXPECT_EQ(m_resources.requests.size(), 1u);
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhManifestReader::ConvertMsResourceToString(ms-resource:AppName, F, N, , 256) IN",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F?ms-resource://N/resources/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = My App)"));
}

TEST_F(ResourceString, TheSecondSourceIsTriedWhenTheFirstFails)
{
    m_resources.texts[L"@{F? ms-resource://N/appname}"] = L"My App";
    const test::LogCapture log;
    EXPECT_TRUE(Convert(L"ms-resource:AppName"));
    EXPECT_STREQ(m_buffer, L"My App");
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhManifestReader::ConvertMsResourceToString(ms-resource:AppName, F, N, , 256) IN",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F?ms-resource://N/resources/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F? ms-resource://N/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = My App)"));
}

TEST_F(ResourceString, BothSourcesFailing)
{
    m_resources.leftOver = L"rest";
    const test::LogCapture log;
    EXPECT_FALSE(Convert(L"ms-resource:AppName"));
    EXPECT_STREQ(m_buffer, L"rest"); // as the system left it
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhManifestReader::ConvertMsResourceToString(ms-resource:AppName, F, N, , 256) IN",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F?ms-resource://N/resources/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                    "@{F? ms-resource://N/appname})",
                    "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = rest)"));
}

TEST_F(ResourceString, ARootedSourceLoads)
{
    m_resources.texts[L"@{F?ms-resource://N/files/title}"] = L"My App";
    EXPECT_TRUE(Convert(L"ms-resource:///Files/Title"));
    EXPECT_STREQ(m_buffer, L"My App");
}

TEST_F(ResourceString, ARootedSourceIsTriedOnce)
{
    const test::LogCapture log;
    EXPECT_FALSE(Convert(L"ms-resource:///Files/Title"));
    EXPECT_THAT(
        log.Lines(),
        ElementsAre(
            "CQanhManifestReader::ConvertMsResourceToString(ms-resource:///Files/Title, F, N, , 256) IN",
            "CQanhManifestReader::ConvertMsResourceToString ms-resource = @{F?ms-resource://N/files/title})",
            "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = )"));
}

TEST_F(ResourceString, TheShellGetsTheCallersBufferAndItsSize)
{
    Convert(L"ms-resource:AppName");
    ASSERT_EQ(m_resources.requests.size(), 2u);
    for (const auto& request : m_resources.requests) {
        EXPECT_EQ(request.buffer, m_buffer);
        EXPECT_EQ(request.size, 256u);
        EXPECT_EQ(request.reserved, nullptr);
    }
}

TEST_F(ResourceString, ATextAsLongAsTheBufferFits)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = std::wstring(255, L'x');
    EXPECT_TRUE(Convert(L"ms-resource:a"));
    EXPECT_EQ(std::wstring(m_buffer), std::wstring(255, L'x'));
}

TEST_F(ResourceString, ALongerTextIsCutToTheBuffer)
{
    for (const std::size_t size : {256u, 257u, 5000u}) {
        m_resources.texts[L"@{F? ms-resource://N/a}"] = std::wstring(size, L'x');
        EXPECT_TRUE(Convert(L"ms-resource:a"));
        EXPECT_EQ(std::wstring(m_buffer), std::wstring(255, L'x'));
    }
}

TEST_F(ResourceString, TheSecondTryGetsTheBufferAsTheFirstOneLeftIt)
{
    m_resources.leftOver = L"rest";
    std::vector<std::wstring> before;
    m_resources.onLoad = [&] { before.emplace_back(m_buffer); };
    EXPECT_FALSE(Convert(L"ms-resource:A"));
    EXPECT_THAT(before, ElementsAre(L"", L"rest"));
}

TEST_F(ResourceString, EveryResultThatIsNoFailureIsSuccess)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    m_resources.success = S_FALSE;
    EXPECT_EQ(Convert(L"ms-resource:AppName"), TRUE);
    EXPECT_EQ(m_resources.requests.size(), 1u);
    m_resources.texts = {{L"@{F? ms-resource://N/appname}", L"My App"}};
    EXPECT_EQ(Convert(L"ms-resource:AppName"), TRUE);
    m_resources.texts = {{L"@{F?ms-resource://N/appname}", L"My App"}};
    EXPECT_EQ(Convert(L"ms-resource:///AppName"), TRUE);
}

TEST_F(ResourceString, TheBufferIsLoggedAsTheCallerGaveIt)
{
    wcscpy_s(m_buffer, std::size(m_buffer), L"before");
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"after";
    const test::LogCapture log;
    EXPECT_TRUE(Convert(L"ms-resource:A"));
    ASSERT_EQ(log.Lines().size(), 3u);
    EXPECT_EQ(log.Lines()[0],
              "CQanhManifestReader::ConvertMsResourceToString(ms-resource:A, F, N, before, 256) IN");
    EXPECT_EQ(log.Lines()[2], "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = after)");
}

class NoReference : public ResourceString, public ::testing::WithParamInterface<const wchar_t*>
{
};

TEST_P(NoReference, IsLeftAlone)
{
    wcscpy_s(m_buffer, std::size(m_buffer), L"before");
    EXPECT_FALSE(Convert(GetParam()));
    EXPECT_THAT(m_resources.requests, IsEmpty());
    EXPECT_STREQ(m_buffer, L"before");
}

INSTANTIATE_TEST_SUITE_P(When, NoReference,
                         ::testing::Values(L"", L"Weather", L" ms-resource:AppName", L"xms-resource:AppName",
                                           L"ms-resource", L"ms-resourceAppName", L"ms_resource:AppName",
                                           L"see ms-resource:///AppName"));

TEST_F(ResourceString, NoReferenceHasNoLineButTheFirst)
{
    const test::LogCapture log;
    EXPECT_FALSE(Convert(L"Weather"));
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhManifestReader::ConvertMsResourceToString(Weather, F, N, , 256) IN"));
}

TEST_F(ResourceString, PackagesWithoutANameHaveNoResources)
{
    const test::LogCapture log;
    wcscpy_s(m_buffer, std::size(m_buffer), L"before");
    EXPECT_FALSE(Convert(L"ms-resource:A", nullptr, L"N"));
    EXPECT_FALSE(Convert(L"ms-resource:A", L"F", nullptr));
    EXPECT_FALSE(Convert(L"ms-resource:A", L"", L"N"));
    EXPECT_FALSE(Convert(L"ms-resource:A", L"F", L""));
    EXPECT_FALSE(CQanhManifestReader::ConvertMsResourceToString(L"ms-resource:A", L"F", L"N", nullptr));
    EXPECT_STREQ(m_buffer, L"before");
    EXPECT_THAT(m_resources.requests, IsEmpty());
    const std::string in = "CQanhManifestReader::ConvertMsResourceToString(ms-resource:A, ";
    EXPECT_THAT(log.Lines(), ElementsAre(in + "(null), N, before, 256) IN", in + "F, (null), before, 256) IN",
                                         in + ", N, before, 256) IN", in + "F, , before, 256) IN",
                                         in + "F, N, (null), 256) IN"));
}

TEST_F(ResourceString, NamesAndKeysOfAnyLengthReachTheShellWhole)
{
    const std::wstring fullName(300, L'f');
    const std::wstring name(301, L'n');
    const std::wstring key(2000, L'k');
    EXPECT_FALSE(Convert((L"ms-resource:" + key).c_str(), fullName.c_str(), name.c_str()));
    EXPECT_THAT(m_resources.Sources(),
                ElementsAre(L"@{" + fullName + L"?ms-resource://" + name + L"/resources/" + key + L"}",
                            L"@{" + fullName + L"? ms-resource://" + name + L"/" + key + L"}"));
}

TEST_F(ResourceString, PercentSignsAreNoFormats)
{
    EXPECT_FALSE(Convert(L"ms-resource:%d%s", L"%s1", L"%n2"));
    EXPECT_THAT(m_resources.Sources(),
                ElementsAre(L"@{%s1?ms-resource://%n2/resources/%d%s}", L"@{%s1? ms-resource://%n2/%d%s}"));
}

TEST_F(ResourceString, OnlyTheReferenceIsLowered)
{
    EXPECT_FALSE(Convert(L"ms-resource:KEY", L"Full.NAME", L"The.NAME"));
    EXPECT_EQ(m_resources.Sources()[0], L"@{Full.NAME?ms-resource://The.NAME/resources/key}");
}

TEST_F(ResourceString, RunningOutOfMemoryIsRaised)
{
    m_resources.isQuiet = true;
    try {
        throw std::bad_alloc(); // the first exception of a thread allocates for good
    } catch (const std::bad_alloc&) {
    }
    const std::wstring resource = L"ms-resource:a key that is too long for the string itself";
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        bool raised = false;
        std::size_t live = 0;
        bool failed = false;
        {
            const test::AllocationWatch watch(index);
            try {
                (void)CQanhManifestReader::ConvertMsResourceToString(resource, L"F", L"N", m_buffer);
            } catch (const std::bad_alloc&) {
                raised = true;
            }
            failed = watch.Failed();
            live = watch.Live();
        }
        EXPECT_EQ(raised, failed);
        EXPECT_EQ(live, 0u);
        return failed;
    });
    EXPECT_GT(failures, 1u);
}

} // namespace
