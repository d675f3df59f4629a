#pragma once

#include "system/Golden.h"

#include <initializer_list>
#include <string>
#include <string_view>

// What refresh passes leave in the log: pieces of goldens, in the order of a pass.
namespace test {

inline constexpr char commonPrograms[] = R"(<allusers>\Microsoft\Windows\Start Menu\Programs)";
inline constexpr char userPrograms[] = R"(<roaming>\Microsoft\Windows\Start Menu\Programs)";

inline std::string PackageIsInstalled(std::string_view family, bool is)
{
    return Filled(R"(
        QanhIsInstalled(<1>) IN
        CQanhPackageManager::IsInstalled(<1>) IN
        CQanhPackageManager::FindPackageByName(<1>) IN
        CQanhPackageManager::GetPackageManager IN ... OUT(0x00000000)
        CQanhPackageManager::FindPackageByName OUT
        CQanhPackageManager::IsInstalled OUT(*pIsInstalled = <2>)
        QanhIsInstalled OUT(0x00000000)
    )",
                  {family, is ? "1" : "0"});
}

// How the packages of the Store are walked through; the result of the last one is the pass's.
inline std::string Packages(std::initializer_list<std::string_view> packages,
                            std::string_view result = "0x00000000")
{
    return Filled(R"(
        CQanhPackageManager::RefreshMetroApps IN
        CQanhPackageManager::GetPackageManager IN ... OUT(0x00000000)
        <1>
        CQanhPackageManager::RefreshMetroApps OUT(<2>)
    )",
                  {Joined(packages), result});
}

// A folder with what is in it.
inline std::string FolderWith(std::string_view folder, std::initializer_list<std::string_view> contents)
{
    return Filled(R"(
        CQanhPackageManager::RefreshDesktopApps(<1>) IN
        <2>
        CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)
    )",
                  {folder, Joined(contents)});
}

// A folder's shortcuts of one kind, which the pattern stands for: none of them, for a reason of the system's.
inline std::string NoShortcuts(std::string_view folder, std::string_view pattern,
                               std::string_view error = "2")
{
    return Filled(R"(
        CQanhPackageManager::AddLinkFileToList(<1>) IN
        <1>\<2> Errcode = <3> <end>
    )",
                  {folder, pattern, error});
}

// The only shortcut of its folder and kind: compared with so many other records, and new or then found.
inline std::string OneShortcut(const std::string& folder, const std::string& file, std::size_t others,
                               bool isKnown)
{
    const std::string path = folder + "\\" + file;
    std::string comparisons;
    for (std::size_t record = 0; record < others; ++record) {
        comparisons += Filled(
            "CQanhDesktopApp::IsSameShortcut IN(<1>)\nCQanhDesktopApp::IsSameShortcut OUT(0)\n", {path});
    }
    if (isKnown) {
        comparisons += Filled(
            "CQanhDesktopApp::IsSameShortcut IN(<1>)\nCQanhDesktopApp::IsSameShortcut OUT(1)\n", {path});
    }
    return Filled(R"(
        CQanhPackageManager::AddLinkFileToList(<1>) IN
        CQanhAppNameList::AddDesktopApp(<2>, <3>) IN
        CQanhAppNameList::IsInDesktopAppList(<3>) IN
        <4>
        CQanhAppNameList::IsInDesktopAppList OUT(<5>)
        CQanhAppNameList::AddDesktopApp OUT(0x0000000<5>)
        CQanhPackageManager::AddLinkFileToList OUT
    )",
                  {folder, file.substr(0, file.size() - 4), path, comparisons, isKnown ? "1" : "0"});
}

inline std::string NewShortcut(const std::string& folder, const std::string& file, std::size_t others)
{
    return OneShortcut(folder, file, others, false);
}

inline std::string KnownShortcut(const std::string& folder, const std::string& file, std::size_t others)
{
    return OneShortcut(folder, file, others, true);
}

inline std::string EmptyFolder(std::string_view folder)
{
    return FolderWith(folder, {NoShortcuts(folder, "*.lnk"), NoShortcuts(folder, "*.url")});
}

inline std::string MissingFolder(std::string_view folder)
{
    return Filled(R"(
        CQanhPackageManager::RefreshDesktopApps(<1>) IN
        <2>
        <3>
        Errcode = 3 <end>
        CQanhPackageManager::RefreshThread pPyxPackageManager->RefreshDesktopApps(C) failed. ErrCode = 0x80004005 <end>
    )",
                  {folder, NoShortcuts(folder, "*.lnk", "3"), NoShortcuts(folder, "*.url", "3")});
}

// Two empty folders.
inline std::string EmptyStartMenu()
{
    return EmptyFolder(commonPrograms) + EmptyFolder(userPrograms);
}

// The catalogue file with its records.
inline std::string Saved(std::initializer_list<std::string_view> records)
{
    return Filled(R"(
        CQanhAppNameList::Save(<local>\Vel\QanHelper\TestHost\AppNameList.xml) IN
        <1>
        CQanhAppNameList::Save OUT(0x00000000)
    )",
                  {Joined(records)});
}

inline constexpr char emptyPackage[] = "CQanhPackage::ToXmlNode IN ... OUT(0x00000000)";

inline constexpr char packageWithOneApplication[] = R"(
    CQanhPackage::ToXmlNode IN
    CQanhMetroApp::ToXmlNode IN ... OUT(0x00000000)
    CQanhPackage::ToXmlNode OUT(0x00000000)
)";

inline constexpr char shortcut[] = "CQanhDesktopApp::ToXmlNode IN ... OUT(0x00000000)";

// It is neither installed nor reserved.
inline constexpr char shortcutThatIsLeftOut[] = "CQanhDesktopApp::ToXmlNode IN ... OUT(0x00000001)";

} // namespace test
