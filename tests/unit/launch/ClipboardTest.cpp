#include "launch/Clipboard.h"

#include "support/ClipboardReader.h"
#include "support/OtherProcess.h"
#include "support/Test.h"

namespace {

using namespace test;

Lines SetLines(const std::string& text, const std::string& result, const Lines& onTheWay = {})
{
    return Call("CQanhClipboard::SetClipboardData(" + text + ")", result, onTheWay);
}

// Keeps the clipboard open with a window of its own.
const Part g_holdClipboard(L"HoldClipboard", [](const Part::Context& context) {
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (!window || !OpenClipboard(window)) {
        return 1;
    }
    context.ReadyUntilEnd();
    CloseClipboard();
    return 0;
});

class ClipboardText : public ::testing::TestWithParam<std::wstring>
{
};

TEST_P(ClipboardText, IsReadByAnotherProcessInThePlaceOfTheOneBefore)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"a longer text than the shortest one"), S_OK);
    EXPECT_EQ(CQanhClipboard::SetClipboardData(GetParam().c_str()), S_OK);
    EXPECT_TRUE(ReadClipboardElsewhere() == GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, ClipboardText,
                         ::testing::Values(L"x", L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")",
                                           // Japanese, a surrogate pair, and halves of pairs on their own.
                                           L"\u30e1\u30fc\u30eb \U0001F600 \xd800 \xdc00!",
                                           std::wstring(100000, L'x') + L"!"),
                         [](const auto& each) { return "Length" + std::to_string(each.param.size()); });

TEST(Clipboard, ClearTakesTheTextAway)
{
    ASSERT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    CQanhClipboard::Clear();
    EXPECT_EQ(ReadClipboardElsewhere(), std::nullopt);
}

TEST(Clipboard, HeldByAnotherProcessFailsWithoutALineOfItsOwn)
{
    ASSERT_EQ(CQanhClipboard::SetClipboardData(L"before"), S_OK);
    const LogCapture log;
    {
        const OtherProcess holder(L"HoldClipboard");
        EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), E_FAIL);
        CQanhClipboard::Clear();
    }
    EXPECT_EQ(log.Lines(), SetLines("Mail", "(0x80004005)"));
    EXPECT_EQ(ReadClipboardElsewhere(), L"before");
}

// The calls to the platform, in order, which fail on request.
class ClipboardCalls : public ::testing::Test
{
protected:
    // Setting "Mail" has this result, with these lines between its first and its last.
    void ExpectSet(HRESULT result, const std::string& logged, const Lines& steps, const Lines& lines = {})
    {
        EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), result);
        EXPECT_EQ(m_calls, steps);
        EXPECT_EQ(m_log.Lines(), SetLines("Mail", logged, lines));
    }

    std::string Block(HANDLE block) const { return block == m_block ? "(block)" : "(another block)"; }

    const Lines kUpToTheLock = {"OpenClipboard(null)", "GlobalAlloc(0x00000042, 10)", "GlobalLock(block)"};
    const Lines kWhole =
        kUpToTheLock + Lines{"GlobalUnlock(block): Mail", "EmptyClipboard", "SetClipboardData(13)(block)",
                             "GlobalFree(block)", "CloseClipboard"};

    const LogCapture m_log;
    HGLOBAL m_block = nullptr;
    Lines m_calls;
    NotingPatch<decltype(&OpenClipboard)> m_open{"OpenClipboard", m_calls, [](HWND owner) {
                                                     return std::string("OpenClipboard") +
                                                            (owner ? "(window)" : "(null)");
                                                 }};
    bool m_hasMemory = true;
    CapturingPatch<decltype(&GlobalAlloc)> m_alloc{
        "GlobalAlloc", [this](UINT flags, SIZE_T size) {
            m_calls.push_back("GlobalAlloc(" + Hexadecimal(static_cast<long>(flags)) + ", " +
                              std::to_string(size) + ")");
            return m_block = m_hasMemory ? m_alloc.Original(flags, size) : nullptr;
        }};
    NotingPatch<decltype(&GlobalLock)> m_lock{"GlobalLock", m_calls,
                                              [this](HGLOBAL block) { return "GlobalLock" + Block(block); }};
    CapturingPatch<decltype(&GlobalUnlock), 1> m_unlock{
        "GlobalUnlock", [this](HGLOBAL block) {
            // What was copied, while it can still be seen.
            const auto* text = static_cast<const wchar_t*>(m_lock.Original(block));
            m_calls.push_back("GlobalUnlock" + Block(block) + ": " + ToUtf8(text));
            m_unlock.Original(block);
            return m_unlock.Original(block);
        }};
    NotingPatch<decltype(&EmptyClipboard)> m_empty{"EmptyClipboard", m_calls,
                                                   [] { return std::string("EmptyClipboard"); }};
    NotingPatch<decltype(&SetClipboardData)> m_set{
        "SetClipboardData", m_calls, [this](UINT format, HANDLE block) {
            SetLastError(1418); // of a refusal
            return "SetClipboardData(" + std::to_string(format) + ")" + Block(block);
        }};
    NotingPatch<decltype(&GlobalFree), 1> m_free{
        "GlobalFree", m_calls, [this](HGLOBAL block) { return "GlobalFree" + Block(block); }};
    NotingPatch<decltype(&CloseClipboard), 1> m_close{"CloseClipboard", m_calls,
                                                      [] { return std::string("CloseClipboard"); }};
};

TEST_F(ClipboardCalls, BlockIsFreedAfterTheHandOverToo)
{
    ExpectSet(S_OK, "(0x00000000)", kWhole);
}

TEST_F(ClipboardCalls, OneCharacterTakesFourBytes)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    ASSERT_GE(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[1], "GlobalAlloc(0x00000042, 4)");
}

TEST_F(ClipboardCalls, NullAndEmptyTextAreRefusedBeforeTheClipboardIsTouched)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(nullptr), E_POINTER);
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L""), E_INVALIDARG);
    EXPECT_THAT(m_calls, IsEmpty());
    EXPECT_EQ(m_log.Lines(), SetLines("(null)", "(0x80004003)") + SetLines("", "(0x80070057)"));
}

TEST_F(ClipboardCalls, ClipboardThatDoesNotOpenIsNotClosed)
{
    m_open.answer = FALSE;
    ExpectSet(E_FAIL, "(0x80004005)", {"OpenClipboard(null)"});
}

TEST_F(ClipboardCalls, NoMemoryLeavesTheOldTextAndClosesTheClipboard)
{
    m_hasMemory = false;
    ExpectSet(E_FAIL, "(0x80004005)",
              {"OpenClipboard(null)", "GlobalAlloc(0x00000042, 10)", "CloseClipboard"},
              {"CQanhClipboard::SetClipboardData ERROR GlobalAlloc(GHND, szLen) Failed"});
}

TEST_F(ClipboardCalls, BlockThatCannotBeLockedIsFreed)
{
    m_lock.answer = nullptr;
    ExpectSet(E_FAIL, "(0x80004005)", kUpToTheLock + Lines{"GlobalFree(block)", "CloseClipboard"},
              {"CQanhClipboard::SetClipboardData ERROR GlobalLock(hg) Failed"});
}

TEST_F(ClipboardCalls, RefusedHandOverIsOnlyLogged)
{
    m_set.answer = nullptr;
    ExpectSet(S_OK, "(0x00000000)", kWhole,
              {"CQanhClipboard::SetClipboardData ERROR SetClipboardData(CF_UNICODETEXT, hg) Failed. "
               "ErrCode = 1418"});
}

TEST_F(ClipboardCalls, RefusedEmptyingIsIgnored)
{
    m_empty.answer = FALSE;
    ExpectSet(S_OK, "(0x00000000)", kWhole);
}

TEST_F(ClipboardCalls, ClearOpensEmptiesAndCloses)
{
    CQanhClipboard::Clear();
    EXPECT_THAT(m_calls, ElementsAre("OpenClipboard(null)", "EmptyClipboard", "CloseClipboard"));
    EXPECT_THAT(m_log.Lines(), IsEmpty());
}

TEST_F(ClipboardCalls, ClearLeavesAClipboardAloneThatDoesNotOpen)
{
    m_open.answer = FALSE;
    CQanhClipboard::Clear();
    EXPECT_THAT(m_calls, ElementsAre("OpenClipboard(null)"));
}

} // namespace
