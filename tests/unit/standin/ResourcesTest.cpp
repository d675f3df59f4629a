#include "standin/store/Resources.h"

#include "standin/Settings.h"

#include <gtest/gtest.h>

#include <string>

using standin::FindResource;
using standin::ParseResourceSource;
using standin::ResolveText;
using standin::StorePackage;

namespace {

class StandInResources : public testing::Test
{
protected:
    StandInResources()
    {
        m_package.name = L"Vel.Post";
        m_package.ini = standin::Ini("[en-US]\n"
                                     "resources/AppName = Mail\n"
                                     "Post/Title = Post title\n"
                                     "resources/Post/Title2 = Second title\n"
                                     "[ja-JP]\n"
                                     "resources/AppName = Meeru\n");
        standin::SetText(standin::TextSetting::Language, L"");
    }
    ~StandInResources() override { standin::SetText(standin::TextSetting::Language, L""); }

    StorePackage m_package;
};

} // namespace

TEST(StandInResourceSource, NamesPackageNameAndKey)
{
    struct Case
    {
        const wchar_t* text;
        const wchar_t* fullName;
        const wchar_t* name;
        const wchar_t* key;
    };
    for (const Case& each : {
             Case{L"@{Vel.Post_1.0.0.0_x64__abc?ms-resource://Vel.Post/resources/appname}",
                  L"Vel.Post_1.0.0.0_x64__abc", L"Vel.Post", L"resources/appname"},
             Case{L"@{F? ms-resource://N/key}", L"F", L"N", L"key"}, // the blank does not count
             Case{L"@{F?ms-resource://N/}", L"F", L"N", L""},
             Case{L"@{F?ms-resource://N}", L"F", L"N", L""},
             Case{L"@{F?ms-resource:///resources/key}", L"F", L"", L"resources/key"},
         }) {
        SCOPED_TRACE(each.text);
        const auto source = ParseResourceSource(each.text);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->fullName, each.fullName);
        EXPECT_EQ(source->name, each.name);
        EXPECT_EQ(source->key, each.key);
    }
}

TEST(StandInResourceSource, OtherTextsAreNoReferences)
{
    for (const wchar_t* text : {L"", L"@", L"@{", L"@{}", L"text", L"@shell32.dll,-4097", L"@{F}",
                                L"@{F?other://N/key}", L"@{F?ms-resource:key}", L"@{F?ms-resource://N/key",
                                L" @{F?ms-resource://N/key}", L"ms-resource://N/key"}) {
        EXPECT_FALSE(ParseResourceSource(text)) << text;
    }
}

TEST_F(StandInResources, KeyIsFoundWhateverItsLetterCase)
{
    ASSERT_NE(FindResource(m_package, L"RESOURCES/appname"), nullptr);
    EXPECT_EQ(*FindResource(m_package, L"RESOURCES/appname"), L"Mail");
    EXPECT_EQ(FindResource(m_package, L"resources/nothing"), nullptr);
    EXPECT_EQ(FindResource(m_package, L"resources"), nullptr);
    EXPECT_EQ(FindResource(m_package, L""), nullptr);
}

TEST_F(StandInResources, ChosenLanguageGoesFirstAndEnglishStandsIn)
{
    ASSERT_TRUE(standin::SetText(standin::TextSetting::Language, L"ja-JP"));
    EXPECT_EQ(*FindResource(m_package, L"resources/appname"), L"Meeru");
    EXPECT_EQ(*FindResource(m_package, L"post/title"), L"Post title");
    ASSERT_TRUE(standin::SetText(standin::TextSetting::Language, L"xx-XX"));
    EXPECT_EQ(*FindResource(m_package, L"resources/appname"), L"Mail");
}

TEST_F(StandInResources, ReferencesOfAManifestGiveTheirTexts)
{
    EXPECT_EQ(ResolveText(m_package, L"ms-resource:AppName"), L"Mail");
    EXPECT_EQ(ResolveText(m_package, L"MS-RESOURCE:appname"), L"Mail");
    EXPECT_EQ(ResolveText(m_package, L"ms-resource:/Post/Title/"), L"Post title");
    EXPECT_EQ(ResolveText(m_package, L"ms-resource:Post/Title2"), L"Second title");
    EXPECT_EQ(ResolveText(m_package, L"ms-resource:///Resources/AppName"), L"Mail");
    EXPECT_EQ(ResolveText(m_package, L"ms-resource://vel.post/resources/appname"), L"Mail");
}

TEST_F(StandInResources, OtherValuesStayAsTheyAre)
{
    for (const wchar_t* value :
         {L"", L"Mail", L" ms-resource:AppName", L"ms-resource:", L"ms-resource:Nothing",
          L"ms-resource:///AppName", L"ms-resource://Other/resources/appname"}) {
        EXPECT_EQ(ResolveText(m_package, value), value);
    }
}

TEST_F(StandInResources, ApplicationWithoutADisplayNameIsCalledByItsId)
{
    standin::ManifestApplication application;
    application.values = {{L"Id", L"App"}};
    EXPECT_EQ(standin::DisplayName(m_package, application), L"App");
    application.values.push_back({L"DisplayName", L"ms-resource:AppName"});
    EXPECT_EQ(standin::DisplayName(m_package, application), L"Mail");
}
