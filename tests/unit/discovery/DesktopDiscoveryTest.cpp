#include "unit/discovery/Walk.h"

namespace {

using namespace walk_test;

TEST_F(DesktopDiscovery, AFoldersShortcutsComeBeforeThoseOfItsSubfolders)
{
    MakeFiles({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    EXPECT_THAT(HandedOver(), ElementsAre("A, " + Narrow(L"A.lnk"), "B, " + Narrow(L"B.url"),
                                          "C, " + Narrow(L"Sub\\C.lnk")));
    EXPECT_EQ(WalkLines(), FolderLines(Root(), 0, 0) + FolderLines(Narrow(L"Sub"), 0, 2) + kOut + kOut);
}

struct FolderCase
{
    const char* name;
    std::vector<const wchar_t*> files;
    std::vector<const wchar_t*> found; // in this order
};

class FolderWith : public DesktopDiscovery, public ::testing::WithParamInterface<FolderCase>
{
};

TEST_P(FolderWith, IsWalkedInOrder)
{
    MakeFiles(GetParam().files);
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound(GetParam().found);
}

const FolderCase kFolders[] = {
    {"Subfolders", // links come before internet links, and the walk goes deep first
     {L"a.url", L"z.lnk", L"One\\x.url", L"One\\Deep\\d.lnk", L"Two\\y.lnk"},
     {L"z.lnk", L"a.url", L"One\\x.url", L"One\\Deep\\d.lnk", L"Two\\y.lnk"}},
    {"OtherFiles", {L"a.exe", L"b.txt", L"lnk", L"c.ln", L"url", L"d.lnk.bak"}, {}},
    {"FoldersNamedLikeShortcuts", // which are both
     {L"Tools.lnk\\X.lnk", L"Web.url\\Y.url"},
     {L"Tools.lnk", L"Web.url", L"Tools.lnk\\X.lnk", L"Web.url\\Y.url"}},
    {"DotsBlanksAndAnyScript",
     {L"Word 2013 (32.bit).lnk", L"x.url.lnk", L"\u30e1\u30fc\u30eb \u96fb\u5353.lnk",
      L"\u30a2\u30af\u30bb\u30b5\u30ea\\\U0001F600.url"},
     {L"Word 2013 (32.bit).lnk", L"x.url.lnk", L"\u30e1\u30fc\u30eb \u96fb\u5353.lnk",
      L"\u30a2\u30af\u30bb\u30b5\u30ea\\\U0001F600.url"}},
};

INSTANTIATE_TEST_SUITE_P(Holding, FolderWith, ::testing::ValuesIn(kFolders),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(DesktopDiscovery, ExtensionsMatchInAnyCaseAndAreNoPartOfTheName)
{
    MakeFiles({L"a.LNK", L"b.Url", L"x.url.lnk"});
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_THAT(HandedOver(), ElementsAre("a, " + Narrow(L"a.LNK"), "x.url, " + Narrow(L"x.url.lnk"),
                                          "b, " + Narrow(L"b.Url")));
}

TEST_F(DesktopDiscovery, RecordIsNamedAfterTheFileWithoutItsExtension)
{
    MakeFile(At(L"\u30e1\u30fc\u30eb.lnk"));
    EXPECT_EQ(Walk(), S_OK);
    const std::wstring file = At(L"list.xml");
    ASSERT_EQ(m_manager.m_AppNameList.Save(file.c_str()), S_OK);
    // Installed, not reserved and not dual mode, which the file leaves out.
    EXPECT_THAT(ReadFileBytes(file),
                ::testing::HasSubstr(ToUtf8(L"<DesktopApp DisplayName=\"\u30e1\u30fc\u30eb\" LnkFileName=\"" +
                                            At(L"\u30e1\u30fc\u30eb.lnk") + L"\" />")));
}

TEST_F(DesktopDiscovery, AShortcutIsAddedOnce)
{
    MakeFiles({L"A.lnk", L"Sub\\B.lnk"});
    std::wstring upperCase = At(L"A.lnk");
    CharUpperW(upperCase.data());
    ASSERT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"first", upperCase.c_str()), S_OK);
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(upperCase, At(L"Sub\\B.lnk")));
}

TEST_F(DesktopDiscovery, AShortcutThatIsGoneKeepsItsRecord)
{
    MakeFiles({L"A.lnk", L"B.lnk"});
    EXPECT_EQ(Walk(), S_OK);
    DeleteFileW(At(L"A.lnk").c_str());
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"A.lnk", L"B.lnk"});
}

TEST_F(DesktopDiscovery, AFileThatIsNothingButAnExtensionIsPassedOnWithoutAName)
{
    MakeFiles({L".lnk", L"B.lnk", L".url"});
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_THAT(HandedOver(),
                ElementsAre(", " + Narrow(L".lnk"), "B, " + Narrow(L"B.lnk"), ", " + Narrow(L".url")));
    // The catalogue takes no record without a name.
    ExpectFound({L"B.lnk"});
}

TEST_F(DesktopDiscovery, HiddenAndReadOnlyFoldersAreWalkedToo)
{
    MakeFiles({L"Hidden\\A.lnk", L"ReadOnly\\B.lnk", L"..dots\\C.lnk"});
    SetFileAttributesW(At(L"Hidden").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    SetFileAttributesW(At(L"ReadOnly").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Walk(), S_OK);
    ExpectFound({L"..dots\\C.lnk", L"Hidden\\A.lnk", L"ReadOnly\\B.lnk"});
    SetFileAttributesW(At(L"ReadOnly").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(DesktopDiscovery, NullAndEmptyFoldersAreRefusedBeforeTheExitEventIsAsked)
{
    SetEvent(m_manager.m_hExitEvent);
    EXPECT_EQ(m_manager.RefreshDesktopApps(nullptr), E_POINTER);
    EXPECT_EQ(m_manager.RefreshDesktopApps(L""), E_INVALIDARG);
    EXPECT_EQ(m_log.Lines(), Call("CQanhPackageManager::RefreshDesktopApps((null))", "(0x80004003)") +
                                 Call("CQanhPackageManager::RefreshDesktopApps()", "(0x80070057)"));
}

TEST_F(DesktopDiscovery, NothingIsDoneWhenTheExitEventIsSignalled)
{
    MakeFiles({L"A.lnk"});
    SetEvent(m_manager.m_hExitEvent);
    EXPECT_EQ(Walk(), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::RefreshDesktopApps(" + Root() + ") IN"));
}

TEST_F(DesktopDiscovery, AnExitEventThatCannotBeAskedIsNotSignalled)
{
    MakeFiles({L"A.lnk", L"Sub\\B.lnk"});
    CQanhPackageManager manager;
    EXPECT_EQ(manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Shortcuts(manager), ElementsAre(At(L"A.lnk"), At(L"Sub\\B.lnk")));
}

TEST_F(DesktopDiscovery, AddLinkFileToListTakesOneFolderAndOnePattern)
{
    MakeFiles({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    // Not even the exit event stops it.
    SetEvent(m_manager.m_hExitEvent);
    m_manager.AddLinkFileToList(m_folder.Path().c_str(), L"\\*.lnk");
    ExpectFound({L"A.lnk"});
    EXPECT_EQ(WalkLines(), Call("CQanhPackageManager::AddLinkFileToList(" + Root() + ")"));
    m_log.Clear();
    m_manager.AddLinkFileToList(At(L"Sub").c_str(), L"\\*.url");
    EXPECT_THAT(WalkLines(), ElementsAre("CQanhPackageManager::AddLinkFileToList(" + Narrow(L"Sub") + ") IN",
                                         Narrow(L"Sub") + "\\*.url Errcode = 2 "));
}

// A folder of exactly this many characters, made of folders below the base.
std::wstring FolderOfLength(std::wstring path, std::size_t length)
{
    while (length - path.size() > 101) {
        path += L"\\" + std::wstring(length - path.size() > 202 ? 100 : (length - path.size()) / 2 - 1, L'f');
    }
    path += L"\\" + std::wstring(length - path.size() - 1, L'f');
    MakeFolder(path);
    return path;
}

TEST_F(DesktopDiscovery, PathsOf260CharactersAreSkipped)
{
    const std::wstring folder = FolderOfLength(m_folder.Path(), 240);
    ASSERT_EQ(folder.size(), 240u);
    const std::wstring fits = folder + L"\\" + std::wstring(14, L'a') + L".lnk";
    const std::wstring tooLong = folder + L"\\" + std::wstring(15, L'b') + L".lnk";
    const std::wstring last = folder + L"\\c.lnk";
    ASSERT_EQ(fits.size(), 259u);
    for (const std::wstring& file : {fits, tooLong, last}) {
        MakeFile(file);
        ASSERT_TRUE(Exists(file));
    }
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(fits, last));
}

TEST_F(DesktopDiscovery, SubfoldersOf260CharactersAreSkipped)
{
    const std::wstring folder = FolderOfLength(m_folder.Path(), 240);
    const std::wstring tooLong = folder + L"\\" + std::wstring(19, L'a');
    ASSERT_EQ(tooLong.size(), 260u);
    MakeFile(tooLong + L"\\x.lnk");
    ASSERT_TRUE(Exists(tooLong + L"\\x.lnk"));
    MakeFile(folder + L"\\b\\y.lnk");
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), S_OK);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(folder + L"\\b\\y.lnk"));
}

TEST_F(DesktopDiscovery, FolderThatLeavesNoRoomForItsListingFails)
{
    const std::wstring folder = FolderOfLength(m_folder.Path(), 258);
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), E_FAIL);
    EXPECT_EQ(m_manager.RefreshDesktopApps(std::wstring(300, L'x').c_str()), E_FAIL);
    EXPECT_THAT(Shortcuts(m_manager), IsEmpty());
}

} // namespace
