#pragma once

#include "Applications.h"
#include "Diagnosis.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

// Members keep the order in which they are added.
using Json = nlohmann::ordered_json;

[[nodiscard]] Json JsonOf(std::wstring_view text);
// Its kind and its fields.
[[nodiscard]] Json JsonOf(const Application& application);
[[nodiscard]] Json JsonOf(const std::vector<Application>& applications);
[[nodiscard]] Json JsonOf(const Diagnoses& diagnoses);

// The document as it is written, with a line end.
[[nodiscard]] std::wstring TextOf(const Json& json);
