#include "common/HostEnvironment.h"

#include "support/HostExecutable.h"
#include "support/Test.h"
#include "support/Text.h"

#include <cwchar>

namespace {

using namespace test;

constexpr wchar_t kVariable[] = L"QANH_UNIT_TEST";

class HostEnvironment : public ::testing::Test
{
protected:
    bool Read() { return ReadEnvironmentVariable(kVariable, m_value); }
    // Of a variable with this value.
    bool ReadOf(const std::wstring& value)
    {
        const ScopedEnvironment environment(kVariable, value.c_str());
        return Read();
    }

    wchar_t m_value[MAX_PATH] = L"before";
};

TEST_F(HostEnvironment, VariableIsRead)
{
    EXPECT_TRUE(ReadOf(L"C:\\\u30e1\u30fc\u30eb \xd83d\xde00"));
    EXPECT_STREQ(m_value, L"C:\\\u30e1\u30fc\u30eb \xd83d\xde00");
}

TEST_F(HostEnvironment, AbsentVariableIsNotRead)
{
    const ScopedEnvironment environment(kVariable, nullptr);
    EXPECT_FALSE(Read());
}

// Of an empty variable and of an absent one the platform gives the same length; the last error tells them
// apart.
TEST_F(HostEnvironment, EmptyVariableIsReadWhateverTheLastErrorWas)
{
    const ScopedEnvironment environment(kVariable, L"");
    SetLastError(ERROR_ENVVAR_NOT_FOUND);
    EXPECT_TRUE(Read());
    EXPECT_STREQ(m_value, L"");
}

TEST_F(HostEnvironment, VariableIsReadAsThePlatformHasItNow)
{
    const ScopedEnvironment environment(kVariable, L"first");
    ASSERT_TRUE(Read());
    // The C runtime does not see this.
    SetEnvironmentVariableW(kVariable, L"second");
    EXPECT_TRUE(Read());
    EXPECT_STREQ(m_value, L"second");
}

TEST_F(HostEnvironment, VariableMayHave259Characters)
{
    EXPECT_TRUE(ReadOf(std::wstring(259, L'x')));
    EXPECT_EQ(std::wstring(m_value), std::wstring(259, L'x'));
    for (const std::size_t length : {260u, 261u, 1000u}) {
        EXPECT_FALSE(ReadOf(std::wstring(length, L'x'))) << length;
    }
}

TEST_F(HostEnvironment, ExecutableIsTheProcessImage)
{
    ASSERT_TRUE(GetHostExecutablePath(m_value));
    wchar_t expected[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(nullptr), expected, MAX_PATH);
    EXPECT_STREQ(m_value, expected);
}

TEST_F(HostEnvironment, ExecutableThatCannotBeHad)
{
    HostExecutable host(L"C:\\Tools\\Launcher.exe");
    host.FailNext(1);
    EXPECT_FALSE(GetHostExecutablePath(m_value));
}

TEST_F(HostEnvironment, ExecutableWithALongPathIsCutAndTerminated)
{
    HostExecutable host(L"C:\\" + std::wstring(300, L'x') + L".exe");
    ASSERT_TRUE(GetHostExecutablePath(m_value));
    EXPECT_EQ(std::wcslen(m_value), 259u);
    host.LeaveTerminatorOut();
    std::wmemset(m_value, L'?', MAX_PATH);
    ASSERT_TRUE(GetHostExecutablePath(m_value));
    EXPECT_EQ(m_value[MAX_PATH - 1], L'\0');
    EXPECT_EQ(std::wcslen(m_value), 259u);
}

TEST_F(HostEnvironment, HostNameEndsAtItsFirstDot)
{
    const struct
    {
        const wchar_t* whole;
        const wchar_t* hostName; // with its backslash
        const wchar_t* rest;     // what became of the path
    } rows[] = {
        {L"C:\\Tools\\Launcher.exe", L"\\Launcher", L"C:\\Tools\\Launcher"},
        {L"C:\\Tools\\a.b.exe", L"\\a", L"C:\\Tools\\a"},
        {L"C:\\Tools\\Launcher", L"\\Launcher", L"C:\\Tools\\Launcher"},
        {L"C:\\v1.2\\Launcher.exe", L"\\Launcher", L"C:\\v1.2\\Launcher"},
        {L"C:\\Tools\\a..exe", L"\\a", L"C:\\Tools\\a"},
        {L"C:\\Tools\\a.", L"\\a", L"C:\\Tools\\a"},
        {L"C:\\Tools\\.exe", L"\\", L"C:\\Tools\\"},
        {L"C:\\Tools\\", L"\\", L"C:\\Tools\\"},
        {L"\\\\server\\share\\x.exe", L"\\x", L"\\\\server\\share\\x"},
        {L"C:\\\u30e1.\u30fc.exe", L"\\\u30e1", L"C:\\\u30e1"},
        {L"Launcher.exe", L"Launcher", L"Launcher"},
        {L"", L"", L""},
    };
    for (const auto& [whole, hostName, rest] : rows) {
        wchar_t path[MAX_PATH];
        wcscpy_s(path, MAX_PATH, whole);
        EXPECT_STREQ(CutHostName(path), hostName) << test::ToUtf8(whole);
        EXPECT_STREQ(path, rest) << test::ToUtf8(whole);
    }
}

} // namespace
