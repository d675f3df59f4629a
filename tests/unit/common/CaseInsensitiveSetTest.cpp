#include "common/CaseInsensitiveSet.h"

#include "support/Allocations.h"
#include "support/Test.h"

#include <clocale>
#include <cwchar>
#include <random>

namespace {

TEST(CaseInsensitiveSet, HoldsWhatWasAddedInAnyLetterCase)
{
    CaseInsensitiveSet set;
    EXPECT_FALSE(set.Contains(L""));
    EXPECT_FALSE(set.Contains(L"Mail"));
    set.Add(L"Mail");
    set.Add(L"メール");
    set.Add(L"");
    for (const wchar_t* text : {L"Mail", L"MAIL", L"mAIL", L"メール", L""}) {
        EXPECT_TRUE(set.Contains(text)) << test::ToUtf8(text);
    }
    for (const wchar_t* text : {L"Mai", L"Mails", L" Mail", L"メーﾙ", L"M@il"}) {
        EXPECT_FALSE(set.Contains(text)) << test::ToUtf8(text);
    }
}

TEST(CaseInsensitiveSet, HoldsManyTexts)
{
    std::vector<std::wstring> texts;
    for (int i = 0; i < 2000; ++i) {
        texts.push_back(L"Text " + std::to_wstring(i));
    }
    CaseInsensitiveSet set;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_FALSE(set.Contains(texts[i].c_str()));
        set.Add(texts[i].c_str());
        EXPECT_TRUE(set.Contains((L"TEXT " + std::to_wstring(i / 2)).c_str()));
    }
}

// A catalogue file may hold one path any number of times: it must not fill the set, or slow it down.
TEST(CaseInsensitiveSet, TakesATextOnceThatIsAddedAgainAndAgain)
{
    const std::wstring text = L"Mail";
    const std::wstring same = text;
    CaseInsensitiveSet set;
    set.Add(text.c_str());
    const test::AllocationWatch watch;
    for (int i = 0; i < 1000; ++i) {
        set.Add(same.c_str());
    }
    EXPECT_EQ(watch.Live(), 0u);
    EXPECT_TRUE(set.Contains(L"MAIL"));
}

TEST(CaseInsensitiveSet, BorrowsTheTexts)
{
    wchar_t text[] = L"Mail";
    CaseInsensitiveSet set;
    set.Add(text);
    text[0] = L'T';
    EXPECT_FALSE(set.Contains(L"Mail"));
}

TEST(CaseInsensitiveSet, TellsLongTextsApartByTheirEnds)
{
    const std::wstring start(1000, L'a');
    const std::wstring first = start + L"B";
    const std::wstring second = start + L"C";
    CaseInsensitiveSet set;
    set.Add(first.c_str());
    EXPECT_TRUE(set.Contains((start + L"b").c_str()));
    EXPECT_FALSE(set.Contains(second.c_str()));
    EXPECT_FALSE(set.Contains(start.c_str()));
}

TEST(CaseInsensitiveSet, ForgetsAndTradesWhatItHolds)
{
    CaseInsensitiveSet set;
    set.Add(L"Mail");
    CaseInsensitiveSet other;
    other.Add(L"Maps");
    set.Swap(other);
    EXPECT_TRUE(set.Contains(L"maps"));
    EXPECT_FALSE(set.Contains(L"mail"));
    EXPECT_TRUE(other.Contains(L"mail"));
    EXPECT_FALSE(other.Contains(L"maps"));
    set.Clear();
    EXPECT_FALSE(set.Contains(L"maps"));
}

TEST(CaseInsensitiveSet, IsAsBeforeWhenThereIsNoMemory)
{
    std::vector<std::wstring> texts;
    for (int i = 0; i < 100; ++i) {
        texts.push_back(L"Text " + std::to_wstring(i));
    }
    CaseInsensitiveSet set;
    int failures = 0;
    for (const std::wstring& text : texts) {
        const auto add = [&] { set.Add(text.c_str()); };
        const test::Attempt attempt = test::TryRaisingWithFailingAllocation(0, add);
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(set.Contains(text.c_str()), !attempt.failed);
        EXPECT_TRUE(&text == &texts.front() || set.Contains(texts.front().c_str()));
        if (attempt.failed) {
            ++failures;
            EXPECT_NO_THROW(add());
        }
    }
    EXPECT_GT(failures, 1);
}

// The C runtime compares by the locale of the moment, which a host may change between two questions.
class CaseInsensitiveSetLocales : public testing::Test
{
protected:
    ~CaseInsensitiveSetLocales() override { std::setlocale(LC_ALL, "C"); }
};

TEST_F(CaseInsensitiveSetLocales, FollowsTheLocaleOfTheQuestion)
{
    CaseInsensitiveSet set;
    set.Add(L"ÄRGER");
    set.Add(L"ЖУК");
    EXPECT_FALSE(set.Contains(L"ärger"));
    EXPECT_FALSE(set.Contains(L"жук"));
    ASSERT_TRUE(std::setlocale(LC_ALL, "German_Germany.1252"));
    EXPECT_TRUE(set.Contains(L"ärger"));
    EXPECT_TRUE(set.Contains(L"жук"));
}

TEST_F(CaseInsensitiveSetLocales, AgreesWithAWalkThroughTheTextsInEveryLocale)
{
    // Letters with their other cases, some of which lie in another range: dotted and dotless i, sharp s, the
    // Kelvin sign, y with diaeresis, y with acute (in whose place a Turkish code page has the i's); kana,
    // full-width letters, halves of surrogate pairs.
    const std::wstring letters =
        L"aAäÄzZ[{@`iIıİkK\u212AßẞsSſÿŸyY\u00DD\u00FD¢ÜжЖσΣςメﾒａＡǅǆǄ\xD801\xDC00\xDC28\x0001\x007F\x0080\x00FF";
    std::mt19937 random(1);
    const auto text = [&] {
        std::wstring made(1 + random() % 2, L' ');
        for (wchar_t& letter : made) {
            letter = letters[random() % letters.size()];
        }
        return made;
    };
    std::vector<std::wstring> texts(300);
    CaseInsensitiveSet set;
    for (std::wstring& added : texts) {
        added = text();
        set.Add(added.c_str());
    }
    int locales = 0;
    int contained = 0;
    for (const char* locale : {"C", "English_United States.1252", "German_Germany.1252",
                               "Russian_Russia.1251", "Greek_Greece.1253", "Turkish_Turkey.1254",
                               "Japanese_Japan.932", "English_United States.437", "Greek_Greece.869"}) {
        if (!std::setlocale(LC_ALL, locale)) {
            continue;
        }
        ++locales;
        for (int question = 0; question < 3000; ++question) {
            const std::wstring asked = text();
            bool expected = false;
            for (const std::wstring& added : texts) {
                expected = expected || _wcsicmp(added.c_str(), asked.c_str()) == 0;
            }
            ASSERT_EQ(set.Contains(asked.c_str()), expected) << locale << ": " << test::ToUtf8(asked);
            contained += expected;
        }
    }
    EXPECT_GE(locales, 2);
    EXPECT_GT(contained, 0);
}

} // namespace
