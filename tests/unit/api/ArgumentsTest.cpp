// The argument checks of the exports.

#include "api/Modes.h"

#include "QanHelper.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <roapi.h>

#include <cstdio>
#include <functional>
#include <ostream>
#include <string>

namespace {

using ::testing::ElementsAre;

constexpr DWORD kMinusOne = 0xFFFFFFFF;

int g_touches = 0; // of the platform: registry, keyboard, clipboard, COM

// Counts what an export must not do before its arguments are sound.
class Untouched
{
public:
    Untouched()
        : m_registry("RegOpenKeyExW",
                     [](HKEY, const wchar_t*, DWORD, REGSAM, HKEY*) -> LSTATUS {
                         ++g_touches;
                         return ERROR_ACCESS_DENIED;
                     }),
          m_keyboard("SendInput",
                     [](UINT, INPUT*, int) -> UINT {
                         ++g_touches;
                         return 0;
                     }),
          m_clipboard("OpenClipboard",
                      [](HWND) -> BOOL {
                          ++g_touches;
                          return FALSE;
                      }),
          m_com("CoCreateInstance",
                [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT {
                    ++g_touches;
                    return E_NOINTERFACE;
                }),
          m_runtime("RoInitialize", [](RO_INIT_TYPE) -> HRESULT {
              ++g_touches;
              return E_FAIL;
          })
    {
        g_touches = 0;
    }

private:
    test::ImportPatch<decltype(&RegOpenKeyExW)> m_registry;
    test::ImportPatch<decltype(&SendInput)> m_keyboard;
    test::ImportPatch<decltype(&OpenClipboard)> m_clipboard;
    test::ImportPatch<decltype(&CoCreateInstance)> m_com;
    test::ImportPatch<decltype(&RoInitialize)> m_runtime;
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
    std::string entryLine;
};

void PrintTo(const Refusal& refusal, std::ostream* stream)
{
    *stream << refusal.call;
}

std::string DisplayNameEntry(const char* name, const void* pointer)
{
    char line[128];
    std::snprintf(line, sizeof line, "QanhGetAppDisplayNameByPFN(%s, 0x%08X) IN", name,
                  static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(pointer)));
    return line;
}

const Refusal kRefusals[] = {
    {"IsInstalled: null name", [] { return QanhIsInstalled(nullptr, &g_isInstalled); }, E_POINTER,
     "QanhIsInstalled((null)) IN"},
    {"IsInstalled: null result", [] { return QanhIsInstalled(L"Contoso.Mail_x", nullptr); }, E_POINTER,
     "QanhIsInstalled(Contoso.Mail_x) IN"},
    {"IsInstalled: null comes before empty", [] { return QanhIsInstalled(L"", nullptr); }, E_POINTER,
     "QanhIsInstalled() IN"},
    {"IsInstalled: empty name", [] { return QanhIsInstalled(L"", &g_isInstalled); }, E_INVALIDARG,
     "QanhIsInstalled() IN"},

    {"IsInstalledByAppUserModeID: null ID",
     [] { return QanhIsInstalledByAppUserModeID(nullptr, &g_isInstalled); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID((null)) IN"},
    {"IsInstalledByAppUserModeID: null result",
     [] { return QanhIsInstalledByAppUserModeID(L"Contoso.Mail_x!App", nullptr); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID(Contoso.Mail_x!App) IN"},
    {"IsInstalledByAppUserModeID: null comes before empty",
     [] { return QanhIsInstalledByAppUserModeID(L"", nullptr); }, E_POINTER,
     "QanhIsInstalledByAppUserModeID() IN"},
    {"IsInstalledByAppUserModeID: empty ID",
     [] { return QanhIsInstalledByAppUserModeID(L"", &g_isInstalled); }, E_INVALIDARG,
     "QanhIsInstalledByAppUserModeID() IN"},

    {"GetAppDisplayNameByPFN: null name", [] { return QanhGetAppDisplayNameByPFN(nullptr, &g_displayName); },
     E_POINTER, DisplayNameEntry("(null)", &g_displayName)},
    {"GetAppDisplayNameByPFN: null result",
     [] { return QanhGetAppDisplayNameByPFN(L"Contoso.Mail_x", nullptr); }, E_POINTER,
     "QanhGetAppDisplayNameByPFN(Contoso.Mail_x, 0x00000000) IN"},
    {"GetAppDisplayNameByPFN: null comes before empty",
     [] { return QanhGetAppDisplayNameByPFN(L"", nullptr); }, E_POINTER,
     "QanhGetAppDisplayNameByPFN(, 0x00000000) IN"},
    {"GetAppDisplayNameByPFN: empty name", [] { return QanhGetAppDisplayNameByPFN(L"", &g_displayName); },
     E_INVALIDARG, DisplayNameEntry("", &g_displayName)},

    {"LaunchBySearch: null name", [] { return QanhLaunchBySearch(nullptr, 0, FALSE); }, E_POINTER,
     "QanhLaunchBySearch((null), 0, 0) IN"},
    {"LaunchBySearch: null comes before the mode", [] { return QanhLaunchBySearch(nullptr, 3, TRUE); },
     E_POINTER, "QanhLaunchBySearch((null), 3, 1) IN"},
    {"LaunchBySearch: empty name", [] { return QanhLaunchBySearch(L"", 0, 5); }, E_INVALIDARG,
     "QanhLaunchBySearch(, 0, 5) IN"},
    {"LaunchBySearch: mode above two", [] { return QanhLaunchBySearch(L"Mail", 3, FALSE); }, E_INVALIDARG,
     "QanhLaunchBySearch(Mail, 3, 0) IN"},
    {"LaunchBySearch: modes are unsigned", [] { return QanhLaunchBySearch(L"Mail", kMinusOne, -1); },
     E_INVALIDARG, "QanhLaunchBySearch(Mail, -1, -1) IN"},

    {"LaunchIEBySearch: tile mode above two", [] { return QanhLaunchIEBySearch(3, 0, FALSE); }, E_INVALIDARG,
     "QanhLaunchIEBySearch(3, 0, 0) IN"},
    {"LaunchIEBySearch: search mode above two", [] { return QanhLaunchIEBySearch(0, 3, TRUE); }, E_INVALIDARG,
     "QanhLaunchIEBySearch(0, 3, 1) IN"},
    {"LaunchIEBySearch: modes are unsigned", [] { return QanhLaunchIEBySearch(kMinusOne, 0, 0); },
     E_INVALIDARG, "QanhLaunchIEBySearch(-1, 0, 0) IN"},
    {"LaunchIEBySearch: both modes are unsigned", [] { return QanhLaunchIEBySearch(2, kMinusOne, -1); },
     E_INVALIDARG, "QanhLaunchIEBySearch(2, -1, -1) IN"},

    {"LaunchByManager: null ID", [] { return QanhLaunchByManager(nullptr, L"-x"); }, E_POINTER,
     "QanhLaunchByManager((null), -x) IN"},
    {"LaunchByManager: nothing but nulls", [] { return QanhLaunchByManager(nullptr, nullptr); }, E_POINTER,
     "QanhLaunchByManager((null), (null)) IN"},
    {"LaunchByManager: empty ID", [] { return QanhLaunchByManager(L"", nullptr); }, E_INVALIDARG,
     "QanhLaunchByManager(, (null)) IN"},
};

class RefusedArguments : public ::testing::TestWithParam<Refusal>
{
};

TEST_P(RefusedArguments, WriteTwoLinesAndTouchNothing)
{
    const Refusal& refusal = GetParam();
    const test::LogCapture log;
    const Untouched untouched;
    EXPECT_EQ(refusal.make(), refusal.expected);
    EXPECT_EQ(g_touches, 0);
    EXPECT_EQ(g_isInstalled, 7);
    EXPECT_EQ(g_displayName, g_before);
    const std::string name = refusal.entryLine.substr(0, refusal.entryLine.find('('));
    EXPECT_THAT(log.Lines(),
                ElementsAre(refusal.entryLine, name + (refusal.expected == E_POINTER ? " OUT(0x80004003)"
                                                                                     : " OUT(0x80070057)")));
}

INSTANTIATE_TEST_SUITE_P(Exports, RefusedArguments, ::testing::ValuesIn(kRefusals));

TEST(Arguments, ModesEndAtTwo)
{
    EXPECT_EQ(CheckMode(0), S_OK);
    EXPECT_EQ(CheckMode(1), S_OK);
    EXPECT_EQ(CheckMode(2), S_OK);
    EXPECT_EQ(CheckMode(3), E_INVALIDARG);
    EXPECT_EQ(CheckMode(0x80000000), E_INVALIDARG);
    EXPECT_EQ(CheckMode(kMinusOne), E_INVALIDARG);
}

TEST(Arguments, LaunchByManagerTakesNoArguments)
{
    const test::LogCapture log;
    const Untouched untouched;
    EXPECT_EQ(QanhLaunchByManager(L"Contoso.Mail_x!App", nullptr), E_NOINTERFACE);
    EXPECT_EQ(g_touches, 1); // the activation manager was asked for
    EXPECT_THAT(log.Lines(), ElementsAre("QanhLaunchByManager(Contoso.Mail_x!App, (null)) IN"));
}

} // namespace
