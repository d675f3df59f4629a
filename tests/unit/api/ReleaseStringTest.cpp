// The hand-back of strings.

#include "QanHelper.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<HLOCAL> g_freed;

TEST(ReleaseString, FreesWhatTheLibraryHandedOut)
{
    g_freed.clear();
    const test::LogCapture log;
    static decltype(&LocalFree) s_localFree = nullptr;
    const test::ImportPatch<decltype(&LocalFree)> patch("LocalFree", [](HLOCAL block) -> HLOCAL {
        g_freed.push_back(block);
        return s_localFree(block);
    });
    s_localFree = patch.Original();
    auto* text = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, 10));
    QanhReleaseString(text);
    EXPECT_THAT(g_freed, ElementsAre(text));
    EXPECT_THAT(log.Lines(), ElementsAre("QanhReleaseString IN", "QanhReleaseString OUT"));
}

TEST(ReleaseString, NullDoesNothingButItsTwoLines)
{
    g_freed.clear();
    const test::LogCapture log;
    const test::ImportPatch<decltype(&LocalFree)> patch("LocalFree", [](HLOCAL block) -> HLOCAL {
        g_freed.push_back(block);
        return nullptr;
    });
    QanhReleaseString(nullptr);
    EXPECT_THAT(g_freed, IsEmpty());
    EXPECT_THAT(log.Lines(), ElementsAre("QanhReleaseString IN", "QanhReleaseString OUT"));
}

} // namespace
