// Whether every name of a manifest can be had now.

#include "support/Allocations.h"
#include "support/BrokenReader.h"
#include "unit/manifest/ManifestFile.h"

namespace {

using namespace manifest_test;

class ManifestCheck : public ManifestFile
{
protected:
    ~ManifestCheck() override
    {
        // Whatever comes of it, no application is added.
        EXPECT_EQ(m_package.Apps().Size(), 0u);
        EXPECT_TRUE(IsClosed());
    }

    HRESULT Check()
    {
        m_can = 7;
        return CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, &m_can);
    }
    HRESULT Check(std::string_view text)
    {
        Write(text);
        return Check();
    }

    BOOL m_can = 7; // neither true nor false: shows that it was set
};

TEST_F(ManifestCheck, TellsWhetherEveryNameCanBeHad)
{
    m_resources.texts = {{L"@{F?ms-resource://N/resources/name}", L"My App"},
                         {L"@{F?ms-resource://N/short}", L"App"},
                         {L"@{F?ms-resource://N/resources/reference}", L"MS-Resource:Other"},
                         {L"@{F?ms-resource://N/resources/about}", L"About ms-resource:Other"}};
    const auto expect = [&](const char* what, const std::string& manifest, HRESULT result, BOOL can,
                            const std::vector<std::wstring>& sources = {}) {
        SCOPED_TRACE(what);
        // A reference stays unresolved whatever is left in its buffer.
        for (const wchar_t* leftOver : {L"", L"half a text"}) {
            m_resources.leftOver = leftOver;
            m_resources.requests.clear();
            EXPECT_EQ(Check(manifest), result);
            EXPECT_EQ(m_can, can);
            EXPECT_EQ(m_resources.Sources(), sources);
            EXPECT_TRUE(IsClosed());
        }
    };
    const std::vector<std::wstring> unresolved = {L"@{F?ms-resource://N/resources/none}",
                                                  L"@{F? ms-resource://N/none}"};
    expect("plain names", Manifest(Application("A", "a-tile") + Application("B", "b-tile")), S_FALSE, 1);
    expect("resolved resources", Manifest(Application("ms-resource:Name", "ms-resource:///Short")), S_FALSE,
           1, {L"@{F?ms-resource://N/resources/name}", L"@{F?ms-resource://N/short}"});
    expect("an empty list", Manifest(""), S_FALSE, 1);
    expect("no list", "<Package/>", S_FALSE, 1);
    expect("missing names", Manifest("<Application/>"), S_FALSE, 1);
    expect("an unresolved display name that ends the walk at once",
           Manifest(Application("ms-resource:None", "ms-resource:Short") + Application("B", "b-tile")), S_OK,
           0, unresolved);
    expect("an unresolved short name that ends the walk at once",
           Manifest(Application("A", "ms-resource:None") + Application("ms-resource:B", "b")), S_OK, 0,
           unresolved);
    expect("an unresolved name of a later application",
           Manifest(Application("A", "a-tile") + Application("B", "ms-resource:None")), S_OK, 0, unresolved);
    expect("a text that is a reference itself whatever its case",
           Manifest(Application("ms-resource:Reference", "B")), S_OK, 0,
           {L"@{F?ms-resource://N/resources/reference}"});
    expect("a text with a reference further on", Manifest(Application("ms-resource:About", "B")), S_FALSE, 1,
           {L"@{F?ms-resource://N/resources/about}"});
    expect("a fault in the document", "<Package><Applications>" + Application("A", "B") + "</X>",
           static_cast<HRESULT>(0xC00CEE3B), 0);
}

TEST_F(ManifestCheck, APackageWithoutNamesHasNoResources)
{
    CQanhPackage package(L"N", {1, 2, 3, 4}, FALSE, TRUE);
    Write(Manifest(Application("ms-resource:Name", "B")));
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &package, &m_can), S_OK);
    EXPECT_EQ(m_can, 0);
}

TEST_F(ManifestCheck, WholeLogs)
{
    LogCapture log;
    Check(Manifest(Application("A", "B")));
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::IsCanGetAppNameFromManifest", "(0x00000001)",
                                Found("Applications") + Found("Application") + Found("VisualElements") +
                                    Value("DisplayName") + Found("DefaultTile") + Value("ShortName") +
                                    NotFound("Application")));
    log.Clear();
    Check(Manifest(Application("ms-resource:Name", "ms-resource:Short") + Application("B", "b-tile")));
    EXPECT_EQ(log.Lines(),
              Call("CQanhManifestReader::IsCanGetAppNameFromManifest", "(0x00000000)",
                   Found("Applications") + Found("Application") + Found("VisualElements") +
                       Value("DisplayName") +
                       Converted("ms-resource:name",
                                 {"@{F?ms-resource://N/resources/name}", "@{F? ms-resource://N/name}"}, "")));
}

TEST_F(ManifestCheck, NeedsAPlaceForItsAnswer)
{
    Write(Manifest(""));
    const LogCapture log;
    EXPECT_EQ(CQanhManifestReader::IsCanGetAppNameFromManifest(Path().c_str(), &m_package, nullptr),
              E_POINTER);
    EXPECT_EQ(log.Lines(), Call("CQanhManifestReader::IsCanGetAppNameFromManifest", "(0x80004003)"));
}

TEST_F(ManifestCheck, TheAnswerIsNoUntilTheWalkIsOver)
{
    m_resources.texts[L"@{F?ms-resource://N/resources/name}"] = L"My App";
    m_resources.onLoad = [&] { EXPECT_EQ(m_can, 0); };
    BrokenReader reader;
    reader.prepares = [&](ReaderProbe&) { EXPECT_EQ(m_can, 0); };
    EXPECT_EQ(Check(Manifest(Application("A", "B") + Application("C", "ms-resource:Name"))), S_FALSE);
    EXPECT_EQ(m_resources.requests.size(), 1u);
    EXPECT_EQ(m_can, 1);
}

TEST_F(ManifestCheck, RunningOutOfMemoryIsAFailure)
{
    m_resources.isQuiet = true;
    m_resources.texts[L"@{F?ms-resource://N/resources/the long key of the name}"] = L"A longer text";
    Write(Manifest(Application("ms-resource:The long key of the name", "A short name that is long")));
    const std::wstring path = Path();
    const std::size_t failures = ForEachFailingAllocation([&](std::size_t index) {
        const Attempt attempt = TryWithFailingAllocation(index, [&] {
            return CQanhManifestReader::IsCanGetAppNameFromManifest(path.c_str(), &m_package, &m_can);
        });
        EXPECT_EQ(attempt.result, attempt.failed ? E_FAIL : S_FALSE) << index;
        EXPECT_EQ(m_can, attempt.failed ? 0 : 1) << index;
        return attempt.failed;
    });
    EXPECT_GT(failures, 3u);
}

} // namespace
