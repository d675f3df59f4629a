// What becomes of the catalogue's records when its file is read once more.

#include "catalog/AppNameList.h"

#include "unit/catalog/Records.h"

namespace {

using namespace test;

class AppNameListReload : public Test
{
protected:
    HRESULT Reload(std::string_view text)
    {
        WriteFileBytes(m_path, text);
        return m_list.Reload(m_path.c_str());
    }
    std::vector<std::wstring> Shortcuts() const { return Names(m_list.DesktopShortcuts()); }

    TemporaryFolder m_folder;
    const std::wstring m_path = m_folder / L"AppNameList.xml";
    CQanhAppNameList m_list;
};

TEST_F(AppNameListReload, PutsTheFilesRecordsInThePlaceOfAllOthers)
{
    ASSERT_EQ(m_list.AddDesktopApp(L"old", L"C:\\old.lnk"), S_OK);
    ASSERT_EQ(m_list.AddMetroPackage(std::make_unique<CQanhPackage>(L"old_1", RecordVersion(), TRUE, TRUE)),
              S_OK);
    EXPECT_EQ(Reload("<r><Package PackageFamilyName='mail_1' Version='1.0.0.0'><MetroApp DisplayName='Mail'/>"
                     "</Package><DesktopApps><DesktopApp LnkFileName='C:\\new.lnk'/></DesktopApps></r>"),
              S_FALSE);
    EXPECT_EQ(SavedRecords(m_list),
              R"(<Package PackageFamilyName="mail_1" Version="1.0.0.0"><MetroApp DisplayName="Mail" />)"
              R"(</Package><DesktopApp LnkFileName="C:\new.lnk" />)");
}

TEST_F(AppNameListReload, LeavesAllAsItWasWhenTheFileCannotBeOpened)
{
    ASSERT_EQ(m_list.AddDesktopApp(L"old", L"C:\\old.lnk"), S_OK);
    EXPECT_EQ(m_list.Reload(nullptr), E_POINTER);
    EXPECT_EQ(m_list.Reload(L""), E_INVALIDARG);
    EXPECT_EQ(m_list.Reload(m_path.c_str()), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_THAT(Shortcuts(), ElementsAre(L"C:\\old.lnk"));
}

TEST_F(AppNameListReload, TakesWhatABrokenFileHoldsUpToItsFault)
{
    ASSERT_EQ(m_list.AddDesktopApp(L"old", L"C:\\old.lnk"), S_OK);
    EXPECT_EQ(Reload("<Applications><DesktopApps><DesktopApp LnkFileName=\"C:\\new.lnk\" /></Applications>"),
              static_cast<HRESULT>(0xC00CEE3B));
    EXPECT_THAT(Shortcuts(), ElementsAre(L"C:\\new.lnk"));
    EXPECT_TRUE(FAILED(Reload("")));
    EXPECT_THAT(Shortcuts(), IsEmpty());
}

TEST_F(AppNameListReload, KeepsToTheListsLimit)
{
    CQanhAppNameList list(1);
    WriteFileBytes(m_path, "<Applications><DesktopApps><DesktopApp DisplayName=\"a\" />"
                           "<DesktopApp DisplayName=\"b\" /></DesktopApps></Applications>");
    EXPECT_EQ(list.Reload(m_path.c_str()), S_FALSE);
    EXPECT_EQ(list.DesktopShortcuts().size(), 1u);
    EXPECT_EQ(list.AddDesktopApp(L"c", L"C:\\c.lnk"), E_OUTOFMEMORY);
}

TEST_F(AppNameListReload, LogsTheLinesOfALoad)
{
    const LogCapture log;
    EXPECT_EQ(Reload("<Applications />"), S_FALSE);
    EXPECT_EQ(log.Lines(), Call("CQanhAppNameList::Load(" + ToUtf8(m_path) + ")", "(0x00000001)"));
}

} // namespace
