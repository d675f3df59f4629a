// The browser's tile setting.

#include "common/Reg.h"

#include "support/LogCapture.h"
#include "support/Registry.h"
#include "unit/common/RegCalls.h"

#include <gmock/gmock.h>

namespace {

using test::RegCalls;
using test::ScopedKey;
using ::testing::ElementsAre;
using ::testing::Optional;

constexpr wchar_t kValue[] = L"ApplicationTileImmersiveActivation";
constexpr char kOpenForReading[] = "open user Software\\Microsoft\\Internet Explorer\\Main 0 0x20019";
constexpr char kOpenForWriting[] = "open user Software\\Microsoft\\Internet Explorer\\Main 0 0x20006";

class RegBrowser : public ::testing::Test
{
protected:
    ScopedKey m_key{HKEY_CURRENT_USER, test::kBrowserKey};
    test::LogCapture m_log;
    DWORD m_value = 7;
    DWORD m_type = 7;
};

TEST_F(RegBrowser, ValueIsRead)
{
    m_key.SetDword(kValue, 0);
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_SUCCESS);
    EXPECT_EQ(m_value, 0u);
    EXPECT_EQ(m_type, static_cast<DWORD>(REG_DWORD));
    m_key.SetDword(kValue, 5);
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value), ERROR_SUCCESS);
    EXPECT_EQ(m_value, 5u);
    EXPECT_THAT(
        m_log.Lines(),
        ElementsAre("CQanhReg::GetCurrentTileImmersiveActivation IN",
                    "CQanhReg::GetCurrentTileImmersiveActivation OUT(*pdwTileImmersiveActivation = 0)",
                    "CQanhReg::GetCurrentTileImmersiveActivation IN",
                    "CQanhReg::GetCurrentTileImmersiveActivation OUT(*pdwTileImmersiveActivation = 5)"));
}

TEST_F(RegBrowser, ReadingOpensForReadingAndCloses)
{
    m_key.SetDword(kValue, 0);
    RegCalls calls;
    (void)CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type);
    EXPECT_THAT(
        calls.journal,
        ElementsAre(kOpenForReading, "query ApplicationTileImmersiveActivation type 4 size 4", "close"));
}

TEST_F(RegBrowser, AbsentValueReadsAsOne)
{
    m_key.Create();
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(m_value, 1u);
    EXPECT_THAT(
        m_log.Lines(),
        ElementsAre("CQanhReg::GetCurrentTileImmersiveActivation IN",
                    "CQanhReg::GetCurrentTileImmersiveActivation OUT(*pdwTileImmersiveActivation = 1)"));
}

TEST_F(RegBrowser, AbsentKeyReadsAsOneAndIsNotMade)
{
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(m_value, 1u);
    EXPECT_FALSE(m_key.Exists());
}

TEST_F(RegBrowser, DeniedKeyGivesItsErrorAndOne)
{
    m_key.SetDword(kValue, 0);
    RegCalls calls;
    calls.openResult = ERROR_ACCESS_DENIED;
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_ACCESS_DENIED);
    EXPECT_EQ(m_value, 1u);
    EXPECT_THAT(calls.journal, ElementsAre(kOpenForReading));
}

TEST_F(RegBrowser, LongerValueGivesTheQuerysError)
{
    m_key.SetBytes(kValue, REG_QWORD, {5, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_MORE_DATA);
}

TEST_F(RegBrowser, ShortTextIsReadWithItsType)
{
    m_key.SetText(kValue, L"0");
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type), ERROR_SUCCESS);
    EXPECT_EQ(m_type, static_cast<DWORD>(REG_SZ));
}

TEST_F(RegBrowser, ValueIsSetAsADword)
{
    m_key.SetText(kValue, L"text before");
    {
        RegCalls calls;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(0), 1);
        EXPECT_THAT(
            calls.journal,
            ElementsAre(kOpenForWriting, "set ApplicationTileImmersiveActivation type 4 size 4", "close"));
    }
    EXPECT_THAT(m_key.Dword(kValue), Optional(0u));
    EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 1);
    EXPECT_THAT(m_key.Dword(kValue), Optional(1u));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::SetCurrentTileImmersiveActivation(0) IN",
                                           "CQanhReg::SetCurrentTileImmersiveActivation OUT",
                                           "CQanhReg::SetCurrentTileImmersiveActivation(1) IN",
                                           "CQanhReg::SetCurrentTileImmersiveActivation OUT"));
}

TEST_F(RegBrowser, SettingMakesNoKey)
{
    EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
    EXPECT_FALSE(m_key.Exists());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::SetCurrentTileImmersiveActivation(1) IN",
                                           "CQanhReg::SetCurrentTileImmersiveActivation OUT(0)"));
}

TEST_F(RegBrowser, SettingADeniedValueIsNotLogged)
{
    m_key.SetDword(kValue, 0);
    {
        RegCalls calls;
        calls.setResult = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
        EXPECT_THAT(
            calls.journal,
            ElementsAre(kOpenForWriting, "set ApplicationTileImmersiveActivation type 4 size 4", "close"));
    }
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::SetCurrentTileImmersiveActivation(1) IN",
                                           "CQanhReg::SetCurrentTileImmersiveActivation OUT"));
}

TEST_F(RegBrowser, SettingUnderADeniedKey)
{
    m_key.SetDword(kValue, 0);
    {
        RegCalls calls;
        calls.openResult = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
        EXPECT_THAT(calls.journal, ElementsAre(kOpenForWriting));
    }
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::SetCurrentTileImmersiveActivation(1) IN",
                                           "CQanhReg::SetCurrentTileImmersiveActivation OUT(0)"));
}

TEST_F(RegBrowser, ValueIsDeletedAndTheKeyStays)
{
    m_key.SetDword(kValue, 1);
    m_key.SetDword(L"Other", 1);
    {
        RegCalls calls;
        EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 1);
        EXPECT_THAT(calls.journal,
                    ElementsAre(kOpenForWriting, "delete ApplicationTileImmersiveActivation", "close"));
    }
    EXPECT_FALSE(m_key.HasValue(kValue));
    EXPECT_TRUE(m_key.HasValue(L"Other"));
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::DeleteTileImmersiveActivation IN",
                                           "CQanhReg::DeleteTileImmersiveActivation OUT"));
}

TEST_F(RegBrowser, DeletingAnAbsentValue)
{
    m_key.Create();
    EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 0);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::DeleteTileImmersiveActivation IN",
                                           "CQanhReg::DeleteTileImmersiveActivation OUT"));
}

TEST_F(RegBrowser, DeletingMakesNoKey)
{
    EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 0);
    EXPECT_FALSE(m_key.Exists());
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhReg::DeleteTileImmersiveActivation IN",
                                           "CQanhReg::DeleteTileImmersiveActivation OUT(0)"));
}

} // namespace
