#include "discovery/PackageManager.h"

#include "common/WinRtError.h"
#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <roapi.h>

#include <string>

namespace {

// What a failure is called takes memory too.
TEST(StoreMemory, RunningOutWhileTheManagersFailureIsNamedIsToldInstead)
{
    const test::ImportPatch<decltype(&RoInitialize)> initialize("RoInitialize",
                                                                [](RO_INIT_TYPE) -> HRESULT { return S_OK; });
    const test::ImportPatch<decltype(&RoGetActivationFactory)> activate(
        "RoGetActivationFactory", [](HSTRING, REFIID, void**) -> HRESULT { return REGDB_E_CLASSNOTREG; });
    const test::LogCapture log;
    std::size_t told = 0; // how often the log says that memory ran out
    (void)test::ForEachFailingAllocation([&](std::size_t index) {
        BOOL needsUninitialize = FALSE;
        bool isFailed = false;
        {
            const test::AllocationWatch watch(index);
            EXPECT_EQ(CQanhPackageManager::GetPackageManager(&needsUninitialize), nullptr);
            isFailed = watch.Failed();
        }
        EXPECT_EQ(needsUninitialize, 1);
        const std::string line = log.Lines().back();
        if (line == "CQanhPackageManager::GetPackageManager OUT(0x8007000E)") {
            EXPECT_TRUE(isFailed);
            ++told;
        } else {
            // The C++ runtime keeps memory for an exception by itself.
            EXPECT_EQ(line, "CQanhPackageManager::GetPackageManager " +
                                test::ToUtf8(WinRtError(REGDB_E_CLASSNOTREG).Message()));
        }
        return isFailed;
    });
    EXPECT_GT(told, 0u);
}

} // namespace
