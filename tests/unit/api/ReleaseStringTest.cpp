// The hand-back of strings.

#include "QanHelper.h"
#include "support/Test.h"

namespace {

using namespace test;

class ReleaseString : public ::testing::Test
{
protected:
    void Release(LPWSTR text)
    {
        QanhReleaseString(text);
        EXPECT_EQ(m_log.Lines(), Call("QanhReleaseString"));
    }

    std::vector<HLOCAL> m_freed;
    const LogCapture m_log;
    const CapturingPatch<decltype(&LocalFree)> m_patch{"LocalFree", [this](HLOCAL block) {
                                                           m_freed.push_back(block);
                                                           return m_patch.Original(block);
                                                       }};
};

TEST_F(ReleaseString, FreesWhatTheLibraryHandedOut)
{
    auto* text = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, 10));
    Release(text);
    EXPECT_THAT(m_freed, ElementsAre(text));
}

TEST_F(ReleaseString, NullDoesNothingButItsTwoLines)
{
    Release(nullptr);
    EXPECT_THAT(m_freed, IsEmpty());
}

} // namespace
