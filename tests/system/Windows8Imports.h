#pragma once

#include <string_view>

namespace test {

// Functions that the DLLs of every 64-bit Windows 8 export. The list pins what the library may import: a
// compiler or a change that brings in another function must not make it unloadable there unseen. Before a
// name is added, its documentation must say that Windows 8 or an older version has it ("minimum supported
// client"); for the C runtime's, that the system's own msvcrt.dll exports it.
struct Windows8Library
{
    std::string_view name;      // in lower case
    std::string_view functions; // with blanks and line ends between them
};

inline constexpr Windows8Library windows8Libraries[] = {
    {"advapi32.dll", R"(
        CryptAcquireContextA CryptGenRandom CryptReleaseContext
        RegCloseKey RegDeleteValueW RegOpenKeyExW RegQueryValueExW RegSetValueExW
    )"},
    {"api-ms-win-core-winrt-l1-1-0.dll", R"(
        RoActivateInstance RoGetActivationFactory RoInitialize RoUninitialize
    )"},
    {"api-ms-win-core-winrt-string-l1-1-0.dll", R"(
        WindowsCreateString WindowsCreateStringReference WindowsDeleteString WindowsGetStringLen
        WindowsGetStringRawBuffer WindowsIsStringEmpty
    )"},
    {"kernel32.dll", R"(
        AcquireSRWLockExclusive AcquireSRWLockShared AddVectoredExceptionHandler CloseHandle
        CopyFileW CreateEventA CreateEventW CreateFileA CreateFileW CreateMutexW CreateSemaphoreA
        CreateSemaphoreW CreateThread DeleteCriticalSection DeleteFileW DisableThreadLibraryCalls
        DuplicateHandle EnterCriticalSection ExpandEnvironmentStringsW FindClose FindFirstFileW
        FindNextFileW FlsAlloc FlsFree FlsGetValue FlsSetValue FlushFileBuffers FormatMessageA
        FormatMessageW FreeLibrary FreeLibraryAndExitThread GetACP GetCurrentDirectoryW GetCurrentProcess
        GetCurrentProcessId GetCurrentThread GetCurrentThreadId GetEnvironmentVariableW
        GetExitCodeThread GetFileAttributesExW GetFileAttributesW GetFileSizeEx GetFullPathNameW
        GetHandleInformation GetLastError GetLocalTime GetModuleFileNameW GetModuleHandleA
        GetModuleHandleExW GetModuleHandleW GetProcAddress GetProcessAffinityMask GetProcessHeap
        GetStartupInfoW GetStdHandle GetSystemInfo GetSystemTimeAsFileTime GetThreadContext
        GetThreadPriority GetTickCount GetTickCount64 GlobalAlloc GlobalFree GlobalLock GlobalUnlock
        HeapAlloc HeapFree InitializeCriticalSection InitializeCriticalSectionAndSpinCount
        InitializeSRWLock IsDBCSLeadByteEx IsDebuggerPresent IsProcessorFeaturePresent
        LeaveCriticalSection LoadLibraryA LoadLibraryExW LoadLibraryW LocalAlloc LocalFree
        MoveFileExW MultiByteToWideChar OpenMutexW OpenProcess OutputDebugStringA
        QueryPerformanceCounter QueryPerformanceFrequency RaiseException ReadFile
        ReleaseMutex ReleaseSRWLockExclusive ReleaseSRWLockShared ReleaseSemaphore RemoveVectoredExceptionHandler
        ReplaceFileW ResetEvent ResumeThread RtlAddFunctionTable RtlCaptureContext
        RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind SetEndOfFile SetEvent SetFileAttributesW
        SetFilePointer SetFilePointerEx SetLastError SetProcessAffinityMask SetThreadContext
        SetThreadPriority SetUnhandledExceptionFilter Sleep SuspendThread SwitchToThread
        TerminateProcess TerminateThread TlsAlloc TlsFree TlsGetValue TlsSetValue
        TryAcquireSRWLockExclusive TryAcquireSRWLockShared TryEnterCriticalSection
        UnhandledExceptionFilter VirtualAlloc VirtualFree VirtualProtect VirtualQuery
        WaitForMultipleObjects WaitForSingleObject WaitForSingleObjectEx WideCharToMultiByte
        WriteFile __C_specific_handler
    )"},
    {"msvcrt.dll", R"(
        ___lc_codepage_func ___mb_cur_max_func __iob_func _amsg_exit _assert _beginthreadex _callnewh
        _close _endthreadex _errno _exit _fileno _get_errno _get_osfhandle _initterm _isatty
        _lock _onexit _open _purecall _read _set_errno _setjmp _snprintf _snprintf_s _snwprintf
        _snwprintf_s _sopen_s _sprintf_s_l _strdup _time64 _ultoa _unlock _vscprintf _vsnprintf
        _vsnprintf_s _vsnwprintf _vsnwprintf_s _wcsdup _wcsicmp _wcslwr_s _wcsnicmp _wfopen _write _wsopen_s
        abort atexit atoi calloc exit fclose fflush fgetc fgetwc fopen fprintf fputc fputs fread
        free fseek ftell fwprintf fwrite getc getenv isalnum isalpha isdigit isspace iswctype
        iswspace localeconv longjmp malloc mbstowcs memchr memcmp memcpy memcpy_s memmove memmove_s
        memset printf putc qsort rand realloc setlocale setvbuf signal sprintf srand strcat strchr
        strcmp strcoll strcpy strcspn strerror strftime strlen strncat strncmp strncpy strrchr strspn
        strstr strtol strtoul strxfrm swprintf_s swscanf_s time tolower toupper towlower towupper
        ungetwc vfprintf vsprintf_s wcscat wcschr wcscmp wcscoll wcscpy wcscpy_s wcscspn wcsftime
        wcslen wcsncmp wcsncpy wcsncpy_s wcsrchr wcsspn wcsstr wcstol wcstombs wcstoul wcsxfrm
    )"},
    {"ole32.dll", R"(
        CoCreateFreeThreadedMarshaler CoCreateInstance CoGetApartmentType CoInitialize
        CoInitializeEx CoTaskMemAlloc CoTaskMemFree CoUninitialize
    )"},
    {"shell32.dll", R"(
        SHCreateDirectoryExW
    )"},
    {"shlwapi.dll", R"(
        PathFileExistsW SHCreateStreamOnFileEx SHCreateStreamOnFileW SHLoadIndirectString
    )"},
    {"user32.dll", R"(
        CharLowerBuffW CharUpperBuffW CloseClipboard CountClipboardFormats EmptyClipboard GetClassNameW GetForegroundWindow
        GetMessageExtraInfo MapVirtualKeyW MonitorFromPoint OpenClipboard SendInput SetClipboardData
    )"},
    {"xmllite.dll", R"(
        CreateXmlReader CreateXmlWriter
    )"},
};

} // namespace test
