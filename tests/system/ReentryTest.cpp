// The host's own window owns the clipboard when a launch empties it: the system calls the window's procedure
// in the middle of the launch, and from there the host calls the library again.
#include "system/LaunchTest.h"

namespace {

class Reentry : public test::LaunchTest
{
protected:
    Reentry() { sandbox.AddSamplePackage(L"Vel.Calendar"); }

    // A launch of "Mail" from within which the commands are called; the answers to these.
    std::string LaunchMailAnd(const std::string& commands)
    {
        const std::string answers =
            host->Command("re-enter\t" + commands + "\tinto\tsearch\t0\t1\tMail", 30000);
        EXPECT_EQ(desktop->Started(), "Mail");
        EXPECT_EQ(desktop->Count("query\t\"Mail\" NOT(\"Gmail\")"), 1u) << "the launch lost its query";
        return answers;
    }
};

TEST_F(Reentry, QuestionsAndActivationsInTheMiddleOfALaunch)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(
        LaunchMailAnd("installed\tVel.Calendar_1vel7kq0n3rta"
                      "\tand\tinstalled-by-id\tNobody.App_0123456789abc!App"
                      "\tand\tdisplay-name\tVel.Calendar_1vel7kq0n3rta"
                      "\tand\tactivate\tNobody.App_0123456789abc!App\tx"
                      "\tand\trelease\tx"),
        "0x00000000\t1 and 0x00000000\t0 and 0x00000000\tCalendar and 0x80270254 and ok and 0x00000000");
}

TEST_F(Reentry, OneMoreUserComesAndGoes)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(LaunchMailAnd("init\tand\tfinalize"), "0x00000000 and ok and 0x00000000");
    EXPECT_TRUE(host->HasExitEvent()) << "the library is still up";
}

TEST_F(Reentry, TheLastUserGoesInTheMiddleOfALaunch)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(LaunchMailAnd("finalize"), "ok and 0x00000000");
    EXPECT_FALSE(host->HasExitEvent());
    EXPECT_EQ(host->Search("Mail", 0, true), "0x80004005") << "the library is down";
    EXPECT_EQ(host->Command("init"), "0x00000000");
    EXPECT_EQ(host->Search("Mail", 0, true), "0x00000000");
}

// A launch that fails before it touches the screen.
TEST_F(Reentry, LaunchWithoutANameInTheMiddleOfALaunch)
{
    Start({L"Mail.lnk", L"Gmail.lnk"});
    EXPECT_EQ(LaunchMailAnd("search\t0\t1\t(null)\tand\tsearch\t3\t1\tMail\tand\tbrowser\t3\t0\t0"),
              "0x80004003 and 0x80070057 and 0x80070057 and 0x00000000");
}

} // namespace
