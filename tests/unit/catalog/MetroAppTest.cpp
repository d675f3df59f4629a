#include "catalog/MetroApp.h"

#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

namespace {

using namespace test;

void ExpectNames(const CQanhMetroApp& app, const wchar_t* displayName, const wchar_t* shortName,
                 const wchar_t* rubyDisplayName, const wchar_t* rubyShortName)
{
    EXPECT_STREQ(app.DisplayName.c_str(), displayName);
    EXPECT_STREQ(app.ShortName.c_str(), shortName);
    EXPECT_STREQ(app.RubyDisplayName.c_str(), rubyDisplayName);
    EXPECT_STREQ(app.RubyShortName.c_str(), rubyShortName);
}

TEST(MetroApp, TakesDisplayNameShortNameAndTheirReadings)
{
    ExpectNames(CQanhMetroApp(), L"", L"", L"", L"");
    ExpectNames(CQanhMetroApp(L"display", L"short", L"display reading", L"short reading"), L"display",
                L"short", L"display reading", L"short reading");
}

struct AppNames
{
    const wchar_t* displayName;
    const wchar_t* shortName = L"";
    const wchar_t* rubyDisplayName = L"";
    const wchar_t* rubyShortName = L"";
};

CQanhMetroApp Make(const AppNames& names)
{
    return CQanhMetroApp(names.displayName, names.shortName, names.rubyDisplayName, names.rubyShortName);
}

// How a record with these names answers a search with an exclude list that holds the listed names already.
void ExpectAnswer(const char* rule, const AppNames& names, const wchar_t* wantedName,
                  const SearchAnswer& answer, const std::vector<const wchar_t*>& listed = {})
{
    EXPECT_EQ(Ask(Make(names), wantedName, listed), answer) << rule;
}

TEST(MetroAppExclude, FollowsItsRules)
{
    ExpectAnswer("its own name leaves found at 0", {L"mail"}, L"mail", kNothing);
    ExpectAnswer("its own name in other letter case, too", {L"Mail"}, L"mAIL", kNothing);
    ExpectAnswer("behind its own name neither short name nor readings count",
                 {L"Mail", L"mail short", L"mail reading", L"mail short reading"}, L"MAIL", kNothing);
    ExpectAnswer("a record without display name is passed over", {L"", L"mail short", L"mail", L"mail"},
                 L"mail", kNothing);
    ExpectAnswer("a name that contains the wanted one is excluded", {L"web mail"}, L"mail",
                 Excluding({L"web mail"}));
    ExpectAnswer("the wanted name is lowered", {L"web mail"}, L"MAIL", Excluding({L"web mail"}));
    ExpectAnswer("the record's name is not lowered", {L"Web Mail"}, L"mail", kNothing);
    ExpectAnswer("not even when the wanted name has the same capitals", {L"Web Mail"}, L"Mail", kNothing);
    ExpectAnswer("a name that does not contain the wanted one is left alone", {L"calendar"}, L"mail",
                 kNothing);
    ExpectAnswer("a part of the wanted name is left alone", {L"mail"}, L"web mail", kNothing);
    ExpectAnswer("the same words in another order are the wanted app", {L"mail calendar"}, L"Calendar Mail",
                 kFound);
    ExpectAnswer("the same words with other punctuation are the wanted app", {L"mail - calendar!"},
                 L"mail calendar", kFound);
    ExpectAnswer("a wanted name without any token hits every name", {L"mail"}, L"!?", Excluding({L"mail"}));
    ExpectAnswer("two names without any token are the same", {L"..."}, L"!?", kFound);
    ExpectAnswer("other letters than A to Z have no case", {L"\u00C4"}, L"\u00E4", kFound);

    ExpectAnswer("a hit in the reading excludes the display name", {L"天気", L"", L"てんき"}, L"てん",
                 Excluding({L"天気"}));
    ExpectAnswer("the reading is not lowered", {L"天気", L"", L"Tenki"}, L"tenki", kNothing);
    ExpectAnswer("hits in name and reading exclude once, and the second adding is the result",
                 {L"メール", L"", L"メール"}, L"メ", Excluding({L"メール"}, S_FALSE));
    ExpectAnswer("the reading counts also for the wanted app", {L"b a", L"", L"a b"}, L"a b",
                 SearchAnswer{S_OK, 1, {L"b a"}});
    ExpectAnswer("an empty reading is not looked at", {L"天気"}, L"!", Excluding({L"天気"}));

    ExpectAnswer("a hit in the short name excludes the short name", {L"messages", L"web mail"}, L"mail",
                 Excluding({L"web mail"}));
    ExpectAnswer("a hit in both names excludes both", {L"mail app", L"my mail"}, L"mail",
                 Excluding({L"mail app", L"my mail"}));
    ExpectAnswer("a hit in the display name alone excludes that alone", {L"mail app", L"messages"}, L"mail",
                 Excluding({L"mail app"}));
    ExpectAnswer("a short name equal to the wanted one is the wanted app", {L"messages", L"mail"}, L"Mail",
                 kFound);
    ExpectAnswer("but not when it has capitals", {L"messages", L"Mail"}, L"mail", kNothing);
    ExpectAnswer("the wanted app by its short name may have its display name excluded",
                 {L"mail app", L"mail"}, L"mail", SearchAnswer{S_OK, 1, {L"mail app"}});
    ExpectAnswer("a short name that does not hit leaves found as the display name set it", {L"b a", L"c"},
                 L"a b", kFound);
    ExpectAnswer("a hit in the short name's reading excludes the short name",
                 {L"messages", L"天気", L"", L"てんき"}, L"てんき", Excluding({L"天気"}));
    ExpectAnswer("the short name's reading counts only with a short name", {L"messages", L"", L"", L"mail"},
                 L"mail", kNothing);
    ExpectAnswer("the display name's reading does not exclude the short name",
                 {L"天気", L"予報", L"てんき", L"よほう"}, L"てんき", Excluding({L"天気"}));

    ExpectAnswer("a name that is listed already stays as it stands", {L"web mail"}, L"mail",
                 Excluding({L"WEB MAIL"}, S_FALSE), {L"WEB MAIL"});
    ExpectAnswer("the result is that of the last adding: listed, then new", {L"web mail", L"my mail"},
                 L"mail", Excluding({L"Web Mail", L"my mail"}), {L"Web Mail"});
    ExpectAnswer("the result is that of the last adding: new, then listed", {L"web mail", L"my mail"},
                 L"mail", Excluding({L"My Mail", L"web mail"}, S_FALSE), {L"My Mail"});
    ExpectAnswer("the result stays that of the display name when the short name does not hit",
                 {L"web mail", L"messages"}, L"mail", Excluding({L"Web Mail"}, S_FALSE), {L"Web Mail"});
    ExpectAnswer("a short name like the display name is added once", {L"web mail", L"Web mail"}, L"mail",
                 Excluding({L"web mail"}, S_FALSE));
}

TEST(MetroAppExclude, EndsAtAFailingAdding)
{
    const AppNames apps[] = {
        // Of the display name: neither its reading nor the short name is looked at any more.
        {L"mail of the web", L"my mail", L"mail reading", L"mail reading"},
        // Of the display name for its reading.
        {L"messages", L"my mail", L"mail reading", L"mail reading"},
        // Of the short name.
        {L"messages", L"my mail", L"", L"mail reading"},
    };
    for (const AppNames& names : apps) {
        EXPECT_EQ(AskWithFailingAdding(Make(names), L"mail"), (SearchAnswer{E_OUTOFMEMORY, 0, {}}));
    }
}

TEST(MetroAppExclude, LogsEveryComparison)
{
    const LogCapture log;
    Ask(CQanhMetroApp(L"web mail", L"mail", L"reading", L"short reading"), L"Mail");
    EXPECT_EQ(log.Lines(), Call("CQanhMetroApp::AddToExcludeAppNameList(Mail)", "(0x00000000)",
                                Call("CQanhApp::IsSubStrNoOrder(mail, web mail)", "(1)") +
                                    Call("CQanhApp::IsSubStrNoOrder(web mail, mail)", "(0)") +
                                    Call("CQanhApp::IsSubStrNoOrder(mail, reading)", "(0)") +
                                    Call("CQanhApp::IsSubStrNoOrder(mail, mail)", "(1)") +
                                    Call("CQanhApp::IsSubStrNoOrder(mail, mail)", "(1)") +
                                    Call("CQanhApp::IsSubStrNoOrder(mail, short reading)", "(0)")));
}

TEST(MetroAppToXmlNode, WritesItsNamesInTheFilesOrderAndLeavesEmptyOnesOut)
{
    EXPECT_EQ(Written(CQanhMetroApp(L"a", L"b", L"c", L"d")),
              R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)");
    EXPECT_EQ(Written(CQanhMetroApp()), "<MetroApp />");
    EXPECT_EQ(Written(CQanhMetroApp(L"a")), R"(<MetroApp DisplayName="a" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"b")), R"(<MetroApp ShortName="b" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"", L"c")), R"(<MetroApp RubyDisplayName="c" />)");
    EXPECT_EQ(Written(CQanhMetroApp(L"", L"", L"", L"d")), R"(<MetroApp RubyShortName="d" />)");
}

TEST(MetroAppToXmlNode, WritesWithoutNamespaces)
{
    WriterProbe writer;
    EXPECT_EQ(CQanhMetroApp(L"天気", L"b", L"てんき", L"d").ToXmlNode(&writer), S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"start MetroApp", L"DisplayName=天気", L"ShortName=b",
                                          L"RubyDisplayName=てんき", L"RubyShortName=d", L"end"));
}

// The record that is read of this element has these names.
void ExpectRead(const char* element, const wchar_t* displayName, const wchar_t* shortName,
                const wchar_t* rubyDisplayName, const wchar_t* rubyShortName)
{
    SCOPED_TRACE(element);
    ExpectNames(*ReadRecord<CQanhMetroApp>(element, L"MetroApp"), displayName, shortName, rubyDisplayName,
                rubyShortName);
}

TEST(MetroAppFromXmlNode, ReadsItsFourNames)
{
    ExpectRead(R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d"/>)", L"a",
               L"b", L"c", L"d");
    // In any order and letter case, passing over the unknown.
    ExpectRead(R"(<MetroApp rubyshortname="d" Display="x" DisplayNames="x" SHORTNAME="b" Name="x" )"
               R"(DisplayNam="x" RubyName="x" rUBYdISPLAYnAME="c" displayname="a" IsInstalled="0"/>)",
               L"a", L"b", L"c", L"d");
    // The last of a repeated one.
    ExpectRead(R"(<MetroApp DisplayName="a" displayname="b" ShortName="c" DISPLAYNAME="d" shortname=""/>)",
               L"d", L"", L"", L"");
    ExpectRead("<MetroApp/>", L"", L"", L"", L"");
    ExpectRead("<MetroApp></MetroApp>", L"", L"", L"", L"");
    ExpectRead(R"(<MetroApp DisplayName=""/>)", L"", L"", L"", L"");
    // Entities, and every script.
    ExpectRead("<MetroApp DisplayName=\"A &amp; B &lt;&quot;&gt; &#x30E1;\" ShortName=\"\xF0\x9F\x98\x80 "
               "\xE5\xA4\xA9\"/>",
               L"A & B <\"> メ", L"\xD83D\xDE00 天", L"", L"");
}

} // namespace
