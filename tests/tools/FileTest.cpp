// A file that cannot be written to its end does not stay. No disk can be filled here, so this runs the tool's
// code in the test's own process, where the platform's call is replaced.

#include "qanh/File.h"
#include "qanh/Failure.h"
#include "support/ImportPatch.h"
#include "support/Test.h"

namespace {

using namespace test;

using WriteFunction = decltype(&WriteFile);
WriteFunction g_write = nullptr;
std::wstring g_path; // of the file that is written

BOOL WINAPI WriteHalf(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED*)
{
    return g_write(file, bytes, size / 2, written, nullptr);
}

BOOL WINAPI WriteHalfAndFail(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED*)
{
    g_write(file, bytes, size / 2, written, nullptr);
    EXPECT_TRUE(Exists(g_path));
    SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
}

HRESULT ResultOf(const std::wstring& path, WriteFunction replacement)
{
    const ImportPatch<WriteFunction> patch("WriteFile", replacement);
    g_write = patch.Original();
    g_path = path;
    try {
        WriteNewFile(path, L"text");
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what, L"cannot write " + path);
        return failure.result;
    }
    return S_OK;
}

TEST(ToolFile, DoesNotStayWhenItIsCutOff)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"report.html";
    EXPECT_EQ(ResultOf(path, WriteHalf), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(ResultOf(path, WriteHalfAndFail), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(Exists(path));
    // So the next try finds nothing in its way.
    WriteNewFile(path, L"text");
    EXPECT_EQ(ReadFileBytes(path), "text");
}

TEST(ToolFile, OfSomebodyElseStays)
{
    const TemporaryFolder folder;
    const std::wstring path = folder / L"report.html";
    WriteFileBytes(path, "another");
    EXPECT_EQ(ResultOf(path, WriteHalf), HRESULT_FROM_WIN32(ERROR_FILE_EXISTS));
    EXPECT_EQ(ReadFileBytes(path), "another");
}

} // namespace
