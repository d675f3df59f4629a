// How the catalogue opens its file and what ends the reading of it.

#include "catalog/AppNameList.h"

#include "support/BrokenReader.h"
#include "support/XmlInputs.h"
#include "unit/catalog/Records.h"

namespace {

using namespace test;

class AppNameListFile : public Test
{
protected:
    HRESULT Load(const std::wstring& path) { return m_list.Load(path.c_str()); }

    const TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"AppNameList.xml";
    CQanhAppNameList m_list;
};

TEST_F(AppNameListFile, RefusesNullAndAnEmptyPath)
{
    const LogCapture log;
    EXPECT_EQ(m_list.Load(nullptr), E_POINTER);
    EXPECT_EQ(m_list.Load(L""), E_INVALIDARG);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Load((null))", "(0x80004003)") +
                               Call("CQanhAppNameList::Load()", "(0x80070057)"));
}

TEST_F(AppNameListFile, ReturnsTheFailureToOpenTheFile)
{
    EXPECT_EQ(m_list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    EXPECT_EQ(Load(m_path), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(Load(m_folder / L"missing\\a.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(FAILED(Load(m_folder.Path())));
    EXPECT_FALSE(Exists(m_path));
    const HANDLE file = CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_EQ(Load(m_path), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    CloseHandle(file);
    // What was there stays.
    EXPECT_EQ(m_list.DesktopShortcuts().size(), 1u);
    const LogCapture log;
    EXPECT_EQ(Load(L"Z:\\q\\q.xml"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Load(Z:\\q\\q.xml)", "(0x80070003)"));
}

TEST_F(AppNameListFile, OpensTheFileForReadingOnlyAndLetsGoOfIt)
{
    WriteFileBytes(m_path, "<r/>");
    ASSERT_TRUE(SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_READONLY));
    const XmlInputs inputs;
    EXPECT_EQ(Load(m_path), S_FALSE);
    EXPECT_THAT(inputs.calls,
                ElementsAre(L"CreateXmlReader(null)", L"SHCreateStreamOnFileW(" + m_path + L", 0)"));
    SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(DeleteFileW(m_path.c_str()));
}

TEST_F(AppNameListFile, ReturnsTheFailureToMakeAReader)
{
    WriteFileBytes(m_path, "<Package/>");
    BrokenReader reader;
    reader.createResult = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(Load(m_path), REGDB_E_CLASSNOTREG);
    EXPECT_THAT(m_list.PackageFamilyNames(), IsEmpty());
    EXPECT_TRUE(DeleteFileW(m_path.c_str()));
}

TEST_F(AppNameListFile, ReturnsTheFailureToSetTheReadersInput)
{
    BrokenReader reader;
    reader.prepares = [](ReaderProbe& probe) { probe.Answer("SetInput", 0, E_NOINTERFACE); };
    EXPECT_EQ(LoadText(m_list, "<Package/>"), E_NOINTERFACE);
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_EQ(reader.Reader().Calls("Read"), 0);
}

TEST_F(AppNameListFile, SkipsRecordsThatCannotBeReadAndReadsOn)
{
    constexpr char text[] = "<r><Package PackageFamilyName='a_1'/><Package PackageFamilyName='b_1'/><Package "
                            "PackageFamilyName='c_1'/><DesktopApps><DesktopApp DisplayName='a'/><DesktopApp "
                            "DisplayName='b'/><DesktopApp DisplayName='c'/></DesktopApps></r>";
    BrokenReader reader;
    reader.prepares = [](ReaderProbe& probe) {
        probe.Answer("MoveToFirstAttribute", 1, E_ABORT);
        probe.Answer("MoveToFirstAttribute", 4, E_ABORT);
    };
    EXPECT_EQ(LoadText(m_list, text), S_FALSE);
    EXPECT_EQ(reader.Reader().references, 0u);
    EXPECT_EQ(SavedRecords(m_list), R"(<Package PackageFamilyName="a_1" Version="0.0.0.0" />)"
                                    R"(<Package PackageFamilyName="c_1" Version="0.0.0.0" />)"
                                    R"(<DesktopApp DisplayName="a" /><DesktopApp DisplayName="c" />)");
}

TEST_F(AppNameListFile, EndsWithTheReadersFailureAndKeepsWhatItRead)
{
    const std::size_t records[] = {0, 0, 1, 2, 2, 3}; // before the node that fails
    for (int failing = 0; failing < 6; ++failing) {
        BrokenReader reader;
        reader.prepares = [&](ReaderProbe& probe) { probe.Answer("Read", failing, STG_E_READFAULT); };
        CQanhAppNameList list;
        EXPECT_EQ(
            LoadText(list,
                     "<r><Package/><Package/><DesktopApps><DesktopApp/><DesktopApp/></DesktopApps></r>"),
            STG_E_READFAULT);
        EXPECT_EQ(reader.Reader().Calls("Read"), failing + 1);
        EXPECT_EQ(list.PackageFamilyNames().size() + list.DesktopShortcuts().size(), records[failing]);
    }
}

TEST_F(AppNameListFile, KeepsWhatWasReadBeforeTheReadingRaisedAnything)
{
    WriteFileBytes(m_path, "<r><Package PackageFamilyName='new_1'/><x/><Package/></r>");
    for (const auto load : {&CQanhAppNameList::Load, &CQanhAppNameList::Reload}) {
        CQanhAppNameList list;
        EXPECT_EQ(list.AddDesktopApp(L"old", L"C:\\old.lnk"), S_OK);
        BrokenReader reader;
        reader.prepares = [](ReaderProbe& probe) { probe.Raise("Read", 3); };
        EXPECT_EQ((list.*load)(m_path.c_str()), E_OUTOFMEMORY);
        EXPECT_EQ(reader.Reader().references, 0u);
        EXPECT_THAT(Names(list.PackageFamilyNames()), ElementsAre(L"new_1"));
        // A reload puts what it has read in the place of the rest.
        EXPECT_EQ(list.DesktopShortcuts().size(), load == &CQanhAppNameList::Reload ? 0u : 1u);
    }
}

TEST_F(AppNameListFile, EndsWhenTheReaderKnowsNoNodeType)
{
    // Some readers report the end of their input there.
    for (const HRESULT answer : {S_FALSE, E_ABORT}) {
        BrokenReader reader;
        reader.prepares = [&](ReaderProbe& probe) {
            for (int call = 0; call < 100; ++call) {
                probe.Answer("GetNodeType", call, answer);
            }
        };
        EXPECT_EQ(LoadText(m_list, "<r><Package/></r>"), answer);
        EXPECT_EQ(reader.Reader().Calls("Read"), 1);
        EXPECT_THAT(m_list.PackageFamilyNames(), IsEmpty());
    }
}

TEST_F(AppNameListFile, ReadsOnWhenTheListsAreFull)
{
    // Which hold a record each already.
    CQanhAppNameList list(2);
    EXPECT_EQ(list.AddMetroPackage(Package(L"a_1")), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
    WriteFileBytes(m_path,
                   "<r><Package PackageFamilyName='b_1'><MetroApp/><MetroApp/><MetroApp/></Package>"
                   "<Package PackageFamilyName='c_1'/><DesktopApps><DesktopApp LnkFileName='C:\\b.lnk'/>"
                   "<DesktopApp LnkFileName='C:\\c.lnk'/></DesktopApps></r>");
    const auto metroApp = Call("CQanhMetroApp::FromXmlNode", "(0x00000000)");
    const auto added = Call("CQanhPackage::AddApplication", "(0x00000000)");
    const auto noPlaceForApp = Call("CQanhPackage::AddApplication", "(0x8007000E)");
    const auto packageWithApps = Call("CQanhPackage::FromXmlNode", "(0x00000000)",
                                      metroApp + added + metroApp + added + metroApp + noPlaceForApp);
    const auto package = Call("CQanhPackage::FromXmlNode", "(0x00000000)");
    const auto placed = Call("CQanhAppNameList::AddMetroPackage", "(0x00000000)");
    const auto refused = Call("CQanhAppNameList::AddMetroPackage", "(0x8007000E)");
    const auto app = Call("CQanhDesktopApp::FromXmlNode", "(0x00000000)");
    const Lines noPlace = {"CQanhAppNameList::ReadDesktopApps Error (0x8007000E)"};
    const auto apps = [&](const Lines& first) {
        return Call("CQanhAppNameList::ReadDesktopApps", "(0x00000000)", app + first + app + noPlace);
    };
    const auto load = [&](const Lines& firstPackage, const Lines& firstApp) {
        return Call("CQanhAppNameList::Load(" + ToUtf8(m_path) + ")", "(0x00000001)",
                    packageWithApps + firstPackage + package + refused + apps(firstApp));
    };
    // The second time there is room for none.
    for (const auto& lines : {load(placed, {}), load(refused, noPlace)}) {
        const LogCapture log;
        EXPECT_EQ(list.Load(m_path.c_str()), S_FALSE);
        EXPECT_EQ(log.Lines(), lines);
        EXPECT_THAT(Names(list.PackageFamilyNames()), ElementsAre(L"a_1", L"b_1"));
        EXPECT_THAT(Names(list.DesktopShortcuts()), ElementsAre(L"C:\\a.lnk", L"C:\\b.lnk"));
        EXPECT_EQ(list.GetPackage(L"b_1")->Apps().Size(), 2u);
    }
}

TEST_F(AppNameListFile, ReadsDesktopAppsUpToTheEndOfTheirCollection)
{
    const XmlSource source("<r><DesktopApps><DesktopApp LnkFileName='a'/></DesktopApps>"
                           "<DesktopApp LnkFileName='b'/></r>",
                           L"DesktopApps");
    const LogCapture log;
    EXPECT_EQ(m_list.ReadDesktopApps(source.Reader()), S_OK);
    EXPECT_EQ(m_list.DesktopShortcuts().size(), 1u);
    EXPECT_EQ(m_list.ReadDesktopApps(nullptr), E_POINTER);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::ReadDesktopApps", "(0x00000000)",
                                Call("CQanhDesktopApp::FromXmlNode", "(0x00000000)")) +
                               Call("CQanhAppNameList::ReadDesktopApps", "(0x80004003)"));

    const XmlSource notDeeper("<r><DesktopApps/><Package/></r>", L"DesktopApps");
    EXPECT_EQ(m_list.ReadDesktopApps(notDeeper.Reader()), S_OK);
    EXPECT_EQ(notDeeper.Name(), L"Package");

    const XmlSource endOfTheDocument("<DesktopApps/>", L"DesktopApps");
    EXPECT_EQ(m_list.ReadDesktopApps(endOfTheDocument.Reader()), S_FALSE);
}

} // namespace
