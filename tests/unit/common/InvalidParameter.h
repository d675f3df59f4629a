#pragma once

#include <cstdint>
#include <cstdlib>

namespace test {

// What a host does that wants to live on: takes over the C runtime's handling of invalid parameters, until
// the end of the scope. Where the C runtime handles none, nothing comes of it.
class InvalidParameterHandler
{
public:
    InvalidParameterHandler() : m_old(_set_invalid_parameter_handler(Ignore)) {}
    ~InvalidParameterHandler() { _set_invalid_parameter_handler(m_old); }
    InvalidParameterHandler(const InvalidParameterHandler&) = delete;
    InvalidParameterHandler& operator=(const InvalidParameterHandler&) = delete;

private:
    static void Ignore(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, std::uintptr_t) {}

    _invalid_parameter_handler m_old;
};

} // namespace test
