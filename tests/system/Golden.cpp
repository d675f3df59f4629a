#include "system/Golden.h"

#include "support/Text.h"

#include <windows.h>

#include <algorithm>

namespace {

constexpr std::string_view any = "<any>";
constexpr std::string_view end = "<end>";
constexpr std::string_view error = "<error ";

// As the log holds it: in one line.
std::string SystemText(DWORD code)
{
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                   nullptr, code, 0, text, 512, nullptr);
    std::string narrow = test::ToUtf8(text);
    narrow.erase(narrow.find_last_not_of(' ') + 1);
    return narrow;
}

void ReplaceError(std::string& line)
{
    const std::size_t at = line.find(error);
    if (at != std::string::npos) {
        const std::size_t close = line.find('>', at);
        const DWORD code = std::stoul(line.substr(at + error.size(), close - at - error.size()), nullptr, 16);
        line.replace(at, close + 1 - at, SystemText(code));
    }
}

bool Matches(std::string_view line, std::string_view golden)
{
    const std::size_t at = golden.find(any);
    if (at == std::string_view::npos) {
        return line == golden;
    }
    const std::string_view before = golden.substr(0, at);
    const std::string_view behind = golden.substr(at + any.size());
    return line.size() >= before.size() + behind.size() && line.starts_with(before) && line.ends_with(behind);
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

} // namespace

namespace test {

testing::AssertionResult IsGolden(const std::vector<std::string>& log, std::string_view golden)
{
    const std::vector<std::string> wanted = GoldenLines(golden);
    std::size_t index = 0;
    while (index < wanted.size() && index < log.size() && Matches(log[index], wanted[index])) {
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

std::vector<std::string> GoldenLines(std::string_view golden)
{
    std::vector<std::string> lines;
    for (const std::string& text : Split(golden, "\n")) {
        const std::size_t start = text.find_first_not_of(' ');
        if (start == std::string::npos) {
            continue;
        }
        std::string line = text.substr(start);
        if (line.ends_with(end)) {
            line.resize(line.size() - end.size());
        }
        ReplaceError(line);
        lines.push_back(std::move(line));
    }
    return lines;
}

void CollapseRepeats(std::vector<std::string>& log, std::string_view block)
{
    const std::vector<std::string> lines = GoldenLines(block);
    const auto size = static_cast<std::ptrdiff_t>(lines.size());
    for (auto at = log.begin(); log.end() - at >= 2 * size;) {
        if (std::equal(lines.begin(), lines.end(), at) && std::equal(lines.begin(), lines.end(), at + size)) {
            at = log.erase(at, at + size);
        } else {
            ++at;
        }
    }
}

} // namespace test
