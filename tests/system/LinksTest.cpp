// Links in the places that the library reads and writes: it goes where they lead, with the rights of the
// host.
#include "support/FolderLink.h"
#include "support/Text.h"
#include "system/HostProcess.h"
#include "system/StoreCatalog.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What leads back up. Long, so that few rounds of it fill a path.
constexpr wchar_t loop[] = L"\\a folder that leads back to where it is";

class Links : public test::StoreCatalog
{
protected:
    // A second name of a file.
    static void MakeLink(const std::wstring& link, const std::wstring& target)
    {
        ASSERT_TRUE(CreateHardLinkW(link.c_str(), target.c_str(), nullptr));
    }

    std::string Shortcut(const std::wstring& path) const
    {
        return test::ShortcutElement("A", m_sandbox.WithPlaceholders(test::ToUtf8(path)));
    }
};

TEST_F(Links, InTheStartMenuToAnotherFolderAreWalked)
{
    const std::wstring elsewhere = m_sandbox.Folder() + L"\\elsewhere";
    test::MakeFile(elsewhere + L"\\A.lnk");
    test::MakeFolder(m_sandbox.CommonPrograms());
    const std::wstring link = m_sandbox.CommonPrograms() + L"\\link";
    const test::FolderLink made(link, L"..\\..\\..\\..\\..\\elsewhere");
    RunOnePass();
    EXPECT_EQ(Bytes(), test::CatalogWith("", Shortcut(link + L"\\A.lnk")));
}

TEST_F(Links, InTheStartMenuThatLeadBackUpAreWalkedUntilAPathIsFull)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    test::FolderLink link(m_sandbox.CommonPrograms() + loop, L".");
    std::string all;
    int rounds = 0;
    for (std::wstring folder = m_sandbox.CommonPrograms(); folder.size() + std::size(L"\\A.lnk") <= MAX_PATH;
         folder += loop) {
        all += Shortcut(folder + L"\\A.lnk");
        ++rounds;
    }
    ASSERT_GT(rounds, 2);
    RunOnePass();
    EXPECT_EQ(Bytes(), test::CatalogWith("", all));
    // Without the link their paths are gone.
    link.Remove();
    RunOnePass();
    EXPECT_EQ(Bytes(), test::CatalogWith("", Shortcut(m_sandbox.CommonPrograms() + L"\\A.lnk")));
}

TEST_F(Links, InThePlaceOfTheLogHaveTheLinesAppendedToWhereTheyLead)
{
    const std::wstring target = m_sandbox.Folder() + L"\\somebody's.txt";
    test::WriteFileBytes(target, "kept\r\n");
    test::MakeFolder(m_sandbox.CatalogFolder());
    MakeLink(m_sandbox.LogFile(), target);
    test::HostProcess host(m_sandbox);
    host.Command("init");
    host.Do("finalize");
    EXPECT_THAT(test::ReadFileBytes(target), StartsWith("kept\r\n["));
    EXPECT_THAT(test::ReadFileBytes(target), HasSubstr("]QanhFinalize OUT : s_nCount(0)\r\n"));
}

TEST_F(Links, InThePlaceOfTheCatalogueHaveWhatTheyLeadToOverwritten)
{
    const std::wstring target = m_sandbox.Folder() + L"\\somebody's.xml";
    test::WriteFileBytes(target, test::emptyCatalog);
    test::MakeFolder(m_sandbox.CatalogFolder());
    MakeLink(m_sandbox.CatalogFile(), target);
    m_sandbox.AddCommonShortcut(L"A.lnk");
    RunOnePass();
    EXPECT_EQ(m_sandbox.WithPlaceholders(test::ReadFileBytes(target)),
              test::CatalogWith("", Shortcut(m_sandbox.CommonPrograms() + L"\\A.lnk")));
}

// The copy that is made before a save takes the place of whatever has its name.
TEST_F(Links, InThePlaceOfTheCopyHaveWhatTheyLeadToOverwritten)
{
    const std::wstring target = m_sandbox.Folder() + L"\\somebody's.txt";
    test::WriteFileBytes(target, "lost");
    test::MakeFolder(m_sandbox.CatalogFolder());
    test::WriteFileBytes(m_sandbox.CatalogFile(), test::emptyCatalog);
    test::HostProcess host(m_sandbox);
    // The start deletes what a save has left; the pass does not begin before the link is there.
    host.Do("line-up");
    host.Command("init");
    MakeLink(m_sandbox.CatalogFile() + L".tmp", target);
    host.Do("open");
    test::WaitForFirstPass();
    EXPECT_EQ(test::ReadFileBytes(target), test::emptyCatalog);
}

} // namespace
