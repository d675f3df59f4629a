#include "LogLine.h"

#include "common/NarrowFormat.h"

#include <algorithm>
#include <cstdarg>
#include <string>

namespace {

static_assert(kLogLineBytes == kLargestMessage - 1);

// The entry line of the clipboard's operation, without the text that is put there.
constexpr std::string_view kTightestLine = "CQanhClipboard::SetClipboardData() IN\r\n";

// Units of text that fit into a message in every code page: none takes more than four bytes for one.
constexpr std::size_t kPiece = 200;

int Format(char* buffer, std::size_t size, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatNarrow(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

bool IsFirstHalf(wchar_t unit) noexcept
{
    return 0xD800 <= unit && unit < 0xDC00;
}

} // namespace

std::size_t LogLineBytes(std::wstring_view query)
{
    // The log converts the text, piece by piece: a query may be longer than a line.
    std::size_t bytes = kTightestLine.size();
    while (!query.empty()) {
        std::size_t units = std::min(query.size(), kPiece);
        if (units > 1 && IsFirstHalf(query[units - 1])) {
            --units;
        }
        char buffer[kLargestMessage];
        const std::wstring piece(query.substr(0, units));
        bytes += static_cast<std::size_t>(Format(buffer, sizeof buffer, "%S", piece.c_str()));
        query.remove_prefix(units);
    }
    return bytes;
}
