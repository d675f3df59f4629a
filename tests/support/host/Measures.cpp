#include "support/host/Measures.h"

#include <windows.h>

#include <activation.h>
#include <malloc.h>
#include <roapi.h>
#include <tlhelp32.h>
#include <winstring.h>

#include <iterator>
#include <vector>

namespace {

// What the headers lack of the platform's list of all handles.
constexpr ULONG extendedHandleInformation = 64;
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

std::size_t BusyBytes(HANDLE heap)
{
    std::size_t bytes = 0;
    HeapLock(heap);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
            bytes += entry.cbData;
        }
    }
    HeapUnlock(heap);
    return bytes;
}

} // namespace

namespace host {

std::size_t CountHandles()
{
    const auto query = reinterpret_cast<QueryFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<BYTE> buffer(1 << 16);
    ULONG needed = 0;
    while (query(extendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &needed) != 0) {
        if (buffer.size() > (1u << 26)) {
            return 0;
        }
        buffer.resize(buffer.size() * 2);
    }
    const auto* list = reinterpret_cast<const HandleList*>(buffer.data());
    const HandleEntry* entry = list->entries;
    std::size_t count = 0;
    for (ULONG_PTR index = 0; index < list->count; ++index, ++entry) {
        if (entry->processId == GetCurrentProcessId()) {
            ++count;
        }
    }
    return count;
}

std::size_t CountThreads()
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL found = Thread32First(snapshot, &entry); found; found = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
            ++count;
        }
    }
    CloseHandle(snapshot);
    return count;
}

std::size_t HeapBytes()
{
    const HANDLE processHeap = GetProcessHeap();
    const auto crtHeap = reinterpret_cast<HANDLE>(_get_heap_handle());
    return BusyBytes(processHeap) + (crtHeap == processHeap ? 0 : BusyBytes(crtHeap));
}

void LookUpPackageManagerClass()
{
    const HRESULT entered = RoInitialize(RO_INIT_SINGLETHREADED);
    HSTRING name = nullptr;
    WindowsCreateString(packageManagerClass, static_cast<UINT32>(std::size(packageManagerClass) - 1), &name);
    IActivationFactory* factory = nullptr;
    if (SUCCEEDED(RoGetActivationFactory(name, activationFactory, reinterpret_cast<void**>(&factory)))) {
        factory->Release();
    }
    WindowsDeleteString(name);
    if (SUCCEEDED(entered)) {
        RoUninitialize();
    }
}

} // namespace host
