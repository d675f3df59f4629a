#pragma once

#include "support/Test.h"

#include <cstdio>
#include <cstring>

namespace test {

// Notes what the library asks of the registry, until the end of the scope, and can make a call fail. One at a
// time; keep the scope tight, since a test looks at the registry too.
class RegCalls
{
private:
    static std::string Of(const char* call, const wchar_t* name, DWORD type, DWORD size)
    {
        return call + (" " + ToUtf8(name)) + " type " + std::to_string(type) + " size " +
               std::to_string(size);
    }

public:
    std::vector<std::string> journal;
    NotingPatch<decltype(&RegOpenKeyExW)> open{
        "RegOpenKeyExW", journal, [](HKEY hive, const wchar_t* path, DWORD options, REGSAM access, HKEY*) {
            char rights[32];
            std::snprintf(rights, sizeof rights, "%lu 0x%lX", static_cast<unsigned long>(options),
                          static_cast<unsigned long>(access));
            const char* name = hive == HKEY_LOCAL_MACHINE  ? "machine"
                               : hive == HKEY_CURRENT_USER ? "user"
                                                           : "other";
            return std::string("open ") + name + " " + ToUtf8(path) + " " + rights;
        }};
    // When it fails it leaves garbage behind.
    NotingPatch<decltype(&RegQueryValueExW)> query{
        "RegQueryValueExW", journal,
        [this](HKEY, const wchar_t* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
            if (query.answer) {
                std::memset(data, 0x77, *size);
            }
            return Of("query", name, *type, *size);
        }};
    NotingPatch<decltype(&RegSetValueExW)> set{"RegSetValueExW", journal,
                                               [](HKEY, const wchar_t* name, DWORD, DWORD type, const BYTE*,
                                                  DWORD size) { return Of("set", name, type, size); }};

private:
    NotingPatch<decltype(&RegDeleteValueW)> m_delete{
        "RegDeleteValueW", journal, [](HKEY, const wchar_t* name) { return "delete " + ToUtf8(name); }};
    NotingPatch<decltype(&RegCloseKey)> m_close{"RegCloseKey", journal,
                                                [](HKEY) { return std::string("close"); }};
};

} // namespace test
