// How resource references of a manifest become text.

#include "support/Allocations.h"
#include "unit/manifest/ManifestFile.h"

#include <algorithm>
#include <cwchar>

namespace {

using namespace manifest_test;

using Sources = std::vector<std::wstring>;

class ResourceString : public Test
{
protected:
    BOOL Convert(const wchar_t* resource, const wchar_t* fullName = L"F", const wchar_t* name = L"N")
    {
        return CQanhManifestReader::ConvertMsResourceToString(resource, fullName, name, m_buffer);
    }

    FakeResources m_resources;
    wchar_t m_buffer[256] = {};
};

// The two sources of a reference that is not rooted.
Sources BothSources(const std::wstring& key)
{
    return {L"@{F?ms-resource://N/resources/" + key + L"}", L"@{F? ms-resource://N/" + key + L"}"};
}

// Nothing can be loaded, so that the second source is asked for too.
TEST_F(ResourceString, SourcesAreMadeOfThePackagesNamesAndTheKey)
{
    const auto expectSources = [&](const char* what, const wchar_t* resource, const Sources& sources) {
        SCOPED_TRACE(what);
        m_resources.requests.clear();
        EXPECT_FALSE(Convert(resource));
        EXPECT_EQ(m_resources.Sources(), sources);
    };
    expectSources("a plain key", L"ms-resource:AppName", BothSources(L"appname"));
    expectSources("slashes around the key", L"ms-resource:/Strings/Title/", BothSources(L"strings/title"));
    expectSources("three slashes and no second try", L"ms-resource:///Resources/AppName",
                  {L"@{F?ms-resource://N/resources/appname}"});
    expectSources("two slashes", L"ms-resource://appname", BothSources(L"appname"));
    expectSources("many slashes at the end", L"ms-resource:AppName///", BothSources(L"appname"));
    expectSources("slashes inside stay", L"ms-resource:/a//b/", BothSources(L"a//b"));
    expectSources("the prefix alone", L"ms-resource:", BothSources(L""));
    expectSources("nothing but two slashes", L"ms-resource://", BothSources(L""));
    expectSources("nothing but three slashes", L"ms-resource:///", {L"@{F?ms-resource://N/}"});
    expectSources("four slashes keep one", L"ms-resource:////Title", {L"@{F?ms-resource://N//title}"});
    expectSources("a slash behind a rooted key stays", L"ms-resource:///Title/",
                  {L"@{F?ms-resource://N/title/}"});
    expectSources("upper case", L"MS-RESOURCE:APPNAME", BothSources(L"appname"));
    expectSources("upper case with three slashes", L"Ms-Resource:///App", {L"@{F?ms-resource://N/app}"});
    expectSources("a blank in the key", L"ms-resource: App", BothSources(L" app"));
    expectSources("the prefix twice", L"ms-resource:ms-resource:App", BothSources(L"ms-resource:app"));
    expectSources("other scripts", L"ms-resource:\u30e1\u30fc\u30eb", BothSources(L"\u30e1\u30fc\u30eb"));
    expectSources("half of a surrogate pair", L"ms-resource:A\xD83D/B", BothSources(L"a\xD83D/b"));
}

TEST_F(ResourceString, TheSecondSourceIsTriedWhenTheFirstFails)
{
    // The source loads as "My App"; all others leave "rest" in the buffer.
    m_resources.leftOver = L"rest";
    const auto expectTries = [&](const char* what, const std::string& resource, const wchar_t* source,
                                 const std::vector<std::string>& tried) {
        SCOPED_TRACE(what);
        m_resources.texts.clear();
        if (source) {
            m_resources.texts[source] = L"My App";
        }
        m_resources.requests.clear();
        std::fill(std::begin(m_buffer), std::end(m_buffer), L'\0');
        const LogCapture log;
        EXPECT_EQ(Convert(FromUtf8(resource).c_str()), source ? TRUE : FALSE);
        EXPECT_STREQ(m_buffer, source ? L"My App" : L"rest"); // as the system left it
        EXPECT_EQ(m_resources.requests.size(), tried.size());
        EXPECT_EQ(log.Lines(), Converted(resource, tried, source ? "My App" : "rest"));
    };
    const std::vector<std::string> both = {"@{F?ms-resource://N/resources/appname}",
                                           "@{F? ms-resource://N/appname}"};
    expectTries("the first source when it loads", "ms-resource:AppName",
                L"@{F?ms-resource://N/resources/appname}", {"@{F?ms-resource://N/resources/appname}"});
    expectTries("the second source when the first fails", "ms-resource:AppName",
                L"@{F? ms-resource://N/appname}", both);
    expectTries("both sources failing", "ms-resource:AppName", nullptr, both);
    expectTries("a rooted source", "ms-resource:///Files/Title", L"@{F?ms-resource://N/files/title}",
                {"@{F?ms-resource://N/files/title}"});
    expectTries("a rooted source once only", "ms-resource:///Files/Title", nullptr,
                {"@{F?ms-resource://N/files/title}"});
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
    const LogCapture log;
    EXPECT_TRUE(Convert(L"ms-resource:A"));
    ASSERT_EQ(log.Lines().size(), 3u);
    EXPECT_EQ(log.Lines()[0],
              "CQanhManifestReader::ConvertMsResourceToString(ms-resource:A, F, N, before, 256) IN");
    EXPECT_EQ(log.Lines()[2], "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = after)");
}

TEST_F(ResourceString, WhatIsNoReferenceIsLeftAlone)
{
    wcscpy_s(m_buffer, std::size(m_buffer), L"before");
    for (const char* text : {"", "Weather", " ms-resource:AppName", "xms-resource:AppName", "ms-resource",
                             "ms-resourceAppName", "ms_resource:AppName", "see ms-resource:///AppName"}) {
        const LogCapture log;
        EXPECT_FALSE(Convert(FromUtf8(text).c_str())) << text;
        EXPECT_THAT(m_resources.requests, IsEmpty());
        EXPECT_STREQ(m_buffer, L"before");
        EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::ConvertMsResourceToString(" +
                                             std::string(text) + ", F, N, before, 256) IN"));
    }
}

TEST_F(ResourceString, PackagesWithoutANameHaveNoResources)
{
    const LogCapture log;
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
    const std::wstring resource = L"ms-resource:a key that is too long for the string itself";
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        const Attempt attempt = TryRaisingWithFailingAllocation(index, [&] {
            (void)CQanhManifestReader::ConvertMsResourceToString(resource, L"F", L"N", m_buffer);
        });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(attempt.left, 0u);
        return attempt.failed;
    });
    EXPECT_GT(failures, 1u);
}

} // namespace
