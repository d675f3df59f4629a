#include "catalog/App.h"

#include "catalog/MetroApp.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "unit/catalog/Records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>

namespace {

using testing::ElementsAre;

BOOL Contains(const wchar_t* part, const wchar_t* whole)
{
    return CQanhMetroApp().IsSubStrNoOrder(part, whole);
}

std::string CodeUnit(wchar_t unit)
{
    std::ostringstream text;
    text << "U+" << std::hex << std::uppercase << std::setw(4) << std::setfill('0')
         << static_cast<unsigned>(unit);
    return text.str();
}

enum class Kind
{
    word,   // joins with its neighbours to one token
    single, // looked up alone
    skipped
};

// What one code unit is, seen from outside.
Kind KindOf(wchar_t unit)
{
    const wchar_t alone[] = {unit, L'\0'};
    if (Contains(alone, L" ")) {
        return Kind::skipped;
    }
    // A word character and a letter are one token, which must then stand in one piece.
    const wchar_t withLetter[] = {unit, L'a', L'\0'};
    const wchar_t apart[] = {L'a', L' ', unit, L'\0'};
    return Contains(withLetter, apart) ? Kind::single : Kind::word;
}

struct KindRange
{
    wchar_t first;
    wchar_t last;
    Kind kind;
};

const KindRange kRanges[] = {
    {L'/', L'9', Kind::word}, // "/" counts as a digit
    {L'A', L'Z', Kind::word},       {L'a', L'z', Kind::word},       {L'_', L'_', Kind::word},
    {L'\\', L'\\', Kind::single},   {0x3041, 0x30FF, Kind::single}, {0x3400, 0x4DB5, Kind::single},
    {0x4E00, 0x9FC3, Kind::single}, {0xF900, 0xFA2D, Kind::single}, {0xFA30, 0xFA6A, Kind::single},
    {0xFF10, 0xFF19, Kind::single}, {0xFF21, 0xFF3A, Kind::single}, {0xFF41, 0xFF5A, Kind::single},
    {0xFF66, 0xFF9F, Kind::single},
};

class CharacterClass : public testing::TestWithParam<KindRange>
{
};

TEST_P(CharacterClass, BeginsAtItsFirstAndEndsAtItsLastCodeUnit)
{
    const KindRange range = GetParam();
    EXPECT_EQ(KindOf(range.first), range.kind) << CodeUnit(range.first);
    EXPECT_EQ(KindOf(range.last), range.kind) << CodeUnit(range.last);
    EXPECT_EQ(KindOf(static_cast<wchar_t>((range.first + range.last) / 2)), range.kind);
    // No two classes touch, so what stands just outside is passed over.
    EXPECT_EQ(KindOf(static_cast<wchar_t>(range.first - 1)), Kind::skipped) << CodeUnit(range.first);
    EXPECT_EQ(KindOf(static_cast<wchar_t>(range.last + 1)), Kind::skipped) << CodeUnit(range.last);
}

INSTANTIATE_TEST_SUITE_P(IsSubStrNoOrder, CharacterClass, testing::ValuesIn(kRanges),
                         [](const testing::TestParamInfo<KindRange>& range) {
                             return CodeUnit(range.param.first).substr(2);
                         });

TEST(IsSubStrNoOrder, KnowsNoOtherCharactersThanThoseOfTheClasses)
{
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        if (unit == L' ') {
            continue; // the text that is searched below
        }
        Kind expected = Kind::skipped;
        for (const KindRange& range : kRanges) {
            if (range.first <= unit && unit <= range.last) {
                expected = range.kind;
            }
        }
        ASSERT_EQ(KindOf(static_cast<wchar_t>(unit)), expected) << CodeUnit(static_cast<wchar_t>(unit));
    }
}

struct Pair
{
    const wchar_t* part;
    const wchar_t* whole;
    BOOL contained;
};

TEST(IsSubStrNoOrder, LooksForEveryTokenInAnyOrder)
{
    const Pair pairs[] = {
        {L"mail", L"mail and calendar", 1},
        {L"calendar mail", L"mail and calendar", 1},
        {L"calendar tasks", L"mail and calendar", 0},
        {L"tasks calendar", L"mail and calendar", 0},
        {L"mail", L"webmailer", 1}, // a token may stand within a word
        {L"mail mail", L"mail", 1}, // twice the same place is fine
        {L"web-mail", L"mail web", 1},
        {L"webmail", L"web mail", 0},
        {L"", L"mail", 1},
        {L"", L"", 1},
        {L"mail", L"", 0},
        {L" - . , ; : ! ", L"", 1},
        {L"mail", L"mai", 0},
        {L"a/b", L"b a", 0}, // "/" joins
        {L"a/b", L"x a/b y", 1},
        {L"a_b", L"b a", 0},
        {L"a.b", L"b a", 1},
        {L"2013", L"Word 2013", 1},
        {L"x64", L"x 64", 0},
        {L"C++", L"C", 1}, // punctuation is passed over
        {L"C#", L"C++", 1},
    };
    for (const Pair& pair : pairs) {
        EXPECT_EQ(Contains(pair.part, pair.whole), pair.contained)
            << testing::PrintToString(pair.part) << " in " << testing::PrintToString(pair.whole);
    }
}

TEST(IsSubStrNoOrder, ComparesToTheLetter)
{
    EXPECT_EQ(Contains(L"word 2013", L"Word 2013"), 0);
    EXPECT_EQ(Contains(L"Word 2013", L"word 2013"), 0);
    EXPECT_EQ(Contains(L"Word 2013", L"2013 Word"), 1);
}

TEST(IsSubStrNoOrder, LooksUpScriptsWithoutBlanksCharacterByCharacter)
{
    const Pair pairs[] = {
        {L"メール", L"メール アプリ", 1},
        {L"ルーメ", L"メール アプリ", 1}, // each alone, so the order does not count
        {L"メモ", L"メール アプリ", 0},
        {L"天気予報", L"予報と天気", 1},
        {L"天気図", L"予報と天気", 0},
        {L"ひらがな", L"なひらが", 1},
        {L"カ", L"か", 0},
        {L"ｶ", L"カ", 0}, // half width is not full width
        {L"Ａ", L"A", 0},
        {L"Ｂ１", L"１Ｂ", 1},
        {L"a\\b", L"b\\a", 1},
        {L"a\\b", L"b/a", 0},
        {L"メールmail", L"mail メール", 1}, // the end of a word ends its token
        {L"ailメm", L"mail メール", 1},
        {L"！？　。", L"", 1}, // full-width punctuation
    };
    for (const Pair& pair : pairs) {
        EXPECT_EQ(Contains(pair.part, pair.whole), pair.contained)
            << testing::PrintToString(pair.part) << " in " << testing::PrintToString(pair.whole);
    }
}

TEST(IsSubStrNoOrder, PassesOverOtherScriptsAndSurrogates)
{
    EXPECT_EQ(Contains(L"почта", L"mail"), 1);
    EXPECT_EQ(Contains(L"é", L"e"), 1);
    EXPECT_EQ(Contains(L"caf\u00E9", L"caf"), 1);
    EXPECT_EQ(Contains(L"메일", L"mail"), 1);
    EXPECT_EQ(Contains(L"\xD83D\xDE00", L""), 1);
    EXPECT_EQ(Contains(L"\xD83D", L""), 1);
    EXPECT_EQ(Contains(L"\xDE00 mail \xD83D", L"mail"), 1);
    // They end a token.
    EXPECT_EQ(Contains(L"ma\u00E9il", L"il ma"), 1);
}

TEST(IsSubStrNoOrder, TakesLongTexts)
{
    const std::wstring word(5000, L'a');
    EXPECT_EQ(Contains(word.c_str(), word.c_str()), 1);
    EXPECT_EQ(Contains((word + L"a").c_str(), word.c_str()), 0);
}

TEST(IsSubStrNoOrder, LogsItsArgumentsAndItsAnswer)
{
    const test::LogCapture log;
    Contains(L"mail", L"mail and calendar");
    Contains(L"word", L"Word");
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhApp::IsSubStrNoOrder(mail, mail and calendar) IN",
                            "CQanhApp::IsSubStrNoOrder OUT(1)", "CQanhApp::IsSubStrNoOrder(word, Word) IN",
                            "CQanhApp::IsSubStrNoOrder OUT(0)"));
}

TEST(App, KeepsItsTwoNames)
{
    test::RecordProbe::Events events;
    const test::RecordProbe app(L"Mail", &events);
    EXPECT_STREQ(app.DisplayName.c_str(), L"Mail");
    EXPECT_TRUE(app.RubyDisplayName.empty());
    const CQanhMetroApp both(L"天気", nullptr, L"てんき");
    EXPECT_STREQ(both.DisplayName.c_str(), L"天気");
    EXPECT_STREQ(both.RubyDisplayName.c_str(), L"てんき");
}

TEST(App, IsDeletedThroughItsBase)
{
    static_assert(std::has_virtual_destructor_v<CQanhApp>);
    static_assert(std::is_abstract_v<CQanhApp>);
    test::RecordProbe::Events events;
    std::unique_ptr<CQanhApp> app = std::make_unique<test::RecordProbe>(L"Mail", &events);
    app.reset();
    EXPECT_THAT(events, ElementsAre(L"deleted Mail"));
}

TEST(CheckExcludeArguments, LooksForNullFirstThenForAnEmptyName)
{
    ExcludeList list;
    BOOL found = FALSE;
    EXPECT_EQ(CheckExcludeArguments(nullptr, &list, &found), E_POINTER);
    EXPECT_EQ(CheckExcludeArguments(L"mail", nullptr, &found), E_POINTER);
    EXPECT_EQ(CheckExcludeArguments(L"mail", &list, nullptr), E_POINTER);
    EXPECT_EQ(CheckExcludeArguments(L"", nullptr, &found), E_POINTER);
    EXPECT_EQ(CheckExcludeArguments(L"", &list, nullptr), E_POINTER);
    EXPECT_EQ(CheckExcludeArguments(L"", &list, &found), E_INVALIDARG);
    EXPECT_EQ(CheckExcludeArguments(L"m", &list, &found), S_OK);
}

} // namespace
