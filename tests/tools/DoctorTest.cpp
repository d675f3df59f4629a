// What the tool says of the machine: settings, files and objects of a host.

#include "QanHelper.h"
#include "common/Reg.h"
#include "support/Registry.h"
#include "tools/ToolTest.h"

#include <objbase.h>
#include <shobjidl.h>

namespace {

using namespace test;

// The lines of an answer that begin so, each with the advice below it.
std::vector<std::string> LinesOf(const std::string& output, const std::string& subject)
{
    std::vector<std::string> lines;
    bool isInside = false;
    for (const std::string& line : Split(output, "\n")) {
        if (line.rfind("\t\t", 0) == 0) {
            if (isInside) {
                lines.back() += "\n" + line;
            }
            continue;
        }
        isInside = line.find("\t" + subject + "\t") != std::string::npos;
        if (isInside) {
            lines.push_back(line);
        }
    }
    return lines;
}

class ToolDoctor : public Test
{
protected:
    static std::vector<std::string> Ask(const std::string& subject, std::vector<std::wstring> options = {})
    {
        options.insert(options.begin(), L"doctor");
        const ToolResult result = RunTool(options);
        EXPECT_EQ(result.problems, "");
        EXPECT_LE(result.status, 1u);
        EXPECT_EQ(result.status == 1, result.output.find("problem\t") != std::string::npos);
        return LinesOf(result.output, subject);
    }
    std::vector<std::string> AskOfHost(const std::string& subject) const
    {
        return Ask(subject, {L"--host", L"Launcher"});
    }

    const TemporaryFolder m_folder;
    const ScopedEnvironment m_localAppData{L"LOCALAPPDATA", m_folder.Path().c_str()};
    ScopedKey m_settings{HKEY_LOCAL_MACHINE, kSettingsKey};
};

class ToolDoctorOfFiles : public ToolDoctor
{
protected:
    ToolDoctorOfFiles() { MakeFolder(m_folder / L"Vel\\QanHelper\\Launcher"); }

    const std::wstring m_catalogue = m_folder / L"Vel\\QanHelper\\Launcher\\AppNameList.xml";
    const std::wstring m_log = m_folder / L"Vel\\QanHelper\\Launcher\\QanHelperLog.txt";
};

constexpr char kMail[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<Applications><DesktopApps><DesktopApp DisplayName="Mail" LnkFileName="C:\1.lnk"/></DesktopApps>)";

TEST_F(ToolDoctor, TellsWhatEachSettingIsAndWhy)
{
    EXPECT_THAT(Ask("setting DebugLog"), ElementsAre("ok\tsetting DebugLog\t0 (absent: the default)"));
    EXPECT_THAT(Ask("setting RefreshInterval"),
                ElementsAre("ok\tsetting RefreshInterval\t720 (absent: the default)"));
    m_settings.SetDword(L"RefreshInterval", 60);
    EXPECT_THAT(Ask("setting RefreshInterval"), ElementsAre("ok\tsetting RefreshInterval\t60 (set)"));
    m_settings.SetText(L"RefreshInterval", L"60");
    EXPECT_THAT(
        Ask("setting RefreshInterval"),
        ElementsAre(StartsWith("warning\tsetting RefreshInterval\t720 (is no REG_DWORD and does not count: "
                               "the default)\n\t\twrite it as a REG_DWORD")));
    m_settings.SetDword(L"ManifestReaderSetting", 7);
    EXPECT_THAT(
        Ask("setting ManifestReaderSetting"),
        ElementsAre(StartsWith("warning\tsetting ManifestReaderSetting\t1 (is 7, which counts as 1)")));
}

TEST_F(ToolDoctor, WarnsOfSettingsThatDoHarm)
{
    const std::tuple<const wchar_t*, DWORD, const char*> settings[] = {
        {L"DebugLog", 1, "warning"},
        {L"ManifestReaderSetting", 0, "warning"},
        {L"RefreshInterval", 0, "problem"},
        {L"RefreshInterval", 9, "warning"},
        {L"RefreshInterval", 10, "ok"},
        {L"RefreshInterval", 71582, "ok"},
        {L"RefreshInterval", 71583, "problem"},
        {L"ClearClipboardWaitTime", 499, "warning"},
        {L"ClearClipboardWaitTime", 500, "ok"},
        {L"ClearClipboardWaitTime", 5000, "ok"},
        {L"ClearClipboardWaitTime", 5001, "warning"},
        {L"ClearClipboardWaitTime", 4294967295, "problem"},
    };
    for (const auto& [name, value, level] : settings) {
        m_settings.SetDword(name, value);
        EXPECT_THAT(Ask("setting " + ToUtf8(name)),
                    ElementsAre(StartsWith(std::string(level) + "\tsetting " + ToUtf8(name) + "\t" +
                                           std::to_string(value))));
        m_settings.DeleteValue(name);
    }
    m_settings.SetDword(L"RefreshInterval", 71583);
    EXPECT_THAT(Ask("setting RefreshInterval"), ElementsAre(HasSubstr("which makes 12704 milliseconds")));
}

// The tool does not link what the library reads them with, since that can write too.
TEST_F(ToolDoctor, SeesTheSettingsAsTheLibraryDoes)
{
    for (const DWORD value : {0u, 1u, 2u, 4711u, 0xFFFFFFFFu}) {
        for (const wchar_t* name : {L"DebugLog", L"ManifestReaderSetting", L"ClearClipboardWaitTime"}) {
            m_settings.SetDword(name, value);
        }
        const auto says = [](const std::string& name, DWORD effective) {
            EXPECT_THAT(Ask("setting " + name),
                        ElementsAre(HasSubstr("\t" + std::to_string(effective) + " (")));
        };
        EXPECT_THAT(Ask("setting DebugLog"),
                    ElementsAre(HasSubstr(CQanhReg::IsDebugLogOn() ? "the log is on" : "\t0 (set)")));
        says("ManifestReaderSetting", CQanhReg::GetManifestReaderSetting());
        says("ClearClipboardWaitTime", CQanhReg::GetClearClipboardWaitTime());
    }
}

TEST_F(ToolDoctor, TellsOfTheSystem)
{
    EXPECT_THAT(Ask("system"), ElementsAre(HasSubstr("Windows ")));
    EXPECT_THAT(Ask("elevation"), ElementsAre(HasSubstr("elevated")));
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IUnknown* visibility = nullptr;
    const HRESULT hr = CoCreateInstance(CLSID_AppVisibility, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                        reinterpret_cast<void**>(&visibility));
    if (visibility) {
        visibility->Release();
    }
    CoUninitialize();
    EXPECT_THAT(Ask("search pane"), ElementsAre(StartsWith(SUCCEEDED(hr) ? "ok\t" : "problem\t")));
}

TEST_F(ToolDoctor, SaysNothingOfAHostThatIsNotNamed)
{
    for (const char* subject : {"catalogue", "log", "processes", "first refresh"}) {
        EXPECT_THAT(Ask(subject), IsEmpty());
    }
}

TEST_F(ToolDoctor, MissesTheFilesOfAHostThatNeverRan)
{
    EXPECT_THAT(AskOfHost("catalogue"), ElementsAre(StartsWith("problem\tcatalogue\tthere is none: ")));
    EXPECT_THAT(AskOfHost("log"), ElementsAre(StartsWith("ok\tlog\tthere is none: ")));
    EXPECT_THAT(AskOfHost("processes"), ElementsAre("ok\tprocesses\tno process of Launcher runs"));
    EXPECT_FALSE(Exists(m_folder / L"Vel")); // it made none
    EXPECT_THAT(Ask("preset", {L"--host", m_folder / L"Launcher.exe"}),
                ElementsAre(StartsWith("warning\tpreset\tthere is none: ")));
}

TEST_F(ToolDoctorOfFiles, TellsWhichHostsThereAre)
{
    EXPECT_THAT(Ask("hosts"), ElementsAre("ok\thosts\tnone has a catalogue of this user"));
    WriteFileBytes(m_catalogue, kMail);
    MakeFolder(m_folder / L"Vel\\QanHelper\\メール");
    WriteFileBytes(m_folder / L"Vel\\QanHelper\\メール\\AppNameList.xml", kMail);
    MakeFolder(m_folder / L"Vel\\QanHelper\\Another"); // without a catalogue
    EXPECT_THAT(Ask("hosts"),
                ElementsAre(AnyOf("ok\thosts\twith a catalogue of this user: Launcher, メール",
                                  "ok\thosts\twith a catalogue of this user: メール, Launcher")));
    EXPECT_THAT(AskOfHost("hosts"), IsEmpty());
    const ScopedEnvironment noFolder(L"LOCALAPPDATA", nullptr);
    EXPECT_THAT(Ask("hosts"), ElementsAre(StartsWith("problem\thosts\tcannot tell where the catalogues are: "
                                                     "LOCALAPPDATA is not set\n\t\t")));
}

TEST_F(ToolDoctorOfFiles, TellsOfTheCatalogue)
{
    WriteFileBytes(m_catalogue, kMail);
    EXPECT_THAT(
        AskOfHost("catalogue"),
        ElementsAre(MatchesRegex("ok\tcatalogue\t.*AppNameList.xml, 135 bytes, written \\d+ seconds? ago, "
                                 "1 application")));
    EXPECT_THAT(Ask("catalogue", {L"--catalogue", m_catalogue}), ElementsAre(StartsWith("ok\t")));
}

TEST_F(ToolDoctorOfFiles, WarnsOfACatalogueThatIsOld)
{
    WriteFileBytes(m_catalogue, kMail);
    const HANDLE file =
        CreateFileW(m_catalogue.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    ULARGE_INTEGER units{};
    units.LowPart = time.dwLowDateTime;
    units.HighPart = time.dwHighDateTime;
    units.QuadPart -= 40ULL * 3600 * 10000000; // longer ago than a day and the 12 hours between two passes
    time = {units.LowPart, units.HighPart};
    SetFileTime(file, nullptr, nullptr, &time);
    CloseHandle(file);
    EXPECT_THAT(AskOfHost("catalogue"),
                ElementsAre(AllOf(StartsWith("warning\t"), HasSubstr("written 1 day ago"))));
    m_settings.SetDword(L"RefreshInterval", 1440);
    EXPECT_THAT(AskOfHost("catalogue"), ElementsAre(StartsWith("ok\t")));
}

TEST_F(ToolDoctorOfFiles, SeesWhatIsWrongWithTheCatalogue)
{
    WriteFileBytes(m_catalogue, "<Applications><DesktopApps></Applications>");
    EXPECT_THAT(AskOfHost("catalogue"),
                ElementsAre(AllOf(StartsWith("problem\t"), HasSubstr("cannot be read"))));
    for (const char* cut : {"<Applications><DesktopApps><DesktopApp DisplayName=\"Mail\" "
                            "LnkFileName=\"C:\\1.lnk\"/>",
                            "not xml", ""}) {
        WriteFileBytes(m_catalogue, cut);
        EXPECT_THAT(
            AskOfHost("catalogue"),
            ElementsAre(AllOf(StartsWith("problem\t"), HasSubstr("cannot be read to its end: 0xC00CEE"))));
    }
    WriteFileBytes(m_catalogue, "<Applications><DesktopApps/>");
    EXPECT_THAT(AskOfHost("catalogue"),
                ElementsAre(AllOf(StartsWith("problem\t"), HasSubstr("without any application"))));
    std::string text = kMail;
    ReplaceAll(text, "DisplayName=", "NeedReserve=\"false\" DisplayName=");
    WriteFileBytes(m_catalogue, text);
    EXPECT_THAT(AskOfHost("catalogue"),
                ElementsAre(StartsWith("ok\t"), StartsWith("warning\tcatalogue\tproblems in the file: 1")));
    WriteFileBytes(m_catalogue + L".bak", kMail);
    EXPECT_THAT(AskOfHost("catalogue"), Contains(StartsWith("warning\tcatalogue\tthere is a rollback file")));
}

TEST_F(ToolDoctorOfFiles, TellsOfTheLog)
{
    WriteFileBytes(m_log, "[2014/03/01 09:00:00.000]QanhReleaseString IN\r\n");
    EXPECT_THAT(AskOfHost("log"),
                ElementsAre(AllOf(StartsWith("ok\t"), HasSubstr("47 bytes"), HasSubstr("it is off"))));
    m_settings.SetDword(L"DebugLog", 1);
    EXPECT_THAT(AskOfHost("log"), ElementsAre(AllOf(StartsWith("ok\t"), HasSubstr("it is on"))));
    DeleteFileW(m_log.c_str());
    EXPECT_THAT(AskOfHost("log"), ElementsAre(StartsWith("warning\tlog\tthere is none")));
}

TEST_F(ToolDoctor, SeesTheObjectsAndLeavesThemAlone)
{
    EXPECT_THAT(AskOfHost("first refresh"), ElementsAre(StartsWith("ok\tfirst refresh\tnobody is in it")));
    EXPECT_THAT(AskOfHost("turn at the file"), ElementsAre(StartsWith("ok\tturn at the file\tnobody")));
    std::wstring turn = L"QanHelperSave_" + (m_folder / L"Vel\\QanHelper\\Launcher\\AppNameList.xml");
    std::replace(turn.begin(), turn.end(), L'\\', L'/');
    CharUpperBuffW(turn.data(), static_cast<DWORD>(turn.size()));
    const HANDLE turnMutex = CreateMutexW(nullptr, FALSE, turn.c_str());
    const HANDLE instance = CreateMutexW(nullptr, FALSE, L"QanHelper_Launcher");
    EXPECT_THAT(AskOfHost("first refresh"), ElementsAre(AllOf(StartsWith("problem\tfirst refresh\t"),
                                                              HasSubstr("no process of the host runs"))));
    EXPECT_THAT(AskOfHost("turn at the file"), ElementsAre(HasSubstr("just now")));
    CloseHandle(instance);
    CloseHandle(turnMutex);
    EXPECT_THAT(AskOfHost("first refresh"), ElementsAre(StartsWith("ok\tfirst refresh\tnobody is in it")));
}

// This program is a process like a host.
TEST_F(ToolDoctor, SeesTheProcessesOfTheHost)
{
    const std::string number = std::to_string(GetCurrentProcessId());
    const auto ask = [&number] { return Ask("process " + number, {L"--host", L"tool_tests"}); };
    EXPECT_THAT(ask(), ElementsAre(HasSubstr("does not refresh")));
    const HANDLE exitEvent = CreateEventW(
        nullptr, TRUE, FALSE, (L"Local\\PYX_Event_Exit_RefreshThread" + FromUtf8(number)).c_str());
    EXPECT_THAT(ask(), ElementsAre(HasSubstr("refreshes the catalogue")));
    CloseHandle(exitEvent);
    const HANDLE instance = CreateMutexW(nullptr, FALSE, L"QanHelper_tool_tests");
    EXPECT_THAT(Ask("first refresh", {L"--host", L"tool_tests"}),
                ElementsAre(StartsWith("ok\tfirst refresh\ta process is in it")));
    CloseHandle(instance);
}

TEST_F(ToolDoctor, DoesNotTakeItselfForTheHost)
{
    EXPECT_THAT(Ask("processes", {L"--host", L"qanh"}),
                ElementsAre("ok\tprocesses\tno process of qanh runs"));
}

TEST_F(ToolDoctor, IsJsonWhenAskedFor)
{
    const ToolResult result = RunTool({L"doctor", L"--json"});
    EXPECT_THAT(result.output, StartsWith("{\n  \"Diagnoses\": [\n    {\n      \"Level\": \""));
    EXPECT_THAT(result.output,
                HasSubstr("\"Subject\": \"setting DebugLog\",\n      \"Text\": \"0 (absent: the "
                          "default)\",\n      \"Advice\": \"\""));
}

TEST_F(ToolDoctor, TakesNoName)
{
    EXPECT_EQ(RunTool({L"doctor", L"Launcher"}).status, 2u);
}

} // namespace
