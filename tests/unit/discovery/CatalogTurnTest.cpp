// Who may save the catalogue file, or read it at a start, when several want to.

#include "discovery/CatalogTurn.h"

#include "support/ImportPatch.h"
#include "support/OtherProcess.h"

#include <gmock/gmock.h>

#include <string>
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
HRESULT AskOnAnotherThread(const wchar_t* path)
{
    HRESULT result = E_FAIL;
    std::thread([&] { result = CatalogTurn(path).Result(); }).join();
    return result;
}

// The waits end at once, with what they would have ended with, or with a time-out. One at a time.
class ImpatientWaits
{
public:
    ImpatientWaits()
        : m_patch("WaitForMultipleObjects",
                  [](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) -> DWORD {
                      s_current->longestWait = milliseconds;
                      return s_current->m_patch.Original()(count, handles, all, 0);
                  })
    {
        s_current = this;
    }

    DWORD longestWait = 0;

private:
    static inline ImpatientWaits* s_current = nullptr;
    test::ImportPatch<decltype(&WaitForMultipleObjects)> m_patch;
};

TEST(CatalogTurns, AreHadByOneAtATime)
{
    const ImpatientWaits waits;
    {
        const CatalogTurn turn(kFile);
        EXPECT_EQ(turn.Result(), S_OK);
        EXPECT_EQ(AskOnAnotherThread(kFile), kBusy);
        EXPECT_EQ(waits.longestWait, 5000u);
        EXPECT_EQ(AskOnAnotherThread(kFile), kBusy) << "asking takes nothing away";
    }
    EXPECT_EQ(AskOnAnotherThread(kFile), S_OK);
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

TEST(CatalogTurns, AreOfOneFileEach)
{
    const ImpatientWaits waits;
    const CatalogTurn turn(kFile);
    EXPECT_EQ(AskOnAnotherThread(L"C:\\Users\\me\\Vel\\QanHelper\\Other\\AppNameList.xml"), S_OK);
}

TEST(CatalogTurns, AreOfOneFileInWhateverCaseItsPathIsWritten)
{
    const ImpatientWaits waits;
    const CatalogTurn turn(kFile);
    EXPECT_EQ(AskOnAnotherThread(L"c:\\users\\ME\\Vel\\QanHelper\\LAUNCHER\\AppNameList.xml"), kBusy);
}

TEST(CatalogTurns, AreOfOneFileEachHoweverLongItsPathIs)
{
    const ImpatientWaits waits;
    const std::wstring folder = L"C:\\" + std::wstring(239, L'x');
    const std::wstring path = folder + L"1\\AppNameList.xml";
    ASSERT_EQ(path.size(), 259u);
    const CatalogTurn turn(path.c_str());
    EXPECT_EQ(turn.Result(), S_OK);
    EXPECT_EQ(AskOnAnotherThread(path.c_str()), kBusy);
    EXPECT_EQ(AskOnAnotherThread((folder + L"2\\AppNameList.xml").c_str()), S_OK);
}

TEST(CatalogTurns, AreWaitedForUntilTheOneBeforeIsOver)
{
    const HANDLE had = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    LONG isOver = 0;
    std::thread other([&] {
        const CatalogTurn turn(kFile);
        SetEvent(had);
        WaitForSingleObject(goOn, 20000);
        InterlockedExchange(&isOver, 1);
    });
    WaitForSingleObject(had, 20000);
    // It is let go when the wait has begun.
    static HANDLE s_goOn;
    static const test::ImportPatch<decltype(&WaitForMultipleObjects)>* s_patch;
    s_goOn = goOn;
    {
        const test::ImportPatch<decltype(&WaitForMultipleObjects)> patch(
            "WaitForMultipleObjects",
            [](DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) -> DWORD {
                SetEvent(s_goOn);
                return s_patch->Original()(count, handles, all, milliseconds);
            });
        s_patch = &patch;
        const CatalogTurn turn(kFile);
        EXPECT_EQ(turn.Result(), S_OK);
        EXPECT_EQ(InterlockedExchange(&isOver, 0), 1);
    }
    other.join();
    CloseHandle(had);
    CloseHandle(goOn);
}

TEST(CatalogTurns, AreNotWaitedForAnyLongerWhenTheExitEventIsSignalled)
{
    const HANDLE event = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    {
        const CatalogTurn turn(kFile);
        std::thread([&] {
            // In its own time: the event ends the wait.
            EXPECT_EQ(CatalogTurn(kFile, event).Result(), S_FALSE);
        }).join();
        ResetEvent(event);
        const ImpatientWaits waits;
        std::thread([&] { EXPECT_EQ(CatalogTurn(kFile, event).Result(), kBusy); }).join();
    }
    EXPECT_EQ(CatalogTurn(kFile, event).Result(), S_OK);
    CloseHandle(event);
}

TEST(CatalogTurns, OfADeadThreadAreOver)
{
    const CatalogTurn* turn = nullptr;
    const HANDLE had = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        turn = new CatalogTurn(kFile); // as if the thread were terminated in it
        SetEvent(had);
    });
    WaitForSingleObject(had, 20000);
    other.join();
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
    delete turn;
    CloseHandle(had);
}

TEST(CatalogTurns, AreTakenWithOtherProcessesUntilTheyDie)
{
    test::OtherProcess other(L"HaveTurn",
                             L"QANHELPERSAVE_C:/USERS/ME/VEL/QANHELPER/LAUNCHER/APPNAMELIST.XML");
    const ImpatientWaits waits;
    EXPECT_EQ(CatalogTurn(kFile).Result(), kBusy);
    ASSERT_EQ(other.End(), 0u);
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

// The error with which a mutex cannot be made.
class NoMutex
{
public:
    explicit NoMutex(DWORD error)
        : m_patch("CreateMutexW", [](SECURITY_ATTRIBUTES*, BOOL, const wchar_t*) -> HANDLE {
              SetLastError(s_error);
              return nullptr;
          })
    {
        s_error = error;
    }

private:
    static inline DWORD s_error = 0;
    test::ImportPatch<decltype(&CreateMutexW)> m_patch;
};

TEST(CatalogTurns, AreNotTakenWhereTheyCannotBe)
{
    const CatalogTurn turn(kFile);
    const NoMutex noMutex(ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(AskOnAnotherThread(kFile), S_OK);
}

// An elevated process has it, and this one may not open its mutex.
TEST(CatalogTurns, ThatMayNotBeWaitedForAreTaken)
{
    const NoMutex noMutex(ERROR_ACCESS_DENIED);
    EXPECT_EQ(CatalogTurn(kFile).Result(), kBusy);
}

TEST(CatalogTurns, WhoseWaitFailsAreNotTakenEither)
{
    const test::ImportPatch<decltype(&WaitForMultipleObjects)> patch(
        "WaitForMultipleObjects", [](DWORD, const HANDLE*, BOOL, DWORD) -> DWORD { return WAIT_FAILED; });
    EXPECT_EQ(CatalogTurn(kFile).Result(), S_OK);
}

TEST(CatalogTurns, OfSomebodyWhoTakesNoneAreNone)
{
    EXPECT_EQ(CatalogTurn().Result(), S_FALSE);
}

} // namespace
