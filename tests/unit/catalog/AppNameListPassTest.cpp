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
    EXPECT_EQ(package->AddApplication(
                  std::make_unique<CQanhMetroApp>(displayName, L"short mail", L"reading", L"mail reading")),
              S_OK);
    return package;
}

class AppNameListPass : public ::testing::Test
{
protected:
    AppNameListPass()
    {
        EXPECT_EQ(m_list.AddMetroPackage(Package(L"A", L"Hotmail")), S_OK);
        EXPECT_EQ(m_list.AddDesktopApp(L"Gmail", L"C:\\Gmail.lnk"), S_OK);
    }

    CQanhAppNameList m_list;
};

TEST_F(AppNameListPass, ALaunchIsAnsweredFromTheCatalogBeforeIt)
{
    const std::vector<std::wstring> before = Excluded(m_list);
    ASSERT_THAT(before, ElementsAre(L"Hotmail", L"short mail", L"Gmail"));
    m_list.BeginPass();
    EXPECT_EQ(m_list.AddMetroPackage(Package(L"B", L"Fastmail")), S_OK);
    EXPECT_EQ(m_list.AddDesktopApp(L"Airmail", L"C:\\Airmail.lnk"), S_OK);
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
    EXPECT_EQ(list.AddMetroPackage(std::move(package)), S_OK);
    auto readings = std::make_unique<CQanhPackage>(L"B", RecordVersion{}, TRUE, TRUE);
    EXPECT_EQ(
        readings->AddApplication(std::make_unique<CQanhMetroApp>(L"Display", L"Short", L"mail", L"mail too")),
        S_OK);
    EXPECT_EQ(list.AddMetroPackage(std::move(readings)), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Webmail", L"C:\\Webmail.lnk"), S_OK);
    EXPECT_EQ(list.AddDesktopApp(L"Mail", L"C:\\Mail.lnk"), S_OK);
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
    EXPECT_EQ(m_list.AddMetroPackage(Package(L"B", L"Fastmail")), S_OK);
    EXPECT_NE(m_list.GetPackage(L"B"), nullptr);
    m_list.EndPass();
}

} // namespace
