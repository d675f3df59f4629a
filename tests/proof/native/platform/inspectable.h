#pragma once

#include <hstring.h>
#include <unknwn.h>

enum TrustLevel
{
    BaseTrust = 0,
};

struct IInspectable : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) = 0;
};
