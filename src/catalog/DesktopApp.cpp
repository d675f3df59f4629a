#include "catalog/DesktopApp.h"

#include "catalog/CatalogXml.h"
#include "catalog/ExcludeList.h"
#include "common/DiagnosticLog.h"
#include "common/FindCharacter.h"
#include "common/Xml.h"

#include <cwchar>

namespace {

// A shortcut's path as the file may hold it, with environment variables such as %ProgramData%. What cannot be
// expanded stays as it is, and so does what would be too long for a path then: cut, it would be the path of
// another file.
WideString ExpandPath(Xml::Value text, MemoryPool* pool)
{
    wchar_t path[MAX_PATH];
    if (FindCharacter(text, L'%') != Xml::Value::npos) {
        const DWORD size = ExpandEnvironmentStringsW(text.c_str(), path, MAX_PATH); // with the terminator
        if (size != 0 && size <= MAX_PATH) {
            return WideString(path, pool);
        }
    }
    return WideString(text, pool);
}

void SetAttribute(CQanhDesktopApp& app, std::wstring_view name, Xml::Value value, MemoryPool* pool)
{
    if (Xml::NamesEqual(name, CatalogXml::kDisplayName)) {
        app.DisplayName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kLnkFileName)) {
        app.LnkFileName = ExpandPath(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kLocalizeName)) {
        app.LocalizeName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kRubyDisplayName)) {
        app.RubyDisplayName = WideString(value, pool);
    } else if (Xml::NamesEqual(name, CatalogXml::kNeedReserve)) {
        // Deliberate: a value that is no number reserves.
        app.NeedReserve = CatalogXml::ReadFlag(value.c_str(), TRUE);
    } else if (Xml::NamesEqual(name, CatalogXml::kIsInstalled)) {
        app.IsInstalled = CatalogXml::ReadFlag(value.c_str(), TRUE);
    } else if (Xml::NamesEqual(name, CatalogXml::kIsDualMode)) {
        app.IsDualMode = CatalogXml::ReadFlag(value.c_str(), FALSE);
    }
}

} // namespace

CQanhDesktopApp::CQanhDesktopApp(const wchar_t* displayName, const wchar_t* lnkFileName,
                                 const wchar_t* localizeName, const wchar_t* rubyDisplayName,
                                 bool needReserve, bool isInstalled, bool isDualMode)
    : CQanhApp(displayName, rubyDisplayName), NeedReserve(needReserve), LocalizeName(localizeName),
      LnkFileName(lnkFileName), IsInstalled(isInstalled), IsDualMode(isDualMode)
{
}

HRESULT CQanhDesktopApp::AddToExcludeAppNameList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                                 BOOL* pFound) const
{
    static constexpr wchar_t kName[] = L"CQanhDesktopApp::AddToExcludeAppNameList";
    LogIn(kName, wantedName.Text());
    const HRESULT hr = CheckExcludeArguments(wantedName, pExcludeList, pFound);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    if (!IsInstalled) {
        return LogOut(kName, S_FALSE);
    }
    *pFound = 0;
    if (FAILED(wantedName.Result())) {
        return LogOut(kName, wantedName.Result());
    }
    const WideString& name = LocalizeName.empty() ? DisplayName : LocalizeName;
    if (name.empty()) {
        return LogOut(kName, S_OK);
    }
    if (wantedName.Equals(name)) {
        if (!IsDualMode) {
            *pFound = 1;
        }
        return LogOut(kName, S_OK);
    }
    const ExcludeSearch search{wantedName, pExcludeList, pFound};
    return LogOut(kName, ExcludeName({name, RubyDisplayName}, search).value_or(S_OK));
}

BOOL CQanhDesktopApp::IsSameShortcut(const wchar_t* path) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhDesktopApp::IsSameShortcut";
    DiagnosticLog::WriteLine("%S IN(%S)\r\n", kName, path);
    const bool same = path && *path != L'\0' && _wcsicmp(path, LnkFileName.c_str()) == 0;
    return LogOutNumber(kName, same ? 1 : 0);
}

HRESULT CQanhDesktopApp::ToXmlNode(IXmlWriter* pWriter) const
{
    static constexpr wchar_t kName[] = L"CQanhDesktopApp::ToXmlNode";
    LogIn(kName);
    if (!pWriter) {
        return LogOut(kName, E_POINTER);
    }
    if (!NeedReserve && !IsInstalled) {
        return LogOut(kName, S_FALSE);
    }
    return LogOut(kName, CatalogXml::WriteElement(pWriter, CatalogXml::kDesktopApp, [&] {
                      const HRESULT hr =
                          CatalogXml::WriteTexts(pWriter, {{CatalogXml::kDisplayName, DisplayName},
                                                           {CatalogXml::kLnkFileName, LnkFileName},
                                                           {CatalogXml::kLocalizeName, LocalizeName},
                                                           {CatalogXml::kRubyDisplayName, RubyDisplayName}});
                      if (FAILED(hr)) {
                          return hr;
                      }
                      return CatalogXml::WriteFlags(pWriter, {{CatalogXml::kNeedReserve, NeedReserve, FALSE},
                                                              {CatalogXml::kIsInstalled, IsInstalled, TRUE},
                                                              {CatalogXml::kIsDualMode, IsDualMode, FALSE}});
                  }));
}

HRESULT CQanhDesktopApp::FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhDesktopApp>* ppApp,
                                     MemoryPool* pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhDesktopApp::FromXmlNode";
    LogIn(kName);
    if (!pReader || !ppApp) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, CatalogXml::ReadRecord(pReader, ppApp, SetAttribute, pool));
}
