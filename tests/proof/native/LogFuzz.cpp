// Any line can be logged: each is what its format and its texts make, in the code page, and a message that is
// too long is none. The C runtime does with it what it likes.

#include "Fuzzing.h"
#include "Platform.h"
#include "common/DiagnosticLog.h"
#include "common/NarrowFormat.h"
#include "standin/Text.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <list>
#include <memory>

const char fuzz::kName[] = "the log's formatter";

namespace {

std::wstring TextFrom(proof::Bytes& bytes)
{
    std::wstring text;
    for (unsigned i = bytes.Pick(6); i > 0; --i) {
        const unsigned choice = bytes.Take();
        if (choice < 100) {
            text += static_cast<wchar_t>(' ' + choice % 95);
        } else if (choice < 120) {
            text.append(bytes.TakeNumber() % 1100, static_cast<wchar_t>('a' + choice % 26));
        } else if (choice < 200) {
            text += static_cast<wchar_t>(1 + bytes.TakeNumber() % 0xFFFF);
        } else {
            text += static_cast<wchar_t>(0xD800 + bytes.TakeNumber() % 0x800);
        }
    }
    return text;
}

// In the code page in use: a letter that it lacks is "?", in UTF-8 what is none is U+FFFD.
std::string Converted(const std::wstring& text)
{
    if (native::TheHooks().codePage == CP_UTF8) {
        return standin::ToUtf8(text);
    }
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        bytes += c < 0x80 || (c >= 0xA0 && c < 0x100) ? static_cast<char>(c) : '?';
        const bool isPair =
            c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        i += isPair ? 1 : 0;
    }
    return bytes;
}

// A format with up to five arguments, which all go the same way, and what they make.
struct Line
{
    std::string format;
    std::string message;
    std::uintptr_t arguments[5] = {};
    std::list<std::wstring> wide;
    std::list<std::string> narrow;

    explicit Line(proof::Bytes& bytes)
    {
        unsigned used = 0;
        for (unsigned i = bytes.Pick(8); i > 0; --i) {
            const unsigned kind = used < 5 ? bytes.Pick(8) : 0;
            if (kind < 2) {
                static constexpr std::string_view words[] = {"%%", " OUT(", "=", ") IN\r\n"};
                const std::string_view word = words[bytes.Pick(4)];
                format += word;
                message += word == "%%" ? "%" : word;
            } else if (kind < 5) {
                const bool isNull = bytes.Pick(16) == 0;
                wide.push_back(TextFrom(bytes));
                Put("%S", isNull ? 0 : reinterpret_cast<std::uintptr_t>(wide.back().c_str()),
                    isNull ? "(null)" : Converted(wide.back()), used);
            } else if (kind == 5) {
                narrow.push_back(std::string(bytes.TakeNumber() % 1200, 'n'));
                Put("%s", reinterpret_cast<std::uintptr_t>(narrow.back().c_str()), narrow.back(), used);
            } else {
                static constexpr const char* conversions[] = {"%d", "%u",  "0x%08X", "%04d",
                                                              "%x", "%5d", "%-5d",   "%+d"};
                const char* const conversion = conversions[bytes.Pick(8)];
                const auto number = static_cast<int>(bytes.TakeNumber() << 16 | bytes.TakeNumber());
                char digits[64];
                std::snprintf(digits, sizeof digits, conversion, number);
                Put(conversion, static_cast<std::uintptr_t>(static_cast<unsigned>(number)), digits, used);
            }
        }
    }

private:
    void Put(const char* conversion, std::uintptr_t argument, std::string_view text, unsigned& used)
    {
        format += conversion;
        message += text;
        arguments[used++] = argument;
    }
};

int Format(char* buffer, std::size_t size, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = FormatNarrow(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

} // namespace

#pragma clang diagnostic ignored "-Wformat-nonliteral"
#pragma clang diagnostic ignored "-Wformat-security"

void fuzz::Run(proof::Bytes bytes)
{
    const unsigned surroundings = bytes.Take();
    native::TheHooks().codePage = surroundings % 2 == 0 ? 1252 : CP_UTF8;
    native::TheHooks().overflow = static_cast<native::Hooks::Overflow>(surroundings / 2 % 3);
    const Line line(bytes);
    const std::string expected = line.message.size() < kLargestMessage ? line.message : "";

    // On the heap, where a byte too many is seen.
    const std::unique_ptr<char[]> buffer(new char[kLargestMessage]);
    const auto& a = line.arguments;
    const int length =
        Format(buffer.get(), kLargestMessage, line.format.c_str(), a[0], a[1], a[2], a[3], a[4]);
    Check(length == static_cast<int>(expected.size()), "a message's length is told");
    Check(std::strlen(buffer.get()) == expected.size() && expected == buffer.get(),
          "a message is what its parts make");

    DiagnosticLog::SetEnabled(true);
    SetLastError(surroundings);
    const int written = DiagnosticLog::WriteLine(line.format.c_str(), a[0], a[1], a[2], a[3], a[4]);
    DiagnosticLog::SetEnabled(false);
    Check(written == 1 && GetLastError() == surroundings, "a line leaves the last error alone");
    Check(native::TakeLog() == "[2013/04/16 09:08:07.006]" + expected, "a line is the time and the message");
}
