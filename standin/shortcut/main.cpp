// Writes a shortcut file from the command line; the work is in Shortcuts.h.
#include "standin/Result.h"
#include "standin/Shortcuts.h"

#include <cstdio>
#include <string>

int wmain(int count, wchar_t** arguments)
{
    if (count < 3) {
        std::fputs("Usage: StandInShortcut.exe path\\Name.lnk target.exe [arguments]\n"
                   "       StandInShortcut.exe path\\Name.url target.exe|address\n",
                   stderr);
        return 2;
    }
    std::wstring shortcutArguments;
    for (int index = 3; index < count; ++index) {
        if (index > 3) {
            shortcutArguments += L' ';
        }
        const std::wstring argument = arguments[index];
        const bool needsQuotes = argument.empty() || argument.find_first_of(L" \t") != std::wstring::npos;
        shortcutArguments += needsQuotes ? L"\"" + argument + L"\"" : argument;
    }
    const HRESULT hr =
        standin::ResultOf([&] { standin::WriteShortcut(arguments[1], arguments[2], shortcutArguments); });
    if (FAILED(hr)) {
        std::fprintf(stderr, "The shortcut cannot be written: 0x%08lX\n", static_cast<unsigned long>(hr));
        return 1;
    }
    return 0;
}
