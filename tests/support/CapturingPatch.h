#pragma once

#include "support/ImportPatch.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace test {

// An import patch (ImportPatch.h) whose replacement may capture, until the end of the scope. One at a time
// for each type of function: to see two functions of one type, give them different numbers.
//
//     const test::CapturingPatch<decltype(&CreateMutexW)> patch(
//         "CreateMutexW", [&](SECURITY_ATTRIBUTES*, BOOL, const wchar_t* name) { ... });
template <typename Function, int kNumber = 0> class CapturingPatch;
template <typename Result, int kNumber, typename... Arguments>
class CapturingPatch<Result(WINAPI*)(Arguments...), kNumber>
{
public:
    CapturingPatch(const char* function, std::function<Result(Arguments...)> replacement)
        : m_replacement(std::move(replacement))
    {
        s_current = this;
        m_patch.emplace(function, [](Arguments... arguments) -> Result {
            return s_current->m_replacement(arguments...);
        });
    }

    // Calls the function that the patch stands in for.
    Result Original(Arguments... arguments) const { return m_patch->Original()(arguments...); }

private:
    static inline CapturingPatch* s_current = nullptr;
    std::function<Result(Arguments...)> m_replacement;
    std::optional<ImportPatch<Result(WINAPI*)(Arguments...)>> m_patch;
};

// A replacement for functions of any arguments that gives this and does nothing.
template <typename Result> auto Answer(Result result)
{
    return [result](auto...) { return result; };
}

// Notes each call of a function in a journal, as the text that is made of its arguments (nothing, when that
// is empty), and calls the function or answers for it. The making may do more, before the call. As
// CapturingPatch.
template <typename Function, int kNumber = 0> class NotingPatch;
template <typename Result, int kNumber, typename... Arguments>
class NotingPatch<Result(WINAPI*)(Arguments...), kNumber>
{
public:
    NotingPatch(const char* function, std::vector<std::string>& journal,
                std::function<std::string(Arguments...)> describe)
        : m_patch(function, [this, &journal, describe](Arguments... arguments) {
              const std::string call = describe(arguments...);
              if (!call.empty()) {
                  journal.push_back(call);
              }
              return answer ? *answer : m_patch.Original(arguments...);
          })
    {
    }

    Result Original(Arguments... arguments) const { return m_patch.Original(arguments...); }

    std::optional<Result> answer; // in place of the function's, when set

private:
    CapturingPatch<Result(WINAPI*)(Arguments...), kNumber> m_patch;
};

// Makes Sleep return at once and keeps what was asked for, so that pauses and polling loops are tested to the
// millisecond. The action is called after that, at every Sleep: it may change what the next poll sees. One at
// a time.
class FakeSleep
{
public:
    explicit FakeSleep(std::function<void(DWORD milliseconds)> onSleep = [](DWORD) {})
        : m_patch("Sleep", [this, onSleep = std::move(onSleep)](DWORD milliseconds) {
              m_calls.push_back(milliseconds);
              onSleep(milliseconds);
          })
    {
    }

    // The milliseconds of every call, in order.
    [[nodiscard]] const std::vector<DWORD>& Calls() const { return m_calls; }

private:
    std::vector<DWORD> m_calls;
    CapturingPatch<decltype(&Sleep)> m_patch;
};

} // namespace test
