#pragma once

#include <initializer_list>
#include <string>

// What refresh passes leave in the log: pieces of goldens, in the order of a pass.
namespace test {

inline const std::string commonPrograms = R"(<allusers>\Microsoft\Windows\Start Menu\Programs)";
inline const std::string userPrograms = R"(<roaming>\Microsoft\Windows\Start Menu\Programs)";

inline std::string PackageIsInstalled(const std::string& family, bool is)
{
    return "\nQanhIsInstalled(" + family + ") IN\nCQanhPackageManager::IsInstalled(" + family +
           ") IN\nCQanhPackageManager::FindPackageByName(" + family + R"() IN
        CQanhPackageManager::GetPackageManager IN
        CQanhPackageManager::GetPackageManager OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = )" +
           (is ? "1" : "0") + ")\nQanhIsInstalled OUT(0x00000000)\n";
}

inline constexpr char packagesBegin[] = R"(
    CQanhPackageManager::RefreshMetroApps IN
    CQanhPackageManager::GetPackageManager IN
    CQanhPackageManager::GetPackageManager OUT(0x00000000)
)";

inline constexpr char packagesEnd[] = "\nCQanhPackageManager::RefreshMetroApps OUT(0x00000000)\n";

inline const std::string noPackages = std::string(packagesBegin) + packagesEnd;

inline std::string FolderBegins(const std::string& folder)
{
    return "\nCQanhPackageManager::RefreshDesktopApps(" + folder + ") IN\n";
}

inline constexpr char folderEnds[] = "\nCQanhPackageManager::RefreshDesktopApps OUT(0x00000000)\n";

// A folder's shortcuts of one kind, which the pattern stands for: none of them, for a reason of the system's.
inline std::string NoShortcuts(const std::string& folder, const std::string& pattern, int error = 2)
{
    return "\nCQanhPackageManager::AddLinkFileToList(" + folder + ") IN\n" + folder + "\\" + pattern +
           " Errcode = " + std::to_string(error) + " <end>\n";
}

// The same: one of them.
inline std::string OneShortcut(const std::string& folder, const std::string& shortcut)
{
    return "\nCQanhPackageManager::AddLinkFileToList(" + folder + ") IN\n" + shortcut +
           "\nCQanhPackageManager::AddLinkFileToList OUT\n";
}

// What a shortcut is compared with on its way into the catalogue.
inline std::string RecordsAreCompared(const std::string& path, std::size_t others, bool isFound)
{
    std::string golden = "\nCQanhAppNameList::IsInDesktopAppList(" + path + ") IN\n";
    for (std::size_t record = 0; record < others + (isFound ? 1 : 0); ++record) {
        golden += "CQanhDesktopApp::IsSameShortcut IN(" + path + ")\nCQanhDesktopApp::IsSameShortcut OUT(" +
                  (record == others ? "1" : "0") + ")\n";
    }
    return golden + "CQanhAppNameList::IsInDesktopAppList OUT(" + (isFound ? "1" : "0") + ")\n";
}

inline std::string ShortcutIs(const std::string& folder, const std::string& file, std::size_t others,
                              bool isKnown)
{
    const std::string path = folder + "\\" + file;
    return "\nCQanhAppNameList::AddDesktopApp(" + file.substr(0, file.size() - 4) + ", " + path + ") IN\n" +
           RecordsAreCompared(path, others, isKnown) + "CQanhAppNameList::AddDesktopApp OUT(0x0000000" +
           (isKnown ? "1" : "0") + ")\n";
}

// The only shortcut of its folder and kind: one that is new among so many other records, or one that is known
// and stands behind so many others.
inline std::string NewShortcut(const std::string& folder, const std::string& file, std::size_t others)
{
    return OneShortcut(folder, ShortcutIs(folder, file, others, false));
}

inline std::string KnownShortcut(const std::string& folder, const std::string& file, std::size_t others)
{
    return OneShortcut(folder, ShortcutIs(folder, file, others, true));
}

inline std::string EmptyFolder(const std::string& folder)
{
    return FolderBegins(folder) + NoShortcuts(folder, "*.lnk") + NoShortcuts(folder, "*.url") + folderEnds;
}

inline std::string MissingFolder(const std::string& folder)
{
    return FolderBegins(folder) + NoShortcuts(folder, "*.lnk", 3) + NoShortcuts(folder, "*.url", 3) + R"(
        Errcode = 3 <end>
        CQanhPackageManager::RefreshThread pPyxPackageManager->RefreshDesktopApps(C) failed. ErrCode = 0x80004005 <end>
        )";
}

inline const std::string noShortcuts = EmptyFolder(commonPrograms) + EmptyFolder(userPrograms);

inline constexpr char saveBegin[] =
    "\nCQanhAppNameList::Save(<local>\\Vel\\QanHelper\\TestHost\\AppNameList.xml) IN\n";

inline constexpr char emptyPackageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

inline constexpr char packageIsWritten[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhMetroApp::ToXmlNode IN
    CQanhMetroApp::ToXmlNode OUT(0x00000000)
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

inline constexpr char shortcutIsWritten[] = R"(
    CQanhDesktopApp::ToXmlNode IN
    CQanhDesktopApp::ToXmlNode OUT(0x00000000)
)";

// It is neither installed nor reserved.
inline constexpr char shortcutIsLeftOut[] = R"(
    CQanhDesktopApp::ToXmlNode IN
    CQanhDesktopApp::ToXmlNode OUT(0x00000001)
)";

inline constexpr char saveEnd[] = "\nCQanhAppNameList::Save OUT(0x00000000)\n";

} // namespace test
