#include "catalog/WantedName.h"

#include "catalog/SearchTokens.h"
#include "common/OutOfMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>

WantedName::WantedName(const wchar_t* text) noexcept
    : m_text(text), m_result(text && *text != L'\0' ? Prepare() : E_INVALIDARG)
{
}

HRESULT WantedName::Prepare() noexcept
{
    m_copy.reset(_wcsdup(m_text));
    if (!m_copy) {
        return E_OUTOFMEMORY;
    }
    if (_wcslwr_s(m_copy.get(), std::wcslen(m_copy.get()) + 1) != 0) {
        return E_FAIL;
    }
    m_lower = m_copy.get();
    return CatchOutOfMemory([&] {
        SearchTokens::ForEach(m_lower, [&](std::wstring_view token) {
            m_tokens.push_back(token);
            return true;
        });
        return S_OK;
    });
}

bool WantedName::Equals(const WideString& name) const noexcept
{
    return name.View().size() == m_lower.size() && _wcsicmp(name.c_str(), m_lower.data()) == 0;
}

bool WantedName::IsIn(std::wstring_view text) const noexcept
{
    return std::all_of(m_tokens.begin(), m_tokens.end(),
                       [text](std::wstring_view token) { return SearchTokens::IsIn(token, text); });
}

void WantedName::CrtMemoryDeleter::operator()(wchar_t* text) const noexcept
{
    std::free(text);
}
