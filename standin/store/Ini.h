#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

// The text of a package.ini: lines "key = value" below headings "[section]"; what stands above the first
// heading belongs to the section without a name. Empty lines and lines that start with ";" or "#" say
// nothing. Blanks around keys and values are cut off, letter case of sections and keys does not count, and
// the first of two equal keys holds. Pure: no state outside the object, any thread.
class Ini
{
public:
    Ini() = default;
    explicit Ini(std::string_view utf8);

    // Null: there is no such key. Valid as long as the object.
    [[nodiscard]] const std::wstring* Find(std::wstring_view section, std::wstring_view key) const noexcept;

    // The value in the section without a name, empty when there is none.
    [[nodiscard]] std::wstring Text(std::wstring_view key) const;

    // The same as a number, decimal or behind "0x"; fallback when there is none.
    [[nodiscard]] unsigned long Number(std::wstring_view key, unsigned long fallback = 0) const noexcept;

private:
    struct Entry
    {
        std::wstring section;
        std::wstring key;
        std::wstring value;
    };

    std::vector<Entry> m_entries;
};

} // namespace standin
