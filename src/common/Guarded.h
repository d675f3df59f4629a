#pragma once

#include <windows.h>

#include <utility>

// A value that is reached only under its reader/writer lock: Read() and Write() take the lock and hold it for
// as long as the returned object lives. The lock is not recursive, and nothing that waits, sends input or
// calls into the platform's package services may happen under it.
template <typename Value> class Guarded
{
public:
    template <typename... Arguments>
    explicit Guarded(Arguments&&... arguments) : m_value(std::forward<Arguments>(arguments)...)
    {
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    class ReadAccess
    {
    public:
        explicit ReadAccess(const Guarded& guarded) noexcept : m_guarded(guarded)
        {
            AcquireSRWLockShared(&m_guarded.m_lock);
        }
        ~ReadAccess() { ReleaseSRWLockShared(&m_guarded.m_lock); }
        ReadAccess(const ReadAccess&) = delete;
        ReadAccess& operator=(const ReadAccess&) = delete;
        const Value& operator*() const noexcept { return m_guarded.m_value; }
        const Value* operator->() const noexcept { return &m_guarded.m_value; }

    private:
        const Guarded& m_guarded;
    };

    class WriteAccess
    {
    public:
        explicit WriteAccess(Guarded& guarded) noexcept : m_guarded(guarded)
        {
            AcquireSRWLockExclusive(&m_guarded.m_lock);
        }
        ~WriteAccess() { ReleaseSRWLockExclusive(&m_guarded.m_lock); }
        WriteAccess(const WriteAccess&) = delete;
        WriteAccess& operator=(const WriteAccess&) = delete;
        Value* operator->() const noexcept { return &m_guarded.m_value; }

    private:
        Guarded& m_guarded;
    };

    [[nodiscard]] ReadAccess Read() const noexcept { return ReadAccess(*this); }
    [[nodiscard]] WriteAccess Write() noexcept { return WriteAccess(*this); }

private:
    mutable SRWLOCK m_lock = SRWLOCK_INIT;
    Value m_value;
};
