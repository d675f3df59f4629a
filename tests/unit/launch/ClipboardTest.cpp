#include "launch/Clipboard.h"

#include "support/ClipboardReader.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/OtherProcess.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {

using test::ReadClipboardElsewhere;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Keeps the clipboard open with a window of its own.
const test::Part g_holdClipboard(L"HoldClipboard", [](const test::Part::Context& context) {
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (!window || !OpenClipboard(window)) {
        return 1;
    }
    context.ReadyUntilEnd();
    CloseClipboard();
    return 0;
});

TEST(Clipboard, AnotherProcessReadsTheText)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")"), S_OK);
    EXPECT_EQ(ReadClipboardElsewhere(), L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")");
}

TEST(Clipboard, TextReplacesTheOneBefore)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"a longer text than the next"), S_OK);
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    EXPECT_EQ(ReadClipboardElsewhere(), L"x");
}

TEST(Clipboard, AnyTextArrivesUnitForUnit)
{
    // Japanese, a surrogate pair, and halves of pairs on their own.
    const std::wstring text = L"\u30e1\u30fc\u30eb \U0001F600 \xd800 \xdc00!";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(text.c_str()), S_OK);
    EXPECT_EQ(ReadClipboardElsewhere(), text);
}

TEST(Clipboard, AVeryLongTextArrivesWhole)
{
    const std::wstring text = std::wstring(100000, L'x') + L"!";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(text.c_str()), S_OK);
    EXPECT_TRUE(ReadClipboardElsewhere() == text);
}

TEST(Clipboard, IsOpenToOthersAfterwards)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    EXPECT_NO_THROW(ReadClipboardElsewhere());
}

TEST(Clipboard, ClearTakesTheTextAway)
{
    ASSERT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    CQanhClipboard::Clear();
    EXPECT_EQ(ReadClipboardElsewhere(), std::nullopt);
}

TEST(Clipboard, HeldByAnotherProcessFailsWithoutALineOfItsOwn)
{
    ASSERT_EQ(CQanhClipboard::SetClipboardData(L"before"), S_OK);
    const test::LogCapture log;
    {
        const test::OtherProcess holder(L"HoldClipboard");
        EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), E_FAIL);
        CQanhClipboard::Clear();
    }
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                                         "CQanhClipboard::SetClipboardData OUT(0x80004005)"));
    EXPECT_EQ(ReadClipboardElsewhere(), L"before");
}

TEST(Clipboard, LogOfASuccess)
{
    const test::LogCapture log;
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), S_OK);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                                         "CQanhClipboard::SetClipboardData OUT(0x00000000)"));
}

// The calls to the platform, in order, which fail on request.
std::vector<std::string> g_calls;
std::string g_failing; // name of the function that fails
HGLOBAL g_block = nullptr;

bool Note(const char* function, const std::string& arguments)
{
    g_calls.push_back(function + arguments);
    return g_failing != function;
}

std::string Number(unsigned long long number)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%llX", number);
    return text;
}

std::string Block(HANDLE block)
{
    return block == g_block ? "(block)" : "(another block)";
}

class ClipboardCalls;
ClipboardCalls* g_current = nullptr;

class ClipboardCalls : public ::testing::Test
{
protected:
    ClipboardCalls()
        : m_open("OpenClipboard",
                 [](HWND owner) -> BOOL {
                     return Note("OpenClipboard", owner ? "(window)" : "(null)") &&
                            g_current->m_open.Original()(owner);
                 }),
          m_alloc("GlobalAlloc",
                  [](UINT flags, SIZE_T size) -> HGLOBAL {
                      if (!Note("GlobalAlloc", "(" + Number(flags) + ", " + std::to_string(size) + ")")) {
                          return nullptr;
                      }
                      g_block = g_current->m_alloc.Original()(flags, size);
                      return g_block;
                  }),
          m_lock("GlobalLock",
                 [](HGLOBAL block) -> void* {
                     return Note("GlobalLock", Block(block)) ? g_current->m_lock.Original()(block) : nullptr;
                 }),
          m_unlock("GlobalUnlock",
                   [](HGLOBAL block) -> BOOL {
                       // What was copied, while it can still be seen.
                       const auto* text = static_cast<const wchar_t*>(g_current->m_lock.Original()(block));
                       Note("GlobalUnlock", Block(block) + ": " + test::ToUtf8(text));
                       g_current->m_unlock.Original()(block);
                       return g_current->m_unlock.Original()(block);
                   }),
          m_empty("EmptyClipboard",
                  []() -> BOOL { return Note("EmptyClipboard", "") && g_current->m_empty.Original()(); }),
          m_set("SetClipboardData",
                [](UINT format, HANDLE block) -> HANDLE {
                    if (!Note("SetClipboardData", "(" + std::to_string(format) + ")" + Block(block))) {
                        SetLastError(1418);
                        return nullptr;
                    }
                    return g_current->m_set.Original()(format, block);
                }),
          m_free("GlobalFree",
                 [](HGLOBAL block) -> HGLOBAL {
                     Note("GlobalFree", Block(block));
                     return g_current->m_free.Original()(block);
                 }),
          m_close("CloseClipboard", []() -> BOOL {
              Note("CloseClipboard", "");
              return g_current->m_close.Original()();
          })
    {
        g_current = this;
        g_calls.clear();
        g_failing.clear();
        g_block = nullptr;
    }

    test::ImportPatch<decltype(&OpenClipboard)> m_open;
    test::ImportPatch<decltype(&GlobalAlloc)> m_alloc;
    test::ImportPatch<decltype(&GlobalLock)> m_lock;
    test::ImportPatch<decltype(&GlobalUnlock)> m_unlock;
    test::ImportPatch<decltype(&EmptyClipboard)> m_empty;
    test::ImportPatch<decltype(&SetClipboardData)> m_set;
    test::ImportPatch<decltype(&GlobalFree)> m_free;
    test::ImportPatch<decltype(&CloseClipboard)> m_close;
    test::LogCapture m_log;
};

TEST_F(ClipboardCalls, BlockIsFreedAfterTheHandOverToo)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), S_OK);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "GlobalAlloc(0x42, 10)", "GlobalLock(block)",
                                     "GlobalUnlock(block): Mail", "EmptyClipboard",
                                     "SetClipboardData(13)(block)", "GlobalFree(block)", "CloseClipboard"));
}

TEST_F(ClipboardCalls, OneCharacterTakesFourBytes)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"x"), S_OK);
    ASSERT_GE(g_calls.size(), 2u);
    EXPECT_EQ(g_calls[1], "GlobalAlloc(0x42, 4)");
}

TEST_F(ClipboardCalls, NullIsRefusedBeforeTheClipboardIsTouched)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(nullptr), E_POINTER);
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData((null)) IN",
                                           "CQanhClipboard::SetClipboardData OUT(0x80004003)"));
}

TEST_F(ClipboardCalls, EmptyTextIsRefusedBeforeTheClipboardIsTouched)
{
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L""), E_INVALIDARG);
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData() IN",
                                           "CQanhClipboard::SetClipboardData OUT(0x80070057)"));
}

TEST_F(ClipboardCalls, ClipboardThatDoesNotOpenIsNotClosed)
{
    g_failing = "OpenClipboard";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), E_FAIL);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                                           "CQanhClipboard::SetClipboardData OUT(0x80004005)"));
}

TEST_F(ClipboardCalls, NoMemoryLeavesTheOldTextAndClosesTheClipboard)
{
    g_failing = "GlobalAlloc";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), E_FAIL);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "GlobalAlloc(0x42, 10)", "CloseClipboard"));
    EXPECT_THAT(m_log.Lines(),
                ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                            "CQanhClipboard::SetClipboardData ERROR GlobalAlloc(GHND, szLen) Failed",
                            "CQanhClipboard::SetClipboardData OUT(0x80004005)"));
}

TEST_F(ClipboardCalls, BlockThatCannotBeLockedIsFreed)
{
    g_failing = "GlobalLock";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), E_FAIL);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "GlobalAlloc(0x42, 10)", "GlobalLock(block)",
                                     "GlobalFree(block)", "CloseClipboard"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                                           "CQanhClipboard::SetClipboardData ERROR GlobalLock(hg) Failed",
                                           "CQanhClipboard::SetClipboardData OUT(0x80004005)"));
}

TEST_F(ClipboardCalls, RefusedHandOverIsOnlyLogged)
{
    g_failing = "SetClipboardData";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), S_OK);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "GlobalAlloc(0x42, 10)", "GlobalLock(block)",
                                     "GlobalUnlock(block): Mail", "EmptyClipboard",
                                     "SetClipboardData(13)(block)", "GlobalFree(block)", "CloseClipboard"));
    EXPECT_THAT(
        m_log.Lines(),
        ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                    "CQanhClipboard::SetClipboardData ERROR SetClipboardData(CF_UNICODETEXT, hg) Failed. "
                    "ErrCode = 1418",
                    "CQanhClipboard::SetClipboardData OUT(0x00000000)"));
}

TEST_F(ClipboardCalls, RefusedEmptyingIsIgnored)
{
    g_failing = "EmptyClipboard";
    EXPECT_EQ(CQanhClipboard::SetClipboardData(L"Mail"), S_OK);
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "GlobalAlloc(0x42, 10)", "GlobalLock(block)",
                                     "GlobalUnlock(block): Mail", "EmptyClipboard",
                                     "SetClipboardData(13)(block)", "GlobalFree(block)", "CloseClipboard"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhClipboard::SetClipboardData(Mail) IN",
                                           "CQanhClipboard::SetClipboardData OUT(0x00000000)"));
}

TEST_F(ClipboardCalls, ClearOpensEmptiesAndCloses)
{
    CQanhClipboard::Clear();
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)", "EmptyClipboard", "CloseClipboard"));
    EXPECT_THAT(m_log.Lines(), IsEmpty());
}

TEST_F(ClipboardCalls, ClearLeavesAClipboardAloneThatDoesNotOpen)
{
    g_failing = "OpenClipboard";
    CQanhClipboard::Clear();
    EXPECT_THAT(g_calls, ElementsAre("OpenClipboard(null)"));
}

} // namespace
