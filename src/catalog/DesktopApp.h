#pragma once

#include "catalog/App.h"

#include <memory>

// A desktop application that is started through a shortcut of the Start menu. Owned by the catalogue.
class CQanhDesktopApp : public CQanhApp
{
public:
    // A null name makes an empty one.
    explicit CQanhDesktopApp(const wchar_t* displayName = nullptr, const wchar_t* lnkFileName = nullptr,
                             const wchar_t* localizeName = nullptr, const wchar_t* rubyDisplayName = nullptr,
                             bool needReserve = false, bool isInstalled = true, bool isDualMode = false);

    // Leaves *pFound as it is and returns S_FALSE when the application is not installed.
    [[nodiscard]] HRESULT AddToExcludeAppNameList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                                  BOOL* pFound) const override;
    // Writes nothing and returns S_FALSE when the application is neither installed nor reserved.
    [[nodiscard]] HRESULT ToXmlNode(IXmlWriter* pWriter) const override;

    // Reads the element at hand into a new record. S_OK, E_POINTER, E_OUTOFMEMORY or the reader's failure;
    // the record is passed out on S_OK only. It and its texts are blocks of the pool, when there is one.
    // The reader is left at the last attribute, or where a failure left it: the caller may read on, and ask
    // nothing of the element.
    [[nodiscard]] static HRESULT FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhDesktopApp>* ppApp,
                                             MemoryPool* pool = nullptr) noexcept;

    // True when the path is not empty and is that of the record's shortcut, ignoring case.
    [[nodiscard]] BOOL IsSameShortcut(const wchar_t* path) const noexcept;

    BOOL NeedReserve;        // stays in the file although it is not installed
    WideString LocalizeName; // when not empty, the name that the search knows in place of DisplayName
    WideString LnkFileName;  // full path of the shortcut, which identifies the application
    BOOL IsInstalled;
    BOOL IsDualMode; // an exact match of its name does not count as found
};
