#include "standin/platform/ImportPatch.h"

#include <psapi.h>

#include <cstddef>
#include <cstring>

namespace standin {

namespace {

constexpr DWORD mostModules = 1024; // more than any process here loads; further ones would stay unpatched

template <typename Type> Type* At(HMODULE module, DWORD offset) noexcept
{
    return reinterpret_cast<Type*>(reinterpret_cast<BYTE*>(module) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* ImportTable(HMODULE module) noexcept
{
    const auto* dosHeader = At<const IMAGE_DOS_HEADER>(module, 0);
    if (dosHeader->e_magic != IMAGE_DOS_SIGNATURE) {
        return nullptr;
    }
    const auto* headers = At<const IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dosHeader->e_lfanew));
    if (headers->Signature != IMAGE_NT_SIGNATURE ||
        headers->OptionalHeader.NumberOfRvaAndSizes <= IMAGE_DIRECTORY_ENTRY_IMPORT) {
        return nullptr;
    }
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return directory.VirtualAddress && directory.Size
               ? At<const IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress)
               : nullptr;
}

// An entry of a table. The tables of some modules are not aligned to their entries.
ULONGLONG Read(const BYTE* entry) noexcept
{
    ULONGLONG value = 0;
    std::memcpy(&value, entry, sizeof(value));
    return value;
}

void* PatchLibrary(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& library, const ImportPatch& patch) noexcept
{
    if (library.OriginalFirstThunk == 0) {
        return nullptr; // the names were not kept
    }
    void* old = nullptr;
    const auto* name = At<const BYTE>(module, library.OriginalFirstThunk);
    auto* slot = At<BYTE>(module, library.FirstThunk);
    for (; Read(name) != 0; name += sizeof(IMAGE_THUNK_DATA), slot += sizeof(IMAGE_THUNK_DATA)) {
        if (IMAGE_SNAP_BY_ORDINAL(Read(name))) {
            continue;
        }
        const auto* function =
            At<const char>(module, static_cast<DWORD>(Read(name)) + offsetof(IMAGE_IMPORT_BY_NAME, Name));
        if (std::strcmp(function, patch.function) == 0) {
            old = PatchSlot(slot, patch.replacement);
        }
    }
    return old;
}

} // namespace

void* PatchSlot(void* slot, void* replacement) noexcept
{
    const auto value = reinterpret_cast<LONG64>(replacement);
    const auto old = static_cast<LONG64>(Read(static_cast<const BYTE*>(slot)));
    DWORD protection = 0;
    if (old != value) {
        if (!VirtualProtect(slot, sizeof(value), PAGE_READWRITE, &protection)) {
            return nullptr;
        }
        InterlockedExchange64(reinterpret_cast<volatile LONG64*>(slot), value);
        VirtualProtect(slot, sizeof(value), protection, &protection);
    }
    return reinterpret_cast<void*>(old);
}

void* PatchImport(HMODULE module, const ImportPatch& patch) noexcept
{
    void* old = nullptr;
    const IMAGE_IMPORT_DESCRIPTOR* library = ImportTable(module);
    for (; library && library->Name != 0; ++library) {
        if (!patch.library || lstrcmpiA(At<const char>(module, library->Name), patch.library) == 0) {
            void* const found = PatchLibrary(module, *library, patch);
            old = found ? found : old;
        }
    }
    return old;
}

unsigned PatchImports(const ImportPatch& patch, HMODULE except) noexcept
{
    HMODULE modules[mostModules] = {};
    DWORD size = 0;
    if (!EnumProcessModules(GetCurrentProcess(), modules, sizeof(modules), &size)) {
        return 0;
    }
    unsigned changed = 0;
    const DWORD count =
        size / sizeof(HMODULE) < mostModules ? size / static_cast<DWORD>(sizeof(HMODULE)) : mostModules;
    for (DWORD index = 0; index < count; ++index) {
        // Another thread may be unloading it: hold it while its tables are read.
        HMODULE held = nullptr;
        if (modules[index] == except ||
            !GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                reinterpret_cast<LPCWSTR>(modules[index]), &held)) {
            continue;
        }
        const void* const old = PatchImport(held, patch);
        if (old && old != patch.replacement) {
            ++changed;
        }
        FreeLibrary(held);
    }
    return changed;
}

} // namespace standin
