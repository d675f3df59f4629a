// Store applications of the sample packages, started by the platform's activation manager.
#include "standin/Names.h"
#include "standin/Settings.h"
#include "support/Text.h"
#include "system/HostProcess.h"

#include <gmock/gmock.h>

#include <chrono>

namespace {

using standin::SetSetting;
using standin::Setting;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char ok[] = "0x00000000";
constexpr char post[] = "activate\tVel.Post_1vel7kq0n3rta!Post\t(null)";
constexpr char startedPost[] = "activated\tVel.Post_1vel7kq0n3rta!Post\t(null)";
constexpr char unknown[] = "activate\tNobody.App_0123456789abc!App\t-open";
constexpr char notRegistered[] =
    "0x80270254"; // the activation manager's answer to an ID that it does not know

constexpr milliseconds pause(100);

// A host in which the library has not been brought up: no activation needs that.
class StoreActivation : public testing::Test
{
protected:
    StoreActivation() : m_journal(sandbox.Folder() + L"\\journal.txt")
    {
        sandbox.UseSamplePackages();
        standin::SetText(standin::TextSetting::Journal, m_journal);
    }

    // What was started, since the last time.
    std::vector<std::string> Journal() const
    {
        if (!test::Exists(m_journal)) {
            return {};
        }
        std::vector<std::string> lines = test::Split(test::ReadFileBytes(m_journal), "\n");
        lines.pop_back();
        DeleteFileW(m_journal.c_str());
        return lines;
    }

    static bool HasWindow(const wchar_t* name)
    {
        return test::WaitUntil([&] { return FindWindowW(standin::appClass, name) != nullptr; }, 10000);
    }

    // Carries out a command that must have this result, and tells how long that took.
    milliseconds Time(const std::string& command, const std::string& result)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(host.Command(command), result);
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    }

    test::Sandbox sandbox;
    test::HostProcess host{sandbox};

private:
    std::wstring m_journal;
};

TEST_F(StoreActivation, StartsTheApplicationWithTheArguments)
{
    EXPECT_GE(Time("activate\tVel.Post_1vel7kq0n3rta!Post\t-open \"a b\" 天気", ok), pause);
    EXPECT_THAT(Journal(), ElementsAre("activated\tVel.Post_1vel7kq0n3rta!Post\t-open \"a b\" 天気"));
    EXPECT_TRUE(HasWindow(L"Post"));
}

TEST_F(StoreActivation, TheApplicationIsTheOneThatTheIdNames)
{
    EXPECT_EQ(host.Command("activate\tVel.Post_1vel7kq0n3rta!People\t-open"), ok);
    EXPECT_TRUE(HasWindow(L"People"));
    EXPECT_EQ(FindWindowW(standin::appClass, L"Post"), nullptr);
}

TEST_F(StoreActivation, NullAndEmptyArgumentsAreHandedOnAsTheyAre)
{
    EXPECT_EQ(host.Command(post), ok);
    EXPECT_THAT(Journal(), ElementsAre(startedPost));
    EXPECT_EQ(host.Command("activate\tVel.Post_1vel7kq0n3rta!Post\t"), ok);
    EXPECT_THAT(Journal(), ElementsAre("activated\tVel.Post_1vel7kq0n3rta!Post\t"));
}

TEST_F(StoreActivation, UnknownIdGivesTheManagersCodeAfterThePause)
{
    EXPECT_GE(Time(unknown, notRegistered), pause);
    EXPECT_GE(Time("activate\tVel.Post_1vel7kq0n3rta\t(null)", notRegistered), pause)
        << "a family name alone";
    EXPECT_THAT(Journal(), IsEmpty());
}

TEST_F(StoreActivation, FailureOfTheActivationIsGivenAfterThePause)
{
    SetSetting(Setting::FailActivation, 0x8027025B);
    EXPECT_GE(Time(post, "0x8027025B"), pause);
    EXPECT_THAT(Journal(), IsEmpty());
    SetSetting(Setting::FailActivation, 0);
    EXPECT_EQ(host.Command(post), ok);
}

// Stretched, the pause would be longer than anybody waits for the answer.
TEST_F(StoreActivation, ManagerThatCannotBeCreatedGivesItsCodeWithoutThePause)
{
    host.Do("stretch\t3");
    EXPECT_GE(Time(unknown, notRegistered), 3 * pause) << "it can be stretched";
    SetSetting(Setting::FailActivationManager, 0x8007000E);
    host.Do("stretch\t1000");
    EXPECT_EQ(host.Command(post), "0x8007000E");
    host.Do("stretch\t1");
    EXPECT_THAT(Journal(), IsEmpty());
    SetSetting(Setting::FailActivationManager, 0);
    EXPECT_EQ(host.Command(post), ok);
}

// The host answers otherwise when a thread has not kept its apartment.
TEST_F(StoreActivation, WorksOnThreadsOfEveryKind)
{
    for (const char* kind : {"thread\t", "sta\t", "mta\t"}) {
        SCOPED_TRACE(kind);
        const std::string thread = kind;
        EXPECT_EQ(host.Command(thread + post), ok);
        EXPECT_THAT(Journal(), ElementsAre(startedPost));
        EXPECT_GE(Time(thread + unknown, notRegistered), pause);
    }
}

TEST_F(StoreActivation, WorksBeforeWhileAndAfterTheLibraryIsUp)
{
    EXPECT_EQ(host.Command(post), ok);
    EXPECT_EQ(host.Command("init"), ok);
    EXPECT_EQ(host.Command(post), ok);
    EXPECT_EQ(host.Command("mta\t" + std::string(post)), ok);
    host.Do("finalize");
    EXPECT_EQ(host.Command(post), ok);
    EXPECT_THAT(Journal(), ElementsAre(startedPost, startedPost, startedPost, startedPost));
}

} // namespace
