#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace test {

// A registry key that a test fills as it needs it. What stood there before is gone for good (the prefix is
// thrown away after the run); the key is deleted at the start and at the end of the scope.
class ScopedKey
{
public:
    ScopedKey(HKEY hive, const wchar_t* path);
    ~ScopedKey();
    ScopedKey(const ScopedKey&) = delete;
    ScopedKey& operator=(const ScopedKey&) = delete;

    void SetDword(const wchar_t* name, DWORD value);
    void SetText(const wchar_t* name, const wchar_t* value);
    void SetBytes(const wchar_t* name, DWORD type, const std::vector<BYTE>& bytes);
    void DeleteValue(const wchar_t* name);
    // Makes the key without a value.
    void Create();
    void Delete();
    // The value when it is there and a REG_DWORD.
    [[nodiscard]] std::optional<DWORD> Dword(const wchar_t* name) const;
    [[nodiscard]] bool HasValue(const wchar_t* name) const;
    [[nodiscard]] bool Exists() const;

private:
    HKEY m_hive;
    std::wstring m_path;
};

// The library's settings and the browser's key.
constexpr wchar_t kSettingsKey[] = L"Software\\Vel\\VELQAN\\QanHelper";
constexpr wchar_t kBrowserKey[] = L"Software\\Microsoft\\Internet Explorer\\Main";

} // namespace test
