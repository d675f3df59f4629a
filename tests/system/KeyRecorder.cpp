#include "system/KeyRecorder.h"

#include <stdexcept>

namespace {

std::string NameOf(DWORD key)
{
    switch (key) {
    case VK_LWIN:
        return "Windows";
    case VK_SHIFT:
    case VK_LSHIFT:
        return "Shift";
    case VK_INSERT:
        return "Insert";
    case VK_RETURN:
        return "Enter";
    case 'Q':
        return "Q";
    default:
        return "key " + std::to_string(key);
    }
}

} // namespace

namespace test {

KeyRecorder::KeyRecorder()
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

std::vector<std::string> KeyRecorder::Events() const
{
    const std::scoped_lock lock(m_lock);
    return m_events;
}

} // namespace test
