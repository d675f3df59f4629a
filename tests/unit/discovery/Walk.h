#pragma once

#include "common/UniqueHandle.h"
#include "discovery/PackageManager.h"
#include "unit/discovery/Records.h"

namespace walk_test {

using namespace test;
inline const Lines kOut = {"CQanhPackageManager::RefreshDesktopApps OUT(0x00000000)"};

// The beginning of a walk through a folder: the search for each kind of shortcut, which has found some, or
// has ended with this error.
inline Lines FolderLines(const std::string& folder, int linkError, int internetLinkError)
{
    const std::string add = "CQanhPackageManager::AddLinkFileToList";
    const auto end = [&](const char* pattern, int error) {
        return error == 0 ? add + " OUT" : folder + pattern + " Errcode = " + std::to_string(error) + " ";
    };
    return {"CQanhPackageManager::RefreshDesktopApps(" + folder + ") IN", add + "(" + folder + ") IN",
            end("\\*.lnk", linkError), add + "(" + folder + ") IN", end("\\*.url", internetLinkError)};
}

// A walk through a folder of the test's own.
class DesktopDiscovery : public ::testing::Test
{
protected:
    DesktopDiscovery() { m_manager.m_hExitEvent = m_exitEvent.Get(); }

    std::wstring At(const std::wstring& name) const { return m_folder / name; }
    std::string Narrow(const std::wstring& name) const { return ToUtf8(m_folder / name); }
    std::string Root() const { return ToUtf8(m_folder.Path()); }
    void MakeFiles(const std::vector<const wchar_t*>& names) const
    {
        for (const wchar_t* name : names) {
            MakeFile(At(name));
        }
    }

    // Walks through the folder.
    HRESULT Walk() { return m_manager.RefreshDesktopApps(m_folder.Path().c_str()); }

    // The paths of the catalogue's records, in its order: files of the folder.
    void ExpectFound(const std::vector<const wchar_t*>& names) const
    {
        std::vector<std::wstring> paths;
        for (const wchar_t* name : names) {
            paths.push_back(At(name));
        }
        EXPECT_EQ(Shortcuts(m_manager), paths);
    }
    // The names and paths that were handed to the catalogue, from its own entry lines: "name, path".
    Lines HandedOver() const
    {
        const std::string start = "CQanhAppNameList::AddDesktopApp(";
        const std::string end = ") IN";
        Lines handedOver;
        for (const std::string& line : LinesWith({start.c_str()}, m_log.Lines())) {
            handedOver.push_back(line.substr(start.size(), line.size() - start.size() - end.size()));
        }
        return handedOver;
    }
    // The walk's own lines, without those of the catalogue.
    Lines WalkLines() const
    {
        return LinesWithout({"CQanhAppNameList::", "CQanhDesktopApp::"}, m_log.Lines());
    }

    TemporaryFolder m_folder;
    LogCapture m_log;
    const UniqueHandle m_exitEvent{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CQanhPackageManager m_manager;
};

} // namespace walk_test
