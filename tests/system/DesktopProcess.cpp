#include "system/DesktopProcess.h"

#include "standin/Names.h"
#include "support/Text.h"

#include <algorithm>
#include <stdexcept>

namespace {

void PressWindowsKey()
{
    INPUT inputs[2] = {};
    inputs[0].type = INPUT_KEYBOARD;
    inputs[0].ki.wVk = VK_LWIN;
    inputs[1] = inputs[0];
    inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(1, &inputs[0], sizeof(INPUT));
    SendInput(1, &inputs[1], sizeof(INPUT));
}

bool IsReady()
{
    const HANDLE ready = OpenEventW(SYNCHRONIZE, FALSE, standin::readyEventName);
    const bool isSet = ready && WaitForSingleObject(ready, 0) == WAIT_OBJECT_0;
    if (ready) {
        CloseHandle(ready);
    }
    return isSet;
}

} // namespace

namespace test {

DesktopProcess::DesktopProcess(Sandbox& sandbox) : m_journal(sandbox.Folder() + L"\\journal.txt")
{
    standin::SetText(standin::TextSetting::Journal, m_journal);
    m_process = sandbox.Start(BuildFolder() + L"\\StandInDesktop.exe");
    if (!WaitUntil(&IsReady, 10000)) {
        throw std::runtime_error("the stand-in desktop does not start");
    }
}

DesktopProcess::~DesktopProcess()
{
    const HWND startScreen = FindWindowW(standin::startScreenClass, nullptr);
    if (startScreen) {
        PostMessageW(startScreen, WM_CLOSE, 0, 0);
    }
    if (WaitForSingleObject(m_process.process, 5000) != WAIT_OBJECT_0) {
        TerminateProcess(m_process.process, 1);
    }
    CloseHandle(m_process.process);
}

std::vector<std::string> DesktopProcess::Journal() const
{
    std::vector<std::string> lines;
    if (!Exists(m_journal)) {
        return lines;
    }
    for (std::string& line : Split(ReadFileBytes(m_journal), "\n")) {
        if (line.empty() || line == "ready") {
            continue;
        }
        if (line.starts_with("started\t")) {
            line.resize(line.find('\t', 8));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::size_t DesktopProcess::Count(const std::string& line) const
{
    const std::vector<std::string> lines = Journal();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

void DesktopProcess::WaitFor(const std::string& line, std::size_t times) const
{
    if (WaitUntil([&] { return Count(line) >= times; }, 15000)) {
        return;
    }
    std::string journal;
    for (const std::string& entry : Journal()) {
        journal += "\n  " + entry;
    }
    throw std::runtime_error("the desktop's journal does not tell of \"" + line + "\":" + journal);
}

std::string DesktopProcess::Started() const
{
    return StartedWithin(15000);
}

bool DesktopProcess::HasStartedNothing() const
{
    return StartedWithin(1000).empty();
}

std::string DesktopProcess::StartedWithin(DWORD milliseconds) const
{
    std::string names;
    WaitUntil(
        [&] {
            names.clear();
            for (const std::string& line : Journal()) {
                if (line.starts_with("started\t")) {
                    names += (names.empty() ? "" : ", ") + line.substr(8);
                }
            }
            return !names.empty();
        },
        milliseconds);
    return names;
}

void DesktopProcess::CloseApplication(const std::wstring& name) const
{
    HWND window = nullptr;
    const bool isClosed = WaitUntil(
                              [&] {
                                  window = FindWindowW(standin::appClass, name.c_str());
                                  return window && IsWindowVisible(window);
                              },
                              15000) &&
                          PostMessageW(window, WM_CLOSE, 0, 0) &&
                          WaitUntil([&] { return !IsWindow(window); }, 15000);
    if (!isClosed) {
        throw std::runtime_error("the application does not come or go: " + ToUtf8(name));
    }
}

void DesktopProcess::ShowStartScreen()
{
    PressWindowsKey();
    WaitFor("start screen shown");
    DeleteFileW(m_journal.c_str());
}

void DesktopProcess::ClosePane() const
{
    PostMessageW(FindWindowW(standin::searchPaneClass, nullptr), WM_CLOSE, 0, 0);
}

bool DesktopProcess::IsPaneOpen()
{
    const HWND pane = FindWindowW(standin::searchPaneClass, nullptr);
    return pane && IsWindowVisible(pane) && GetForegroundWindow() == pane;
}

} // namespace test
