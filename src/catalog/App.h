#pragma once

#include "catalog/WantedName.h"
#include "common/Pooled.h"
#include "common/WideString.h"

#include <windows.h>

#include <optional>

class ExcludeList;
struct IXmlReader;
struct IXmlWriter;

// One of the names of an application, and its reading, which may be empty.
struct AppName
{
    const WideString& text;
    const WideString& reading;
};

// One search, with the places for what is found: the names that it must exclude, and whether the wanted
// application is among those that were asked.
struct ExcludeSearch
{
    const WantedName& wantedName;
    ExcludeList* pExcludeList;
    BOOL* pFound;
};

// The names under which the Start screen's search finds one application. Records live in the catalogue, which
// deletes them through this base and guards them with its lock: fields are changed only under it.
class CQanhApp : public PoolObject
{
public:
    CQanhApp(const wchar_t* displayName, const wchar_t* rubyDisplayName);
    virtual ~CQanhApp() = default;
    CQanhApp(const CQanhApp&) = delete;
    CQanhApp& operator=(const CQanhApp&) = delete;

    // Decides what a search for the wanted name makes of this application: *pFound becomes 1 when it is the
    // wanted one; a name of it that the search would hit too is added to the exclude list. S_OK; S_FALSE when
    // there was nothing to do or the last name was listed already; E_POINTER; E_INVALIDARG for an empty
    // wanted name; E_OUTOFMEMORY; E_FAIL.
    [[nodiscard]] virtual HRESULT AddToExcludeAppNameList(const WantedName& wantedName,
                                                          ExcludeList* pExcludeList, BOOL* pFound) const = 0;

    // Writes the record as one element of the catalogue file.
    [[nodiscard]] virtual HRESULT ToXmlNode(IXmlWriter* pWriter) const = 0;

    // 1 when every token that a search looks up of `part` occurs somewhere in `whole`, in any order and exact
    // letter case, else 0.
    [[nodiscard]] BOOL IsSubStrNoOrder(const wchar_t* part, const wchar_t* whole) const noexcept;

    WideString DisplayName;
    WideString RubyDisplayName; // the reading of the display name, may be empty

protected:
    // What both kinds of record do with one of their names: when the search would hit it, it is either that
    // of the wanted application, which sets *pFound, or added to the exclude list; when the search would hit
    // its reading, it is added too. Returns the result of the last adding, or none when nothing was added; a
    // failing adding ends the operation.
    [[nodiscard]] std::optional<HRESULT> ExcludeName(const AppName& name,
                                                     const ExcludeSearch& search) const noexcept;

private:
    // IsSubStrNoOrder(the wanted name in lower case, whole).
    [[nodiscard]] static BOOL IsWantedNameIn(const WantedName& wantedName, const WideString& whole) noexcept;
};

// Asks one application what a search for the wanted name makes of it; *pFound becomes 1 when it is the wanted
// one and stays as it is otherwise. Its result is of no consequence.
void AskApp(const CQanhApp& app, const WantedName& wantedName, ExcludeList* pExcludeList, BOOL* pFound);

// The checks with which every decision begins.
[[nodiscard]] HRESULT CheckExcludeArguments(const WantedName& wantedName, const ExcludeList* pExcludeList,
                                            const BOOL* pFound) noexcept;
