#pragma once

#include <string>
#include <string_view>
#include <vector>

// What the stand-in's parts do with text. Pure functions, any thread.
namespace standin {

// By code unit, letter case aside.
[[nodiscard]] bool EqualIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept;
[[nodiscard]] bool StartsWithIgnoringCase(std::wstring_view text, std::wstring_view start) noexcept;

// Without the blanks and tabs at both ends.
[[nodiscard]] std::wstring_view Trimmed(std::wstring_view text) noexcept;

// The parts between the separators, trimmed; empty ones are left out.
[[nodiscard]] std::vector<std::wstring> Split(std::wstring_view text, wchar_t separator);

// What is no UTF-8, or half a surrogate pair, becomes U+FFFD.
[[nodiscard]] std::wstring FromUtf8(std::string_view bytes);
[[nodiscard]] std::string ToUtf8(std::wstring_view text);

} // namespace standin
