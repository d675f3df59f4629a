// What COM consists of. An interface's ID is the address of an object of its own.
#pragma once

#include <windows.h>

#include <type_traits>

struct GUID
{
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

template <typename Interface> struct NativeId
{
    static const GUID value;
};
template <typename Interface> const GUID NativeId<Interface>::value{};
#define __uuidof(Interface) (NativeId<Interface>::value)
inline BOOL IsEqualIID(REFIID left, REFIID right) noexcept
{
    return &left == &right;
}

struct IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

template <typename Interface> void** NativePlace(Interface** place)
{
    return reinterpret_cast<void**>(place);
}
#define IID_PPV_ARGS(place)                                                                                  \
    NativeId<std::remove_pointer_t<std::remove_pointer_t<decltype(place)>>>::value, NativePlace(place)

struct IMalloc;

struct IStream : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Read(void* data, ULONG size, ULONG* read) = 0;
    virtual HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG size, ULONG* written) = 0;
};

constexpr DWORD CLSCTX_INPROC_SERVER = 1;
constexpr DWORD COINIT_APARTMENTTHREADED = 2;
HRESULT CoInitializeEx(void* reserved, DWORD kind) noexcept;
void CoUninitialize() noexcept;
void RoUninitialize() noexcept;
HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID interfaceId, void** object);
void* CoTaskMemAlloc(std::size_t size) noexcept;
void CoTaskMemFree(void* memory) noexcept;
