#include "support/host/Measures.h"

#include "standin/ModulePath.h"

#include <windows.h>

#include <activation.h>
#include <malloc.h>
#include <roapi.h>
#include <tlhelp32.h>
#include <winstring.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// What the headers lack of the platform's list of all handles.
constexpr ULONG extendedHandleInformation = 64;
constexpr auto tooSmall = static_cast<LONG>(0xC0000004); // a status: the buffer does not hold the list
using QueryFunction = LONG(WINAPI*)(ULONG information, void* buffer, ULONG size, ULONG* needed);

struct HandleEntry
{
    void* object;
    ULONG_PTR processId;
    ULONG_PTR value;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct HandleList
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};

constexpr GUID activationFactory = {0x00000035, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr wchar_t packageManagerClass[] = L"Windows.Management.Deployment.PackageManager";

// The platform's table of all GDI objects, as it stands in each process on 64 bits.
constexpr std::size_t gdiTablePlace = 0xF8; // in the process's environment block
constexpr std::size_t gdiTableSize = 1 << 16;

struct GdiEntry
{
    ULONG64 object;
    USHORT processId;
    USHORT count;
    USHORT upper;
    BYTE type; // 0: the place is free
    BYTE flags;
    ULONG64 user;
};

[[noreturn]] void Fail(const std::string& what)
{
    throw std::runtime_error(what + ", error " + std::to_string(GetLastError()));
}

std::size_t BusyBytes(HANDLE heap)
{
    if (!HeapLock(heap)) {
        Fail("a heap cannot be locked");
    }
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
            bytes += entry.cbData;
        }
    }
    const bool isComplete = GetLastError() == ERROR_NO_MORE_ITEMS;
    HeapUnlock(heap);
    if (!isComplete || bytes == 0) {
        Fail("a heap cannot be walked");
    }
    return bytes;
}

} // namespace

namespace host {

std::size_t CountHandles()
{
    const auto query =
        standin::FunctionOf<QueryFunction>(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation");
    if (!query) {
        Fail("the platform lists no handles");
    }
    std::vector<BYTE> buffer(1 << 16);
    ULONG needed = 0;
    LONG status = 0;
    while ((status = query(extendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
                           &needed)) == tooSmall) {
        buffer.resize(buffer.size() * 2);
    }
    if (status != 0) {
        Fail("the platform lists no handles, status " + std::to_string(status));
    }
    const auto* list = reinterpret_cast<const HandleList*>(buffer.data());
    const HandleEntry* entry = list->entries;
    std::size_t count = 0;
    for (ULONG_PTR index = 0; index < list->count; ++index, ++entry) {
        if (entry->processId == GetCurrentProcessId()) {
            ++count;
        }
    }
    if (count == 0) {
        Fail("the platform lists no handles of this process");
    }
    return count;
}

std::size_t CountThreads()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        Fail("the platform lists no threads");
    }
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL found = Thread32First(snapshot, &entry); found; found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
            ++count;
        }
    }
    CloseHandle(snapshot);
    if (count == 0) {
        Fail("the platform lists no threads of this process");
    }
    return count;
}

std::size_t HeapBytes()
{
    const HANDLE processHeap = GetProcessHeap();
    const auto crtHeap = reinterpret_cast<HANDLE>(_get_heap_handle());
    return BusyBytes(processHeap) + (crtHeap == processHeap ? 0 : BusyBytes(crtHeap));
}

std::size_t CountGdiObjects()
{
    if (const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) {
        return counted;
    }
    const auto environmentBlock =
        standin::FunctionOf<const BYTE*(WINAPI*)()>(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb");
    if (!environmentBlock) {
        Fail("the platform counts no GDI objects");
    }
    const auto* table = *reinterpret_cast<const GdiEntry* const*>(environmentBlock() + gdiTablePlace);
    const auto count = static_cast<std::size_t>(std::count_if(
        table, table + (table ? gdiTableSize : 0), [](const GdiEntry& entry) { return entry.type != 0; }));
    if (count == 0) {
        Fail("the platform counts no GDI objects");
    }
    return count;
}

std::size_t CountWindows()
{
    std::size_t count = 0;
    const auto add = [](HWND window, LPARAM parameter) -> BOOL {
        DWORD processId = 0;
        GetWindowThreadProcessId(window, &processId);
        *reinterpret_cast<std::size_t*>(parameter) += processId == GetCurrentProcessId();
        return TRUE;
    };
    if (!EnumWindows(add, reinterpret_cast<LPARAM>(&count))) {
        Fail("the platform lists no windows");
    }
    for (HWND window = nullptr;
         (window = FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)) != nullptr;) {
        add(window, reinterpret_cast<LPARAM>(&count));
    }
    return count;
}

void LookUpPackageManagerClass()
{
    const HRESULT entered = RoInitialize(RO_INIT_SINGLETHREADED);
    HSTRING name = nullptr;
    WindowsCreateString(packageManagerClass, static_cast<UINT32>(std::size(packageManagerClass) - 1), &name);
    IActivationFactory* factory = nullptr;
    const HRESULT found = RoGetActivationFactory(name, activationFactory, reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(found)) {
        factory->Release();
    }
    WindowsDeleteString(name);
    if (SUCCEEDED(entered)) {
        RoUninitialize();
    }
    if (FAILED(found)) {
        throw std::runtime_error("the package manager's class cannot be had");
    }
}

} // namespace host
