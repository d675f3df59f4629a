#include "common/HString.h"

#include "support/Test.h"

namespace {

TEST(HString, IsEmptyAtFirst)
{
    const HString text;
    EXPECT_EQ(text.Get(), nullptr);
    EXPECT_STREQ(text.c_str(), L"");
}

TEST(HString, HoldsWhatAGetterHandsOut)
{
    HString text;
    WindowsCreateString(L"Contoso \u5929", 9, text.Put());
    EXPECT_STREQ(text.c_str(), L"Contoso \u5929");
    EXPECT_EQ(WindowsGetStringLen(text.Get()), 9u);
    HString empty;
    WindowsCreateString(L"", 0, empty.Put());
    EXPECT_STREQ(empty.c_str(), L"");
}

TEST(HString, ReleasesItsStringOnce)
{
    std::vector<HSTRING> released;
    HSTRING handedOut = nullptr;
    {
        const test::CapturingPatch<decltype(&WindowsDeleteString)> patch("WindowsDeleteString",
                                                                         [&](HSTRING string) {
                                                                             released.push_back(string);
                                                                             return S_OK;
                                                                         });
        HString text;
        WindowsCreateString(L"text", 4, text.Put());
        handedOut = text.Get();
    }
    EXPECT_THAT(released, ::testing::ElementsAre(handedOut));
    WindowsDeleteString(handedOut);
}

} // namespace
