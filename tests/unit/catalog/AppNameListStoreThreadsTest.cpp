// What a launch sees while Store packages enter the catalogue.

#include "unit/catalog/AppNameListStore.h"

#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace store_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
    m_resources
        .texts[L"@{Contoso.Mail_1.2.3.4_x64__8wekyb3d8bbwe?ms-resource://Contoso.Mail/resources/name}"] =
        L"app Y";
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

TEST_F(AppNameListStore, LaunchesBesideChangesSeeOneVersionOrTheOther)
{
    WriteManifest({"App A1", "App A2"});
    Add();
    std::atomic<bool> isOver = false;
    std::atomic<int> torn = 0;
    std::atomic<int> looks = 0;
    std::thread launches([&] {
        while (!isOver) {
            const auto names = Excluded();
            const bool isWhole =
                names == std::vector<std::wstring>{L"app a1", L"s app a1", L"app a2", L"s app a2"} ||
                names == std::vector<std::wstring>{L"app b1", L"s app b1", L"app b2", L"s app b2"};
            torn += isWhole ? 0 : 1;
            ++looks;
        }
    });
    for (UINT16 change = 1; change <= 40 || looks < 40; ++change) {
        m_package->facts.version.Major = static_cast<UINT16>(change + 1);
        WriteManifest(change % 2 != 0 ? std::vector<std::string>{"App B1", "App B2"}
                                      : std::vector<std::string>{"App A1", "App A2"});
        EXPECT_EQ(Add(), S_FALSE);
    }
    isOver = true;
    launches.join();
    EXPECT_EQ(torn, 0);
}

} // namespace
