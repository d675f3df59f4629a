#include "support/HeapCheck.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>

namespace {

// With the system's heap checks on, the program ends at the test that damaged a heap: nothing is sure behind
// it.
class HeapCheckListener : public testing::EmptyTestEventListener
{
    void OnTestEnd(const testing::TestInfo&) override
    {
        if (test::AreHeapsChecked() && !test::AreHeapsSound()) {
            std::puts("a heap is damaged");
            std::fflush(nullptr);
            TerminateProcess(GetCurrentProcess(), 1);
        }
    }
};

// The framework owns it.
[[maybe_unused]] const bool g_listens = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new HeapCheckListener);
    return true;
}();

} // namespace
