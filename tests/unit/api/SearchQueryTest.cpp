#include "api/SearchQuery.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

std::wstring Query(const wchar_t* appName, std::initializer_list<const wchar_t*> excludedNames)
{
    ExcludeList excludeList;
    for (const wchar_t* name : excludedNames) {
        EXPECT_EQ(excludeList.AddUnique(name), S_OK);
    }
    return BuildSearchQuery(appName, excludeList);
}

TEST(SearchQuery, WithoutExcludedNamesIsTheQuotedName)
{
    EXPECT_EQ(Query(L"Mail", {}), L"\"Mail\"");
}

TEST(SearchQuery, OneExcludedNameStandsInANotClause)
{
    EXPECT_EQ(Query(L"Mail", {L"Gmail"}), L"\"Mail\" NOT(\"Gmail\")");
}

TEST(SearchQuery, MoreExcludedNamesAreJoinedInTheirOrder)
{
    EXPECT_EQ(Query(L"Mail", {L"Mail Box", L"Gmail"}), L"\"Mail\" NOT(\"Mail Box\" OR \"Gmail\")");
    EXPECT_EQ(Query(L"Mail", {L"Gmail", L"Mail Box", L"E-mail"}),
              L"\"Mail\" NOT(\"Gmail\" OR \"Mail Box\" OR \"E-mail\")");
}

TEST(SearchQuery, QuotesInNamesAreNotEscaped)
{
    EXPECT_EQ(Query(L"a\"b", {L"\"", L"c)d"}), L"\"a\"b\" NOT(\"\"\" OR \"c)d\")");
}

TEST(SearchQuery, FormatsInNamesAreText)
{
    EXPECT_EQ(Query(L"100%s", {L"%s %d", L"%"}), L"\"100%s\" NOT(\"%s %d\" OR \"%\")");
}

TEST(SearchQuery, NamesMayHoldAnyLetters)
{
    EXPECT_EQ(Query(L"\u30e1\u30fc\u30eb", {L"\xd83d\xde00", L"\xd800"}),
              L"\"\u30e1\u30fc\u30eb\" NOT(\"\xd83d\xde00\" OR \"\xd800\")");
}

TEST(SearchQuery, EmptyNameInTheListIsAnEntryLikeAnyOther)
{
    EXPECT_EQ(Query(L"Mail", {L"", L"Gmail"}), L"\"Mail\" NOT(\"\" OR \"Gmail\")");
}

TEST(SearchQuery, HasNoLimits)
{
    ExcludeList excludeList;
    std::wstring expected;
    for (int index = 0; index < 300; ++index) {
        const std::wstring name = std::to_wstring(index) + std::wstring(300, L'x');
        EXPECT_EQ(excludeList.AddUnique(name.c_str()), S_OK);
        expected += (index == 0 ? L"\"" : L" OR \"") + name + L"\"";
    }
    const std::wstring appName(5000, L'y');
    EXPECT_TRUE(BuildSearchQuery(appName.c_str(), excludeList) ==
                L"\"" + appName + L"\" NOT(" + expected + L")");
}

} // namespace
