#include "standin/desktop/Query.h"

#include "standin/Settings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using standin::CompareNames;
using standin::ContainsName;
using standin::Query;

TEST(StandInQuery, EmptyTextHitsNothing)
{
    for (const wchar_t* text : {L"", L"  ", L"\"\"", L"()", L")", L"NOT()", L"NOT(\"\")", L"\""}) {
        EXPECT_TRUE(Query(text).IsEmpty()) << text;
        EXPECT_FALSE(Query(text).Hits(L"Mail")) << text;
    }
}

TEST(StandInQuery, HitsTheNamesThatItAsksFor)
{
    struct Case
    {
        const wchar_t* text;
        std::vector<const wchar_t*> hit;
        std::vector<const wchar_t*> missed;
    };
    const Case cases[] = {
        {L"\"Mail Box\"", {L"Mail Box", L"My Mail Boxes"}, {L"Mail", L"Box Mail"}},
        {L"box mail", {L"Mail Box"}, {L"Mail"}},
        {L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")",
         {L"Mail", L"Mailer"},
         {L"Mail Box", L"Gmail", L"Calendar"}},
        {L"\"Mail\" NOT(\"Gmail\")", {L"Mail"}, {L"Gmail"}},
        {L"mail NOT box", {L"Gmail"}, {L"Mail Box"}},
        // OR binds tighter than standing side by side.
        {L"mail box OR cube", {L"Mail Box", L"Mail Cube"}, {L"Cube", L"Mail"}},
        // Operators with nothing to work on are words.
        {L"OR", {L"Word"}, {}},
        {L"NOT", {L"Notes"}, {}},
        {L"mail OR", {L"Mail Order"}, {L"Mail"}},
        {L"\"OR\" \"NOT\"", {L"Or not"}, {}},
        {L"this or that", {L"That or this"}, {L"This"}},
        {L"(mail box) OR cube", {L"Mail Box", L"Cube"}, {L"Mail"}},
        {L"\"Mail (x64)\" NOT(\"Mail (x86)\")", {L"Mail (x64)"}, {L"Mail (x86)"}},
        // Unbalanced text is read to its end.
        {L"\"Mail", {L"Mail"}, {}},
        {L"\"Mail\" NOT(\"Gmail", {}, {L"Gmail"}},
        {L"\"Mail\" NOT(\"Gmail\"", {}, {L"Gmail"}},
        {L"))) mail ) )", {L"Mail"}, {}},
        {L")NOT)(mail", {}, {L"Calendar"}},
        // Case is ignored beyond ASCII.
        {L"\"\u00e4pfel\"", {L"\u00c4PFEL"}, {}},
        {L"\"\u043f\u043e\u0447\u0442\u0430\"", {L"\u041f\u041e\u0427\u0422\u0410"}, {}},
        {L"\"\u30e1\u30fc\u30eb\"", {L"\u65b0\u30e1\u30fc\u30eb"}, {L"\u30e1\u30e2"}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        const Query query(each.text);
        for (const wchar_t* name : each.hit) {
            EXPECT_TRUE(query.Hits(name)) << name;
        }
        for (const wchar_t* name : each.missed) {
            EXPECT_FALSE(query.Hits(name)) << name;
        }
    }
}

TEST(StandInQuery, DeepNestingEnds)
{
    const std::wstring brackets(100000, L'(');
    EXPECT_TRUE(Query(brackets + L"mail").Hits(L"Mail"));
    std::wstring nots;
    for (int count = 0; count < 20000; ++count) {
        nots += L"NOT(";
    }
    const Query query(nots + L"\"mail\"");
    EXPECT_FALSE(query.IsEmpty());
    // Fifty of them count, which is even and says what is inside; the deeper ones are left out whole.
    EXPECT_TRUE(query.Hits(L"Mail"));
    EXPECT_FALSE(query.Hits(L"Music"));
}

TEST(StandInQuery, OrderOfNamesIgnoresCase)
{
    EXPECT_LT(CompareNames(L"gmail", L"Mail"), 0);
    EXPECT_LT(CompareNames(L"Mail", L"mail box"), 0);
    EXPECT_EQ(CompareNames(L"MAIL", L"mail"), 0);
    EXPECT_GT(CompareNames(L"\u30e1", L"z"), 0);
    EXPECT_TRUE(ContainsName(L"Mail", L""));
    EXPECT_FALSE(ContainsName(L"", L"Mail"));
}

TEST(StandInSettings, KeepsAndClearsEverySwitch)
{
    ASSERT_TRUE(standin::ClearSettings());
    DWORD value = 0x80004005;
    for (std::size_t index = 0; index < std::size(standin::settings); ++index) {
        const auto setting = static_cast<standin::Setting>(index);
        EXPECT_EQ(standin::GetSetting(setting), 0u);
        EXPECT_TRUE(standin::SetSetting(setting, ++value));
        EXPECT_EQ(standin::GetSetting(setting), value);
    }
    EXPECT_TRUE(standin::ClearSettings());
    for (std::size_t index = 0; index < std::size(standin::settings); ++index) {
        EXPECT_EQ(standin::GetSetting(static_cast<standin::Setting>(index)), 0u);
    }
    EXPECT_TRUE(standin::ClearSettings());
}

TEST(StandInSettings, AreKnownByTheirNames)
{
    ASSERT_TRUE(standin::ClearSettings());
    EXPECT_TRUE(standin::SetSetting(standin::Setting::PaneDelay, 4711));
    DWORD value = 0;
    DWORD size = sizeof value;
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, standin::settingsKey, L"PaneDelay", RRF_RT_REG_DWORD, nullptr,
                           &value, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(value, 4711u);
    EXPECT_TRUE(standin::ClearSettings());
}

TEST(StandInSettings, AreDescribedEachOnALine)
{
    const std::wstring text = standin::DescribeSwitches();
    for (const standin::SettingDescription& setting : standin::settings) {
        EXPECT_NE(text.find(std::wstring(L"\r\n") + setting.name + L' '), std::wstring::npos) << setting.name;
        EXPECT_NE(text.find(std::wstring(L" ") + setting.meaning + L"\r\n"), std::wstring::npos);
    }
    for (const wchar_t* line :
         {L"\r\nJournal                   the journal's path; absent: no journal\r\n",
          L"\r\nPackageStore              the folder of the packages; absent: there are no packages\r\n",
          L"\r\nLanguage                  the language of the packages' texts; absent: en-US\r\n"}) {
        EXPECT_NE(text.find(line), std::wstring::npos) << line;
    }
}

TEST(StandInSettings, JournalPathOfAnyLength)
{
    ASSERT_TRUE(standin::ClearSettings());
    EXPECT_EQ(standin::GetText(standin::TextSetting::Journal), L"");
    const std::wstring path = L"C:\\\u30e1\u30fc\u30eb\\" + std::wstring(500, L'x');
    EXPECT_TRUE(standin::SetText(standin::TextSetting::Journal, path));
    EXPECT_EQ(standin::GetText(standin::TextSetting::Journal), path);
    EXPECT_TRUE(standin::SetText(standin::TextSetting::Journal, L""));
    EXPECT_EQ(standin::GetText(standin::TextSetting::Journal), L"");
    EXPECT_TRUE(standin::ClearSettings());
}
