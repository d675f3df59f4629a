#include "proof/PlatformFailures.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <sstream>

namespace {

using namespace proof;

constexpr ULONG_PTR kNoFile = static_cast<ULONG_PTR>(-1); // INVALID_HANDLE_VALUE
constexpr ULONG_PTR kNoNumber = 0xFFFFFFFF;               // INVALID_FILE_ATTRIBUTES, WAIT_FAILED, ...

std::string Hex(ULONG_PTR value)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(value));
    return text;
}

// Gives this result and this last error, and does nothing.
Failure Gives(ULONG_PTR result, DWORD error)
{
    return {"error " + std::to_string(error),
            [=](const GateCall&, const Import&) {
                SetLastError(error);
                return result;
            },
            std::nullopt};
}

// For each of the errors.
std::vector<Failure> Gives(ULONG_PTR result, std::initializer_list<DWORD> errors)
{
    std::vector<Failure> failures;
    for (const DWORD error : errors) {
        failures.push_back(Gives(result, error));
    }
    return failures;
}

// What gives a thing back does so, and fails all the same: what is held must not depend on its result.
std::vector<Failure> FailsAfterwards(ULONG_PTR result, DWORD error)
{
    return {{"error " + std::to_string(error),
             [=](const GateCall& call, const Import& import) {
                 using Function = ULONG_PTR(WINAPI*)(ULONG_PTR, ULONG_PTR, ULONG_PTR, ULONG_PTR);
                 reinterpret_cast<Function>(import.function)(call.arguments[0], call.arguments[1],
                                                             call.arguments[2], call.arguments[3]);
                 SetLastError(error);
                 return result;
             },
             std::nullopt}};
}

// The error is the result.
std::vector<Failure> Statuses(std::initializer_list<DWORD> statuses)
{
    std::vector<Failure> failures;
    for (const DWORD status : statuses) {
        failures.push_back({"status " + std::to_string(status),
                            [=](const GateCall&, const Import&) { return ULONG_PTR{status}; }, std::nullopt});
    }
    return failures;
}

// The HRESULT is the result; the pointer at this argument, when there is one, is set to null.
constexpr std::size_t kNoPointer = 99;
std::vector<Failure> Results(std::size_t pointer, std::initializer_list<HRESULT> results)
{
    std::vector<Failure> failures;
    for (const HRESULT hr : results) {
        failures.push_back({Hex(static_cast<ULONG_PTR>(hr)),
                            [=](const GateCall& call, const Import&) {
                                if (pointer != kNoPointer) {
                                    *reinterpret_cast<void**>(call.Argument(pointer)) = nullptr;
                                }
                                return static_cast<ULONG_PTR>(static_cast<ULONG>(hr));
                            },
                            hr});
    }
    return failures;
}

Failure WritesNothing()
{
    return {"nothing written",
            [](const GateCall& call, const Import&) {
                *reinterpret_cast<DWORD*>(call.arguments[3]) = 0;
                return ULONG_PTR{TRUE};
            },
            std::nullopt};
}

// A part of it is on the disk.
Failure WritesHalf()
{
    return {"half written",
            [](const GateCall& call, const Import& import) {
                using Function = BOOL(WINAPI*)(HANDLE, const void*, DWORD, DWORD*, OVERLAPPED*);
                return static_cast<ULONG_PTR>(reinterpret_cast<Function>(import.function)(
                    reinterpret_cast<HANDLE>(call.arguments[0]),
                    reinterpret_cast<const void*>(call.arguments[1]),
                    static_cast<DWORD>(call.arguments[2]) / 2, reinterpret_cast<DWORD*>(call.arguments[3]),
                    nullptr));
            },
            std::nullopt};
}

// The path is as long as can be and longer: it is cut off behind the program's name.
Failure IsCutOff()
{
    return {"cut off",
            [](const GateCall& call, const Import&) {
                constexpr std::wstring_view kBegin = L"C:\\";
                constexpr std::wstring_view kEnd = L"\\Proof";
                auto* const path = reinterpret_cast<wchar_t*>(call.arguments[1]);
                const std::size_t size = call.arguments[2];
                const std::size_t length = size - 1;
                kBegin.copy(path, kBegin.size());
                std::fill(path + kBegin.size(), path + length - kEnd.size(), L'p');
                kEnd.copy(path + length - kEnd.size(), kEnd.size());
                path[length] = L'\0';
                SetLastError(ERROR_INSUFFICIENT_BUFFER);
                return ULONG_PTR{size};
            },
            std::nullopt};
}

// What is there does not fit: the size that it takes.
Failure IsTooLong()
{
    return {"too long", [](const GateCall&, const Import&) { return ULONG_PTR{300}; }, std::nullopt};
}

Failure GivesNoModule()
{
    return {"error 126",
            [](const GateCall& call, const Import&) {
                *reinterpret_cast<HMODULE*>(call.arguments[2]) = nullptr;
                SetLastError(ERROR_MOD_NOT_FOUND);
                return ULONG_PTR{FALSE};
            },
            std::nullopt};
}

std::vector<Failure> operator+(std::vector<Failure> failures, Failure another)
{
    failures.push_back(std::move(another));
    return failures;
}

constexpr HRESULT Win32(DWORD error)
{
    return static_cast<HRESULT>(error | 0x80070000);
}

void Add(std::vector<PlatformFunction>& functions, const char* names, std::string_view reason)
{
    // The names live as long as the literal: they are looked up by their places in it.
    std::string_view rest(names);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        functions.push_back({rest.substr(0, end), {}, reason});
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

// Those that fail.
std::vector<PlatformFunction> FailingFunctions()
{
    constexpr HRESULT kNotRegistered = REGDB_E_CLASSNOTREG;
    return {
        {"RegOpenKeyExW", Statuses({2, 5, 14, 1018}), ""},
        {"RegQueryValueExW", Statuses({2, 5, 234, 1018}), ""},
        {"RegSetValueExW", Statuses({5, 1018, 1450}), ""},
        {"RegDeleteValueW", Statuses({2, 5, 1018}), ""},
        {"RegCloseKey", FailsAfterwards(6, 6), ""},
        {"CloseHandle", FailsAfterwards(0, 6), ""},
        {"CreateEventW", Gives(0, {5, 6, 8}), ""},
        {"CreateFileW", Gives(kNoFile, {2, 3, 4, 5, 32, 112}), ""},
        {"CreateMutexW", Gives(0, {5, 6, 8}), ""},
        {"CreateThread", Gives(0, {8, 1450}), ""},
        {"DeleteFileW", Gives(0, {2, 5, 32}), ""},
        {"ExpandEnvironmentStringsW", Gives(0, {8}) + IsTooLong(), ""},
        {"FindClose", FailsAfterwards(0, 6), ""},
        {"FindFirstFileW", Gives(kNoFile, {2, 3, 5}), ""},
        {"FindNextFileW", Gives(0, {18, 5, 21}), ""},
        {"FlushFileBuffers", Gives(0, {5, 112, 1117}), ""},
        {"FormatMessageW", Gives(0, {317, 15100}), ""},
        {"FreeLibrary", FailsAfterwards(0, 126), ""},
        {"GetEnvironmentVariableW", Gives(0, {203}) + IsTooLong(), ""},
        {"GetExitCodeThread", Gives(0, {5, 6}), ""},
        {"GetFileAttributesExW", Gives(0, {2, 5, 32}), ""},
        {"GetFileAttributesW", Gives(kNoNumber, {2, 5, 32}), ""},
        {"GetModuleFileNameW", Gives(0, {5, 8}) + IsCutOff(), ""},
        {"GetModuleHandleExW", {GivesNoModule()}, ""},
        {"GlobalAlloc", Gives(0, {8}), ""},
        {"GlobalLock", Gives(0, {6, 8}), ""},
        {"GlobalUnlock", FailsAfterwards(0, 158), ""},
        {"GlobalFree", FailsAfterwards(1, 6), ""},
        {"LocalAlloc", Gives(0, {8}), ""},
        {"LocalFree", FailsAfterwards(1, 6), ""},
        {"MoveFileExW", Gives(0, {2, 5, 32, 183}), ""},
        {"OpenMutexW", Gives(0, {2, 5}), ""},
        {"ReadFile", Gives(0, {33, 1117}), ""},
        {"ReleaseMutex", FailsAfterwards(0, 288), ""},
        {"ResetEvent", Gives(0, {6}), ""},
        {"SetEvent", Gives(0, {6}), ""},
        {"SetFilePointer", Gives(kNoNumber, {6, 131}), ""},
        {"TerminateThread", Gives(0, {5, 6}), ""},
        {"WaitForMultipleObjects", Gives(kNoNumber, {6}) + Gives(WAIT_TIMEOUT, 0), ""},
        {"WaitForSingleObject", Gives(kNoNumber, {6}) + Gives(WAIT_TIMEOUT, 0), ""},
        {"WideCharToMultiByte", Gives(0, {87, 122, 1004, 1113}), ""},
        {"WriteFile", Gives(0, {5, 33, 112}) + WritesNothing() + WritesHalf(), ""},
        {"CoCreateInstance", Results(4, {kNotRegistered, CLASS_E_NOAGGREGATION, E_NOINTERFACE}), ""},
        {"CoInitialize", Results(kNoPointer, {E_INVALIDARG, E_OUTOFMEMORY, E_UNEXPECTED, RPC_E_CHANGED_MODE}),
         ""},
        {"CoInitializeEx",
         Results(kNoPointer, {E_INVALIDARG, E_OUTOFMEMORY, E_UNEXPECTED, RPC_E_CHANGED_MODE}), ""},
        {"RoInitialize", Results(kNoPointer, {E_INVALIDARG, E_OUTOFMEMORY, E_UNEXPECTED, RPC_E_CHANGED_MODE}),
         ""},
        {"RoGetActivationFactory",
         Results(2, {kNotRegistered, CO_E_NOTINITIALIZED, E_NOINTERFACE, E_OUTOFMEMORY}), ""},
        {"WindowsCreateStringReference", Results(3, {E_INVALIDARG, E_POINTER}), ""},
        {"SHCreateDirectoryExW", Statuses({3, 5, 80, 161, 183, 206, 1223}), ""},
        {"PathFileExistsW", Gives(0, {2, 5}), ""},
        {"SHCreateStreamOnFileEx", Results(5, {Win32(2), Win32(5), Win32(32), E_OUTOFMEMORY}), ""},
        {"SHCreateStreamOnFileW", Results(2, {Win32(2), Win32(5), Win32(32), E_OUTOFMEMORY}), ""},
        {"SHLoadIndirectString", Results(kNoPointer, {E_FAIL, E_INVALIDARG, E_OUTOFMEMORY}), ""},
        {"CreateXmlReader", Results(1, {E_OUTOFMEMORY, E_NOINTERFACE}), ""},
        {"CreateXmlWriter", Results(1, {E_OUTOFMEMORY, E_NOINTERFACE}), ""},
        {"OpenClipboard", Gives(0, {5}), ""},
        {"EmptyClipboard", Gives(0, {1418}), ""},
        {"CloseClipboard", FailsAfterwards(0, 1418), ""},
        {"SetClipboardData", Gives(0, {5, 1418}), ""},
        // It is asked for one key at a time: some of them is none.
        {"SendInput", Gives(0, {5, 87}), ""},
        {"MapVirtualKeyW", Gives(0, {0}), ""},
        {"GetForegroundWindow", Gives(0, {0}), ""},
        {"GetClassNameW", Gives(0, {1400}), ""},
        {"_wcsdup", Gives(0, {8}), ""},
        {"_wcslwr_s", Statuses({22, 42}), ""}, // EINVAL, EILSEQ
        {"swprintf_s", Gives(kNoNumber, {0}), ""},
        {"_sprintf_s_l", Gives(kNoNumber, {0}), ""},
    };
}

} // namespace

namespace proof {

const std::vector<PlatformFunction>& PlatformFunctions()
{
    static const std::vector<PlatformFunction> s_functions = [] {
        std::vector<PlatformFunction> functions = FailingFunctions();
        Add(functions,
            "AcquireSRWLockExclusive AcquireSRWLockShared ReleaseSRWLockExclusive ReleaseSRWLockShared GetACP "
            "GetCurrentProcessId GetCurrentThreadId GetLastError SetLastError GetLocalTime "
            "Sleep CharLowerBuffW CharUpperBuffW GetMessageExtraInfo MonitorFromPoint CoUninitialize "
            "RoUninitialize CoTaskMemFree WindowsDeleteString WindowsGetStringRawBuffer "
            "FreeLibraryAndExitThread",
            "its documentation names no failure");
        Add(functions, "malloc calloc realloc free _strdup", "the proof of the memory makes it fail");
        Add(functions,
            "_wcsicmp _wcsnicmp iswspace memchr memcmp memcpy memmove memset strcmp "
            "strchr strcspn strlen strncmp strspn wcschr wcscmp wcscpy_s wcslen wcsncpy_s wcsrchr _errno",
            "it works on memory that the library gives it and that has room");
        Add(functions, "_snprintf_s _snwprintf_s _vscprintf _vsnprintf",
            "it cuts off what does not fit, as the library asks it to: that is its arguments' doing");
        Add(functions,
            "AddVectoredExceptionHandler RemoveVectoredExceptionHandler CreateEventA CreateSemaphoreA "
            "ReleaseSemaphore DeleteCriticalSection EnterCriticalSection InitializeCriticalSection "
            "LeaveCriticalSection TryEnterCriticalSection DisableThreadLibraryCalls DuplicateHandle "
            "GetCurrentProcess GetCurrentThread GetHandleInformation GetModuleHandleA GetModuleHandleW "
            "GetProcAddress GetProcessAffinityMask GetSystemTimeAsFileTime GetThreadContext "
            "GetThreadPriority FormatMessageA GetTickCount GetTickCount64 IsDBCSLeadByteEx "
            "IsDebuggerPresent LoadLibraryW MultiByteToWideChar OpenProcess OutputDebugStringA "
            "RaiseException ResumeThread RtlCaptureContext RtlLookupFunctionEntry RtlUnwindEx "
            "RtlVirtualUnwind SetProcessAffinityMask SetThreadContext SetThreadPriority SuspendThread "
            "TlsAlloc TlsGetValue TlsSetValue VirtualProtect VirtualQuery __C_specific_handler "
            "___lc_codepage_func ___mb_cur_max_func __iob_func _amsg_exit _beginthreadex _endthreadex "
            "_initterm _lock _unlock _setjmp longjmp _ultoa abort exit fprintf fputc fputs fwrite "
            "localeconv printf signal strerror vfprintf _read _close getenv strtoul "
            "QueryPerformanceCounter QueryPerformanceFrequency",
            kRuntimes);
        return functions;
    }();
    return s_functions;
}

const PlatformFunction* FindPlatformFunction(std::string_view name)
{
    const auto& functions = PlatformFunctions();
    const auto found = std::find_if(functions.begin(), functions.end(),
                                    [&](const PlatformFunction& function) { return function.name == name; });
    return found == functions.end() ? nullptr : &*found;
}

} // namespace proof
