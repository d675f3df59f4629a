// qanh activate: a Store application is started by its ID.

#include "system/DesktopProcess.h"
#include "tools/driving/DrivingTest.h"

namespace {

using namespace test;

constexpr char kStarts[] =
    "qanh: has the system's activation manager start \"Vel.Calendar_1vel7kq0n3rta!Calendar\"; presses no key\n";

class ToolActivate : public DrivingTest
{
protected:
    ToolActivate() { sandbox.AddSamplePackage(L"Vel.Calendar"); }

    ToolResult Activate(const std::wstring& options = L"") const
    {
        return Run(L"activate Vel.Calendar_1vel7kq0n3rta!Calendar " + options);
    }
};

TEST_F(ToolActivate, StartsAStoreApplication)
{
    const DesktopProcess desktop(sandbox);
    EXPECT_EQ(Activate(), (ToolResult{"Started\n", kStarts, 0}));
    EXPECT_EQ(desktop.Count("activated\tVel.Calendar_1vel7kq0n3rta!Calendar\t(null)"), 1u);
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh"))) << "the library is not brought up";
}

TEST_F(ToolActivate, HandsArgumentsOn)
{
    const DesktopProcess desktop(sandbox);
    EXPECT_EQ(
        Activate(L"--arguments \"today now\" --json"),
        (ToolResult{"{\n"
                    "  \"ID\": \"Vel.Calendar_1vel7kq0n3rta!Calendar\",\n"
                    "  \"Result\": \"0x00000000\",\n"
                    "  \"IsStarted\": true\n"
                    "}\n",
                    "qanh: has the system's activation manager start "
                    "\"Vel.Calendar_1vel7kq0n3rta!Calendar\" with the arguments \"today now\"; presses no "
                    "key\n",
                    0}));
    EXPECT_EQ(desktop.Count("activated\tVel.Calendar_1vel7kq0n3rta!Calendar\ttoday now"), 1u);
}

TEST_F(ToolActivate, TellsWhyNothingWasStarted)
{
    const DesktopProcess desktop(sandbox);
    standin::SetSetting(standin::Setting::FailActivation, 0x80270254);
    EXPECT_EQ(Activate(),
              (ToolResult{"",
                          std::string(kStarts) +
                              "qanh: \"Vel.Calendar_1vel7kq0n3rta!Calendar\" was not started: 0x80270254 "
                              "E_APPLICATION_NOT_REGISTERED (there is no such application for this user)\n",
                          3}));
}

TEST_F(ToolActivate, OnlyTellsWhatItWouldDo)
{
    EXPECT_EQ(Activate(L"--dry-run"), (ToolResult{std::string(kStarts).substr(6), "", 0}));
}

TEST_F(ToolActivate, RefusesWrongUse)
{
    for (const wchar_t* commandLine : {L"activate", L"activate \"\"", L"activate a b",
                                       L"activate a --mode show", L"activate a --host b"}) {
        EXPECT_EQ(Run(commandLine).status, 2u) << ToUtf8(commandLine);
    }
}

} // namespace
