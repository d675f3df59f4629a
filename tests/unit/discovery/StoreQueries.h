#pragma once

#include "common/WinRtError.h"
#include "discovery/PackageManager.h"
#include "support/FakePackages.h"
#include "unit/discovery/Records.h"

#include <new>

namespace store_test {

using namespace test;
inline constexpr wchar_t kFamily[] = L"mail_1";
inline constexpr Apartment kEveryApartment[] = {Apartment::kNone, Apartment::kSingleThreaded,
                                                Apartment::kMultithreaded};

// What the log says of a failure.
inline std::string Message(HRESULT result)
{
    return ToUtf8(WinRtError(result).Message());
}

// The lines of the way to the package manager.
inline Lines ManagerLines(const std::string& result = "(0x00000000)")
{
    return Call("CQanhPackageManager::GetPackageManager", result);
}
inline Lines FailedManagerLines()
{
    return {"CQanhPackageManager::GetPackageManager IN",
            "CQanhPackageManager::GetPackageManager " + Message(E_ACCESSDENIED)};
}

// What that asks of the platform, and what comes then; the Windows Runtime is entered with this result.
inline Lines ManagerSteps(const std::string& entered, const Lines& more)
{
    return Lines{"RoInitialize(0) = " + entered,
                 "RoGetActivationFactory(Windows.Management.Deployment.PackageManager)", "ActivateInstance",
                 "QueryInterface"} +
           more;
}
// The same with the search for a family, up to the question whether there is a package.
inline Lines FindSteps(const std::string& entered, const Lines& more)
{
    return ManagerSteps(
        entered,
        Lines{"FindPackagesByUserSecurityIdPackageFamilyName(, mail_1)", "First", "HasCurrent"} + more);
}

// The system's packages, as the queries see them.
class StoreQueries : public ::testing::Test
{
protected:
    Lines& Journal() { return m_store.objects.journal; }

    // Runs the body on a thread in this apartment, which it must keep.
    template <typename Body> static void InApartment(Apartment apartment, Body body)
    {
        EXPECT_TRUE(KeepsApartment(apartment, body)) << ::testing::PrintToString(apartment);
    }

    // Does the operation once more for each call of the platform that it made until now, more than this many;
    // each time another one of them fails. The operation is told which: 0 is the first.
    template <typename Operation> void FailEachCall(std::size_t moreThan, Operation operation)
    {
        const std::size_t calls = m_store.objects.Calls();
        ASSERT_GT(calls, moreThan);
        for (std::size_t index = 0; index < calls; ++index) {
            SCOPED_TRACE(index);
            m_store.objects.FailCall(m_store.objects.Calls() + index, E_ACCESSDENIED);
            InApartment(Apartment::kNone, [&] { operation(index); });
            EXPECT_EQ(Journal().back(), "RoUninitialize");
        }
    }

    FakeStore m_store;
};

} // namespace store_test
