#include "manifest/ManifestReader.h"

#include "QanHelper.h"
#include "catalog/Package.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/FormatText.h"
#include "common/Reg.h"
#include "common/WinRtError.h"
#include "common/Xml.h"
#include "manifest/StorePackage.h"

#include <cstdio>
#include <string_view>

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t kApplications[] = L"Applications";
constexpr wchar_t kApplication[] = L"Application";
constexpr wchar_t kVisualElements[] = L"VisualElements";
constexpr wchar_t kDefaultTile[] = L"DefaultTile";
constexpr wchar_t kDisplayName[] = L"DisplayName";
constexpr wchar_t kShortName[] = L"ShortName";

// What becomes of each name of a manifest. Deliberate: names are stored in lower case; only the text of a
// resolved resource keeps its letters.
std::wstring PostProcessName(std::wstring name, const CQanhPackage& package)
{
    name = ToLowerCase(std::move(name));
    if (name.starts_with(CQanhManifestReader::kResourcePrefix)) {
        wchar_t text[CQanhManifestReader::kTextSize] = {};
        if (CQanhManifestReader::ConvertMsResourceToString(name, package.FullName.c_str(),
                                                           package.Name.c_str(), text)) {
            return text;
        }
    }
    return name;
}

bool IsUnresolved(const std::wstring& name)
{
    return ToLowerCase(name).starts_with(CQanhManifestReader::kResourcePrefix);
}

// Moves to an element, takes one of its attributes and makes a name of it; `name` is empty before. A missing
// element does not end the search at its parent: the next one in the document is taken.
HRESULT ReadName(IXmlReader* reader, const wchar_t* element, const wchar_t* attribute,
                 const CQanhPackage& package, std::wstring& name)
{
    HRESULT hr = CQanhManifestReader::MoveToElementByName(reader, element);
    if (FAILED(hr)) {
        return hr;
    }
    hr = CQanhManifestReader::GetAttributeValueByName(reader, attribute, name);
    if (SUCCEEDED(hr)) {
        name = PostProcessName(std::move(name), package);
    }
    return hr;
}

// How a walk through a manifest ended.
struct WalkEnd
{
    HRESULT result;          // of the last step
    bool isComplete = false; // it came to the end of the document
};

// Walks the applications of a manifest: calls acceptName(name) for each display name and short name, which
// ends the walk by returning false, and addApplication(displayName, shortName) for each application.
template <typename AcceptName, typename AddApplication>
WalkEnd WalkApplications(const wchar_t* path, const CQanhPackage& package, AcceptName acceptName,
                         AddApplication addApplication)
{
    ComPtr<IXmlReader> reader;
    HRESULT hr = Xml::OpenReader(path, reader);
    if (FAILED(hr)) {
        return {hr};
    }
    hr = CQanhManifestReader::MoveToElementByName(reader.Get(), kApplications);
    while (SUCCEEDED(hr)) {
        hr = CQanhManifestReader::MoveToElementByName(reader.Get(), kApplication);
        if (hr != S_OK) {
            return {hr, hr == S_FALSE};
        }
        std::wstring displayName;
        hr = ReadName(reader.Get(), kVisualElements, kDisplayName, package, displayName);
        if (FAILED(hr) || !acceptName(displayName)) {
            return {hr};
        }
        std::wstring shortName;
        hr = ReadName(reader.Get(), kDefaultTile, kShortName, package, shortName);
        if (FAILED(hr) || !acceptName(shortName)) {
            return {hr};
        }
        addApplication(displayName, shortName);
    }
    return {hr};
}

} // namespace

HRESULT CQanhManifestReader::AddAppsToPackage(const wchar_t* path, CQanhPackage* pPackage) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::AddAppsToPackage";
    LogIn(kName);
    const HRESULT hr =
        LoadSetting() == 1 ? GetAppNameUsingXmlParser(path, pPackage) : GetAppNameUsingAPI(path, pPackage);
    return LogOut(kName, hr);
}

DWORD CQanhManifestReader::LoadSetting() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::LoadSetting";
    LogIn(kName);
    const DWORD choice = CQanhReg::GetManifestReaderSetting();
    LogOut(kName);
    return choice;
}

HRESULT CQanhManifestReader::GetAppNameUsingXmlParser(const wchar_t* path, CQanhPackage* pPackage) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::GetAppNameUsingXmlParser";
    LogIn(kName);
    HRESULT hr = CheckStringAndPointer(path, pPackage);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    try {
        const WalkEnd end = WalkApplications(
            path, *pPackage, [](const std::wstring&) { return true; },
            [&](const std::wstring& displayName, const std::wstring& shortName) {
                // Out of memory for one is logged there; the others are still read.
                (void)pPackage->AddApplication(displayName.c_str(), shortName.c_str());
            });
        hr = end.result;
    } catch (...) {
        return LogCaught(kName, E_FAIL);
    }
    return LogOut(kName, hr);
}

HRESULT CQanhManifestReader::IsCanGetAppNameFromManifest(const wchar_t* path, CQanhPackage* pPackage,
                                                         BOOL* pCan) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::IsCanGetAppNameFromManifest";
    LogIn(kName);
    HRESULT hr = pCan ? CheckStringAndPointer(path, pPackage) : E_POINTER;
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    *pCan = 0;
    try {
        const WalkEnd end = WalkApplications(
            path, *pPackage, [](const std::wstring& name) { return !IsUnresolved(name); },
            [](const std::wstring&, const std::wstring&) {});
        hr = end.result;
        *pCan = end.isComplete ? 1 : 0;
    } catch (...) {
        return LogCaught(kName, E_FAIL);
    }
    return LogOut(kName, hr);
}

HRESULT CQanhManifestReader::MoveToElementByName(IXmlReader* pReader, const wchar_t* name)
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::MoveToElementByName";
    LogIn(kName, name);
    if (!pReader) {
        return LogOut(kName, E_POINTER);
    }
    Xml::NodePlace place = Xml::PlaceOf(pReader);
    HRESULT hr = S_OK;
    do {
        hr = Xml::ReadNode(pReader, place);
    } while (hr == S_OK && !(place.IsElement() && Xml::HasLocalName(pReader, name)));
    return LogOut(kName, hr);
}

HRESULT CQanhManifestReader::GetAttributeValueByName(IXmlReader* pReader, const wchar_t* name,
                                                     std::wstring& value)
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::GetAttributeValueByName";
    LogIn(kName, name);
    if (!pReader) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, Xml::ForEachAttribute(pReader, [&](std::wstring_view attribute, Xml::Value text) {
                      if (!Xml::NamesEqual(attribute, name)) {
                          return false;
                      }
                      value = text.c_str();
                      return true;
                  }));
}

namespace {

// The display name of the one application of a manifest, as it stands there.
HRESULT ReadOnlyDisplayName(platform::IPackage* package, std::wstring& displayName)
{
    ComPtr<IXmlReader> reader;
    HRESULT hr = Xml::MakeReader(reader);
    if (FAILED(hr)) {
        return hr;
    }
    hr =
        Xml::OpenFile(reader.Get(), StorePackage::ManifestPath(StorePackage::InstalledPath(package)).c_str());
    if (FAILED(hr)) {
        return hr;
    }
    hr = CQanhManifestReader::MoveToElementByName(reader.Get(), kApplications);
    if (FAILED(hr)) {
        return hr;
    }
    if (CQanhManifestReader::MoveToElementByName(reader.Get(), kApplication) != S_OK ||
        CQanhManifestReader::MoveToElementByName(reader.Get(), kVisualElements) != S_OK) {
        return E_FAIL;
    }
    hr = CQanhManifestReader::GetAttributeValueByName(reader.Get(), kDisplayName, displayName);
    if (FAILED(hr)) {
        return hr;
    }
    return CQanhManifestReader::MoveToElementByName(reader.Get(), kApplication) == S_OK
               ? QANH_E_SEVERAL_APPLICATIONS
               : hr;
}

// Writes what the user sees of the display name into the text.
HRESULT ResolveDisplayName(std::wstring displayName, platform::IPackage* package, wchar_t* text)
{
    displayName = ToLowerCase(std::move(displayName));
    if (!displayName.starts_with(CQanhManifestReader::kResourcePrefix)) {
        _snwprintf_s(text, CQanhManifestReader::kTextSize, _TRUNCATE, L"%s", displayName.c_str());
        return S_OK;
    }
    const ComPtr<platform::IPackageId> identity = StorePackage::Identity(package);
    const WideString fullName = StorePackage::FullName(identity.Get());
    const WideString name = StorePackage::Name(identity.Get());
    return CQanhManifestReader::ConvertMsResourceToString(displayName, fullName.c_str(), name.c_str(), text)
               ? S_OK
               : E_FAIL;
}

} // namespace

HRESULT CQanhManifestReader::GetAppDisplayName(platform::IPackage* pPackage, wchar_t** ppName) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhManifestReader::GetAppDisplayName";
    LogIn(kName);
    if (!pPackage || !ppName) {
        // Deliberate: these two leave without a line.
        return E_POINTER;
    }
    try {
        std::wstring displayName;
        const HRESULT hr = ReadOnlyDisplayName(pPackage, displayName);
        if (FAILED(hr)) {
            return LogOut(kName, hr);
        }
        // Deliberate: the text is the caller's from here on, whatever becomes of the resolution.
        *ppName = static_cast<wchar_t*>(LocalAlloc(LPTR, kTextSize * sizeof(wchar_t)));
        if (!*ppName) {
            return LogOut(kName, E_OUTOFMEMORY);
        }
        const HRESULT resolved = ResolveDisplayName(std::move(displayName), pPackage, *ppName);
        return LogOut(kName, FAILED(resolved) ? resolved : hr);
    } catch (...) {
        return LogCaught(kName, E_FAIL);
    }
}
