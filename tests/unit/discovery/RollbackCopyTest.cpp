// The copy that becomes the rollback file, while it is made.

#include "unit/discovery/RollbackFile.h"

namespace {

using namespace discovery_test;

using RollbackCopy = CatalogRollbackFile;

// Half a copy is for nobody's eyes.
TEST_F(RollbackCopy, CanBeReadByNobodyWhileItIsMade)
{
    WriteCatalog("old");
    DWORD error = ERROR_SUCCESS;
    {
        const FileSteps steps([&](const std::string& step) {
            if (step == "write AppNameList.xml.tmp") {
                const HANDLE file = CreateFileW(m_tmp.c_str(), GENERIC_READ,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
                error = GetLastError();
                EXPECT_EQ(file, INVALID_HANDLE_VALUE);
            }
            return DWORD{ERROR_SUCCESS};
        });
        EXPECT_EQ(m_rollback.Begin(), S_OK);
    }
    EXPECT_EQ(error, DWORD{ERROR_SHARING_VIOLATION});
}

// A disk that takes a part of what it is given is full: a cut copy must not pass for the catalogue.
TEST_F(RollbackCopy, ThatIsCutIsAFullDisk)
{
    WriteCatalog("old");
    {
        const CapturingPatch<decltype(&WriteFile)> patch(
            "WriteFile",
            [&](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
                return patch.Original(file, bytes, size - 1, written, overlapped);
            });
        EXPECT_EQ(m_rollback.Begin(), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    }
    ExpectOnlyCatalog("old");
}

} // namespace
