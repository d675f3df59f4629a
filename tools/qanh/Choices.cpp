#include "Choices.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace {

std::string Refused(const std::string& value, const std::vector<std::string>& known)
{
    std::string text = "there is no \"" + value + "\", but ";
    for (const std::string& word : known) {
        text += (&word == &known.front() ? "" : ", ") + word;
    }
    return text;
}

} // namespace

CLI::Validator OneOf(std::vector<std::string> words)
{
    const auto check = [words = std::move(words)](std::string& value) {
        const bool isKnown = std::find(words.begin(), words.end(), value) != words.end();
        return isKnown ? std::string() : Refused(value, words);
    };
    return {check, ""};
}

CLI::Validator NumberOf(std::vector<std::pair<std::string, unsigned long>> names)
{
    const auto replace = [names = std::move(names)](std::string& value) {
        std::vector<std::string> known;
        for (const auto& [name, number] : names) {
            const std::string digits = std::to_string(number);
            if (value == name || value == digits) {
                value = digits;
                return std::string();
            }
            known.push_back(name + " (" + digits + ")");
        }
        return Refused(value, known);
    };
    return {replace, ""};
}

CLI::Validator NumberFrom(unsigned least, unsigned most)
{
    const auto check = [least, most](std::string& value) {
        unsigned number = 0;
        const char* const end = value.data() + value.size();
        const auto [rest, error] = std::from_chars(value.data(), end, number);
        const bool isFit = error == std::errc() && rest == end && least <= number && number <= most;
        return isFit ? std::string()
                     : "\"" + value + "\" is no number from " + std::to_string(least) + " to " +
                           std::to_string(most);
    };
    return {check, ""};
}
