// The few names of the platform that the library's portable parts use, for a native build with 16-bit
// wchar_t. What is behind them is in ../Platform.cpp: memory instead of files, the machine's own locks, no
// registry.
#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <cwctype>

#include <pthread.h>

static_assert(sizeof(wchar_t) == 2, "compile with -fshort-wchar");

using BOOL = int;
using BYTE = std::uint8_t;
using boolean = std::uint8_t;
using WORD = std::uint16_t;
using UINT16 = std::uint16_t;
using INT32 = std::int32_t;
using UINT32 = std::uint32_t;
using UINT64 = unsigned long long;
using INT64 = long long;
using UINT = unsigned;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONG_PTR = std::intptr_t;
using LSTATUS = LONG;
using HRESULT = std::int32_t;
using HANDLE = void*;
using HKEY = struct NativeKey*;
using WCHAR = wchar_t;
using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;

#define WINAPI
#define STDMETHODCALLTYPE
#define TRUE 1
#define FALSE 0
// IDs of interfaces are not looked at: see unknwn.h.
#define __CRT_UUID_DECL(type, ...)
#define MAX_PATH 260
#define _TRUNCATE (static_cast<std::size_t>(-1))

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
constexpr HRESULT RPC_E_CHANGED_MODE = static_cast<HRESULT>(0x80010106);
#define SUCCEEDED(result) ((result) >= 0)
#define FAILED(result) ((result) < 0)

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;

// The lock of the catalogue. Who waits to write goes first, or nobody would ever write beside busy readers.
struct SRWLOCK
{
    pthread_rwlock_t lock;
};
#define SRWLOCK_INIT                                                                                         \
    {                                                                                                        \
        PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP                                                    \
    }
void AcquireSRWLockShared(SRWLOCK* lock) noexcept;
void ReleaseSRWLockShared(SRWLOCK* lock) noexcept;
void AcquireSRWLockExclusive(SRWLOCK* lock) noexcept;
void ReleaseSRWLockExclusive(SRWLOCK* lock) noexcept;

template <typename Number> LONG InterlockedIncrement(Number* number)
{
    return __atomic_add_fetch(number, 1, __ATOMIC_SEQ_CST);
}
template <typename Number> LONG InterlockedDecrement(Number* number)
{
    return __atomic_sub_fetch(number, 1, __ATOMIC_SEQ_CST);
}

// The trace's file.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_SHARE_WRITE = 2;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_END = 2;
HANDLE CreateFileW(const wchar_t* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD flags, HANDLE templateFile) noexcept;
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method) noexcept;
BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written, void* overlapped) noexcept;
BOOL CloseHandle(HANDLE handle) noexcept;
BOOL FindClose(HANDLE find) noexcept;

struct SYSTEMTIME
{
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};
void GetLocalTime(SYSTEMTIME* time) noexcept;

DWORD GetEnvironmentVariableW(const wchar_t* name, wchar_t* value, DWORD size) noexcept;
DWORD ExpandEnvironmentStringsW(const wchar_t* text, wchar_t* expanded, DWORD size) noexcept;
DWORD GetModuleFileNameW(void* module, wchar_t* path, DWORD size) noexcept;

constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;
UINT GetACP() noexcept;
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int length, char* bytes, int size,
                        const char* defaultCharacter, BOOL* usedDefault) noexcept;
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* bytes, int size, wchar_t* text,
                        int length) noexcept;
constexpr int CSTR_EQUAL = 2;
int CompareStringOrdinal(const wchar_t* left, int leftLength, const wchar_t* right, int rightLength,
                         BOOL ignoreCase) noexcept;
DWORD CharLowerBuffW(wchar_t* text, DWORD length) noexcept;

constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
constexpr DWORD FORMAT_MESSAGE_MAX_WIDTH_MASK = 0xFF;
DWORD FormatMessageW(DWORD flags, const void* source, DWORD message, DWORD language, wchar_t* text,
                     DWORD size, va_list* arguments) noexcept;

constexpr DWORD REG_DWORD = 4;
constexpr DWORD KEY_READ = 1;
constexpr DWORD KEY_WRITE = 2;
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(1))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(2))
LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* path, DWORD options, DWORD access, HKEY* key) noexcept;
LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                         DWORD* size) noexcept;
LSTATUS RegSetValueExW(HKEY key, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD size) noexcept;
LSTATUS RegDeleteValueW(HKEY key, const wchar_t* name) noexcept;
LSTATUS RegCloseKey(HKEY key) noexcept;

constexpr UINT LPTR = 0x40;
void* LocalAlloc(UINT flags, std::size_t size) noexcept;
void* LocalFree(void* memory) noexcept;

// The C runtime's own, beside the standard's.
int _wcsicmp(const wchar_t* left, const wchar_t* right) noexcept;
int _wcsnicmp(const wchar_t* left, const wchar_t* right, std::size_t count) noexcept;
int _wcslwr_s(wchar_t* text, std::size_t size) noexcept;
wchar_t* _wcsdup(const wchar_t* text) noexcept;
int _snprintf_s(char* buffer, std::size_t size, std::size_t count, const char* format, ...) noexcept;
int _sprintf_s_l(char* buffer, std::size_t size, const char* format, void* locale, ...) noexcept;
int _snwprintf_s(wchar_t* buffer, std::size_t size, std::size_t count, const wchar_t* format, ...) noexcept;
int swprintf_s(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) noexcept;
int _get_errno(int* value) noexcept;
int _set_errno(int value) noexcept;
