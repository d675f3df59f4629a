#include "catalog/CatalogXml.h"

#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

#include <optional>

namespace {

using namespace test;

TEST(CatalogXmlWriteElement, EndsTheElementAndReturnsTheFirstFailure)
{
    WriterProbe writer;
    writer.failingCall = 1; // the end
    EXPECT_EQ(CatalogXml::WriteElement(&writer, L"a", [] { return E_ABORT; }), E_ABORT);
    EXPECT_THAT(writer.calls, ElementsAre(L"start a", L"end"));
}

TEST(CatalogXmlWriteTexts, DoesNotEscape)
{
    // The writer escapes; doing it here would double it.
    WriterProbe writer;
    EXPECT_EQ(CatalogXml::WriteTexts(&writer, {{L"b", L"<A & \"B\">"}}), S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"b=<A & \"B\">"));
}

TEST(CatalogXmlReadFlag, IsTrueForEveryNumberButZero)
{
    for (const BOOL unreadable : {FALSE, TRUE}) {
        for (const wchar_t* text : {L"1", L"2", L"-1", L"+3", L" 7", L"\t7", L"7abc", L"10", L"1.5", L"01",
                                    L" \r\n -2", L"2147483648", L"-2147483649", L"4294967295", L"4294967296",
                                    L"-4294967296", L"18446744073709551616", L"99999999999999999999999999"}) {
            EXPECT_EQ(CatalogXml::ReadFlag(text, unreadable), TRUE) << PrintToString(text);
        }
        for (const wchar_t* text :
             {L"0", L"00", L"-0", L"+0", L" 0", L"0abc", L"0x1", L"0.5", L"000000000000000000000000000"}) {
            EXPECT_EQ(CatalogXml::ReadFlag(text, unreadable), FALSE) << PrintToString(text);
        }
    }
}

TEST(CatalogXmlReadFlag, IsThePresetForWhatIsNoNumber)
{
    for (const wchar_t* text : {L"", L" ", L"yes", L"no", L"true", L"-", L"+", L"- 1", L"+-1", L"--1", L"x1",
                                L".5", L"\xFF11", L"メ"}) {
        EXPECT_EQ(CatalogXml::ReadFlag(text, TRUE), TRUE) << PrintToString(text);
        EXPECT_EQ(CatalogXml::ReadFlag(text, FALSE), FALSE) << PrintToString(text);
    }
}

void ExpectNumber(const wchar_t* text, UINT32 number, const wchar_t* rest)
{
    SCOPED_TRACE(PrintToString(text));
    EXPECT_EQ(CatalogXml::TakeNumber(text), number);
    EXPECT_STREQ(text, rest);
}

TEST(CatalogXmlTakeNumber, TakesWhatTheTextBeginsWith)
{
    ExpectNumber(L"0", 0, L"");
    ExpectNumber(L"12.34", 12, L".34");
    ExpectNumber(L" \t\r\n12 ", 12, L" ");
    ExpectNumber(L"+12+", 12, L"+");
    ExpectNumber(L"-1", 0xFFFFFFFF, L"");
    ExpectNumber(L"-65536x", 0xFFFF0000, L"x");
    ExpectNumber(L"4294967295", 0xFFFFFFFF, L"");
    ExpectNumber(L"4294967296", 0xFFFFFFFF, L"");
    ExpectNumber(L"99999999999999999999999999,", 0xFFFFFFFF, L",");
    ExpectNumber(L"0000000000000000000000000012", 12, L"");
}

TEST(CatalogXmlTakeNumber, LeavesTheTextAloneWhenThereIsNone)
{
    for (const wchar_t* const nothing : {L"", L" ", L"x", L"-", L"- 1", L"+-1", L".1", L"\xFF11"}) {
        const wchar_t* text = nothing;
        EXPECT_EQ(CatalogXml::TakeNumber(text), std::nullopt);
        EXPECT_EQ(text, nothing);
    }
}

} // namespace
