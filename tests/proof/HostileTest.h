#pragma once

#include "proof/Hosts.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace proof {

using Names = std::vector<std::string>;

// What QanhFinalize may take by its rules: 10 s for the first pass, 30 s and 3 s for a thread that hangs.
inline constexpr DWORD longestStop = 60000; // milliseconds, on a machine that is busy

// A file of this program's, for reading and writing.
class ScopedFile
{
public:
    ScopedFile(const std::wstring& path, DWORD sharing, DWORD disposition)
        : m_file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, sharing, nullptr, disposition, 0,
                             nullptr))
    {
        EXPECT_NE(m_file, INVALID_HANDLE_VALUE) << "error " << GetLastError();
    }
    ~ScopedFile() { CloseHandle(m_file); }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    void Write(const std::string& text)
    {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(m_file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    }
    // Zeros behind what has been written.
    void EnlargeTo(LONGLONG size)
    {
        LARGE_INTEGER end;
        end.QuadPart = size;
        EXPECT_TRUE(SetFilePointerEx(m_file, end, nullptr, FILE_BEGIN) && SetEndOfFile(m_file));
    }

private:
    HANDLE m_file;
};

// A machine with something on it that nobody would choose, and a host that is to get along with it.
class HostileTest : public testing::Test
{
protected:
    HostileTest() { m_sandbox.Settings().DeleteValue(L"DebugLog"); }

    // A shortcut that no pass finds, as a record that only the file knows.
    std::string Kept(const std::string& name)
    {
        const std::wstring path = m_sandbox.Folder() + L"\\kept\\x.lnk";
        test::MakeFile(path);
        return DesktopRecord(name, test::ToUtf8(path), true);
    }

    void WriteCatalog(const std::string& text) const
    {
        test::MakeFolder(m_sandbox.CatalogFolder());
        test::WriteFileBytes(m_sandbox.CatalogFile(), text);
    }

    // A host that has loaded, and begins its first pass with "go".
    std::unique_ptr<test::HostProcess> Start(const char* figure = nullptr)
    {
        auto host = std::make_unique<test::HostProcess>(m_sandbox);
        host->Do("pane");
        host->Do("hold");
        const double milliseconds = Time([&] { EXPECT_EQ(host->Command("init", 600000), ok); });
        if (figure) {
            Figure(figure, milliseconds, "ms");
        }
        return host;
    }

    static double Time(const std::function<void()>& action)
    {
        const ULONGLONG begin = GetTickCount64();
        action();
        return static_cast<double>(GetTickCount64() - begin);
    }

    // By a file: the pipe to the host is made for short answers.
    std::string Query(test::HostProcess& host) const
    {
        const std::wstring file = m_sandbox.Folder() + L"\\query.txt";
        host.Do("queries\t1\tmail\t" + test::ToUtf8(file), 300000);
        std::string query = test::ReadFileBytes(file);
        query.pop_back();
        return query;
    }
    Names NamesOf(test::HostProcess& host) const { return NamesIn(Query(host)); }

    static double Pass(test::HostProcess& host, DWORD limit = 600000)
    {
        return Time([&] {
            host.Do("go");
            EXPECT_TRUE(test::WaitUntil([] { return !test::IsFirstPassRunning(); }, limit));
        });
    }

    static double Stop(test::HostProcess& host)
    {
        return Time([&] { host.Do("finalize", longestStop); });
    }

    // Its end is the usual one, and nothing is left in memory.
    static void ExpectWell(test::HostProcess& host)
    {
        EXPECT_FALSE(host.HasExitEvent());
        EXPECT_EQ(host.Command("unload"), "1");
        EXPECT_EQ(host.Command("in-memory"), "0");
        EXPECT_EQ(host.Exit(), 0u);
    }

    test::Sandbox m_sandbox;
};

} // namespace proof
