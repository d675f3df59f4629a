#pragma once

#include "catalog/DesktopApp.h"
#include "catalog/IndexedList.h"
#include "catalog/Package.h"
#include "catalog/RecordIndexes.h"
#include "common/Guarded.h"
#include "common/WideString.h"
#include "platform/WinRtPackages.h"

#include <windows.h>

#include <memory>
#include <vector>

class ExcludeList;
class MemoryPool;
struct StoreIdentity;
struct IXmlReader;

// The catalogue of the applications that may be launched: Store packages with their applications, and desktop
// applications known by their shortcuts. The package manager owns the one instance. It may be called from any
// thread: its lists stand behind one reader/writer lock, shared while names are looked up or the file is
// written, exclusive around each change. So a launch during a refresh pass sees each record as it was before
// a change or as it is after it, and it sees at once what the pass has found. Records that are handed out
// stay alive until Clear(), Reload() and destruction, which must not run while one is in use.
//
// AppNameList.cpp holds look-ups and changes, AppNameListFile.cpp the reading and writing of the file,
// AppNameListStore.cpp the way in which Store packages of the system enter the lists.
class CQanhAppNameList
{
public:
    // The limit applies to each list: packages, desktop applications, and the applications of one package.
    explicit CQanhAppNameList(std::size_t listLimit = kListSizeLimit);
    CQanhAppNameList(const CQanhAppNameList&) = delete;
    CQanhAppNameList& operator=(const CQanhAppNameList&) = delete;

    // Adds everything that the file holds to the lists; does not clear them first. E_POINTER, E_INVALIDARG
    // for an empty path, the failure to open the file, E_OUTOFMEMORY, otherwise the status that ended the
    // reading: S_FALSE at the end of the document, or the reader's failure, with all records read up to there
    // kept.
    [[nodiscard]] HRESULT Load(const wchar_t* path) noexcept;

    // The same with what the file holds in the place of what the lists held, whatever ended the reading. A
    // file that could not be opened leaves the lists as they were. Does so in one step: who looks at the
    // lists meanwhile sees all of the old records or all of the new ones.
    [[nodiscard]] HRESULT Reload(const wchar_t* path) noexcept;

    // Replaces the file by what the lists hold now. E_POINTER, E_INVALIDARG, the failure to open the file,
    // otherwise the result of the final flush.
    [[nodiscard]] HRESULT Save(const wchar_t* path) const noexcept;

    // Deletes every package, then every desktop application.
    void Clear() noexcept;

    // The first package of exactly this family name, borrowed; null for a null or empty name or none. It can
    // be read but not changed: changes are the list's, which makes them under its lock.
    [[nodiscard]] const CQanhPackage* GetPackage(const wchar_t* packageFamilyName) const noexcept;

    // Brings a Store package of the system into the list, or up to date there, with the names that its
    // manifest declares. A reserved package stays as it is, and so does one whose version is known; a changed
    // one stays as it is until all its names can be resolved. E_POINTER; E_FAIL when the package does not
    // tell its identity; E_OUTOFMEMORY; the manifest reader's status for a changed package; otherwise S_OK.
    [[nodiscard]] HRESULT AddMetroPackage(platform::IPackage* pStorePackage) noexcept;

    // Takes a package record over: S_OK, E_POINTER, or E_OUTOFMEMORY with the list as before.
    [[nodiscard]] HRESULT AddMetroPackage(std::unique_ptr<CQanhPackage> package) noexcept;

    // Appends a desktop application for a shortcut that is not in the list yet. S_OK; S_FALSE when it is;
    // E_POINTER; E_INVALIDARG when one of the texts is empty; E_OUTOFMEMORY.
    [[nodiscard]] HRESULT AddDesktopApp(const wchar_t* displayName, const wchar_t* lnkFileName) noexcept;

    // Appends the desktop applications below the element at hand. E_POINTER, otherwise as
    // ForEachElementBelow().
    [[nodiscard]] HRESULT ReadDesktopApps(IXmlReader* pReader) noexcept;

    // True when a desktop application has this shortcut, ignoring case.
    [[nodiscard]] BOOL IsInDesktopAppList(const wchar_t* path) const noexcept;

    // Collects the names of the other applications that a search for the wanted name would hit too, in the
    // order of the catalogue; *pFound tells whether the wanted application itself is in it. S_OK, E_POINTER,
    // E_INVALIDARG.
    [[nodiscard]] HRESULT GetExcludeAppNameList(const wchar_t* wantedName, ExcludeList* pExcludeList,
                                                BOOL* pFound) const noexcept;

    // Calls visitPackage(package) for each package, then visitDesktopApp(app) for each desktop application,
    // in the order of the lists. Under the lock: neither may call the list.
    template <typename VisitPackage, typename VisitDesktopApp>
    void ForEachRecord(VisitPackage visitPackage, VisitDesktopApp visitDesktopApp) const
    {
        const auto lists = m_lists.Read();
        for (const auto& package : lists->packages) {
            visitPackage(*package);
        }
        for (const auto& app : lists->desktopApps) {
            visitDesktopApp(*app);
        }
    }

    // For the refresh pass, which asks the system about each record without the lock: the keys of all
    // records, and the new states of the records in the same order. Both throw std::bad_alloc.
    [[nodiscard]] std::vector<WideString> PackageFamilyNames() const;
    [[nodiscard]] std::vector<WideString> DesktopShortcuts() const;
    void SetPackagesInstalled(const std::vector<BOOL>& states);
    void SetDesktopAppsInstalled(const std::vector<BOOL>& states);

private:
    struct Lists
    {
        Lists(std::size_t packageLimit, std::size_t desktopAppLimit)
            : packages(packageLimit), desktopApps(desktopAppLimit)
        {
        }
        IndexedList<CQanhPackage, PackageIndex> packages;
        IndexedList<CQanhDesktopApp, ShortcutIndex> desktopApps;

        [[nodiscard]] bool AreIndexesComplete() const noexcept
        {
            return packages.IsIndexComplete() && desktopApps.IsIndexComplete();
        }
    };

    // What look(lists) returns, with indexes that are complete, unless memory runs out or records of a file
    // are just being added.
    template <typename Look> auto LookUp(Look look) const noexcept;
    // Out of memory, the indexes stay as they are.
    void CompleteIndexes() const noexcept;
    // The look-ups as the log tells them, record by record. While nothing is logged, the indexes answer, when
    // they are complete.
    [[nodiscard]] static const CQanhPackage* FindPackage(const Lists& lists,
                                                         const wchar_t* packageFamilyName) noexcept;
    [[nodiscard]] static bool HasShortcut(const Lists& lists, const wchar_t* path) noexcept;
    [[nodiscard]] HRESULT AddStorePackage(platform::IPackage* pStorePackage);
    [[nodiscard]] HRESULT RefreshPackage(const CQanhPackage& package, const StoreIdentity& identity);
    // Calls change(record) with a record of the list, under the lock for changes. Takes no memory.
    template <typename Change> void ChangePackage(const CQanhPackage& package, Change change);
    // What Load() and Reload() have in common; readWith(reader) is called once the file is open, and its
    // status is the result.
    template <typename ReadWith>
    [[nodiscard]] HRESULT LoadWith(const wchar_t* path, ReadWith readWith) noexcept;
    // What a file holds is read into lists of its own, which take no lock, and whose records wait for the
    // first look-up to come into the indexes. Its records and their places are blocks of the pool.
    [[nodiscard]] HRESULT ReadNodes(IXmlReader* pReader, Lists& lists) const;
    static void AppendPackage(std::unique_ptr<CQanhPackage> package, Lists& lists, MemoryPool& pool) noexcept;
    [[nodiscard]] static HRESULT ReadDesktopApps(IXmlReader* pReader, Lists& lists,
                                                 MemoryPool& pool) noexcept;
    // Calls readInto(lists), with lists that have the room that is left in these, and appends what they hold
    // then, whatever the result. Throws when there is no memory to begin with.
    template <typename ReadInto> [[nodiscard]] HRESULT AppendRead(ReadInto readInto);

    const std::size_t m_listLimit;
    mutable Guarded<Lists> m_lists; // a look-up may have to complete the indexes
};
