#include "Commands.h"

#include "LogSummary.h"
#include "LogTexts.h"
#include "LogTree.h"
#include "Text.h"
#include "common/FormatText.h"

#include <memory>

namespace {

constexpr unsigned kSlowest = 10;

// Hands what it is told on to two others.
class Both : public LogVisitor
{
public:
    Both(LogVisitor& first, LogVisitor* second) : m_first(first), m_second(second) {}

    void OnBegin(const std::vector<LogCall>& open) override
    {
        m_first.OnBegin(open);
        if (m_second) {
            m_second->OnBegin(open);
        }
    }
    void OnEnd(const std::vector<LogCall>& open) override
    {
        m_first.OnEnd(open);
        if (m_second) {
            m_second->OnEnd(open);
        }
    }
    void OnNote(const LogNote& note, const std::vector<LogCall>& open) override
    {
        m_first.OnNote(note, open);
        if (m_second) {
            m_second->OnNote(note, open);
        }
    }

private:
    LogVisitor& m_first;
    LogVisitor* m_second; // or null
};

// The sections that were asked for; all but the tree, when none was.
struct Sections
{
    explicit Sections(const CommandLine& line)
        : isAll(!line.isTree && !line.isTimes && !line.isErrors && !line.slow),
          isTimes(isAll || line.isTimes), isErrors(isAll || line.isErrors), isSlow(isAll || line.slow)
    {
    }

    bool isAll;
    bool isTimes;
    bool isErrors;
    bool isSlow;
};

std::wstring Text(const Sections& sections, const LogExtent& extent, const LogSummary& summary)
{
    std::wstring text;
    if (sections.isAll) {
        text += ExtentText(extent, summary);
    }
    if (sections.isTimes) {
        text += TimesText(summary);
    }
    if (sections.isErrors) {
        text += FailuresText(summary);
    }
    if (sections.isSlow) {
        text += SlowestText(summary);
    }
    return text;
}

std::wstring JsonText(const std::wstring& path, const Sections& sections, const LogExtent& extent,
                      const LogSummary& summary, const Json* tree)
{
    Json json{{"Log", JsonOf(path)}};
    json.update(JsonOf(extent));
    if (sections.isTimes) {
        json["Launches"] = JsonOfLaunches(summary);
        json["RefreshPasses"] = JsonOfPasses(summary);
    }
    if (sections.isErrors) {
        json["Failures"] = JsonOfFailures(summary);
    }
    if (sections.isSlow) {
        json["Slowest"] = JsonOfSlowest(summary);
    }
    if (tree) {
        json["Tree"] = *tree;
    }
    return TextOf(json);
}

std::wstring ProblemOf(const std::wstring& path, const LogExtent& extent)
{
    if (extent.lines == 0) {
        return L"no line in " + path + L" is one of the library's";
    }
    std::wstring problem;
    if (extent.foreign != 0) {
        problem = FormatText(L"broken lines in %s, or lines of somebody else: %s, the first one is line %s",
                             {path, std::to_wstring(extent.foreign), std::to_wstring(extent.firstForeign)});
    }
    if (extent.isCut) {
        problem += problem.empty() ? L"" : L"; ";
        problem += L"the last line of " + path + L" has no end: it was cut, or is being written";
    }
    return problem;
}

} // namespace

Answer Log(const CommandLine& line)
{
    const std::wstring path = LogPath(line);
    LogLines lines(path, LogCodePage(line));
    LogSummary summary(line.slow.value_or(kSlowest));
    LogTreePrinter printer;
    LogTreeJson tree;
    LogVisitor* shown = nullptr;
    if (line.isTree) {
        shown = line.isJson ? static_cast<LogVisitor*>(&tree) : &printer;
    }
    Both both(summary, shown);
    const LogExtent extent = ReadCalls(lines, both);
    printer.Finish();
    const Sections sections(line);
    Answer answer;
    if (line.isJson) {
        answer.text = JsonText(path, sections, extent, summary, line.isTree ? &tree.entries : nullptr);
    } else if (extent.lines != 0) {
        answer.text = Text(sections, extent, summary);
    }
    if (extent.lines == 0 || (sections.isErrors && !summary.failures.empty())) {
        answer.status = Status::No;
    }
    answer.problem = ProblemOf(path, extent);
    return answer;
}
