#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// One way of doing a piece of work. prepare() comes before each run() and is not timed. Throws what keeps the
// work from being done: a time of something else is worse than none.
struct Contender
{
    std::string name;
    std::function<void()> run;
    std::function<void()> prepare = nullptr;
};

// Of what is measured: records, shortcuts, hits. Where the work takes so little that the processor's caches
// matter, each size is measured with as many records in all as the largest, in one catalogue or in several:
// caches hold a small catalogue and not a large one, and that would look like growth.
using Sizes = std::vector<std::size_t>;

// What the library does, in every measure; the other contenders are baselines.
inline constexpr char kOurs[] = "ours";

// One run of the program: takes the times and tells them, one line of JSON for each measure and size, on
// standard output; what it is at, on standard error. Why not a framework: those at hand (Catch2, Google
// Benchmark, nanobench) take all samples of one function before those of the next, and then a machine with
// other work to do is faster for one than for the other. Here the contenders take turns, so that what
// disturbs one of them disturbs the others as well, and the ratio of two samples of one round can be trusted
// where neither time can.
//
// Beside the samples stands the mean processor time of a run, its preparation included. Other work on the
// machine leaves it alone, and growth can be told from it; but the platform counts it in steps of 10 ms or
// more, and what other processes do for this one is not in it.
class Session
{
public:
    explicit Session(bool takesFewSamples) : isShort(takesFewSamples) {}

    // Takes times of the contenders, in seconds for each of `operations`, of which one run() does so many.
    // False when it took so long that a larger size would take too long.
    bool Compare(const std::string& measure, std::size_t size, const std::vector<Contender>& contenders,
                 std::size_t operations = 1);

    // Tells what a measure has taken in its own way: seconds, or figures that are no times.
    void Tell(const std::string& measure, std::size_t size,
              const std::vector<std::pair<std::string, std::vector<double>>>& contenders);

    const bool isShort;

private:
    struct Series
    {
        const Contender* contender;
        std::size_t repetitions = 1; // of the run, for one sample
        std::vector<double> samples{};
        double processorTime = 0; // of all samples
    };

    [[nodiscard]] bool Take(std::vector<Series>& series) const;
    static void TakeSample(Series& series);
};

// Seconds since some moment.
[[nodiscard]] double Now();
// Seconds of all threads of this process, in steps of 10 ms or so.
[[nodiscard]] double ProcessorTime();

// Keeps the compiler from leaving work out whose result nobody looks at.
extern volatile std::size_t g_sink;

} // namespace bench
