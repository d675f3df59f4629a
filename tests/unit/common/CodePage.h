#pragma once

#include "support/Current.h"
#include "support/Test.h"

namespace test {

// Gives the system another code page, as far as the library can see, until the end of the scope. One at a
// time.
class CodePage : private Current<CodePage>
{
public:
    explicit CodePage(UINT codePage)
        : m_getCodePage("GetACP", []() -> UINT { return s_current->m_codePage; }),
          m_convert("WideCharToMultiByte", Convert), m_codePage(codePage)
    {
    }

private:
    static int WINAPI Convert(UINT codePage, DWORD flags, const wchar_t* text, int length, char* bytes,
                              int size, const char* substitute, BOOL* isSubstituted)
    {
        // As on the real platform: this code page takes neither flags nor a substitute.
        if (codePage == CP_ACP && s_current->m_codePage == CP_UTF8 && (flags != 0 || substitute)) {
            SetLastError(flags != 0 ? ERROR_INVALID_FLAGS : ERROR_INVALID_PARAMETER);
            return 0;
        }
        return s_current->m_convert.Original()(codePage == CP_ACP ? s_current->m_codePage : codePage, flags,
                                               text, length, bytes, size, substitute, isSubstituted);
    }

    friend Current<CodePage>;
    ImportPatch<decltype(&GetACP)> m_getCodePage;
    ImportPatch<decltype(&WideCharToMultiByte)> m_convert;
    UINT m_codePage;
};

} // namespace test
