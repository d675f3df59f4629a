// The export that starts the browser by the Start screen's search.

#include "QanHelper.h"

#include "api/Statics.h"
#include "common/Apartment.h"
#include "support/FakeShell.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Registry.h"

#include <gmock/gmock.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

using Lines = std::vector<std::string>;

constexpr wchar_t kTile[] = L"ApplicationTileImmersiveActivation";

Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

class BrowserLaunch : public ::testing::Test
{
protected:
    BrowserLaunch() { m_key.Create(); }
    ~BrowserLaunch() override
    {
        if (s_MonitorMode.m_pImmersiveMode) {
            s_MonitorMode.m_pImmersiveMode->Release();
            s_MonitorMode.m_pImmersiveMode = nullptr;
        }
        EXPECT_THAT(m_shell.objects.Leaks(), ::testing::IsEmpty());
    }

    // From here on a launch comes as far as the shell.
    void HaveShell()
    {
        if (!s_MonitorMode.m_pImmersiveMode) {
            m_shell.visibility->AddRef();
            s_MonitorMode.m_pImmersiveMode = m_shell.visibility;
        }
    }
    // The same; it fails there, after the action.
    void FailAtTheShell(std::function<void()> action)
    {
        m_shell.objects.At("IsLauncherVisible", std::move(action));
        m_shell.objects.Fail("IsLauncherVisible", E_FAIL);
        HaveShell();
    }
    // The same; how the setting stands meanwhile is kept.
    void Watch()
    {
        FailAtTheShell([this] {
            m_meanwhile = m_key.Dword(kTile);
            m_wasThere = m_key.HasValue(kTile);
        });
    }

    static Lines InLine(int tileMode)
    {
        return {"QanhLaunchIEBySearch(" + std::to_string(tileMode) + ", 0, 0) IN"};
    }
    static Lines ReadLines(int value)
    {
        return {"CQanhReg::GetCurrentTileImmersiveActivation IN",
                "CQanhReg::GetCurrentTileImmersiveActivation OUT(*pdwTileImmersiveActivation = " +
                    std::to_string(value) + ")"};
    }
    static Lines SetLines(int value)
    {
        return {"CQanhReg::SetCurrentTileImmersiveActivation(" + std::to_string(value) + ") IN",
                "CQanhReg::SetCurrentTileImmersiveActivation OUT"};
    }
    // Without the shell's object a launch fails at once.
    static Lines LaunchLines(int searchMode = 0)
    {
        return {"QanhLaunchBySearch(Internet Explorer, " + std::to_string(searchMode) + ", 0) IN",
                "QanhLaunchBySearch szKeyword = \"Internet Explorer\" ",
                "CQanhMonitorMode::OpenAppSearchUI IN",
                "CQanhMonitorMode::GetMonitorState IN",
                "CQanhMonitorMode::GetMonitorState OUT( m_pImmersiveMode NULL : -1)",
                "CQanhMonitorMode::OpenAppSearchUI OUT(GetMonitorState : ret=0x80004005)",
                "QanhLaunchBySearch OUT(SwitchToStartScreen : ret=0x80004005)"};
    }

    const Lines kDelete = {"CQanhReg::DeleteTileImmersiveActivation IN",
                           "CQanhReg::DeleteTileImmersiveActivation OUT"};
    const Lines kFailedOut = {"QanhLaunchIEBySearch OUT(0x80004005)"};

    test::ScopedKey m_key{HKEY_CURRENT_USER, test::kBrowserKey};
    const ComApartment m_apartment{CoInitialize(nullptr)};
    test::FakeShell m_shell;
    std::optional<DWORD> m_meanwhile;
    bool m_wasThere = false;
};

// What is written, and what stands there afterwards.

struct TileCase
{
    const char* name;
    std::optional<DWORD> stored;
    DWORD tileMode;
    std::optional<DWORD> meanwhile;
    bool isSet;
    bool isDeleted;
};

class BrowserTile : public BrowserLaunch, public ::testing::WithParamInterface<TileCase>
{
protected:
    BrowserTile()
    {
        if (GetParam().stored) {
            m_key.SetDword(kTile, *GetParam().stored);
        }
    }
};

TEST_P(BrowserTile, IsForcedDuringTheLaunchAndPutBack)
{
    Watch();
    EXPECT_EQ(QanhLaunchIEBySearch(GetParam().tileMode, 0, FALSE), E_FAIL);
    EXPECT_EQ(m_meanwhile, GetParam().meanwhile);
    EXPECT_EQ(m_key.Dword(kTile), GetParam().stored);
}

TEST_P(BrowserTile, IsLoggedStepByStep)
{
    const int stored = static_cast<int>(GetParam().stored.value_or(1));
    const int forced = static_cast<int>(GetParam().tileMode);
    Lines expected = {"QanhLaunchIEBySearch(" + std::to_string(forced) + ", 0, 0) IN"};
    expected = expected + ReadLines(stored);
    if (GetParam().isSet) {
        expected = expected + SetLines(forced);
    }
    expected = expected + LaunchLines();
    if (GetParam().isDeleted) {
        expected = expected + kDelete;
    } else if (GetParam().isSet) {
        expected = expected + SetLines(stored);
    }
    const test::LogCapture log;
    EXPECT_EQ(QanhLaunchIEBySearch(GetParam().tileMode, 0, FALSE), E_FAIL);
    EXPECT_THAT(log.Lines(), ElementsAreArray(expected + kFailedOut));
}

const std::optional<DWORD> kAbsent;
const TileCase kTiles[] = {
    // An absent value counts as 1, and is deleted in every case.
    {"Absent0", kAbsent, 0, 0u, true, true},       {"Absent1", kAbsent, 1, kAbsent, false, true},
    {"Absent2", kAbsent, 2, kAbsent, false, true}, {"Stored0For0", 0u, 0, 0u, false, false},
    {"Stored0For1", 0u, 1, 1u, true, false},       {"Stored0For2", 0u, 2, 0u, false, false},
    {"Stored1For0", 1u, 0, 0u, true, false},       {"Stored1For1", 1u, 1, 1u, false, false},
    {"Stored1For2", 1u, 2, 1u, false, false},      {"Stored7For0", 7u, 0, 0u, true, false},
    {"Stored7For1", 7u, 1, 1u, true, false},       {"Stored7For2", 7u, 2, 7u, false, false},
    {"Stored2For2", 2u, 2, 2u, false, false},      {"StoredHugeFor0", 0xFFFFFFFFu, 0, 0u, true, false},
};

INSTANTIATE_TEST_SUITE_P(Of, BrowserTile, ::testing::ValuesIn(kTiles),
                         [](const auto& each) { return std::string(each.param.name); });

// Without the key there is nothing to set or delete.

TEST_F(BrowserLaunch, NeverMakesTheKey)
{
    m_key.Delete();
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        Lines expected = {"QanhLaunchIEBySearch(" + std::to_string(tileMode) + ", 0, 0) IN"};
        expected = expected + ReadLines(1);
        if (tileMode == 0) {
            expected = expected + Lines{"CQanhReg::SetCurrentTileImmersiveActivation(0) IN",
                                        "CQanhReg::SetCurrentTileImmersiveActivation OUT(0)"};
        }
        expected = expected + LaunchLines() +
                   Lines{"CQanhReg::DeleteTileImmersiveActivation IN",
                         "CQanhReg::DeleteTileImmersiveActivation OUT(0)"};
        const test::LogCapture log;
        EXPECT_EQ(QanhLaunchIEBySearch(tileMode, 0, FALSE), E_FAIL);
        EXPECT_THAT(log.Lines(), ElementsAreArray(expected + kFailedOut));
        EXPECT_FALSE(m_key.Exists());
    }
}

// Values that are none of this library's business.

struct OddCase
{
    const char* name;
    DWORD type;
    std::vector<BYTE> bytes;
};

class OddTile : public BrowserLaunch, public ::testing::WithParamInterface<OddCase>
{
};

TEST_P(OddTile, IsLeftAlone)
{
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        m_key.SetBytes(kTile, GetParam().type, GetParam().bytes);
        Watch();
        const test::LogCapture log;
        EXPECT_EQ(QanhLaunchIEBySearch(tileMode, 0, FALSE), E_FAIL);
        EXPECT_TRUE(m_wasThere);
        BYTE bytes[64] = {};
        DWORD size = sizeof bytes;
        DWORD type = 0;
        EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, test::kBrowserKey, kTile, RRF_RT_ANY | RRF_NOEXPAND, &type,
                               bytes, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, GetParam().type);
        EXPECT_EQ(std::vector<BYTE>(bytes, bytes + size), GetParam().bytes);
        for (const std::string& line : log.Lines()) {
            EXPECT_EQ(line.find("SetCurrent"), std::string::npos);
            EXPECT_EQ(line.find("Delete"), std::string::npos);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfType, OddTile,
                         ::testing::Values(OddCase{"ShortText", REG_SZ, {'0', 0, 0, 0}},
                                           OddCase{"LongText", REG_SZ, {'0', 0, '0', 0, '0', 0, 0, 0}},
                                           OddCase{"Bytes", REG_BINARY, {1, 0, 0, 0}},
                                           OddCase{"Quadword", REG_QWORD, {0, 0, 0, 0, 0, 0, 0, 0}},
                                           OddCase{"LongNumber", REG_DWORD, {0, 0, 0, 0, 0, 0, 0, 0}},
                                           OddCase{"TextToExpand", REG_EXPAND_SZ, {'0', 0, 0, 0}}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(BrowserLaunch, WithAValueOfAnotherTypeOnlyLaunches)
{
    // The number is what the four bytes come to.
    m_key.SetText(kTile, L"1");
    for (const int tileMode : {0, 1, 2}) {
        const test::LogCapture log;
        EXPECT_EQ(QanhLaunchIEBySearch(static_cast<DWORD>(tileMode), 0, FALSE), E_FAIL);
        EXPECT_THAT(log.Lines(),
                    ElementsAreArray(InLine(tileMode) + ReadLines(49) + LaunchLines() + kFailedOut));
    }
}

TEST_F(BrowserLaunch, WithAValueThatIsTooLongOnlyLaunches)
{
    m_key.SetBytes(kTile, REG_QWORD, std::vector<BYTE>(8, 0));
    const test::LogCapture log;
    EXPECT_EQ(QanhLaunchIEBySearch(0, 0, FALSE), E_FAIL);
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 3 + LaunchLines().size() + 1);
    EXPECT_THAT(Lines(lines.begin() + 3, lines.end()), ElementsAreArray(LaunchLines() + kFailedOut));
}

// Only a value or key that is not there counts as absent, not one that cannot be had.
TEST_F(BrowserLaunch, WithoutAnAnswerOnlyLaunches)
{
    m_key.SetDword(kTile, 0);
    static LSTATUS s_status;
    for (const LSTATUS status : {ERROR_ACCESS_DENIED, ERROR_PATH_NOT_FOUND, ERROR_KEY_DELETED}) {
        s_status = status;
        for (const int tileMode : {0, 1, 2}) {
            const test::LogCapture log;
            const test::ImportPatch<decltype(&RegOpenKeyExW)> patch(
                "RegOpenKeyExW",
                [](HKEY, const wchar_t*, DWORD, REGSAM, HKEY*) -> LSTATUS { return s_status; });
            EXPECT_EQ(QanhLaunchIEBySearch(static_cast<DWORD>(tileMode), 0, FALSE), E_FAIL);
            EXPECT_THAT(log.Lines(),
                        ElementsAreArray(InLine(tileMode) + ReadLines(1) + LaunchLines() + kFailedOut));
        }
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u);
}

TEST_F(BrowserLaunch, WithAQueryThatFailsOnlyLaunches)
{
    m_key.SetDword(kTile, 0);
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&RegQueryValueExW)> patch(
            "RegQueryValueExW", [](HKEY, const wchar_t*, DWORD*, DWORD*, BYTE*, DWORD*) -> LSTATUS {
                return ERROR_ACCESS_DENIED;
            });
        EXPECT_EQ(QanhLaunchIEBySearch(0, 0, FALSE), E_FAIL);
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u);
    EXPECT_THAT(log.Lines(), ElementsAreArray(InLine(0) + ReadLines(1) + LaunchLines() + kFailedOut));
}

TEST_F(BrowserLaunch, WithoutTheRightToWriteLaunchesAllTheSame)
{
    m_key.SetDword(kTile, 1);
    static decltype(&RegOpenKeyExW) s_open;
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&RegOpenKeyExW)> patch(
            "RegOpenKeyExW",
            [](HKEY key, const wchar_t* path, DWORD options, REGSAM access, HKEY* result) -> LSTATUS {
                return access == KEY_WRITE ? ERROR_ACCESS_DENIED : s_open(key, path, options, access, result);
            });
        s_open = patch.Original();
        EXPECT_EQ(QanhLaunchIEBySearch(0, 0, FALSE), E_FAIL);
    }
    const Lines refusedSet = {"CQanhReg::SetCurrentTileImmersiveActivation(0) IN",
                              "CQanhReg::SetCurrentTileImmersiveActivation OUT(0)"};
    const Lines refusedRestore = {"CQanhReg::SetCurrentTileImmersiveActivation(1) IN",
                                  "CQanhReg::SetCurrentTileImmersiveActivation OUT(0)"};
    EXPECT_EQ(m_key.Dword(kTile), 1u);
    EXPECT_THAT(log.Lines(), ElementsAreArray(Lines{"QanhLaunchIEBySearch(0, 0, 0) IN"} + ReadLines(1) +
                                              refusedSet + LaunchLines() + refusedRestore + kFailedOut));
}

// Also what could not be set counts as changed.
TEST_F(BrowserLaunch, PutsBackAlsoWhereSettingFailed)
{
    m_key.SetDword(kTile, 7);
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&RegSetValueExW)> patch(
            "RegSetValueExW", [](HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD) -> LSTATUS {
                return ERROR_ACCESS_DENIED;
            });
        EXPECT_EQ(QanhLaunchIEBySearch(1, 0, FALSE), E_FAIL);
    }
    EXPECT_EQ(m_key.Dword(kTile), 7u);
    EXPECT_THAT(log.Lines(), ElementsAreArray(InLine(1) + ReadLines(7) + SetLines(1) + LaunchLines() +
                                              SetLines(7) + kFailedOut));
}

TEST_F(BrowserLaunch, ReturnsTheResultOfTheLaunchWhenDeletingFails)
{
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&RegDeleteValueW)> patch(
            "RegDeleteValueW", [](HKEY, const wchar_t*) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        EXPECT_EQ(QanhLaunchIEBySearch(0, 0, FALSE), E_FAIL);
    }
    EXPECT_EQ(m_key.Dword(kTile), 0u) << "nothing else takes it away";
    EXPECT_THAT(log.Lines(), ElementsAreArray(InLine(0) + ReadLines(1) + SetLines(0) + LaunchLines() +
                                              kDelete + kFailedOut));
}

TEST_F(BrowserLaunch, RestoresOverWhatOthersWroteMeanwhile)
{
    m_key.SetDword(kTile, 1);
    FailAtTheShell([this] { m_key.SetDword(kTile, 9); }); // another program
    QanhLaunchIEBySearch(0, 0, FALSE);
    EXPECT_EQ(m_key.Dword(kTile), 1u);
    m_key.DeleteValue(kTile);
    QanhLaunchIEBySearch(1, 0, FALSE);
    EXPECT_FALSE(m_key.HasValue(kTile));
    m_key.Delete();
    QanhLaunchIEBySearch(2, 0, FALSE);
    EXPECT_TRUE(m_key.Exists());
    EXPECT_FALSE(m_key.HasValue(kTile)) << "deleted also where the key was not there before";
}

TEST_F(BrowserLaunch, WhatWasNotForcedIsNotPutBack)
{
    FailAtTheShell([this] { m_key.SetDword(kTile, 9); }); // another program
    for (const auto& [stored, tileMode] : {std::pair(0u, 0u), {1u, 1u}, {0u, 2u}, {7u, 2u}}) {
        m_key.SetDword(kTile, stored);
        QanhLaunchIEBySearch(tileMode, 0, FALSE);
        EXPECT_EQ(m_key.Dword(kTile), 9u);
    }
    for (const std::vector<BYTE>& bytes : {std::vector<BYTE>{'1', 0, 0, 0}, std::vector<BYTE>(8, 0)}) {
        for (const DWORD tileMode : {0u, 1u, 2u}) {
            m_key.SetBytes(kTile, REG_SZ, bytes);
            QanhLaunchIEBySearch(tileMode, 0, FALSE);
            EXPECT_EQ(m_key.Dword(kTile), 9u);
        }
    }
}

// Arguments.

TEST_F(BrowserLaunch, ModesOutOfRangeTouchNothing)
{
    const test::LogCapture log;
    {
        const test::ImportPatch<decltype(&RegOpenKeyExW)> patch(
            "RegOpenKeyExW", [](HKEY, const wchar_t*, DWORD, REGSAM, HKEY*) -> LSTATUS {
                ADD_FAILURE();
                return ERROR_ACCESS_DENIED;
            });
        EXPECT_EQ(QanhLaunchIEBySearch(3, 0, FALSE), E_INVALIDARG);
        EXPECT_EQ(QanhLaunchIEBySearch(0, 3, FALSE), E_INVALIDARG);
        EXPECT_EQ(QanhLaunchIEBySearch(0xFFFFFFFF, 0, FALSE), E_INVALIDARG);
        EXPECT_EQ(QanhLaunchIEBySearch(0, 0x80000000, TRUE), E_INVALIDARG);
    }
    EXPECT_THAT(log.Lines(),
                ElementsAre("QanhLaunchIEBySearch(3, 0, 0) IN", "QanhLaunchIEBySearch OUT(0x80070057)",
                            "QanhLaunchIEBySearch(0, 3, 0) IN", "QanhLaunchIEBySearch OUT(0x80070057)",
                            "QanhLaunchIEBySearch(-1, 0, 0) IN", "QanhLaunchIEBySearch OUT(0x80070057)",
                            "QanhLaunchIEBySearch(0, -2147483648, 1) IN",
                            "QanhLaunchIEBySearch OUT(0x80070057)"));
}

TEST_F(BrowserLaunch, HandsTheOtherArgumentsOn)
{
    m_key.SetDword(kTile, 1);
    const test::LogCapture log;
    EXPECT_EQ(QanhLaunchIEBySearch(2, 2, -5), E_FAIL);
    EXPECT_THAT(log.Lines(), ::testing::Contains("QanhLaunchIEBySearch(2, 2, -5) IN"));
    EXPECT_THAT(log.Lines(), ::testing::Contains("QanhLaunchBySearch(Internet Explorer, 2, -5) IN"));
    EXPECT_THAT(log.Lines(),
                ::testing::Contains("CQanhAppNameList::GetExcludeAppNameList(Internet Explorer) IN"));
}

TEST_F(BrowserLaunch, ReturnsTheSuccessOfTheLaunch)
{
    m_key.SetDword(kTile, 1);
    HaveShell();
    const test::FakeSleep sleep;
    const test::ImportPatch<decltype(&SendInput)> keys("SendInput",
                                                       [](UINT, INPUT*, int) -> UINT { return 1; });
    const test::ImportPatch<decltype(&GetForegroundWindow)> foreground("GetForegroundWindow",
                                                                       []() -> HWND { return nullptr; });
    const test::LogCapture log;
    EXPECT_EQ(QanhLaunchIEBySearch(0, 1, FALSE), S_OK);
    EXPECT_EQ(m_key.Dword(kTile), 1u);
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 4u);
    EXPECT_THAT(Lines(lines.end() - 4, lines.end()),
                ElementsAreArray(Lines{"QanhLaunchBySearch OUT(0x00000000)"} + SetLines(1) +
                                 Lines{"QanhLaunchIEBySearch OUT(0x00000000)"}));
}

} // namespace
