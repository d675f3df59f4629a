// Keeps what is on the clipboard for the time of a launch. Part of QanHelper.hpp; not for hosts.
#ifndef QANHELPER_CLIPBOARD_HPP
#define QANHELPER_CLIPBOARD_HPP

#include "Outcome.hpp"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace qanh {
namespace detail {

// The clipboard, open until the end of the scope; tries for a second while another program has it.
class OpenedClipboard
{
public:
    // Null: nobody owns what is put there, and reading is all that can be done.
    explicit OpenedClipboard(HWND owner) noexcept
    {
        for (int tries = 100; tries > 0 && !m_isOpen; --tries) {
            m_isOpen = ::OpenClipboard(owner) != FALSE;
            if (!m_isOpen) {
                Sleep(10);
            }
        }
    }
    ~OpenedClipboard()
    {
        if (m_isOpen) {
            CloseClipboard();
        }
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;

    explicit operator bool() const noexcept { return m_isOpen; }

private:
    bool m_isOpen = false;
};

// Reads the clipboard when it is made, and writes it back. Belongs to the thread of the window.
class SavedClipboard
{
public:
    // The window becomes the clipboard's owner by putting back. May throw std::bad_alloc.
    explicit SavedClipboard(HWND owner) : m_owner(owner)
    {
        const OpenedClipboard clipboard(m_owner);
        m_isRead = static_cast<bool>(clipboard);
        if (m_isRead) {
            m_wasEmpty = CountClipboardFormats() == 0;
            // The order is the owner's preference. To ask for a format may make the owner render it.
            for (UINT format = EnumClipboardFormats(0); format; format = EnumClipboardFormats(format)) {
                if (IsKept(format)) {
                    Read(format);
                }
            }
        }
        m_sequence = GetClipboardSequenceNumber();
    }
    SavedClipboard(const SavedClipboard&) = delete;
    SavedClipboard& operator=(const SavedClipboard&) = delete;

    // After a launch of the name, which has left the clipboard empty as a rule. May throw std::bad_alloc.
    ClipboardState PutBack(const std::wstring& name) const
    {
        const DWORD sequence = GetClipboardSequenceNumber();
        if (sequence != 0 && sequence == m_sequence) {
            return ClipboardState::Untouched;
        }
        const OpenedClipboard clipboard(m_owner);
        if (!clipboard) {
            return ClipboardState::Lost;
        }
        if (CountClipboardFormats() != 0 && !IsOfLaunch(name)) {
            return ClipboardState::Replaced;
        }
        if (!m_isRead || (!m_wasEmpty && m_contents.empty()) || !EmptyClipboard()) {
            return ClipboardState::Lost;
        }
        bool isWhole = true;
        for (const auto& [format, bytes] : m_contents) {
            isWhole = Write(format, bytes) && isWhole;
        }
        return isWhole ? ClipboardState::PutBack : ClipboardState::Lost;
    }

private:
    // Formats that are one block of memory and that people copy. The system makes the other kinds of text and
    // picture of these by itself.
    static bool IsKept(UINT format) noexcept
    {
        static const UINT html = RegisterClipboardFormatW(L"HTML Format");
        static const UINT richText = RegisterClipboardFormatW(L"Rich Text Format");
        return format == CF_UNICODETEXT || format == CF_HDROP || format == CF_DIB || format == html ||
               format == richText;
    }

    void Read(UINT format)
    {
        const HANDLE block = GetClipboardData(format);
        const void* bytes = block ? GlobalLock(block) : nullptr;
        if (bytes) {
            const auto* first = static_cast<const char*>(bytes);
            m_contents.emplace_back(format, std::vector<char>(first, first + GlobalSize(block)));
            GlobalUnlock(block);
        }
    }

    static bool Write(UINT format, const std::vector<char>& bytes) noexcept
    {
        const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.empty() ? 1 : bytes.size());
        void* target = block ? GlobalLock(block) : nullptr;
        if (target) {
            if (!bytes.empty()) {
                std::memcpy(target, bytes.data(), bytes.size());
            }
            GlobalUnlock(block);
            if (::SetClipboardData(format, block)) {
                return true; // the system owns the block
            }
        }
        if (block) {
            GlobalFree(block);
        }
        return false;
    }

    // The clipboard holds what the launch put there: emptying it failed.
    static bool IsOfLaunch(const std::wstring& name)
    {
        const HANDLE block = GetClipboardData(CF_UNICODETEXT);
        const void* bytes = block ? GlobalLock(block) : nullptr;
        if (!bytes) {
            return false;
        }
        std::wstring text(static_cast<const wchar_t*>(bytes), GlobalSize(block) / sizeof(wchar_t));
        GlobalUnlock(block);
        text.resize(std::wcslen(text.c_str())); // the block may be longer
        const std::wstring quoted = L"\"" + name + L"\"";
        return text == name || text.compare(0, quoted.size(), quoted) == 0;
    }

    HWND m_owner;
    bool m_isRead = false;
    bool m_wasEmpty = false;
    DWORD m_sequence = 0;
    std::vector<std::pair<UINT, std::vector<char>>> m_contents;
};

} // namespace detail
} // namespace qanh

#endif
