// The manifest reader that walks the XML: which names it takes, and from where.

#include "unit/manifest/ManifestFile.h"

#include <algorithm>
#include <thread>

namespace {

using namespace manifest_test;

class ManifestReader : public ManifestFile
{
protected:
    // Reads this manifest, which has these applications.
    void ExpectNames(std::string_view manifest, const NameList& names)
    {
        m_package.DeleteAllApp();
        EXPECT_EQ(Parse(manifest), S_FALSE);
        EXPECT_EQ(NamesOf(m_package), names);
        EXPECT_TRUE(IsClosed());
    }
    // The same, and none of the names is a resource.
    void ExpectPlain(const char* what, std::string_view manifest, const NameList& names)
    {
        SCOPED_TRACE(what);
        const LogCapture log;
        ExpectNames(manifest, names);
        EXPECT_THAT(m_resources.requests, IsEmpty());
        EXPECT_THAT(log.Lines(), Not(Contains(HasSubstr("ConvertMsResourceToString"))));
    }
};

std::string WideText(const std::string& text)
{
    const std::wstring wide = L"\uFEFF" + FromUtf8(text);
    return std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
}

TEST_F(ManifestReader, TakesTheNamesOfEachApplication)
{
    ExpectPlain("both names of each application in lower case",
                Manifest(Application("Weather", "W") + Application("Sports News", "SPORTS")),
                {{L"weather", L"w"}, {L"sports news", L"sports"}});
    // The e with an acute accent, two Cyrillic letters, and a full-width A, all upper case.
    ExpectPlain("latin letters only in lower case",
                Manifest(Application("\xC3\x89TE \xD0\x96\xD0\xAF \xEF\xBC\xA1", "\xE3\x83\xA1 X")),
                {{L"\u00c9te \u0416\u042f \uff21", L"\u30e1 x"}});
    ExpectPlain("duplicates twice", Manifest(Application("Weather", "W") + Application("Weather", "W")),
                {{L"weather", L"w"}, {L"weather", L"w"}});
    ExpectPlain("names of any length whole",
                Manifest(Application(std::string(70000, 'A'), std::string(70000, 'B'))),
                {{std::wstring(70000, L'a'), std::wstring(70000, L'b')}});
    ExpectPlain("text before the prefix of resources",
                Manifest(Application(" ms-resource:A", "see ms-resource:B")),
                {{L" ms-resource:a", L"see ms-resource:b"}});
}

TEST_F(ManifestReader, LooksForWhatIsMissingInTheRestOfTheDocument)
{
    ExpectPlain("the next tile in place of a missing one and its application with it",
                Manifest(Named("A") + Application("B", "b-tile") + Application("C", "c-tile")),
                {{L"a", L"b-tile"}, {L"c", L"c-tile"}});
    ExpectPlain("no tile before the visual elements",
                Manifest("<Application><DefaultTile ShortName='a-tile'/><VisualElements DisplayName='A'/>"
                         "</Application>" +
                         Application("B", "b-tile")),
                {{L"a", L"b-tile"}});
    ExpectPlain("a tile behind the visual elements",
                Manifest("<Application><VisualElements DisplayName='A'/><DefaultTile ShortName='a-tile'/>"
                         "</Application>"),
                {{L"a", L"a-tile"}});
    ExpectPlain("no short name when the last tile is missing",
                Manifest(Application("A", "a-tile") + Named("B")), {{L"a", L"a-tile"}, {L"b", L""}});
    ExpectPlain("a tile outside of any application",
                "<Package><Applications>" + Named("A") +
                    "</Applications><Extensions><DefaultTile ShortName='far'/></Extensions></Package>",
                {{L"a", L"far"}});
    ExpectPlain("the first tile only",
                Manifest("<Application><VisualElements DisplayName='A'><DefaultTile ShortName='1'/>"
                         "<DefaultTile ShortName='2'/></VisualElements></Application>"),
                {{L"a", L"1"}});
    ExpectPlain("the visual elements of the next application in place of missing ones",
                Manifest("<Application Id='A'/>" + Application("B", "b-tile") + Application("C", "c-tile")),
                {{L"b", L"b-tile"}, {L"c", L"c-tile"}});
    ExpectPlain("empty names of an application with nothing at the end of the document",
                Manifest(Application("A", "a-tile") + "<Application Id='B'/>"),
                {{L"a", L"a-tile"}, {L"", L""}});
    ExpectPlain("an empty name for a missing display name",
                Manifest("<Application><VisualElements Logo='l'><DefaultTile ShortName='A'/></VisualElements>"
                         "</Application>" +
                         Application("B", "b-tile")),
                {{L"", L"a"}, {L"b", L"b-tile"}});
    ExpectPlain(
        "an empty name for a missing short name",
        Manifest(
            "<Application><VisualElements DisplayName='A'><DefaultTile/></VisualElements></Application>" +
            Application("B", "b-tile")),
        {{L"a", L""}, {L"b", L"b-tile"}});
    ExpectPlain("empty names", Manifest(Application("", "") + Application("B", "b-tile")),
                {{L"", L""}, {L"b", L"b-tile"}});
    ExpectPlain("applications behind the end of their list",
                "<Package><Applications/><Extras>" + Application("A", "a") + "</Extras></Package>",
                {{L"a", L"a"}});
    ExpectPlain("no applications before their list",
                "<Package><Extras>" + Application("A", "a") + "</Extras><Applications>" +
                    Application("B", "b") + "</Applications></Package>",
                {{L"b", L"b"}});
    ExpectPlain("no applications without the list", "<Package>" + Application("A", "a") + "</Package>", {});
    ExpectPlain("no applications of an empty list", Manifest(""), {});
    ExpectPlain("a list that is the root", "<Applications>" + Application("A", "a") + "</Applications>",
                {{L"a", L"a"}});
}

TEST_F(ManifestReader, KnowsElementsAndAttributesByTheirLocalNames)
{
    ExpectPlain("elements and attributes in any letter case",
                "<PACKAGE><aPPLICATIONS><application><visualelements displayname='A'>"
                "<DEFAULTTILE SHORTNAME='B'/></visualelements></application></aPPLICATIONS></PACKAGE>",
                {{L"a", L"b"}});
    ExpectPlain("elements of the whole name",
                "<Package><ApplicationsX><Application/></ApplicationsX><Application/><Applications>"
                "<ApplicationX><VisualElements DisplayName='no'/></ApplicationX><Applicatio/>"
                "<Application><VisualElementsX DisplayName='no'/><VisualElement DisplayName='no'/>"
                "<VisualElements DisplayName='A'><DefaultTileX ShortName='no'/>"
                "<DefaultTil ShortName='no'/><DefaultTile ShortName='B'/></VisualElements>"
                "</Application></Applications></Package>",
                {{L"a", L"b"}});
    ExpectPlain("attributes of the whole name",
                Manifest("<Application><VisualElements DisplayNameX='no' DisplayNam='no' XDisplayName='no' "
                         "DisplayName='A' Other='no'><DefaultTile ShortNameX='no' ShortNam='no' "
                         "ShortName='B'/></VisualElements></Application>"),
                {{L"a", L"b"}});
    // Of two attributes of one local name the first is taken.
    ExpectPlain("elements and attributes of any prefix and namespace",
                "<x:Package xmlns:x='urn:x' xmlns:y='urn:y'><x:Applications><Application>"
                "<y:VisualElements y:DisplayName=\"A\" DisplayName=\"second\">"
                "<DefaultTile xmlns='urn:z' x:ShortName='B'/></y:VisualElements></Application>"
                "</x:Applications></x:Package>",
                {{L"a", L"b"}});
    ExpectPlain("elements only",
                Manifest("<!-- <Application><VisualElements DisplayName='no'/></Application> -->"
                         "<?Application VisualElements?><![CDATA[<Application>]]>Application" +
                         Application("A", "B")),
                {{L"a", L"b"}});
    ExpectPlain("references in values resolved",
                Manifest(Application("Salt &amp; Pepper &lt;&quot;&#65;", "&#x42;")),
                {{L"salt & pepper <\"a", L"b"}});
    ExpectPlain("single quotes and line breaks",
                Manifest("<Application\r\n>\r\n\t<VisualElements\r\n\tDisplayName='A \"B\"'\r\n>"
                         "<DefaultTile\tShortName = 'C'></DefaultTile></VisualElements></Application>"),
                {{L"a \"b\"", L"c"}});
    ExpectPlain("a file with a declaration and a byte order mark",
                "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n" +
                    Manifest(Application("A", "B")),
                {{L"a", L"b"}});
    ExpectPlain("a file of wide characters", WideText(Manifest(Application("A \xE5\xA4\xA9", "B"))),
                {{L"a \u5929", L"b"}});
}

TEST_F(ManifestReader, AddsToWhatThePackageHasAlready)
{
    EXPECT_EQ(m_package.AddApplication(L"Old", L"O"), S_OK);
    EXPECT_EQ(Parse(Manifest(Application("Weather", "W"))), S_FALSE);
    EXPECT_EQ(NamesOf(m_package), (NameList{{L"Old", L"O"}, {L"weather", L"w"}}));
}

TEST_F(ManifestReader, WholeLogs)
{
    LogCapture log;
    EXPECT_EQ(Parse(Manifest(Application("Weather", "W"))), S_FALSE);
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppNameUsingXmlParser", "(0x00000001)",
                                Found("Applications") + Found("Application") + Found("VisualElements") +
                                    Value("DisplayName") + Found("DefaultTile") + Value("ShortName") +
                                    Call("CQanhPackage::AddApplication(weather, w)", "(0x00000000)") +
                                    NotFound("Application")));
    log.Clear();
    // The applications are looked for all the same, behind the end of the document.
    EXPECT_EQ(Parse("<Package/>"), S_FALSE);
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::GetAppNameUsingXmlParser", "(0x00000001)",
                                NotFound("Applications") + NotFound("Application")));
    log.Clear();
    // Every step is taken, also where the element of the step before was not found.
    EXPECT_EQ(Parse("<Applications><Application/></Applications>"), S_FALSE);
    EXPECT_EQ(log.Lines(),
              Call("CQanhManifestReader::GetAppNameUsingXmlParser", "(0x00000001)",
                   Found("Applications") + Found("Application") + NotFound("VisualElements") +
                       NoValue("DisplayName") + NotFound("DefaultTile") + NoValue("ShortName") +
                       Call("CQanhPackage::AddApplication(, )", "(0x00000000)") + NotFound("Application")));
    log.Clear();
    // The lines of a resource stand between its attribute and the next step.
    m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = L"My App";
    EXPECT_EQ(Parse(Manifest(Application("ms-resource:A", "B"))), S_FALSE);
    EXPECT_EQ(
        log.Lines(),
        Call("CQanhManifestReader::GetAppNameUsingXmlParser", "(0x00000001)",
             Found("Applications") + Found("Application") + Found("VisualElements") + Value("DisplayName") +
                 Converted("ms-resource:a", {"@{F?ms-resource://N/resources/a}"}, "My App") +
                 Found("DefaultTile") + Value("ShortName") +
                 Call("CQanhPackage::AddApplication(My App, b)", "(0x00000000)") + NotFound("Application")));
}

TEST_F(ManifestReader, ReadsOnManyThreadsAtOnce)
{
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kTimes = 50;
    std::vector<NameList> names(kThreads);
    std::vector<std::wstring> paths;
    for (std::size_t index = 0; index < kThreads; ++index) {
        const std::string name(1 + index * 100, static_cast<char>('A' + index));
        paths.push_back(m_folder / (std::to_wstring(index) + L".xml"));
        WriteFileBytes(paths[index], Manifest(Application(name, name) + Application(name, name)));
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
        EXPECT_EQ(names[index], NameList(2 * kTimes, Names(name, name))) << index;
    }
}

// Names that are resources.

TEST_F(ManifestReader, ResourcesBecomeTheTextThatTheUserSees)
{
    m_resources.texts = {{L"@{F?ms-resource://N/resources/appname}", L"My App"},
                         {L"@{F? ms-resource://N/short}", L"SHORT"},
                         {L"@{F?ms-resource://N/resources/empty}", L""},
                         {L"@{F?ms-resource://N/resources/a}", L"MS-Resource:B"},
                         {L"@{F?ms-resource://N/resources/b}", L"no"}};
    ExpectNames(Manifest(Application("ms-resource:AppName", "MS-Resource:Short")), {{L"My App", L"SHORT"}});
    ExpectNames(Manifest(Application("ms-resource:Empty", "B")), {{L"", L"b"}});
    // A text that is a reference itself is not resolved again.
    ExpectNames(Manifest(Application("ms-resource:A", "ms-resource:A")),
                {{L"MS-Resource:B", L"MS-Resource:B"}});
}

TEST_F(ManifestReader, UnresolvedResourcesStayTheLoweredReference)
{
    m_resources.leftOver = L"half a text";
    ExpectNames(Manifest(Application("ms-resource:AppName", "ms-resource:///Short")),
                {{L"ms-resource:appname", L"ms-resource:///short"}});
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
        m_resources.texts[L"@{F?ms-resource://N/resources/a}"] = std::wstring(size, L'X');
        m_resources.texts[L"@{F?ms-resource://N/b}"] = std::wstring(size, L'Y');
        const std::size_t fitting = std::min<std::size_t>(size, 255);
        ExpectNames(Manifest(Application("ms-resource:A", "ms-resource:///B")),
                    {{std::wstring(fitting, L'X'), std::wstring(fitting, L'Y')}});
    }
}

TEST_F(ManifestReader, APackageWithoutNamesHasNoResources)
{
    // As a package is that was read from the catalogue's file.
    CQanhPackage package(L"N_8wekyb3d8bbwe", {1, 2, 3, 4}, FALSE, TRUE);
    Write(Manifest(Application("ms-resource:AppName", "B")));
    EXPECT_EQ(CQanhManifestReader::GetAppNameUsingXmlParser(Path().c_str(), &package), S_FALSE);
    EXPECT_EQ(NamesOf(package), (NameList{{L"ms-resource:appname", L"b"}}));
    EXPECT_THAT(m_resources.requests, IsEmpty());
}

} // namespace
