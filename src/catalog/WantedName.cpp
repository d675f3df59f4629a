#include "catalog/WantedName.h"

#include "common/OutOfMemory.h"

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

void WantedName::CrtMemoryDeleter::operator()(wchar_t* text) const noexcept
{
    std::free(text);
}
