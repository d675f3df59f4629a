#include "catalog/WantedName.h"

#include "unit/catalog/Records.h"

#include <optional>
#include <random>

namespace {

using namespace test;

TEST(WantedName, IsALowerCaseCopyOfItsText)
{
    const wchar_t text[] = L"Word 2013 ÄÖ ＡＢ メール";
    const WantedName name(text);
    EXPECT_EQ(name.Result(), S_OK);
    EXPECT_EQ(name.Text(), text);
    EXPECT_STREQ(name.Lower().data(), L"word 2013 ÄÖ ＡＢ メール");
    EXPECT_STREQ(text, L"Word 2013 ÄÖ ＡＢ メール");
}

TEST(WantedName, TakesNullAndAnEmptyText)
{
    EXPECT_EQ(WantedName(nullptr).Text(), nullptr);
    EXPECT_STREQ(WantedName(L"").Text(), L"");
}

TEST(WantedName, ReportsThatItCannotBeMadeReady)
{
    {
        const NoCopies noCopies;
        EXPECT_EQ(WantedName(L"mail").Result(), E_OUTOFMEMORY);
    }
    {
        const NoLowering noLowering;
        EXPECT_EQ(WantedName(L"mail").Result(), E_FAIL);
    }
    const std::size_t failures = ForEachFailingAllocation([](std::size_t index) {
        const Attempt attempt =
            TryWithFailingAllocation(index, [] { return WantedName(L"a b c d e").Result(); });
        EXPECT_EQ(attempt.result, attempt.failed ? E_OUTOFMEMORY : S_OK);
        EXPECT_EQ(attempt.left, 0u);
        return attempt.failed;
    });
    EXPECT_GE(failures, 1u);
}

TEST(WantedName, FreesItsCopy)
{
    const CopyWatch copies;
    std::optional<WantedName> name(std::in_place, L"Mail");
    EXPECT_NE(copies.Freed(), L"mail");
    name.reset();
    EXPECT_EQ(copies.Freed(), L"mail");
}

TEST(WantedName, EqualsANameIgnoringCase)
{
    const WantedName name(L"Mail");
    EXPECT_TRUE(name.Equals(L"MAIL"));
    EXPECT_TRUE(name.Equals(L"mail"));
    EXPECT_FALSE(name.Equals(L"Mai"));
    EXPECT_FALSE(name.Equals(L"Mails"));
    EXPECT_FALSE(name.Equals(L"Maps"));
    EXPECT_FALSE(name.Equals(L""));
}

// Two ways to one answer: the name's tokens are taken apart once, those of IsSubStrNoOrder() each time.
TEST(WantedName, IsInWhatIsSubStrNoOrderFindsItIn)
{
    const CQanhDesktopApp app;
    const std::wstring characters = L"aAbB1_/.- \\\u3041\u30FF\u4E00\uFF21\u3040é\xD801\xDC00";
    std::mt19937 random(1);
    const auto text = [&](std::size_t longest) {
        std::wstring made(1 + random() % longest, L' ');
        for (wchar_t& character : made) {
            character = characters[random() % characters.size()];
        }
        return made;
    };
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::wstring part = text(4);
        const std::wstring whole = text(12);
        const WantedName name(part.c_str());
        const bool isIn = name.IsIn(whole);
        ASSERT_EQ(isIn, app.IsSubStrNoOrder(name.Lower().data(), whole.c_str()) == 1)
            << ToUtf8(part) << " in " << ToUtf8(whole);
        found += isIn;
    }
    EXPECT_GT(found, 1000);
    EXPECT_LT(found, 19000);
}

} // namespace
