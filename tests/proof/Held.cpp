#include "proof/Held.h"

#include <objbase.h>
#include <roapi.h>

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <utility>
#include <vector>

namespace {

using proof::Held;
using Kind = Held::Kind;

SRWLOCK g_lock = SRWLOCK_INIT;
// Each with the name of the function that gave it. Apartments and the clipboard are not told apart.
std::multimap<std::pair<Kind, const void*>, const char*> g_held;

std::atomic<std::size_t> g_freedBytes = 0;
std::atomic<std::size_t> g_lookUps = 0;
std::vector<DWORD> g_threadPlaces;

template <typename Value> Value Taken(Kind kind, Value value, const char* function)
{
    if (value && reinterpret_cast<HANDLE>(value) != INVALID_HANDLE_VALUE) {
        Held::Take(kind, reinterpret_cast<const void*>(value), function);
    }
    return value;
}

HRESULT Entered(HRESULT hr, const char* function)
{
    if (SUCCEEDED(hr)) {
        Held::Take(Kind::Apartment, nullptr, function);
    }
    return hr;
}

template <typename Function> void* Pointer(Function function)
{
    return reinterpret_cast<void*>(+function);
}

std::map<std::string, void*> MemoryFunctions()
{
    return {
        {"malloc",
         Pointer([](std::size_t size) { return Taken(Kind::Memory, std::malloc(size), "malloc"); })},
        {"calloc", Pointer([](std::size_t count, std::size_t size) {
             return Taken(Kind::Memory, std::calloc(count, size), "calloc");
         })},
        {"realloc", Pointer([](void* old, std::size_t size) {
             const ULONG_PTR oldValue = reinterpret_cast<ULONG_PTR>(old);
             void* block = std::realloc(old, size);
             if (block || size == 0) {
                 Held::GiveBack(Kind::Memory, reinterpret_cast<const void*>(oldValue));
             }
             return Taken(Kind::Memory, block, "realloc");
         })},
        {"_strdup", Pointer([](const char* text) { return Taken(Kind::Memory, _strdup(text), "_strdup"); })},
        {"_wcsdup",
         Pointer([](const wchar_t* text) { return Taken(Kind::Memory, _wcsdup(text), "_wcsdup"); })},
        {"free", Pointer([](void* block) {
             Held::GiveBack(Kind::Memory, block);
             g_freedBytes += block ? _msize(block) : 0;
             std::free(block);
         })},
        {"LocalAlloc", Pointer([](UINT flags, SIZE_T size) {
             return Taken(Kind::Memory, LocalAlloc(flags, size), "LocalAlloc");
         })},
        {"LocalFree", Pointer([](HLOCAL block) {
             Held::GiveBack(Kind::Memory, block);
             return LocalFree(block);
         })},
        {"GlobalAlloc", Pointer([](UINT flags, SIZE_T size) {
             return Taken(Kind::Memory, GlobalAlloc(flags, size), "GlobalAlloc");
         })},
        {"GlobalFree", Pointer([](HGLOBAL block) {
             Held::GiveBack(Kind::Memory, block);
             return GlobalFree(block);
         })},
    };
}

std::map<std::string, void*> HandleFunctions()
{
    return {
        {"CreateFileW",
         Pointer([](const wchar_t* path, DWORD access, DWORD sharing, SECURITY_ATTRIBUTES* security,
                    DWORD disposition, DWORD flags, HANDLE model) {
             return Taken(Kind::Handle,
                          CreateFileW(path, access, sharing, security, disposition, flags, model),
                          "CreateFileW");
         })},
        {"CreateEventW",
         Pointer([](SECURITY_ATTRIBUTES* security, BOOL manual, BOOL state, const wchar_t* name) {
             return Taken(Kind::Handle, CreateEventW(security, manual, state, name), "CreateEventW");
         })},
        {"CreateMutexW", Pointer([](SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
             return Taken(Kind::Handle, CreateMutexW(security, owned, name), "CreateMutexW");
         })},
        {"OpenMutexW", Pointer([](DWORD access, BOOL inherit, const wchar_t* name) {
             return Taken(Kind::Handle, OpenMutexW(access, inherit, name), "OpenMutexW");
         })},
        {"CloseHandle", Pointer([](HANDLE handle) {
             Held::GiveBack(Kind::Handle, handle);
             return CloseHandle(handle);
         })},
        {"FindFirstFileW", Pointer([](const wchar_t* path, WIN32_FIND_DATAW* found) {
             return Taken(Kind::Search, FindFirstFileW(path, found), "FindFirstFileW");
         })},
        {"FindClose", Pointer([](HANDLE search) {
             Held::GiveBack(Kind::Search, search);
             return FindClose(search);
         })},
        {"RegOpenKeyExW",
         Pointer([](HKEY hive, const wchar_t* path, DWORD options, REGSAM access, HKEY* key) {
             const LSTATUS status = RegOpenKeyExW(hive, path, options, access, key);
             if (status == ERROR_SUCCESS) {
                 Held::Take(Kind::Key, *key, "RegOpenKeyExW");
             }
             return status;
         })},
        {"RegCloseKey", Pointer([](HKEY key) {
             Held::GiveBack(Kind::Key, key);
             return RegCloseKey(key);
         })},
    };
}

std::map<std::string, void*> OtherFunctions()
{
    return {
        {"GetModuleHandleExW", Pointer([](DWORD flags, const wchar_t* name, HMODULE* module) {
             const BOOL found = GetModuleHandleExW(flags, name, module);
             if (found && (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0) {
                 Held::Take(Kind::Module, *module, "GetModuleHandleExW");
             }
             return found;
         })},
        {"TlsAlloc", Pointer([] {
             const DWORD place = TlsAlloc();
             AcquireSRWLockExclusive(&g_lock);
             g_threadPlaces.push_back(place);
             ReleaseSRWLockExclusive(&g_lock);
             return place;
         })},
        {"FreeLibrary", Pointer([](HMODULE module) {
             Held::GiveBack(Kind::Module, module);
             return FreeLibrary(module);
         })},
        {"FreeLibraryAndExitThread", Pointer([](HMODULE module, DWORD code) {
             Held::GiveBack(Kind::Module, module);
             FreeLibraryAndExitThread(module, code);
         })},
        {"CoInitialize",
         Pointer([](void* reserved) { return Entered(CoInitialize(reserved), "CoInitialize"); })},
        {"CoInitializeEx", Pointer([](void* reserved, DWORD kind) {
             return Entered(CoInitializeEx(reserved, kind), "CoInitializeEx");
         })},
        {"CoUninitialize", Pointer([] {
             Held::GiveBack(Kind::Apartment, nullptr);
             CoUninitialize();
         })},
        {"RoInitialize",
         Pointer([](RO_INIT_TYPE kind) { return Entered(RoInitialize(kind), "RoInitialize"); })},
        {"RoGetActivationFactory", Pointer([](HSTRING name, REFIID iid, void** factory) {
             ++g_lookUps;
             return RoGetActivationFactory(name, iid, factory);
         })},
        {"RoUninitialize", Pointer([] {
             Held::GiveBack(Kind::Apartment, nullptr);
             RoUninitialize();
         })},
    };
}

} // namespace

namespace proof {

std::map<std::string, void*> Held::Functions()
{
    std::map<std::string, void*> functions = MemoryFunctions();
    functions.merge(HandleFunctions());
    functions.merge(OtherFunctions());
    return functions;
}

void Held::Clear()
{
    g_held.clear();
    g_freedBytes = 0;
    g_lookUps = 0;
}

std::size_t Held::FreeThreadPlaces()
{
    const std::size_t count = g_threadPlaces.size();
    for (const DWORD place : g_threadPlaces) {
        TlsFree(place);
    }
    g_threadPlaces.clear();
    return count;
}

std::size_t Held::FreedBytes()
{
    return g_freedBytes;
}

std::size_t Held::LookUps()
{
    return g_lookUps;
}

std::string Held::Describe(bool isMemoryCounted)
{
    std::map<std::string, int> counts;
    AcquireSRWLockShared(&g_lock);
    for (const auto& [what, function] : g_held) {
        if (isMemoryCounted || what.first != Kind::Memory) {
            ++counts[function];
        }
    }
    ReleaseSRWLockShared(&g_lock);
    std::string text;
    for (const auto& [function, count] : counts) {
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " of " + function;
    }
    return text;
}

void Held::Take(Kind kind, const void* value, const char* function)
{
    const DWORD error = GetLastError();
    AcquireSRWLockExclusive(&g_lock);
    g_held.emplace(std::pair(kind, value), function);
    ReleaseSRWLockExclusive(&g_lock);
    SetLastError(error);
}

void Held::GiveBack(Kind kind, const void* value)
{
    const DWORD error = GetLastError();
    AcquireSRWLockExclusive(&g_lock);
    if (const auto found = g_held.find(std::pair(kind, value)); found != g_held.end()) {
        g_held.erase(found);
    }
    ReleaseSRWLockExclusive(&g_lock);
    SetLastError(error);
}

} // namespace proof
