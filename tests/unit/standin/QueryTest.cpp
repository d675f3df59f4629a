#include "standin/desktop/Query.h"

#include "standin/Settings.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(StandInQuery, PhraseHitsNameThatContainsIt)
{
    const Query query(L"\"Mail Box\"");
    EXPECT_TRUE(query.Hits(L"Mail Box"));
    EXPECT_TRUE(query.Hits(L"My Mail Boxes"));
    EXPECT_FALSE(query.Hits(L"Mail"));
    EXPECT_FALSE(query.Hits(L"Box Mail"));
}

TEST(StandInQuery, AllWordsMustHit)
{
    const Query query(L"box mail");
    EXPECT_TRUE(query.Hits(L"Mail Box"));
    EXPECT_FALSE(query.Hits(L"Mail"));
}

TEST(StandInQuery, ExcludedNamesAreNotHit)
{
    const Query query(L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")");
    EXPECT_TRUE(query.Hits(L"Mail"));
    EXPECT_TRUE(query.Hits(L"Mailer"));
    EXPECT_FALSE(query.Hits(L"Mail Box"));
    EXPECT_FALSE(query.Hits(L"Gmail"));
    EXPECT_FALSE(query.Hits(L"Calendar"));
}

TEST(StandInQuery, OneExcludedName)
{
    const Query query(L"\"Mail\" NOT(\"Gmail\")");
    EXPECT_TRUE(query.Hits(L"Mail"));
    EXPECT_FALSE(query.Hits(L"Gmail"));
}

TEST(StandInQuery, NotWithoutParentheses)
{
    const Query query(L"mail NOT box");
    EXPECT_TRUE(query.Hits(L"Gmail"));
    EXPECT_FALSE(query.Hits(L"Mail Box"));
}

TEST(StandInQuery, OrBindsTighterThanStandingSideBySide)
{
    const Query query(L"mail box OR cube");
    EXPECT_TRUE(query.Hits(L"Mail Box"));
    EXPECT_TRUE(query.Hits(L"Mail Cube"));
    EXPECT_FALSE(query.Hits(L"Cube"));
    EXPECT_FALSE(query.Hits(L"Mail"));
}

TEST(StandInQuery, OperatorsWithNothingToWorkOnAreWords)
{
    EXPECT_TRUE(Query(L"OR").Hits(L"Word"));
    EXPECT_TRUE(Query(L"NOT").Hits(L"Notes"));
    EXPECT_TRUE(Query(L"mail OR").Hits(L"Mail Order"));
    EXPECT_FALSE(Query(L"mail OR").Hits(L"Mail"));
    EXPECT_TRUE(Query(L"\"OR\" \"NOT\"").Hits(L"Or not"));
    EXPECT_TRUE(Query(L"this or that").Hits(L"That or this"));
    EXPECT_FALSE(Query(L"this or that").Hits(L"This"));
}

TEST(StandInQuery, Groups)
{
    const Query query(L"(mail box) OR cube");
    EXPECT_TRUE(query.Hits(L"Mail Box"));
    EXPECT_TRUE(query.Hits(L"Cube"));
    EXPECT_FALSE(query.Hits(L"Mail"));
}

TEST(StandInQuery, QuotedParenthesesAreText)
{
    const Query query(L"\"Mail (x64)\" NOT(\"Mail (x86)\")");
    EXPECT_TRUE(query.Hits(L"Mail (x64)"));
    EXPECT_FALSE(query.Hits(L"Mail (x86)"));
}

TEST(StandInQuery, UnbalancedTextIsReadToItsEnd)
{
    EXPECT_TRUE(Query(L"\"Mail").Hits(L"Mail"));
    EXPECT_FALSE(Query(L"\"Mail\" NOT(\"Gmail").Hits(L"Gmail"));
    EXPECT_FALSE(Query(L"\"Mail\" NOT(\"Gmail\"").Hits(L"Gmail"));
    EXPECT_TRUE(Query(L"))) mail ) )").Hits(L"Mail"));
    EXPECT_FALSE(Query(L")NOT)(mail").Hits(L"Calendar"));
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
    (void)query.Hits(L"Mail");
}

TEST(StandInQuery, CaseIsIgnoredBeyondAscii)
{
    EXPECT_TRUE(Query(L"\"\u00e4pfel\"").Hits(L"\u00c4PFEL"));
    EXPECT_TRUE(Query(L"\"\u043f\u043e\u0447\u0442\u0430\"").Hits(L"\u041f\u041e\u0427\u0422\u0410"));
    EXPECT_TRUE(Query(L"\"\u30e1\u30fc\u30eb\"").Hits(L"\u65b0\u30e1\u30fc\u30eb"));
    EXPECT_FALSE(Query(L"\"\u30e1\u30fc\u30eb\"").Hits(L"\u30e1\u30e2"));
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
    for (const wchar_t* name : {L"Journal", L"PackageStore", L"Language"}) {
        EXPECT_NE(text.find(std::wstring(L"\r\n") + name + L' '), std::wstring::npos) << name;
    }
}

TEST(StandInSettings, JournalPathOfAnyLength)
{
    ASSERT_TRUE(standin::ClearSettings());
    EXPECT_EQ(standin::GetJournalPath(), L"");
    const std::wstring path = L"C:\\\u30e1\u30fc\u30eb\\" + std::wstring(500, L'x');
    EXPECT_TRUE(standin::SetJournalPath(path));
    EXPECT_EQ(standin::GetJournalPath(), path);
    EXPECT_TRUE(standin::SetJournalPath(L""));
    EXPECT_EQ(standin::GetJournalPath(), L"");
    EXPECT_TRUE(standin::ClearSettings());
}
