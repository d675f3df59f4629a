#pragma once

#include "common/FindCharacter.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

// What the Start screen's search looks up of a text: its tokens, each for itself and in any order. A run of
// ASCII letters, digits, "_" and "/" is one token; a kana, an ideograph, a full-width digit or letter and a
// backslash are a token each; everything else is passed over.
namespace SearchTokens {

// The length of the token that the text, which is not empty, begins with; 0 when it begins with something
// else.
[[nodiscard]] std::size_t LengthOfFirst(std::wstring_view text) noexcept;

// Calls visit(token) for one token after the other until it returns false. Returns false then, otherwise
// true.
template <typename Visit> bool ForEach(std::wstring_view text, Visit visit)
{
    while (!text.empty()) {
        const std::size_t length = LengthOfFirst(text);
        if (length != 0 && !visit(text.substr(0, length))) {
            return false;
        }
        text.remove_prefix(length != 0 ? length : 1);
    }
    return true;
}

// True when the token occurs in the text, in exactly these letters. Names are short: a search by first
// letters has found it before a cleverer one has begun.
[[nodiscard]] inline bool IsIn(std::wstring_view token, std::wstring_view text) noexcept
{
    for (; text.size() >= token.size(); text.remove_prefix(1)) {
        const std::size_t begins = text.size() - token.size() + 1;
        const std::size_t at = FindCharacter(text.substr(0, begins), token.front());
        if (at == std::wstring_view::npos) {
            return false;
        }
        text.remove_prefix(at);
        if (std::equal(token.begin() + 1, token.end(), text.begin() + 1)) {
            return true;
        }
    }
    return false;
}

} // namespace SearchTokens
