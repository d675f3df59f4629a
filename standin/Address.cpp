#include "standin/Address.h"

#include "standin/Result.h"
#include "standin/Text.h"

#include <shlwapi.h>

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace standin {

namespace {

constexpr DWORD longestAddress = 32768; // UTF-16 units, the terminator included

bool IsAscii(const std::wstring& text) noexcept
{
    return std::all_of(text.begin(), text.end(), [](wchar_t character) { return character < 0x80; });
}

// Everything but ASCII becomes escaped UTF-8: the files that hold addresses are read in the system's code
// page.
std::wstring EscapeAddress(const std::wstring& address)
{
    constexpr wchar_t digits[] = L"0123456789ABCDEF";
    std::wstring escaped;
    for (const char byte : ToUtf8(address)) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80) {
            escaped += static_cast<wchar_t>(value);
        } else {
            escaped += {L'%', digits[value >> 4], digits[value & 0xF]};
        }
    }
    return escaped;
}

int DigitValue(wchar_t digit) noexcept
{
    if (digit >= L'0' && digit <= L'9') {
        return digit - L'0';
    }
    const int letter = digit | 0x20;
    return letter >= L'a' && letter <= L'f' ? letter - L'a' + 10 : -1;
}

// The other way round, for an ASCII address; "%" without two digits stands for itself.
std::wstring UnescapeAddress(const std::wstring& address)
{
    std::string bytes;
    for (size_t index = 0; index < address.size(); ++index) {
        const bool mayBeEscape = address[index] == L'%' && index + 2 < address.size();
        const int high = mayBeEscape ? DigitValue(address[index + 1]) : -1;
        const int low = mayBeEscape ? DigitValue(address[index + 2]) : -1;
        if (high >= 0 && low >= 0) {
            bytes += static_cast<char>(high * 16 + low);
            index += 2;
        } else {
            bytes += static_cast<char>(address[index]);
        }
    }
    return FromUtf8(bytes);
}

} // namespace

std::wstring PathToAddress(const std::wstring& path)
{
    std::wstring address(longestAddress, L'\0');
    DWORD length = longestAddress;
    Check(UrlCreateFromPathW(path.c_str(), address.data(), &length, 0));
    address.resize(std::wcslen(address.c_str()));
    return EscapeAddress(address);
}

// An escaped address is read here, since Wine's function takes escaped bytes for letters.
std::wstring AddressToPath(const std::wstring& address)
{
    constexpr std::wstring_view localFile = L"file:///";
    if (IsAscii(address) && address.starts_with(localFile)) {
        std::wstring path = UnescapeAddress(address.substr(localFile.size()));
        std::replace(path.begin(), path.end(), L'/', L'\\');
        return path;
    }
    std::wstring path(longestAddress, L'\0');
    DWORD length = longestAddress;
    Check(PathCreateFromUrlW(address.c_str(), path.data(), &length, 0));
    path.resize(std::wcslen(path.c_str()));
    return path;
}

} // namespace standin
