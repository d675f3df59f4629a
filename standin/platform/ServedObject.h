#pragma once

#include "standin/Faults.h"
#include "standin/Result.h"
#include "standin/platform/ComObject.h"

#include <windows.h>

#include <objbase.h>

// Objects that live in an apartment, as the real platform's do. There an object that is called on a thread
// without one does not work, and one that is released after the last apartment of the process has ended may
// be released into a server that was unloaded. Here the thread must have entered an apartment itself: one
// that other threads keep up for it may end at any moment.
namespace standin {

[[nodiscard]] inline bool HasOwnApartment() noexcept
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && qualifier != APTTYPEQUALIFIER_IMPLICIT_MTA;
}

// What a method of such an object answers: the body's result (ResultOf in Result.h); CO_E_NOTINITIALIZED, and
// a fault, on a thread without an apartment.
template <typename Body> [[nodiscard]] HRESULT Answer(Body body) noexcept
{
    if (!HasOwnApartment()) {
        CountFault(Fault::UseOutsideApartment);
        return CO_E_NOTINITIALIZED;
    }
    return ResultOf(body);
}

// The same for a method with a place for what it gives: E_POINTER without one, and nothing in it at first.
template <typename Value, typename Body> [[nodiscard]] HRESULT Give(Value* place, Body body) noexcept
{
    return Answer([&] {
        Check(place ? S_OK : E_POINTER);
        *place = Value{};
        return body();
    });
}

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

template <typename Interface, typename... Others> class ServedObject : public ComObject<Interface, Others...>
{
    using Base = ComObject<Interface, Others...>;

public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override
    {
        return Give(object, [&] { return Base::QueryInterface(interfaceId, object); });
    }

    ULONG STDMETHODCALLTYPE AddRef() override
    {
        if (!HasOwnApartment()) {
            CountFault(Fault::UseOutsideApartment);
        }
        return Base::AddRef();
    }

    ULONG STDMETHODCALLTYPE Release() override
    {
        if (!HasOwnApartment()) {
            CountFault(Fault::ReleaseOutsideApartment);
        }
        return Base::Release();
    }
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace standin
