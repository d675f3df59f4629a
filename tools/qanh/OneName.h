#pragma once

#include "Applications.h"
#include "catalog/WantedName.h"

#include <string>
#include <vector>

// A search asks an application about all of its names at once and does not say which of them decided. Here it
// is asked about one name: through a record that has this one only.
class OneName
{
public:
    // The names of an application that a search looks at; empty ones are left out.
    [[nodiscard]] static std::vector<OneName> Of(const Application& application);

    [[nodiscard]] const std::wstring& Text() const { return m_text; }

    // True when a search excludes it by its text, without its reading.
    [[nodiscard]] bool IsExcludedByText(const WantedName& wanted) const;
    // True when a search takes it for a name of the wanted application.
    [[nodiscard]] bool IsFound(const WantedName& wanted) const;
    // True when a search whose capitals are small letters, as those of this name and its reading are too,
    // would exclude it or take it for one of the wanted application.
    [[nodiscard]] bool IsHitInSmallLetters(const std::wstring& wanted) const;

    // What it is: "display name", and the like for its reading.
    [[nodiscard]] const wchar_t* Kind() const { return m_kind; }
    [[nodiscard]] const wchar_t* KindOfReading() const { return m_kindOfReading; }

private:
    OneName(const WideString& text, const WideString& reading, const wchar_t* kind,
            const wchar_t* kindOfReading);

    std::wstring m_text;
    std::wstring m_reading;
    const wchar_t* m_kind;
    const wchar_t* m_kindOfReading;
    bool m_isShortName = false;
};

// What an application makes of a search.
struct Verdict
{
    std::vector<std::wstring> excluded;
    bool isFound = false;
};
[[nodiscard]] Verdict Ask(const CQanhApp& app, const WantedName& wanted);
