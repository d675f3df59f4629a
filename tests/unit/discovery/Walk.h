#pragma once

#include "discovery/PackageManager.h"
#include "support/LogCapture.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace walk_test {

inline const std::string kName = "CQanhPackageManager::RefreshDesktopApps";
inline const std::string kAddName = "CQanhPackageManager::AddLinkFileToList";

// The paths of the catalogue's desktop applications, in its order.
inline std::vector<std::wstring> Paths(const CQanhPackageManager& manager)
{
    std::vector<std::wstring> paths;
    for (const WideString& shortcut : manager.m_AppNameList.DesktopShortcuts()) {
        paths.emplace_back(shortcut.c_str());
    }
    return paths;
}

// The names and paths that were handed to the catalogue, from its own entry lines: "name, path".
inline std::vector<std::string> HandedOver(const test::LogCapture& log)
{
    const std::string start = "CQanhAppNameList::AddDesktopApp(";
    const std::string end = ") IN";
    std::vector<std::string> handedOver;
    for (const std::string& line : log.Lines()) {
        if (line.rfind(start, 0) == 0) {
            handedOver.push_back(line.substr(start.size(), line.size() - start.size() - end.size()));
        }
    }
    return handedOver;
}

// The walk's own lines, without those of the catalogue.
inline std::vector<std::string> WalkLines(const test::LogCapture& log)
{
    std::vector<std::string> lines;
    for (const std::string& line : log.Lines()) {
        if (line.rfind("CQanhAppNameList::", 0) != 0 && line.rfind("CQanhDesktopApp::", 0) != 0) {
            lines.push_back(line);
        }
    }
    return lines;
}

// A walk through a folder of the test's own.
class DesktopDiscovery : public ::testing::Test
{
protected:
    DesktopDiscovery() { m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    ~DesktopDiscovery() override
    {
        CloseHandle(m_manager.m_hExitEvent);
        m_manager.m_hExitEvent = nullptr;
    }

    std::wstring At(const std::wstring& name) const { return m_folder / name; }
    std::string Narrow(const std::wstring& name) const { return test::ToUtf8(m_folder / name); }
    std::string Root() const { return test::ToUtf8(m_folder.Path()); }
    void MakeFiles(std::initializer_list<const wchar_t*> names) const
    {
        for (const wchar_t* name : names) {
            test::MakeFile(At(name));
        }
    }

    test::TemporaryFolder m_folder;
    test::LogCapture m_log;
    CQanhPackageManager m_manager;
};

} // namespace walk_test
