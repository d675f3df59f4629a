#pragma once

#include "common/UniqueHandle.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A message of the diagnostic log.
struct LogMessage
{
    std::size_t line = 0;          // of the file, counted from 1
    std::optional<long long> time; // local time in milliseconds; none when no time stamp stands before it
    bool hasStamp = false;         // it has a time stamp of its own
    std::wstring text;
};

// The messages of a log, one after the other, read piece by piece: logs grow large. The file may be written
// meanwhile. Two lines that were written into each other come as two messages.
class LogLines
{
public:
    // The code page is that of the log's text. Throws Failure when the file cannot be opened.
    LogLines(const std::wstring& path, unsigned codePage);

    // The next message; false behind the last one. Throws Failure when the file cannot be read.
    [[nodiscard]] bool Next(LogMessage& message);

    // To be asked behind the last one: its line has no end, since it was cut or is still being written.
    [[nodiscard]] bool IsCut() const noexcept { return m_isCut; }

private:
    [[nodiscard]] bool ReadLine(std::string& line);
    void TakeApart(const std::string& line);

    const std::wstring m_path;
    const unsigned m_codePage;
    UniqueFile m_file;
    std::string m_buffer;
    std::size_t m_position = 0; // in the buffer
    std::size_t m_line = 0;
    bool m_isCut = false;
    std::optional<long long> m_time; // of the last time stamp
    std::vector<LogMessage> m_messages;
    std::size_t m_next = 0; // of the messages
};

// A time of the log: "2014-03-01 09:05:07.042".
[[nodiscard]] std::wstring TimeText(long long time);
