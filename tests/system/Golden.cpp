#include "system/Golden.h"

#include "support/Text.h"

#include <algorithm>

namespace {

constexpr std::string_view address = "<address>";
constexpr std::string_view end = "<end>";
constexpr std::string_view entry = " IN";
constexpr std::string_view entryAndExit = " IN ...";

bool IsAddress(std::string_view digits)
{
    return digits.size() == 8 && digits.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

// Whether a line of a log is a golden's; all addresses in the golden are the one that was met first.
bool Matches(std::string_view line, std::string_view golden, std::string& met)
{
    const std::size_t at = golden.find(address);
    if (at == std::string_view::npos) {
        return line == golden;
    }
    if (met.empty() && line.size() > at && IsAddress(line.substr(at, 8))) {
        met = line.substr(at, 8);
    }
    return line == std::string(golden).replace(at, address.size(), met);
}

std::string Excerpt(const std::vector<std::string>& lines, std::size_t index)
{
    std::string text;
    const std::size_t first = index < 3 ? 0 : index - 3;
    for (std::size_t at = first; at < lines.size() && at < index + 6; ++at) {
        text += (at == index ? "  > " : "    ") + lines[at] + "|\n";
    }
    return text;
}

// The lines of a golden text, blanks and <end> taken away and the two of a call put apart.
std::vector<std::string> GoldenLines(std::string_view golden)
{
    std::vector<std::string> lines;
    for (const std::string& text : test::Split(golden, "\n")) {
        const std::size_t start = text.find_first_not_of(' ');
        if (start == std::string::npos) {
            continue;
        }
        std::string line = text.substr(start);
        if (line.ends_with(end)) {
            line.resize(line.size() - end.size());
        }
        const std::size_t call = line.find(entryAndExit);
        if (call != std::string::npos) {
            lines.push_back(line.substr(0, call).append(entry));
            line.erase(0, call + entryAndExit.size())
                .insert(0, lines.back(), 0, lines.back().find_first_of("( "));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace

namespace test {

testing::AssertionResult IsGolden(const std::vector<std::string>& log, std::string_view golden)
{
    const std::vector<std::string> wanted = GoldenLines(golden);
    std::string met;
    std::size_t index = 0;
    while (index < wanted.size() && index < log.size() && Matches(log[index], wanted[index], met)) {
        ++index;
    }
    if (index == wanted.size() && index == log.size()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "line " << index + 1 << " of the log differs\nlog (" << log.size() << " lines):\n"
           << Excerpt(log, index) << "golden (" << wanted.size() << " lines):\n"
           << Excerpt(wanted, index);
}

testing::AssertionResult IsGolden(const std::vector<std::string>& log,
                                  std::initializer_list<std::string_view> pieces)
{
    return IsGolden(log, Joined(pieces));
}

std::string Filled(std::string golden, std::initializer_list<std::string_view> values)
{
    int number = 0;
    for (const std::string_view value : values) {
        ReplaceAll(golden, "<" + std::to_string(++number) + ">", value);
    }
    return golden;
}

std::string Joined(std::initializer_list<std::string_view> pieces)
{
    std::string golden;
    for (const std::string_view piece : pieces) {
        golden.append(piece).append("\n");
    }
    return golden;
}

void CollapseRepeats(std::vector<std::string>& log, std::string_view block)
{
    const std::vector<std::string> once = GoldenLines(block);
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    const auto size = static_cast<std::ptrdiff_t>(once.size());
    for (auto at = log.begin(); (at = std::search(at, log.end(), twice.begin(), twice.end())) != log.end();) {
        at = log.erase(at, at + size);
    }
}

} // namespace test
