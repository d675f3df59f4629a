#include "unit/discovery/ThreadRun.h"

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using MarkMemory = discovery_test::RefreshThread;

bool g_failNext = false; // the next request for memory, once

void* FailingMalloc(std::size_t size)
{
    // Patching itself allocates, before the patch knows the function that it stands in for.
    static const auto s_malloc = reinterpret_cast<void* (*)(std::size_t)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"msvcrt.dll"), "malloc")));
    if (g_failNext) {
        g_failNext = false;
        return nullptr;
    }
    return s_malloc(size);
}

// A package that nobody could be asked about stays what it was, and the pass goes on.
TEST_F(MarkMemory, RunningOutBeforeThePackagesLeavesThemAsTheyWere)
{
    WriteAndLoad("<Applications><MetroApps><Package PackageFamilyName=\"mail_1\" Version=\"1.2.3.4\">"
                 "<MetroApp DisplayName=\"mail\" /></Package></MetroApps></Applications>");
    const test::ImportPatch<decltype(&FailingMalloc)> patch("malloc", FailingMalloc);
    g_failNext = false;
    m_onStep = [](const std::wstring& step) { g_failNext = step == L"wait 1000"; };
    EXPECT_EQ(Run(), 0u);
    EXPECT_FALSE(g_failNext);
    EXPECT_THAT(m_steps, Not(Contains(L"family mail_1")));
    EXPECT_THAT(m_steps, Contains(L"save " + CatalogFile()));
    EXPECT_THAT(Saved(), HasSubstr("mail_1"));
}

} // namespace
