#include "Text.h"

#include <windows.h>

#include <algorithm>

namespace {

constexpr wchar_t kReplacement = 0xFFFD;

bool IsControl(wchar_t character) noexcept
{
    return character < L' ' || (0x7F <= character && character < 0xA0);
}

} // namespace

std::wstring FromUtf8(std::string_view bytes)
{
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

std::string ToUtf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring Folded(std::wstring_view text)
{
    std::wstring folded(text);
    CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

bool EqualsIgnoringCase(std::wstring_view left, std::wstring_view right)
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

std::wstring Shown(std::wstring_view text)
{
    std::wstring shown(text);
    std::replace_if(shown.begin(), shown.end(), IsControl, kReplacement);
    return shown;
}
