#include "catalog/AppNameList.h"

#include "support/TemporaryFolder.h"
#include "unit/catalog/WriterProbe.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using ::testing::Contains;
using ::testing::Not;

// A list whose element cannot be begun has neither records nor an end; the other list is still written.
TEST(AppNameListListFails, OneListDoesNotKeepTheOtherFromTheFile)
{
    CQanhAppNameList list;
    ASSERT_EQ(list.AddMetroPackage(std::make_unique<CQanhPackage>(L"mail_1", RecordVersion(), FALSE, TRUE)),
              S_OK);
    ASSERT_EQ(list.AddDesktopApp(L"Word", L"C:\\Word.lnk"), S_OK);
    test::WriterProbe writer;
    writer.onCall = [&](const std::wstring& call) {
        if (call == L"start MetroApps") {
            writer.failingCall = writer.calls.size() - 1;
        }
    };
    const test::TemporaryFolder folder;
    const test::WriterInstead instead(&writer);
    EXPECT_EQ(list.Save((folder / L"list.xml").c_str()), S_OK);
    EXPECT_THAT(writer.calls, Contains(L"start MetroApps"));
    EXPECT_THAT(writer.calls, Not(Contains(L"start Package")));
    EXPECT_THAT(writer.calls, Contains(L"start DesktopApp"));
    EXPECT_THAT(writer.calls, Contains(L"end").Times(2)); // of the application and of its list
}

} // namespace
