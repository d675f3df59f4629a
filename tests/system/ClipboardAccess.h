#pragma once

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace test {

// Opens the clipboard and keeps all others out until the end of the scope.
class ClipboardAccess
{
public:
    ClipboardAccess()
        : m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr))
    {
        for (int round = 0; !OpenClipboard(m_window); ++round) {
            if (round == 100) {
                throw std::runtime_error("the clipboard cannot be opened");
            }
            Sleep(10);
        }
    }
    ~ClipboardAccess()
    {
        CloseClipboard();
        DestroyWindow(m_window);
    }
    ClipboardAccess(const ClipboardAccess&) = delete;
    ClipboardAccess& operator=(const ClipboardAccess&) = delete;

    void SetText(const std::wstring& text)
    {
        EmptyClipboard();
        const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
        const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
        std::memcpy(GlobalLock(block), text.c_str(), size);
        GlobalUnlock(block);
        ::SetClipboardData(CF_UNICODETEXT, block);
    }

    void Clear() { EmptyClipboard(); }

    [[nodiscard]] std::wstring Text() const
    {
        const HGLOBAL block = ::GetClipboardData(CF_UNICODETEXT);
        const auto* text = block ? static_cast<const wchar_t*>(GlobalLock(block)) : nullptr;
        const std::wstring copy = text ? text : L"";
        if (block) {
            GlobalUnlock(block);
        }
        return copy;
    }

private:
    HWND m_window;
};

// Text that stands on the clipboard before a launch.
inline void PutOnClipboard(const std::wstring& text)
{
    ClipboardAccess().SetText(text);
}

inline void ClearClipboard()
{
    ClipboardAccess().Clear();
}

[[nodiscard]] inline std::wstring ClipboardText()
{
    return ClipboardAccess().Text();
}

[[nodiscard]] inline bool IsClipboardEmpty()
{
    return CountClipboardFormats() == 0;
}

} // namespace test
