#pragma once

#include "support/ImportPatch.h"
#include "support/Text.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace test {

// Notes what the library asks of the registry, until the end of the scope, and can make a call fail. One at a
// time; keep the scope tight, since a test looks at the registry too.
class RegCalls
{
public:
    RegCalls()
        : m_open("RegOpenKeyExW", Open), m_query("RegQueryValueExW", Query), m_set("RegSetValueExW", Set),
          m_delete("RegDeleteValueW", Delete), m_close("RegCloseKey", Close)
    {
        s_current = this;
    }
    ~RegCalls() { s_current = nullptr; }
    RegCalls(const RegCalls&) = delete;
    RegCalls& operator=(const RegCalls&) = delete;

    std::vector<std::string> journal;
    // Results that stand in for the real calls' when not 0. A failing query leaves garbage behind.
    LSTATUS openResult = ERROR_SUCCESS;
    LSTATUS queryResult = ERROR_SUCCESS;
    LSTATUS setResult = ERROR_SUCCESS;
    LSTATUS deleteResult = ERROR_SUCCESS;

private:
    static void Note(const std::string& call) { s_current->journal.push_back(call); }

    static LSTATUS WINAPI Open(HKEY hive, const wchar_t* path, DWORD options, REGSAM access, HKEY* key)
    {
        char rights[32];
        std::snprintf(rights, sizeof rights, "%lu 0x%lX", static_cast<unsigned long>(options),
                      static_cast<unsigned long>(access));
        Note(std::string("open ") +
             (hive == HKEY_LOCAL_MACHINE  ? "machine"
              : hive == HKEY_CURRENT_USER ? "user"
                                          : "other") +
             " " + ToUtf8(path) + " " + rights);
        return s_current->openResult != ERROR_SUCCESS
                   ? s_current->openResult
                   : s_current->m_open.Original()(hive, path, options, access, key);
    }
    static LSTATUS WINAPI Query(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                                DWORD* size)
    {
        Note("query " + ToUtf8(name) + " type " + std::to_string(*type) + " size " + std::to_string(*size));
        if (s_current->queryResult != ERROR_SUCCESS) {
            std::memset(data, 0x77, *size);
            return s_current->queryResult;
        }
        return s_current->m_query.Original()(key, name, reserved, type, data, size);
    }
    static LSTATUS WINAPI Set(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size)
    {
        Note("set " + ToUtf8(name) + " type " + std::to_string(type) + " size " + std::to_string(size));
        return s_current->setResult != ERROR_SUCCESS
                   ? s_current->setResult
                   : s_current->m_set.Original()(key, name, reserved, type, data, size);
    }
    static LSTATUS WINAPI Delete(HKEY key, const wchar_t* name)
    {
        Note("delete " + ToUtf8(name));
        return s_current->deleteResult != ERROR_SUCCESS ? s_current->deleteResult
                                                        : s_current->m_delete.Original()(key, name);
    }
    static LSTATUS WINAPI Close(HKEY key)
    {
        Note("close");
        return s_current->m_close.Original()(key);
    }

    static inline RegCalls* s_current = nullptr;
    ImportPatch<decltype(&RegOpenKeyExW)> m_open;
    ImportPatch<decltype(&RegQueryValueExW)> m_query;
    ImportPatch<decltype(&RegSetValueExW)> m_set;
    ImportPatch<decltype(&RegDeleteValueW)> m_delete;
    ImportPatch<decltype(&RegCloseKey)> m_close;
};

} // namespace test
