// The C++ example, which is linked with the DLL, as a user runs it.
#include "wrapper/WrapperTest.h"

#include "standin/Settings.h"
#include "standin/TryStart.h"

namespace {

using testing::MatchesRegex;

class CppExample : public test::WrapperTest
{
protected:
    // Its exit code; what it printed stands in `printed`. It has the environment of this process.
    DWORD Run(const std::wstring& arguments)
    {
        const std::wstring file = sandbox.Folder() + L"\\printed.txt";
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        const HANDLE output =
            CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
        std::wstring commandLine = L"\"" + test::BuildFolder() + L"\\ExampleHostCpp.exe\" " + arguments;
        PROCESS_INFORMATION process = {};
        DWORD code = STILL_ACTIVE;
        const BOOL isStarted = standin::TryStart([&] {
            return CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                  &startup, &process);
        });
        if (isStarted) {
            WaitForSingleObject(process.hProcess, 60000);
            GetExitCodeProcess(process.hProcess, &code);
            TerminateProcess(process.hProcess, 1);
            CloseHandle(process.hThread);
            CloseHandle(process.hProcess);
        }
        CloseHandle(output);
        printed = test::ReadFileBytes(file);
        return code;
    }

    std::string printed;
};

TEST_F(CppExample, StartsWhatItIsTold)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    sandbox.AddApplication(L"Mail.lnk");
    sandbox.AddApplication(L"Gmail.lnk");
    sandbox.AddApplication(L"Internet Explorer.lnk");
    desktop = std::make_unique<test::DesktopProcess>(sandbox);
    test::PutOnClipboard(L"mine");
    EXPECT_EQ(Run(L"--wait Mail --browser --activate Vel.Calendar_1vel7kq0n3rta!Calendar"), 0u);
    EXPECT_THAT(printed,
                MatchesRegex("Mail: started: Mail, process .*\r\n"
                             "Internet Explorer: started: Internet Explorer, process .*\r\n"
                             "Vel.Calendar_1vel7kq0n3rta!Calendar: started: Calendar, process .*\r\n"));
    EXPECT_EQ(desktop->Count("query\t\"Mail\" NOT(\"Gmail\")"), 1u);
    EXPECT_EQ(test::ClipboardText(), L"mine");
}

TEST_F(CppExample, TellsOfFailures)
{
    desktop = std::make_unique<test::DesktopProcess>(sandbox);
    EXPECT_EQ(Run(L"--activate Nobody!App"), 1u);
    EXPECT_EQ(printed,
              "Nobody!App: E_APPLICATION_NOT_REGISTERED (0x80270254): there is no such application for this "
              "user\r\n");
    standin::SetSetting(standin::Setting::FailCreate, static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    EXPECT_EQ(Run(L"Mail"), 1u);
    EXPECT_EQ(printed,
              "QanhInitialize: REGDB_E_CLASSNOTREG (0x80040154): the system does not have the class that is "
              "needed\r\n");
}

} // namespace
