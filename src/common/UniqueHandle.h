#pragma once

#include <windows.h>

#include <utility>

// Owns one platform handle and closes it at the end of its life. The policy says what the handle is, which
// value means "none" and how it is closed.
template <typename Policy> class UniqueResource
{
public:
    using Type = typename Policy::Type;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Type value) noexcept : m_value(value) {}
    UniqueResource(UniqueResource&& other) noexcept : m_value(other.Release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    UniqueResource(const UniqueResource&) = delete;
    UniqueResource& operator=(const UniqueResource&) = delete;
    ~UniqueResource() { Reset(); }

    [[nodiscard]] explicit operator bool() const noexcept { return m_value != Policy::None(); }
    [[nodiscard]] Type Get() const noexcept { return m_value; }

    // Closes what is held and returns the place for a function's out argument.
    [[nodiscard]] Type* Put() noexcept
    {
        Reset();
        return &m_value;
    }

    [[nodiscard]] Type Release() noexcept { return std::exchange(m_value, Policy::None()); }

    void Reset(Type value = Policy::None()) noexcept
    {
        const Type old = std::exchange(m_value, value);
        if (old != Policy::None()) {
            Policy::Close(old);
        }
    }

private:
    Type m_value = Policy::None();
};

struct HandlePolicy
{
    using Type = HANDLE;
    [[nodiscard]] static Type None() noexcept { return nullptr; }
    static void Close(Type value) noexcept { CloseHandle(value); }
};

struct FilePolicy
{
    using Type = HANDLE;
    [[nodiscard]] static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type value) noexcept { CloseHandle(value); }
};

struct FindPolicy
{
    using Type = HANDLE;
    [[nodiscard]] static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type value) noexcept { FindClose(value); }
};

struct RegistryKeyPolicy
{
    using Type = HKEY;
    [[nodiscard]] static Type None() noexcept { return nullptr; }
    static void Close(Type value) noexcept { RegCloseKey(value); }
};

using UniqueHandle = UniqueResource<HandlePolicy>;
using UniqueFile = UniqueResource<FilePolicy>;
using UniqueFind = UniqueResource<FindPolicy>;
using UniqueRegistryKey = UniqueResource<RegistryKeyPolicy>;
