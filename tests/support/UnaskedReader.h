#pragma once

#include "standin/platform/ComObject.h"

#include <windows.h>

#include <xmllite.h>

namespace test {

// The part of an XML reader that the library does not ask for: nothing is there.
class UnaskedReader : public IXmlReader
{
public:
    HRESULT STDMETHODCALLTYPE GetProperty(UINT, LONG_PTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetProperty(UINT, LONG_PTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MoveToAttributeByName(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetQualifiedName(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetNamespaceUri(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrefix(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ReadValueChunk(WCHAR*, UINT, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBaseUri(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetAttributeCount(UINT*) override { return E_NOTIMPL; }
    BOOL STDMETHODCALLTYPE IsDefault() override { return FALSE; }

protected:
    ~UnaskedReader() = default;
};

} // namespace test

template <> inline bool standin::IsInterface<test::UnaskedReader>(REFIID interfaceId) noexcept
{
    return IsEqualIID(interfaceId, __uuidof(IXmlReader)) != FALSE;
}
