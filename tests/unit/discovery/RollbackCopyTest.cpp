#include "discovery/CatalogRollback.h"

#include "support/TemporaryFolder.h"
#include "support/Text.h"
#include "unit/discovery/FileSteps.h"

#include <gtest/gtest.h>

namespace {

// Half a copy is for nobody's eyes.
TEST(RollbackCopy, CanBeReadByNobodyWhileItIsMade)
{
    const test::TemporaryFolder folder;
    const std::wstring catalog = folder / L"AppNameList.xml";
    const std::wstring copy = catalog + L".tmp";
    test::WriteFileBytes(catalog, "old");
    CatalogRollback rollback(catalog.c_str());
    DWORD error = ERROR_SUCCESS;
    {
        const discovery_test::FileSteps steps([&](const std::string& step) {
            if (step == "write AppNameList.xml.tmp") {
                const HANDLE file = CreateFileW(copy.c_str(), GENERIC_READ,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
                error = GetLastError();
                EXPECT_EQ(file, INVALID_HANDLE_VALUE);
            }
            return DWORD{ERROR_SUCCESS};
        });
        EXPECT_EQ(rollback.Begin(), S_OK);
    }
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

} // namespace
