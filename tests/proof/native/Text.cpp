// The platform's and the C runtime's way with text of 16-bit characters. The wide functions of the standard
// stand here too: those of the machine's own C library know characters of 32 bits.

#include "Platform.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

wchar_t LowerAscii(wchar_t character) noexcept
{
    return L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
}

bool IsHighHalf(wchar_t character) noexcept
{
    return (character & 0xFC00) == 0xD800;
}

bool IsLowHalf(wchar_t character) noexcept
{
    return (character & 0xFC00) == 0xDC00;
}

void AppendUtf8(std::string& bytes, unsigned code)
{
    const auto append = [&](unsigned byte) { bytes += static_cast<char>(byte); };
    if (code < 0x80) {
        append(code);
    } else if (code < 0x800) {
        append(0xC0 | (code >> 6));
        append(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        append(0xE0 | (code >> 12));
        append(0x80 | ((code >> 6) & 0x3F));
        append(0x80 | (code & 0x3F));
    } else {
        append(0xF0 | (code >> 18));
        append(0x80 | ((code >> 12) & 0x3F));
        append(0x80 | ((code >> 6) & 0x3F));
        append(0x80 | (code & 0x3F));
    }
}

std::string ToUtf8(const wchar_t* text, std::size_t length)
{
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        unsigned code = text[i];
        if (IsHighHalf(text[i]) && i + 1 < length && IsLowHalf(text[i + 1])) {
            code = 0x10000 + ((code & 0x3FF) << 10) + (text[++i] & 0x3FFu);
        } else if (IsHighHalf(text[i]) || IsLowHalf(text[i])) {
            code = 0xFFFD;
        }
        AppendUtf8(bytes, code);
    }
    return bytes;
}

std::string ToCodePage(const wchar_t* text, std::size_t length)
{
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes += text[i] < 0x80 || (0xA0 <= text[i] && text[i] < 0x100) ? static_cast<char>(text[i]) : '?';
        if (IsHighHalf(text[i]) && i + 1 < length && IsLowHalf(text[i + 1])) {
            ++i;
        }
    }
    return bytes;
}

// The code point at a place of a text in UTF-8, and how many bytes it takes; U+FFFD and one byte for what is
// none.
unsigned FromUtf8(const unsigned char* bytes, std::size_t left, std::size_t& taken)
{
    taken = 1;
    const unsigned first = bytes[0];
    if (first < 0x80) {
        return first;
    }
    const std::size_t count = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || left < count) {
        return 0xFFFD;
    }
    unsigned code = first & (0xFFu >> (count + 1));
    for (std::size_t i = 1; i < count; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) {
            return 0xFFFD;
        }
        code = code << 6 | (bytes[i] & 0x3Fu);
    }
    constexpr unsigned smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[count] || code > 0x10FFFF || (code & 0xFFFFF800) == 0xD800) {
        return 0xFFFD;
    }
    taken = count;
    return code;
}

// The conversions that the library uses: wide "%s", "%d" and "%08X".
std::wstring Formatted(const wchar_t* format, va_list arguments)
{
    std::wstring text;
    for (; *format != L'\0'; ++format) {
        if (*format != L'%') {
            text += *format;
            continue;
        }
        if (*++format == L's') {
            text += va_arg(arguments, const wchar_t*);
            continue;
        }
        std::string conversion = "%";
        while (*format == L'0' || *format == L'8') {
            conversion += static_cast<char>(*format++);
        }
        conversion += static_cast<char>(*format);
        char digits[32];
        std::snprintf(digits, sizeof digits, conversion.c_str(), va_arg(arguments, int));
        text.append(digits, digits + std::strlen(digits));
    }
    return text;
}

} // namespace

int WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* text, int length, char* bytes, int size,
                        const char*, BOOL*) noexcept
{
    const auto count = static_cast<std::size_t>(length);
    const bool isUtf8 = codePage == CP_UTF8 || native::TheHooks().codePage == CP_UTF8;
    const std::string converted = isUtf8 ? ToUtf8(text, count) : ToCodePage(text, count);
    if (converted.size() > static_cast<std::size_t>(size)) {
        // What fits is there all the same.
        converted.copy(bytes, static_cast<std::size_t>(size));
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    converted.copy(bytes, converted.size());
    return static_cast<int>(converted.size());
}

int MultiByteToWideChar(UINT, DWORD, const char* bytes, int size, wchar_t* text, int) noexcept
{
    const auto* next = reinterpret_cast<const unsigned char*>(bytes);
    const unsigned char* const end = next + size;
    int length = 0;
    while (next != end) {
        std::size_t taken = 0;
        const unsigned code = FromUtf8(next, static_cast<std::size_t>(end - next), taken);
        next += taken;
        if (code < 0x10000) {
            text[length++] = static_cast<wchar_t>(code);
        } else {
            text[length++] = static_cast<wchar_t>(0xD7C0 + (code >> 10));
            text[length++] = static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
        }
    }
    return length;
}

UINT GetACP() noexcept
{
    return native::TheHooks().codePage;
}

int CompareStringOrdinal(const wchar_t* left, int leftLength, const wchar_t* right, int rightLength,
                         BOOL) noexcept
{
    const bool isEqual =
        leftLength == rightLength && _wcsnicmp(left, right, static_cast<std::size_t>(leftLength)) == 0;
    return isEqual ? CSTR_EQUAL : CSTR_EQUAL + 1;
}

DWORD CharLowerBuffW(wchar_t* text, DWORD length) noexcept
{
    std::transform(text, text + length, text, [](wchar_t character) {
        const bool isCapital = (0xC0 <= character && character < 0xDF && character != 0xD7) ||
                               (0x391 <= character && character <= 0x3A9) ||
                               (0x410 <= character && character <= 0x42F);
        return isCapital ? static_cast<wchar_t>(character + 32) : LowerAscii(character);
    });
    return length;
}

int _wcsicmp(const wchar_t* left, const wchar_t* right) noexcept
{
    return _wcsnicmp(left, right, static_cast<std::size_t>(-1));
}

int _wcsnicmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept
{
    for (; count > 0; --count, ++left, ++right) {
        const wchar_t l = LowerAscii(*left);
        const wchar_t r = LowerAscii(*right);
        if (l != r || l == L'\0') {
            return l - r;
        }
    }
    return 0;
}

int _wcslwr_s(wchar_t* text, std::size_t size) noexcept
{
    if (wcsnlen(text, size) == size) {
        return EINVAL;
    }
    for (; *text != L'\0'; ++text) {
        *text = LowerAscii(*text);
    }
    return 0;
}

wchar_t* _wcsdup(const wchar_t* text) noexcept
{
    const std::size_t size = (wcslen(text) + 1) * sizeof(wchar_t);
    void* const copy = std::malloc(size);
    return copy ? static_cast<wchar_t*>(std::memcpy(copy, text, size)) : nullptr;
}

int _snprintf_s(char* buffer, std::size_t size, std::size_t, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    return length < 0 || static_cast<std::size_t>(length) >= size ? -1 : length;
}

// The one format that the library uses is "%s". What does not fit is done with as some C runtime does.
int _sprintf_s_l(char* buffer, std::size_t size, const char*, void* locale, ...) noexcept
{
    va_list arguments;
    va_start(arguments, locale);
    const char* const text = va_arg(arguments, const char*);
    va_end(arguments);
    const std::size_t length = std::strlen(text);
    if (length < size) {
        std::memcpy(buffer, text, length + 1);
        return static_cast<int>(length);
    }
    using Overflow = native::Hooks::Overflow;
    switch (native::TheHooks().overflow) {
    case Overflow::Empties:
        buffer[0] = '\0';
        return -1;
    case Overflow::FillsWithoutEnd:
        std::memcpy(buffer, text, size);
        return static_cast<int>(length);
    case Overflow::EndsBehind:
        std::memcpy(buffer, text, size);
        buffer[size] = '\0';
        return -1;
    }
    return -1;
}

int _snwprintf_s(wchar_t* buffer, std::size_t size, std::size_t, const wchar_t* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const std::wstring text = Formatted(format, arguments);
    va_end(arguments);
    const std::size_t copied = text.copy(buffer, size - 1);
    buffer[copied] = L'\0';
    return copied == text.size() ? static_cast<int>(copied) : -1;
}

int swprintf_s(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const std::wstring text = Formatted(format, arguments);
    va_end(arguments);
    if (text.size() >= size) {
        buffer[0] = L'\0';
        return -1;
    }
    buffer[text.copy(buffer, text.size())] = L'\0';
    return static_cast<int>(text.size());
}

int _get_errno(int* value) noexcept
{
    *value = errno;
    return 0;
}

int _set_errno(int value) noexcept
{
    errno = value;
    return 0;
}

extern "C" {

std::size_t wcslen(const wchar_t* text) noexcept
{
    const wchar_t* end = text;
    while (*end != L'\0') {
        ++end;
    }
    return static_cast<std::size_t>(end - text);
}

std::size_t wcsnlen(const wchar_t* text, std::size_t most) noexcept
{
    std::size_t length = 0;
    while (length < most && text[length] != L'\0') {
        ++length;
    }
    return length;
}

int wcscmp(const wchar_t* left, const wchar_t* right) noexcept
{
    for (; *left == *right && *left != L'\0'; ++left, ++right) {
    }
    return *left - *right;
}

wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, std::size_t count) noexcept
{
    return static_cast<wchar_t*>(std::memcpy(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemmove(wchar_t* to, const wchar_t* from, std::size_t count) noexcept
{
    return static_cast<wchar_t*>(std::memmove(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemset(wchar_t* text, wchar_t character, std::size_t count) noexcept
{
    return std::fill_n(text, count, character), text;
}

int wmemcmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept
{
    for (; count > 0; --count, ++left, ++right) {
        if (*left != *right) {
            return *left - *right;
        }
    }
    return 0;
}

} // extern "C"

// In C++ these two have two forms each; both have the one symbol.
extern "C" const wchar_t* NativeFind(const wchar_t* text, wchar_t character, std::size_t count) noexcept
    __asm__("wmemchr");
const wchar_t* NativeFind(const wchar_t* text, wchar_t character, std::size_t count) noexcept
{
    const wchar_t* const end = text + count;
    const wchar_t* const found = std::find(text, end, character);
    return found == end ? nullptr : found;
}

extern "C" const wchar_t* NativeFindInText(const wchar_t* text, wchar_t character) noexcept __asm__("wcschr");
const wchar_t* NativeFindInText(const wchar_t* text, wchar_t character) noexcept
{
    for (; *text != character; ++text) {
        if (*text == L'\0') {
            return nullptr;
        }
    }
    return text;
}
