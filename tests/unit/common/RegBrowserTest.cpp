// The browser's tile setting.

#include "common/Reg.h"

#include "support/Registry.h"
#include "support/TileLines.h"
#include "unit/common/RegCalls.h"

namespace {

using namespace test;

constexpr wchar_t kValue[] = L"ApplicationTileImmersiveActivation";
constexpr char kOpenForReading[] = "open user Software\\Microsoft\\Internet Explorer\\Main 0 0x20019";
constexpr char kOpenForWriting[] = "open user Software\\Microsoft\\Internet Explorer\\Main 0 0x20006";
constexpr char kSet[] = "set ApplicationTileImmersiveActivation type 4 size 4";

class RegBrowser : public ::testing::Test
{
protected:
    LSTATUS Get() { return CQanhReg::GetCurrentTileImmersiveActivation(&m_value, &m_type); }

    ScopedKey m_key{HKEY_CURRENT_USER, kBrowserKey};
    LogCapture m_log;
    DWORD m_value = 7;
    DWORD m_type = 7;
};

TEST_F(RegBrowser, ValueIsRead)
{
    m_key.SetDword(kValue, 0);
    {
        const RegCalls calls;
        EXPECT_EQ(Get(), ERROR_SUCCESS);
        EXPECT_EQ(calls.journal, (Lines{kOpenForReading,
                                        "query ApplicationTileImmersiveActivation type 4 size 4", "close"}));
    }
    EXPECT_EQ(m_value, 0u);
    EXPECT_EQ(m_type, static_cast<DWORD>(REG_DWORD));
    m_key.SetDword(kValue, 5);
    EXPECT_EQ(CQanhReg::GetCurrentTileImmersiveActivation(&m_value), ERROR_SUCCESS);
    EXPECT_EQ(m_value, 5u);
    EXPECT_EQ(m_log.Lines(), GetTileLines(0) + GetTileLines(5));
}

TEST_F(RegBrowser, AbsentValueAndAbsentKeyReadAsOne)
{
    EXPECT_EQ(Get(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(m_value, 1u);
    EXPECT_FALSE(m_key.Exists()) << "it is not made";
    m_key.Create();
    m_log.Clear();
    m_value = 7;
    EXPECT_EQ(Get(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(m_value, 1u);
    EXPECT_EQ(m_log.Lines(), GetTileLines(1));
}

TEST_F(RegBrowser, DeniedKeyGivesItsErrorAndOne)
{
    m_key.SetDword(kValue, 0);
    RegCalls calls;
    calls.open.answer = ERROR_ACCESS_DENIED;
    EXPECT_EQ(Get(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(m_value, 1u);
    EXPECT_EQ(calls.journal, Lines{kOpenForReading});
}

TEST_F(RegBrowser, LongerValueGivesTheQuerysError)
{
    m_key.SetBytes(kValue, REG_QWORD, {5, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(Get(), ERROR_MORE_DATA);
}

TEST_F(RegBrowser, ShortTextIsReadWithItsType)
{
    m_key.SetText(kValue, L"0");
    EXPECT_EQ(Get(), ERROR_SUCCESS);
    EXPECT_EQ(m_type, static_cast<DWORD>(REG_SZ));
}

TEST_F(RegBrowser, ValueIsSetAsADword)
{
    m_key.SetText(kValue, L"text before");
    {
        const RegCalls calls;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(0), 1);
        EXPECT_EQ(calls.journal, (Lines{kOpenForWriting, kSet, "close"}));
    }
    EXPECT_THAT(m_key.Dword(kValue), Optional(0u));
    EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 1);
    EXPECT_THAT(m_key.Dword(kValue), Optional(1u));
    EXPECT_EQ(m_log.Lines(), SetTileLines(0) + SetTileLines(1));
}

TEST_F(RegBrowser, SettingADeniedValueIsNotLogged)
{
    m_key.SetDword(kValue, 0);
    {
        RegCalls calls;
        calls.set.answer = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
        EXPECT_EQ(calls.journal, (Lines{kOpenForWriting, kSet, "close"}));
    }
    EXPECT_EQ(m_log.Lines(), SetTileLines(1));
}

TEST_F(RegBrowser, SettingUnderADeniedKey)
{
    m_key.SetDword(kValue, 0);
    {
        RegCalls calls;
        calls.open.answer = ERROR_ACCESS_DENIED;
        EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
        EXPECT_EQ(calls.journal, Lines{kOpenForWriting});
    }
    EXPECT_EQ(m_log.Lines(), SetTileLines(1, "(0)"));
}

TEST_F(RegBrowser, ValueIsDeletedAndTheKeyStays)
{
    m_key.SetDword(kValue, 1);
    m_key.SetDword(L"Other", 1);
    {
        const RegCalls calls;
        EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 1);
        EXPECT_EQ(calls.journal,
                  (Lines{kOpenForWriting, "delete ApplicationTileImmersiveActivation", "close"}));
    }
    EXPECT_FALSE(m_key.HasValue(kValue));
    EXPECT_TRUE(m_key.HasValue(L"Other"));
    EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 0) << "it is absent";
    EXPECT_EQ(m_log.Lines(), DeleteTileLines() + DeleteTileLines());
}

TEST_F(RegBrowser, SettingAndDeletingMakeNoKey)
{
    EXPECT_EQ(CQanhReg::SetCurrentTileImmersiveActivation(1), 0);
    EXPECT_EQ(CQanhReg::DeleteTileImmersiveActivation(), 0);
    EXPECT_FALSE(m_key.Exists());
    EXPECT_EQ(m_log.Lines(), SetTileLines(1, "(0)") + DeleteTileLines("(0)"));
}

} // namespace
