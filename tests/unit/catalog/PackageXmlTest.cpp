// How a package and its applications are written to the catalogue file and read from it.

#include "catalog/Package.h"

#include "support/ReaderProbe.h"
#include "unit/catalog/Records.h"
#include "unit/catalog/WriterProbe.h"

namespace {

using namespace test;

constexpr RecordVersion kVersion{1, 2, 3, 4};

// A package of this version is written like this.
void ExpectWritten(const RecordVersion& version, BOOL needReserve, BOOL isInstalled,
                   const std::string& attributes)
{
    EXPECT_EQ(Written(CQanhPackage(L"a_1", version, needReserve, isInstalled)),
              "<Package PackageFamilyName=\"a_1\" " + attributes + " />");
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
    ExpectWritten(version, FALSE, TRUE, R"(Version="6.2.9200.16384")");
    ExpectWritten({65535, 65535, 65535, 65535}, FALSE, TRUE, R"(Version="65535.65535.65535.65535")");
}

TEST(PackageToXmlNode, WritesFlagsThatDifferFromTheirDefault)
{
    ExpectWritten(kVersion, TRUE, TRUE, R"(Version="1.2.4.3" NeedReserve="1")");
    ExpectWritten(kVersion, TRUE, FALSE, R"(Version="1.2.4.3" NeedReserve="1" IsInstalled="0")");
    ExpectWritten(kVersion, -1, 5, R"(Version="1.2.4.3" NeedReserve="1")");
}

TEST(PackageToXmlNode, WritesNothingWhenNeitherInstalledNorReserved)
{
    WriterProbe writer;
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
    WriterProbe writer;
    EXPECT_EQ(package.ToXmlNode(&writer), E_ABORT);
    EXPECT_THAT(events, ElementsAre(L"written a", L"written b"));
    EXPECT_THAT(writer.calls,
                ElementsAre(L"start Package", L"PackageFamilyName=a_1", L"Version=1.2.4.3", L"end"));
    package.DeleteAllApp();
}

TEST(PackageToXmlNode, WritesNoApplicationBehindAFailure)
{
    for (const std::size_t failing : {0u, 1u, 2u, 3u, 4u}) {
        RecordProbe::Events events;
        CQanhPackage package(L"a_1", kVersion, TRUE, FALSE);
        EXPECT_EQ(package.AddApplication(std::make_unique<RecordProbe>(L"a", &events)), S_OK);
        WriterProbe writer;
        writer.failingCall = failing;
        EXPECT_EQ(package.ToXmlNode(&writer), writer.failure);
        EXPECT_THAT(events, IsEmpty());
        // An element that was started is ended.
        EXPECT_EQ(writer.calls.size(), failing == 0 ? 1u : failing + 2);
        EXPECT_EQ(writer.calls.back(), failing == 0 ? L"start Package" : L"end");
        package.DeleteAllApp();
    }
}

TEST(PackageToXmlNode, LogsItsResult)
{
    CQanhPackage package(L"a_1", kVersion, FALSE, TRUE);
    EXPECT_EQ(package.AddApplication(L"a", nullptr), S_OK);
    WriterProbe writer;
    const LogCapture log;
    EXPECT_EQ(package.ToXmlNode(nullptr), E_POINTER);
    EXPECT_EQ(package.ToXmlNode(&writer), S_OK);
    package.IsInstalled = FALSE;
    EXPECT_EQ(package.ToXmlNode(&writer), S_OK);
    EXPECT_EQ(log.Lines(), Call("CQanhPackage::ToXmlNode", "(0x80004003)") +
                               Call("CQanhPackage::ToXmlNode", "(0x00000000)",
                                    Call("CQanhMetroApp::ToXmlNode", "(0x00000000)")) +
                               Call("CQanhPackage::ToXmlNode", "(0x00000000)"));
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
    const XmlSource source(text, L"Package");
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
    EXPECT_TRUE(read.package->FullName.empty());
    EXPECT_TRUE(read.package->Name.empty());
    EXPECT_EQ(read.Text(),
              R"(<Package PackageFamilyName="a_1" Version="1.2.4.3" NeedReserve="1" IsInstalled="0">)"
              R"(<MetroApp DisplayName="a" ShortName="b" RubyDisplayName="c" RubyShortName="d" />)"
              R"(<MetroApp DisplayName="e" /></Package>)");
}

TEST(PackageFromXmlNode, MakesADefaultRecordOfAnElementWithoutAttributes)
{
    for (const char* text :
         {"<Package/>", "<Package></Package>", R"(<Package Unknown="1" Versions="1.2.3.4"/>)"}) {
        EXPECT_EQ(Read(text).Text(), R"(<Package PackageFamilyName="" Version="0.0.0.0" />)");
    }
}

void ExpectVersion(const std::string& text, const RecordVersion& version)
{
    SCOPED_TRACE(text);
    const PackageRead read = Read("<Package Version=\"" + text + "\"/>");
    ASSERT_NE(read.package, nullptr);
    EXPECT_EQ(read.package->Version, version);
}

TEST(PackageFromXmlNode, ReadsTheVersionsNumbersIntoThePartsAsTheyAreHeld)
{
    ExpectVersion("1.2.3.4", {1, 2, 3, 4}); // revision 3, build 4: the order in which they are held
    ExpectVersion("6.2.9200.16384", {6, 2, 9200, 16384});
    ExpectVersion("65535.65535.65535.65535", {65535, 65535, 65535, 65535});
    ExpectVersion("1.2.3", {1, 2, 3, 0});
    ExpectVersion("1.2", {1, 2, 0, 0});
    ExpectVersion("1", {1, 0, 0, 0});
    ExpectVersion("1.", {1, 0, 0, 0});
    ExpectVersion("", {0, 0, 0, 0});
    ExpectVersion("yes", {0, 0, 0, 0});
    ExpectVersion("1.x.3.4", {1, 0, 0, 0});
    ExpectVersion("1.2.3.4.5", {1, 2, 3, 4});
    ExpectVersion("1.2.3.4beta", {1, 2, 3, 4});
    ExpectVersion("1,2,3,4", {1, 0, 0, 0});
    ExpectVersion(" 1.2.3.4", {1, 2, 3, 4});
    ExpectVersion("007.08.09.010", {7, 8, 9, 10});
    ExpectVersion("1. 2.\t3. 4 ", {1, 2, 3, 4});
    ExpectVersion("1 .2.3.4", {1, 0, 0, 0});
    ExpectVersion(".1.2.3", {0, 0, 0, 0});
    ExpectVersion("1..3.4", {1, 0, 0, 0});
    ExpectVersion("+1.+2.-0.-3", {1, 2, 0, 65533});
    ExpectVersion("99999.65536.65537.131071", {34463, 0, 1, 65535});
    ExpectVersion("0x10.1.2.3", {0, 0, 0, 0});
}

TEST(PackageFromXmlNode, ReadsFlagsAsNumbersWithAPresetForWhatIsNone)
{
    const auto expectFlags = [](const std::string& value, BOOL flag) {
        SCOPED_TRACE(value);
        const PackageRead read =
            Read("<Package NeedReserve=\"" + value + "\" IsInstalled=\"" + value + "\"/>");
        ASSERT_NE(read.package, nullptr);
        EXPECT_EQ(read.package->NeedReserve, flag);
        EXPECT_EQ(read.package->IsInstalled, flag);
    };
    expectFlags("2", TRUE);
    expectFlags("0", FALSE);
    expectFlags("no", TRUE);
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

// The first package of the document has these applications; the reader stands on that element then.
void ExpectApps(std::string_view document, const std::vector<std::wstring>& displayNames,
                const wchar_t* next = L"", HRESULT result = S_OK)
{
    SCOPED_TRACE(document);
    const PackageRead read = Read(document);
    EXPECT_EQ(read.result, result);
    EXPECT_EQ(read.next, next);
    ASSERT_NE(read.package, nullptr);
    EXPECT_EQ(DisplayNames(read.package->Apps()), displayNames);
}

TEST(PackageFromXmlNode, EndsAtItsEndTagOrAtTheNextElementThatIsNotDeeper)
{
    ExpectApps("<r><Package><MetroApp DisplayName='a'/></Package><MetroApp DisplayName='b'/></r>", {L"a"});
    ExpectApps("<r><Package/><Package><MetroApp/></Package></r>", {}, L"Package");
    ExpectApps("<r><Package/><MetroApp DisplayName='a'/></r>", {}, L"MetroApp");
    // The end tag of what it stands in.
    ExpectApps("<r><s><Package/></s><MetroApp DisplayName='a'/></r>", {});
    // The end of the document.
    ExpectApps("<Package/>", {}, L"", S_FALSE);
}

TEST(PackageFromXmlNode, FindsApplicationsAtAnyDepth)
{
    ExpectApps("<r><Package><x><y><MetroApp DisplayName='a'/></y></x><MetroApp DisplayName='b'>"
               "<MetroApp DisplayName='c'/><z/></MetroApp><metroapp DISPLAYNAME='d'/>"
               "<MetroApps DisplayName='x'/><MetroAp DisplayName='x'/><DesktopApp DisplayName='x'/>"
               "<Package PackageFamilyName='inner'><MetroApp DisplayName='e'/></Package>"
               "<MetroApp DisplayName='f'></MetroApp></Package></r>",
               {L"a", L"b", L"c", L"d", L"e", L"f"});
}

TEST(PackageFromXmlNode, PassesOverTextCommentsAndInstructions)
{
    ExpectApps("<r><Package>text<!-- <MetroApp DisplayName='x'/> --><?MetroApp x?>"
               "<![CDATA[<MetroApp/>]]><MetroApp DisplayName='a'>text</MetroApp></Package></r>",
               {L"a"});
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
    const XmlSource source("<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/>"
                           "<MetroApp DisplayName='b'/><MetroApp DisplayName='c'/></Package></r>",
                           L"Package");
    ReaderProbe reader(source.Reader());
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
    const XmlSource source("<Package PackageFamilyName='a_1'/>", L"Package");
    ReaderProbe reader(source.Reader());
    reader.Answer("MoveToFirstAttribute", 0, E_ABORT);
    std::unique_ptr<CQanhPackage> package;
    EXPECT_EQ(CQanhPackage::FromXmlNode(&reader, &package), E_ABORT);
    EXPECT_EQ(package, nullptr);
}

TEST(PackageFromXmlNode, ReadsOnWhenTheListOfApplicationsIsFull)
{
    const LogCapture log;
    const PackageRead read =
        Read("<r><Package><MetroApp DisplayName='a'/><MetroApp DisplayName='b'/></Package></r>", 1);
    EXPECT_EQ(read.result, S_OK);
    EXPECT_EQ(read.package->Apps().Size(), 1u);
    const auto app = Call("CQanhMetroApp::FromXmlNode", "(0x00000000)");
    EXPECT_EQ(log.Lines(), Call("CQanhPackage::FromXmlNode", "(0x00000000)",
                                app + Call("CQanhPackage::AddApplication", "(0x00000000)") + app +
                                    Call("CQanhPackage::AddApplication", "(0x8007000E)")));
}

TEST(PackageFromXmlNode, RefusesNull)
{
    const XmlSource source("<Package/>", L"Package");
    std::unique_ptr<CQanhPackage> package;
    const LogCapture log;
    EXPECT_EQ(CQanhPackage::FromXmlNode(nullptr, &package), E_POINTER);
    EXPECT_EQ(CQanhPackage::FromXmlNode(source.Reader(), nullptr), E_POINTER);
    EXPECT_EQ(package, nullptr);
    EXPECT_EQ(CQanhPackage::FromXmlNode(source.Reader(), &package), S_FALSE);
    const auto refused = Call("CQanhPackage::FromXmlNode", "(0x80004003)");
    EXPECT_EQ(log.Lines(), refused + refused + Call("CQanhPackage::FromXmlNode", "(0x00000001)"));
}

TEST(PackageFromXmlNode, SurvivesThatMemoryRunsOut)
{
    std::size_t withoutPackage = 0;
    std::size_t withoutApp = 0;
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        const XmlSource source(
            "<r><Package PackageFamilyName='a_1'><MetroApp DisplayName='a'/></Package></r>", L"Package");
        bool made = false;
        std::size_t apps = 0;
        const Attempt attempt = TryWithFailingAllocation(index, [&] {
            std::unique_ptr<CQanhPackage> package;
            const HRESULT result = CQanhPackage::FromXmlNode(source.Reader(), &package);
            made = package != nullptr;
            apps = made ? package->Apps().Size() : 0;
            return result;
        });
        EXPECT_EQ(attempt.result, made ? S_OK : E_OUTOFMEMORY);
        EXPECT_EQ(apps == 1, !attempt.failed);
        EXPECT_EQ(attempt.left, 0u);
        withoutPackage += !made;
        withoutApp += made && attempt.failed;
        return attempt.failed;
    });
    EXPECT_EQ(failures, withoutPackage + withoutApp);
    EXPECT_GE(withoutPackage, 2u);
    EXPECT_GE(withoutApp, 3u);
}

} // namespace
