#pragma once

#include "api/Statics.h"
#include "common/Apartment.h"
#include "support/ClipboardReader.h"
#include "support/FakeShell.h"
#include "support/Registry.h"
#include "support/Test.h"

#include <cstdio>
#include <cwchar>
#include <memory>

namespace api_test {

using namespace test;
using Steps = Lines;

// The text on the clipboard in quotes, as another process reads it, or "nothing".
inline std::string ReadClipboard()
{
    const std::optional<std::wstring> text = ReadClipboardElsewhere();
    return text ? '"' + ToUtf8(*text) + '"' : "nothing";
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
inline const Steps kPaste = {"key 10 scan 36 flags 0 extra 77", "sleep 50",
                             "key 2D scan 52 flags 1 extra 77", "sleep 50",
                             "key 2D scan 52 flags 3 extra 77", "sleep 1000"};
inline const Steps kEnter = {"key D scan 0 flags 1 extra 0", "sleep 50", "key D scan 0 flags 2 extra 0",
                             "sleep 50"};
inline const Steps kPaneGone = {"sleep 100", "look: no pane", "look: no pane"};
inline const Steps kEnd = {"OpenClipboard", "EmptyClipboard", "CloseClipboard",
                           "key 10 scan 36 flags 2 extra 77", "sleep 50"};

// A desktop that shows the Start screen: notes every key, pause, look at the foreground and use of the
// clipboard. Nothing is really pressed and nobody sleeps; the clipboard is the real one. The catalogue is
// empty at first. The settings are the defaults.
class SearchDesktop : public ::testing::Test
{
protected:
    SearchDesktop()
    {
        m_shell.visibility->AddRef();
        s_MonitorMode.m_pImmersiveMode = m_shell.visibility;
    }
    ~SearchDesktop() override
    {
        s_MonitorMode.m_pImmersiveMode = nullptr;
        m_shell.visibility->Release();
        s_PackageManager.m_AppNameList.Clear();
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

private:
    std::string Send(UINT count, const INPUT* input, int size)
    {
        const KEYBDINPUT& key = input->ki;
        if (count != 1 || size != sizeof(INPUT) || input->type != INPUT_KEYBOARD || key.time != 0) {
            return "another input";
        }
        const bool isInsertDown = key.wVk == VK_INSERT && (key.dwFlags & KEYEVENTF_KEYUP) == 0;
        if (isInsertDown && readsClipboard) {
            pasted.push_back(ReadClipboard());
        }
        char step[80];
        std::snprintf(step, sizeof step, "key %X scan %X flags %lX extra %lX", key.wVk, key.wScan,
                      static_cast<unsigned long>(key.dwFlags), static_cast<unsigned long>(key.dwExtraInfo));
        return step;
    }
    HWND Look()
    {
        m_isPane = isPaneInFront(Looks() + 1);
        journal.push_back(m_isPane ? "look: pane" : "look: no pane");
        return m_isPane || hasForeground ? reinterpret_cast<HWND>(static_cast<INT_PTR>(0x77)) : nullptr;
    }
    int Class(wchar_t* name, int size) const
    {
        wcscpy_s(name, static_cast<std::size_t>(size), m_isPane ? L"SearchPane" : L"Shell_TrayWnd");
        return static_cast<int>(std::wcslen(name));
    }
    // Shift has that of its right key, which is not the usual answer.
    static UINT ScanCode(UINT code, UINT type)
    {
        return type != 0 ? 0xFF : code == VK_SHIFT ? 0x36 : code == VK_INSERT ? 0x52 : 0xFE;
    }

    bool m_isPane = false;
    ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey};
    const FakeSleep m_sleep{
        [this](DWORD milliseconds) { journal.push_back("sleep " + std::to_string(milliseconds)); }};
    const CapturingPatch<decltype(&SendInput)> m_send{"SendInput",
                                                      [this](UINT count, INPUT* input, int size) {
                                                          journal.push_back(Send(count, input, size));
                                                          return journal.back() == "another input" ? 0 : 1;
                                                      }};
    const CapturingPatch<decltype(&MapVirtualKeyW)> m_map{"MapVirtualKeyW", ScanCode};
    const CapturingPatch<decltype(&GetMessageExtraInfo)> m_extra{"GetMessageExtraInfo", Answer(0x77)};
    const CapturingPatch<decltype(&GetForegroundWindow)> m_foreground{"GetForegroundWindow",
                                                                      [this] { return Look(); }};
    const CapturingPatch<decltype(&GetClassNameW)> m_class{
        "GetClassNameW", [this](HWND, wchar_t* name, int size) { return Class(name, size); }};
    const CapturingPatch<decltype(&OpenClipboard)> m_open{
        "OpenClipboard", [this](HWND owner) {
            journal.push_back(owner ? "OpenClipboard for a window" : "OpenClipboard");
            return opensClipboard ? m_open.Original(owner) : FALSE;
        }};
    const NotingPatch<decltype(&EmptyClipboard)> m_empty{"EmptyClipboard", journal,
                                                         [] { return std::string("EmptyClipboard"); }};
    const NotingPatch<decltype(&SetClipboardData)> m_set{
        "SetClipboardData", journal, [](UINT format, HANDLE) {
            return std::string("SetClipboardData") + (format == CF_UNICODETEXT ? "" : " of another format");
        }};
    const NotingPatch<decltype(&CloseClipboard), 1> m_close{"CloseClipboard", journal,
                                                            [] { return std::string("CloseClipboard"); }};

protected:
    ScopedKey& Settings() { return m_settings; }

    const ComApartment m_apartment{CoInitialize(nullptr)};
    FakeShell m_shell;
};

} // namespace api_test
