#pragma once

#include "support/Current.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <shlwapi.h>
#include <xmllite.h>

#include <string>
#include <vector>

namespace test {

// Notes how the library makes its XML readers and opens the files for them, until the end of the scope. One
// at a time.
class XmlInputs : private Current<XmlInputs>
{
public:
    // In order; the mode of a file as its number.
    std::vector<std::wstring> calls;

private:
    static HRESULT WINAPI Create(REFIID id, void** object, IMalloc* allocator)
    {
        s_current->calls.push_back(allocator ? L"CreateXmlReader(allocator)" : L"CreateXmlReader(null)");
        return s_current->m_create.Original()(id, object, allocator);
    }
    static HRESULT WINAPI Open(const wchar_t* path, DWORD mode, IStream** stream)
    {
        s_current->calls.push_back(L"SHCreateStreamOnFileW(" + std::wstring(path) + L", " +
                                   std::to_wstring(mode) + L")");
        return s_current->m_open.Original()(path, mode, stream);
    }

    friend Current<XmlInputs>;

    ImportPatch<decltype(&CreateXmlReader)> m_create{"CreateXmlReader", Create};
    ImportPatch<decltype(&SHCreateStreamOnFileW)> m_open{"SHCreateStreamOnFileW", Open};
};

} // namespace test
