#pragma once

namespace test {

// Base of what stands in for something of the platform until the end of a scope: the functions that take the
// platform's place know the one object by this. One at a time of each class.
template <typename Class> class Current
{
public:
    Current(const Current&) = delete;
    Current& operator=(const Current&) = delete;

protected:
    Current() { s_current = static_cast<Class*>(this); }
    ~Current() { s_current = nullptr; }

    static inline Class* s_current = nullptr;
};

} // namespace test
