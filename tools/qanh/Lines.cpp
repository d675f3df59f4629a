#include "Lines.h"

#include "Text.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::size_t kFieldWidth = 19; // of the longest name of a field, and one blank

void Add(std::wstring& specials, std::wstring_view what, std::wstring_view text = {})
{
    specials += specials.empty() ? L"" : L", ";
    specials += what;
    if (!text.empty()) {
        specials += L" ";
        specials += text;
    }
}

void AddName(std::wstring& specials, std::wstring_view what, const WideString& name)
{
    if (!name.empty()) {
        Add(specials, what, name.View());
    }
}

std::wstring SpecialsOf(const Application& application)
{
    std::wstring specials;
    BOOL isReserved = FALSE;
    if (const CQanhDesktopApp* app = application.desktopApp) {
        if (!app->LocalizeName.empty()) {
            AddName(specials, L"display name", app->DisplayName);
        }
        AddName(specials, L"reading", app->RubyDisplayName);
        isReserved = app->NeedReserve;
        if (app->IsDualMode) {
            Add(specials, L"dual mode");
        }
    } else {
        isReserved = application.package->NeedReserve;
        if (const CQanhMetroApp* storeApp = application.storeApp) {
            AddName(specials, L"short name", storeApp->ShortName);
            AddName(specials, L"reading", storeApp->RubyDisplayName);
            AddName(specials, L"reading of the short name", storeApp->RubyShortName);
        } else {
            Add(specials, L"no names");
        }
    }
    if (isReserved) {
        Add(specials, L"reserved");
    }
    if (!IsInstalled(application)) {
        Add(specials, L"not installed");
    }
    return specials;
}

std::wstring ValueText(const Field& field)
{
    const auto* text = std::get_if<std::wstring>(&field.value);
    return text ? Shown(*text) : std::get<bool>(field.value) ? L"1" : L"0";
}

} // namespace

std::wstring LineOf(const Application& application)
{
    std::wstring line = KindOf(application);
    line += L"\t" + Shown(NameOf(application)) + L"\t" + Shown(PlaceOf(application));
    const std::wstring specials = SpecialsOf(application);
    return specials.empty() ? line : line + L"\t" + Shown(specials);
}

std::wstring BlockOf(const Application& application)
{
    std::wstring block = application.package ? L"Store application\n" : L"Desktop application\n";
    for (const Field& field : FieldsOf(application)) {
        const std::wstring value = ValueText(field);
        if (!value.empty()) {
            std::wstring name = field.name;
            name.resize(std::max(name.size() + 1, kFieldWidth), L' ');
            block += L"  ";
            block += name;
            block += value;
            block += L"\n";
        }
    }
    return block;
}
