#pragma once

#include "api/Statics.h"
#include "common/Apartment.h"
#include "support/ClipboardReader.h"
#include "support/FakeShell.h"
#include "support/ImportPatch.h"
#include "support/Registry.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace api_test {

using Steps = std::vector<std::string>;

// The text on the clipboard in quotes, as another process reads it, or "nothing".
inline std::string ReadClipboard()
{
    const std::optional<std::wstring> text = test::ReadClipboardElsewhere();
    return text ? '"' + test::ToUtf8(*text) + '"' : "nothing";
}

inline Steps operator+(Steps steps, const Steps& more)
{
    steps.insert(steps.end(), more.begin(), more.end());
    return steps;
}

// What a launch does to the desktop, step by step.
inline const Steps kOpenPane = {"key 5B scan 0 flags 1 extra 0",
                                "sleep 50",
                                "key 51 scan 10 flags 8 extra 77",
                                "sleep 50",
                                "key 51 scan 10 flags 2 extra 77",
                                "sleep 100",
                                "key 5B scan 0 flags 2 extra 0",
                                "sleep 200",
                                "sleep 100",
                                "look: pane",
                                "sleep 200"};
inline const Steps kCopy = {"OpenClipboard", "EmptyClipboard", "SetClipboardData", "CloseClipboard"};
inline const Steps kPaste = {"key 10 scan 2A flags 0 extra 77", "sleep 50",
                             "key 2D scan 52 flags 1 extra 77", "sleep 50",
                             "key 2D scan 52 flags 3 extra 77", "sleep 1000"};
inline const Steps kEnter = {"key D scan 0 flags 1 extra 0", "sleep 50", "key D scan 0 flags 2 extra 0",
                             "sleep 50"};
inline const Steps kPaneGone = {"sleep 100", "look: no pane", "look: no pane"};
inline const Steps kEnd = {"OpenClipboard", "EmptyClipboard", "CloseClipboard",
                           "key 10 scan 2A flags 2 extra 77", "sleep 50"};

// A desktop that shows the Start screen: notes every key, pause, look at the foreground and use of the
// clipboard. Nothing is really pressed and nobody sleeps; the clipboard is the real one. The catalogue is
// empty at first. The settings are the defaults.
class SearchDesktop : public ::testing::Test
{
protected:
    SearchDesktop()
        : m_send("SendInput", Send), m_map("MapVirtualKeyW", Map),
          m_extra("GetMessageExtraInfo", []() -> LPARAM { return 0x77; }),
          m_foreground("GetForegroundWindow", Look), m_class("GetClassNameW", Class),
          m_open("OpenClipboard", Open), m_empty("EmptyClipboard", Empty), m_set("SetClipboardData", Set),
          m_close("CloseClipboard", Close)
    {
        s_current = this;
        m_sleep.OnSleep([](DWORD milliseconds) { Note("sleep " + std::to_string(milliseconds)); });
        m_shell.visibility->AddRef();
        s_MonitorMode.m_pImmersiveMode = m_shell.visibility;
    }
    ~SearchDesktop() override
    {
        s_MonitorMode.m_pImmersiveMode = nullptr;
        m_shell.visibility->Release();
        EXPECT_THAT(m_shell.objects.Leaks(), ::testing::IsEmpty());
        s_PackageManager.m_AppNameList.Clear();
        s_current = nullptr;
    }

    // A desktop application and a Store application of one name.
    void AddDesktopApp(const std::wstring& name)
    {
        EXPECT_EQ(
            s_PackageManager.m_AppNameList.AddDesktopApp(name.c_str(), (L"C:\\" + name + L".lnk").c_str()),
            S_OK);
    }
    void AddStoreApp(const std::wstring& name)
    {
        auto package = std::make_unique<CQanhPackage>(L"Contoso_x", RecordVersion(), FALSE, TRUE);
        EXPECT_EQ(package->AddApplication(name.c_str(), L""), S_OK);
        EXPECT_EQ(s_PackageManager.m_AppNameList.AddMetroPackage(std::move(package)), S_OK);
    }

    // How often a step was done.
    [[nodiscard]] std::size_t Count(const std::string& step) const
    {
        return static_cast<std::size_t>(std::count(journal.begin(), journal.end(), step));
    }
    [[nodiscard]] std::size_t Pastes() const { return Count("key 2D scan 52 flags 1 extra 77"); }
    [[nodiscard]] std::size_t Enters() const { return Count("key D scan 0 flags 1 extra 0"); }
    [[nodiscard]] std::size_t Looks() const { return Count("look: pane") + Count("look: no pane"); }

    Steps journal;
    // Whether the search pane is in front at the nth look, 1 being the first: where it comes up.
    std::function<bool(std::size_t look)> isPaneInFront = [](std::size_t look) { return look == 1; };
    bool hasForeground = true; // is there a window in front when the pane is not
    // What was on the clipboard at each paste; without being looked at when this is off (it takes a process).
    bool readsClipboard = true;
    Steps pasted;
    bool opensClipboard = true;
    WORD scanCodeOfShift = 0x2A;

private:
    static void Note(const std::string& step) { s_current->journal.push_back(step); }

    static UINT WINAPI Send(UINT count, INPUT* input, int size)
    {
        const KEYBDINPUT& key = input->ki;
        if (count != 1 || size != sizeof(INPUT) || input->type != INPUT_KEYBOARD || key.time != 0) {
            Note("another input");
            return 0;
        }
        const bool isInsertDown = key.wVk == VK_INSERT && (key.dwFlags & KEYEVENTF_KEYUP) == 0;
        if (isInsertDown && s_current->readsClipboard) {
            s_current->pasted.push_back(ReadClipboard());
        }
        char step[80];
        std::snprintf(step, sizeof step, "key %X scan %X flags %lX extra %lX", key.wVk, key.wScan,
                      static_cast<unsigned long>(key.dwFlags), static_cast<unsigned long>(key.dwExtraInfo));
        Note(step);
        return 1;
    }
    static UINT WINAPI Map(UINT code, UINT type)
    {
        return type != 0           ? 0xFF
               : code == VK_SHIFT  ? s_current->scanCodeOfShift
               : code == VK_INSERT ? 0x52
                                   : 0xFE;
    }
    static HWND WINAPI Look()
    {
        s_current->m_isPane = s_current->isPaneInFront(s_current->Looks() + 1);
        Note(s_current->m_isPane ? "look: pane" : "look: no pane");
        return s_current->m_isPane || s_current->hasForeground
                   ? reinterpret_cast<HWND>(static_cast<INT_PTR>(0x77))
                   : nullptr;
    }
    static int WINAPI Class(HWND, wchar_t* name, int size)
    {
        wcscpy_s(name, static_cast<std::size_t>(size),
                 s_current->m_isPane ? L"SearchPane" : L"Shell_TrayWnd");
        return static_cast<int>(std::wcslen(name));
    }
    static BOOL WINAPI Open(HWND owner)
    {
        Note(owner ? "OpenClipboard for a window" : "OpenClipboard");
        return s_current->opensClipboard ? s_current->m_open.Original()(owner) : FALSE;
    }
    static BOOL WINAPI Empty()
    {
        Note("EmptyClipboard");
        return s_current->m_empty.Original()();
    }
    static HANDLE WINAPI Set(UINT format, HANDLE block)
    {
        Note(format == CF_UNICODETEXT ? "SetClipboardData" : "SetClipboardData of another format");
        return s_current->m_set.Original()(format, block);
    }
    static BOOL WINAPI Close()
    {
        Note("CloseClipboard");
        return s_current->m_close.Original()();
    }

    static inline SearchDesktop* s_current = nullptr;

    bool m_isPane = false;
    test::ScopedKey m_settings{HKEY_LOCAL_MACHINE, test::kSettingsKey};
    test::FakeSleep m_sleep;
    test::ImportPatch<decltype(&SendInput)> m_send;
    test::ImportPatch<decltype(&MapVirtualKeyW)> m_map;
    test::ImportPatch<decltype(&GetMessageExtraInfo)> m_extra;
    test::ImportPatch<decltype(&GetForegroundWindow)> m_foreground;
    test::ImportPatch<decltype(&GetClassNameW)> m_class;
    test::ImportPatch<decltype(&OpenClipboard)> m_open;
    test::ImportPatch<decltype(&EmptyClipboard)> m_empty;
    test::ImportPatch<decltype(&SetClipboardData)> m_set;
    test::ImportPatch<decltype(&CloseClipboard)> m_close;

protected:
    test::ScopedKey& Settings() { return m_settings; }

    const ComApartment m_apartment{CoInitialize(nullptr)};
    test::FakeShell m_shell;
};

} // namespace api_test
