#pragma once

#include "support/OtherProcess.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <cstring>
#include <cwchar>
#include <optional>
#include <stdexcept>
#include <string>

namespace test {

// The file named by the argument gets a sign that tells whether there was a text, and the text's bytes up to
// and without its terminator. Whoever watches the clipboard may have it open for a moment after a change.
inline const Part g_readClipboard(L"ReadClipboard", [](const Part::Context& context) {
    for (int patience = 50; !OpenClipboard(nullptr); --patience) {
        if (patience == 0) {
            return 1;
        }
        Sleep(10);
    }
    std::string found = "-";
    if (const HANDLE block = GetClipboardData(CF_UNICODETEXT)) {
        const auto* text = static_cast<const wchar_t*>(GlobalLock(block));
        found = "+";
        found.append(reinterpret_cast<const char*>(text), std::wcslen(text) * sizeof(wchar_t));
        GlobalUnlock(block);
    }
    CloseClipboard();
    WriteFileBytes(context.Argument(), found);
    return 0;
});

// The clipboard's text as another process reads it; none: it holds no text. Throws when it cannot be opened.
inline std::optional<std::wstring> ReadClipboardElsewhere()
{
    const TemporaryFolder folder;
    const std::wstring file = folder / L"text";
    if (OtherProcess(L"ReadClipboard", file).End() != 0) {
        throw std::runtime_error("another process cannot open the clipboard");
    }
    const std::string found = ReadFileBytes(file);
    if (found.front() == '-') {
        return std::nullopt;
    }
    std::wstring text((found.size() - 1) / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), found.data() + 1, found.size() - 1);
    return text;
}

} // namespace test
