#include "Session.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

// A shorter sample would say more of the clocks than of the work.
constexpr double kShortestSample = 0.02;

// How long one comparison goes on, in seconds: so long at least, with so many rounds and so much processor
// time of each contender, but no longer than the longest time, with however few rounds.
struct Effort
{
    double time;
    double longest;
    std::size_t fewestRounds;
    std::size_t mostRounds;
    double processorTime;
};

constexpr Effort kShort = {0.25, 3, 5, 25, 0.25};
constexpr Effort kFull = {1.5, 15, 9, 100, 0.4};

std::string Text(double value)
{
    char text[32];
    snprintf(text, sizeof text, "%.6g", value);
    return text;
}

std::string Text(const std::vector<double>& values)
{
    std::string text;
    for (const double value : values) {
        text += (text.empty() ? "" : ", ") + Text(value);
    }
    return "[" + text + "]";
}

// So much of the work, seconds each.
double Run(const Contender& contender, std::size_t repetitions)
{
    double time = 0;
    for (std::size_t done = 0; done < repetitions;) {
        // The clock itself takes a while: what has nothing to prepare is timed as a whole.
        const std::size_t end = contender.prepare ? done + 1 : repetitions;
        if (contender.prepare) {
            contender.prepare();
        }
        const double begin = Now();
        for (; done < end; ++done) {
            contender.run();
        }
        time += Now() - begin;
    }
    return time / static_cast<double>(repetitions);
}

} // namespace

volatile std::size_t g_sink;

double Now()
{
    LARGE_INTEGER frequency;
    LARGE_INTEGER ticks;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&ticks);
    return static_cast<double>(ticks.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double ProcessorTime()
{
    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        return static_cast<double>((ULONGLONG{time.dwHighDateTime} << 32) + time.dwLowDateTime) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
}

bool Session::Compare(const std::string& measure, std::size_t size, const std::vector<Contender>& contenders,
                      std::size_t operations)
{
    std::fprintf(stderr, "%s, %zu\n", measure.c_str(), size);
    std::vector<Series> series;
    for (const Contender& contender : contenders) {
        series.push_back({&contender});
    }
    const bool isQuick = Take(series);
    std::string samples;
    std::string processorTimes;
    for (Series& one : series) {
        const double runs = static_cast<double>(operations);
        std::transform(one.samples.begin(), one.samples.end(), one.samples.begin(),
                       [&](double sample) { return sample / runs; });
        const double taken = static_cast<double>(one.samples.size() * one.repetitions) * runs;
        const std::string key = (samples.empty() ? "\"" : ", \"") + one.contender->name + "\": ";
        samples += key + Text(one.samples);
        processorTimes += key + Text(one.processorTime / taken);
    }
    std::printf("{\"measure\": \"%s\", \"n\": %zu, \"samples\": {%s}, \"processor\": {%s}}\n",
                measure.c_str(), size, samples.c_str(), processorTimes.c_str());
    std::fflush(stdout);
    return isQuick;
}

void Session::TakeSample(Series& series)
{
    const double before = ProcessorTime();
    series.samples.push_back(Run(*series.contender, series.repetitions));
    series.processorTime += ProcessorTime() - before;
}

bool Session::Take(std::vector<Series>& series) const
{
    const Effort& effort = isShort ? kShort : kFull;
    const double begin = Now();
    // The first round brings files and code into memory, and tells how often to repeat what takes little. It
    // counts only when there is no time for another.
    for (Series& one : series) {
        TakeSample(one);
        const double time = std::max(one.samples.front(), 1e-7);
        if (time < kShortestSample) {
            one = {one.contender, static_cast<std::size_t>(kShortestSample / time) + 1};
            TakeSample(one);
        }
    }
    const double firstRound = Now() - begin;
    if (firstRound > effort.longest) {
        return false;
    }
    for (Series& one : series) {
        one = {one.contender, one.repetitions};
    }
    for (std::size_t round = 0; round < effort.mostRounds; ++round) {
        const double spent = Now() - begin;
        const bool isEnough = spent > effort.time && round >= effort.fewestRounds &&
                              std::all_of(series.begin(), series.end(), [&](const Series& one) {
                                  return one.processorTime > effort.processorTime;
                              });
        if (isEnough || spent > effort.longest) {
            break;
        }
        // Each begins in turn: the one behind another may find the caches full of what that one left.
        for (std::size_t turn = 0; turn < series.size(); ++turn) {
            TakeSample(series[(round + turn) % series.size()]);
        }
    }
    return firstRound < effort.longest / 3;
}

void Session::Tell(const std::string& measure, std::size_t size,
                   const std::vector<std::pair<std::string, std::vector<double>>>& contenders)
{
    std::fprintf(stderr, "%s, %zu\n", measure.c_str(), size);
    std::string samples;
    for (const auto& [name, values] : contenders) {
        samples += (samples.empty() ? "\"" : ", \"") + name + "\": " + Text(values);
    }
    std::printf("{\"measure\": \"%s\", \"n\": %zu, \"samples\": {%s}}\n", measure.c_str(), size,
                samples.c_str());
    std::fflush(stdout);
}

} // namespace bench
