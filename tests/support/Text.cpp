#include "support/Text.h"

#include <windows.h>

#include <stdexcept>

namespace test {

std::string ReadFileBytes(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot read " + ToUtf8(path));
    }
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(file, buffer, sizeof buffer, &read, nullptr) && read > 0) {
        bytes.append(buffer, read);
    }
    CloseHandle(file);
    return bytes;
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    const bool ok = file != INVALID_HANDLE_VALUE &&
                    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
    }
    if (!ok) {
        throw std::runtime_error("cannot write " + ToUtf8(path));
    }
}

std::vector<std::string> Split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find(separator, start)) != std::string_view::npos;
         start = end + separator.size()) {
        pieces.emplace_back(text.substr(start, end - start));
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

void ReplaceAll(std::string& text, std::string_view part, std::string_view replacement)
{
    for (std::size_t at = text.find(part); at != std::string::npos;
         at = text.find(part, at + replacement.size())) {
        text.replace(at, part.size(), replacement);
    }
}

} // namespace test
