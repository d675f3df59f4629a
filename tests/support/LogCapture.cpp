#include "support/LogCapture.h"

#include "common/DiagnosticLog.h"
#include "standin/ModulePath.h"
#include "support/Text.h"

#include <windows.h>

#include <regex>
#include <stdexcept>

namespace {

std::wstring HostName()
{
    const std::wstring path = standin::ModulePath();
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    return name.substr(0, name.find(L'.'));
}

} // namespace

namespace test {

std::string WithoutTimeStamps(std::string_view log)
{
    static const std::regex stamp(R"(\[\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2}\.\d{3}\])");
    return std::regex_replace(std::string(log), stamp, "");
}

std::vector<std::string> LogLines(std::string_view log)
{
    std::vector<std::string> lines = Split(log, "\r\n");
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
