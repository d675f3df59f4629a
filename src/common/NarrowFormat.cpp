#include "common/NarrowFormat.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>

// The conversions of numbers are handed on one by one.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif

namespace {

constexpr char kNullText[] = "(null)";

// A message in the making. It has room for one byte more than the largest message: that is enough to tell one
// that is too long, so what comes behind is dropped.
class Message
{
public:
    void Append(const char* text, std::size_t length) noexcept
    {
        length = std::min(length, Room());
        std::memcpy(m_text + m_length, text, length);
        m_length += length;
    }

    void AppendNarrow(const char* text) noexcept
    {
        text = text ? text : kNullText;
        Append(text, strnlen(text, kLargestMessage));
    }

    // In the system code page, with "?" for what that cannot hold.
    void AppendWide(const wchar_t* text) noexcept
    {
        if (!text) {
            AppendNarrow(kNullText);
            return;
        }
        // Of two units (a surrogate pair) comes one byte at least: with more units it is too long anyway.
        const auto units = static_cast<int>(wcsnlen(text, 2 * kLargestMessage));
        if (units == 0 || Room() == 0) {
            return;
        }
        // UTF-8 holds everything but halves of surrogate pairs, and the platform takes neither flags nor a
        // character for these.
        const bool isUtf8 = GetACP() == CP_UTF8;
        const int bytes =
            WideCharToMultiByte(CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, text, units, m_text + m_length,
                                static_cast<int>(Room()), isUtf8 ? nullptr : "?", nullptr);
        if (bytes > 0) {
            m_length += static_cast<std::size_t>(bytes);
        } else if (GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
            // There is no room for it: too long.
            std::memset(m_text + m_length, '?', Room());
            m_length = kLargestMessage;
        } else {
            // A code page that cannot be converted to: the line goes on without the text.
            Append("?", 1);
        }
    }

    // The conversion of a 32-bit number, such as "%08X".
    void AppendNumber(const char* conversion, std::size_t length, int number) noexcept
    {
        char format[16] = {};
        std::memcpy(format, conversion, std::min(length, sizeof format - 1));
        char digits[64] = {};
        _snprintf_s(digits, sizeof digits, _TRUNCATE, format, number);
        AppendNarrow(digits);
    }

    [[nodiscard]] const char* Text() noexcept
    {
        m_text[m_length] = '\0';
        return m_text;
    }

private:
    [[nodiscard]] std::size_t Room() const noexcept { return kLargestMessage - m_length; }

    char m_text[kLargestMessage + 1];
    std::size_t m_length = 0;
};

// Puts the text into the buffer by the C runtime's bounded formatter: what does not fit is an invalid
// parameter to it. Not every C runtime ends or empties the buffer then, and there are some that put a
// terminator right behind it. So this is done in a place with a byte to spare, and neither its terminator nor
// the C runtime's word is trusted: the result is a length that the buffer holds.
int CopyBounded(char* buffer, std::size_t size, const char* text) noexcept
{
    char copy[kLargestMessage + 1];
    const std::size_t bound = std::min(size, kLargestMessage);
    const int length = _sprintf_s_l(copy, bound, "%s", nullptr, text);
    if (length < 0 || static_cast<std::size_t>(length) >= bound) {
        buffer[0] = '\0';
        return 0;
    }
    std::memcpy(buffer, copy, static_cast<std::size_t>(length));
    buffer[length] = '\0';
    return length;
}

} // namespace

int FormatNarrow(char* buffer, std::size_t size, const char* format, va_list arguments) noexcept
{
    Message message;
    while (*format != '\0') {
        if (*format != '%') {
            const std::size_t length = std::strcspn(format, "%");
            message.Append(format, length);
            format += length;
            continue;
        }
        const char* end = format + 1 + std::strspn(format + 1, "-+ #0123456789.");
        if (*end == '\0') {
            break;
        }
        const char* conversion = format;
        format = end + 1;
        switch (*end) {
        case '%':
            message.Append(end, 1);
            break;
        case 'S':
            message.AppendWide(va_arg(arguments, const wchar_t*));
            break;
        case 's':
            message.AppendNarrow(va_arg(arguments, const char*));
            break;
        default:
            message.AppendNumber(conversion, static_cast<std::size_t>(format - conversion),
                                 va_arg(arguments, int));
            break;
        }
    }
    return CopyBounded(buffer, size, message.Text());
}
