#include "system/Sandbox.h"

#include "standin/Faults.h"
#include "standin/ModulePath.h"
#include "standin/Settings.h"
#include "standin/Shortcuts.h"
#include "standin/TryStart.h"
#include "standin/store/PackageFiles.h"
#include "support/LogCapture.h"
#include "support/Text.h"

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <stdexcept>

namespace {

constexpr wchar_t programsFolder[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";

// Processes in it end with it.
HANDLE CreateClosingJob()
{
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

// Also those that processes outside the job have started: a window of theirs could come to the front in
// another test.
void EndApplications()
{
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL isOne = Process32FirstW(processes, &entry); isOne; isOne = Process32NextW(processes, &entry)) {
        if (std::wcscmp(entry.szExeFile, L"StandInApp.exe") != 0) {
            continue;
        }
        const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, entry.th32ProcessID);
        if (process) { // else it has just ended
            TerminateProcess(process, 1);
            WaitForSingleObject(process, 5000);
            CloseHandle(process);
        }
    }
    CloseHandle(processes);
}

void CopyOrThrow(const std::wstring& from, const std::wstring& to)
{
    if (!CopyFileW(from.c_str(), to.c_str(), FALSE)) {
        throw std::runtime_error("cannot copy " + test::ToUtf8(from) + " to " + test::ToUtf8(to));
    }
}

// Again until nobody is reading what has to give way.
void MoveOrThrow(const std::wstring& from, const std::wstring& to)
{
    if (!test::WaitUntil(
            [&] { return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE; },
            5000)) {
        throw std::runtime_error("cannot move " + test::ToUtf8(from) + " to " + test::ToUtf8(to));
    }
}

} // namespace

namespace test {

Sandbox::Sandbox() : m_settings(HKEY_LOCAL_MACHINE, kSettingsKey), m_job(CreateClosingJob())
{
    standin::ClearSettings();
    standin::SetText(standin::TextSetting::PackageStore, Packages());
    m_settings.SetDword(L"DebugLog", 1);
    MakeFolder(Local());
    MakeFolder(HostFolder());
}

Sandbox::~Sandbox()
{
    TerminateJobObject(m_job, 1);
    // The folder can only go when nobody uses it any more.
    WaitUntil(
        [this] {
            JOBOBJECT_BASIC_ACCOUNTING_INFORMATION state = {};
            return !QueryInformationJobObject(m_job, JobObjectBasicAccountingInformation, &state,
                                              sizeof state, nullptr) ||
                   state.ActiveProcesses == 0;
        },
        5000);
    CloseHandle(m_job);
    EndApplications();
    EXPECT_EQ(standin::GetFaults(standin::Fault::UseOutsideApartment), 0u)
        << "uses of the platform's objects on threads without an apartment";
    EXPECT_EQ(standin::GetFaults(standin::Fault::ReleaseOutsideApartment), 0u)
        << "releases of the platform's objects on threads without an apartment";
    standin::ClearSettings();
}

std::wstring Sandbox::CommonPrograms() const
{
    return m_folder / L"allusers" + programsFolder;
}

std::wstring Sandbox::UserPrograms() const
{
    return m_folder / L"roaming" + programsFolder;
}

std::wstring Sandbox::CatalogFolder(const std::wstring& base) const
{
    return Local() + L"\\Vel\\QanHelper\\" + base;
}

std::wstring Sandbox::CatalogFile(const std::wstring& base) const
{
    return CatalogFolder(base) + L"\\AppNameList.xml";
}

std::wstring Sandbox::TurnName() const
{
    std::wstring name = L"QanHelperSave_" + CatalogFile();
    std::replace(name.begin(), name.end(), L'\\', L'/');
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

std::wstring Sandbox::LogFile(const std::wstring& base) const
{
    return CatalogFolder(base) + L"\\QanHelperLog.txt";
}

std::vector<std::string> Sandbox::Log(std::size_t offset) const
{
    if (!Exists(LogFile())) {
        return {};
    }
    return LogLines(WithPlaceholders(WithoutTimeStamps(ReadFileBytes(LogFile()), offset)));
}

std::size_t Sandbox::LogLength() const
{
    return Exists(LogFile()) ? ReadFileBytes(LogFile()).size() : 0;
}

void Sandbox::WaitForLogLine(const std::string& line, std::size_t offset) const
{
    const std::string whole = "]" + line + "\r\n";
    const bool found = WaitUntil(
        [&] {
            return Exists(LogFile()) && ReadFileBytes(LogFile()).find(whole, offset) != std::string::npos;
        },
        20000);
    if (!found) {
        throw std::runtime_error("the log has no line " + line);
    }
}

std::string Sandbox::WithPlaceholders(std::string text) const
{
    for (const wchar_t* name : {L"local", L"roaming", L"allusers", L"host"}) {
        ReplaceAll(text, ToUtf8(m_folder / name), "<" + ToUtf8(name) + ">");
    }
    return text;
}

void Sandbox::AddApplication(const std::wstring& relativePath) const
{
    std::wstring name = relativePath.substr(relativePath.rfind(L'\\') + 1);
    const std::wstring extension = name.substr(name.size() - 4);
    name.resize(name.size() - 4);
    std::wstring program = BuildFolder() + L"\\StandInApp.exe";
    std::wstring arguments = L"\"" + name + L"\"";
    if (extension == L".url") {
        // It cannot hold arguments: the window bears the program's name.
        const std::wstring copy = Folder() + L"\\" + name + L".exe";
        CopyOrThrow(program, copy);
        program = copy;
        arguments.clear();
    }
    standin::WriteShortcut(CommonPrograms() + L"\\" + relativePath, program, arguments);
}

void Sandbox::AddSamplePackage(const std::wstring& name) const
{
    standin::CopyPackage(SamplePackages() + L"\\" + name, Packages() + L"\\" + name);
}

void Sandbox::WritePackage(const std::wstring& name, std::string_view manifest, std::string_view ini) const
{
    const std::wstring folder = Packages() + L"\\" + name;
    const std::wstring complete = Folder() + L"\\package in the making";
    standin::WritePackage(complete, manifest, ini);
    if (!Exists(folder)) {
        MakeFolder(Packages());
        MoveOrThrow(complete, folder);
        return;
    }
    for (const wchar_t* file : {standin::packageIniName, standin::manifestFileName}) {
        // While a file gets another one's name, who opens it is told that it is in use: one that stays the
        // same is left alone.
        const std::wstring from = complete + L"\\" + file;
        const std::wstring to = folder + L"\\" + file;
        if (!Exists(to) || ReadFileBytes(from) != ReadFileBytes(to)) {
            MoveOrThrow(from, to);
        }
    }
}

void Sandbox::RemovePackage(const std::wstring& name) const
{
    const std::wstring removed = Folder() + L"\\package on its way out";
    MoveOrThrow(Packages() + L"\\" + name, removed);
    // Who began to read it before may still have its files open.
    if (!WaitUntil([&] { return standin::DeletePackage(removed); }, 5000)) {
        throw std::runtime_error("cannot delete the package " + ToUtf8(name));
    }
}

void Sandbox::UseSamplePackages() const
{
    standin::SetText(standin::TextSetting::PackageStore, SamplePackages());
}

std::wstring Sandbox::AddHost(const std::wstring& fileName) const
{
    const std::wstring library = HostFolder() + L"\\QanHelper.dll";
    if (!Exists(library)) {
        CopyOrThrow(BuildFolder() + L"\\QanHelper.dll", library);
    }
    const std::wstring path = HostFolder() + L"\\" + fileName;
    if (!Exists(path)) {
        CopyOrThrow(BuildFolder() + L"\\TestHost.exe", path);
    }
    return path;
}

StartedProcess Sandbox::Start(const std::wstring& program, HANDLE input, HANDLE output)
{
    std::wstring commandLine = L"\"" + program + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    const bool hasPipes = input && output;
    if (hasPipes) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input;
        startup.hStdOutput = output;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    }
    PROCESS_INFORMATION process = {};
    const BOOL isStarted = standin::TryStart([&] {
        return CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, hasPipes,
                              CREATE_SUSPENDED, nullptr, Folder().c_str(), &startup, &process);
    });
    if (!isStarted) {
        const DWORD error = GetLastError();
        throw std::runtime_error("cannot start " + ToUtf8(program) + ", error " + std::to_string(error));
    }
    AssignProcessToJobObject(m_job, process.hProcess);
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    return {process.hProcess, process.dwProcessId};
}

std::wstring SamplePackages()
{
    return BuildFolder() + L"\\standin-packages";
}

std::wstring BuildFolder()
{
    return standin::ModuleFolder();
}

bool IsFirstPassRunning(const std::wstring& base)
{
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, (L"QanHelper_" + base).c_str());
    if (mutex) {
        CloseHandle(mutex);
    } else if (GetLastError() != ERROR_FILE_NOT_FOUND) {
        throw std::runtime_error("the mutex of the first pass cannot be opened: " +
                                 std::to_string(GetLastError()));
    }
    return mutex != nullptr;
}

void WaitForFirstPass(const std::wstring& base)
{
    if (!WaitUntil([&] { return !IsFirstPassRunning(base); }, 20000)) {
        throw std::runtime_error("the first refresh pass does not end");
    }
}

} // namespace test
