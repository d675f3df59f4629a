#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace test {

// A 64-bit DLL or program as it stands in its file: what it offers, what it needs and how it may be loaded.
// Throws std::runtime_error when the file cannot be read.
class ImageFile
{
public:
    explicit ImageFile(const std::wstring& path);

    // The names in the export table, in its order.
    [[nodiscard]] std::vector<std::string> ExportNames() const;
    // The number of exports, those without a name included.
    [[nodiscard]] std::size_t ExportCount() const;
    // The functions that the image imports, each behind its library's name, which is in lower case; the name
    // of a function that is imported by its number is "#" and the number.
    using Import = std::pair<std::string, std::string>;
    [[nodiscard]] std::vector<Import> Imports() const;
    // The IMAGE_DLLCHARACTERISTICS_ flags.
    [[nodiscard]] WORD Characteristics() const { return Headers().OptionalHeader.DllCharacteristics; }
    // Whether the image holds what it takes to be moved in memory.
    [[nodiscard]] bool HasRelocations() const { return Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size > 0; }
    [[nodiscard]] bool HasDelayedImports() const
    {
        return Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size > 0;
    }

private:
    [[nodiscard]] const IMAGE_NT_HEADERS64& Headers() const;
    [[nodiscard]] const IMAGE_DATA_DIRECTORY& Directory(int index) const;
    template <typename Type> [[nodiscard]] const Type* At(DWORD address) const;

    std::string m_bytes;
};

} // namespace test
