// How much a proof does, and how it tells of it: the short form runs with all tests, the full one by
// scripts/proof, which collects the lines printed here.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace proof {

// Of the process's environment; empty when it is not there, or longer than the values that are asked for.
inline std::string Variable(const char* name)
{
    char value[32] = {};
    return GetEnvironmentVariableA(name, value, sizeof value) < sizeof value ? value : "";
}

inline bool IsFull()
{
    return Variable("QANHELPER_PROOF") == "full";
}

template <typename Number> Number Count(Number shortForm, Number full)
{
    return IsFull() ? full : shortForm;
}

// Where random choices start: named in a failure's message, it repeats them.
inline unsigned Seed()
{
    const std::string seed = Variable("QANHELPER_PROOF_SEED");
    return seed.empty() ? 1 : static_cast<unsigned>(std::strtoul(seed.c_str(), nullptr, 10));
}

inline void Figure(const char* name, double value, const char* unit = "")
{
    std::printf("figure: %s = %.15g%s%s\n", name, value, *unit == '\0' ? "" : " ", unit);
    std::fflush(stdout);
}

// Once a second at most, so that it costs nothing to call it at every step.
inline void Progress(long long done, long long all)
{
    static auto next = std::chrono::steady_clock::now();
    if (const auto now = std::chrono::steady_clock::now(); now >= next || done == all) {
        std::printf("progress: %lld/%lld\n", done, all);
        std::fflush(stdout);
        next = now + std::chrono::seconds(1);
    }
}

} // namespace proof
