#include "proof/FakeDesk.h"

#include "proof/Held.h"
#include "standin/Names.h"

#include <cwchar>

namespace {

using proof::FakeDesk;
using proof::Held;

bool g_isPaneOpen = false;

HWND PaneWindow()
{
    return reinterpret_cast<HWND>(ULONG_PTR{0x5EA2C});
}

DWORD WINAPI EndAtOnce(void*)
{
    return 0;
}

DWORD WINAPI Hang(void*)
{
    Sleep(INFINITE);
    return 0;
}

// Takes the thread's place: it can be waited for and is over, or hangs.
HANDLE TakeThread(LPTHREAD_START_ROUTINE procedure, void* argument)
{
    FakeDesk::refreshThread = procedure;
    FakeDesk::refreshArgument = argument;
    const HANDLE thread =
        CreateThread(nullptr, 0, FakeDesk::isThreadHung ? Hang : EndAtOnce, nullptr, 0, nullptr);
    if (thread && !FakeDesk::isThreadHung) {
        WaitForSingleObject(thread, INFINITE);
    }
    ++FakeDesk::waitingThreads;
    Held::Take(Held::Kind::Handle, thread, "CreateThread");
    return thread;
}

// The refresh thread is told to stop when it waits for its second pass.
DWORD WaitAtOnce(HANDLE handle, DWORD time)
{
    constexpr DWORD kFirstWait = 1000;
    if (GetCurrentThreadId() == FakeDesk::refreshThreadId && time > kFirstWait) {
        return WAIT_OBJECT_0;
    }
    return WaitForSingleObject(handle, 0);
}

UINT TakeKeys(UINT count, const INPUT* inputs)
{
    for (UINT index = 0; index < count; ++index) {
        const KEYBDINPUT& key = inputs[index].ki;
        if ((key.dwFlags & KEYEVENTF_KEYUP) == 0 && (key.wVk == 'Q' || key.wVk == VK_RETURN)) {
            g_isPaneOpen = key.wVk == 'Q';
        }
    }
    return count;
}

HANDLE TakeText(HANDLE block)
{
    const auto* text = static_cast<const wchar_t*>(GlobalLock(block));
    FakeDesk::pasted = text ? text : L"";
    GlobalUnlock(block);
    return block;
}

template <typename Function> void* Pointer(Function function)
{
    return reinterpret_cast<void*>(+function);
}

template <int kNumber> [[noreturn]] void End()
{
    constexpr const char* kNames[] = {"abort", "exit", "_amsg_exit", "_endthreadex"};
    FakeDesk::onEnd(kNames[kNumber]);
    TerminateProcess(GetCurrentProcess(), 3);
    Sleep(INFINITE);
    __builtin_unreachable();
}

} // namespace

namespace proof {

std::wstring FakeDesk::executable;
std::wstring FakeDesk::pasted;
LPTHREAD_START_ROUTINE FakeDesk::refreshThread = nullptr;
void* FakeDesk::refreshArgument = nullptr;
int FakeDesk::waitingThreads = 0;
DWORD FakeDesk::refreshThreadId = 0;
bool FakeDesk::isThreadHung = false;
void (*FakeDesk::onEnd)(const char*) = nullptr;

void FakeDesk::Reset()
{
    pasted.clear();
    refreshThread = nullptr;
    refreshArgument = nullptr;
    waitingThreads = 0;
    refreshThreadId = 0;
    isThreadHung = false;
    g_isPaneOpen = false;
}

std::map<std::string, void*> FakeDesk::Functions()
{
    return {
        {"Sleep", Pointer([](DWORD) {})},
        {"WaitForSingleObject", Pointer(WaitAtOnce)},
        {"CreateThread",
         Pointer([](SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE procedure, void* argument, DWORD,
                    DWORD*) { return TakeThread(procedure, argument); })},
        {"GetModuleFileNameW", Pointer([](HMODULE module, wchar_t* path, DWORD size) -> DWORD {
             if (module) {
                 return GetModuleFileNameW(module, path, size);
             }
             wcsncpy_s(path, size, executable.c_str(), _TRUNCATE);
             return static_cast<DWORD>(std::wcslen(path));
         })},
        {"SendInput", Pointer([](UINT count, const INPUT* inputs, int) { return TakeKeys(count, inputs); })},
        {"GetForegroundWindow", Pointer([] { return g_isPaneOpen ? PaneWindow() : GetDesktopWindow(); })},
        {"GetClassNameW", Pointer([](HWND window, wchar_t* name, int size) {
             if (window != PaneWindow()) {
                 return GetClassNameW(window, name, size);
             }
             wcsncpy_s(name, static_cast<std::size_t>(size), standin::searchPaneClass, _TRUNCATE);
             return static_cast<int>(std::wcslen(name));
         })},
        {"OpenClipboard", Pointer([](HWND) -> BOOL {
             Held::Take(Held::Kind::Clipboard, nullptr, "OpenClipboard");
             return TRUE;
         })},
        {"CloseClipboard", Pointer([]() -> BOOL {
             Held::GiveBack(Held::Kind::Clipboard, nullptr);
             return TRUE;
         })},
        {"EmptyClipboard", Pointer([]() -> BOOL { return TRUE; })},
        {"SetClipboardData", Pointer([](UINT, HANDLE block) { return TakeText(block); })},
        {"abort", Pointer(End<0>)},
        {"exit", Pointer(End<1>)},
        {"_amsg_exit", Pointer(End<2>)},
        {"_endthreadex", Pointer(End<3>)},
    };
}

} // namespace proof
