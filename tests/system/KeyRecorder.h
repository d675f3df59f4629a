#pragma once

#include "standin/desktop/KeyboardHook.h"

#include <mutex>
#include <string>
#include <vector>

namespace test {

// Writes down every key event of the whole desktop, whoever sends it, until the end of the scope. One at a
// time.
class KeyRecorder
{
public:
    KeyRecorder();
    KeyRecorder(const KeyRecorder&) = delete;
    KeyRecorder& operator=(const KeyRecorder&) = delete;

    // The events so far, such as "Shift down".
    [[nodiscard]] std::vector<std::string> Events() const;

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_events;
    standin::KeyboardHook m_hook; // the last member: it ends before what it writes to
};

} // namespace test
