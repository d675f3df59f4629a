#pragma once

#include <windows.h>

#include <winstring.h>

#include <cwchar>

// A string of the Windows Runtime that a getter hands out. Owned; released at the end of its life.
class HString
{
public:
    HString() noexcept = default;
    ~HString() { WindowsDeleteString(m_string); }
    HString(const HString&) = delete;
    HString& operator=(const HString&) = delete;

    [[nodiscard]] HSTRING* Put() noexcept { return &m_string; }
    [[nodiscard]] HSTRING Get() const noexcept { return m_string; }
    [[nodiscard]] const wchar_t* c_str() const noexcept
    {
        return WindowsGetStringRawBuffer(m_string, nullptr);
    }

private:
    HSTRING m_string = nullptr;
};
