#pragma once

#include <windows.h>

// Puts the text of a search on the clipboard. Stateless; called on the host's launching thread. The clipboard
// is opened without an owner window and closed again before an operation returns.
class CQanhClipboard
{
public:
    CQanhClipboard() = delete;

    // S_OK, also when the clipboard refused the text in the end (which is logged); E_POINTER; E_INVALIDARG
    // for an empty text; E_FAIL when the clipboard cannot be opened or there is no memory for the text.
    [[nodiscard]] static HRESULT SetClipboardData(const wchar_t* text) noexcept;

    // Empties the clipboard, if it can be opened.
    static void Clear() noexcept;
};
