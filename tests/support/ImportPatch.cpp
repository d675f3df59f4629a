#include "support/ImportPatch.h"

#include "standin/platform/ImportPatch.h"

#include <stdexcept>
#include <string>

namespace {

std::vector<DWORD> g_sleeps;
void (*g_onSleep)(DWORD) = nullptr;

void WINAPI RecordSleep(DWORD milliseconds)
{
    g_sleeps.push_back(milliseconds);
    if (g_onSleep) {
        g_onSleep(milliseconds);
    }
}

} // namespace

namespace test {

ImportPatchBase::ImportPatchBase(const char* function, void* replacement)
    : m_function(function),
      m_original(standin::PatchImport(GetModuleHandleW(nullptr), {nullptr, function, replacement}))
{
    if (!m_original) {
        throw std::logic_error(std::string("not imported by this program: ") + function);
    }
}

ImportPatchBase::~ImportPatchBase()
{
    standin::PatchImport(GetModuleHandleW(nullptr), {nullptr, m_function, m_original});
}

FakeSleep::FakeSleep() : m_patch("Sleep", RecordSleep)
{
    g_sleeps.clear();
    g_onSleep = nullptr;
}

FakeSleep::~FakeSleep()
{
    g_onSleep = nullptr;
}

const std::vector<DWORD>& FakeSleep::Calls() const
{
    return g_sleeps;
}

void FakeSleep::OnSleep(void (*action)(DWORD))
{
    g_onSleep = action;
}

} // namespace test
