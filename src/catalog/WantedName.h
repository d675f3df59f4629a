#pragma once

#include "catalog/SearchTokens.h"
#include "common/WideString.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <string_view>
#include <vector>

// The name of the application that a search is for, made ready once for all the records that are asked about
// it. It borrows the text, and belongs to the thread that made it.
class WantedName
{
public:
    // Implicit: a record may be asked with the bare text. Null and the empty text make one that no record
    // takes.
    WantedName(const wchar_t* text) noexcept;

    // As the caller wrote it; may be null.
    [[nodiscard]] const wchar_t* Text() const noexcept { return m_text; }
    // S_OK, E_OUTOFMEMORY, or E_FAIL when the text cannot be put into lower case. Only with S_OK is there
    // more than the text.
    [[nodiscard]] HRESULT Result() const noexcept { return m_result; }
    // In lower case.
    [[nodiscard]] std::wstring_view Lower() const noexcept { return m_lower; }

    // True when the name equals it, ignoring case.
    [[nodiscard]] bool Equals(const WideString& name) const noexcept
    {
        return name.View().size() == m_lower.size() && _wcsicmp(name.c_str(), m_lower.data()) == 0;
    }
    // True when every token of it, in lower case, occurs in the text in exactly these letters.
    [[nodiscard]] bool IsIn(std::wstring_view text) const noexcept
    {
        return std::all_of(m_tokens.begin(), m_tokens.end(),
                           [text](std::wstring_view token) { return SearchTokens::IsIn(token, text); });
    }

private:
    // Releases memory of the C runtime.
    struct CrtMemoryDeleter
    {
        void operator()(wchar_t* text) const noexcept;
    };

    [[nodiscard]] HRESULT Prepare() noexcept;

    const wchar_t* m_text;
    std::unique_ptr<wchar_t, CrtMemoryDeleter> m_copy;
    std::wstring_view m_lower;
    std::vector<std::wstring_view> m_tokens;
    HRESULT m_result;
};
