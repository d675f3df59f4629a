#include "common/NarrowFormat.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif

namespace {

// The system code page as a locale of the runtime, made once. The library sets no locale of its own: that
// would change the host's.
_locale_t SystemCodePage() noexcept
{
    struct Locale
    {
        _locale_t value = _create_locale(LC_CTYPE, ".ACP");
        ~Locale()
        {
            if (value) {
                _free_locale(value);
            }
        }
    };
    static const Locale locale;
    return locale.value;
}

// The text in the system code page, "?" for what that cannot hold.
std::string ToCodePage(const wchar_t* text)
{
    if (!text) {
        return "(null)";
    }
    // UTF-8 holds everything but halves of surrogate pairs, and takes neither flags nor a character for
    // these.
    const bool isUtf8 = GetACP() == CP_UTF8;
    const DWORD flags = isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const char* unmappable = isUtf8 ? nullptr : "?";
    const int length = static_cast<int>(std::wcslen(text));
    const int size = WideCharToMultiByte(CP_ACP, flags, text, length, nullptr, 0, unmappable, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, flags, text, length, narrow.data(), size, unmappable, nullptr);
    return narrow;
}

// Formats by hand what the runtime refused: the trace's formats know strings and 32-bit numbers only.
std::string FormatUnmappable(const char* format, va_list arguments)
{
    std::string text;
    while (const char* percent = std::strchr(format, '%')) {
        text.append(format, percent);
        const char* end = percent + 1 + std::strspn(percent + 1, "-+ #0123456789.");
        if (*end == '\0') {
            return text;
        }
        const std::string conversion(percent, end + 1);
        format = end + 1;
        switch (*end) {
        case '%':
            text += '%';
            break;
        case 'S':
            text += ToCodePage(va_arg(arguments, const wchar_t*));
            break;
        case 's': {
            const char* argument = va_arg(arguments, const char*);
            text += argument ? argument : "(null)";
            break;
        }
        default: {
            char number[64];
            _snprintf_s(number, sizeof number, _TRUNCATE, conversion.c_str(), va_arg(arguments, int));
            text += number;
            break;
        }
        }
    }
    return text + format;
}

// The runtime's bounded formatter. Not every runtime ends or empties a message that does not fit, and there
// are some that put a terminator right behind the buffer then. So the message is made in a place with a byte
// to spare, and neither its terminator nor the runtime's word is trusted: the result is a length that the
// buffer holds, or -1.
int FormatBounded(char* buffer, std::size_t size, const char* format, _locale_t locale,
                  va_list arguments) noexcept
{
    char message[kLargestMessage + 1];
    const std::size_t bound = std::min(size, kLargestMessage);
    _set_errno(0);
    const int length = _vsprintf_s_l(message, bound, format, locale, arguments);
    if (length < 0 || static_cast<std::size_t>(length) >= bound) {
        buffer[0] = '\0';
        return -1;
    }
    std::memcpy(buffer, message, static_cast<std::size_t>(length));
    buffer[length] = '\0';
    return length;
}

int FormatBoundedText(char* buffer, std::size_t size, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatBounded(buffer, size, format, nullptr, arguments);
    va_end(arguments);
    return length;
}

} // namespace

int FormatNarrow(char* buffer, std::size_t size, const char* format, va_list arguments) noexcept
{
    va_list again;
    va_copy(again, arguments);
    int length = FormatBounded(buffer, size, format, SystemCodePage(), arguments);
    if (length < 0 && errno == EILSEQ) {
        try {
            length = FormatBoundedText(buffer, size, "%s", FormatUnmappable(format, again).c_str());
        } catch (...) {
            buffer[0] = '\0';
        }
    }
    va_end(again);
    return length < 0 ? 0 : length;
}
