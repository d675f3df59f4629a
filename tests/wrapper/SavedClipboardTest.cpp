// What is kept of the clipboard for the time of a launch.
#include "QanHelper.hpp"
#include "common/UniqueHandle.h"
#include "support/CapturingPatch.h"
#include "system/ClipboardAccess.h"
#include "system/Sandbox.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace {

using qanh::ClipboardState;

class SavedClipboard : public testing::Test
{
protected:
    SavedClipboard() { test::ClearClipboard(); }
    ~SavedClipboard() override { test::ClearClipboard(); }

    void Save() { m_saved.emplace(m_owner.Handle()); }
    ClipboardState PutBack() { return m_saved->PutBack(L"Mail"); }

    // Adds to what is there.
    static void Put(UINT format, const std::string& bytes)
    {
        ASSERT_TRUE(OpenClipboard(nullptr));
        const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
        std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
        GlobalUnlock(block);
        EXPECT_TRUE(::SetClipboardData(format, block));
        CloseClipboard();
    }

    // "" when the format is not there.
    static std::string Get(UINT format)
    {
        std::string bytes;
        EXPECT_TRUE(OpenClipboard(nullptr));
        if (IsClipboardFormatAvailable(format)) {
            const HANDLE block = ::GetClipboardData(format);
            bytes.assign(static_cast<const char*>(GlobalLock(block)), GlobalSize(block));
            GlobalUnlock(block);
        }
        CloseClipboard();
        return bytes;
    }

private:
    qanh::detail::OwnerWindow m_owner;
    std::optional<qanh::detail::SavedClipboard> m_saved;
};

TEST_F(SavedClipboard, TextIsPutBack)
{
    test::PutOnClipboard(L"メール");
    Save();
    test::ClearClipboard();
    EXPECT_EQ(PutBack(), ClipboardState::PutBack);
    EXPECT_EQ(test::ClipboardText(), L"メール");
}

TEST_F(SavedClipboard, RichTextFilesAndPicturesArePutBack)
{
    const UINT html = RegisterClipboardFormatW(L"HTML Format");
    const UINT richText = RegisterClipboardFormatW(L"Rich Text Format");
    const std::string files("\x14\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0C\0:\0\\\0a\0\0\0\0\0", 32);
    BITMAPINFOHEADER header = {sizeof header, 1, 1, 1, 32, BI_RGB, 4, 0, 0, 0, 0};
    const std::string picture =
        std::string(reinterpret_cast<const char*>(&header), sizeof header) + "\1\2\3\4";
    test::PutOnClipboard(L"text");
    Put(html, "<b>");
    Put(richText, "{\\rtf1}");
    Put(CF_HDROP, files);
    Put(CF_DIB, picture);
    Save();
    test::ClearClipboard();
    ASSERT_EQ(Get(html), "");
    EXPECT_EQ(PutBack(), ClipboardState::PutBack);
    EXPECT_EQ(test::ClipboardText(), L"text");
    EXPECT_EQ(Get(html), "<b>");
    EXPECT_EQ(Get(richText), "{\\rtf1}");
    EXPECT_EQ(Get(CF_HDROP), files);
    EXPECT_EQ(Get(CF_DIB), picture);
}

TEST_F(SavedClipboard, OtherFormatsAreLost)
{
    test::ClearClipboard();
    Put(RegisterClipboardFormatW(L"Something of a program's own"), "bytes");
    Save();
    test::ClearClipboard();
    EXPECT_EQ(PutBack(), ClipboardState::Lost);
    EXPECT_TRUE(test::IsClipboardEmpty());
}

TEST_F(SavedClipboard, EmptyOneStaysEmpty)
{
    Save();
    test::PutOnClipboard(L"\"Mail\" NOT(\"Gmail\")");
    EXPECT_EQ(PutBack(), ClipboardState::PutBack);
    EXPECT_TRUE(test::IsClipboardEmpty());
}

TEST_F(SavedClipboard, UntouchedOneIsLeftAlone)
{
    test::PutOnClipboard(L"mine");
    Save();
    const DWORD before = GetClipboardSequenceNumber();
    EXPECT_EQ(PutBack(), ClipboardState::Untouched);
    EXPECT_EQ(GetClipboardSequenceNumber(), before);
}

TEST_F(SavedClipboard, WhatTheLaunchCouldNotEmptyIsReplaced)
{
    for (const wchar_t* text : {L"Mail", L"\"Mail\"", L"\"Mail\" NOT(\"Gmail\")"}) {
        test::PutOnClipboard(L"mine");
        Save();
        test::PutOnClipboard(text);
        EXPECT_EQ(PutBack(), ClipboardState::PutBack);
        EXPECT_EQ(test::ClipboardText(), L"mine");
    }
}

TEST_F(SavedClipboard, WhatTheUserCopiedMeanwhileStays)
{
    for (const wchar_t* text : {L"new", L"Mail to you", L"\"Mailing\""}) {
        test::PutOnClipboard(L"mine");
        Save();
        test::PutOnClipboard(text);
        EXPECT_EQ(PutBack(), ClipboardState::Replaced);
        EXPECT_EQ(test::ClipboardText(), text);
    }
}

TEST_F(SavedClipboard, ThatAnotherProgramHoldsIsLost)
{
    test::PutOnClipboard(L"mine");
    Save();
    test::ClearClipboard();
    test::ClipboardAccess held;
    EXPECT_EQ(PutBack(), ClipboardState::Lost);
}

TEST_F(SavedClipboard, ThatAnotherProgramHoldsForAMomentIsWaitedFor)
{
    test::PutOnClipboard(L"mine");
    Save();
    test::ClearClipboard();
    const UniqueHandle isHeld(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle isInTheWay(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread other([&] {
        const test::ClipboardAccess held;
        SetEvent(isHeld.Get());
        WaitForSingleObject(isInTheWay.Get(), 20000);
    });
    WaitForSingleObject(isHeld.Get(), 20000);
    {
        const test::CapturingPatch<decltype(&OpenClipboard)> patch("OpenClipboard", [&](HWND owner) {
            const BOOL isOpen = patch.Original(owner);
            if (!isOpen) {
                SetEvent(isInTheWay.Get());
            }
            return isOpen;
        });
        EXPECT_EQ(PutBack(), ClipboardState::PutBack);
    }
    EXPECT_EQ(WaitForSingleObject(isInTheWay.Get(), 0), DWORD{WAIT_OBJECT_0});
    other.join();
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

} // namespace
