// The lines of the diagnostic log.

#include "Library.h"
#include "Measures.h"
#include "common/DiagnosticLog.h"
#include "support/TemporaryFolder.h"

#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

constexpr wchar_t kName[] = L"CQanhPackageManager::RefreshDesktopApps";
constexpr wchar_t kArgument[] = L"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs";
constexpr std::string_view kTimeStamp = "[2014/03/01 09:05:07.042]";
constexpr std::string_view kLine =
    "CQanhPackageManager::RefreshDesktopApps(C:\\ProgramData\\Microsoft\\Windows\\"
    "Start Menu\\Programs) IN\r\n";

constexpr std::size_t kLines = 200;
constexpr std::size_t kSilentLines = 100000;

// The log on, into a folder of its own.
class LogOn
{
public:
    LogOn() : m_environment(L"LOCALAPPDATA", m_folder.Path().c_str())
    {
        const std::wstring folder = m_folder / (L"Vel\\QanHelper\\" + HostName());
        test::MakeFolder(folder);
        m_file = folder + L"\\QanHelperLog.txt";
        DiagnosticLog::SetEnabled(true);
        if (DiagnosticLog::ComposePath() != 1) {
            throw std::runtime_error("no path of the log");
        }
    }
    ~LogOn() { DiagnosticLog::SetEnabled(false); }
    LogOn(const LogOn&) = delete;
    LogOn& operator=(const LogOn&) = delete;

    [[nodiscard]] const std::wstring& File() const { return m_file; }
    [[nodiscard]] std::wstring OtherFile() const { return m_folder / L"bare.txt"; }

private:
    test::TemporaryFolder m_folder;
    test::ScopedEnvironment m_environment;
    std::wstring m_file;
};

void AppendBare(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, kTimeStamp.data(), static_cast<DWORD>(kTimeStamp.size()), &written, nullptr);
    WriteFile(file, kLine.data(), static_cast<DWORD>(kLine.size()), &written, nullptr);
    CloseHandle(file);
    if (written != kLine.size()) {
        throw std::runtime_error("a line cannot be written");
    }
}

} // namespace

void MeasureLog(Session& session)
{
    const LogOn log;
    session.Compare("log", kLines,
                    {{kOurs,
                      [&] {
                          for (std::size_t line = 0; line < kLines; ++line) {
                              LogIn(kName, kArgument);
                          }
                      },
                      [&] { DeleteFileW(log.File().c_str()); }},
                     {"bare appends",
                      [&] {
                          for (std::size_t line = 0; line < kLines; ++line) {
                              AppendBare(log.OtherFile());
                          }
                      },
                      [&] { DeleteFileW(log.OtherFile().c_str()); }}},
                    kLines);
}

void MeasureSilentLog(Session& session)
{
    session.Compare("log-off", kSilentLines,
                    {{kOurs,
                      [&] {
                          for (std::size_t line = 0; line < kSilentLines; ++line) {
                              LogIn(kName, kArgument);
                          }
                      }}},
                    kSilentLines);
}

} // namespace bench
