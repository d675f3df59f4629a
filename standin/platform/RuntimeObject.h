#pragma once

#include "standin/platform/ServedObject.h"

#include <windows.h>

#include <inspectable.h>
#include <objidl.h>
#include <winstring.h>

#include <string>
#include <string_view>

namespace standin {

// An object of the Windows Runtime: a served object. Agile: it may be used on
// any thread that has an apartment, of whatever kind.
template <typename Interface, typename... Others>
class RuntimeObject : public ServedObject<Interface, Others...>
{
public:
    HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }

protected:
    [[nodiscard]] void* FindInterface(REFIID interfaceId) noexcept override
    {
        if (IsEqualIID(interfaceId, __uuidof(IInspectable)) ||
            IsEqualIID(interfaceId, __uuidof(IAgileObject))) {
            return static_cast<Interface*>(this);
        }
        return ServedObject<Interface, Others...>::FindInterface(interfaceId);
    }
};

// Hands a text out as a string of the Windows Runtime, which the caller deletes.
[[nodiscard]] inline HRESULT GiveText(const std::wstring& text, HSTRING* value) noexcept
{
    return value ? WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), value) : E_POINTER;
}

// The text of a string of the Windows Runtime, for as long as that lives; null is the empty text.
[[nodiscard]] inline std::wstring_view TextOf(HSTRING string) noexcept
{
    UINT32 length = 0;
    const wchar_t* text = WindowsGetStringRawBuffer(string, &length);
    return std::wstring_view(text, length);
}

} // namespace standin
