#include "Commands.h"

#include "Applications.h"
#include "Catalogue.h"
#include "Json.h"
#include "Lines.h"
#include "Text.h"

#include <algorithm>

namespace {

// By what a person may call it. Readings are no names.
bool IsCalled(const Application& application, const std::wstring& name)
{
    if (EqualsIgnoringCase(PlaceOf(application), name) || EqualsIgnoringCase(NameOf(application), name)) {
        return true;
    }
    if (application.desktopApp) {
        return EqualsIgnoringCase(application.desktopApp->DisplayName.View(), name);
    }
    return application.storeApp && EqualsIgnoringCase(application.storeApp->ShortName.View(), name);
}

} // namespace

Answer Show(const CommandLine& line)
{
    const std::wstring path = CataloguePath(line);
    CQanhAppNameList list;
    const bool isWhole = LoadCatalogue(path, list);
    std::vector<Application> called;
    for (const Application& application : ApplicationsOf(list)) {
        if (IsCalled(application, line.name)) {
            called.push_back(application);
        }
    }
    Answer answer;
    if (line.isJson) {
        answer.text =
            TextOf(Json{{"Catalogue", JsonOf(path)}, {"IsCut", !isWhole}, {"Applications", JsonOf(called)}});
    } else {
        for (const Application& application : called) {
            answer.text += BlockOf(application);
        }
    }
    if (called.empty()) {
        answer.status = Status::No;
        answer.problem = L"no application in " + path + L" is called \"" + line.name + L"\"";
    }
    return answer;
}
