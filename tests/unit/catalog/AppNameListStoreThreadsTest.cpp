// What a launch sees while Store packages enter the catalogue.

#include "common/Apartment.h"
#include "support/LockWatch.h"
#include "unit/catalog/AppNameListStore.h"

#include <atomic>
#include <thread>

namespace {

using namespace store_test;

TEST_F(AppNameListStore, ALaunchNeverSeesANewOneHalfRead)
{
    WriteManifest({"App X", "ms-resource:Name", "App Z"});
    std::vector<std::wstring> meanwhile = {L"not asked"};
    // The resource is read when the first application is there already.
    m_resources.onLoad = [&] { meanwhile = Excluded(); };
    EXPECT_EQ(Add(), S_OK);
    EXPECT_THAT(meanwhile, IsEmpty());
    EXPECT_THAT(Excluded(), ElementsAre(L"app x", L"s app x", L"app z", L"s app z"));
}

TEST_F(AppNameListStore, ALaunchSeesTheOldNamesUntilTheNewOnesAreComplete)
{
    WriteManifest({"App X"});
    Add();
    WriteManifest({"App B", "ms-resource:Name", "App D"});
    m_package->facts.version.Major = 2;
    m_resources.texts[kNameSource] = L"app Y";
    std::vector<std::vector<std::wstring>> meanwhile;
    m_resources.onLoad = [&] { meanwhile.push_back(Excluded()); };
    EXPECT_EQ(Add(), S_FALSE);
    // Once in the check of the names, once in the reading of them.
    EXPECT_EQ(meanwhile.size(), 2u);
    for (const auto& names : meanwhile) {
        EXPECT_THAT(names, ElementsAre(L"app x", L"s app x"));
    }
    EXPECT_THAT(Excluded(), ElementsAre(L"app b", L"s app b", L"app Y", L"app d", L"s app d"));
}

TEST_F(AppNameListStore, ALaunchSeesAllNamesOfOneVersion)
{
    const std::vector<std::wstring> first = {L"app x", L"s app x", L"app y", L"s app y"};
    const std::vector<std::wstring> second = {L"app z", L"s app z"};
    std::vector<std::vector<std::wstring>> seen;
    {
        const AfterEachChange watch([&] { seen.push_back(Excluded()); });
        WriteManifest({"App X", "App Y"});
        EXPECT_EQ(Add(), S_OK);
        WriteManifest({"App Z"});
        m_package->facts.version.Major = 2;
        EXPECT_EQ(Add(), S_FALSE);
    }
    // A new package is one change; a changed one is two, the first of which no launch looks at.
    EXPECT_THAT(seen, ElementsAre(first, first, second));
}

TEST_F(AppNameListStore, LaunchesBesideChangesSeeOneVersionOrTheOther)
{
    constexpr int enough = 50;
    const std::vector<std::string> names[] = {{"App A1", "App A2"}, {"App B1", "App B2"}};
    const std::vector<std::wstring> excluded[] = {{L"app a1", L"s app a1", L"app a2", L"s app a2"},
                                                  {L"app b1", L"s app b1", L"app b2", L"s app b2"}};
    WriteManifest(names[0]);
    EXPECT_EQ(Add(), S_OK);
    std::atomic<bool> isOver = false;
    std::atomic<int> torn = 0;
    std::atomic<int> looks[] = {0, 0};
    std::thread launches([&] {
        while (!isOver) {
            const auto seen = Excluded();
            if (seen == excluded[0]) {
                ++looks[0];
            } else if (seen == excluded[1]) {
                ++looks[1];
            } else {
                ++torn;
            }
        }
    });
    const ULONGLONG end = GetTickCount64() + 60000;
    for (int change = 1; (looks[0] < enough || looks[1] < enough) && torn == 0 && GetTickCount64() < end;
         ++change) {
        ++m_package->facts.version.Major;
        WriteManifest(names[change % 2]);
        EXPECT_EQ(Add(), S_FALSE);
    }
    isOver = true;
    launches.join();
    EXPECT_EQ(torn, 0);
    EXPECT_GE(looks[0], enough);
    EXPECT_GE(looks[1], enough);
}

TEST_F(AppNameListStore, AChangeWaitsForALaunchAndIsSeenByTheNext)
{
    // A launch that is held up at the first package while the second one changes.
    RecordProbe::Events events;
    auto app = std::make_unique<RecordProbe>(L"held", &events);
    RecordProbe* const held = app.get();
    auto first = Package(L"first");
    ASSERT_EQ(first->AddApplication(std::move(app)), S_OK);
    ASSERT_EQ(m_list.AddMetroPackage(std::move(first)), S_OK);
    WriteManifest({"App X"});
    ASSERT_EQ(Add(), S_OK);
    WriteManifest({"App Y"});
    m_package->facts.version.Major = 2;

    const LockWatch locks(m_list);
    std::thread changing;
    held->onAsked = [&] {
        changing = std::thread([&] {
            // As the refresh thread does around a package.
            const WinRtApartment apartment(RoInitialize(RO_INIT_MULTITHREADED));
            EXPECT_EQ(Add(), S_FALSE);
        });
        EXPECT_TRUE(locks.WaitForBlocked());
    };
    EXPECT_THAT(Excluded(), ElementsAre(L"app x", L"s app x"));
    changing.join();
    held->onAsked = [] {};
    EXPECT_THAT(Excluded(), ElementsAre(L"app y", L"s app y"));
    m_list.Clear();
}

} // namespace
