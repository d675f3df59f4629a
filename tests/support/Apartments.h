#pragma once

#include <windows.h>

#include <objbase.h>

#include <ostream>
#include <thread>

namespace test {

enum class Apartment
{
    kNone,
    kSingleThreaded,
    kMultithreaded
};

inline void PrintTo(Apartment apartment, std::ostream* stream)
{
    *stream << (apartment == Apartment::kNone             ? "no apartment"
                : apartment == Apartment::kSingleThreaded ? "a single-threaded apartment"
                                                          : "the multithreaded apartment");
}

// The apartment that the calling thread has entered itself.
inline Apartment ApartmentOfThread()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(CoGetApartmentType(&type, &qualifier)) || qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA) {
        return Apartment::kNone;
    }
    return type == APTTYPE_MTA ? Apartment::kMultithreaded : Apartment::kSingleThreaded;
}

// Runs the body on a new thread that has entered this apartment, and waits for it. Tells whether the thread
// was in the same apartment afterwards, and out of any once it had left its own.
template <typename Body> bool KeepsApartment(Apartment apartment, Body body)
{
    bool kept = false;
    std::thread([&] {
        if (apartment != Apartment::kNone) {
            CoInitializeEx(nullptr, apartment == Apartment::kMultithreaded ? COINIT_MULTITHREADED
                                                                           : COINIT_APARTMENTTHREADED);
        }
        body();
        kept = ApartmentOfThread() == apartment;
        if (kept && apartment != Apartment::kNone) {
            CoUninitialize();
        }
        kept = kept && ApartmentOfThread() == Apartment::kNone;
    }).join();
    return kept;
}

} // namespace test
