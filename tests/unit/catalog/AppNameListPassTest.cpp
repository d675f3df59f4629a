#include "catalog/AppNameList.h"
#include "catalog/ExcludeList.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;

std::vector<std::wstring> Excluded(const CQanhAppNameList& list, BOOL* pFound = nullptr)
{
    ExcludeList names;
    BOOL found = FALSE;
    EXPECT_EQ(list.GetExcludeAppNameList(L"mail", &names, pFound ? pFound : &found), S_OK);
    std::vector<std::wstring> result;
    for (const WideString& name : names) {
        result.emplace_back(name.c_str());
    }
    return result;
}

std::unique_ptr<CQanhPackage> Package(const wchar_t* familyName, const wchar_t* displayName)
{
    auto package = std::make_unique<CQanhPackage>(familyName, L"full", L"name", RecordVersion{1, 2, 3, 4});
    package->AddApplication(
        std::make_unique<CQanhMetroApp>(displayName, L"short mail", L"reading", L"mail reading"));
    return package;
}

class AppNameListPass : public ::testing::Test
{
protected:
    AppNameListPass()
    {
        m_list.AddMetroPackage(Package(L"A", L"Hotmail"));
        m_list.AddDesktopApp(L"Gmail", L"C:\\Gmail.lnk");
    }

    CQanhAppNameList m_list;
};

TEST_F(AppNameListPass, ALaunchIsAnsweredFromTheCatalogBeforeIt)
{
    const std::vector<std::wstring> before = Excluded(m_list);
    ASSERT_THAT(before, ElementsAre(L"Hotmail", L"short mail", L"Gmail"));
    m_list.BeginPass();
    m_list.AddMetroPackage(Package(L"B", L"Fastmail"));
    m_list.AddDesktopApp(L"Airmail", L"C:\\Airmail.lnk");
    m_list.SetPackagesInstalled({FALSE, TRUE});
    m_list.SetDesktopAppsInstalled({FALSE, TRUE});
    EXPECT_EQ(Excluded(m_list), before);
    m_list.EndPass();
    EXPECT_THAT(Excluded(m_list), ElementsAre(L"Fastmail", L"short mail", L"Airmail"));
}

TEST_F(AppNameListPass, EverythingThatCountsForAQueryIsTheSameDuringIt)
{
    CQanhAppNameList list;
    auto package = Package(L"A", L"x");
    package->IsInstalled = FALSE;
    list.AddMetroPackage(std::move(package));
    auto readings = std::make_unique<CQanhPackage>(L"B", RecordVersion{}, TRUE, TRUE);
    readings->AddApplication(std::make_unique<CQanhMetroApp>(L"Display", L"Short", L"mail", L"mail too"));
    list.AddMetroPackage(std::move(readings));
    list.AddDesktopApp(L"Webmail", L"C:\\Webmail.lnk");
    list.AddDesktopApp(L"Mail", L"C:\\Mail.lnk");
    list.SetDesktopAppsInstalled({TRUE, TRUE});
    BOOL foundBefore = FALSE;
    const std::vector<std::wstring> before = Excluded(list, &foundBefore);
    ASSERT_THAT(before, ElementsAre(L"Display", L"Short", L"Webmail"));
    ASSERT_EQ(foundBefore, 1);
    list.BeginPass();
    BOOL foundDuring = FALSE;
    EXPECT_EQ(Excluded(list, &foundDuring), before);
    EXPECT_EQ(foundDuring, 1);
    list.EndPass();
}

TEST_F(AppNameListPass, TheRefreshItselfSeesItsChangesAtOnce)
{
    m_list.BeginPass();
    ASSERT_EQ(m_list.AddDesktopApp(L"Airmail", L"C:\\Airmail.lnk"), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Airmail", L"C:\\Airmail.lnk"), S_FALSE);
    m_list.AddMetroPackage(Package(L"B", L"Fastmail"));
    EXPECT_NE(m_list.GetPackage(L"B"), nullptr);
    m_list.EndPass();
}

} // namespace
