#include "Json.h"

#include "Text.h"

Json JsonOf(std::wstring_view text)
{
    return ToUtf8(text);
}

Json JsonOf(const Application& application)
{
    Json json;
    json["Kind"] = JsonOf(KindOf(application));
    for (const Field& field : FieldsOf(application)) {
        Json& value = json[ToUtf8(field.name)];
        if (const auto* text = std::get_if<std::wstring>(&field.value)) {
            value = JsonOf(*text);
        } else {
            value = std::get<bool>(field.value);
        }
    }
    return json;
}

Json JsonOf(const std::vector<Application>& applications)
{
    Json json = Json::array();
    for (const Application& application : applications) {
        json.push_back(JsonOf(application));
    }
    return json;
}

Json JsonOf(const Diagnoses& diagnoses)
{
    Json json = Json::array();
    for (const Diagnosis& diagnosis : diagnoses) {
        json.push_back({{"Level", JsonOf(NameOf(diagnosis.level))},
                        {"Subject", JsonOf(diagnosis.subject)},
                        {"Text", JsonOf(diagnosis.text)},
                        {"Advice", JsonOf(diagnosis.advice)}});
    }
    return json;
}

std::wstring TextOf(const Json& json)
{
    return FromUtf8(json.dump(2)) + L"\n";
}
