// The manifest reader that walks the XML: which names it takes, and from where.

#include "unit/manifest/ManifestFile.h"
#include "unit/manifest/XmlInputs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <thread>

namespace {

using namespace manifest_test;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

using ManifestReader = ManifestFile;

TEST_F(ManifestReader, TakesBothNamesOfEachApplicationInLowerCase)
{
    EXPECT_EQ(Parse(Manifest(Application("Weather", "W") + Application("Sports News", "SPORTS"))), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"weather", L"w"), Pair(L"sports news", L"sports")));
    EXPECT_THAT(m_resources.requests, IsEmpty());
    EXPECT_TRUE(IsClosed());
}

TEST_F(ManifestReader, LowersLatinLettersOnly)
{
    // The e with an acute accent, two Cyrillic letters, and a full-width A, all upper case.
    EXPECT_EQ(Parse(Manifest(Application("\xC3\x89TE \xD0\x96\xD0\xAF \xEF\xBC\xA1", "\xE3\x83\xA1 X"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"\u00c9te \u0416\u042f \uff21", L"\u30e1 x")));
}

TEST_F(ManifestReader, AddsToWhatThePackageHasAlready)
{
    EXPECT_EQ(m_package.AddApplication(L"Old", L"O"), S_OK);
    EXPECT_EQ(Parse(Manifest(Application("Weather", "W"))), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"Old", L"O"), Pair(L"weather", L"w")));
}

TEST_F(ManifestReader, AddsDuplicatesTwice)
{
    Parse(Manifest(Application("Weather", "W") + Application("Weather", "W")));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"weather", L"w"), Pair(L"weather", L"w")));
}

TEST_F(ManifestReader, WholeLogOfOneApplication)
{
    Write(Manifest(Application("Weather", "W")));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package), S_FALSE);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(VisualElements) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::GetAttributeValueByName(DisplayName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(DefaultTile) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::GetAttributeValueByName(ShortName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                                         "CQanhPackage::AddApplication(weather, w) IN",
                                         "CQanhPackage::AddApplication OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)"));
}

TEST_F(ManifestReader, WholeLogOfADocumentWithoutTheList)
{
    // The applications are looked for all the same, behind the end of the document.
    Write("<Package/>");
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package), S_FALSE);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)"));
}

TEST_F(ManifestReader, WholeLogOfAnApplicationWithNothing)
{
    // Every step is taken, also where the element of the step before was not found.
    Write("<Applications><Application/></Applications>");
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package), S_FALSE);
    EXPECT_THAT(log.Lines(), ElementsAre("CQanhManifestReader::GetAppNameUsingXmlParser IN",
                                         "CQanhManifestReader::MoveToElementByName(Applications) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(VisualElements) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAttributeValueByName(DisplayName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000001)",
                                         "CQanhManifestReader::MoveToElementByName(DefaultTile) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAttributeValueByName(ShortName) IN",
                                         "CQanhManifestReader::GetAttributeValueByName OUT(0x00000001)",
                                         "CQanhPackage::AddApplication(, ) IN",
                                         "CQanhPackage::AddApplication OUT(0x00000000)",
                                         "CQanhManifestReader::MoveToElementByName(Application) IN",
                                         "CQanhManifestReader::MoveToElementByName OUT(0x00000001)",
                                         "CQanhManifestReader::GetAppNameUsingXmlParser OUT(0x00000001)"));
}

TEST_F(ManifestReader, OpensTheFileForReadingOnly)
{
    Write(Manifest(Application("A", "B")));
    const XmlInputs inputs;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package), S_FALSE);
    EXPECT_THAT(inputs.calls,
                ElementsAre(L"CreateXmlReader(null)", L"SHCreateStreamOnFileW(" + Path() + L", 0)"));
}

TEST_F(ManifestReader, ReadsOnManyThreadsAtOnce)
{
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kTimes = 50;
    std::vector<std::vector<Names>> names(kThreads);
    std::vector<std::wstring> paths;
    for (std::size_t index = 0; index < kThreads; ++index) {
        const std::string name(1 + index * 100, static_cast<char>('A' + index));
        paths.push_back(m_folder / (std::to_wstring(index) + L".xml"));
        test::WriteFileBytes(paths[index], Manifest(Application(name, name) + Application(name, name)));
    }
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < kThreads; ++index) {
        threads.emplace_back([&, index] {
            CQanhPackage package(L"N", L"F", L"N", {});
            for (std::size_t time = 0; time < kTimes; ++time) {
                EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(paths[index].c_str(), &package),
                          S_FALSE);
            }
            names[index] = NamesOf(package);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t index = 0; index < kThreads; ++index) {
        const std::wstring name(1 + index * 100, static_cast<wchar_t>(L'a' + index));
        EXPECT_EQ(names[index], std::vector<Names>(2 * kTimes, Names(name, name))) << index;
    }
}

// What is missing is looked for in the rest of the document.

TEST_F(ManifestReader, AMissingTileTakesTheNextOneAndItsApplicationWithIt)
{
    EXPECT_EQ(Parse(Manifest("<Application><VisualElements DisplayName=\"A\"/></Application>" +
                             Application("B", "b-tile") + Application("C", "c-tile"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b-tile"), Pair(L"c", L"c-tile")));
}

TEST_F(ManifestReader, ATileBeforeTheVisualElementsIsNotSeen)
{
    EXPECT_EQ(Parse(Manifest("<Application><DefaultTile ShortName=\"a-tile\"/>"
                             "<VisualElements DisplayName=\"A\"/></Application>" +
                             Application("B", "b-tile"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b-tile")));
}

TEST_F(ManifestReader, ATileBehindTheVisualElementsIsTaken)
{
    Parse(Manifest("<Application><VisualElements DisplayName=\"A\"/><DefaultTile ShortName=\"a-tile\"/>"
                   "</Application>"));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a-tile")));
}

TEST_F(ManifestReader, AMissingTileAtTheEndOfTheDocumentLeavesTheShortNameEmpty)
{
    EXPECT_EQ(Parse(Manifest(Application("A", "a-tile") +
                             "<Application><VisualElements DisplayName=\"B\"/></Application>")),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a-tile"), Pair(L"b", L"")));
}

TEST_F(ManifestReader, ATileOutsideOfAnyApplicationIsTakenToo)
{
    EXPECT_EQ(Parse("<Package><Applications><Application><VisualElements DisplayName=\"A\"/></Application>"
                    "</Applications><Extensions><DefaultTile ShortName=\"far\"/></Extensions></Package>"),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"far")));
}

TEST_F(ManifestReader, OnlyTheFirstTileCounts)
{
    Parse(Manifest("<Application><VisualElements DisplayName=\"A\"><DefaultTile ShortName=\"1\"/>"
                   "<DefaultTile ShortName=\"2\"/></VisualElements></Application>"));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"1")));
}

TEST_F(ManifestReader, MissingVisualElementsAreTakenFromTheNextApplication)
{
    EXPECT_EQ(
        Parse(Manifest("<Application Id=\"A\"/>" + Application("B", "b-tile") + Application("C", "c-tile"))),
        S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"b", L"b-tile"), Pair(L"c", L"c-tile")));
}

TEST_F(ManifestReader, AnApplicationWithNothingAtTheEndOfTheDocumentHasEmptyNames)
{
    EXPECT_EQ(Parse(Manifest(Application("A", "a-tile") + "<Application Id=\"B\"/>")), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a-tile"), Pair(L"", L"")));
}

TEST_F(ManifestReader, AMissingDisplayNameIsEmptyAndTheWalkGoesOn)
{
    EXPECT_EQ(Parse(Manifest("<Application><VisualElements Logo=\"l\"><DefaultTile ShortName=\"A\"/>"
                             "</VisualElements></Application>" +
                             Application("B", "b-tile"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"", L"a"), Pair(L"b", L"b-tile")));
}

TEST_F(ManifestReader, AMissingShortNameIsEmptyAndTheWalkGoesOn)
{
    EXPECT_EQ(Parse(Manifest("<Application><VisualElements DisplayName=\"A\"><DefaultTile/>"
                             "</VisualElements></Application>" +
                             Application("B", "b-tile"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L""), Pair(L"b", L"b-tile")));
}

TEST_F(ManifestReader, EmptyNamesAreNames)
{
    EXPECT_EQ(Parse(Manifest(Application("", "") + Application("B", "b-tile"))), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"", L""), Pair(L"b", L"b-tile")));
}

TEST_F(ManifestReader, ApplicationsBehindTheEndOfTheirListAreRead)
{
    EXPECT_EQ(Parse("<Package><Applications/><Extras>" + Application("A", "a") + "</Extras></Package>"),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a")));
}

TEST_F(ManifestReader, ApplicationsBeforeTheirListAreNot)
{
    EXPECT_EQ(Parse("<Package><Extras>" + Application("A", "a") + "</Extras><Applications>" +
                    Application("B", "b") + "</Applications></Package>"),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"b", L"b")));
}

TEST_F(ManifestReader, ADocumentWithoutTheListHasNoApplications)
{
    EXPECT_EQ(Parse("<Package>" + Application("A", "a") + "</Package>"), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

TEST_F(ManifestReader, AnEmptyListHasNoApplications)
{
    EXPECT_EQ(Parse(Manifest("")), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), IsEmpty());
}

TEST_F(ManifestReader, TheListMayBeTheRoot)
{
    EXPECT_EQ(Parse("<Applications>" + Application("A", "a") + "</Applications>"), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"a")));
}

// How elements and attributes are known.

TEST_F(ManifestReader, NamesOfElementsAndAttributesIgnoreCase)
{
    EXPECT_EQ(Parse("<PACKAGE><aPPLICATIONS><application><visualelements displayname=\"A\">"
                    "<DEFAULTTILE SHORTNAME=\"B\"/></visualelements></application></aPPLICATIONS></PACKAGE>"),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, NamesOfElementsMatchAsAWhole)
{
    EXPECT_EQ(Parse("<Package><ApplicationsX><Application/></ApplicationsX><Application/><Applications>"
                    "<ApplicationX><VisualElements DisplayName=\"no\"/></ApplicationX><Applicatio/>"
                    "<Application><VisualElementsX DisplayName=\"no\"/><VisualElement DisplayName=\"no\"/>"
                    "<VisualElements DisplayName=\"A\"><DefaultTileX ShortName=\"no\"/>"
                    "<DefaultTil ShortName=\"no\"/><DefaultTile ShortName=\"B\"/></VisualElements>"
                    "</Application></Applications></Package>"),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, NamesOfAttributesMatchAsAWhole)
{
    Parse(Manifest("<Application><VisualElements DisplayNameX=\"no\" DisplayNam=\"no\" XDisplayName=\"no\" "
                   "DisplayName=\"A\" Other=\"no\"><DefaultTile ShortNameX=\"no\" ShortNam=\"no\" "
                   "ShortName=\"B\"/></VisualElements></Application>"));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, PrefixesAndNamespacesDoNotCount)
{
    EXPECT_EQ(Parse("<x:Package xmlns:x=\"urn:x\" xmlns:y=\"urn:y\"><x:Applications><Application>"
                    "<y:VisualElements y:DisplayName=\"A\" DisplayName=\"second\">"
                    "<DefaultTile xmlns=\"urn:z\" x:ShortName=\"B\"/></y:VisualElements></Application>"
                    "</x:Applications></x:Package>"),
              S_FALSE);
    // Of two attributes of one local name the first is taken.
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, OnlyElementsCount)
{
    EXPECT_EQ(Parse(Manifest("<!-- <Application><VisualElements DisplayName=\"no\"/></Application> -->"
                             "<?Application VisualElements?><![CDATA[<Application>]]>Application" +
                             Application("A", "B"))),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, ReferencesInValuesAreResolved)
{
    Parse(Manifest(Application("Salt &amp; Pepper &lt;&quot;&#65;", "&#x42;")));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"salt & pepper <\"a", L"b")));
}

TEST_F(ManifestReader, SingleQuotesAndLineBreaksAreFine)
{
    EXPECT_EQ(Parse(Manifest("<Application\r\n>\r\n\t<VisualElements\r\n\tDisplayName='A \"B\"'\r\n>"
                             "<DefaultTile\tShortName = 'C'></DefaultTile></VisualElements></Application>")),
              S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a \"b\"", L"c")));
}

TEST_F(ManifestReader, ADeclarationAndAByteOrderMarkAreFine)
{
    EXPECT_EQ(
        Parse("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n" + Manifest(Application("A", "B"))),
        S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a", L"b")));
}

TEST_F(ManifestReader, AFileOfWideCharactersIsRead)
{
    const std::wstring text = L"\uFEFF" + test::FromUtf8(Manifest(Application("A \xE5\xA4\xA9", "B")));
    EXPECT_EQ(
        Parse(std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t))),
        S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"a \u5929", L"b")));
}

TEST_F(ManifestReader, NamesOfAnyLengthAreTakenWhole)
{
    const std::string longName(70000, 'A');
    EXPECT_EQ(Parse(Manifest(Application(longName, longName))), S_FALSE);
    const std::wstring lowered(70000, L'a');
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(lowered, lowered)));
}

// Names that are resources.

TEST_F(ManifestReader, ResourcesBecomeTheTextThatTheUserSees)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/appname}"] = L"My App";
    m_resources.texts[L"@{F? ms-resource://N/short}"] = L"SHORT";
    EXPECT_EQ(Parse(Manifest(Application("ms-resource:AppName", "MS-Resource:Short"))), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"My App", L"SHORT")));
}

TEST_F(ManifestReader, UnresolvedResourcesStayTheLoweredReference)
{
    m_resources.leftOver = L"half a text";
    EXPECT_EQ(Parse(Manifest(Application("ms-resource:AppName", "ms-resource:///Short"))), S_FALSE);
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"ms-resource:appname", L"ms-resource:///short")));
}

TEST_F(ManifestReader, EveryResourceGetsAnEmptyBuffer)
{
    m_resources.leftOver = L"rest of the one before";
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = std::wstring(255, L'x');
    Parse(Manifest(Application("ms-resource:A", "ms-resource:B") + Application("ms-resource:///C", "")));
    ASSERT_EQ(m_resources.requests.size(), 4u);
    EXPECT_TRUE(m_resources.requests[0].wasEmpty);
    EXPECT_TRUE(m_resources.requests[1].wasEmpty);
    // The second try of the same name has what the first one left.
    EXPECT_FALSE(m_resources.requests[2].wasEmpty);
    EXPECT_TRUE(m_resources.requests[3].wasEmpty);
}

TEST_F(ManifestReader, TextsOfResourcesAreCutToTheBuffer)
{
    for (const std::size_t size : {254u, 255u, 256u, 257u, 5000u}) {
        m_package.DeleteAllApp();
        m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = std::wstring(size, L'X');
        m_resources.texts[L"@{F?ms-resource://N/b}"] = std::wstring(size, L'Y');
        Parse(Manifest(Application("ms-resource:A", "ms-resource:///B")));
        const std::size_t fitting = std::min<std::size_t>(size, 255);
        EXPECT_THAT(NamesOf(m_package),
                    ElementsAre(Pair(std::wstring(fitting, L'X'), std::wstring(fitting, L'Y'))));
    }
}

TEST_F(ManifestReader, ATextThatIsAReferenceItselfIsNotResolvedAgain)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"MS-Resource:B";
    m_resources.texts[L"@{F?ms-resource://N/resources/b}"] = L"no";
    Parse(Manifest(Application("ms-resource:A", "ms-resource:A")));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"MS-Resource:B", L"MS-Resource:B")));
}

TEST_F(ManifestReader, AResourceThatIsEmptyMakesAnEmptyName)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"";
    Parse(Manifest(Application("ms-resource:A", "B")));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L"", L"b")));
}

TEST_F(ManifestReader, APackageWithoutNamesHasNoResources)
{
    // As a package is that was read from the catalogue's file.
    CQanhPackage package(L"N_8wekyb3d8bbwe", {1, 2, 3, 4}, FALSE, TRUE);
    Write(Manifest(Application("ms-resource:AppName", "B")));
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package), S_FALSE);
    EXPECT_THAT(NamesOf(package), ElementsAre(Pair(L"ms-resource:appname", L"b")));
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

TEST_F(ManifestReader, TextBeforeThePrefixIsNoResource)
{
    const test::LogCapture log;
    Parse(Manifest(Application(" ms-resource:A", "see ms-resource:B")));
    EXPECT_THAT(NamesOf(m_package), ElementsAre(Pair(L" ms-resource:a", L"see ms-resource:b")));
    EXPECT_THAT(m_resources.requests, IsEmpty());
    EXPECT_THAT(log.Lines(), Not(Contains(HasSubstr("ConvertMsResourceToString"))));
}

TEST_F(ManifestReader, TheLogOfAResourceStandsBetweenItsAttributeAndTheNextStep)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"My App";
    Write(Manifest(Application("ms-resource:A", "B")));
    const test::LogCapture log;
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &m_package), S_FALSE);
    const auto lines = log.Lines();
    ASSERT_GT(lines.size(), 12u);
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 8, lines.begin() + 13),
                ElementsAre("CQanhManifestReader::GetAttributeValueByName OUT(0x00000000)",
                            "CQanhManifestReader::ConvertMsResourceToString(ms-resource:a, F, N, , 256) IN",
                            "CQanhManifestReader::ConvertMsResourceToString ms-resource = "
                            "@{F?ms-resource://N/resources/a})",
                            "CQanhManifestReader::ConvertMsResourceToString OUT(pStr = My App)",
                            "CQanhManifestReader::MoveToElementByName(DefaultTile) IN"));
}

} // namespace
