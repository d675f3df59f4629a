#pragma once

#include "standin/desktop/KeyboardHook.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

// Writes down every key event of the whole desktop, whoever sends it, until the end of the scope. One at a
// time.
class KeyRecorder
{
public:
    KeyRecorder()
    {
        const auto record = [this](DWORD key, bool isDown) {
            const std::scoped_lock lock(m_lock);
            m_events.push_back(NameOf(key) + (isDown ? " down" : " up"));
            return false; // it goes on to whom it is for
        };
        if (!m_hook.Start(record)) {
            throw std::runtime_error("the keyboard cannot be heard");
        }
    }
    KeyRecorder(const KeyRecorder&) = delete;
    KeyRecorder& operator=(const KeyRecorder&) = delete;

    // The events so far, such as "Shift down".
    [[nodiscard]] std::vector<std::string> Events() const
    {
        const std::scoped_lock lock(m_lock);
        return m_events;
    }

private:
    static std::string NameOf(DWORD key)
    {
        static const std::map<DWORD, std::string> s_names = {{VK_LWIN, "Windows"}, {VK_SHIFT, "Shift"},
                                                             {VK_LSHIFT, "Shift"}, {VK_INSERT, "Insert"},
                                                             {VK_RETURN, "Enter"}, {'Q', "Q"}};
        const auto name = s_names.find(key);
        return name == s_names.end() ? "key " + std::to_string(key) : name->second;
    }

    mutable std::mutex m_lock;
    std::vector<std::string> m_events;
    standin::KeyboardHook m_hook; // the last member: it ends before what it writes to
};

} // namespace test
