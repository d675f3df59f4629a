#include "Commands.h"

#include "Applications.h"
#include "Catalogue.h"
#include "File.h"
#include "Json.h"
#include "StartMenu.h"
#include "Text.h"
#include "catalog/CatalogXml.h"
#include "common/FormatText.h"
#include "common/HostEnvironment.h"

#include <shlwapi.h>

#include <algorithm>
#include <string_view>

namespace {

// A text as an attribute's value.
std::wstring Escaped(std::wstring_view text)
{
    std::wstring escaped;
    for (const wchar_t character : text) {
        switch (character) {
        case L'&':
            escaped += L"&amp;";
            break;
        case L'<':
            escaped += L"&lt;";
            break;
        case L'"':
            escaped += L"&quot;";
            break;
        default:
            // What XML cannot hold is left out.
            if (character >= L' ' && character < 0xFFFE) {
                escaped += character;
            }
        }
    }
    return escaped;
}

// A path that holds on other machines too: with the variable whose folder it is in on this one.
std::wstring Portable(const std::wstring& path)
{
    constexpr std::pair<const wchar_t*, std::wstring_view> kFolders[] = {
        {L"ALLUSERSPROFILE", L"%ALLUSERSPROFILE%"}, {L"APPDATA", L"%APPDATA%"}};
    for (const auto& [variable, replacement] : kFolders) {
        wchar_t folder[MAX_PATH];
        if (!ReadEnvironmentVariable(variable, folder) || *folder == L'\0') {
            continue;
        }
        const std::wstring beginning = std::wstring(folder) + L"\\";
        if (path.size() > beginning.size() &&
            EqualsIgnoringCase(std::wstring_view(path).substr(0, beginning.size()), beginning)) {
            return std::wstring(replacement) + path.substr(beginning.size() - 1);
        }
    }
    return path;
}

// What the library takes for a flag that is not there.
bool DefaultOf(std::wstring_view flag)
{
    return flag == CatalogXml::kIsInstalled;
}

class PresetWriter
{
public:
    explicit PresetWriter(std::wstring reserve) : m_reserve(std::move(reserve)) {}

    std::wstring Write(const std::vector<Application>& applications)
    {
        std::wstring store;
        std::wstring desktop;
        for (std::size_t at = 0; at < applications.size(); ++at) {
            const Application& application = applications[at];
            if (application.package) {
                // The applications of a package follow one another.
                const bool isFirst = at == 0 || applications[at - 1].package != application.package;
                const bool isLast =
                    at + 1 == applications.size() || applications[at + 1].package != application.package;
                store += isFirst ? PackageTag(applications, at) : L"";
                store += application.storeApp
                             ? Tag(L"      ", CatalogXml::kMetroApp, application, true, false) + L" />\n"
                             : L"";
                store += isLast ? L"    </Package>\n" : L"";
            } else {
                const bool isReserved = IsReserved(application);
                m_reservedCount += isReserved ? 1 : 0;
                desktop += Tag(L"    ", CatalogXml::kDesktopApp, application, true, isReserved) + L" />\n";
            }
        }
        return L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Applications>\n  <MetroApps>\n" + store +
               L"  </MetroApps>\n  <DesktopApps>\n" + desktop + L"  </DesktopApps>\n</Applications>\n";
    }

    // Records that the pattern has taken.
    [[nodiscard]] std::size_t ReservedCount() const noexcept { return m_reservedCount; }

private:
    [[nodiscard]] bool IsReserved(const Application& application) const
    {
        return !m_reserve.empty() && (PathMatchSpecW(NameOf(application).c_str(), m_reserve.c_str()) ||
                                      PathMatchSpecW(PlaceOf(application).c_str(), m_reserve.c_str()));
    }

    // A package is reserved when one of its applications is.
    std::wstring PackageTag(const std::vector<Application>& applications, std::size_t at)
    {
        const Application& package = applications[at];
        bool isReserved = false;
        for (; at < applications.size() && applications[at].package == package.package; ++at) {
            isReserved = isReserved || IsReserved(applications[at]);
        }
        m_reservedCount += isReserved ? 1 : 0;
        return Tag(L"    ", CatalogXml::kPackage, {package.package, nullptr, nullptr}, false, isReserved) +
               L">\n";
    }

    // Without its end. isApplication: of a Store application, not of its package.
    static std::wstring Tag(const wchar_t* indent, const wchar_t* element, const Application& application,
                            bool isApplication, bool isReserved)
    {
        std::wstring tag = std::wstring(indent) + L"<" + element;
        const auto add = [&tag](std::wstring_view name, std::wstring_view value) {
            tag += FormatText(L" %s=\"%s\"", {name, Escaped(value)});
        };
        bool isOfPackage = false;
        for (const Field& field : FieldsOf(application)) {
            const std::wstring_view name = field.name;
            isOfPackage = isOfPackage || name == CatalogXml::kPackageFamilyName;
            if (isOfPackage && isApplication) {
                break; // the package has its own
            }
            if (const auto* text = std::get_if<std::wstring>(&field.value)) {
                if (!text->empty()) {
                    add(name, name == CatalogXml::kLnkFileName ? Portable(*text) : *text);
                }
                continue;
            }
            const bool flag = std::get<bool>(field.value) || (isReserved && name == CatalogXml::kNeedReserve);
            if (flag != DefaultOf(name)) {
                add(name, flag ? L"1" : L"0");
            }
        }
        return tag;
    }

    const std::wstring m_reserve;
    std::size_t m_reservedCount = 0;
};

// The catalogue that was named, or else this machine's Start menu. Returns whether all of it was read.
bool LoadSource(const CommandLine& line, CQanhAppNameList& list)
{
    if (!line.from.empty()) {
        RefuseCatalogue(line, L"--from");
        return LoadCatalogue(line.from, list);
    }
    if (!line.catalogue.empty() || !line.host.empty()) {
        return LoadCatalogue(CataloguePath(line), list);
    }
    AddStartMenu(list);
    return true;
}

} // namespace

Answer Preset(const CommandLine& line)
{
    CQanhAppNameList list;
    const bool isAll = LoadSource(line, list);
    const std::vector<Application> applications = ApplicationsOf(list);
    PresetWriter writer(line.reserve);
    const std::wstring preset = writer.Write(applications);
    Answer answer;
    answer.status = isAll ? Status::Done : Status::No;
    if (!line.output.empty()) {
        WriteNewFile(line.output, preset);
    }
    if (line.isJson) {
        Json json{
            {"IsCut", !isAll}, {"Applications", applications.size()}, {"Reserved", writer.ReservedCount()}};
        json[line.output.empty() ? "Preset" : "File"] = JsonOf(line.output.empty() ? preset : line.output);
        answer.text = TextOf(json);
    } else if (line.output.empty()) {
        answer.text = preset;
    }
    if (applications.empty()) {
        answer.problem = L"the preset has no application";
    } else if (!line.reserve.empty() && writer.ReservedCount() == 0) {
        answer.problem = L"no application is called " + line.reserve + L": none was reserved by that";
        answer.status = Status::No;
    }
    return answer;
}
