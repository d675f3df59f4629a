#pragma once

#include "support/TemporaryFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

// The log from the offset on without its time stamps, which have the form "[2014/03/01 09:05:07.042]". Before
// a line that has none, which may stand before another thread's line, stands "<no stamp>". The rest is as
// written, line ends ("\r\n") included.
[[nodiscard]] std::string WithoutTimeStamps(std::string_view log, std::size_t offset = 0);

// A log's lines, without their ends; behind a last one that has no end stands "<no end>".
[[nodiscard]] std::vector<std::string> LogLines(std::string_view log);

// Switches the library's log on, into a folder of its own, until the end of the scope. LOCALAPPDATA points
// there meanwhile.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // What was logged since the start or the last Clear(), without time stamps: one text with "\r\n" line
    // ends.
    [[nodiscard]] std::string Text() const;
    // The same as lines (LogLines).
    [[nodiscard]] std::vector<std::string> Lines() const;
    void Clear();

    [[nodiscard]] const std::wstring& File() const { return m_file; }
    // The value of LOCALAPPDATA.
    [[nodiscard]] const std::wstring& LocalAppData() const { return m_folder.Path(); }

private:
    TemporaryFolder m_folder;
    ScopedEnvironment m_environment;
    std::wstring m_file;
};

} // namespace test
