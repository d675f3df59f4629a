#pragma once

#include "catalog/App.h"

#include <memory>

// A Store application, always owned by its package's record.
class CQanhMetroApp : public CQanhApp
{
public:
    // A null name makes an empty one.
    explicit CQanhMetroApp(const wchar_t* displayName = nullptr, const wchar_t* shortName = nullptr,
                           const wchar_t* rubyDisplayName = nullptr, const wchar_t* rubyShortName = nullptr);

    [[nodiscard]] HRESULT AddToExcludeAppNameList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                                  BOOL* pFound) const override;
    [[nodiscard]] HRESULT ToXmlNode(IXmlWriter* pWriter) const override;

    // Reads the element at hand into a new record. S_OK, E_POINTER, E_OUTOFMEMORY or the reader's failure;
    // the record is passed out on S_OK only. It and its texts are blocks of the pool, when there is one.
    // The reader is left at the last attribute, or where a failure left it: the caller may read on, and ask
    // nothing of the element.
    [[nodiscard]] static HRESULT FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhMetroApp>* ppApp,
                                             MemoryPool* pool = nullptr) noexcept;

    WideString ShortName;
    WideString RubyShortName; // the reading of the short name, may be empty
};
