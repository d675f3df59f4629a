#include "discovery/PackageManager.h"

#include "unit/discovery/Walk.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace walk_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(DesktopDiscovery, AFoldersShortcutsComeBeforeThoseOfItsSubfolders)
{
    MakeFiles({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"A.lnk"), At(L"B.url"), At(L"Sub\\C.lnk")));
    EXPECT_THAT(HandedOver(m_log), ElementsAre("A, " + Narrow(L"A.lnk"), "B, " + Narrow(L"B.url"),
                                               "C, " + Narrow(L"Sub\\C.lnk")));
    EXPECT_THAT(WalkLines(m_log), ElementsAre(kName + "(" + Root() + ") IN",            //
                                              kAddName + "(" + Root() + ") IN",         //
                                              kAddName + " OUT",                        //
                                              kAddName + "(" + Root() + ") IN",         //
                                              kAddName + " OUT",                        //
                                              kName + "(" + Narrow(L"Sub") + ") IN",    //
                                              kAddName + "(" + Narrow(L"Sub") + ") IN", //
                                              kAddName + " OUT",                        //
                                              kAddName + "(" + Narrow(L"Sub") + ") IN", //
                                              Narrow(L"Sub") + "\\*.url Errcode = 2 ",  //
                                              kName + " OUT(0x00000000)",               //
                                              kName + " OUT(0x00000000)"));
}

TEST_F(DesktopDiscovery, LinksComeBeforeInternetLinksAndTheWalkGoesDeepFirst)
{
    MakeFiles({L"a.url", L"z.lnk", L"One\\x.url", L"One\\Deep\\d.lnk", L"Two\\y.lnk"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"z.lnk"), At(L"a.url"), At(L"One\\x.url"),
                                              At(L"One\\Deep\\d.lnk"), At(L"Two\\y.lnk")));
}

TEST_F(DesktopDiscovery, OtherFilesAreLeftOut)
{
    MakeFiles({L"a.exe", L"b.txt", L"lnk", L"c.ln", L"url", L"d.lnk.bak"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), IsEmpty());
}

TEST_F(DesktopDiscovery, ExtensionsMatchInAnyCase)
{
    MakeFiles({L"a.LNK", L"b.Url"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(HandedOver(m_log), ElementsAre("a, " + Narrow(L"a.LNK"), "b, " + Narrow(L"b.Url")));
}

TEST_F(DesktopDiscovery, NamesMayHoldDotsBlanksAndAnyScript)
{
    const std::wstring japanese = L"\u30e1\u30fc\u30eb \u96fb\u5353.lnk";
    MakeFiles({L"Word 2013 (32.bit).lnk", L"x.url.lnk"});
    test::MakeFile(At(japanese));
    test::MakeFile(At(L"\u30a2\u30af\u30bb\u30b5\u30ea\\\U0001F600.url"));
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"Word 2013 (32.bit).lnk"), At(L"x.url.lnk"), At(japanese),
                                              At(L"\u30a2\u30af\u30bb\u30b5\u30ea\\\U0001F600.url")));
    EXPECT_EQ(HandedOver(m_log)[1], "x.url, " + Narrow(L"x.url.lnk"));
}

TEST_F(DesktopDiscovery, RecordIsNamedAfterTheFileWithoutItsExtension)
{
    test::MakeFile(At(L"\u30e1\u30fc\u30eb.lnk"));
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    const std::wstring file = At(L"list.xml");
    ASSERT_EQ(m_manager.m_AppNameList.Save(file.c_str()), S_OK);
    // Installed, not reserved and not dual mode, which the file leaves out.
    EXPECT_THAT(
        test::ReadFileBytes(file),
        ::testing::HasSubstr(test::ToUtf8(L"<DesktopApp DisplayName=\"\u30e1\u30fc\u30eb\" LnkFileName=\"" +
                                          At(L"\u30e1\u30fc\u30eb.lnk") + L"\" />")));
}

TEST_F(DesktopDiscovery, AShortcutIsAddedOnce)
{
    MakeFiles({L"A.lnk", L"Sub\\B.lnk"});
    std::wstring upperCase = At(L"A.lnk");
    CharUpperW(upperCase.data());
    ASSERT_EQ(m_manager.m_AppNameList.AddDesktopApp(L"first", upperCase.c_str()), S_OK);
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(upperCase, At(L"Sub\\B.lnk")));
}

TEST_F(DesktopDiscovery, AShortcutThatIsGoneKeepsItsRecord)
{
    MakeFiles({L"A.lnk", L"B.lnk"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    DeleteFileW(At(L"A.lnk").c_str());
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"A.lnk"), At(L"B.lnk")));
}

TEST_F(DesktopDiscovery, AFileThatIsNothingButAnExtensionIsPassedOnWithoutAName)
{
    MakeFiles({L".lnk", L"B.lnk", L".url"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(HandedOver(m_log),
                ElementsAre(", " + Narrow(L".lnk"), "B, " + Narrow(L"B.lnk"), ", " + Narrow(L".url")));
    // The catalogue takes no record without a name.
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"B.lnk")));
}

TEST_F(DesktopDiscovery, AFolderThatIsNamedLikeAShortcutIsBoth)
{
    MakeFiles({L"Tools.lnk\\X.lnk", L"Web.url\\Y.url"});
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"Tools.lnk"), At(L"Web.url"), At(L"Tools.lnk\\X.lnk"),
                                              At(L"Web.url\\Y.url")));
}

TEST_F(DesktopDiscovery, HiddenAndReadOnlyFoldersAreWalkedToo)
{
    MakeFiles({L"Hidden\\A.lnk", L"ReadOnly\\B.lnk", L"..dots\\C.lnk"});
    SetFileAttributesW(At(L"Hidden").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    SetFileAttributesW(At(L"ReadOnly").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager),
                ElementsAre(At(L"..dots\\C.lnk"), At(L"Hidden\\A.lnk"), At(L"ReadOnly\\B.lnk")));
    SetFileAttributesW(At(L"ReadOnly").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(DesktopDiscovery, AnEmptyFolderIsASuccess)
{
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(WalkLines(m_log), ElementsAre(kName + "(" + Root() + ") IN",    //
                                              kAddName + "(" + Root() + ") IN", //
                                              Root() + "\\*.lnk Errcode = 2 ",  //
                                              kAddName + "(" + Root() + ") IN", //
                                              Root() + "\\*.url Errcode = 2 ",  //
                                              kName + " OUT(0x00000000)"));
}

TEST_F(DesktopDiscovery, AMissingFolderFailsAfterItsShortcutsWereSearched)
{
    EXPECT_EQ(m_manager.RefreshDesktopApps(At(L"none").c_str()), E_FAIL);
    const std::string none = Narrow(L"none");
    EXPECT_THAT(WalkLines(m_log), ElementsAre(kName + "(" + none + ") IN",    //
                                              kAddName + "(" + none + ") IN", //
                                              none + "\\*.lnk Errcode = 3 ",  //
                                              kAddName + "(" + none + ") IN", //
                                              none + "\\*.url Errcode = 3 ",  //
                                              "Errcode = 3 "));
}

TEST_F(DesktopDiscovery, NullAndEmptyFoldersAreRefused)
{
    EXPECT_EQ(m_manager.RefreshDesktopApps(nullptr), E_POINTER);
    EXPECT_EQ(m_manager.RefreshDesktopApps(L""), E_INVALIDARG);
    EXPECT_THAT(m_log.Lines(), ElementsAre(kName + "((null)) IN", kName + " OUT(0x80004003)", //
                                           kName + "() IN", kName + " OUT(0x80070057)"));
}

TEST_F(DesktopDiscovery, ArgumentsAreCheckedBeforeTheExitEvent)
{
    SetEvent(m_manager.m_hExitEvent);
    EXPECT_EQ(m_manager.RefreshDesktopApps(nullptr), E_POINTER);
    EXPECT_EQ(m_manager.RefreshDesktopApps(L""), E_INVALIDARG);
}

TEST_F(DesktopDiscovery, NothingIsDoneWhenTheExitEventIsSignalled)
{
    MakeFiles({L"A.lnk"});
    SetEvent(m_manager.m_hExitEvent);
    EXPECT_EQ(m_manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), IsEmpty());
    EXPECT_THAT(m_log.Lines(), ElementsAre(kName + "(" + Root() + ") IN"));
}

TEST_F(DesktopDiscovery, AnExitEventThatCannotBeAskedIsNotSignalled)
{
    MakeFiles({L"A.lnk", L"Sub\\B.lnk"});
    CQanhPackageManager manager;
    EXPECT_EQ(manager.RefreshDesktopApps(m_folder.Path().c_str()), S_OK);
    EXPECT_THAT(Paths(manager), ElementsAre(At(L"A.lnk"), At(L"Sub\\B.lnk")));
}

TEST_F(DesktopDiscovery, AddLinkFileToListTakesOneFolderAndOnePattern)
{
    MakeFiles({L"A.lnk", L"B.url", L"Sub\\C.lnk"});
    // Not even the exit event stops it.
    SetEvent(m_manager.m_hExitEvent);
    m_manager.AddLinkFileToList(m_folder.Path().c_str(), L"\\*.lnk");
    EXPECT_THAT(Paths(m_manager), ElementsAre(At(L"A.lnk")));
    EXPECT_THAT(WalkLines(m_log), ElementsAre(kAddName + "(" + Root() + ") IN", kAddName + " OUT"));
    m_log.Clear();
    m_manager.AddLinkFileToList(At(L"Sub").c_str(), L"\\*.url");
    EXPECT_THAT(WalkLines(m_log), ElementsAre(kAddName + "(" + Narrow(L"Sub") + ") IN",
                                              Narrow(L"Sub") + "\\*.url Errcode = 2 "));
}

// A folder of exactly this many characters, made of folders below the base.
std::wstring FolderOfLength(std::wstring path, std::size_t length)
{
    while (length - path.size() > 101) {
        path += L"\\" + std::wstring(length - path.size() > 202 ? 100 : (length - path.size()) / 2 - 1, L'f');
    }
    path += L"\\" + std::wstring(length - path.size() - 1, L'f');
    test::MakeFolder(path);
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
        test::MakeFile(file);
        ASSERT_TRUE(test::Exists(file));
    }
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(fits, last));
}

TEST_F(DesktopDiscovery, SubfoldersOf260CharactersAreSkipped)
{
    const std::wstring folder = FolderOfLength(m_folder.Path(), 240);
    const std::wstring tooLong = folder + L"\\" + std::wstring(19, L'a');
    ASSERT_EQ(tooLong.size(), 260u);
    test::MakeFile(tooLong + L"\\x.lnk");
    ASSERT_TRUE(test::Exists(tooLong + L"\\x.lnk"));
    test::MakeFile(folder + L"\\b\\y.lnk");
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), S_OK);
    EXPECT_THAT(Paths(m_manager), ElementsAre(folder + L"\\b\\y.lnk"));
}

TEST_F(DesktopDiscovery, FolderThatLeavesNoRoomForItsListingFails)
{
    const std::wstring folder = FolderOfLength(m_folder.Path(), 258);
    EXPECT_EQ(m_manager.RefreshDesktopApps(folder.c_str()), E_FAIL);
    EXPECT_EQ(m_manager.RefreshDesktopApps(std::wstring(300, L'x').c_str()), E_FAIL);
    EXPECT_THAT(Paths(m_manager), IsEmpty());
}

} // namespace
