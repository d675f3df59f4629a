#pragma once

#include "standin/ModulePath.h"
#include "unit/discovery/Pass.h"

namespace discovery_test {

// The refresh thread by itself, in the owner's state: it holds the instance mutex and its exit event is not
// signalled.
class RefreshThread : public Pass
{
protected:
    RefreshThread()
    {
        m_exitEvent = m_manager.m_hExitEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        CQanhPackageManager::m_hInstanceMutex = CreateMutexW(nullptr, FALSE, MutexName().c_str());
    }

    DWORD Run(void* manager)
    {
        // The thread gives the module back, which Initialize takes for it.
        HMODULE module = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<const wchar_t*>(&CQanhPackageManager::RefreshThread), &module);
        const UniqueHandle thread(
            CreateThread(nullptr, 0, CQanhPackageManager::RefreshThread, manager, 0, nullptr));
        ResumeThread(thread.Get());
        DWORD exitCode = STILL_ACTIVE;
        if (m_wait.Original(thread.Get(), 20000) == WAIT_OBJECT_0) {
            GetExitCodeThread(thread.Get(), &exitCode);
        }
        return exitCode;
    }
    DWORD Run() { return Run(&m_manager); }

    bool IsExitEventSignalled() const { return m_wait.Original(m_exitEvent, 0) == WAIT_OBJECT_0; }
    static void ExpectMutexClosed()
    {
        EXPECT_EQ(CQanhPackageManager::m_hInstanceMutex, nullptr);
        EXPECT_FALSE(MutexExists());
    }
    void WriteAndLoad(const std::string& xml)
    {
        test::WriteFileBytes(m_folder / L"start.xml", xml);
        ASSERT_EQ(m_manager.m_AppNameList.Load((m_folder / L"start.xml").c_str()), S_FALSE);
        m_log.Clear();
        m_steps.clear();
    }
    // How often a step was done.
    std::ptrdiff_t Steps(const std::wstring& step) const
    {
        return std::count(m_steps.begin(), m_steps.end(), step);
    }
    std::string Saved() const { return test::ReadFileBytes(CatalogFile()); }
    // The whole log of the thread, with these lines between the beginning of its pass and its end.
    void ExpectLog(const Lines& pass) const
    {
        EXPECT_EQ(ThreadLines(), StartLines() + kPassIn + pass + kPassesOut);
    }

    // Runs the thread; the request for memory that follows this step is not granted.
    void RunOutOfMemoryAfter(const std::wstring& step)
    {
        static bool s_failsNext;
        s_failsNext = false;
        // Patching itself allocates, before the patch knows the function that it stands in for.
        using Malloc = void* (*)(std::size_t);
        static const auto s_malloc = standin::FunctionOf<Malloc>(GetModuleHandleW(L"msvcrt.dll"), "malloc");
        const ImportPatch<Malloc> patch("malloc", [](std::size_t size) {
            return std::exchange(s_failsNext, false) ? nullptr : s_malloc(size);
        });
        m_onStep = [step](const std::wstring& reached) { s_failsNext = reached == step; };
        EXPECT_EQ(Run(), 0u);
        EXPECT_FALSE(s_failsNext);
    }
};

} // namespace discovery_test
