#pragma once

#include "support/Current.h"
#include "support/ImportPatch.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <utility>

namespace test {

// Sees which threads of this program have to wait for the reader/writer lock in an object, until the end of
// the scope: each one that finds the lock taken says so right before it waits for it. One at a time.
class LockWatch : private Current<LockWatch>
{
public:
    template <typename Owner>
    explicit LockWatch(const Owner& owner)
        : m_begin(reinterpret_cast<std::uintptr_t>(&owner)), m_end(m_begin + sizeof owner),
          m_blocked(CreateSemaphoreW(nullptr, 0, LONG_MAX, nullptr)),
          m_shared("AcquireSRWLockShared",
                   [](SRWLOCK* lock) { Acquire(lock, TryAcquireSRWLockShared, s_current->m_shared); }),
          m_exclusive("AcquireSRWLockExclusive", [](SRWLOCK* lock) {
              Acquire(lock, TryAcquireSRWLockExclusive, s_current->m_exclusive);
          })
    {
    }
    ~LockWatch() { CloseHandle(m_blocked); }

    // Waits until a thread has found the lock taken; a thread that waits is told of once. False when none has
    // for long, which only a failing test waits for.
    [[nodiscard]] bool WaitForBlocked() const
    {
        return WaitForSingleObject(m_blocked, 30000) == WAIT_OBJECT_0;
    }

    // Whether a thread has found the lock taken that was not told of.
    [[nodiscard]] bool HasBlocked() const { return WaitForSingleObject(m_blocked, 0) == WAIT_OBJECT_0; }

private:
    using Function = void(WINAPI*)(SRWLOCK*);

    static void Acquire(SRWLOCK* lock, BOOLEAN(WINAPI* tryToAcquire)(SRWLOCK*),
                        const ImportPatch<Function>& patch)
    {
        if (!tryToAcquire(lock)) {
            const auto address = reinterpret_cast<std::uintptr_t>(lock);
            if (s_current->m_begin <= address && address < s_current->m_end) {
                ReleaseSemaphore(s_current->m_blocked, 1, nullptr);
            }
            patch.Original()(lock);
        }
    }

    friend Current<LockWatch>;
    std::uintptr_t m_begin; // of the object
    std::uintptr_t m_end;
    HANDLE m_blocked;
    ImportPatch<Function> m_shared;
    ImportPatch<Function> m_exclusive;
};

// Runs an action after each change that is made under a reader/writer lock, when the lock is free again,
// until the end of the scope: so it sees all that another thread could see between the changes. It must not
// change anything itself. One at a time.
class AfterEachChange : private Current<AfterEachChange>
{
public:
    explicit AfterEachChange(std::function<void()> action)
        : m_action(std::move(action)), m_release("ReleaseSRWLockExclusive", [](SRWLOCK* lock) {
              s_current->m_release.Original()(lock);
              s_current->m_action();
          })
    {
    }

private:
    friend Current<AfterEachChange>;
    std::function<void()> m_action;
    ImportPatch<void(WINAPI*)(SRWLOCK*)> m_release;
};

} // namespace test
