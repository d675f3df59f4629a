#pragma once

#include <windows.h>

#include <unknwn.h>

#include <new>
#include <utility>

namespace standin {

#if defined(__GNUC__)
// COM's interfaces have no virtual destructor, and need none: only Release deletes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// Reference counting and QueryInterface for an object with one interface beside IUnknown. Starts with one
// reference, which belongs to whoever made it.
template <typename Interface> class ComObject : public Interface
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
        if (!IsEqualIID(interfaceId, __uuidof(IUnknown)) && !IsEqualIID(interfaceId, __uuidof(Interface))) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<Interface*>(this);
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

} // namespace standin
