#pragma once

#include <memory>
#include <string>
#include <string_view>

// An immutable UTF-16 string whose copies share one reference-counted text. A null pointer makes an empty
// string. One object belongs to one thread at a time; copies of it may live on any thread.
class WideString
{
public:
    WideString() noexcept = default;
    WideString(const wchar_t* text) : WideString(text ? std::wstring_view(text) : std::wstring_view()) {}
    explicit WideString(std::wstring_view text)
        : m_text(text.empty() ? nullptr : std::make_shared<const std::wstring>(text))
    {
    }

    [[nodiscard]] const wchar_t* c_str() const noexcept { return m_text ? m_text->c_str() : L""; }
    [[nodiscard]] bool empty() const noexcept { return !m_text; }

    friend bool operator==(const WideString& left, const WideString& right) noexcept
    {
        return left.View() == right.View();
    }

private:
    [[nodiscard]] std::wstring_view View() const noexcept
    {
        return m_text ? std::wstring_view(*m_text) : std::wstring_view();
    }

    std::shared_ptr<const std::wstring> m_text;
};
