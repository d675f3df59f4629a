#include "unit/discovery/Start.h"

namespace {

using NoModule = discovery_test::PackageManagerStart;

// A thread that does not hold the library would run in freed memory one day: none is started.
TEST_F(NoModule, StartsNoThread)
{
    const test::ImportPatch<decltype(&GetModuleHandleExW)> patch("GetModuleHandleExW",
                                                                 [](DWORD, const wchar_t*, HMODULE*) -> BOOL {
                                                                     SetLastError(ERROR_MOD_NOT_FOUND);
                                                                     return FALSE;
                                                                 });
    test::WriteFileBytes(CatalogFile(), "<Applications />");
    EXPECT_EQ(m_manager.Initialize(), E_FAIL);
    EXPECT_THAT(m_threadStarts, ::testing::IsEmpty());
    EXPECT_THAT(m_log.Lines(), ::testing::Contains("CreateThread() failed. ErrCode = 126 "));
    ExpectNothingHeld();
}

} // namespace
