// How the package manager starts from a file that this library has saved, with a reader that ends as the
// platform's is documented to: the file's root is open, so its end is a failure.

#include "support/DocumentedReaderInstead.h"
#include "unit/discovery/Start.h"

namespace {

using namespace discovery_test;

class SavedFileStart : public PackageManagerStart
{
protected:
    SavedFileStart()
    {
        WriteCatalog(); // makes the folder
        CQanhAppNameList list;
        EXPECT_EQ(list.AddDesktopApp(L"a", L"C:\\a.lnk"), S_OK);
        EXPECT_EQ(list.AddDesktopApp(L"b", L"C:\\b.lnk"), S_OK);
        EXPECT_EQ(list.Save(CatalogFile().c_str()), S_OK);
    }
    void ExpectAllLoaded() const
    {
        EXPECT_THAT(m_log.Lines(), Contains("m_AppNameList.Load() failed. ErrCode = 0xC00CEE01 "));
        EXPECT_THAT(Shortcuts(m_manager), ElementsAre(L"C:\\a.lnk", L"C:\\b.lnk"));
    }

    const DocumentedReaderInstead m_reader;
};

TEST_F(SavedFileStart, OfTheOwnerHasEveryRecordAndSucceeds)
{
    EXPECT_EQ(m_manager.Initialize(), S_OK);
    ExpectAllLoaded();
}

TEST_F(SavedFileStart, OfAnotherProcessHasEveryRecordThoughItFails)
{
    HoldMutexElsewhere();
    const FakeSleep sleep([](DWORD) { LoseMutex(); }); // the owner's first pass ends
    EXPECT_EQ(m_manager.Initialize(), static_cast<HRESULT>(0xC00CEE01));
    ExpectAllLoaded();
    ExpectNotOwner();
}

} // namespace
