#include "catalog/Package.h"

#include "catalog/CatalogXml.h"
#include "common/DiagnosticLog.h"
#include "common/OutOfMemory.h"
#include "common/Xml.h"

#include <cstdio>
#include <cwchar>
#include <optional>
#include <utility>

namespace {

// Reads what scanning for "%hu.%hu.%hu.%hu" reads: the parts that are there, up to the first that is not a
// number.
RecordVersion ReadVersion(const wchar_t* text) noexcept
{
    RecordVersion version;
    // Deliberate: the numbers go into the parts as these are held, so build and revision trade places each
    // time a version is read and written.
    for (UINT16* part : {&version.Major, &version.Minor, &version.Revision, &version.Build}) {
        const std::optional<UINT32> number = CatalogXml::TakeNumber(text);
        if (!number) {
            break;
        }
        *part = static_cast<UINT16>(*number);
        if (*text != L'.') {
            break;
        }
        ++text;
    }
    return version;
}

struct PackageAttributes
{
    WideString packageFamilyName;
    RecordVersion version;
    BOOL needReserve = FALSE;
    BOOL isInstalled = TRUE;

    void Set(std::wstring_view name, Xml::Value value, MemoryPool* pool)
    {
        if (Xml::NamesEqual(name, CatalogXml::kPackageFamilyName)) {
            packageFamilyName = WideString(value, pool);
        } else if (Xml::NamesEqual(name, CatalogXml::kVersion)) {
            version = ReadVersion(value.c_str());
        } else if (Xml::NamesEqual(name, CatalogXml::kNeedReserve)) {
            // Deliberate: a value that is no number reserves.
            needReserve = CatalogXml::ReadFlag(value.c_str(), TRUE);
        } else if (Xml::NamesEqual(name, CatalogXml::kIsInstalled)) {
            isInstalled = CatalogXml::ReadFlag(value.c_str(), TRUE);
        }
    }
};

HRESULT WriteVersion(IXmlWriter* writer, const RecordVersion& version)
{
    wchar_t text[32];
    _snwprintf_s(text, 32, _TRUNCATE, L"%d.%d.%d.%d", version.Major, version.Minor, version.Build,
                 version.Revision);
    return CatalogXml::Write(writer, CatalogXml::kVersion, text);
}

} // namespace

CQanhPackage::CQanhPackage(const wchar_t* packageFamilyName, const wchar_t* fullName, const wchar_t* name,
                           const RecordVersion& version, std::size_t appLimit)
    : PackageFamilyName(packageFamilyName), FullName(fullName), Name(name), Version(version),
      NeedReserve(FALSE), IsInstalled(TRUE), m_apps(appLimit)
{
}

CQanhPackage::CQanhPackage(WideString packageFamilyName, const RecordVersion& version, BOOL needReserve,
                           BOOL isInstalled, std::size_t appLimit)
    : PackageFamilyName(std::move(packageFamilyName)), Version(version), NeedReserve(needReserve),
      IsInstalled(isInstalled), m_apps(appLimit)
{
}

CQanhPackage::~CQanhPackage()
{
    m_apps.Clear();
}

HRESULT CQanhPackage::AddApplication(std::unique_ptr<CQanhApp> app, MemoryPool* pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::AddApplication";
    LogIn(kName);
    if (!app) {
        return LogOut(kName, E_POINTER);
    }
    return LogOut(kName, CatchOutOfMemory([&] {
                      m_apps.Append(std::move(app), pool);
                      return S_OK;
                  }));
}

HRESULT CQanhPackage::AddApplication(const wchar_t* displayName, const wchar_t* shortName) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::AddApplication";
    LogIn(kName, displayName, shortName);
    return LogOut(kName, CatchOutOfMemory([&] {
                      m_apps.Append(std::make_unique<CQanhMetroApp>(displayName, shortName));
                      return S_OK;
                  }));
}

void CQanhPackage::DeleteAllApp() noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::DeleteAllApp";
    LogIn(kName);
    m_apps.Clear();
    LogOut(kName);
}

void CQanhPackage::SwapContents(CQanhPackage& other) noexcept
{
    std::swap(Version, other.Version);
    m_apps.Swap(other.m_apps);
}

BOOL CQanhPackage::IsThisPackage(const wchar_t* packageFamilyName) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::IsThisPackage";
    LogIn(kName, packageFamilyName);
    const bool same = packageFamilyName && !PackageFamilyName.empty() &&
                      std::wcscmp(PackageFamilyName.c_str(), packageFamilyName) == 0;
    return LogOutNumber(kName, same ? 1 : 0);
}

void CQanhPackage::AddAppNameToExcludeList(const WantedName& wantedName, ExcludeList* pExcludeList,
                                           BOOL* pFound) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::AddAppNameToExcludeList";
    LogIn(kName, wantedName.Text());
    const HRESULT hr = CheckExcludeArguments(wantedName, pExcludeList, pFound);
    if (FAILED(hr)) {
        LogOut(kName, hr);
        return;
    }
    if (IsInstalled) {
        for (const auto& app : m_apps) {
            AskApp(*app, wantedName, pExcludeList, pFound);
        }
    }
    LogOut(kName);
}

HRESULT CQanhPackage::ToXmlNode(IXmlWriter* pWriter) const
{
    static constexpr wchar_t kName[] = L"CQanhPackage::ToXmlNode";
    LogIn(kName);
    if (!pWriter) {
        return LogOut(kName, E_POINTER);
    }
    if (!IsInstalled && !NeedReserve) {
        return LogOut(kName, S_OK);
    }
    return LogOut(
        kName, CatalogXml::WriteElement(pWriter, CatalogXml::kPackage, [&] {
            HRESULT hr =
                CatalogXml::Write(pWriter, CatalogXml::kPackageFamilyName, PackageFamilyName.c_str());
            if (SUCCEEDED(hr)) {
                hr = WriteVersion(pWriter, Version);
            }
            if (SUCCEEDED(hr)) {
                hr = CatalogXml::WriteFlags(pWriter, {{CatalogXml::kNeedReserve, NeedReserve, FALSE},
                                                      {CatalogXml::kIsInstalled, IsInstalled, TRUE}});
            }
            for (auto app = m_apps.begin(); SUCCEEDED(hr) && app != m_apps.end(); ++app) {
                hr = (*app)->ToXmlNode(pWriter);
            }
            return hr;
        }));
}

HRESULT CQanhPackage::FromXmlNode(IXmlReader* pReader, std::unique_ptr<CQanhPackage>* ppPackage,
                                  std::size_t appLimit, MemoryPool* pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhPackage::FromXmlNode";
    LogIn(kName);
    if (!pReader || !ppPackage) {
        return LogOut(kName, E_POINTER);
    }
    const Xml::ElementPlace top = Xml::ElementPlaceOf(pReader);
    std::unique_ptr<CQanhPackage> package;
    HRESULT hr = CatchOutOfMemory([&] {
        PackageAttributes attributes;
        const HRESULT read = Xml::WalkAttributes(pReader, [&](std::wstring_view name, Xml::Value value) {
            attributes.Set(name, value, pool);
            return false;
        });
        if (SUCCEEDED(read)) {
            // CatchOutOfMemory takes what it raises. NOLINTNEXTLINE(bugprone-unhandled-exception-at-new)
            package.reset(new (pool) CQanhPackage(std::move(attributes.packageFamilyName), attributes.version,
                                                  attributes.needReserve, attributes.isInstalled, appLimit));
        }
        return read;
    });
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    hr = Xml::ForEachElementBelow(pReader, top, CatalogXml::kMetroApp, [&] {
        std::unique_ptr<CQanhMetroApp> app;
        if (SUCCEEDED(CQanhMetroApp::FromXmlNode(pReader, &app, pool))) {
            // One that finds no place is left out; it is in the log.
            (void)package->AddApplication(std::move(app), pool);
        }
    });
    *ppPackage = std::move(package);
    return LogOut(kName, hr);
}
