// Launches of the browser on the stand-in desktop: its tile setting before, during and after.
#include "support/Registry.h"
#include "system/LaunchTest.h"

namespace {

constexpr wchar_t tileValue[] = L"ApplicationTileImmersiveActivation";
constexpr char ok[] = "0x00000000";

class BrowserLaunch : public test::LaunchTest
{
protected:
    // Launches with the tile mode and returns the setting as it was when the query had been pasted.
    std::optional<DWORD> LaunchAndLook(int tileMode)
    {
        host->Send("browser\t" + std::to_string(tileMode) + "\t0\t1");
        desktop->WaitFor("pasted\t\"Internet Explorer\"");
        const std::optional<DWORD> meanwhile = browserKey.Dword(tileValue);
        EXPECT_EQ(host->Answer(), ok);
        EXPECT_EQ(desktop->Started(), "Internet Explorer");
        return meanwhile;
    }

    test::ScopedKey browserKey{HKEY_CURRENT_USER, test::kBrowserKey};
};

TEST_F(BrowserLaunch, SettingIsForcedAndPutBack)
{
    browserKey.SetDword(tileValue, 1);
    Start({L"Internet Explorer.lnk"});
    EXPECT_EQ(LaunchAndLook(0), 0u);
    EXPECT_EQ(browserKey.Dword(tileValue), 1u);
}

TEST_F(BrowserLaunch, SettingThatWasNotThereIsDeletedAfterwards)
{
    browserKey.Create();
    Start({L"Internet Explorer.lnk"});
    EXPECT_EQ(LaunchAndLook(0), 0u);
    EXPECT_FALSE(browserKey.HasValue(tileValue));
}

TEST_F(BrowserLaunch, SettingIsLeftAloneOnRequest)
{
    browserKey.SetDword(tileValue, 5);
    Start({L"Internet Explorer.lnk"});
    EXPECT_EQ(LaunchAndLook(2), 5u);
    EXPECT_EQ(browserKey.Dword(tileValue), 5u);
}

TEST_F(BrowserLaunch, SettingIsPutBackAfterALaunchThatFailed)
{
    browserKey.SetDword(tileValue, 0);
    Start({});
    standin::SetSetting(standin::Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    EXPECT_EQ(host->Command("browser\t1\t0\t0"), "0x80004005");
    EXPECT_EQ(browserKey.Dword(tileValue), 0u);
}

} // namespace
