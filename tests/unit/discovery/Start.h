#pragma once

#include "unit/discovery/Manager.h"

#include <string>

namespace discovery_test {

// The start of a package manager, with the lines that it writes.
class PackageManagerStart : public Manager
{
public:
    // The other process' first pass is over.
    static void LoseMutex()
    {
        if (s_otherMutex) {
            CloseHandle(s_otherMutex);
            s_otherMutex = nullptr;
        }
    }

protected:
    ~PackageManagerStart() override { LoseMutex(); }

    void WriteCatalog() const { test::WriteFileBytes(CatalogFile(), CatalogOf({L"C:\\catalog.lnk"})); }
    void WritePreset() const { test::WriteFileBytes(PresetFile(), CatalogOf({L"C:\\preset.lnk"})); }
    // Without records, so that reading it leaves no lines of theirs.
    void WriteEmptyCatalog() const { test::WriteFileBytes(CatalogFile(), "<Applications />"); }
    void WriteEmptyPreset() const { test::WriteFileBytes(PresetFile(), "<Applications />"); }

    // Another process of the executable in its first pass, so far as this one can see it.
    static void HoldMutexElsewhere(const std::wstring& name = MutexName())
    {
        s_otherMutex = CreateMutexW(nullptr, FALSE, name.c_str());
    }

    Lines InitializeLines(const Lines& inner, const std::string& result) const
    {
        return Lines{"CQanhPackageManager::Initialize IN"} + inner +
               Lines{"CQanhPackageManager::Initialize OUT(" + result + ")"};
    }
    // Up to the choice of the file, in the owner.
    Lines OwnerLines() const
    {
        return ModuleNameLines() + Lines{"CQanhPackageManager::Initialize CreateMutex() success. "} +
               FolderLines();
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
    void ExpectNotOwner() const
    {
        EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
        EXPECT_EQ(m_manager.m_hExitEvent, nullptr);
        EXPECT_EQ(m_manager.m_hRefreshThread, nullptr);
        EXPECT_THAT(m_threadStarts, ::testing::IsEmpty());
    }

    // After a failed start another process of the executable can be the owner.
    void ExpectNothingHeld() const
    {
        EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
        EXPECT_FALSE(MutexExists());
        EXPECT_EQ(m_manager.m_hExitEvent, nullptr);
        EXPECT_EQ(m_manager.m_hRefreshThread, nullptr);
    }

    const std::string kNoMutex = "OpenMutex() : Mutex none. ";

private:
    static inline HANDLE s_otherMutex = nullptr;
};

} // namespace discovery_test
