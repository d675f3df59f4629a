#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
#include <vector>

// What an option may have for its value. Each says of any other value what there is.

// One of these words.
[[nodiscard]] CLI::Validator OneOf(std::vector<std::string> words);

// One of these names, or its number; the value becomes the number.
[[nodiscard]] CLI::Validator NumberOf(std::vector<std::pair<std::string, unsigned long>> names);

// A whole number from the one to the other.
[[nodiscard]] CLI::Validator NumberFrom(unsigned least, unsigned most);
