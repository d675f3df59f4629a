#include "catalog/App.h"

#include "catalog/MetroApp.h"

#include "unit/catalog/Records.h"

#include <type_traits>

namespace {

using namespace test;

BOOL Contains(const wchar_t* part, const wchar_t* whole)
{
    return CQanhMetroApp().IsSubStrNoOrder(part, whole);
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

TEST(IsSubStrNoOrder, KnowsTheCharactersOfTheClassesAndNoOthers)
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
        ASSERT_EQ(KindOf(static_cast<wchar_t>(unit)), expected) << "U+" << std::hex << unit;
    }
}

void ExpectContained(const wchar_t* part, const wchar_t* whole, BOOL contained = 1)
{
    EXPECT_EQ(Contains(part, whole), contained) << PrintToString(part) << " in " << PrintToString(whole);
}
void ExpectNotContained(const wchar_t* part, const wchar_t* whole)
{
    ExpectContained(part, whole, 0);
}

TEST(IsSubStrNoOrder, LooksForEveryTokenInAnyOrder)
{
    ExpectContained(L"mail", L"mail and calendar");
    ExpectContained(L"calendar mail", L"mail and calendar");
    ExpectNotContained(L"calendar tasks", L"mail and calendar");
    ExpectNotContained(L"tasks calendar", L"mail and calendar");
    ExpectContained(L"mail", L"webmailer"); // a token may stand within a word
    ExpectContained(L"mail mail", L"mail"); // twice the same place is fine
    ExpectContained(L"web-mail", L"mail web");
    ExpectNotContained(L"webmail", L"web mail");
    ExpectContained(L"", L"mail");
    ExpectContained(L"", L"");
    ExpectNotContained(L"mail", L"");
    ExpectContained(L" - . , ; : ! ", L"");
    ExpectNotContained(L"mail", L"mai");
    ExpectNotContained(L"a/b", L"b a"); // "/" joins
    ExpectContained(L"a/b", L"x a/b y");
    ExpectNotContained(L"a_b", L"b a");
    ExpectContained(L"a.b", L"b a");
    ExpectContained(L"2013", L"Word 2013");
    ExpectNotContained(L"x64", L"x 64");
    ExpectContained(L"C++", L"C"); // punctuation is passed over
    ExpectContained(L"C#", L"C++");
}

TEST(IsSubStrNoOrder, ComparesToTheLetter)
{
    ExpectNotContained(L"word 2013", L"Word 2013");
    ExpectNotContained(L"Word 2013", L"word 2013");
    ExpectContained(L"Word 2013", L"2013 Word");
}

TEST(IsSubStrNoOrder, LooksUpScriptsWithoutBlanksCharacterByCharacter)
{
    ExpectContained(L"メール", L"メール アプリ");
    ExpectContained(L"ルーメ", L"メール アプリ"); // each alone, so the order does not count
    ExpectNotContained(L"メモ", L"メール アプリ");
    ExpectContained(L"天気予報", L"予報と天気");
    ExpectNotContained(L"天気図", L"予報と天気");
    ExpectContained(L"ひらがな", L"なひらが");
    ExpectNotContained(L"カ", L"か");
    ExpectNotContained(L"ｶ", L"カ"); // half width is not full width
    ExpectNotContained(L"Ａ", L"A");
    ExpectContained(L"Ｂ１", L"１Ｂ");
    ExpectContained(L"a\\b", L"b\\a");
    ExpectNotContained(L"a\\b", L"b/a");
    ExpectContained(L"メールmail", L"mail メール"); // the end of a word ends its token
    ExpectContained(L"ailメm", L"mail メール");
    ExpectContained(L"！？　。", L""); // full-width punctuation
}

TEST(IsSubStrNoOrder, PassesOverOtherScriptsAndSurrogates)
{
    ExpectContained(L"почта", L"mail");
    ExpectContained(L"é", L"e");
    ExpectContained(L"caf\u00E9", L"caf");
    ExpectContained(L"메일", L"mail");
    ExpectContained(L"\xD83D\xDE00", L"");
    ExpectContained(L"\xD83D", L"");
    ExpectContained(L"\xDE00 mail \xD83D", L"mail");
    // They end a token.
    ExpectContained(L"ma\u00E9il", L"il ma");
}

TEST(IsSubStrNoOrder, TakesLongTexts)
{
    const std::wstring word(5000, L'a');
    EXPECT_EQ(Contains(word.c_str(), word.c_str()), 1);
    EXPECT_EQ(Contains((word + L"a").c_str(), word.c_str()), 0);
}

TEST(IsSubStrNoOrder, FindsNullInNothingAndNothingInIt)
{
    EXPECT_EQ(Contains(nullptr, L"mail"), FALSE);
    EXPECT_EQ(Contains(L"mail", nullptr), FALSE);
    EXPECT_EQ(Contains(nullptr, nullptr), FALSE);
}

TEST(IsSubStrNoOrder, LogsItsArgumentsAndItsAnswer)
{
    const LogCapture log;
    Contains(L"mail", L"mail and calendar");
    Contains(L"word", L"Word");
    EXPECT_EQ(log.Lines(), Call("CQanhApp::IsSubStrNoOrder(mail, mail and calendar)", "(1)") +
                               Call("CQanhApp::IsSubStrNoOrder(word, Word)", "(0)"));
}

TEST(App, IsDeletedThroughItsBase)
{
    static_assert(std::has_virtual_destructor_v<CQanhApp>);
    static_assert(std::is_abstract_v<CQanhApp>);
}

} // namespace
