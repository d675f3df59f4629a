#include "Commands.h"

#include "Catalogue.h"
#include "Difference.h"

Answer Diff(const CommandLine& line)
{
    RefuseCatalogue(line);
    CQanhAppNameList before;
    LoadCatalogue(line.file, before);
    CQanhAppNameList after;
    LoadCatalogue(line.otherFile, after);
    const Difference difference = Compare(before, after);
    Answer answer;
    answer.text = line.isJson ? TextOf(JsonOf(difference)) : TextOf(difference);
    answer.status = difference.IsEmpty() ? Status::Done : Status::No;
    return answer;
}
