// How much a proof does, and how it tells of it: the short form runs with all tests, the full one by scripts/proof, which
// collects the lines printed here.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace proof {

inline bool IsFull() {
  const char* form = std::getenv("QANHELPER_PROOF");
  return form != nullptr && std::strcmp(form, "full") == 0;
}

template <typename Number>
Number Count(Number shortForm, Number full) {
  return IsFull() ? full : shortForm;
}

// Where random choices start: named in a failure's message, it repeats them.
inline unsigned Seed() {
  const char* seed = std::getenv("QANHELPER_PROOF_SEED");
  return seed == nullptr ? 1 : static_cast<unsigned>(std::strtoul(seed, nullptr, 10));
}

inline void Figure(const char* name, double value, const char* unit = "") {
  std::printf("figure: %s = %.15g%s%s\n", name, value, *unit == '\0' ? "" : " ", unit);
  std::fflush(stdout);
}

// Once a second at most, so that it costs nothing to call it at every step.
inline void Progress(long long done, long long all) {
  static auto next = std::chrono::steady_clock::now();
  if (const auto now = std::chrono::steady_clock::now(); now >= next || done == all) {
    std::printf("progress: %lld/%lld\n", done, all);
    std::fflush(stdout);
    next = now + std::chrono::seconds(1);
  }
}

}  // namespace proof
