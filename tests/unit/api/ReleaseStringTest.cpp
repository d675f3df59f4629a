// The hand-back of strings.

#include "QanHelper.h"
#include "support/Test.h"

namespace {

using namespace test;

TEST(ReleaseString, FreesWhatTheLibraryHandedOutAndNothingForNull)
{
    std::vector<HLOCAL> freed;
    const LogCapture log;
    const CapturingPatch<decltype(&LocalFree)> patch("LocalFree", [&](HLOCAL block) {
        freed.push_back(block);
        return patch.Original(block);
    });
    auto* text = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, 10));
    QanhReleaseString(text);
    EXPECT_THAT(freed, ElementsAre(text));
    QanhReleaseString(nullptr);
    EXPECT_EQ(freed.size(), 1u);
    EXPECT_EQ(log.Lines(), Call("QanhReleaseString") + Call("QanhReleaseString"));
}

} // namespace
