// Runs a target so often as the form of the proof says.

#include "Fuzzing.h"

#include "proof/Proof.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr long long kShort = 5000;
constexpr long long kFull = 1000000;

long long s_runs = 0;

long long Wanted()
{
    return proof::Count(kShort, kFull);
}

} // namespace

void fuzz::Check(bool holds, const char* what)
{
    if (!holds) {
        std::printf("seed %u: does not hold: %s\n", proof::Seed(), what);
        std::fflush(stdout);
        std::abort();
    }
}

// Without arguments: that many runs. With any, such as the name of a file that made it fail: what they say.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    if (*argc > 1) {
        return 0;
    }
    // To choose inputs by how seldom what they reach is ("entropic") takes a fifth of the time, and reaches
    // no more.
    static std::vector<std::string> arguments = {(*argv)[0],
                                                 "-runs=" + std::to_string(Wanted()),
                                                 "-seed=" + std::to_string(proof::Seed()),
                                                 "-max_len=600",
                                                 "-len_control=0",
                                                 "-entropic=0",
                                                 "-timeout=30",
                                                 "-rss_limit_mb=3000",
                                                 "-verbosity=0",
                                                 "-print_funcs=0",
                                                 "-artifact_prefix=" + std::string((*argv)[0]) + "-"};
    static std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    *argc = static_cast<int>(arguments.size());
    *argv = pointers.data();
    std::atexit([] {
        proof::Figure((std::string("runs of ") + fuzz::kName).c_str(), static_cast<double>(s_runs), "runs");
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Run(proof::Bytes(data, size));
    proof::Progress(++s_runs, Wanted());
    return 0;
}
