#pragma once

#include <windows.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test {

// Writes down every key event of the whole desktop, whoever sends it, until the end of the scope. One at a
// time; the events are taken on a thread of its own.
class KeyRecorder
{
public:
    KeyRecorder();
    ~KeyRecorder();
    KeyRecorder(const KeyRecorder&) = delete;
    KeyRecorder& operator=(const KeyRecorder&) = delete;

    // The events so far, such as "Shift down".
    [[nodiscard]] std::vector<std::string> Events() const;

private:
    static LRESULT CALLBACK OnKey(int code, WPARAM message, LPARAM data);

    static KeyRecorder* s_recorder;

    mutable std::mutex m_lock;
    std::vector<std::string> m_events;
    std::thread m_thread;
    DWORD m_threadId = 0;
};

} // namespace test
