#include "catalog/MetroApp.h"

#include "support/Allocations.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/ReaderProbe.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"
#include "unit/catalog/XmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

namespace {

using test::Answer;
using test::Ask;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(MetroApp, HasEmptyNamesUnlessGiven)
{
    const CQanhMetroApp app;
    EXPECT_TRUE(app.DisplayName.empty());
    EXPECT_TRUE(app.ShortName.empty());
    EXPECT_TRUE(app.RubyDisplayName.empty());
    EXPECT_TRUE(app.RubyShortName.empty());
}

TEST(MetroApp, TakesDisplayNameShortNameAndTheirReadings)
{
    const CQanhMetroApp app(L"display", L"short", L"display reading", L"short reading");
    EXPECT_STREQ(app.DisplayName.c_str(), L"display");
    EXPECT_STREQ(app.ShortName.c_str(), L"short");
    EXPECT_STREQ(app.RubyDisplayName.c_str(), L"display reading");
    EXPECT_STREQ(app.RubyShortName.c_str(), L"short reading");
}

// How a record with these names answers a search.
struct Case
{
    const char* rule;
    const wchar_t* displayName;
    const wchar_t* shortName;
    const wchar_t* rubyDisplayName;
    const wchar_t* rubyShortName;
    const wchar_t* wantedName;
    std::vector<const wchar_t*> listed;
    HRESULT result;
    BOOL found;
    std::vector<std::wstring> excluded;
};

const Case kCases[] = {
    {"its own name leaves found at 0", L"mail", L"", L"", L"", L"mail", {}, S_OK, 0, {}},
    {"its own name in other letter case, too", L"Mail", L"", L"", L"", L"mAIL", {}, S_OK, 0, {}},
    {"behind its own name neither short name nor readings count",
     L"Mail",
     L"mail short",
     L"mail reading",
     L"mail short reading",
     L"MAIL",
     {},
     S_OK,
     0,
     {}},
    {"a record without display name is passed over",
     L"",
     L"mail short",
     L"mail",
     L"mail",
     L"mail",
     {},
     S_OK,
     0,
     {}},
    {"a name that contains the wanted one is excluded",
     L"web mail",
     L"",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     0,
     {L"web mail"}},
    {"the wanted name is lowered", L"web mail", L"", L"", L"", L"MAIL", {}, S_OK, 0, {L"web mail"}},
    {"the record's name is not lowered", L"Web Mail", L"", L"", L"", L"mail", {}, S_OK, 0, {}},
    {"not even when the wanted name has the same capitals",
     L"Web Mail",
     L"",
     L"",
     L"",
     L"Mail",
     {},
     S_OK,
     0,
     {}},
    {"a name that does not contain the wanted one is left alone",
     L"calendar",
     L"",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     0,
     {}},
    {"a part of the wanted name is left alone", L"mail", L"", L"", L"", L"web mail", {}, S_OK, 0, {}},
    {"the same words in another order are the wanted app",
     L"mail calendar",
     L"",
     L"",
     L"",
     L"Calendar Mail",
     {},
     S_OK,
     1,
     {}},
    {"the same words with other punctuation are the wanted app",
     L"mail - calendar!",
     L"",
     L"",
     L"",
     L"mail calendar",
     {},
     S_OK,
     1,
     {}},
    {"a wanted name without any token hits every name",
     L"mail",
     L"",
     L"",
     L"",
     L"!?",
     {},
     S_OK,
     0,
     {L"mail"}},
    {"two names without any token are the same", L"...", L"", L"", L"", L"!?", {}, S_OK, 1, {}},
    {"other letters than A to Z have no case", L"\u00C4", L"", L"", L"", L"\u00E4", {}, S_OK, 1, {}},

    {"a hit in the reading excludes the display name",
     L"天気",
     L"",
     L"てんき",
     L"",
     L"てん",
     {},
     S_OK,
     0,
     {L"天気"}},
    {"the reading is not lowered", L"天気", L"", L"Tenki", L"", L"tenki", {}, S_OK, 0, {}},
    {"hits in name and reading exclude once, and the second adding is the result",
     L"メール",
     L"",
     L"メール",
     L"",
     L"メ",
     {},
     S_FALSE,
     0,
     {L"メール"}},
    {"the reading counts also for the wanted app", L"b a", L"", L"a b", L"", L"a b", {}, S_OK, 1, {L"b a"}},
    {"an empty reading is not looked at", L"天気", L"", L"", L"", L"!", {}, S_OK, 0, {L"天気"}},

    {"a hit in the short name excludes the short name",
     L"messages",
     L"web mail",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     0,
     {L"web mail"}},
    {"a hit in both names excludes both",
     L"mail app",
     L"my mail",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     0,
     {L"mail app", L"my mail"}},
    {"a hit in the display name alone excludes that alone",
     L"mail app",
     L"messages",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     0,
     {L"mail app"}},
    {"a short name equal to the wanted one is the wanted app",
     L"messages",
     L"mail",
     L"",
     L"",
     L"Mail",
     {},
     S_OK,
     1,
     {}},
    {"but not when it has capitals", L"messages", L"Mail", L"", L"", L"mail", {}, S_OK, 0, {}},
    {"the wanted app by its short name may have its display name excluded",
     L"mail app",
     L"mail",
     L"",
     L"",
     L"mail",
     {},
     S_OK,
     1,
     {L"mail app"}},
    {"a short name that does not hit leaves found as the display name set it",
     L"b a",
     L"c",
     L"",
     L"",
     L"a b",
     {},
     S_OK,
     1,
     {}},
    {"a hit in the short name's reading excludes the short name",
     L"messages",
     L"天気",
     L"",
     L"てんき",
     L"てんき",
     {},
     S_OK,
     0,
     {L"天気"}},
    {"the short name's reading counts only with a short name",
     L"messages",
     L"",
     L"",
     L"mail",
     L"mail",
     {},
     S_OK,
     0,
     {}},
    {"the display name's reading does not exclude the short name",
     L"天気",
     L"予報",
     L"てんき",
     L"よほう",
     L"てんき",
     {},
     S_OK,
     0,
     {L"天気"}},

    {"a name that is listed already stays as it stands",
     L"web mail",
     L"",
     L"",
     L"",
     L"mail",
     {L"WEB MAIL"},
     S_FALSE,
     0,
     {L"WEB MAIL"}},
    {"the result is that of the last adding: listed, then new",
     L"web mail",
     L"my mail",
     L"",
     L"",
     L"mail",
     {L"Web Mail"},
     S_OK,
     0,
     {L"Web Mail", L"my mail"}},
    {"the result is that of the last adding: new, then listed",
     L"web mail",
     L"my mail",
     L"",
     L"",
     L"mail",
     {L"My Mail"},
     S_FALSE,
     0,
     {L"My Mail", L"web mail"}},
    {"the result stays that of the display name when the short name does not hit",
     L"web mail",
     L"messages",
     L"",
     L"",
     L"mail",
     {L"Web Mail"},
     S_FALSE,
     0,
     {L"Web Mail"}},
    {"a short name like the display name is added once",
     L"web mail",
     L"Web mail",
     L"",
     L"",
     L"mail",
     {},
     S_FALSE,
     0,
     {L"web mail"}},
};

TEST(MetroAppExclude, FollowsItsRules)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.rule);
        const CQanhMetroApp app(c.displayName, c.shortName, c.rubyDisplayName, c.rubyShortName);
        const Answer answer = Ask(app, c.wantedName, c.listed);
        EXPECT_EQ(answer.result, c.result);
        EXPECT_EQ(answer.found, c.found);
        EXPECT_EQ(answer.excluded, c.excluded);
    }
}

TEST(MetroAppExclude, ChecksItsArgumentsAndTouchesNothingThen)
{
    const CQanhMetroApp app(L"web mail");
    ExcludeList list;
    BOOL found = 7;
    EXPECT_EQ(app.AddToExcludeAppNameList(nullptr, &list, &found), E_POINTER);
    EXPECT_EQ(app.AddToExcludeAppNameList(L"mail", nullptr, &found), E_POINTER);
    EXPECT_EQ(app.AddToExcludeAppNameList(L"mail", &list, nullptr), E_POINTER);
    EXPECT_EQ(app.AddToExcludeAppNameList(L"", nullptr, &found), E_POINTER);
    EXPECT_EQ(app.AddToExcludeAppNameList(L"", &list, &found), E_INVALIDARG);
    EXPECT_EQ(found, 7);
    EXPECT_TRUE(list.IsEmpty());
}

TEST(MetroAppExclude, ClearsFoundBeforeACopyOfTheNameFails)
{
    const test::ImportPatch<wchar_t* (*)(const wchar_t*)> patch(
        "_wcsdup", [](const wchar_t*) -> wchar_t* { return nullptr; });
    const Answer answer = Ask(CQanhMetroApp(L"web mail"), L"mail");
    EXPECT_EQ(answer.result, E_OUTOFMEMORY);
    EXPECT_EQ(answer.found, 0);
    EXPECT_THAT(answer.excluded, IsEmpty());
}

TEST(MetroAppExclude, ClearsFoundBeforeTheLoweringFails)
{
    const test::ImportPatch<errno_t (*)(wchar_t*, std::size_t)> patch(
        "_wcslwr_s", [](wchar_t*, std::size_t) -> errno_t { return EINVAL; });
    const Answer answer = Ask(CQanhMetroApp(L"web mail"), L"mail");
    EXPECT_EQ(answer.result, E_FAIL);
    EXPECT_EQ(answer.found, 0);
    EXPECT_THAT(answer.excluded, IsEmpty());
}

// The allocation of this index fails.
Answer AskWithFailingAllocation(const CQanhMetroApp& app, const wchar_t* wantedName, std::size_t index)
{
    ExcludeList list;
    Answer answer;
    {
        const test::AllocationWatch watch(index);
        answer.result = app.AddToExcludeAppNameList(wantedName, &list, &answer.found);
        EXPECT_TRUE(watch.Failed());
    }
    answer.excluded = test::Names(list);
    return answer;
}

TEST(MetroAppExclude, EndsAtAFailingAddingOfTheDisplayName)
{
    const CQanhMetroApp app(L"mail of the web", L"my mail", L"mail reading", L"mail reading");
    const Answer answer = AskWithFailingAllocation(app, L"mail", 0);
    EXPECT_EQ(answer.result, E_OUTOFMEMORY);
    EXPECT_EQ(answer.found, 0);
    // Memory is there again, but neither the reading nor the short name is looked at any more.
    EXPECT_THAT(answer.excluded, IsEmpty());
}

TEST(MetroAppExclude, EndsAtAFailingAddingForTheReading)
{
    const CQanhMetroApp app(L"messages", L"my mail", L"mail reading", L"mail reading");
    const Answer answer = AskWithFailingAllocation(app, L"mail", 0);
    EXPECT_EQ(answer.result, E_OUTOFMEMORY);
    EXPECT_THAT(answer.excluded, IsEmpty());
}

TEST(MetroAppExclude, EndsAtAFailingAddingOfTheShortName)
{
    const CQanhMetroApp app(L"messages", L"my mail", L"", L"mail reading");
    const Answer answer = AskWithFailingAllocation(app, L"mail", 0);
    EXPECT_EQ(answer.result, E_OUTOFMEMORY);
    EXPECT_THAT(answer.excluded, IsEmpty());
}

TEST(MetroAppExclude, FreesItsCopyOfTheWantedName)
{
    static int s_copies = 0;
    static wchar_t s_copy[] = L"XXXXXXXX";
    static int s_freed = 0;
    static void (*s_free)(void*) = nullptr;
    s_copies = 0;
    s_freed = 0;
    s_free = reinterpret_cast<void (*)(void*)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "free")));
    const CQanhMetroApp app(L"mail");
    ExcludeList list;
    BOOL found = 7;
    {
        const test::ImportPatch<wchar_t* (*)(const wchar_t*)> duplicate("_wcsdup", [](const wchar_t* text) {
            ++s_copies;
            wcscpy_s(s_copy, std::size(s_copy), text);
            return s_copy;
        });
        const test::ImportPatch<void (*)(void*)> release("free", [](void* block) {
            if (block == s_copy) {
                ++s_freed;
            } else {
                s_free(block);
            }
        });
        EXPECT_EQ(app.AddToExcludeAppNameList(L"MAIL", &list, &found), S_OK);
    }
    EXPECT_EQ(s_copies, 1);
    EXPECT_EQ(s_freed, 1);
    EXPECT_STREQ(s_copy, L"mail");
}

TEST(MetroAppExclude, LogsEveryComparison)
{
    const test::LogCapture log;
    Ask(CQanhMetroApp(L"web mail", L"mail", L"reading", L"short reading"), L"Mail");
    EXPECT_THAT(
        log.Lines(),
        ElementsAre("CQanhMetroApp::AddToExcludeAppNameList(Mail) IN",
                    "CQanhApp::IsSubStrNoOrder(mail, web mail) IN", "CQanhApp::IsSubStrNoOrder OUT(1)",
                    "CQanhApp::IsSubStrNoOrder(web mail, mail) IN", "CQanhApp::IsSubStrNoOrder OUT(0)",
                    "CQanhApp::IsSubStrNoOrder(mail, reading) IN", "CQanhApp::IsSubStrNoOrder OUT(0)",
                    "CQanhApp::IsSubStrNoOrder(mail, mail) IN", "CQanhApp::IsSubStrNoOrder OUT(1)",
                    "CQanhApp::IsSubStrNoOrder(mail, mail) IN", "CQanhApp::IsSubStrNoOrder OUT(1)",
                    "CQanhApp::IsSubStrNoOrder(mail, short reading) IN", "CQanhApp::IsSubStrNoOrder OUT(0)",
                    "CQanhMetroApp::AddToExcludeAppNameList OUT(0x00000000)"));
}

TEST(MetroAppExclude, LogsEveryEarlyExit)
{
    const test::LogCapture log;
    const CQanhMetroApp app(L"Mail", L"mail");
    ExcludeList list;
    EXPECT_EQ(app.AddToExcludeAppNameList(nullptr, &list, nullptr), E_POINTER);
    Ask(app, L"");
    Ask(app, L"mail");
    {
        const test::ImportPatch<wchar_t* (*)(const wchar_t*)> patch(
            "_wcsdup", [](const wchar_t*) -> wchar_t* { return nullptr; });
        Ask(app, L"a");
    }
    {
        const test::ImportPatch<errno_t (*)(wchar_t*, std::size_t)> patch(
            "_wcslwr_s", [](wchar_t*, std::size_t) -> errno_t { return EINVAL; });
        Ask(app, L"b");
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhMetroApp::AddToExcludeAppNameList((null)) IN",
                                         "CQanhMetroApp::AddToExcludeAppNameList OUT(0x80004003)",
                                         "CQanhMetroApp::AddToExcludeAppNameList() IN",
                                         "CQanhMetroApp::AddToExcludeAppNameList OUT(0x80070057)",
                                         "CQanhMetroApp::AddToExcludeAppNameList(mail) IN",
                                         "CQanhMetroApp::AddToExcludeAppNameList OUT(0x00000000)",
                                         "CQanhMetroApp::AddToExcludeAppNameList(a) IN",
                                         "CQanhMetroApp::AddToExcludeAppNameList OUT(0x8007000E)",
                                         "CQanhMetroApp::AddToExcludeAppNameList(b) IN",
                                         "CQanhMetroApp::AddToExcludeAppNameList OUT(0x80004005)"));
}

std::string Written(const CQanhMetroApp& app)
{
    const test::XmlSink sink;
    EXPECT_EQ(app.ToXmlNode(sink.Writer()), S_OK);
    return sink.Text();
}

TEST(MetroAppToXmlNode, WritesItsNamesInTheFilesOrder)
{
    EXPECT_EQ(Written(CQanhMetroApp(L"a", L"b", L"c", L"d")),
              R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)");
}

TEST(MetroAppToXmlNode, LeavesEmptyNamesOut)
{
    EXPECT_EQ(Written(CQanhMetroApp()), "<MetroApp />");
    EXPECT_EQ(Written(CQanhMetroApp(L"a")), R"(<MetroApp DisplayName="a" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"b")), R"(<MetroApp ShortName="b" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"", L"c")), R"(<MetroApp RubyDisplayName="c" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"", L"", L"d")), R"(<MetroApp RubyShortName="d" />)");
}

TEST(MetroAppToXmlNode, WritesWithoutNamespaces)
{
    test::WriterProbe writer;
    EXPECT_EQ(CQanhMetroApp(L"天気", L"b", L"てんき", L"d").ToXmlNode(&writer), S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"start MetroApp", L"DisplayName=天気", L"ShortName=b",
                                          L"RubyDisplayName=てんき", L"RubyShortName=d", L"end"));
}

TEST(MetroAppToXmlNode, StopsAtTheFirstFailure)
{
    for (std::size_t failing = 0; failing < 6; ++failing) {
        test::WriterProbe writer;
        writer.failingCall = failing;
        EXPECT_EQ(CQanhMetroApp(L"a", L"b", L"c", L"d").ToXmlNode(&writer), writer.failure) << failing;
        // Only the end of the element may follow.
        EXPECT_LE(writer.calls.size(), failing + 2);
        if (writer.calls.size() == failing + 2) {
            EXPECT_EQ(writer.calls.back(), L"end");
        }
    }
}

TEST(MetroAppToXmlNode, RefusesNull)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhMetroApp().ToXmlNode(nullptr), E_POINTER);
    Written(CQanhMetroApp());
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMetroApp::ToXmlNode IN", "CQanhMetroApp::ToXmlNode OUT(0x80004003)",
                            "CQanhMetroApp::ToXmlNode IN", "CQanhMetroApp::ToXmlNode OUT(0x00000000)"));
}

std::unique_ptr<CQanhMetroApp> Read(std::string_view text)
{
    const test::XmlSource source(text, L"MetroApp");
    std::unique_ptr<CQanhMetroApp> app;
    EXPECT_EQ(CQanhMetroApp::FromXmlNode(source.Reader(), &app), S_OK);
    // The reader is left on the element.
    EXPECT_EQ(source.Name(), L"MetroApp");
    return app ? std::move(app) : std::make_unique<CQanhMetroApp>(L"nothing was read");
}

TEST(MetroAppFromXmlNode, ReadsItsFourNames)
{
    const auto app =
        Read(R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d"/>)");
    EXPECT_STREQ(app->DisplayName.c_str(), L"a");
    EXPECT_STREQ(app->ShortName.c_str(), L"b");
    EXPECT_STREQ(app->RubyDisplayName.c_str(), L"c");
    EXPECT_STREQ(app->RubyShortName.c_str(), L"d");
}

TEST(MetroAppFromXmlNode, TakesAnyOrderAnyLetterCaseAndPassesOverTheUnknown)
{
    const auto app =
        Read(R"(<MetroApp rubyshortname="d" Display="x" DisplayNames="x" SHORTNAME="b" Name="x" )"
             R"(DisplayNam="x" RubyName="x" rUBYdISPLAYnAME="c" displayname="a" IsInstalled="0"/>)");
    EXPECT_EQ(Written(*app),
              R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)");
}

TEST(MetroAppFromXmlNode, TakesTheLastOfARepeatedAttribute)
{
    const auto app =
        Read(R"(<MetroApp DisplayName="a" displayname="b" ShortName="c" DISPLAYNAME="d" shortname=""/>)");
    EXPECT_EQ(Written(*app), R"(<MetroApp DisplayName="d" />)");
}

TEST(MetroAppFromXmlNode, MakesARecordOfAnElementWithoutAttributes)
{
    EXPECT_EQ(Written(*Read("<MetroApp/>")), "<MetroApp />");
    EXPECT_EQ(Written(*Read("<MetroApp></MetroApp>")), "<MetroApp />");
    EXPECT_EQ(Written(*Read(R"(<MetroApp DisplayName=""/>)")), "<MetroApp />");
}

TEST(MetroAppFromXmlNode, DecodesEntitiesAndKeepsEveryScript)
{
    const auto app =
        Read("<MetroApp DisplayName=\"A &amp; B &lt;&quot;&gt; &#x30E1;\" ShortName=\"\xF0\x9F\x98\x80 "
             "\xE5\xA4\xA9\"/>");
    EXPECT_STREQ(app->DisplayName.c_str(), L"A & B <\"> メ");
    EXPECT_STREQ(app->ShortName.c_str(), L"\xD83D\xDE00 天");
}

TEST(MetroAppFromXmlNode, RefusesNull)
{
    const test::XmlSource source("<MetroApp/>", L"MetroApp");
    std::unique_ptr<CQanhMetroApp> app;
    const test::LogCapture log;
    EXPECT_EQ(CQanhMetroApp::FromXmlNode(nullptr, &app), E_POINTER);
    EXPECT_EQ(CQanhMetroApp::FromXmlNode(source.Reader(), nullptr), E_POINTER);
    EXPECT_EQ(app, nullptr);
    EXPECT_EQ(CQanhMetroApp::FromXmlNode(source.Reader(), &app), S_OK);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhMetroApp::FromXmlNode IN", "CQanhMetroApp::FromXmlNode OUT(0x80004003)",
                            "CQanhMetroApp::FromXmlNode IN", "CQanhMetroApp::FromXmlNode OUT(0x80004003)",
                            "CQanhMetroApp::FromXmlNode IN", "CQanhMetroApp::FromXmlNode OUT(0x00000000)"));
}

TEST(MetroAppFromXmlNode, PassesTheReadersFailureOn)
{
    for (const char* method : {"MoveToFirstAttribute", "MoveToNextAttribute"}) {
        const test::XmlSource source(R"(<MetroApp DisplayName="a" ShortName="b"/>)", L"MetroApp");
        test::ReaderProbe reader(source.Reader());
        reader.Answer(method, 0, E_ABORT);
        std::unique_ptr<CQanhMetroApp> app;
        EXPECT_EQ(CQanhMetroApp::FromXmlNode(&reader, &app), E_ABORT) << method;
        EXPECT_EQ(app, nullptr) << method;
    }
}

TEST(MetroAppFromXmlNode, SurvivesThatMemoryRunsOut)
{
    const std::size_t failures = test::ForEachFailingAllocation([](std::size_t index) {
        const test::XmlSource source(
            R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d"/>)",
            L"MetroApp");
        std::unique_ptr<CQanhMetroApp> app;
        HRESULT result = E_UNEXPECTED;
        bool failed = false;
        std::size_t left = 0;
        {
            const test::AllocationWatch watch(index);
            result = CQanhMetroApp::FromXmlNode(source.Reader(), &app);
            failed = watch.Failed();
            left = watch.Live();
        }
        EXPECT_EQ(result, failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(app == nullptr, failed);
        EXPECT_EQ(left == 0, failed);
        return failed;
    });
    EXPECT_GE(failures, 5u);
}

} // namespace
