// Who may save the catalogue file, or read it at a start, when several want to.

#include "discovery/CatalogTurn.h"

#include "common/UniqueHandle.h"
#include "support/OtherProcess.h"
#include "unit/discovery/TurnWaits.h"

#include <thread>

namespace {

constexpr HRESULT kBusy = HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION);
constexpr wchar_t kFile[] = L"C:\\Users\\me\\Vel\\QanHelper\\Launcher\\AppNameList.xml";

// Another process that has the turn, which is a mutex of this name, until it is ended.
const test::Part g_haveTurn(L"HaveTurn", [](const test::Part::Context& context) {
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, context.Argument().c_str());
    context.ReadyUntilEnd();
    return mutex ? 0 : 1;
});

// What another thread is told when it asks for a turn.
HRESULT AskOnAnotherThread(const wchar_t* path, HANDLE exitEvent = nullptr)
{
    HRESULT result = E_FAIL;
    std::thread([&] { result = CatalogTurn(path, exitEvent).Result(); }).join();
    return result;
}

class CatalogTurns : public ::testing::Test
{
protected:
    CatalogTurns() { m_waits.isPatient = false; }

    discovery_test::TurnWaits m_waits;
};

TEST_F(CatalogTurns, AreHadByOneAtATime)
{
    {
        const CatalogTurn turn(kFile);
        EXPECT_EQ(turn.Result(), S_OK);
        EXPECT_EQ(AskOnAnotherThread(kFile), kBusy);
        EXPECT_EQ(m_waits.asked, 5000u);
        EXPECT_EQ(AskOnAnotherThread(kFile), kBusy) << "asking takes nothing away";
    }
    EXPECT_EQ(AskOnAnotherThread(kFile), S_OK);
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

TEST_F(CatalogTurns, AreOfOneFileEachInWhateverCaseItsPathIsWritten)
{
    const CatalogTurn turn(kFile);
    EXPECT_EQ(AskOnAnotherThread(L"C:\\Users\\me\\Vel\\QanHelper\\Other\\AppNameList.xml"), S_OK);
    EXPECT_EQ(AskOnAnotherThread(L"c:\\users\\ME\\Vel\\QanHelper\\LAUNCHER\\AppNameList.xml"), kBusy);
}

TEST_F(CatalogTurns, AreOfOneFileEachHoweverLongItsPathIs)
{
    const std::wstring folder = L"C:\\" + std::wstring(239, L'x');
    const std::wstring path = folder + L"1\\AppNameList.xml";
    ASSERT_EQ(path.size(), 259u);
    const CatalogTurn turn(path.c_str());
    EXPECT_EQ(turn.Result(), S_OK);
    EXPECT_EQ(AskOnAnotherThread(path.c_str()), kBusy);
    EXPECT_EQ(AskOnAnotherThread((folder + L"2\\AppNameList.xml").c_str()), S_OK);
}

TEST_F(CatalogTurns, AreWaitedForUntilTheOneBeforeIsOver)
{
    const UniqueHandle had(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    LONG isOver = 0;
    std::thread other([&] {
        const CatalogTurn turn(kFile);
        SetEvent(had.Get());
        WaitForSingleObject(goOn.Get(), 20000);
        InterlockedExchange(&isOver, 1);
    });
    WaitForSingleObject(had.Get(), 20000);
    m_waits.isPatient = true;
    // It is let go when the wait has begun.
    m_waits.onWait = [&goOn] { SetEvent(goOn.Get()); };
    {
        const CatalogTurn turn(kFile);
        EXPECT_EQ(turn.Result(), S_OK);
        EXPECT_EQ(InterlockedExchange(&isOver, 0), 1);
    }
    other.join();
}

TEST_F(CatalogTurns, AreNotWaitedForAnyLongerWhenTheExitEventIsSignalled)
{
    const UniqueHandle event(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    {
        const CatalogTurn turn(kFile);
        m_waits.isPatient = true; // the event ends the wait
        EXPECT_EQ(AskOnAnotherThread(kFile, event.Get()), S_FALSE);
        m_waits.isPatient = false;
        ResetEvent(event.Get());
        EXPECT_EQ(AskOnAnotherThread(kFile, event.Get()), kBusy);
    }
    EXPECT_EQ(CatalogTurn(kFile, event.Get()).Result(), S_OK);
}

TEST_F(CatalogTurns, OfADeadThreadAreOver)
{
    const CatalogTurn* turn = nullptr;
    const UniqueHandle had(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread other([&] {
        turn = new CatalogTurn(kFile); // as if the thread were terminated in it
        SetEvent(had.Get());
    });
    WaitForSingleObject(had.Get(), 20000);
    other.join();
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
    delete turn;
}

TEST_F(CatalogTurns, AreTakenWithOtherProcessesUntilTheyDie)
{
    m_waits.isPatient = true; // for the other process
    test::OtherProcess other(L"HaveTurn",
                             L"QANHELPERSAVE_C:/USERS/ME/VEL/QANHELPER/LAUNCHER/APPNAMELIST.XML");
    m_waits.isPatient = false;
    EXPECT_EQ(CatalogTurn(kFile).Result(), kBusy);
    ASSERT_EQ(other.End(), 0u);
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

// No mutex can be made, for this reason.
test::CapturingPatch<decltype(&CreateMutexW)> NoMutex(DWORD error)
{
    return {"CreateMutexW", [error](SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) {
                SetLastError(error);
                return nullptr;
            }};
}

TEST_F(CatalogTurns, AreNotTakenWhereTheyCannotBe)
{
    const CatalogTurn turn(kFile);
    const auto noMutex = NoMutex(ERROR_NOT_ENOUGH_MEMORY);
    m_waits.asked = 0;
    EXPECT_EQ(AskOnAnotherThread(kFile), S_OK);
    EXPECT_EQ(m_waits.asked, 0u) << "there is nothing to wait for";
}

// An elevated process has it, and this one may not open its mutex.
TEST_F(CatalogTurns, ThatMayNotBeWaitedForAreTaken)
{
    const auto noMutex = NoMutex(ERROR_ACCESS_DENIED);
    EXPECT_EQ(CatalogTurn(kFile).Result(), kBusy);
    EXPECT_EQ(m_waits.asked, 0u);
}

TEST_F(CatalogTurns, WhoseWaitFailsAreNotTakenEither)
{
    const test::ImportPatch<decltype(&WaitForMultipleObjects)> patch(
        "WaitForMultipleObjects", [](DWORD, const HANDLE*, BOOL, DWORD) -> DWORD { return WAIT_FAILED; });
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

TEST_F(CatalogTurns, OfSomebodyWhoTakesNoneAreNone)
{
    EXPECT_EQ(CatalogTurn().Result(), S_FALSE);
}

} // namespace
