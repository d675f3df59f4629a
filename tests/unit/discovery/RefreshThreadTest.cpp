// The refresh thread from its start to its end.

#include "common/DiagnosticLog.h"
#include "unit/discovery/ThreadRun.h"

namespace {

using namespace discovery_test;

TEST_F(RefreshThread, NeedsItsManagerWithAMutexAndWithout)
{
    EXPECT_EQ(Run(nullptr), 87u);
    EXPECT_THAT(m_log.Lines(), ElementsAre("CQanhPackageManager::RefreshThread IN",
                                           "CQanhPackageManager::RefreshThread OUT : nRet(0x80004003)"));
    EXPECT_THAT(m_steps, IsEmpty());
    ExpectMutexClosed();
    EXPECT_EQ(Run(nullptr), 87u);
}

class RefreshThreadVariable : public RefreshThread,
                              public ::testing::WithParamInterface<std::tuple<const wchar_t*, const wchar_t*>>
{
};

TEST_P(RefreshThreadVariable, IsNeededAndMustFit)
{
    const auto [name, value] = GetParam();
    const ScopedEnvironment environment(name, value);
    EXPECT_EQ(Run(), 2011u);
    EXPECT_EQ(m_log.Lines(), Lines{"CQanhPackageManager::RefreshThread IN"} + FolderLines());
    EXPECT_THAT(m_steps, IsEmpty());
    EXPECT_FALSE(IsExitEventSignalled());
    ExpectMutexClosed();
}

const std::wstring kTooLong = L"C:\\" + std::wstring(257, L'x');
INSTANTIATE_TEST_SUITE_P(Names, RefreshThreadVariable,
                         ::testing::Combine(::testing::Values(L"ALLUSERSPROFILE", L"APPDATA"),
                                            ::testing::Values(nullptr, kTooLong.c_str())));

TEST_F(RefreshThread, ReadsTheCommonVariableFirst)
{
    std::vector<std::wstring> names;
    const CapturingPatch<decltype(&GetEnvironmentVariableW)> patch(
        "GetEnvironmentVariableW", [&](const wchar_t* name, wchar_t*, DWORD) -> DWORD {
            names.push_back(name);
            SetLastError(ERROR_ENVVAR_NOT_FOUND);
            return 0;
        });
    EXPECT_EQ(Run(), 2011u);
    EXPECT_THAT(names, ElementsAre(L"LOCALAPPDATA", L"ALLUSERSPROFILE"));
}

TEST_F(RefreshThread, StoppedDuringTheFirstSecondEndsAtOnce)
{
    m_exitAt = L"wait 1000";
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, ElementsAre(L"wait 1000"));
    EXPECT_EQ(m_log.Lines(), StartLines());
    EXPECT_TRUE(IsExitEventSignalled());
    EXPECT_FALSE(Exists(CatalogFile()));
    ExpectMutexClosed();
}

TEST_F(RefreshThread, WithoutAnEventItDoesNoMoreThanMarkAndAskTheStore)
{
    WriteAndLoad(CatalogOf({L"C:\\none.lnk"}));
    CloseHandle(m_manager.m_hExitEvent);
    m_exitEvent = m_manager.m_hExitEvent = nullptr;
    m_waitAnswer = WAIT_FAILED;
    EXPECT_EQ(Run(), 0u);
    EXPECT_THAT(m_steps, ElementsAre(L"wait 1000", L"exists C:\\none.lnk", L"store", L"wait 180000"));
    EXPECT_EQ(ThreadLines(), StartLines() + kPassIn + kStore + kPassesOut);
    ExpectMutexClosed();
}

TEST_F(RefreshThread, PassesRepeatUntilTheEventIsSignalled)
{
    m_passes = 3;
    int pass = 0;
    m_onStep = [&](const std::wstring& step) {
        if (step == L"wait 180000" && ++pass == 1) {
            MakeFile(User() + L"\\New.lnk");
        }
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(m_waits, 4);
    EXPECT_THAT(Shortcuts(m_manager), ElementsAre(User() + L"\\New.lnk"));
    EXPECT_THAT(Saved(), HasSubstr("New"));
    EXPECT_EQ(Steps(L"store"), 3);
    EXPECT_EQ(Steps(L"save " + CatalogFile()), 3);
    // Found by the second pass, marked by the third.
    EXPECT_EQ(Steps(L"exists " + User() + L"\\New.lnk"), 1);
    EXPECT_EQ(Steps(L"wait 1000"), 1);
}

TEST_F(RefreshThread, MutexIsClosedOnce)
{
    DiagnosticLog::SetEnabled(false);
    m_passes = 3;
    const HANDLE mutex = CQanhPackageManager::m_hInstanceMutex;
    // After the first pass its value is another object's, so that closing it again would be seen.
    std::vector<HANDLE> inItsPlace;
    m_onStep = [&](const std::wstring& step) {
        while (step == L"wait 180000" && inItsPlace.size() < 100 &&
               (inItsPlace.empty() || inItsPlace.back() != mutex)) {
            inItsPlace.push_back(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        }
    };
    const ClosedHandles closed;
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(inItsPlace.back(), mutex);
    EXPECT_THAT(closed.Get(), Contains(mutex).Times(1));
    EXPECT_THAT(closed.Get(), Not(Contains(INVALID_HANDLE_VALUE)));
    for (const HANDLE event : inItsPlace) {
        CloseHandle(event);
    }
}

TEST_F(RefreshThread, WithoutAMutexNoneIsClosed)
{
    DiagnosticLog::SetEnabled(false);
    CloseHandle(CQanhPackageManager::m_hInstanceMutex);
    CQanhPackageManager::m_hInstanceMutex = nullptr;
    m_exitAt = L"store"; // what follows opens files and closes them
    const ClosedHandles closed;
    EXPECT_EQ(Run(), 0u);
    // The thread's own handle is the only one.
    EXPECT_EQ(closed.Get().size(), 1u);
}

TEST_F(RefreshThread, WaitsForTheIntervalOfTheSettings)
{
    const std::pair<std::optional<DWORD>, const wchar_t*> intervals[] = {
        {1, L"wait 60000"},
        {720, L"wait 43200000"},
        {71582, L"wait 4294920000"},
        {71583, L"wait 12704"}, // the product wraps
        {std::nullopt, L"wait 43200000"},
    };
    for (const auto& [minutes, wait] : intervals) {
        m_settings.DeleteValue(L"RefreshInterval");
        if (minutes) {
            m_settings.SetDword(L"RefreshInterval", *minutes);
        }
        m_waits = 0;
        EXPECT_EQ(Run(), 0u);
        EXPECT_EQ(m_steps.back(), wait);
    }
}

TEST_F(RefreshThread, ReadsTheIntervalOnceAtItsStart)
{
    m_passes = 2;
    m_onStep = [&](const std::wstring& step) {
        if (step == L"wait 1000") {
            m_settings.SetDword(L"RefreshInterval", 5);
        }
    };
    EXPECT_EQ(Run(), 0u);
    EXPECT_EQ(Steps(L"wait 180000"), 2);
}

TEST_F(RefreshThread, EndsWhenTheWaitFails)
{
    for (const DWORD answer : {DWORD{WAIT_FAILED}, DWORD{WAIT_ABANDONED}}) {
        m_steps.clear();
        m_waits = 0;
        m_waitAnswer = answer;
        SetEvent(m_exitEvent);
        m_onStep = [&](const std::wstring& step) {
            if (step == L"wait 1000") {
                ResetEvent(m_exitEvent);
            } else if (step == L"wait 180000") {
                SetEvent(m_exitEvent);
            }
        };
        EXPECT_EQ(Run(), 0u);
        EXPECT_EQ(Steps(L"store"), 1);
        EXPECT_FALSE(IsExitEventSignalled());
    }
}

// Whoever starts the thread takes the one reference to the module that it gives back at its end.
TEST_F(RefreshThread, GivesItsModuleBackOnceAndDoesNotTakeItAgain)
{
    std::vector<std::pair<DWORD, HMODULE>> asked; // flags and answer
    std::vector<HMODULE> given;
    const CapturingPatch<decltype(&GetModuleHandleExW)> get(
        "GetModuleHandleExW", [&](DWORD flags, const wchar_t* address, HMODULE* module) {
            const BOOL done = get.Original(flags, address, module);
            asked.emplace_back(flags, *module);
            return done;
        });
    const CapturingPatch<void(WINAPI*)(HMODULE, DWORD)> exit("FreeLibraryAndExitThread",
                                                             [&](HMODULE module, DWORD code) {
                                                                 given.push_back(module);
                                                                 exit.Original(module, code);
                                                             });
    EXPECT_EQ(Run(), 0u);
    const HMODULE self = GetModuleHandleW(nullptr);
    // The test's own question, for the thread that it starts, comes first.
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[1].first,
              DWORD{GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT});
    EXPECT_EQ(asked[1].second, self);
    EXPECT_THAT(given, ElementsAre(self));
}

TEST_F(RefreshThread, WaitsAboutASecondInRealTimeBeforeItsFirstPass)
{
    m_exitEvent = nullptr; // its waits are real ones
    m_exitAt = L"store";
    const ULONGLONG start = GetTickCount64();
    ULONGLONG begun = start;
    m_onStep = [&](const std::wstring& step) { begun = step == L"store" ? GetTickCount64() : begun; };
    EXPECT_EQ(Run(), 0u);
    EXPECT_GE(begun - start, 800u);
}

} // namespace
