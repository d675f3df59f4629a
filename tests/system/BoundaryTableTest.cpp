// Every export with every combination of arguments: null, empty, longer than the platform's own strings,
// halves of surrogate pairs, numbers at the ends of their ranges; before the library is brought up, while it
// is up and afterwards; on threads of every kind, and on several at once.
#include "standin/Settings.h"
#include "system/HostProcess.h"

#include <gtest/gtest.h>

namespace {

using standin::SetSetting;
using standin::Setting;

constexpr char ok[] = "0x00000000";
constexpr char pointerError[] = "0x80004003";
constexpr char argumentError[] = "0x80070057";
constexpr char launchError[] = "0x80004005";
constexpr char noPackage[] = "0xA0000001";
constexpr char notRegistered[] = "0x80270254";
constexpr char noMemory[] = "0x8007000E";

// Texts in the notation of the host's commands. None of them names anything that there is.
const std::vector<std::string> texts = {"(null)", "",       "x",          "Nobody.App_0123456789abc",
                                        "(long)", "(high)", "(low)(high)"};
const std::vector<std::string> modes = {"0", "1", "2", "3", "2147483647", "2147483648", "4294967295"};
const std::vector<std::string> flags = {"0", "1", "2147483648", "4294967295"};

// What the arguments of a text and of a pointer behind it are answered with; "" when they are sound.
std::string Refusal(const std::string& text, bool isPointerNull = false)
{
    if (text == "(null)" || isPointerNull) {
        return pointerError;
    }
    return text.empty() ? argumentError : "";
}

bool IsMode(const std::string& mode)
{
    return mode == "0" || mode == "1" || mode == "2";
}

// The parameter is the kind of the calling thread, "" for the one that brings the library up.
class BoundaryTable : public testing::TestWithParam<const char*>
{
protected:
    BoundaryTable()
    {
        m_sandbox.Settings().DeleteValue(L"DebugLog"); // which long arguments are not meant for
    }

    // Before the library is brought up, while it is up, and after it was taken down.
    template <typename Table> void InEachState(Table table)
    {
        {
            SCOPED_TRACE("before");
            table();
        }
        ASSERT_EQ(m_host.Command("init"), ok);
        m_isUp = true;
        {
            SCOPED_TRACE("up");
            table();
        }
        m_host.Do("finalize");
        m_isUp = false;
        SCOPED_TRACE("after");
        table();
    }

    // Launches by search belong to the thread that has brought the library up.
    [[nodiscard]] bool MayLaunchBySearch() const { return !m_isUp || *GetParam() == '\0'; }

    void Expect(const std::string& command, const std::string& answer)
    {
        EXPECT_EQ(m_host.Command(GetParam() + command), answer) << command;
    }

    test::Sandbox m_sandbox;
    test::HostProcess m_host{m_sandbox};
    bool m_isUp = false;
};

INSTANTIATE_TEST_SUITE_P(On, BoundaryTable, testing::Values("", "thread\t", "sta\t", "mta\t"),
                         [](const auto& each) {
                             const std::string thread = each.param;
                             return thread.empty() ? "main" : thread.substr(0, thread.size() - 1);
                         });

TEST_P(BoundaryTable, OfQuestionsAboutPackages)
{
    InEachState([&] {
        for (const std::string& text : texts) {
            for (const bool isPointerNull : {false, true}) {
                const std::string arguments = "\t" + text + (isPointerNull ? "\tnull" : "\t");
                const std::string refusal = Refusal(text, isPointerNull);
                // The flag was 7 and the name null before.
                const std::string installed = refusal.empty() ? ok + std::string("\t0") : refusal + "\t7";
                Expect("installed" + arguments, installed);
                Expect("installed-by-id" + arguments, installed);
                Expect("display-name" + arguments, (refusal.empty() ? noPackage : refusal) + "\t(null)");
            }
        }
    });
}

TEST_P(BoundaryTable, OfIdsWithAMark)
{
    const struct
    {
        const char* id;
        const char* answer;
    } ids[] = {
        {"!", "0x80070057\t7"}, // no family before the last mark
        {"!x", "0x80070057\t7"},
        {"!(long)", "0x80070057\t7"},
        {"!!", "0x00000000\t0"},
        {"Nobody.App_0123456789abc!App", "0x00000000\t0"},
        {"x!", "0x00000000\t0"},
        {"(long)!", "0x00000000\t0"},
        {"(long)!(long)", "0x00000000\t0"},
        {"(high)!(low)", "0x00000000\t0"},
        {"(low)!!(high)", "0x00000000\t0"},
        {"!Microsoft.Office.Desktop_8wekyb3d8bbwe", "0x80070057\t7"},
        {"Microsoft.Office.Desktop_8wekyb3d8bbwe!", "0x00000000\t0"},
        {"Microsoft.Office.Desktop_8wekyb3d8bbwe!(long)", "0x00000000\t0"},
        {"(high)Microsoft.Office.Desktop_8wekyb3d8bbwe(long)!(low)", "0x00000000\t0"},
    };
    InEachState([&] {
        for (const auto& [id, answer] : ids) {
            Expect(std::string("installed-by-id\t") + id, answer);
            Expect(std::string("installed-by-id\t") + id + "\tnull", "0x80004003\t7");
        }
    });
}

// What gets through fails at the screen, which cannot be read: nothing is pasted, no key is pressed.
TEST_P(BoundaryTable, OfLaunchesBySearch)
{
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    InEachState([&] {
        for (const std::string& text : texts) {
            for (const std::string& mode : modes) {
                std::string answer = Refusal(text);
                if (answer.empty()) {
                    answer = IsMode(mode) ? launchError : argumentError;
                }
                if (answer == launchError && !MayLaunchBySearch()) {
                    continue;
                }
                for (const std::string& flag : flags) {
                    Expect("search\t" + mode + "\t" + flag + "\t" + text, answer);
                }
            }
        }
    });
}

TEST_P(BoundaryTable, OfLaunchesOfTheBrowser)
{
    SetSetting(Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    test::ScopedKey browser(HKEY_CURRENT_USER, test::kBrowserKey);
    browser.SetDword(L"ApplicationTileImmersiveActivation", 1);
    InEachState([&] {
        for (const std::string& tile : modes) {
            for (const std::string& mode : modes) {
                const bool isSound = IsMode(tile) && IsMode(mode);
                if (isSound && !MayLaunchBySearch()) {
                    continue;
                }
                for (const std::string& flag : flags) {
                    Expect("browser\t" + tile + "\t" + mode + "\t" + flag,
                           isSound ? launchError : argumentError);
                }
                EXPECT_EQ(browser.Dword(L"ApplicationTileImmersiveActivation"), 1u);
            }
        }
    });
}

// What gets through fails at the manager, which cannot be created.
TEST_P(BoundaryTable, OfActivations)
{
    SetSetting(Setting::FailActivationManager, static_cast<DWORD>(E_OUTOFMEMORY));
    InEachState([&] {
        for (const std::string& id : texts) {
            const std::string refusal = Refusal(id);
            for (const std::string& arguments : texts) {
                Expect("activate\t" + id + "\t" + arguments, refusal.empty() ? noMemory : refusal);
            }
        }
    });
}

TEST_P(BoundaryTable, OfStringsToRelease)
{
    InEachState([&] {
        for (const std::string& text : texts) {
            Expect("release\t" + text, "ok");
        }
    });
}

TEST(Boundaries, OfTheActivationManagerHearWhatGetsThrough)
{
    test::Sandbox sandbox;
    sandbox.Settings().DeleteValue(L"DebugLog");
    test::HostProcess host(sandbox);
    for (const char* id : {"x", "(long)", "(long)!(long)", "(high)!(low)", "Nobody.App_0123456789abc!App"}) {
        for (const std::string& arguments : texts) {
            EXPECT_EQ(host.Command(std::string("activate\t") + id + "\t" + arguments), notRegistered)
                << id << ", " << arguments;
        }
    }
}

// Start and stop on a thread of each kind; the host answers otherwise when its apartment is not what it was.
TEST(Boundaries, OfStartAndStopAreTheThreadsApartment)
{
    test::Sandbox sandbox;
    test::HostProcess host(sandbox);
    EXPECT_EQ(host.Command("thread\tcycles\t1"), ok);
    EXPECT_EQ(host.Command("sta\tcycles\t1"), ok);
    EXPECT_EQ(host.Command("mta\tcycles\t1"), "0x80010106");
    EXPECT_FALSE(host.HasExitEvent()) << "the last one failed";
    EXPECT_EQ(host.Command("thread\tfinalize"), "ok");
    EXPECT_EQ(host.Command("sta\tfinalize"), "ok");
    EXPECT_EQ(host.Command("mta\tfinalize"), "ok");
    EXPECT_EQ(host.Command("cycles\t1"), ok) << "the count did not go below 0";
}

// Where the log goes as long as nobody has told it a folder.
std::wstring LogWithoutAFolder(const test::Sandbox& sandbox)
{
    return sandbox.Folder() + L"\\QanHelperLog.txt";
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
    EXPECT_FALSE(test::Exists(LogWithoutAFolder(sandbox)));
}

TEST(BoundaryBeforeStart, NothingIsLoggedOrMade)
{
    test::Sandbox sandbox;
    test::HostProcess host(sandbox);
    host.Command("installed\tfamily");
    host.Command("release\t(null)");
    EXPECT_EQ(host.Command("activate\tNobody.App_0123456789abc!App\t(null)"), notRegistered);
    EXPECT_EQ(host.Command("activate\t(null)\t(null)"), pointerError);
    host.Command("finalize");
    EXPECT_FALSE(test::Exists(sandbox.Local() + L"\\Vel"));
    EXPECT_FALSE(test::Exists(LogWithoutAFolder(sandbox)));
    EXPECT_FALSE(test::IsFirstPassRunning());
}

class BoundariesAtOnce : public testing::TestWithParam<bool>
{
};

INSTANTIATE_TEST_SUITE_P(Library, BoundariesAtOnce, testing::Bool(),
                         [](const auto& state) { return state.param ? "Up" : "Down"; });

// What may be called on any thread, on eighteen of them; when the library is up, one pass follows the other.
TEST_P(BoundariesAtOnce, TheAnswersAreThoseOfOneThread)
{
    test::Sandbox sandbox;
    sandbox.Settings().SetDword(L"RefreshInterval", 0);
    sandbox.Settings().DeleteValue(L"DebugLog");
    sandbox.AddSamplePackage(L"Vel.Calendar");
    test::HostProcess host(sandbox);
    if (GetParam()) {
        host.InitializeAndPass();
    }
    EXPECT_EQ(host.Command("at-once\t15"
                           "\tinstalled\tVel.Calendar_1vel7kq0n3rta"
                           "\tand\tinstalled-by-id\tNobody.App_0123456789abc!App"
                           "\tand\tdisplay-name\tVel.Calendar_1vel7kq0n3rta"
                           "\tand\tdisplay-name\t(long)"
                           "\tand\tactivate\tNobody.App_0123456789abc!App\t(high)"
                           "\tand\trelease\t(long)",
                           60000),
              "0x00000000\t1 and 0x00000000\t0 and 0x00000000\tCalendar and 0xA0000001\t(null)"
              " and 0x80270254 and ok");
}

} // namespace
