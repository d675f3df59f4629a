#include "Commands.h"

#include "Applications.h"
#include "Catalogue.h"
#include "Difference.h"
#include "Driving.h"
#include "LogTexts.h"
#include "Pass.h"
#include "Progress.h"
#include "Session.h"
#include "common/FormatText.h"

#include <cstdio>

namespace {

// The catalogue file as it is at a moment.
struct Snapshot
{
    explicit Snapshot(const std::wstring& path)
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
            written = data.ftLastWriteTime;
            // Standard error tells when it is not all.
            (void)LoadCatalogue(path, list);
        }
    }

    [[nodiscard]] std::size_t Records() const { return ApplicationsOf(list).size(); }

    CQanhAppNameList list;
    FILETIME written{}; // none: there is no file
};

// What one pass has shown from outside.
struct Watched
{
    ULONGLONG milliseconds = 0; // from the start of the library to the end of the pass
    bool isSaved = false;
    const LoggedPass* pass = nullptr; // null: the log does not tell
};

std::wstring Seconds(ULONGLONG milliseconds)
{
    wchar_t text[32];
    _snwprintf_s(text, 32, _TRUNCATE, L"%u.%u s", static_cast<unsigned>(milliseconds / 1000),
                 static_cast<unsigned>(milliseconds / 100 % 10));
    return text;
}

// The whole of a pass, its sources as far as they are known, and what failed.
std::wstring TimesText(const Watched& watched, const LogSummary& summary)
{
    std::wstring text =
        FormatText(L"From the start of the library to the end of the pass: %s ms, a second's wait "
                   L"included\n",
                   {std::to_wstring(watched.milliseconds)});
    if (!watched.pass) {
        return text +
               L"The time of each source is not known: the diagnostic log does not tell of this pass. Is "
               L"it off?\n";
    }
    return text + TextOf(*watched.pass) + (summary.failures.empty() ? L"" : FailuresText(summary));
}

std::wstring JsonText(const CommandLine& line, const std::wstring& path, const Snapshot& before,
                      const Snapshot& after, const Watched& watched, const LogSummary& summary)
{
    Json json{{"Catalogue", JsonOf(path)},
              {"IsSaved", watched.isSaved},
              {"RecordsBefore", before.Records()},
              {"RecordsAfter", after.Records()}};
    json.update(JsonOf(Compare(before.list, after.list)));
    if (line.drive.isWatching) {
        json["Milliseconds"] = watched.milliseconds;
        json["Sources"] = watched.pass ? JsonOf(*watched.pass) : Json(nullptr);
        json["Failures"] = JsonOfFailures(summary);
    }
    return TextOf(json);
}

} // namespace

Answer Refresh(const CommandLine& line)
{
    RefuseOtherHost(line);
    const std::wstring what = StartText() + L", waits for that, and stops the library";
    if (line.drive.isDryRun) {
        return DryRun(line, {what});
    }
    const Library library(line.drive.dll);
    Announce(what);
    const std::wstring path = OwnFile(kCatalogueFile);
    const Snapshot before(path);
    PassLog log;
    Watched watched;
    {
        const ULONGLONG start = GetTickCount64();
        const Session session(library);
        if (!session.Refreshes()) {
            return {L"", Status::No, AnotherRefreshes()};
        }
        Progress progress;
        session.WaitForFirstRefresh([&] {
            if (line.drive.isWatching) {
                const std::wstring step = log.Step();
                progress.Show(L"refreshing" + (step.empty() ? L"" : L": " + step) + L", " +
                              Seconds(GetTickCount64() - start));
            }
        });
        watched.milliseconds = GetTickCount64() - start;
    }
    const Snapshot after(path);
    watched.isSaved = CompareFileTime(&before.written, &after.written) != 0;
    watched.pass = log.Find();
    Answer answer;
    if (line.isJson) {
        answer.text = JsonText(line, path, before, after, watched, log.Summary());
    } else {
        answer.text = FormatText(L"Records: %s before, %s after\n",
                                 {std::to_wstring(before.Records()), std::to_wstring(after.Records())}) +
                      TextOf(Compare(before.list, after.list));
        if (line.drive.isWatching) {
            answer.text += TimesText(watched, log.Summary());
        }
    }
    if (!watched.isSaved) {
        answer.status = Status::No;
        answer.problem =
            L"the catalogue was not saved: another program holds the file, or the disk is full; the "
            L"diagnostic log tells, when it is on";
    }
    return answer;
}
