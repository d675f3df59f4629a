#include "support/Registry.h"

#include <shlwapi.h>

#include <gtest/gtest.h>

#include <cwchar>

namespace test {

ScopedKey::ScopedKey(HKEY hive, const wchar_t* path) : m_hive(hive), m_path(path)
{
    Delete();
}

ScopedKey::~ScopedKey()
{
    Delete();
}

void ScopedKey::SetBytes(const wchar_t* name, DWORD type, const std::vector<BYTE>& bytes)
{
    EXPECT_EQ(
        RegSetKeyValueW(m_hive, m_path.c_str(), name, type, bytes.data(), static_cast<DWORD>(bytes.size())),
        ERROR_SUCCESS);
}

void ScopedKey::SetDword(const wchar_t* name, DWORD value)
{
    EXPECT_EQ(RegSetKeyValueW(m_hive, m_path.c_str(), name, REG_DWORD, &value, sizeof value), ERROR_SUCCESS);
}

void ScopedKey::SetText(const wchar_t* name, const wchar_t* value)
{
    EXPECT_EQ(RegSetKeyValueW(m_hive, m_path.c_str(), name, REG_SZ, value,
                              static_cast<DWORD>((std::wcslen(value) + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

void ScopedKey::DeleteValue(const wchar_t* name)
{
    RegDeleteKeyValueW(m_hive, m_path.c_str(), name);
}

void ScopedKey::Create()
{
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(m_hive, m_path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
}

void ScopedKey::Delete()
{
    SHDeleteKeyW(m_hive, m_path.c_str());
}

std::optional<DWORD> ScopedKey::Dword(const wchar_t* name) const
{
    DWORD value = 0;
    DWORD size = sizeof value;
    if (RegGetValueW(m_hive, m_path.c_str(), name, RRF_RT_REG_DWORD, nullptr, &value, &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    return value;
}

bool ScopedKey::HasValue(const wchar_t* name) const
{
    return RegGetValueW(m_hive, m_path.c_str(), name, RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

bool ScopedKey::Exists() const
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(m_hive, m_path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return false;
    }
    RegCloseKey(key);
    return true;
}

} // namespace test
