#include "standin/Text.h"

#include <windows.h>

namespace standin {

bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL ||
           (left.empty() && right.empty());
}

bool StartsWithIgnoringCase(std::wstring_view text, std::wstring_view start) noexcept
{
    return text.size() >= start.size() && EqualIgnoringCase(text.substr(0, start.size()), start);
}

std::wstring_view Trimmed(std::wstring_view text) noexcept
{
    constexpr std::wstring_view blanks = L" \t";
    const size_t start = text.find_first_not_of(blanks);
    if (start == std::wstring_view::npos) {
        return {};
    }
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::vector<std::wstring> Split(std::wstring_view text, wchar_t separator)
{
    std::vector<std::wstring> parts;
    while (!text.empty()) {
        const size_t end = text.find(separator);
        const std::wstring_view part = Trimmed(text.substr(0, end));
        if (!part.empty()) {
            parts.emplace_back(part);
        }
        text = end == std::wstring_view::npos ? std::wstring_view() : text.substr(end + 1);
    }
    return parts;
}

std::wstring FromUtf8(std::string_view bytes)
{
    std::wstring text(bytes.size(), L'\0');
    text.resize(
        static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()),
                                                text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string ToUtf8(std::wstring_view text)
{
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(),
                                                         static_cast<int>(text.size()), bytes.data(),
                                                         static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

} // namespace standin
