// Launches of the browser on the stand-in desktop: its tile setting before, during and after.
#include "support/Registry.h"
#include "system/LaunchTest.h"

#include <ostream>
#include <utility>

namespace {

constexpr wchar_t tileValue[] = L"ApplicationTileImmersiveActivation";
constexpr char ok[] = "0x00000000";

using StoredValue = std::pair<DWORD, std::vector<BYTE>>; // type and bytes

// What stands in the setting's place, if anything.
using Tile = std::optional<StoredValue>;

Tile Number(DWORD value)
{
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    return StoredValue{REG_DWORD, std::vector<BYTE>(bytes, bytes + sizeof value)};
}

Tile ReadTile()
{
    BYTE bytes[64] = {};
    DWORD size = sizeof bytes;
    DWORD type = REG_NONE;
    if (RegGetValueW(HKEY_CURRENT_USER, test::kBrowserKey, tileValue, RRF_RT_ANY | RRF_NOEXPAND, &type, bytes,
                     &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return StoredValue{type, std::vector<BYTE>(bytes, bytes + size)};
}

// Tells whether anything was written, deleted or made in the browser's key, or the key itself, since the
// start of the scope: also what was put back at once.
class KeyWatch
{
public:
    KeyWatch() : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        const std::wstring path = test::kBrowserKey;
        RegCreateKeyExW(HKEY_CURRENT_USER, path.substr(0, path.rfind(L'\\')).c_str(), 0, nullptr, 0,
                        KEY_NOTIFY, nullptr, &m_key, nullptr);
        EXPECT_EQ(RegNotifyChangeKeyValue(m_key, TRUE, REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET,
                                          m_event, TRUE),
                  ERROR_SUCCESS);
    }
    ~KeyWatch()
    {
        RegCloseKey(m_key);
        CloseHandle(m_event);
    }
    KeyWatch(const KeyWatch&) = delete;
    KeyWatch& operator=(const KeyWatch&) = delete;

    [[nodiscard]] bool HasSeenChange() const { return WaitForSingleObject(m_event, 0) == WAIT_OBJECT_0; }

private:
    HANDLE m_event;
    HKEY m_key = nullptr;
};

struct TileCase
{
    const char* name;
    bool hasKey;
    Tile before;       // and afterwards
    Tile meanwhile[3]; // by tile mode
    // The tile modes in which the browser is really started, which takes its time: all that change something,
    // and one where none does.
    std::vector<DWORD> started;
};

void PrintTo(const TileCase& each, std::ostream* stream)
{
    *stream << each.name;
}

const Tile absent;
const Tile text = StoredValue{REG_SZ, {'5', 0, 0, 0}};
const Tile quadword = StoredValue{REG_QWORD, {5, 0, 0, 0, 0, 0, 0, 0}};
const Tile fiveBytes = StoredValue{REG_BINARY, {5, 0, 0, 0, 0}};

const TileCase tileCases[] = {
    {"KeyAbsent", false, absent, {absent, absent, absent}, {0}},
    {"ValueAbsent", true, absent, {Number(0), absent, absent}, {0, 1, 2}},
    {"Zero", true, Number(0), {Number(0), Number(1), Number(0)}, {0, 1}},
    {"One", true, Number(1), {Number(0), Number(1), Number(1)}, {0, 1}},
    {"Seven", true, Number(7), {Number(0), Number(1), Number(7)}, {0, 1, 2}},
    {"Text", true, text, {text, text, text}, {0}},
    {"Quadword", true, quadword, {quadword, quadword, quadword}, {1}},
    {"FiveBytes", true, fiveBytes, {fiveBytes, fiveBytes, fiveBytes}, {0}},
};

class BrowserTile : public test::LaunchTest, public testing::WithParamInterface<TileCase>
{
protected:
    // The catalogue is not asked: its first pass is not waited for.
    void StartHost()
    {
        host = std::make_unique<test::HostProcess>(sandbox);
        ASSERT_EQ(host->Command("init"), ok);
    }

    void Store()
    {
        browserKey.Delete();
        if (GetParam().hasKey) {
            browserKey.Create();
        }
        if (GetParam().before) {
            browserKey.SetBytes(tileValue, GetParam().before->first, GetParam().before->second);
        }
    }

    void ExpectAsBefore() const
    {
        EXPECT_EQ(ReadTile(), GetParam().before);
        EXPECT_EQ(browserKey.Exists(), GetParam().hasKey);
    }

    static std::string Launch(DWORD tileMode) { return "browser\t" + std::to_string(tileMode) + "\t0\t0"; }

    test::ScopedKey browserKey{HKEY_CURRENT_USER, test::kBrowserKey};
};

INSTANTIATE_TEST_SUITE_P(Of, BrowserTile, testing::ValuesIn(tileCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(BrowserTile, IsForcedWhileTheSearchRunsAndPutBack)
{
    sandbox.AddApplication(L"Internet Explorer.lnk");
    desktop = std::make_unique<test::DesktopProcess>(sandbox);
    StartHost();
    std::size_t launches = 0;
    for (const DWORD tileMode : GetParam().started) {
        SCOPED_TRACE("tile mode " + std::to_string(tileMode));
        Store();
        host->Send(Launch(tileMode));
        ++launches;
        desktop->WaitFor("pasted\t\"Internet Explorer\"", launches);
        EXPECT_EQ(ReadTile(), GetParam().meanwhile[tileMode]);
        EXPECT_EQ(browserKey.Exists(), GetParam().hasKey);
        EXPECT_EQ(host->Answer(), ok);
        ExpectAsBefore();
        desktop->WaitFor("started\tInternet Explorer", launches);
        desktop->CloseApplication(L"Internet Explorer");
    }
}

TEST_P(BrowserTile, IsAsBeforeWhenTheLaunchFails)
{
    StartHost();
    standin::SetSetting(standin::Setting::FailLauncherQuery, static_cast<DWORD>(E_FAIL));
    for (const DWORD tileMode : {0u, 1u, 2u}) {
        SCOPED_TRACE("tile mode " + std::to_string(tileMode));
        Store();
        const KeyWatch watch;
        EXPECT_EQ(host->Command(Launch(tileMode)), "0x80004005");
        EXPECT_EQ(watch.HasSeenChange(), GetParam().meanwhile[tileMode] != GetParam().before);
        ExpectAsBefore();
    }
}

} // namespace
