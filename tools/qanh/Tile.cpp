#include "Tile.h"

#include "QanHelper.h"
#include "common/FormatText.h"

#include <shlwapi.h>

namespace {

constexpr wchar_t kBrowserKey[] = L"Software\\Microsoft\\Internet Explorer\\Main";
constexpr wchar_t kTileValue[] = L"ApplicationTileImmersiveActivation";
constexpr DWORD kAbsentTile = 1; // what a setting that is not there counts as

// The setting as it is.
struct Tile
{
    bool isThere = false;
    bool isNumber = true;
    DWORD value = kAbsentTile;
};

// Only ever read: this function of the shell cannot write.
Tile ReadTile()
{
    Tile tile;
    DWORD type = REG_NONE;
    DWORD value = 0;
    DWORD size = sizeof value;
    const DWORD status = SHGetValueW(HKEY_CURRENT_USER, kBrowserKey, kTileValue, &type, &value, &size);
    tile.isThere = status == ERROR_SUCCESS || status == ERROR_MORE_DATA;
    tile.isNumber = !tile.isThere || type == REG_DWORD;
    if (status == ERROR_SUCCESS && tile.isNumber) {
        tile.value = value;
    }
    return tile;
}

} // namespace

std::wstring TileText(DWORD tileMode)
{
    const Tile tile = ReadTile();
    const std::wstring wanted = std::to_wstring(tileMode);
    if (!tile.isNumber) {
        return FormatText(L"leaves %s as it is, which is no number", {kTileValue});
    }
    const std::wstring now = tile.isThere ? L"is " + std::to_wstring(tile.value) : L"is not set";
    if (tileMode == QANH_TILE_UNCHANGED) {
        return FormatText(L"leaves %s, which %s", {kTileValue, now});
    }
    if (tile.value == tileMode) {
        return FormatText(L"leaves %s, which %s and counts as %s", {kTileValue, now, wanted});
    }
    return FormatText(L"sets %s, which %s, to %s until the launch is over", {kTileValue, now, wanted});
}
