#include "standin/store/Ini.h"

#include "standin/Text.h"

#include <cwchar>

namespace standin {

Ini::Ini(std::string_view utf8)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF"; // not part of the text
    if (utf8.starts_with(mark)) {
        utf8.remove_prefix(mark.size());
    }
    const std::wstring text = FromUtf8(utf8);
    std::wstring section;
    for (std::wstring_view rest = text; !rest.empty();) {
        const size_t end = rest.find_first_of(L"\r\n");
        const std::wstring_view line = Trimmed(rest.substr(0, end));
        rest = end == std::wstring_view::npos ? std::wstring_view() : rest.substr(end + 1);
        if (line.empty() || line.front() == L';' || line.front() == L'#') {
            continue;
        }
        if (line.front() == L'[' && line.back() == L']') {
            section = Trimmed(line.substr(1, line.size() - 2));
            continue;
        }
        const size_t equals = line.find(L'=');
        if (equals != std::wstring_view::npos) {
            m_entries.push_back({section, std::wstring(Trimmed(line.substr(0, equals))),
                                 std::wstring(Trimmed(line.substr(equals + 1)))});
        }
    }
}

const std::wstring* Ini::Find(std::wstring_view section, std::wstring_view key) const noexcept
{
    for (const Entry& entry : m_entries) {
        if (EqualIgnoringCase(entry.section, section) && EqualIgnoringCase(entry.key, key)) {
            return &entry.value;
        }
    }
    return nullptr;
}

std::wstring Ini::Text(std::wstring_view key) const
{
    const std::wstring* value = Find(L"", key);
    return value ? *value : std::wstring();
}

unsigned long Ini::Number(std::wstring_view key, unsigned long fallback) const noexcept
{
    const std::wstring* value = Find(L"", key);
    if (!value || value->empty()) {
        return fallback;
    }
    const bool isHexadecimal = StartsWithIgnoringCase(*value, L"0x");
    return std::wcstoul(value->c_str(), nullptr, isHexadecimal ? 16 : 10);
}

} // namespace standin
