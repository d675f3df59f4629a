#pragma once

#include "catalog/App.h"
#include "catalog/MetroApp.h"
#include "catalog/OwnedList.h"
#include "common/Pooled.h"
#include "common/WideString.h"

#include <windows.h>

#include <memory>

// The version of a package, in the order in which a record holds its parts. That order is not the one in
// which versions are written: the file's third number is the build, and it is read into the third part.
struct RecordVersion
{
    UINT16 Major = 0;
    UINT16 Minor = 0;
    UINT16 Revision = 0;
    UINT16 Build = 0;

    friend bool operator==(const RecordVersion&, const RecordVersion&) = default;
};

// A Store package, installed or reserved, with the applications that its manifest declares. Owned by the
// catalogue, whose lock guards it; made on the thread that reads the file or refreshes.
class CQanhPackage : public PoolObject
{
public:
    // A package as the system's package manager knows it: installed, not reserved.
    CQanhPackage(const wchar_t* packageFamilyName, const wchar_t* fullName, const wchar_t* name,
                 const RecordVersion& version, std::size_t appLimit = kListSizeLimit);
    // A package as the file knows it: without full name and name.
    CQanhPackage(WideString packageFamilyName, const RecordVersion& version, BOOL needReserve,
                 BOOL isInstalled, std::size_t appLimit = kListSizeLimit);
    virtual ~CQanhPackage();
    CQanhPackage(const CQanhPackage&) = delete;
    CQanhPackage& operator=(const CQanhPackage&) = delete;

    // Appends an application. S_OK, E_POINTER, or E_OUTOFMEMORY with the list as before (also at its size
    // limit). Its place in the list is a block of the pool, when there is one.
    [[nodiscard]] HRESULT AddApplication(std::unique_ptr<CQanhApp> app, MemoryPool* pool = nullptr) noexcept;
    // The same with a new record of these two names; a null name is empty. No test for duplicates.
    [[nodiscard]] HRESULT AddApplication(const wchar_t* displayName, const wchar_t* shortName) noexcept;
    void DeleteAllApp() noexcept;

    // Takes the version and the applications of another record of the same package, which gets those of this
    // one.
    void SwapContents(CQanhPackage& other) noexcept;

    // True when the package's family name is not empty and equals the argument to the letter.
    [[nodiscard]] BOOL IsThisPackage(const wchar_t* packageFamilyName) const noexcept;

    // Asks every application of an installed package what a search for the wanted name makes of it; *pFound
    // becomes 1 when one of them is the wanted one and stays as it is otherwise.
    void AddAppNameToExcludeList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                 BOOL* pFound) const noexcept;

    // Writes the package and its applications as one element of the catalogue file; nothing, with S_OK, when
    // the package is neither installed nor reserved. E_POINTER or the writer's failure.
    [[nodiscard]] HRESULT ToXmlNode(IXmlWriter* pWriter) const;

    // Reads the element at hand and the applications below it into a new record, which is passed out also
    // when the document ends early. Returns the last status of the reader (S_FALSE at the end of the
    // document), E_POINTER or E_OUTOFMEMORY. All of the record are blocks of the pool, when there is one.
    // With a failure of its attributes the reader is left at one of them, otherwise where
    // Xml::ForEachElementBelow() ends: the caller may read on, and ask nothing of the package's element.
    [[nodiscard]] static HRESULT FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhPackage>* ppPackage,
                                             std::size_t appLimit = kListSizeLimit,
                                             MemoryPool* pool = nullptr) noexcept;

    [[nodiscard]] const OwnedList<CQanhApp>& Apps() const noexcept { return m_apps; }

    WideString PackageFamilyName;
    WideString FullName; // known for a package from the package manager only, never stored in the file
    WideString Name;     // likewise
    RecordVersion Version;
    BOOL NeedReserve; // stays in the file although it is not installed, and is never refreshed
    BOOL IsInstalled;

private:
    OwnedList<CQanhApp> m_apps;
};
