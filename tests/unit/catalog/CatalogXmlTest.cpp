#include "catalog/CatalogXml.h"

#include "unit/catalog/WriterProbe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using test::WriterProbe;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(CatalogXml, KnowsTheNamesOfTheFile)
{
    EXPECT_STREQ(CatalogXml::kApplications, L"Applications");
    EXPECT_STREQ(CatalogXml::kMetroApps, L"MetroApps");
    EXPECT_STREQ(CatalogXml::kPackage, L"Package");
    EXPECT_STREQ(CatalogXml::kMetroApp, L"MetroApp");
    EXPECT_STREQ(CatalogXml::kDesktopApps, L"DesktopApps");
    EXPECT_STREQ(CatalogXml::kDesktopApp, L"DesktopApp");
}

TEST(CatalogXmlWriteElement, StartsAndEndsTheElementAroundItsContent)
{
    WriterProbe writer;
    EXPECT_EQ(CatalogXml::WriteElement(&writer, L"a", [&] { return CatalogXml::Write(&writer, L"b", L"c"); }),
              S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"start a", L"b=c", L"end"));
}

TEST(CatalogXmlWriteElement, WritesNoContentWhenItCannotStart)
{
    WriterProbe writer;
    writer.failingCall = 0;
    EXPECT_EQ(CatalogXml::WriteElement(&writer, L"a", [&] { return CatalogXml::Write(&writer, L"b", L"c"); }),
              writer.failure);
    EXPECT_THAT(writer.calls, ElementsAre(L"start a"));
}

TEST(CatalogXmlWriteElement, EndsTheElementAndReturnsTheFirstFailure)
{
    WriterProbe writer;
    writer.failingCall = 1;
    EXPECT_EQ(CatalogXml::WriteElement(&writer, L"a", [] { return E_ABORT; }), E_ABORT);
    EXPECT_THAT(writer.calls, ElementsAre(L"start a", L"end"));
}

TEST(CatalogXmlWriteElement, ReturnsTheFailureToEnd)
{
    WriterProbe writer;
    writer.failingCall = 1;
    EXPECT_EQ(CatalogXml::WriteElement(&writer, L"a", [] { return S_OK; }), writer.failure);
}

TEST(CatalogXmlWrite, WritesAlsoWhatIsEmpty)
{
    WriterProbe writer;
    EXPECT_EQ(CatalogXml::Write(&writer, L"a", L""), S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"a="));
}

TEST(CatalogXmlWriteTexts, LeavesEmptyTextsOut)
{
    WriterProbe writer;
    EXPECT_EQ(
        CatalogXml::WriteTexts(&writer, {{L"a", WideString()}, {L"b", L"B"}, {L"c", L""}, {L"d", L"D"}}),
        S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"b=B", L"d=D"));
    EXPECT_EQ(CatalogXml::WriteTexts(&writer, {}), S_OK);
}

TEST(CatalogXmlWriteTexts, DoesNotEscape)
{
    // The writer does that; doing it here would double it.
    WriterProbe writer;
    EXPECT_EQ(CatalogXml::WriteTexts(&writer, {{L"a", L"<A & \"B\">"}}), S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"a=<A & \"B\">"));
}

TEST(CatalogXmlWriteTexts, EndsAtTheFirstFailure)
{
    WriterProbe writer;
    writer.failingCall = 1;
    EXPECT_EQ(CatalogXml::WriteTexts(&writer, {{L"a", L"A"}, {L"b", L"B"}, {L"c", L"C"}}), writer.failure);
    EXPECT_THAT(writer.calls, ElementsAre(L"a=A", L"b=B"));
}

TEST(CatalogXmlWriteFlags, WritesOnlyWhatDiffersFromTheDefault)
{
    WriterProbe writer;
    EXPECT_EQ(CatalogXml::WriteFlags(&writer, {{L"a", TRUE, FALSE},
                                               {L"b", FALSE, FALSE},
                                               {L"c", TRUE, TRUE},
                                               {L"d", FALSE, TRUE},
                                               {L"e", -1, FALSE},
                                               {L"f", 2, TRUE}}),
              S_OK);
    EXPECT_THAT(writer.calls, ElementsAre(L"a=1", L"d=0", L"e=1"));
}

TEST(CatalogXmlWriteFlags, EndsAtTheFirstFailure)
{
    WriterProbe writer;
    writer.failingCall = 0;
    EXPECT_EQ(CatalogXml::WriteFlags(&writer, {{L"a", TRUE, FALSE}, {L"b", TRUE, FALSE}}), writer.failure);
    EXPECT_THAT(writer.calls, ElementsAre(L"a=1"));
}

TEST(CatalogXmlReadFlag, IsTrueForEveryNumberButZero)
{
    for (const BOOL unreadable : {FALSE, TRUE}) {
        for (const wchar_t* text : {L"1", L"2", L"-1", L"+3", L" 7", L"\t7", L"7abc", L"10", L"1.5", L"01",
                                    L" \r\n -2", L"2147483648", L"-2147483649", L"4294967295", L"4294967296",
                                    L"-4294967296", L"18446744073709551616", L"99999999999999999999999999"}) {
            EXPECT_EQ(CatalogXml::ReadFlag(text, unreadable), TRUE) << testing::PrintToString(text);
        }
        for (const wchar_t* text :
             {L"0", L"00", L"-0", L"+0", L" 0", L"0abc", L"0x1", L"0.5", L"000000000000000000000000000"}) {
            EXPECT_EQ(CatalogXml::ReadFlag(text, unreadable), FALSE) << testing::PrintToString(text);
        }
    }
}

TEST(CatalogXmlReadFlag, IsThePresetForWhatIsNoNumber)
{
    for (const wchar_t* text : {L"", L" ", L"yes", L"no", L"true", L"-", L"+", L"- 1", L"+-1", L"--1", L"x1",
                                L".5", L"\xFF11", L"メ"}) {
        EXPECT_EQ(CatalogXml::ReadFlag(text, TRUE), TRUE) << testing::PrintToString(text);
        EXPECT_EQ(CatalogXml::ReadFlag(text, FALSE), FALSE) << testing::PrintToString(text);
    }
}

struct Number
{
    const wchar_t* text;
    UINT32 number;
    const wchar_t* rest;
};

TEST(CatalogXmlTakeNumber, TakesWhatTheTextBeginsWith)
{
    const Number numbers[] = {
        {L"0", 0, L""},
        {L"12.34", 12, L".34"},
        {L" \t\r\n12 ", 12, L" "},
        {L"+12+", 12, L"+"},
        {L"-1", 0xFFFFFFFF, L""},
        {L"-65536x", 0xFFFF0000, L"x"},
        {L"4294967295", 0xFFFFFFFF, L""},
        {L"4294967296", 0xFFFFFFFF, L""},
        {L"99999999999999999999999999,", 0xFFFFFFFF, L","},
        {L"0000000000000000000000000012", 12, L""},
    };
    for (const Number& expected : numbers) {
        SCOPED_TRACE(testing::PrintToString(expected.text));
        const wchar_t* text = expected.text;
        EXPECT_EQ(CatalogXml::TakeNumber(text), expected.number);
        EXPECT_STREQ(text, expected.rest);
    }
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
