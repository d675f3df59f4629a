#pragma once

#include <windows.h>

#include <string>
#include <vector>

// A place in a file, counted from 1.
struct Place
{
    unsigned line = 0;
    unsigned column = 0;

    friend bool operator==(const Place&, const Place&) = default;
};

struct DocumentAttribute
{
    std::wstring name;
    std::wstring value;
};

struct DocumentElement
{
    std::wstring name;
    Place place;
    std::vector<DocumentAttribute> attributes;
    bool isSkipped = false; // the library passes it over and has no use for it

    // The text of an attribute, of the last one of this name; null when there is none.
    [[nodiscard]] const std::wstring* Find(const wchar_t* attribute) const;
};

// A catalogue file as it stands there, before the library makes records of it: every element in order.
struct Document
{
    std::vector<DocumentElement> elements;
    bool isWhole = false;    // its root is closed
    std::size_t open = 0;    // elements that the end of the reading leaves open
    HRESULT ended = S_FALSE; // what ended the reading; a failure: not the end of the document
    Place end;

    // Why the reading ended before the document did, as a failure; S_OK for a whole document, and for one
    // that lacks nothing but the end of its root: the library writes its files so.
    [[nodiscard]] HRESULT CutOff() const;

    // Those of this name that the library makes records of, in order.
    [[nodiscard]] std::vector<const DocumentElement*> Read(const wchar_t* element) const;
};

// Throws Failure when the file cannot be opened.
[[nodiscard]] Document ReadDocument(const std::wstring& path);
