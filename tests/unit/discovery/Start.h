#pragma once

#include "unit/discovery/Manager.h"

namespace discovery_test {

// The start of a package manager, with the lines that it writes.
class PackageManagerStart : public Manager
{
public:
    // The other process' first pass is over.
    static void LoseMutex() { s_otherMutex.Reset(); }

protected:
    ~PackageManagerStart() override { LoseMutex(); }

    void WriteCatalog() const { test::WriteFileBytes(CatalogFile(), CatalogOf({L"C:\\catalog.lnk"})); }
    void WritePreset() const { test::WriteFileBytes(PresetFile(), CatalogOf({L"C:\\preset.lnk"})); }

    // Another process of the executable in its first pass, so far as this one can see it.
    static void HoldMutexElsewhere(const std::wstring& name = MutexName())
    {
        s_otherMutex.Reset(CreateMutexW(nullptr, FALSE, name.c_str()));
    }

    // The log of a start with this result, without the lines of the catalogue's records.
    void ExpectLog(const std::string& result, const Lines& lines) const
    {
        EXPECT_EQ(LinesWithout({"CQanhDesktopApp::", "CQanhApp::", "CQanhAppNameList::AddDesktopApp",
                                "CQanhAppNameList::IsInDesktopAppList", "CQanhAppNameList::ReadDesktopApps"},
                               m_log.Lines()),
                  Call("CQanhPackageManager::Initialize", "(" + result + ")", lines));
    }
    // Up to the choice of the file, in the owner.
    Lines OwnerLines(int folderCode = 183) const
    {
        return ModuleNameLines() + Lines{"CQanhPackageManager::Initialize CreateMutex() success. "} +
               FolderLines(folderCode);
    }
    // What the owner writes when it loads its catalogue.
    Lines CatalogLines() const { return OwnerLines() + LoadLines(CatalogFile(), "0x00000001"); }
    // The same of the preset, after the lines so far.
    Lines LoadPresetLines() const { return PresetLines() + LoadLines(PresetFile(), "0x00000001"); }
    // A load with a result that is no success.
    static Lines FailedLoadLines(const std::wstring& file, const std::string& result)
    {
        return LoadLines(file, result) + Lines{"m_AppNameList.Load() failed. ErrCode = " + result + " "};
    }
    // The same in another process. The line about the mutex has no end, so the next one follows it at once.
    Lines OtherLines() const
    {
        const Lines folder = FolderLines();
        return ModuleNameLines() +
               Lines{"CQanhPackageManager::Initialize CreateMutex()  GetLastError() : ERROR_ALREADY_EXISTS" +
                     folder[0]} +
               Lines(folder.begin() + 1, folder.end());
    }
    // Nothing of the owner's was made.
    void ExpectNotOwner() const
    {
        ExpectNoHandles();
        EXPECT_THAT(m_threadStarts, IsEmpty());
    }

    const std::string kNoMutex = "OpenMutex() : Mutex none. ";

private:
    static inline UniqueHandle s_otherMutex;
};

} // namespace discovery_test
