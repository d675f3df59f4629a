#include "Commands.h"

#include "Applications.h"
#include "Catalogue.h"
#include "Json.h"
#include "Lines.h"
#include "Text.h"

#include <algorithm>

namespace {

bool HasText(const Application& application, const std::wstring& folded)
{
    const std::vector<Field> fields = FieldsOf(application);
    return std::any_of(fields.begin(), fields.end(), [&](const Field& field) {
        const auto* text = std::get_if<std::wstring>(&field.value);
        return text && Folded(*text).find(folded) != std::wstring::npos;
    });
}

} // namespace

Answer List(const CommandLine& line)
{
    const std::wstring path = CataloguePath(line);
    CQanhAppNameList list;
    const bool isWhole = LoadCatalogue(path, list);
    std::vector<Application> applications = ApplicationsOf(list);
    const std::wstring match = Folded(line.match);
    applications.erase(std::remove_if(applications.begin(), applications.end(),
                                      [&](const Application& application) {
                                          return (!line.kind.empty() && line.kind != KindOf(application)) ||
                                                 !HasText(application, match);
                                      }),
                       applications.end());
    Answer answer;
    if (line.isJson) {
        answer.text = TextOf(
            Json{{"Catalogue", JsonOf(path)}, {"IsCut", !isWhole}, {"Applications", JsonOf(applications)}});
    } else {
        for (const Application& application : applications) {
            answer.text += LineOf(application) + L"\n";
        }
    }
    if (applications.empty()) {
        answer.status = Status::No;
        answer.problem = L"no application in " + path;
        if (!line.kind.empty() || !line.match.empty()) {
            answer.problem += L" is of that kind and has that text";
        }
    }
    return answer;
}
