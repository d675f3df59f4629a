#pragma once

#include <windows.h>

#include <unknwn.h>

#include <new>
#include <utility>

namespace standin {

// True when the ID is the interface's own. Specialised for interfaces whose declarations carry no ID.
template <typename Interface> [[nodiscard]] bool IsInterface(REFIID interfaceId) noexcept
{
    return IsEqualIID(interfaceId, __uuidof(Interface)) != FALSE;
}

#if defined(__GNUC__)
// COM's interfaces have no virtual destructor, and need none: only Release deletes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// Reference counting and QueryInterface for an object with one or more interfaces beside IUnknown. Starts
// with one reference, which belongs to whoever made it.
template <typename Interface, typename... Others> class ComObject : public Interface, public Others...
{
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override
    {
        if (!object) {
            return E_POINTER;
        }
        *object = FindInterface(interfaceId);
        if (!*object) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }

    ULONG STDMETHODCALLTYPE Release() override
    {
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0) {
            delete this;
        }
        return static_cast<ULONG>(left);
    }

protected:
    virtual ~ComObject() = default;

    // For Unserved.h.
    static HRESULT NotImplemented() noexcept { return E_NOTIMPL; }

    // The interface, null when the object has none of that ID. Without a reference of its own.
    [[nodiscard]] virtual void* FindInterface(REFIID interfaceId) noexcept
    {
        if (IsEqualIID(interfaceId, __uuidof(IUnknown)) || IsInterface<Interface>(interfaceId)) {
            return static_cast<Interface*>(this);
        }
        void* found = nullptr;
        ((found = IsInterface<Others>(interfaceId) ? static_cast<Others*>(this) : found), ...);
        return found;
    }

private:
    LONG m_references = 1;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

// Makes an object of Class and hands out one of its interfaces.
template <typename Class, typename... Arguments>
[[nodiscard]] HRESULT CreateComObject(REFIID interfaceId, void** object, Arguments&&... arguments) noexcept
{
    auto* made = new (std::nothrow) Class(std::forward<Arguments>(arguments)...);
    if (!made) {
        return E_OUTOFMEMORY;
    }
    const HRESULT hr = made->QueryInterface(interfaceId, object);
    made->Release();
    return hr;
}

// Makes an object of Class and hands out the interface that the pointer is of.
template <typename Class, typename Interface, typename... Arguments>
[[nodiscard]] HRESULT MakeObject(Interface** object, Arguments&&... arguments) noexcept
{
    *object = new (std::nothrow) Class(std::forward<Arguments>(arguments)...);
    return *object ? S_OK : E_OUTOFMEMORY;
}

} // namespace standin
