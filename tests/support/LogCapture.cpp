#include "support/LogCapture.h"

#include "common/DiagnosticLog.h"
#include "standin/ModulePath.h"
#include "support/Text.h"

#include <windows.h>

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
    for (std::size_t begin = offset; begin < log.size();) {
        const std::size_t next = log.find(lineEnd, begin);
        const std::size_t end = next == std::string_view::npos ? log.size() : next + lineEnd.size();
        const std::string line(log.substr(begin, end - begin));
        const bool isBeginning = begin == 0 || log.substr(0, begin).ends_with(lineEnd);
        if (isBeginning && !std::regex_search(line, stamp, std::regex_constants::match_continuous)) {
            text += "<no stamp>";
        }
        // Further ones stand behind what a line without an end has left.
        text += std::regex_replace(line, stamp, "");
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
