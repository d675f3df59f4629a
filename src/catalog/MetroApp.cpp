#include "catalog/MetroApp.h"

#include "catalog/CatalogXml.h"
#include "catalog/ExcludeList.h"
#include "common/DiagnosticLog.h"
#include "common/Xml.h"

#include <cwchar>

namespace {

void SetAttribute(CQanhMetroApp& app, std::wstring_view name, Xml::Value value, MemoryPool* pool)
{
    if (Xml::NamesEqual(name, CatalogXml::kDisplayName)) {
        app.DisplayName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kShortName)) {
        app.ShortName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kRubyDisplayName)) {
        app.RubyDisplayName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kRubyShortName)) {
        app.RubyShortName = WideString(value, pool);
    }
}

} // namespace

CQanhMetroApp::CQanhMetroApp(const wchar_t* displayName, const wchar_t* shortName,
                             const wchar_t* rubyDisplayName, const wchar_t* rubyShortName)
    : CQanhApp(displayName, rubyDisplayName), ShortName(shortName), RubyShortName(rubyShortName)
{
}

HRESULT CQanhMetroApp::AddToExcludeAppNameList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                               BOOL* pFound) const
{
    static constexpr wchar_t kName[] = L"CQanhMetroApp::AddToExcludeAppNameList";
    LogIn(kName, wantedName.Text());
    HRESULT hr = CheckExcludeArguments(wantedName, pExcludeList, pFound);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    *pFound = 0;
    if (FAILED(wantedName.Result())) {
        return LogOut(kName, wantedName.Result());
    }
    // Deliberate: a Store application of exactly this name is neither found nor excluded, whatever its short
    // name.
    if (DisplayName.empty() || wantedName.Equals(DisplayName)) {
        return LogOut(kName, S_OK);
    }
    const ExcludeSearch search{wantedName, pExcludeList, pFound};
    hr = ExcludeName({DisplayName, RubyDisplayName}, search).value_or(S_OK);
    if (SUCCEEDED(hr) && !ShortName.empty()) {
        hr = ExcludeName({ShortName, RubyShortName}, search).value_or(hr);
    }
    return LogOut(kName, hr);
}

HRESULT CQanhMetroApp::ToXmlNode(IXmlWriter* pWriter) const
{
    static constexpr wchar_t kName[] = L"CQanhMetroApp::ToXmlNode";
    LogIn(kName);
    if (!pWriter) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, CatalogXml::WriteElement(pWriter, CatalogXml::kMetroApp, [&] {
                      return CatalogXml::WriteTexts(pWriter, {{CatalogXml::kDisplayName, DisplayName},
                                                              {CatalogXml::kShortName, ShortName},
                                                              {CatalogXml::kRubyDisplayName, RubyDisplayName},
                                                              {CatalogXml::kRubyShortName, RubyShortName}});
                  }));
}

HRESULT CQanhMetroApp::FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhMetroApp>* ppApp,
                                   MemoryPool* pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhMetroApp::FromXmlNode";
    LogIn(kName);
    if (!pReader || !ppApp) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, CatalogXml::ReadRecord(pReader, ppApp, SetAttribute, pool));
}
