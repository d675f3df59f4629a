#pragma once

#include "Library.h"

#include <functional>
#include <string>

// A file that the library keeps for this program as a host. Throws Failure.
[[nodiscard]] std::wstring OwnFile(const wchar_t* file);

// What bringing the library up does, for people.
[[nodiscard]] std::wstring StartText();

// The library, up for as long as this lives, on the thread that made it.
class Session
{
public:
    // Throws Failure; what to do about it, when it is another process of this executable that is in the way.
    explicit Session(const Library& library);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // False: another process of this executable was in its first refresh, so this one does not refresh.
    [[nodiscard]] bool Refreshes() const noexcept { return m_result == S_OK; }

    // Waits until the first refresh is over and saved, and calls onLook every now and then. Throws Failure
    // when it takes longer than any refresh does.
    void WaitForFirstRefresh(const std::function<void()>& onLook) const;

private:
    const Library& m_library;
    HRESULT m_result = E_UNEXPECTED;
};

// What to do about another process of this executable that is in its first refresh.
[[nodiscard]] std::wstring AnotherRefreshes();
