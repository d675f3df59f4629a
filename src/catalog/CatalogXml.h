#pragma once

#include "common/MemoryPool.h"
#include "common/OutOfMemory.h"
#include "common/WideString.h"
#include "common/Xml.h"

#include <windows.h>

#include <xmllite.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

// The names of the catalogue file, and how it holds values in attributes. No state is kept; reader and writer
// belong to the caller.
namespace CatalogXml {

constexpr wchar_t kApplications[] = L"Applications";
constexpr wchar_t kMetroApps[] = L"MetroApps";
constexpr wchar_t kPackage[] = L"Package";
constexpr wchar_t kMetroApp[] = L"MetroApp";
constexpr wchar_t kDesktopApps[] = L"DesktopApps";
constexpr wchar_t kDesktopApp[] = L"DesktopApp";

constexpr wchar_t kPackageFamilyName[] = L"PackageFamilyName";
constexpr wchar_t kVersion[] = L"Version";
constexpr wchar_t kNeedReserve[] = L"NeedReserve";
constexpr wchar_t kIsInstalled[] = L"IsInstalled";
constexpr wchar_t kIsDualMode[] = L"IsDualMode";
constexpr wchar_t kDisplayName[] = L"DisplayName";
constexpr wchar_t kShortName[] = L"ShortName";
constexpr wchar_t kRubyDisplayName[] = L"RubyDisplayName";
constexpr wchar_t kRubyShortName[] = L"RubyShortName";
constexpr wchar_t kLnkFileName[] = L"LnkFileName";
constexpr wchar_t kLocalizeName[] = L"LocalizeName";

// Writes an element of the given name around what writeContent() writes. Once started, the element is always
// ended. Returns the first failure.
template <typename WriteContent>
[[nodiscard]] HRESULT WriteElement(IXmlWriter* writer, const wchar_t* name, WriteContent writeContent)
{
    HRESULT hr = writer->WriteStartElement(nullptr, name, nullptr);
    if (FAILED(hr)) {
        return hr;
    }
    hr = writeContent();
    const HRESULT ended = writer->WriteEndElement();
    return FAILED(hr) ? hr : ended;
}

// Writes an attribute whatever its value.
[[nodiscard]] HRESULT Write(IXmlWriter* writer, const wchar_t* name, const wchar_t* value);
// Writes an attribute unless its text is empty; S_OK then.
[[nodiscard]] HRESULT WriteText(IXmlWriter* writer, const wchar_t* name, const WideString& text);
// Writes "1" when the flag is set and "0" when it is not, unless it has the value that an absent attribute
// means; S_OK then.
[[nodiscard]] HRESULT WriteFlag(IXmlWriter* writer, const wchar_t* name, BOOL flag, BOOL defaultValue);

struct TextAttribute
{
    const wchar_t* name;
    const WideString& text;
};

struct FlagAttribute
{
    const wchar_t* name;
    BOOL flag;
    BOOL defaultValue;
};

// The same for several attributes, in order; the first failure ends the writing and is the result.
[[nodiscard]] HRESULT WriteTexts(IXmlWriter* writer, std::initializer_list<TextAttribute> attributes);
[[nodiscard]] HRESULT WriteFlags(IXmlWriter* writer, std::initializer_list<FlagAttribute> attributes);

// The decimal number that the text begins with, as the C runtime's formats "%d" and "%hu" read it: blanks and
// a sign may stand before it, anything behind it. None when there is no number; otherwise the text points
// behind it. Negative numbers count backwards from 2^32; what is too large counts as the largest number.
[[nodiscard]] std::optional<UINT32> TakeNumber(const wchar_t*& text) noexcept;

// The flag that the text stands for: any number but 0 is true. Returns `unreadable` when the text is not a
// number.
[[nodiscard]] BOOL ReadFlag(const wchar_t* text, BOOL unreadable) noexcept;

// Makes a record of the element at hand, in the pool when there is one: setAttribute(record, name, value,
// pool) is called for each attribute. S_OK with the record passed out, E_OUTOFMEMORY, or the reader's
// failure. With S_OK the reader is left at the last attribute, or on the element when there is none; with a
// failure, wherever it was then.
template <typename Record, typename SetAttribute>
[[nodiscard]] HRESULT ReadRecord(IXmlReader* reader, std::unique_ptr<Record>* out, SetAttribute setAttribute,
                                 MemoryPool* pool) noexcept
{
    return CatchOutOfMemory([&] {
        // CatchOutOfMemory takes what it raises. NOLINTNEXTLINE(bugprone-unhandled-exception-at-new)
        std::unique_ptr<Record> record(new (pool) Record());
        const HRESULT hr = Xml::WalkAttributes(reader, [&](std::wstring_view name, Xml::Value value) {
            setAttribute(*record, name, value, pool);
            return false;
        });
        if (FAILED(hr)) {
            return hr;
        }
        *out = std::move(record);
        return S_OK;
    });
}

} // namespace CatalogXml
