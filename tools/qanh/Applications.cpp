#include "Applications.h"

#include "catalog/CatalogXml.h"

namespace {

std::wstring Text(const WideString& text)
{
    return std::wstring(text.View());
}

// As the file has it: its third number is the record's third part.
std::wstring VersionText(const RecordVersion& version)
{
    return std::to_wstring(version.Major) + L"." + std::to_wstring(version.Minor) + L"." +
           std::to_wstring(version.Revision) + L"." + std::to_wstring(version.Build);
}

} // namespace

std::vector<Application> ApplicationsOf(const CQanhAppNameList& list)
{
    std::vector<Application> applications;
    list.ForEachRecord(
        [&](const CQanhPackage& package) {
            for (const auto& app : package.Apps()) {
                applications.push_back({&package, dynamic_cast<const CQanhMetroApp*>(app.get()), nullptr});
            }
            if (package.Apps().Size() == 0) {
                applications.push_back({&package, nullptr, nullptr});
            }
        },
        [&](const CQanhDesktopApp& app) {
            applications.push_back({nullptr, nullptr, &app});
        });
    return applications;
}

const CQanhApp* AppOf(const Application& application)
{
    if (application.desktopApp) {
        return application.desktopApp;
    }
    return application.storeApp;
}

const wchar_t* KindOf(const Application& application)
{
    return application.package ? L"store" : L"desktop";
}

bool IsInstalled(const Application& application)
{
    return (application.package ? application.package->IsInstalled : application.desktopApp->IsInstalled) !=
           FALSE;
}

std::wstring PlaceOf(const Application& application)
{
    return Text(application.package ? application.package->PackageFamilyName
                                    : application.desktopApp->LnkFileName);
}

std::wstring NameOf(const Application& application)
{
    if (const CQanhDesktopApp* app = application.desktopApp) {
        return Text(app->LocalizeName.empty() ? app->DisplayName : app->LocalizeName);
    }
    return application.storeApp ? Text(application.storeApp->DisplayName) : std::wstring();
}

std::vector<Field> FieldsOf(const Application& application)
{
    using namespace CatalogXml;
    std::vector<Field> fields;
    const auto addText = [&](const wchar_t* name, const WideString& text) {
        fields.push_back({name, Text(text)});
    };
    const auto addFlag = [&](const wchar_t* name, BOOL flag) {
        // In two steps: gcc takes the text that the flag's place could hold for one that is moved.
        fields.push_back({name, {}});
        fields.back().value = flag != FALSE;
    };
    if (const CQanhMetroApp* app = application.storeApp) {
        addText(kDisplayName, app->DisplayName);
        addText(kShortName, app->ShortName);
        addText(kRubyDisplayName, app->RubyDisplayName);
        addText(kRubyShortName, app->RubyShortName);
    }
    if (const CQanhPackage* package = application.package) {
        addText(kPackageFamilyName, package->PackageFamilyName);
        fields.push_back({kVersion, VersionText(package->Version)});
        addFlag(kNeedReserve, package->NeedReserve);
        addFlag(kIsInstalled, package->IsInstalled);
    }
    if (const CQanhDesktopApp* app = application.desktopApp) {
        addText(kDisplayName, app->DisplayName);
        addText(kLnkFileName, app->LnkFileName);
        addText(kLocalizeName, app->LocalizeName);
        addText(kRubyDisplayName, app->RubyDisplayName);
        addFlag(kNeedReserve, app->NeedReserve);
        addFlag(kIsInstalled, app->IsInstalled);
        addFlag(kIsDualMode, app->IsDualMode);
    }
    return fields;
}
