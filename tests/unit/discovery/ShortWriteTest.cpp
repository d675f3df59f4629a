#include "discovery/CatalogRollback.h"

#include "support/ImportPatch.h"
#include "support/TemporaryFolder.h"
#include "support/Text.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

// A disk that takes a part of what it is given is full: a cut copy must not pass for the catalogue.
TEST(ShortWrite, LeavesNoRollbackAndIsAFullDisk)
{
    const test::TemporaryFolder folder;
    const std::wstring catalog = folder / L"AppNameList.xml";
    test::WriteFileBytes(catalog, "old");
    CatalogRollback rollback(catalog.c_str());
    static test::ImportPatch<decltype(&WriteFile)>* s_patch;
    HRESULT hr = E_UNEXPECTED;
    {
        test::ImportPatch<decltype(&WriteFile)> patch(
            "WriteFile",
            [](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) -> BOOL {
                return s_patch->Original()(file, bytes, size - 1, written, overlapped);
            });
        s_patch = &patch;
        hr = rollback.Begin();
    }
    EXPECT_EQ(hr, HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    EXPECT_FALSE(test::Exists(catalog + L".bak"));
    EXPECT_FALSE(test::Exists(catalog + L".tmp"));
    EXPECT_EQ(test::ReadFileBytes(catalog), "old");
}

} // namespace
