// How the library is brought up and taken down.

#include "unit/api/LifecycleHost.h"

namespace {

using namespace api_test;

TEST_F(LifecycleInShell, FirstCallBringsUpTheMonitorModeThenThePackageManager)
{
    HANDLE mutexBefore = INVALID_HANDLE_VALUE;
    m_shell.objects.At("CoCreateInstance", [&] { mutexBefore = CQanhPackageManager::m_hInstanceMutex; });
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(mutexBefore, nullptr);
    ExpectUp(1);
    EXPECT_EQ(m_shell.Created(), 1u);
    EXPECT_EQ(Outline(m_log.Lines()), Call("QanhInitialize", "(0) : s_nCount(1)", StartLines("0x00000000")));
}

TEST_F(LifecycleInShell, LastCallTakesDownThePackageManagerThenTheMonitorMode)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    HANDLE threadAtRelease = INVALID_HANDLE_VALUE;
    m_shell.objects.At("Release", [&] { threadAtRelease = s_PackageManager.m_hRefreshThread; });
    QanhFinalize();
    EXPECT_EQ(threadAtRelease, nullptr);
    ExpectDown();
    EXPECT_EQ(Outline(m_log.Lines()),
              Call("QanhFinalize", " : s_nCount(0)",
                   Call("CQanhPackageManager::Finalize") + Call("CQanhMonitorMode::Finalize")));
}

TEST_F(LifecycleInShell, SecondCallOnlyCountsAndReadsTheSetting)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 2);
    EXPECT_EQ(m_shell.Created(), 1u);
    EXPECT_EQ(m_log.Lines(), kSettingLines + Call("QanhInitialize", "(0) : s_nCount(2)"));
}

TEST_F(LifecycleInShell, StaysUpUntilEveryCallIsTakenBack)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    ASSERT_EQ(QanhInitialize(), S_OK);
    m_log.Clear();
    QanhFinalize();
    ExpectUp(1);
    EXPECT_EQ(m_log.Lines(), Call("QanhFinalize", " : s_nCount(1)"));
    QanhFinalize();
    ExpectDown();
}

TEST_F(LifecycleInShell, IsBroughtUpAgainAfterItWasDown)
{
    ASSERT_EQ(QanhInitialize(), S_OK);
    QanhFinalize();
    EXPECT_EQ(QanhInitialize(), S_OK);
    ExpectUp(1);
    EXPECT_EQ(m_shell.Created(), 2u);
}

TEST_F(LifecycleInShell, FinalizeTooManyDoesNothingAndDoesNotLeaveTheHostsApartment)
{
    DiagnosticLog::SetEnabled(true);
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [] { QanhFinalize(); }));
    QanhFinalize();
    EXPECT_EQ(s_nCount, 0);
    EXPECT_EQ(m_log.Lines(), Call("QanhFinalize", " : s_nCount(0)") + Call("QanhFinalize", " : s_nCount(0)"));
    EXPECT_EQ(QanhInitialize(), S_OK);
    EXPECT_EQ(s_nCount, 1);
}

TEST_F(LifecycleInShell, EntersAnApartmentAndLeavesItAtTheEnd)
{
    EXPECT_TRUE(KeepsApartment(Apartment::kNone, [] {
        EXPECT_EQ(QanhInitialize(), S_OK);
        EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded);
        QanhInitialize();
        QanhFinalize();
        EXPECT_EQ(ApartmentOfThread(), Apartment::kSingleThreaded);
        QanhFinalize();
    }));
    EXPECT_TRUE(KeepsApartment(Apartment::kSingleThreaded, [] {
        EXPECT_EQ(QanhInitialize(), S_OK);
        QanhFinalize();
    }));
}

} // namespace
