// The argument checks of the exports.

#include "api/Modes.h"

#include "QanHelper.h"
#include "support/Test.h"

#include <roapi.h>

namespace {

using namespace test;

constexpr DWORD kMinusOne = 0xFFFFFFFF;

// A function of the platform that gives this, and is counted.
template <typename Result> auto Counted(int& count, Result result)
{
    return [&count, result](auto...) {
        ++count;
        return result;
    };
}

// Counts what an export must not do before its arguments are sound: registry, keyboard, clipboard, COM.
class Untouched
{
public:
    [[nodiscard]] int Touches() const { return m_touches; }

private:
    int m_touches = 0;
    CapturingPatch<decltype(&RegOpenKeyExW)> m_registry{"RegOpenKeyExW",
                                                        Counted(m_touches, ERROR_ACCESS_DENIED)};
    CapturingPatch<decltype(&SendInput)> m_keyboard{"SendInput", Counted(m_touches, 0)};
    CapturingPatch<decltype(&OpenClipboard)> m_clipboard{"OpenClipboard", Counted(m_touches, FALSE)};
    CapturingPatch<decltype(&CoCreateInstance)> m_com{"CoCreateInstance", Counted(m_touches, E_NOINTERFACE)};
    CapturingPatch<decltype(&RoInitialize)> m_runtime{"RoInitialize", Counted(m_touches, E_FAIL)};
};

// What the out arguments of the calls point to.
BOOL g_isInstalled = 7;
WCHAR g_before[] = L"before";
LPWSTR g_displayName = g_before;

struct Refusal
{
    const char* call;
    std::function<HRESULT()> make;
    HRESULT expected;
    std::string entry;
};

void PrintTo(const Refusal& refusal, std::ostream* stream)
{
    *stream << refusal.call;
}

std::string DisplayNameEntry(const char* name, const void* pointer)
{
    return std::string("QanhGetAppDisplayNameByPFN(") + name + ", " + Hexadecimal(pointer) + ")";
}

const Refusal kRefusals[] = {
    {"IsInstalled: null name", [] { return QanhIsInstalled(nullptr, &g_isInstalled); }, E_POINTER,
     "QanhIsInstalled((null))"},
    {"IsInstalled: null result", [] { return QanhIsInstalled(L"Contoso.Mail_x", nullptr); }, E_POINTER,
     "QanhIsInstalled(Contoso.Mail_x)"},
    {"IsInstalled: null comes before empty", [] { return QanhIsInstalled(L"", nullptr); }, E_POINTER,
     "QanhIsInstalled()"},
    {"IsInstalled: empty name", [] { return QanhIsInstalled(L"", &g_isInstalled); }, E_INVALIDARG,
     "QanhIsInstalled()"},

    {"IsInstalledByAppUserModeID: null ID",
     [] { return QanhIsInstalledByAppUserModeID(nullptr, &g_isInstalled); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID((null))"},
    {"IsInstalledByAppUserModeID: null result",
     [] { return QanhIsInstalledByAppUserModeID(L"Contoso.Mail_x!App", nullptr); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID(Contoso.Mail_x!App)"},
    {"IsInstalledByAppUserModeID: null comes before empty",
     [] { return QanhIsInstalledByAppUserModeID(L"", nullptr); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID()"},
    {"IsInstalledByAppUserModeID: empty ID",
     [] { return QanhIsInstalledByAppUserModeID(L"", &g_isInstalled); }, E_INVALIDARG,
     "QanhIsInstalledByAppUserModeID()"},

    {"GetAppDisplayNameByPFN: null name", [] { return QanhGetAppDisplayNameByPFN(nullptr, &g_displayName); },
     E_POINTER, DisplayNameEntry("(null)", &g_displayName)},
    {"GetAppDisplayNameByPFN: null result",
     [] { return QanhGetAppDisplayNameByPFN(L"Contoso.Mail_x", nullptr); }, E_POINTER,
     "QanhGetAppDisplayNameByPFN(Contoso.Mail_x, 0x00000000)"},
    {"GetAppDisplayNameByPFN: null comes before empty",
     [] { return QanhGetAppDisplayNameByPFN(L"", nullptr); }, E_POINTER,
     "QanhGetAppDisplayNameByPFN(, 0x00000000)"},
    {"GetAppDisplayNameByPFN: empty name", [] { return QanhGetAppDisplayNameByPFN(L"", &g_displayName); },
     E_INVALIDARG, DisplayNameEntry("", &g_displayName)},

    {"LaunchBySearch: null name", [] { return QanhLaunchBySearch(nullptr, 0, FALSE); }, E_POINTER,
     "QanhLaunchBySearch((null), 0, 0)"},
    {"LaunchBySearch: null comes before the mode", [] { return QanhLaunchBySearch(nullptr, 3, TRUE); },
     E_POINTER, "QanhLaunchBySearch((null), 3, 1)"},
    {"LaunchBySearch: empty name", [] { return QanhLaunchBySearch(L"", 0, 5); }, E_INVALIDARG,
     "QanhLaunchBySearch(, 0, 5)"},
    {"LaunchBySearch: mode above two", [] { return QanhLaunchBySearch(L"Mail", 3, FALSE); }, E_INVALIDARG,
     "QanhLaunchBySearch(Mail, 3, 0)"},
    {"LaunchBySearch: modes are unsigned", [] { return QanhLaunchBySearch(L"Mail", kMinusOne, -1); },
     E_INVALIDARG, "QanhLaunchBySearch(Mail, -1, -1)"},

    {"LaunchIEBySearch: tile mode above two", [] { return QanhLaunchIEBySearch(3, 0, FALSE); }, E_INVALIDARG,
     "QanhLaunchIEBySearch(3, 0, 0)"},
    {"LaunchIEBySearch: search mode above two", [] { return QanhLaunchIEBySearch(0, 3, TRUE); }, E_INVALIDARG,
     "QanhLaunchIEBySearch(0, 3, 1)"},
    {"LaunchIEBySearch: modes are unsigned", [] { return QanhLaunchIEBySearch(kMinusOne, 0, 0); },
     E_INVALIDARG, "QanhLaunchIEBySearch(-1, 0, 0)"},
    {"LaunchIEBySearch: both modes are unsigned", [] { return QanhLaunchIEBySearch(2, kMinusOne, -1); },
     E_INVALIDARG, "QanhLaunchIEBySearch(2, -1, -1)"},
    {"LaunchIEBySearch: the search mode has no sign",
     [] { return QanhLaunchIEBySearch(0, 0x80000000, TRUE); }, E_INVALIDARG,
     "QanhLaunchIEBySearch(0, -2147483648, 1)"},

    {"LaunchByManager: null ID", [] { return QanhLaunchByManager(nullptr, L"-x"); }, E_POINTER,
     "QanhLaunchByManager((null), -x)"},
    {"LaunchByManager: nothing but nulls", [] { return QanhLaunchByManager(nullptr, nullptr); }, E_POINTER,
     "QanhLaunchByManager((null), (null))"},
    {"LaunchByManager: empty ID", [] { return QanhLaunchByManager(L"", nullptr); }, E_INVALIDARG,
     "QanhLaunchByManager(, (null))"},
    {"LaunchByManager: empty ID with arguments", [] { return QanhLaunchByManager(L"", L"-x"); }, E_INVALIDARG,
     "QanhLaunchByManager(, -x)"},
};

class RefusedArguments : public ::testing::TestWithParam<Refusal>
{
};

TEST_P(RefusedArguments, WriteTwoLinesAndTouchNothing)
{
    const Refusal& refusal = GetParam();
    const LogCapture log;
    const Untouched untouched;
    EXPECT_EQ(refusal.make(), refusal.expected);
    EXPECT_EQ(untouched.Touches(), 0);
    EXPECT_EQ(g_isInstalled, 7);
    EXPECT_EQ(g_displayName, g_before);
    EXPECT_EQ(log.Lines(),
              Call(refusal.entry, refusal.expected == E_POINTER ? "(0x80004003)" : "(0x80070057)"));
}

INSTANTIATE_TEST_SUITE_P(Exports, RefusedArguments, ::testing::ValuesIn(kRefusals));

TEST(Arguments, ModesEndAtTwo)
{
    for (const DWORD mode : {0u, 1u, 2u}) {
        EXPECT_EQ(CheckMode(mode), S_OK);
    }
    for (const DWORD mode : {3u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(CheckMode(mode), E_INVALIDARG);
    }
}

TEST(Arguments, LaunchByManagerTakesNoArguments)
{
    const LogCapture log;
    const Untouched untouched;
    EXPECT_EQ(QanhLaunchByManager(L"Contoso.Mail_x!App", nullptr), E_NOINTERFACE);
    EXPECT_EQ(untouched.Touches(), 1); // the activation manager was asked for
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchByManager(Contoso.Mail_x!App, (null)) IN"));
}

} // namespace
