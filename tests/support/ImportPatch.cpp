#include "support/ImportPatch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace {

// Calls visit for every slot of this program's import table that stands for the named function.
template <typename Visit> void ForEachImport(const char* function, Visit visit)
{
    auto* base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) {
        return;
    }
    for (auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         library->Name != 0; ++library) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        auto* slots = reinterpret_cast<void**>(base + library->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                continue;
            }
            const auto* import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0) {
                visit(slots);
            }
        }
    }
}

void WriteSlot(void** slot, void* value)
{
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = value;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}

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
{
    ForEachImport(function, [&](void** slot) {
        m_original = *slot;
        WriteSlot(slot, replacement);
        m_slots.push_back(slot);
    });
    if (m_slots.empty()) {
        throw std::logic_error(std::string("not imported by this program: ") + function);
    }
}

ImportPatchBase::~ImportPatchBase()
{
    for (void** slot : m_slots) {
        WriteSlot(slot, m_original);
    }
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
