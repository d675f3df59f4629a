#pragma once

#include "Json.h"
#include "LogSummary.h"

#include <cstddef>
#include <optional>
#include <string>

// The part of this host's diagnostic log that is written from now on, if the log is on: the one thing that
// tells from outside which source a refresh pass is at, and how long each took.
class PassLog
{
public:
    PassLog();

    // What the pass is at, for people; empty: the log does not tell. To be asked again and again.
    [[nodiscard]] std::wstring Step();

    // The first pass in it, with what failed; none when the log does not tell of any. To be asked once the
    // library is down.
    [[nodiscard]] const LoggedPass* Find();
    [[nodiscard]] const LogSummary& Summary() const { return m_summary; }

private:
    const std::wstring m_path;
    std::size_t m_linesBefore = 0;
    long long m_offset = 0; // of what Step() has not looked at yet
    std::wstring m_step;
    LogSummary m_summary{0};
};

// The sources of a pass with their times.
[[nodiscard]] std::wstring TextOf(const LoggedPass& pass);
[[nodiscard]] Json JsonOf(const LoggedPass& pass);
