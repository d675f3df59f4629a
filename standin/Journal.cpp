#include "standin/Journal.h"

#include "standin/Settings.h"
#include "standin/Text.h"

#include <algorithm>
#include <exception>
#include <string>

namespace standin {

namespace {

std::wstring JoinFields(std::initializer_list<std::wstring_view> fields)
{
    std::wstring line;
    bool isFirst = true;
    for (const std::wstring_view field : fields) {
        if (!isFirst) {
            line += L'\t';
        }
        isFirst = false;
        std::wstring text(field);
        std::replace_if(
            text.begin(), text.end(),
            [](wchar_t character) { return character == L'\r' || character == L'\n' || character == L'\t'; },
            L' ');
        line += text;
    }
    return line + L"\n";
}

} // namespace

void WriteJournal(std::initializer_list<std::wstring_view> fields) noexcept
{
    try {
        const std::wstring path = GetText(TextSetting::Journal);
        if (path.empty()) {
            return;
        }
        const std::string bytes = ToUtf8(JoinFields(fields));
        const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return;
        }
        DWORD written = 0;
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        CloseHandle(file);
    } catch (const std::exception&) {
        // Out of memory: the line is lost, the desktop goes on.
    }
}

} // namespace standin
