#include "launch/Clipboard.h"

#include "common/DiagnosticLog.h"

#include <cwchar>

namespace {

constexpr wchar_t kName[] = L"CQanhClipboard::SetClipboardData";

// Copies the text into the open clipboard.
HRESULT HandOver(const wchar_t* text) noexcept
{
    const std::size_t capacity = std::wcslen(text) + 1;
    const HGLOBAL block = GlobalAlloc(GHND, capacity * sizeof(wchar_t));
    if (!block) {
        DiagnosticLog::WriteLine("%S ERROR GlobalAlloc(GHND, szLen) Failed\r\n", kName);
        return E_FAIL;
    }
    auto* target = static_cast<wchar_t*>(GlobalLock(block));
    if (!target) {
        DiagnosticLog::WriteLine("%S ERROR GlobalLock(hg) Failed\r\n", kName);
        GlobalFree(block);
        return E_FAIL;
    }
    wcscpy_s(target, capacity, text);
    GlobalUnlock(block);
    EmptyClipboard();
    if (!::SetClipboardData(CF_UNICODETEXT, block)) {
        DiagnosticLog::WriteLine("%S ERROR SetClipboardData(CF_UNICODETEXT, hg) Failed. ErrCode = %d\r\n",
                                 kName, static_cast<int>(GetLastError()));
    }
    // Deliberate: the block is freed after the hand-over too, which leaves nothing to free later.
    GlobalFree(block);
    return S_OK;
}

} // namespace

HRESULT CQanhClipboard::SetClipboardData(const wchar_t* text) noexcept
{
    LogIn(kName, text);
    if (!text) {
        return LogOut(kName, E_POINTER);
    }
    if (*text == L'\0') {
        return LogOut(kName, E_INVALIDARG);
    }
    if (!OpenClipboard(nullptr)) {
        return LogOut(kName, E_FAIL);
    }
    const HRESULT hr = HandOver(text);
    CloseClipboard();
    return LogOut(kName, hr);
}

void CQanhClipboard::Clear() noexcept
{
    if (OpenClipboard(nullptr)) {
        EmptyClipboard();
        CloseClipboard();
    }
}
