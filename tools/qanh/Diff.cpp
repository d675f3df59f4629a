#include "Commands.h"

#include "Catalogue.h"
#include "Difference.h"

Answer Diff(const CommandLine& line)
{
    RefuseCatalogue(line);
    CQanhAppNameList before;
    const bool isBeforeWhole = LoadCatalogue(line.file, before);
    CQanhAppNameList after;
    const bool isAfterWhole = LoadCatalogue(line.otherFile, after);
    const Difference difference = Compare(before, after);
    Answer answer;
    if (line.isJson) {
        Json json{{"IsCut", !isBeforeWhole || !isAfterWhole}};
        json.update(JsonOf(difference));
        answer.text = TextOf(json);
    } else {
        answer.text = TextOf(difference);
    }
    answer.status = difference.IsEmpty() ? Status::Done : Status::No;
    return answer;
}
