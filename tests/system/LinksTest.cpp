// Links in the places that the library reads and writes: it goes where they lead, with the rights of the
// host.
#include "standin/ModulePath.h"
#include "support/Text.h"
#include "system/HostProcess.h"
#include "system/StoreCatalog.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What leads back up. Long, so that few rounds of it fill a path.
constexpr wchar_t loop[] = L"\\a folder that leads back to where it is";

[[nodiscard]] bool IsLink(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Wine cannot make or remove such links, but it runs the programs of the system below, which can.
void RunBelow(const std::wstring& arguments, const std::wstring& path)
{
    using NameBelow = char*(CDECL*)(const wchar_t*);
    const auto nameBelow =
        standin::FunctionOf<NameBelow>(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    if (!nameBelow) {
        return;
    }
    char* const name = nameBelow(path.c_str());
    if (!name) {
        return;
    }
    std::wstring commandLine = arguments + L" \"" + test::FromUtf8(name) + L"\"";
    HeapFree(GetProcessHeap(), 0, name);
    const std::wstring program = L"Z:\\bin\\" + arguments.substr(0, arguments.find(L' '));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &startup, &process)) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
}

// A symbolic link to a folder, removed at the end of the scope; the folder stays. Throws std::runtime_error
// when it cannot be made.
class FolderLink
{
public:
    // The target may be relative to the folder that the link is in.
    FolderLink(std::wstring path, const std::wstring& target) : m_path(std::move(path))
    {
        CreateSymbolicLinkW(m_path.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
        if (IsLink(m_path)) {
            return;
        }
        std::wstring targetBelow = target;
        std::replace(targetBelow.begin(), targetBelow.end(), L'\\', L'/');
        RunBelow(L"ln -s \"" + targetBelow + L"\"", m_path);
        if (!test::WaitUntil([&] { return IsLink(m_path); }, 5000)) {
            throw std::runtime_error("cannot make the link " + test::ToUtf8(m_path));
        }
    }
    ~FolderLink() { Remove(); }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;

    void Remove()
    {
        if (IsLink(m_path) && !RemoveDirectoryW(m_path.c_str())) {
            RunBelow(L"rm", m_path);
            test::WaitUntil([&] { return !IsLink(m_path); }, 5000);
        }
    }

private:
    std::wstring m_path;
};

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
    const FolderLink made(link, L"..\\..\\..\\..\\..\\elsewhere");
    RunOnePass();
    EXPECT_EQ(Bytes(), test::CatalogWith("", Shortcut(link + L"\\A.lnk")));
}

TEST_F(Links, InTheStartMenuThatLeadBackUpAreWalkedUntilAPathIsFull)
{
    m_sandbox.AddCommonShortcut(L"A.lnk");
    FolderLink link(m_sandbox.CommonPrograms() + loop, L".");
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
