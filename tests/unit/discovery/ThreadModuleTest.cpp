#include "unit/discovery/ThreadRun.h"

#include <vector>

namespace {

using ThreadModule = discovery_test::RefreshThread;

// What the thread asks about its module and gives back, noted in its own order.
struct Asked
{
    DWORD flags;
    HMODULE module;
};
std::vector<Asked> g_asked;
std::vector<HMODULE> g_given;

using ExitFunction = void(WINAPI*)(HMODULE, DWORD);

// Whoever starts the thread takes the one reference that it gives back at its end.
TEST_F(ThreadModule, IsGivenBackOnceAndNotTakenAgain)
{
    g_asked.clear();
    g_given.clear();
    static const test::ImportPatch<decltype(&GetModuleHandleExW)>* s_get;
    static const test::ImportPatch<ExitFunction>* s_exit;
    const test::ImportPatch<decltype(&GetModuleHandleExW)> get(
        "GetModuleHandleExW", [](DWORD flags, const wchar_t* address, HMODULE* module) -> BOOL {
            const BOOL done = s_get->Original()(flags, address, module);
            g_asked.push_back({flags, *module});
            return done;
        });
    const test::ImportPatch<ExitFunction> exit("FreeLibraryAndExitThread", [](HMODULE module, DWORD code) {
        g_given.push_back(module);
        s_exit->Original()(module, code);
    });
    s_get = &get;
    s_exit = &exit;
    EXPECT_EQ(Run(), 0u);
    const HMODULE self = GetModuleHandleW(nullptr);
    // The test's own question, for the thread that it starts, comes first.
    ASSERT_EQ(g_asked.size(), 2u);
    EXPECT_EQ(g_asked[1].flags, static_cast<DWORD>(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                   GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
    EXPECT_EQ(g_asked[1].module, self);
    EXPECT_EQ(g_given, std::vector<HMODULE>{self});
}

} // namespace
