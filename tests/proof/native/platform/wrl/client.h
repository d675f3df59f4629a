// A pointer that owns a reference.
#pragma once

#include <unknwn.h>

#include <utility>

namespace Microsoft::WRL {

template <typename Interface> class ComPtr
{
public:
    ComPtr() noexcept = default;
    ComPtr(const ComPtr& other) noexcept : m_object(other.m_object)
    {
        if (m_object) {
            m_object->AddRef();
        }
    }
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() { Reset(); }

    [[nodiscard]] Interface* Get() const noexcept { return m_object; }
    Interface* operator->() const noexcept { return m_object; }
    [[nodiscard]] Interface** GetAddressOf() noexcept { return &m_object; }
    [[nodiscard]] Interface** ReleaseAndGetAddressOf() noexcept
    {
        Reset();
        return &m_object;
    }
    void Attach(Interface* object) noexcept
    {
        Reset();
        m_object = object;
    }
    void Reset() noexcept
    {
        if (Interface* const object = std::exchange(m_object, nullptr)) {
            object->Release();
        }
    }

private:
    Interface* m_object = nullptr;
};

} // namespace Microsoft::WRL
