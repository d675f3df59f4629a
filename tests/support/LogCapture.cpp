#include "support/LogCapture.h"

#include "common/DiagnosticLog.h"
#include "standin/ModulePath.h"
#include "support/Text.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace {

constexpr std::string_view lineEnd = "\r\n";

std::wstring HostName()
{
    const std::wstring path = standin::ModulePath();
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    return name.substr(0, name.find(L'.'));
}

} // namespace

namespace test {

std::string WithoutTimeStamps(std::string_view log, std::size_t offset)
{
    static const std::regex stamp(R"(\[\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2}\.\d{3}\])");
    std::string text;
    // A stamp and its line are two writes: of two threads' the stamps may both come first.
    std::ptrdiff_t ahead = 0;
    for (std::size_t begin = 0; begin < log.size();) {
        const std::size_t next = log.find(lineEnd, begin);
        const std::size_t end = next == std::string_view::npos ? log.size() : next + lineEnd.size();
        const std::string line(log.substr(begin, end - begin));
        const std::sregex_iterator stamps(line.begin(), line.end(), stamp,
                                          std::regex_constants::match_continuous);
        ahead += std::distance(stamps, {}) - 1;
        if (ahead < 0) {
            text += begin >= offset ? "<no stamp>" : "";
            ahead = 0;
        }
        if (end > offset) {
            // Further ones stand behind what a line without an end has left.
            text += std::regex_replace(line.substr(std::max(begin, offset) - begin), stamp, "");
        }
        begin = end;
    }
    return text;
}

std::vector<std::string> LogLines(std::string_view log)
{
    std::vector<std::string> lines = Split(log, lineEnd);
    if (lines.back().empty()) {
        lines.pop_back();
    } else {
        lines.back() += "<no end>";
    }
    return lines;
}

LogCapture::LogCapture() : m_environment(L"LOCALAPPDATA", m_folder.Path().c_str())
{
    const std::wstring folder = m_folder / (L"Vel\\QanHelper\\" + HostName());
    MakeFolder(folder);
    m_file = folder + L"\\QanHelperLog.txt";
    DiagnosticLog::SetEnabled(true);
    if (DiagnosticLog::ComposePath() != 1) {
        throw std::runtime_error("the path of the log cannot be composed");
    }
}

LogCapture::~LogCapture()
{
    DiagnosticLog::SetEnabled(false);
}

std::string LogCapture::Text() const
{
    return Exists(m_file) ? WithoutTimeStamps(ReadFileBytes(m_file)) : std::string();
}

std::vector<std::string> LogCapture::Lines() const
{
    return LogLines(Text());
}

void LogCapture::Clear()
{
    DeleteFileW(m_file.c_str());
}

} // namespace test
