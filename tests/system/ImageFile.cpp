#include "system/ImageFile.h"

#include "support/Text.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace test {

ImageFile::ImageFile(const std::wstring& path) : m_bytes(ReadFileBytes(path)) {}

const IMAGE_NT_HEADERS64& ImageFile::Headers() const
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(m_bytes.data());
    return *reinterpret_cast<const IMAGE_NT_HEADERS64*>(m_bytes.data() + dos->e_lfanew);
}

const IMAGE_DATA_DIRECTORY& ImageFile::Directory(int index) const
{
    return Headers().OptionalHeader.DataDirectory[index];
}

// What stands at an address of the loaded image.
template <typename Type> const Type* ImageFile::At(DWORD address) const
{
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&Headers());
    for (WORD index = 0; index < Headers().FileHeader.NumberOfSections; ++index, ++section) {
        if (address >= section->VirtualAddress &&
            address < section->VirtualAddress + section->SizeOfRawData) {
            return reinterpret_cast<const Type*>(m_bytes.data() + section->PointerToRawData +
                                                 (address - section->VirtualAddress));
        }
    }
    throw std::runtime_error("an address outside of the image's sections");
}

std::vector<std::string> ImageFile::ExportNames() const
{
    const auto* table = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    const auto* names = At<DWORD>(table->AddressOfNames);
    std::vector<std::string> result;
    for (DWORD index = 0; index < table->NumberOfNames; ++index) {
        result.emplace_back(At<char>(names[index]));
    }
    return result;
}

std::size_t ImageFile::ExportCount() const
{
    const auto* table = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    const auto* addresses = At<DWORD>(table->AddressOfFunctions);
    // Numbers that no export has may have a place in the table.
    return static_cast<std::size_t>(std::count_if(addresses, addresses + table->NumberOfFunctions,
                                                  [](DWORD address) { return address != 0; }));
}

std::vector<ImageFile::Import> ImageFile::Imports() const
{
    std::vector<Import> result;
    const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
    for (; library->Name != 0; ++library) {
        std::string name = At<char>(library->Name);
        for (char& character : name) {
            character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        }
        const auto* names =
            At<BYTE>(library->OriginalFirstThunk ? library->OriginalFirstThunk : library->FirstThunk);
        // The table may not be aligned to its entries.
        ULONGLONG entry = 0;
        for (; std::memcpy(&entry, names, sizeof entry), entry != 0; names += sizeof entry) {
            result.push_back(
                {name, IMAGE_SNAP_BY_ORDINAL64(entry)
                           ? "#" + std::to_string(IMAGE_ORDINAL64(entry))
                           : At<char>(static_cast<DWORD>(entry) + offsetof(IMAGE_IMPORT_BY_NAME, Name))});
        }
    }
    return result;
}

} // namespace test
