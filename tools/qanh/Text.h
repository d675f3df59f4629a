#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

// What the tool does with text. Inside of it all text is wide; UTF-8 stands at its edges: arguments, JSON,
// files and pipes. Pure functions.

// What is no UTF-8, or half a surrogate pair, becomes U+FFFD.
[[nodiscard]] std::wstring FromUtf8(std::string_view bytes);
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

// Capitals of every script that has them as small letters.
[[nodiscard]] std::wstring Folded(std::wstring_view text);
[[nodiscard]] bool EqualsIgnoringCase(std::wstring_view left, std::wstring_view right);

// As a person sees it in a line of its own: without characters that would steer the console or end the line.
[[nodiscard]] std::wstring Shown(std::wstring_view text);

// Whether it begins with one of these.
template <std::size_t count>
[[nodiscard]] bool BeginsWithOne(std::wstring_view text, const std::wstring_view (&beginnings)[count])
{
    return std::any_of(std::begin(beginnings), std::end(beginnings),
                       [text](std::wstring_view beginning) { return text.starts_with(beginning); });
}
