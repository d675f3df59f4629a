#include "common/HostEnvironment.h"

#include "support/HostExecutable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

namespace {

using test::HostExecutable;

constexpr wchar_t kVariable[] = L"QANH_UNIT_TEST";

TEST(HostEnvironment, VariableIsRead)
{
    const test::ScopedEnvironment environment(kVariable, L"C:\\\u30e1\u30fc\u30eb \xd83d\xde00");
    wchar_t value[MAX_PATH];
    EXPECT_TRUE(ReadEnvironmentVariable(kVariable, value));
    EXPECT_STREQ(value, L"C:\\\u30e1\u30fc\u30eb \xd83d\xde00");
}

TEST(HostEnvironment, AbsentVariableIsNotRead)
{
    const test::ScopedEnvironment environment(kVariable, nullptr);
    wchar_t value[MAX_PATH] = L"before";
    EXPECT_FALSE(ReadEnvironmentVariable(kVariable, value));
}

// Of an empty variable and of an absent one the platform gives the same length; the last error tells them
// apart.
TEST(HostEnvironment, EmptyVariableIsReadWhateverTheLastErrorWas)
{
    const test::ScopedEnvironment environment(kVariable, L"");
    wchar_t value[MAX_PATH] = L"before";
    SetLastError(ERROR_ENVVAR_NOT_FOUND);
    EXPECT_TRUE(ReadEnvironmentVariable(kVariable, value));
    EXPECT_STREQ(value, L"");
}

TEST(HostEnvironment, VariableIsReadAsThePlatformHasItNow)
{
    const test::ScopedEnvironment environment(kVariable, L"first");
    wchar_t value[MAX_PATH];
    ASSERT_TRUE(ReadEnvironmentVariable(kVariable, value));
    // The C runtime does not see this.
    SetEnvironmentVariableW(kVariable, L"second");
    EXPECT_TRUE(ReadEnvironmentVariable(kVariable, value));
    EXPECT_STREQ(value, L"second");
}

TEST(HostEnvironment, VariableMayHave259Characters)
{
    wchar_t value[MAX_PATH];
    {
        const test::ScopedEnvironment environment(kVariable, std::wstring(259, L'x').c_str());
        EXPECT_TRUE(ReadEnvironmentVariable(kVariable, value));
        EXPECT_EQ(std::wstring(value), std::wstring(259, L'x'));
    }
    for (const std::size_t length : {260u, 261u, 1000u}) {
        const test::ScopedEnvironment environment(kVariable, std::wstring(length, L'x').c_str());
        EXPECT_FALSE(ReadEnvironmentVariable(kVariable, value)) << length;
    }
}

TEST(HostEnvironment, ExecutableIsTheProcessImage)
{
    wchar_t path[MAX_PATH];
    ASSERT_TRUE(GetHostExecutablePath(path));
    wchar_t expected[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(nullptr), expected, MAX_PATH);
    EXPECT_STREQ(path, expected);
}

TEST(HostEnvironment, ExecutableThatCannotBeHad)
{
    HostExecutable host(L"C:\\Tools\\Launcher.exe");
    host.FailNext(1);
    wchar_t path[MAX_PATH];
    EXPECT_FALSE(GetHostExecutablePath(path));
}

TEST(HostEnvironment, ExecutableWithALongPathIsCutAndTerminated)
{
    HostExecutable host(L"C:\\" + std::wstring(300, L'x') + L".exe");
    wchar_t path[MAX_PATH];
    ASSERT_TRUE(GetHostExecutablePath(path));
    EXPECT_EQ(std::wcslen(path), 259u);
    host.LeaveTerminatorOut();
    std::wmemset(path, L'?', MAX_PATH);
    ASSERT_TRUE(GetHostExecutablePath(path));
    EXPECT_EQ(path[MAX_PATH - 1], L'\0');
    EXPECT_EQ(std::wcslen(path), 259u);
}

// The host name with its backslash, and what became of the path.
struct Cut
{
    const wchar_t* path;
    const wchar_t* hostName;
    const wchar_t* rest;
};

class HostName : public ::testing::TestWithParam<Cut>
{
};

TEST_P(HostName, EndsAtItsFirstDot)
{
    wchar_t path[MAX_PATH];
    wcscpy_s(path, MAX_PATH, GetParam().path);
    const wchar_t* hostName = CutHostName(path);
    EXPECT_STREQ(hostName, GetParam().hostName);
    EXPECT_STREQ(path, GetParam().rest);
}

INSTANTIATE_TEST_SUITE_P(
    HostEnvironment, HostName,
    ::testing::Values(Cut{L"C:\\Tools\\Launcher.exe", L"\\Launcher", L"C:\\Tools\\Launcher"},
                      Cut{L"C:\\Tools\\a.b.exe", L"\\a", L"C:\\Tools\\a"},
                      Cut{L"C:\\Tools\\Launcher", L"\\Launcher", L"C:\\Tools\\Launcher"},
                      Cut{L"C:\\v1.2\\Launcher.exe", L"\\Launcher", L"C:\\v1.2\\Launcher"},
                      Cut{L"C:\\Tools\\a..exe", L"\\a", L"C:\\Tools\\a"},
                      Cut{L"C:\\Tools\\a.", L"\\a", L"C:\\Tools\\a"},
                      Cut{L"C:\\Tools\\.exe", L"\\", L"C:\\Tools\\"},
                      Cut{L"C:\\Tools\\", L"\\", L"C:\\Tools\\"},
                      Cut{L"\\\\server\\share\\x.exe", L"\\x", L"\\\\server\\share\\x"},
                      Cut{L"C:\\\u30e1.\u30fc.exe", L"\\\u30e1", L"C:\\\u30e1"},
                      Cut{L"Launcher.exe", L"Launcher", L"Launcher"}, Cut{L"", L"", L""}));

} // namespace
