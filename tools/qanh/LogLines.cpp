#include "LogLines.h"

#include "Failure.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr std::size_t kPiece = 65536;
// A line of the library takes two thousand bytes at most; a file of another kind may have no line end at all.
constexpr std::size_t kLongestLine = 65536;
constexpr std::string_view kStamp = "[0000/00/00 00:00:00.000]"; // "0" stands for any digit
constexpr long long kUnitsPerMillisecond = 10000;

bool IsDigit(char character) noexcept
{
    return '0' <= character && character <= '9';
}

bool IsStamp(std::string_view text) noexcept
{
    return text.size() >= kStamp.size() &&
           std::equal(kStamp.begin(), kStamp.end(), text.begin(), [](char expected, char actual) {
               return expected == '0' ? IsDigit(actual) : expected == actual;
           });
}

// Where the next time stamp of the text stands.
std::size_t FindStamp(std::string_view text, std::size_t from) noexcept
{
    for (std::size_t at = text.find('[', from); at != std::string_view::npos; at = text.find('[', at + 1)) {
        if (IsStamp(text.substr(at))) {
            return at;
        }
    }
    return std::string_view::npos;
}

std::optional<long long> TimeOf(std::string_view stamp)
{
    const auto number = [stamp](std::size_t at, std::size_t length) {
        unsigned value = 0;
        for (const char digit : stamp.substr(at, length)) {
            value = value * 10 + static_cast<unsigned>(digit - '0');
        }
        return static_cast<WORD>(value);
    };
    SYSTEMTIME time{};
    time.wYear = number(1, 4);
    time.wMonth = number(6, 2);
    time.wDay = number(9, 2);
    time.wHour = number(12, 2);
    time.wMinute = number(15, 2);
    time.wSecond = number(18, 2);
    time.wMilliseconds = number(21, 3);
    FILETIME file{};
    if (!SystemTimeToFileTime(&time, &file)) {
        return std::nullopt; // such as the 31st of February
    }
    const long long units =
        (static_cast<long long>(file.dwHighDateTime) << 32) | static_cast<long long>(file.dwLowDateTime);
    return units / kUnitsPerMillisecond;
}

std::wstring Decoded(std::string_view bytes, unsigned codePage)
{
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, 0, bytes.data(), size, text.data(), length);
    return text;
}

} // namespace

LogLines::LogLines(const std::wstring& path, unsigned codePage)
    : m_path(path), m_codePage(codePage),
      m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr))
{
    if (!m_file) {
        throw Failure{L"cannot read " + path, HRESULT_FROM_WIN32(GetLastError())};
    }
}

bool LogLines::Next(LogMessage& message)
{
    while (m_next == m_messages.size()) {
        std::string line;
        if (!ReadLine(line)) {
            return false;
        }
        m_messages.clear();
        m_next = 0;
        TakeApart(line);
    }
    message = std::move(m_messages[m_next++]);
    return true;
}

bool LogLines::ReadLine(std::string& line)
{
    std::size_t searched = m_position;
    for (;;) {
        const std::size_t end = m_buffer.find('\n', searched);
        if (end != std::string::npos) {
            line.assign(m_buffer, m_position, end - m_position);
            m_position = end + 1;
            break;
        }
        if (m_buffer.size() - m_position >= kLongestLine) {
            line.assign(m_buffer, m_position, kLongestLine);
            m_position += kLongestLine;
            break;
        }
        m_buffer.erase(0, m_position);
        m_position = 0;
        searched = m_buffer.size();
        std::array<char, kPiece> piece;
        DWORD read = 0;
        if (!ReadFile(m_file.Get(), piece.data(), static_cast<DWORD>(piece.size()), &read, nullptr)) {
            throw Failure{L"cannot read " + m_path, HRESULT_FROM_WIN32(GetLastError())};
        }
        if (read == 0) {
            if (m_buffer.empty()) {
                return false;
            }
            m_isCut = true;
            line = std::exchange(m_buffer, {});
            break;
        }
        m_buffer.append(piece.data(), read);
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    ++m_line;
    return true;
}

// A line of the file is a time stamp and a message. A message without a line end has the next one's time
// stamp behind it, and of two threads that write at once one may put its time stamp before the other's
// message.
void LogLines::TakeApart(const std::string& line)
{
    const std::string_view text(line);
    std::size_t at = 0;
    bool hasStamp = false;
    do {
        if (IsStamp(text.substr(at))) {
            m_time = TimeOf(text.substr(at, kStamp.size()));
            hasStamp = true;
            at += kStamp.size();
        }
        const std::size_t end = std::min(FindStamp(text, at), text.size());
        if (end > at || (end == text.size() && m_messages.empty())) {
            m_messages.push_back({m_line, m_time, hasStamp, Decoded(text.substr(at, end - at), m_codePage)});
        }
        hasStamp = false;
        at = end;
    } while (at < text.size());
}

std::wstring TimeText(long long time)
{
    const long long units = time * kUnitsPerMillisecond;
    const FILETIME file{static_cast<DWORD>(units & 0xFFFFFFFF), static_cast<DWORD>(units >> 32)};
    SYSTEMTIME parts{};
    FileTimeToSystemTime(&file, &parts);
    wchar_t text[32];
    _snwprintf_s(text, 32, _TRUNCATE, L"%04d-%02d-%02d %02d:%02d:%02d.%03d", parts.wYear, parts.wMonth,
                 parts.wDay, parts.wHour, parts.wMinute, parts.wSecond, parts.wMilliseconds);
    return text;
}
