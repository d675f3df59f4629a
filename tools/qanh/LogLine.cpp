#include "LogLine.h"

#include "common/NarrowFormat.h"

#include <windows.h>

namespace {

static_assert(kLogLineBytes == kLargestMessage - 1);

// The entry line of the clipboard's operation, without the text that is put there.
constexpr std::string_view kTightestLine = "CQanhClipboard::SetClipboardData() IN\r\n";

// In bytes, with one for what the code page cannot hold, as the log has it.
std::size_t BytesOf(std::wstring_view text, unsigned codePage)
{
    const bool isUtf8 = (codePage == CP_ACP ? GetACP() : codePage) == CP_UTF8;
    const auto bytesWith = [&](DWORD flags, const char* replacement) {
        return WideCharToMultiByte(codePage, flags, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                   replacement, nullptr);
    };
    const int bytes = isUtf8 ? bytesWith(0, nullptr) : bytesWith(WC_NO_BEST_FIT_CHARS, "?");
    // There are code pages that take neither flags nor a replacement.
    return static_cast<std::size_t>(bytes > 0 ? bytes : bytesWith(0, nullptr));
}

} // namespace

std::size_t LogLineBytes(std::wstring_view query, unsigned codePage)
{
    return kTightestLine.size() + (query.empty() ? 0 : BytesOf(query, codePage));
}
