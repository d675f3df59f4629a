// How a package and its applications are written to the catalogue file and read from it.

#include "catalog/Package.h"

#include "support/Allocations.h"
#include "support/LogCapture.h"
#include "support/ReaderProbe.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"
#include "unit/catalog/XmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using test::RecordProbe;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr RecordVersion kVersion{1, 2, 3, 4};

std::string Written(const CQanhPackage& package)
{
    const test::XmlSink sink;
    EXPECT_EQ(package.ToXmlNode(sink.Writer()), S_OK);
    return sink.Text();
}

TEST(PackageToXmlNode, WritesFamilyNameAndVersionAlways)
{
    EXPECT_EQ(Written(CQanhPackage(L"a_1", L"full", L"name", kVersion)),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" />)");
    EXPECT_EQ(Written(CQanhPackage(L"", RecordVersion(), FALSE, TRUE)),
              R"(<Package PackageFamilyName="" Version="0.0.0.0" />)");
}

TEST(PackageToXmlNode, WritesTheBuildBeforeTheRevision)
{
    RecordVersion version;
    version.Major = 6;
    version.Minor = 2;
    version.Build = 9200;
    version.Revision = 16384;
    EXPECT_EQ(Written(CQanhPackage(L"a_1", version, FALSE, TRUE)),
              R"(<Package PackageFamilyName="a_1" Version="6.2.9200.16384" />)");
    EXPECT_EQ(Written(CQanhPackage(L"a_1", {65535, 65535, 65535, 65535}, FALSE, TRUE)),
              R"(<Package PackageFamilyName="a_1" Version="65535.65535.65535.65535" />)");
}

TEST(PackageToXmlNode, WritesFlagsThatDifferFromTheirDefault)
{
    EXPECT_EQ(Written(CQanhPackage(L"a_1", kVersion, TRUE, TRUE)),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" />)");
    EXPECT_EQ(Written(CQanhPackage(L"a_1", kVersion, TRUE, FALSE)),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" IsInstalled="0" />)");
    EXPECT_EQ(Written(CQanhPackage(L"a_1", kVersion, -1, 5)),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" />)");
}

TEST(PackageToXmlNode, WritesNothingWhenNeitherInstalledNorReserved)
{
    test::WriterProbe writer;
    CQanhPackage package(L"a_1", kVersion, FALSE, FALSE);
    RecordProbe::Events events;
    EXPECT_EQ(package.AddApplication(std::make_unique<RecordProbe>(L"a", &events)), S_OK);
    EXPECT_EQ(package.ToXmlNode(&writer), S_OK);
    EXPECT_THAT(writer.calls, IsEmpty());
    EXPECT_THAT(events, IsEmpty());
}

TEST(PackageToXmlNode, WritesEveryApplicationInOrder)
{
    CQanhPackage package(L"a_1", kVersion, TRUE, TRUE);
    EXPECT_EQ(package.AddApplication(L"b", L"B"), S_OK);
    EXPECT_EQ(package.AddApplication(L"a", nullptr), S_OK);
    EXPECT_EQ(package.AddApplication(nullptr, nullptr), S_OK);
    EXPECT_EQ(Written(package),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1">)"
              R"(<MetroApp DisplayName="b" ShortName="B" /><MetroApp DisplayName="a" /><MetroApp />)"
              R"(</Package>)");
}

TEST(PackageToXmlNode, StopsAtTheFirstApplicationThatFailsAndEndsTheElement)
{
    RecordProbe::Events events;
    CQanhPackage package(L"a_1", kVersion, FALSE, TRUE);
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        auto probe = std::make_unique<RecordProbe>(name, &events);
        probe->result = *name == L'b' ? E_ABORT : S_FALSE; // a record that writes nothing is no failure
        EXPECT_EQ(package.AddApplication(std::move(probe)), S_OK);
    }
    test::WriterProbe writer;
    EXPECT_EQ(package.ToXmlNode(&writer), E_ABORT);
    EXPECT_THAT(events, ElementsAre(L"written a", L"written b"));
    EXPECT_THAT(writer.calls,
                ElementsAre(L"start Package", L"PackageFamilyName=a_1", L"Version=1.2.4.3", L"end"));
    package.DeleteAllApp();
}

TEST(PackageToXmlNode, WritesNoApplicationBehindAFailingAttribute)
{
    for (const std::size_t failing : {1u, 2u, 3u, 4u}) {
        RecordProbe::Events events;
        CQanhPackage package(L"a_1", kVersion, TRUE, FALSE);
        EXPECT_EQ(package.AddApplication(std::make_unique<RecordProbe>(L"a", &events)), S_OK);
        test::WriterProbe writer;
        writer.failingCall = failing;
        EXPECT_EQ(package.ToXmlNode(&writer), writer.failure);
        EXPECT_THAT(events, IsEmpty());
        EXPECT_EQ(writer.calls.size(), failing + 2);
        EXPECT_EQ(writer.calls.back(), L"end");
        package.DeleteAllApp();
    }
}

TEST(PackageToXmlNode, ReturnsTheFailureToStartTheElement)
{
    test::WriterProbe writer;
    writer.failingCall = 0;
    EXPECT_EQ(CQanhPackage(L"a_1", kVersion, FALSE, TRUE).ToXmlNode(&writer), writer.failure);
    EXPECT_THAT(writer.calls, ElementsAre(L"start Package"));
}

TEST(PackageToXmlNode, LogsItsResult)
{
    CQanhPackage package(L"a_1", kVersion, FALSE, TRUE);
    EXPECT_EQ(package.AddApplication(L"a", nullptr), S_OK);
    test::WriterProbe writer;
    const test::LogCapture log;
    EXPECT_EQ(package.ToXmlNode(nullptr), E_POINTER);
    EXPECT_EQ(package.ToXmlNode(&writer), S_OK);
    package.IsInstalled = FALSE;
    EXPECT_EQ(package.ToXmlNode(&writer), S_OK);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackage::ToXmlNode IN", "CQanhPackage::ToXmlNode OUT(0x80004003)",
                            "CQanhPackage::ToXmlNode IN", "CQanhMetroApp::ToXmlNode IN",
                            "CQanhMetroApp::ToXmlNode OUT(0x00000000)",
                            "CQanhPackage::ToXmlNode OUT(0x00000000)", "CQanhPackage::ToXmlNode IN",
                            "CQanhPackage::ToXmlNode OUT(0x00000000)"));
}

struct PackageRead
{
    HRESULT result = E_UNEXPECTED;
    std::unique_ptr<CQanhPackage> package;
    std::wstring next; // the element that the reader stands on afterwards

    [[nodiscard]] std::string Text() const { return package ? Written(*package) : "nothing was read"; }
};

// Reads the first package of the document.
PackageRead Read(std::string_view text, std::size_t appLimit = kListSizeLimit)
{
    const test::XmlSource source(text, L"Package");
    PackageRead read;
    read.result = CQanhPackage::FromXmlNode(source.Reader(), &read.package, appLimit);
    read.next = source.Name();
    return read;
}

TEST(PackageFromXmlNode, ReadsAttributesAndApplications)
{
    const PackageRead read =
        Read(R"(<r><Package PackageFamilyName="a_1" Version="1.2.3.4" NeedReserve="1" IsInstalled="0">)"
             R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d"/>)"
             R"(<MetroApp DisplayName="e"/></Package></r>)");
    EXPECT_EQ(read.result, S_OK);
    ASSERT_NE(read.package, nullptr);
    EXPECT_STREQ(read.package->PackageFamilyName.c_str(), L"a_1");
    EXPECT_TRUE(read.package->FullName.empty());
    EXPECT_TRUE(read.package->Name.empty());
    EXPECT_EQ(read.package->NeedReserve, TRUE);
    EXPECT_EQ(read.package->IsInstalled, FALSE);
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" IsInstalled="0">)"
              R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)"
              R"(<MetroApp DisplayName="e" /></Package>)");
}

TEST(PackageFromXmlNode, MakesADefaultRecordOfAnElementWithoutAttributes)
{
    for (const char* text :
         {"<Package/>", "<Package></Package>", R"(<Package Unknown="1" Versions="1.2.3.4"/>)"}) {
        const PackageRead read = Read(text);
        ASSERT_NE(read.package, nullptr);
        EXPECT_TRUE(read.package->PackageFamilyName.empty());
        EXPECT_EQ(read.package->Version, RecordVersion());
        EXPECT_EQ(read.package->NeedReserve, FALSE);
        EXPECT_EQ(read.package->IsInstalled, TRUE);
        EXPECT_EQ(read.package->Apps().Size(), 0u);
    }
}

struct VersionText
{
    const char* text;
    RecordVersion version;
};

TEST(PackageFromXmlNode, ReadsTheVersionsNumbersIntoThePartsAsTheyAreHeld)
{
    const VersionText versions[] = {
        {"1.2.3.4", {1, 2, 3, 4}}, // revision 3, build 4: the order in which they are held
        {"6.2.9200.16384", {6, 2, 9200, 16384}},
        {"65535.65535.65535.65535", {65535, 65535, 65535, 65535}},
        {"1.2.3", {1, 2, 3, 0}},
        {"1.2", {1, 2, 0, 0}},
        {"1", {1, 0, 0, 0}},
        {"1.", {1, 0, 0, 0}},
        {"", {0, 0, 0, 0}},
        {"yes", {0, 0, 0, 0}},
        {"1.x.3.4", {1, 0, 0, 0}},
        {"1.2.3.4.5", {1, 2, 3, 4}},
        {"1.2.3.4beta", {1, 2, 3, 4}},
        {"1,2,3,4", {1, 0, 0, 0}},
        {" 1.2.3.4", {1, 2, 3, 4}},
        {"007.08.09.010", {7, 8, 9, 10}},
        {"1. 2.\t3. 4 ", {1, 2, 3, 4}},
        {"1 .2.3.4", {1, 0, 0, 0}},
        {".1.2.3", {0, 0, 0, 0}},
        {"1..3.4", {1, 0, 0, 0}},
        {"+1.+2.-0.-3", {1, 2, 0, 65533}},
        {"99999.65536.65537.131071", {34463, 0, 1, 65535}},
        {"0x10.1.2.3", {0, 0, 0, 0}},
    };
    for (const VersionText& version : versions) {
        SCOPED_TRACE(version.text);
        const PackageRead read = Read(std::string("<Package Version=\"") + version.text + "\"/>");
        ASSERT_NE(read.package, nullptr);
        EXPECT_EQ(read.package->Version, version.version);
    }
}

struct FlagValue
{
    const char* value;
    BOOL needReserve;
    BOOL isInstalled;
};

TEST(PackageFromXmlNode, ReadsFlagsAsNumbersWithAPresetForWhatIsNone)
{
    const FlagValue values[] = {
        {"1", TRUE, TRUE},  {"0", FALSE, FALSE},  {"-1", TRUE, TRUE},
        {" 7", TRUE, TRUE}, {"7abc", TRUE, TRUE}, {"yes", TRUE, TRUE},
        {"", TRUE, TRUE},   {"00", FALSE, FALSE}, {"no", TRUE, TRUE},
    };
    for (const FlagValue& flag : values) {
        SCOPED_TRACE(flag.value);
        const std::string value = flag.value;
        const PackageRead read =
            Read("<Package NeedReserve=\"" + value + "\" IsInstalled=\"" + value + "\"/>");
        ASSERT_NE(read.package, nullptr);
        EXPECT_EQ(read.package->NeedReserve, flag.needReserve);
        EXPECT_EQ(read.package->IsInstalled, flag.isInstalled);
    }
}

TEST(PackageFromXmlNode, TakesAnyOrderAnyLetterCaseAndTheLastOfARepeatedAttribute)
{
    const PackageRead read = Read(
        R"(<Package ISINSTALLED="0" version="1.2.3.4" PackageFamily="x" packagefamilyname="b" Ver="9" needreserve="0" )"
        R"(VERSION="5.6" NeedReserve="1" PACKAGEFAMILYNAME="a_1" PackageFamilyNames="x" FullName="x"/>)");
    // The second version starts anew.
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="a_1" Version="5.6.0.0" NeedReserve="1" IsInstalled="0" />)");
}

TEST(PackageFromXmlNode, EndsAtItsEndTag)
{
    const PackageRead read =
        Read("<r><Package><MetroApp DisplayName='a'/></Package><MetroApp DisplayName='b'/></r>");
    EXPECT_EQ(read.result, S_OK);
    EXPECT_EQ(read.package->Apps().Size(), 1u);
    EXPECT_EQ(read.next, L"");
}

TEST(PackageFromXmlNode, EndsAtTheNextElementThatIsNotDeeper)
{
    const PackageRead beside = Read("<r><Package/><Package><MetroApp/></Package></r>");
    EXPECT_EQ(beside.result, S_OK);
    EXPECT_EQ(beside.package->Apps().Size(), 0u);
    EXPECT_EQ(beside.next, L"Package");
    const PackageRead app = Read("<r><Package/><MetroApp DisplayName='a'/></r>");
    EXPECT_EQ(app.package->Apps().Size(), 0u);
    EXPECT_EQ(app.next, L"MetroApp");
}

TEST(PackageFromXmlNode, EndsAtTheEndTagOfWhatItStandsIn)
{
    const PackageRead read = Read("<r><s><Package/></s><MetroApp DisplayName='a'/></r>");
    EXPECT_EQ(read.result, S_OK);
    EXPECT_EQ(read.package->Apps().Size(), 0u);
}

TEST(PackageFromXmlNode, EndsAtTheEndOfTheDocument)
{
    const PackageRead read = Read("<Package/>");
    EXPECT_EQ(read.result, S_FALSE);
    EXPECT_NE(read.package, nullptr);
}

TEST(PackageFromXmlNode, FindsApplicationsAtAnyDepth)
{
    const PackageRead read =
        Read("<r><Package><x><y><MetroApp DisplayName='a'/></y></x><MetroApp DisplayName='b'>"
             "<MetroApp DisplayName='c'/><z/></MetroApp><metroapp DISPLAYNAME='d'/>"
             "<MetroApps DisplayName='x'/><MetroAp DisplayName='x'/><DesktopApp DisplayName='x'/>"
             "<Package PackageFamilyName='inner'><MetroApp DisplayName='e'/></Package>"
             "<MetroApp DisplayName='f'></MetroApp></Package></r>");
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="" Version="0.0.0.0"><MetroApp DisplayName="a" />)"
              R"(<MetroApp DisplayName="b" /><MetroApp DisplayName="c" /><MetroApp DisplayName="d" />)"
              R"(<MetroApp DisplayName="e" /><MetroApp DisplayName="f" /></Package>)");
}

TEST(PackageFromXmlNode, PassesOverTextCommentsAndInstructions)
{
    const PackageRead read =
        Read("<r><Package>text<!-- <MetroApp DisplayName='x'/> --><?MetroApp x?>"
             "<![CDATA[<MetroApp/>]]><MetroApp DisplayName='a'>text</MetroApp></Package></r>");
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="" Version="0.0.0.0"><MetroApp DisplayName="a" /></Package>)");
}

TEST(PackageFromXmlNode, KeepsWhatItReadWhenTheDocumentBreaks)
{
    const PackageRead read =
        Read("<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/><MetroApp </r>");
    EXPECT_TRUE(FAILED(read.result));
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="a_1" Version="0.0.0.0"><MetroApp DisplayName="a" />)"
              R"(</Package>)");
}

TEST(PackageFromXmlNode, SkipsAnApplicationThatCannotBeReadAndReadsOn)
{
    const test::XmlSource source("<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/>"
                                 "<MetroApp DisplayName='b'/><MetroApp DisplayName='c'/></Package></r>",
                                 L"Package");
    test::ReaderProbe reader(source.Reader());
    reader.Answer("MoveToFirstAttribute", 2, E_ABORT); // 0 is the package, 1 its first application
    std::unique_ptr<CQanhPackage> package;
    EXPECT_EQ(CQanhPackage::FromXmlNode(&reader, &package), S_OK);
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(Written(*package),
              R"(<Package PackageFamilyName="a_1" Version="0.0.0.0"><MetroApp DisplayName="a" />)"
              R"(<MetroApp DisplayName="c" /></Package>)");
}

TEST(PackageFromXmlNode, PassesTheReadersFailureAtItsAttributesOn)
{
    const test::XmlSource source("<Package PackageFamilyName='a_1'/>", L"Package");
    test::ReaderProbe reader(source.Reader());
    reader.Answer("MoveToFirstAttribute", 0, E_ABORT);
    std::unique_ptr<CQanhPackage> package;
    EXPECT_EQ(CQanhPackage::FromXmlNode(&reader, &package), E_ABORT);
    EXPECT_EQ(package, nullptr);
}

TEST(PackageFromXmlNode, ReadsOnWhenTheListOfApplicationsIsFull)
{
    const test::LogCapture log;
    const PackageRead read =
        Read("<r><Package><MetroApp DisplayName='a'/><MetroApp DisplayName='b'/></Package></r>", 1);
    EXPECT_EQ(read.result, S_OK);
    EXPECT_EQ(read.package->Apps().Size(), 1u);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackage::FromXmlNode IN", "CQanhMetroApp::FromXmlNode IN",
                            "CQanhMetroApp::FromXmlNode OUT(0x00000000)", "CQanhPackage::AddApplication IN",
                            "CQanhPackage::AddApplication OUT(0x00000000)", "CQanhMetroApp::FromXmlNode IN",
                            "CQanhMetroApp::FromXmlNode OUT(0x00000000)", "CQanhPackage::AddApplication IN",
                            "CQanhPackage::AddApplication OUT(0x8007000E)",
                            "CQanhPackage::FromXmlNode OUT(0x00000000)"));
}

TEST(PackageFromXmlNode, RefusesNull)
{
    const test::XmlSource source("<Package/>", L"Package");
    std::unique_ptr<CQanhPackage> package;
    const test::LogCapture log;
    EXPECT_EQ(CQanhPackage::FromXmlNode(nullptr, &package), E_POINTER);
    EXPECT_EQ(CQanhPackage::FromXmlNode(source.Reader(), nullptr), E_POINTER);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(CQanhPackage::FromXmlNode(source.Reader(), &package), S_FALSE);
    EXPECT_THAT(log.Lines(),
                ElementsAre("CQanhPackage::FromXmlNode IN", "CQanhPackage::FromXmlNode OUT(0x80004003)",
                            "CQanhPackage::FromXmlNode IN", "CQanhPackage::FromXmlNode OUT(0x80004003)",
                            "CQanhPackage::FromXmlNode IN", "CQanhPackage::FromXmlNode OUT(0x00000001)"));
}

TEST(PackageFromXmlNode, SurvivesThatMemoryRunsOut)
{
    std::size_t withoutPackage = 0;
    std::size_t withoutApp = 0;
    const std::size_t failures = test::ForEachFailingAllocation([&](std::size_t index) {
        const test::XmlSource source(
            "<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/></Package></r>", L"Package");
        HRESULT result = E_UNEXPECTED;
        bool made = false;
        bool failed = false;
        std::size_t apps = 0;
        std::size_t left = 1;
        {
            const test::AllocationWatch watch(index);
            std::unique_ptr<CQanhPackage> package;
            result = CQanhPackage::FromXmlNode(source.Reader(), &package);
            made = package != nullptr;
            apps = made ? package->Apps().Size() : 0;
            package.reset();
            failed = watch.Failed();
            left = watch.Live();
        }
        EXPECT_EQ(result, made ? S_OK : E_OUTOFMEMORY);
        EXPECT_EQ(apps == 1, !failed);
        EXPECT_EQ(left, 0u);
        withoutPackage += !made;
        withoutApp += made && failed;
        return failed;
    });
    EXPECT_EQ(failures, withoutPackage + withoutApp);
    EXPECT_GE(withoutPackage, 2u);
    EXPECT_GE(withoutApp, 3u);
}

} // namespace
