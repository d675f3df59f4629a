#include "common/Xml.h"

#include "support/Text.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

namespace {

TEST(XmlNames, MatchWhole)
{
    EXPECT_TRUE(Xml::NamesEqual(L"", L""));
    EXPECT_FALSE(Xml::NamesEqual(L"", L"Name"));
    EXPECT_FALSE(Xml::NamesEqual(L"Name", L""));
    EXPECT_FALSE(Xml::NamesEqual(L"Nam", L"Name"));
    EXPECT_FALSE(Xml::NamesEqual(L"Names", L"Name"));
}

// A name that begins otherwise is refused without asking the C runtime: that must never be what it would not
// say.
TEST(XmlNames, MatchAsTheCRuntimeComparesThem)
{
    const std::wstring expected = L"kKaZ@[_{-é";
    const std::wstring firsts = L"azAZ@[`{_-09kK\u212AéÉıİ\x0001\xD800Ａ";
    int equal = 0;
    for (const wchar_t first : firsts) {
        for (std::size_t at = 0; at < expected.size(); ++at) {
            const std::wstring name = first + std::wstring(L"aMe");
            const std::wstring other = expected[at] + std::wstring(L"AmE");
            const bool same = _wcsnicmp(name.c_str(), other.c_str(), name.size()) == 0;
            EXPECT_EQ(Xml::NamesEqual(name, other), same) << test::ToUtf8(name) << " " << test::ToUtf8(other);
            equal += same;
        }
    }
    EXPECT_GT(equal, 10);
}

} // namespace
