#include "Progress.h"

#include "Failure.h"
#include "Output.h"

#include <windows.h>

#include <algorithm>

namespace {

bool IsConsole()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

} // namespace

Progress::Progress() : m_isShown(IsConsole() && !IsPlainWanted()) {}

Progress::~Progress()
{
    try {
        Show(L"");
        if (m_width > 0) {
            WriteText(STD_ERROR_HANDLE, L"\r");
        }
    } catch (const Failure&) {
        // The answer matters more than a line that stays.
    }
}

void Progress::Show(const std::wstring& text)
{
    if (m_isShown) {
        m_width = std::max(m_width, text.size());
        std::wstring line = text;
        line.resize(m_width, L' '); // over what stood there
        WriteText(STD_ERROR_HANDLE, L"\r" + line);
    }
}
