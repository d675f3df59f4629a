#include "api/SearchQuery.h"

#include "support/Test.h"

namespace {

struct QueryCase
{
    const char* name;
    const wchar_t* application;
    std::vector<const wchar_t*> excluded;
    const wchar_t* query;
};

class SearchQuery : public ::testing::TestWithParam<QueryCase>
{
};

TEST_P(SearchQuery, QuotesTheNameAndWhatIsExcluded)
{
    ExcludeList excludeList;
    for (const wchar_t* name : GetParam().excluded) {
        EXPECT_EQ(excludeList.AddUnique(name), S_OK);
    }
    EXPECT_EQ(BuildSearchQuery(GetParam().application, excludeList), GetParam().query);
}

const QueryCase kQueries[] = {
    {"NoExcludedName", L"Mail", {}, L"\"Mail\""},
    {"OneExcludedName", L"Mail", {L"Gmail"}, L"\"Mail\" NOT(\"Gmail\")"},
    {"ThreeInTheirOrder",
     L"Mail",
     {L"Gmail", L"Mail Box", L"E-mail"},
     L"\"Mail\" NOT(\"Gmail\" OR \"Mail Box\" OR \"E-mail\")"},
    {"QuotesThatAreNotEscaped", L"a\"b", {L"\"", L"c)d"}, L"\"a\"b\" NOT(\"\"\" OR \"c)d\")"},
    {"LineEndsThatStay", L"Mail", {L"x mail\r\ny"}, L"\"Mail\" NOT(\"x mail\r\ny\")"},
    {"FormatsThatAreText", L"100%s", {L"%s %d", L"%"}, L"\"100%s\" NOT(\"%s %d\" OR \"%\")"},
    {"AnyLetters",
     L"\u30e1\u30fc\u30eb",
     {L"\xd83d\xde00", L"\xd800"},
     L"\"\u30e1\u30fc\u30eb\" NOT(\"\xd83d\xde00\" OR \"\xd800\")"},
    {"AnEmptyExcludedName", L"Mail", {L"", L"Gmail"}, L"\"Mail\" NOT(\"\" OR \"Gmail\")"},
};

INSTANTIATE_TEST_SUITE_P(With, SearchQuery, ::testing::ValuesIn(kQueries),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(SearchQueryLimits, AreNone)
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
