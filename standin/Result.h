#pragma once

#include <windows.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>

// How failures travel inside the stand-in: thrown where they happen, a result again where others call it. Any
// thread.
namespace standin {

// Something that the platform refused, or a result that a switch asks for.
struct Failure : std::runtime_error
{
    explicit Failure(HRESULT failed, const std::string& what = "the platform failed")
        : std::runtime_error(what), result(failed)
    {
    }
    HRESULT result;
};

inline void Check(HRESULT hr)
{
    if (FAILED(hr)) {
        throw Failure(hr);
    }
}

// For a function that has just failed and left its reason with the system.
[[nodiscard]] inline HRESULT LastError() noexcept
{
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

inline void CheckStatus(LSTATUS status)
{
    Check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

// The body's result, S_OK when it has none; what it throws as a result.
template <typename Body> [[nodiscard]] HRESULT ResultOf(Body body) noexcept
{
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return S_OK;
        } else {
            return body();
        }
    } catch (const Failure& failure) {
        return failure.result;
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
}

} // namespace standin
