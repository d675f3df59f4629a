#include "common/Apartment.h"

#include "support/Test.h"

namespace {

using namespace test;

TEST(ScopedApartment, LeavesWhatWasEntered)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [] {
        {
            const ComApartment outer(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            {
                const WinRtApartment inner(RoInitialize(RO_INIT_SINGLETHREADED));
            }
            EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded) << "the outer one's";
        }
        EXPECT_EQ(ApartmentOfThread(), Apartment::kNone);
        {
            const WinRtApartment apartment(RoInitialize(RO_INIT_MULTITHREADED));
            EXPECT_EQ(ApartmentOfThread(), Apartment::kMultithreaded);
        }
    }));
}

// A thread that is in an apartment of another kind stays in it.
TEST(ScopedApartment, DoesNotLeaveWhatWasNotEntered)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kMultithreaded, [] {
        const HRESULT entered = RoInitialize(RO_INIT_SINGLETHREADED);
        EXPECT_EQ(entered, RPC_E_CHANGED_MODE);
        const WinRtApartment winRt(entered);
        const ComApartment com(CoInitialize(nullptr));
    }));
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [] {
        const ComApartment com(E_OUTOFMEMORY);
        const WinRtApartment winRt;
    }));
}

TEST(ScopedApartment, LeavesWhatItTookOver)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [] {
        WinRtApartment apartment;
        EXPECT_EQ(RoInitialize(RO_INIT_SINGLETHREADED), S_OK);
        apartment.TakeOver();
    }));
}

} // namespace
