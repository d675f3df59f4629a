#include "Machine.h"

#include "Library.h"
#include "support/Text.h"

#include <string_view>

namespace bench {

namespace {

constexpr wchar_t kProgramsFolder[] = L"\\Microsoft\\Windows\\Start Menu\\Programs";

// As the tools of the Store make them, with places for names.
constexpr std::string_view kManifest = R"(<?xml version="1.0" encoding="utf-8"?>
<Package xmlns="http://schemas.microsoft.com/appx/2010/manifest"
    xmlns:build="http://schemas.microsoft.com/developer/appx/2012/build" IgnorableNamespaces="build">
  <Identity Name="{package}" Publisher="CN=Contoso Corporation, O=Contoso Corporation, L=Redmond, C=US"
      Version="1.2.0.0" ProcessorArchitecture="x64" />
  <Properties>
    <DisplayName>{name}</DisplayName>
    <PublisherDisplayName>Contoso Corporation</PublisherDisplayName>
    <Logo>Assets\StoreLogo.png</Logo>
    <Description>Does what it says, and shows it on a tile.</Description>
  </Properties>
  <Prerequisites>
    <OSMinVersion>6.2.1</OSMinVersion>
    <OSMaxVersionTested>6.2.1</OSMaxVersionTested>
  </Prerequisites>
  <Resources>
    <Resource Language="en-US" />
    <Resource Language="de-DE" />
    <Resource Language="fr-FR" />
    <Resource Language="es-ES" />
    <Resource Language="it-IT" />
    <Resource Language="ja-JP" />
    <Resource Language="ko-KR" />
    <Resource Language="pt-BR" />
    <Resource Language="ru-RU" />
    <Resource Language="zh-CN" />
  </Resources>
  <Dependencies>
    <PackageDependency Name="Microsoft.VCLibs.110.00" Publisher="CN=Microsoft Corporation"
        MinVersion="11.0.50727.1" />
    <PackageDependency Name="Microsoft.WinJS.1.0" Publisher="CN=Microsoft Corporation"
        MinVersion="1.0.9200.20512" />
  </Dependencies>
  <Applications>
    <Application Id="App" Executable="App.exe" EntryPoint="App.Main">
      <VisualElements DisplayName="{name}" Logo="Assets\Logo.png" SmallLogo="Assets\SmallLogo.png"
          Description="{name}" ForegroundText="light" BackgroundColor="#464646">
        <DefaultTile ShowName="allLogos" ShortName="{short name}" WideLogo="Assets\WideLogo.png" />
        <SplashScreen Image="Assets\SplashScreen.png" />
        <InitialRotationPreference>
          <Rotation Preference="portrait" />
          <Rotation Preference="landscape" />
        </InitialRotationPreference>
      </VisualElements>
      <Extensions>
        <Extension Category="windows.search" />
        <Extension Category="windows.protocol">
          <Protocol Name="contoso" />
        </Extension>
        <Extension Category="windows.backgroundTasks" EntryPoint="Tasks.Update">
          <BackgroundTasks>
            <Task Type="timer" />
          </BackgroundTasks>
        </Extension>
      </Extensions>
    </Application>
  </Applications>
  <Capabilities>
    <Capability Name="internetClient" />
    <Capability Name="picturesLibrary" />
    <DeviceCapability Name="webcam" />
  </Capabilities>
</Package>
)";

void FillIn(std::string& text, std::string_view place, const std::wstring& name)
{
    const std::string bytes = test::ToUtf8(name);
    for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at)) {
        text.replace(at, place.size(), bytes);
    }
}

} // namespace

Machine::Machine(std::size_t shortcuts, std::size_t packageCount)
    : m_local(L"LOCALAPPDATA", (m_folder / L"local").c_str()),
      m_roaming(L"APPDATA", (m_folder / L"roaming").c_str()),
      m_common(L"ALLUSERSPROFILE", (m_folder / L"common").c_str())
{
    programs = {(m_folder / L"common") + kProgramsFolder, (m_folder / L"roaming") + kProgramsFolder};
    for (const std::wstring& folder : programs) {
        // Not all files there are shortcuts.
        test::MakeFile(folder + L"\\desktop.ini");
    }
    for (std::size_t number = 0; number < shortcuts; ++number) {
        AddShortcut(number);
    }
    for (std::size_t number = 0; number < packageCount; ++number) {
        AddPackage(number);
    }
}

std::wstring Machine::CatalogFile() const
{
    return m_folder / (L"local\\Vel\\QanHelper\\" + HostName() + L"\\AppNameList.xml");
}

void Machine::AddShortcut(std::size_t number)
{
    const std::wstring folder = MenuFolder(number);
    const std::wstring name = AppName(number);
    std::wstring path = programs[number / 6 % 10 < 7 ? 0 : 1] + L"\\";
    path += (folder.empty() ? L"" : folder + L"\\") + name + (number % 10 == 9 ? L".url" : L".lnk");
    test::MakeFile(path);
    catalog.desktopApps.push_back({name, std::move(path), L""});
}

void Machine::AddPackage(std::size_t number)
{
    StorePackage package = MakePackage(number, number);
    package.version = L"1.2.0.0";
    StoreApp& app = package.apps.front();
    app.reading.clear(); // manifests have none
    test::PackageFacts facts;
    facts.familyName = package.familyName;
    facts.name = package.familyName.substr(0, package.familyName.find(L'_'));
    facts.fullName = facts.name + L"_1.2.0.0_x64__8wekyb3d8bbwe";
    facts.version = {1, 2, 0, 0};
    facts.path = m_folder / (L"WindowsApps\\" + facts.fullName);
    std::string manifest(kManifest);
    FillIn(manifest, "{package}", facts.name);
    FillIn(manifest, "{name}", app.displayName);
    FillIn(manifest, "{short name}", app.shortName);
    test::MakeFolder(facts.path);
    test::WriteFileBytes(facts.path + L"\\AppxManifest.xml", manifest);
    packages.push_back(std::move(facts));
    catalog.packages.push_back(std::move(package));
}

} // namespace bench
