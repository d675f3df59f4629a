// Every export with arguments that it must refuse, through the boundary of the built library, before it is
// brought up and after. The answers: the result, and the out value where there is one.
#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr char pointerError[] = "0x80004003";
constexpr char argumentError[] = "0x80070057";

// Whether the library is up does not count: the arguments are checked before anything else.
class Boundary : public testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        m_sandbox.Settings().DeleteValue(L"DebugLog");
        if (GetParam()) {
            ASSERT_EQ(m_host.Command("init"), "0x00000000");
        }
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
};

INSTANTIATE_TEST_SUITE_P(Library, Boundary, testing::Bool(),
                         [](const auto& state) { return state.param ? "Up" : "Down"; });

TEST_P(Boundary, RefusesNullAndEmptyPackageNames)
{
    for (const char* command : {"installed", "installed-by-id"}) {
        const std::string ask = command;
        // The flag was 7 before each call.
        EXPECT_EQ(m_host.Command(ask + "\t(null)"), "0x80004003\t7");
        EXPECT_EQ(m_host.Command(ask + "\t\t"), "0x80070057\t7");
        EXPECT_EQ(m_host.Command(ask + "\tfamily\tnull"), "0x80004003\t7");
        EXPECT_EQ(m_host.Command(ask + "\t(null)\tnull"), "0x80004003\t7");
        EXPECT_EQ(m_host.Command(ask + "\t\tnull"), "0x80004003\t7") << "null goes before empty";
    }
}

TEST_P(Boundary, RefusesNullAndEmptyFamilyNamesForTheDisplayName)
{
    EXPECT_EQ(m_host.Command("display-name\t(null)"), "0x80004003\t(null)");
    EXPECT_EQ(m_host.Command("display-name\t"), "0x80070057\t(null)");
    EXPECT_EQ(m_host.Command("display-name\tfamily\tnull"), "0x80004003\t(null)");
    EXPECT_EQ(m_host.Command("display-name\t\tnull"), "0x80004003\t(null)") << "null goes before empty";
}

TEST_P(Boundary, AnswersForPackagesThatAreNotThere)
{
    EXPECT_EQ(m_host.Command("installed\tNobody.App_0123456789abc"), "0x00000000\t0");
    EXPECT_EQ(m_host.Command("installed-by-id\tNobody.App_0123456789abc!App"), "0x00000000\t0");
    EXPECT_EQ(m_host.Command("installed-by-id\t!"), "0x80070057\t7")
        << "the family name before the mark is empty";
    EXPECT_EQ(m_host.Command("display-name\tNobody.App_0123456789abc"), "0xA0000001\t(null)");
}

TEST_P(Boundary, RefusesNamesAndModesOfASearchLaunch)
{
    EXPECT_EQ(m_host.Command("search\t0\t0\t(null)"), pointerError);
    EXPECT_EQ(m_host.Command("search\t0\t1\t"), argumentError);
    EXPECT_EQ(m_host.Command("search\t3\t0\tMail"), argumentError);
    EXPECT_EQ(m_host.Command("search\t4294967295\t0\tMail"), argumentError) << "the mode has no sign";
    EXPECT_EQ(m_host.Command("search\t3\t0\t(null)"), pointerError) << "null goes before the mode";
    EXPECT_EQ(m_host.Command("search\t3\t0\t"), argumentError);
}

TEST_P(Boundary, RefusesModesOfABrowserLaunch)
{
    EXPECT_EQ(m_host.Command("browser\t3\t0\t0"), argumentError);
    EXPECT_EQ(m_host.Command("browser\t0\t3\t0"), argumentError);
    EXPECT_EQ(m_host.Command("browser\t4294967295\t0\t1"), argumentError);
    EXPECT_EQ(m_host.Command("browser\t2\t4294967295\t1"), argumentError);
}

TEST_P(Boundary, RefusesNullAndEmptyIdsOfAnActivation)
{
    EXPECT_EQ(m_host.Command("activate\t(null)\t(null)"), pointerError);
    EXPECT_EQ(m_host.Command("activate\t(null)\targuments"), pointerError);
    EXPECT_EQ(m_host.Command("activate\t\t(null)"), argumentError);
    EXPECT_EQ(m_host.Command("activate\t\targuments"), argumentError);
}

TEST_P(Boundary, TakesAnActivationWithoutArguments)
{
    const std::string result = m_host.Command("activate\tNobody.App_0123456789abc!App\t(null)");
    EXPECT_NE(result, pointerError);
    EXPECT_NE(result, argumentError);
    EXPECT_EQ(result.substr(0, 3), "0x8") << "nobody bears this ID: " << result;
    EXPECT_EQ(m_host.Command("activate\tNobody.App_0123456789abc!App\targuments"), result);
}

TEST_P(Boundary, ReleasesStringsAndNull)
{
    EXPECT_EQ(m_host.Command("release\t(null)"), "ok");
    EXPECT_EQ(m_host.Command("release\tMail"), "ok");
}

TEST_P(Boundary, AnswersOnOtherThreadsToo)
{
    EXPECT_EQ(m_host.Command("thread\tinstalled\tNobody.App_0123456789abc"), "0x00000000\t0");
    EXPECT_EQ(m_host.Command("mta\tinstalled\tNobody.App_0123456789abc"), "0x00000000\t0");
    EXPECT_EQ(m_host.Command("mta\tdisplay-name\tNobody.App_0123456789abc"), "0xA0000001\t(null)");
}

TEST(BoundaryBeforeStart, FinalizeDoesNoHarm)
{
    test::Sandbox sandbox;
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Command("finalize"), "ok");
    EXPECT_EQ(host.Command("finalize"), "ok");
    EXPECT_EQ(host.Command("init"), "0x00000000") << "the count did not go below 0";
    EXPECT_TRUE(host.HasExitEvent());
}

TEST(BoundaryBeforeStart, NothingCanBeLaunchedBySearch)
{
    test::Sandbox sandbox;
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Search("Mail", 0, false), "0x80004005");
    EXPECT_EQ(host.Search("Mail", 1, true), "0x80004005");
    EXPECT_EQ(host.Command("browser\t2\t0\t0"), "0x80004005");
    EXPECT_TRUE(sandbox.Log().empty());
}

TEST(BoundaryBeforeStart, NothingIsLoggedOrMade)
{
    test::Sandbox sandbox;
    test::HostProcess host(sandbox);
    host.Command("installed\tfamily");
    host.Command("release\t(null)");
    host.Command("finalize");
    EXPECT_FALSE(test::Exists(sandbox.Local() + L"\\Vel"));
    EXPECT_FALSE(test::IsFirstPassRunning());
}

} // namespace
