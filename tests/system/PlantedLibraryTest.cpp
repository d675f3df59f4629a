// A DLL that somebody has put where the loader might look for one is not loaded on account of the library.
#include "support/Text.h"
#include "system/HostProcess.h"
#include "system/ImageFile.h"
#include "system/QueryFor.h"

#include <gmock/gmock.h>

#include <tlhelp32.h>

#include <cctype>
#include <set>

namespace {

using testing::Contains;
using testing::ElementsAre;

// The names of the DLLs that a program or DLL imports, in lower case.
std::set<std::string> Libraries(const wchar_t* image)
{
    std::set<std::string> names;
    for (const auto& [library, function] : test::ImageFile(test::BuildFolder() + L"\\" + image).Imports()) {
        names.insert(library);
    }
    return names;
}

std::wstring LowerCase(std::wstring text)
{
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

class PlantedLibrary : public testing::Test
{
protected:
    PlantedLibrary()
    {
        m_sandbox.AddSamplePackage(L"Vel.Calendar");
        m_sandbox.AddCommonShortcut(L"Big calendar.lnk");
    }

    // Files of these names; each is a DLL that can be loaded.
    static void Plant(const std::wstring& folder, const std::set<std::string>& names)
    {
        for (const std::string& name : names) {
            ASSERT_TRUE(CopyFileW((test::BuildFolder() + L"\\StandInPlatform.dll").c_str(),
                                  (folder + L"\\" + test::FromUtf8(name)).c_str(), FALSE));
        }
    }

    // What the host's process has loaded from the sandbox's folders.
    [[nodiscard]] std::set<std::string> Loaded(const test::HostProcess& host) const
    {
        const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, host.ProcessId());
        std::set<std::string> names;
        bool hasLibrary = false;
        MODULEENTRY32W entry{};
        entry.dwSize = sizeof entry;
        for (BOOL found = Module32FirstW(snapshot, &entry); found; found = Module32NextW(snapshot, &entry)) {
            const std::wstring path = LowerCase(entry.szExePath);
            if (path.starts_with(LowerCase(m_sandbox.Folder()))) {
                names.insert(test::ToUtf8(path.substr(m_sandbox.Folder().size())));
            }
            hasLibrary = hasLibrary || path.ends_with(L"\\xmllite.dll");
        }
        CloseHandle(snapshot);
        EXPECT_TRUE(hasLibrary) << "what the library imports must be somewhere";
        return names;
    }

    // Each way into the platform once: catalogue, packages, manifests, resources, activation.
    void Use(test::HostProcess& host)
    {
        host.InitializeAndPass();
        EXPECT_EQ(host.Command("display-name\tVel.Calendar_1vel7kq0n3rta"), "0x00000000\tCalendar");
        EXPECT_EQ(host.Command("activate\tNobody.App_0123456789abc!App\t(null)"), "0x80270254");
        EXPECT_EQ(test::QueryFor(m_sandbox, host, "Calendar"), R"("Calendar" NOT("Big calendar"))");
    }

    test::Sandbox m_sandbox;
};

TEST_F(PlantedLibrary, InTheCurrentFolderIsNotTaken)
{
    Plant(m_sandbox.Folder(), Libraries(L"QanHelper.dll"));
    test::HostProcess host(m_sandbox);
    Use(host);
    EXPECT_THAT(Loaded(host), ElementsAre("\\host\\qanhelper.dll", "\\host\\testhost.exe"));
}

// The one that Windows does not take from its own folder whatever stands beside the host.
TEST_F(PlantedLibrary, BesideTheHostIsNotTakenWhenTheHostLoadsStrictly)
{
    test::HostProcess host(m_sandbox, L"TestHost.exe", false);
    Plant(m_sandbox.HostFolder(), {"xmllite.dll"});
    host.Do("load-strictly");
    Use(host);
    EXPECT_THAT(Loaded(host), ElementsAre("\\host\\qanhelper.dll", "\\host\\testhost.exe"));
}

// The loader decides before the library runs. It takes the planted DLL, or finds that it lacks what the right
// one has.
TEST_F(PlantedLibrary, BesideTheHostIsTakenWhenTheHostDoesNot)
{
    test::HostProcess host(m_sandbox, L"TestHost.exe", false);
    Plant(m_sandbox.HostFolder(), {"xmllite.dll"});
    const std::string answer = host.Command("load");
    if (answer == "ok") {
        EXPECT_THAT(Loaded(host), Contains("\\host\\xmllite.dll"));
    } else {
        EXPECT_EQ(answer, "error\tnot loaded, error " + std::to_string(ERROR_PROC_NOT_FOUND));
        ASSERT_TRUE(DeleteFileW((m_sandbox.HostFolder() + L"\\xmllite.dll").c_str()));
        EXPECT_EQ(host.Command("load"), "ok");
    }
}

// The text of each DLL name that the library holds; what it does not name, it cannot load by name.
TEST_F(PlantedLibrary, TheLibraryNamesNoOther)
{
    const std::string bytes = test::ReadFileBytes(test::BuildFolder() + L"\\QanHelper.dll");
    std::set<std::string> names;
    const auto isNamed = [](unsigned char character) {
        return std::isalnum(character) || character == '-' || character == '.' || character == '_';
    };
    // As narrow text and, without every other byte, as wide text.
    for (const std::size_t width : {std::size_t{1}, std::size_t{2}}) {
        for (std::size_t offset = 0; offset < width; ++offset) {
            std::string name;
            for (std::size_t at = offset; at + width <= bytes.size(); at += width) {
                const bool isNarrow = width == 1 || bytes[at + 1] == '\0';
                if (isNarrow && isNamed(static_cast<unsigned char>(bytes[at]))) {
                    name += static_cast<char>(std::tolower(static_cast<unsigned char>(bytes[at])));
                    continue;
                }
                if (name.ends_with(".dll")) {
                    names.insert(name);
                }
                name.clear();
            }
        }
    }
    for (const std::string& imported : Libraries(L"QanHelper.dll")) {
        EXPECT_EQ(names.erase(imported), 1u) << imported;
    }
    EXPECT_THAT(names, ElementsAre("qanhelper.dll"));
}

} // namespace
