// qanh installed and qanh name: what is asked about Store packages.

#include "standin/Settings.h"
#include "tools/driving/DrivingTest.h"

namespace {

using namespace test;

constexpr wchar_t kCalendar[] = L"Vel.Calendar_1vel7kq0n3rta";
constexpr char kAsks[] =
    "qanh: asks the system's package manager for \"Vel.Calendar_1vel7kq0n3rta\"; changes nothing\n";
constexpr char kReads[] =
    "qanh: reads the display name out of the package \"Vel.Calendar_1vel7kq0n3rta\"; changes nothing\n";

class ToolInstalled : public DrivingTest
{
};
class ToolName : public DrivingTest
{
};

TEST_F(ToolInstalled, KnowsAPackageThatIsThere)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_EQ(Run(std::wstring(L"installed ") + kCalendar), (ToolResult{"yes\n", kAsks, 0}));
}

TEST_F(ToolInstalled, SaysNoOfAPackageThatIsNot)
{
    EXPECT_EQ(Run(std::wstring(L"installed ") + kCalendar), (ToolResult{"no\n", kAsks, 1}));
}

TEST_F(ToolInstalled, TakesAnApplicationUserModelId)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_EQ(Run(std::wstring(L"installed ") + kCalendar + L"!Calendar").output, "yes\n");
    EXPECT_EQ(Run(L"installed Vel.Nothing_1vel7kq0n3rta!Calendar").output, "no\n");
}

TEST_F(ToolInstalled, IsJson)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_EQ(
        Run(std::wstring(L"installed --json ") + kCalendar),
        (ToolResult{"{\n  \"ID\": \"Vel.Calendar_1vel7kq0n3rta\",\n  \"IsInstalled\": true\n}\n", kAsks, 0}));
}

TEST_F(ToolInstalled, TellsOfAPackageManagerThatFails)
{
    standin::SetSetting(standin::Setting::FailFindFamily, static_cast<DWORD>(E_FAIL));
    const ToolResult result = Run(std::wstring(L"installed ") + kCalendar);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.problems, EndsWith("qanh: the package manager does not answer: 0x80004005 E_FAIL (the "
                                          "system does not say why)\n"));
    EXPECT_EQ(result.status, 3u);
}

TEST_F(ToolInstalled, LeavesEverythingAsItIs)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    sandbox.Settings().SetDword(L"DebugLog", 1);
    (void)Run(std::wstring(L"installed ") + kCalendar);
    (void)Run(std::wstring(L"name ") + kCalendar);
    EXPECT_FALSE(Exists(sandbox.CatalogFolder(L"qanh")));
}

TEST_F(ToolInstalled, OnlyTellsWhatItWouldDo)
{
    DeleteFileW(InHostFolder(L"QanHelper.dll").c_str());
    EXPECT_EQ(Run(L"installed a_1 --dry-run"),
              (ToolResult{"asks the system's package manager for \"a_1\"; changes nothing\n", "", 0}));
    EXPECT_EQ(
        Run(L"installed a_1 --dry-run --json"),
        (ToolResult{"{\n  \"DryRun\": [\n    \"asks the system's package manager for \\\"a_1\\\"; changes "
                    "nothing\"\n  ]\n}\n",
                    "", 0}));
}

TEST_F(ToolInstalled, RefusesWrongUse)
{
    for (const wchar_t* commandLine : {L"installed", L"installed \"\"", L"installed a b", L"installed !App",
                                       L"installed a_1 --host Launcher", L"installed a_1 --catalogue a.xml",
                                       L"installed a_1 --log a.txt"}) {
        const ToolResult result = Run(commandLine);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.status, 2u) << ToUtf8(commandLine);
    }
}

TEST_F(ToolInstalled, TakesTheLibraryThatIsNamed)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    MoveFileW(InHostFolder(L"QanHelper.dll").c_str(), InHostFolder(L"Other.dll").c_str());
    EXPECT_EQ(Run(std::wstring(L"installed ") + kCalendar + L" --dll \"" + InHostFolder(L"Other.dll") + L"\"")
                  .output,
              "yes\n");
}

// A library of that name in the current folder, and in one of the PATH, is not taken.
TEST_F(ToolInstalled, TakesNoLibraryButTheOneBesideIt)
{
    const std::wstring library = InHostFolder(L"QanHelper.dll");
    const std::wstring elsewhere = sandbox.Folder() + L"\\QanHelper.dll";
    ASSERT_TRUE(MoveFileW(library.c_str(), elsewhere.c_str()));
    const ScopedEnvironment path(L"PATH", sandbox.Folder().c_str());
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    SetCurrentDirectoryW(sandbox.Folder().c_str());
    const ToolResult result = Run(std::wstring(L"installed ") + kCalendar);
    SetCurrentDirectoryW(before);
    EXPECT_EQ(result,
              (ToolResult{"",
                          "qanh: cannot load " + ToUtf8(library) +
                              ": 0x8007007E ERROR_MOD_NOT_FOUND (there is no such DLL, or one that it "
                              "needs)\n",
                          3}));
}

TEST_F(ToolInstalled, RefusesADllThatIsNotTheLibrary)
{
    const ToolResult result = Run(L"installed a_1 --dll \"" + BuildFolder() + L"\\StandInPlatform.dll\"");
    EXPECT_THAT(result.problems,
                HasSubstr("qanh: this is not the library, or one of another version: 0x8007007F "
                          "ERROR_PROC_NOT_FOUND (the DLL lacks a function)\n"));
    EXPECT_EQ(result.status, 3u);
}

TEST_F(ToolName, IsTheDisplayName)
{
    sandbox.AddSamplePackage(L"Vel.Calendar");
    EXPECT_EQ(Run(std::wstring(L"name ") + kCalendar), (ToolResult{"Calendar\n", kReads, 0}));
    EXPECT_EQ(Run(std::wstring(L"name --json ") + kCalendar),
              (ToolResult{"{\n  \"PackageFamilyName\": \"Vel.Calendar_1vel7kq0n3rta\",\n  \"Result\": "
                          "\"0x00000000\",\n  \"DisplayName\": \"Calendar\"\n}\n",
                          kReads, 0}));
}

TEST_F(ToolName, OfAPackageThatIsNotThereIsNone)
{
    EXPECT_EQ(
        Run(std::wstring(L"name ") + kCalendar),
        (ToolResult{"",
                    std::string(kReads) + "qanh: no package \"Vel.Calendar_1vel7kq0n3rta\" is installed, or "
                                          "the package manager cannot be reached\n",
                    1}));
    const ToolResult result = Run(std::wstring(L"name --json ") + kCalendar);
    EXPECT_THAT(result.output, HasSubstr("\"Result\": \"0xA0000001\",\n  \"DisplayName\": \"\"\n"));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolName, OfAPackageWithSeveralApplicationsIsNone)
{
    sandbox.AddSamplePackage(L"Vel.Post");
    const ToolResult result = Run(L"name Vel.Post_1vel7kq0n3rta");
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.problems, EndsWith("has several applications, and no name of its own\n"));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(ToolName, TellsOfAManifestThatCannotBeRead)
{
    sandbox.AddSamplePackage(L"Test.NoManifest");
    const ToolResult result = Run(L"name Test.NoManifest_9test0p6zjcqm");
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.problems,
                HasSubstr("qanh: cannot get the display name of \"Test.NoManifest_9test0p6zjcqm\" out of its "
                          "manifest: 0x80"));
    EXPECT_EQ(result.status, 3u);
}

TEST_F(ToolName, RefusesWrongUse)
{
    for (const wchar_t* commandLine : {L"name", L"name \"\"", L"name a b", L"name a_1 --host Launcher"}) {
        EXPECT_EQ(Run(commandLine).status, 2u) << ToUtf8(commandLine);
    }
}

} // namespace
