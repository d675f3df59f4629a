#include "Platform.h"

#include "standin/Text.h"
#include "standin/platform/ComObject.h"
#include "support/DocumentedReader.h"

#include <inspectable.h>
#include <objbase.h>
#include <shlwapi.h>
#include <windows.h>
#include <winstring.h>
#include <xmllite.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace native {

namespace {

std::mutex s_mutex; // guards the two
std::map<std::wstring, std::string> s_files;
std::string s_log;

class MemoryStream final : public standin::ComObject<IStream>
{
public:
    MemoryStream(std::wstring path, std::string bytes) : m_path(std::move(path)), m_bytes(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE Read(void* data, ULONG size, ULONG* read) override
    {
        *read = static_cast<ULONG>(m_bytes.copy(static_cast<char*>(data), size, m_position));
        m_position += *read;
        return *read == size ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG size, ULONG* written) override
    {
        m_bytes.append(static_cast<const char*>(data), size);
        SetFile(m_path, m_bytes);
        *written = size;
        return S_OK;
    }

private:
    std::wstring m_path;
    std::string m_bytes;
    std::size_t m_position = 0;
};

// Writes as the platform's writer is documented to, without indenting.
class Writer final : public standin::ComObject<IXmlWriter>
{
public:
    HRESULT STDMETHODCALLTYPE SetOutput(IUnknown* output) override
    {
        m_stream = static_cast<IStream*>(output);
        m_stream->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetProperty(UINT, LONG_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE WriteStartDocument(XmlStandalone) override
    {
        m_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE WriteStartElement(LPCWSTR, LPCWSTR name, LPCWSTR) override
    {
        EndStartTag(">");
        m_open.push_back(standin::ToUtf8(name));
        m_text += "<" + m_open.back();
        m_isInStartTag = true;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE WriteAttributeString(LPCWSTR, LPCWSTR name, LPCWSTR, LPCWSTR value) override
    {
        m_text += " " + standin::ToUtf8(name) + "=\"";
        for (const char character : standin::ToUtf8(value)) {
            constexpr std::string_view special = "&<>\"\t\r\n";
            if (special.find(character) == std::string_view::npos) {
                m_text += character;
            } else {
                m_text += "&#" + std::to_string(static_cast<int>(character)) + ";";
            }
        }
        m_text += "\"";
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE WriteEndElement() override
    {
        if (!EndStartTag("/>")) {
            m_text += "</" + m_open.back() + ">";
        }
        m_open.pop_back();
        return S_OK;
    }
    // Elements that are open are closed, as the platform's writer does when it is released.
    HRESULT STDMETHODCALLTYPE Flush() override
    {
        while (!m_open.empty()) {
            WriteEndElement();
        }
        ULONG written = 0;
        const HRESULT hr = m_stream->Write(m_text.data(), static_cast<ULONG>(m_text.size()), &written);
        m_text.clear();
        return hr;
    }

private:
    ~Writer() override
    {
        if (m_stream) {
            m_stream->Release();
        }
    }

    bool EndStartTag(const char* end)
    {
        const bool was = std::exchange(m_isInStartTag, false);
        if (was) {
            m_text += end;
        }
        return was;
    }

    IStream* m_stream = nullptr;
    std::string m_text;
    std::vector<std::string> m_open;
    bool m_isInStartTag = false;
};

} // namespace

Hooks& TheHooks()
{
    static Hooks hooks;
    return hooks;
}

HRESULT MakeSoundReader(REFIID id, void** reader)
{
    return standin::CreateComObject<test::DocumentedReader>(id, reader);
}

void SetFile(const std::wstring& path, std::string bytes)
{
    const std::lock_guard lock(s_mutex);
    s_files[path] = std::move(bytes);
}

std::string FileBytes(const std::wstring& path)
{
    const std::lock_guard lock(s_mutex);
    return s_files[path];
}

std::string TakeLog()
{
    const std::lock_guard lock(s_mutex);
    return std::exchange(s_log, {});
}

} // namespace native

using native::TheHooks;

// Files and XML.

HRESULT SHCreateStreamOnFileW(const wchar_t* path, DWORD mode, IStream** stream)
{
    constexpr HRESULT notFound = static_cast<HRESULT>(0x80070002);
    std::string bytes;
    if ((mode & STGM_CREATE) == 0) {
        const std::lock_guard lock(native::s_mutex);
        const auto found = native::s_files.find(path);
        if (found == native::s_files.end()) {
            return notFound;
        }
        bytes = found->second;
    }
    *stream = new native::MemoryStream(path, std::move(bytes));
    return S_OK;
}

HRESULT SHCreateStreamOnFileEx(const wchar_t* path, DWORD mode, DWORD, BOOL, IStream*, IStream** stream)
{
    return SHCreateStreamOnFileW(path, mode, stream);
}

HRESULT CreateXmlReader(REFIID id, void** reader, IMalloc*)
{
    return TheHooks().makeReader ? TheHooks().makeReader(id, reader) : native::MakeSoundReader(id, reader);
}

HRESULT CreateXmlWriter(REFIID id, void** writer, IMalloc*)
{
    return TheHooks().makeWriter ? TheHooks().makeWriter(id, writer)
                                 : standin::CreateComObject<native::Writer>(id, writer);
}

HANDLE CreateFileW(const wchar_t*, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) noexcept
{
    return &native::s_log;
}

DWORD SetFilePointer(HANDLE, LONG, LONG*, DWORD) noexcept
{
    return 0;
}

BOOL WriteFile(HANDLE, const void* data, DWORD size, DWORD* written, void*) noexcept
{
    const std::lock_guard lock(native::s_mutex);
    native::s_log.append(static_cast<const char*>(data), size);
    *written = size;
    return TRUE;
}

BOOL CloseHandle(HANDLE) noexcept
{
    return TRUE;
}

BOOL FindClose(HANDLE) noexcept
{
    return TRUE;
}

// Errors and locks.

namespace {
thread_local DWORD t_lastError = 0;
}

DWORD GetLastError() noexcept
{
    return t_lastError;
}

void SetLastError(DWORD error) noexcept
{
    t_lastError = error;
}

void AcquireSRWLockShared(SRWLOCK* lock) noexcept
{
    pthread_rwlock_rdlock(&lock->lock);
}

void ReleaseSRWLockShared(SRWLOCK* lock) noexcept
{
    pthread_rwlock_unlock(&lock->lock);
}

void AcquireSRWLockExclusive(SRWLOCK* lock) noexcept
{
    pthread_rwlock_wrlock(&lock->lock);
}

void ReleaseSRWLockExclusive(SRWLOCK* lock) noexcept
{
    pthread_rwlock_unlock(&lock->lock);
}

// The surroundings: a fixed time, one environment variable, an empty registry.

void GetLocalTime(SYSTEMTIME* time) noexcept
{
    *time = {2013, 4, 2, 16, 9, 8, 7, 6};
}

DWORD GetEnvironmentVariableA(const char* name, char* value, DWORD size) noexcept
{
    const char* found = std::getenv(name);
    return found ? static_cast<DWORD>(std::snprintf(value, size, "%s", found)) : 0;
}

DWORD GetEnvironmentVariableW(const wchar_t*, wchar_t*, DWORD) noexcept
{
    SetLastError(ERROR_ENVVAR_NOT_FOUND);
    return 0;
}

DWORD ExpandEnvironmentStringsW(const wchar_t* text, wchar_t* expanded, DWORD size) noexcept
{
    static constexpr std::wstring_view kName = L"%programdata%";
    std::wstring result(text);
    for (std::size_t at = 0; at + kName.size() <= result.size();) {
        if (_wcsnicmp(result.c_str() + at, kName.data(), kName.size()) == 0) {
            result.replace(at, kName.size(), L"C:\\ProgramData");
        } else {
            ++at;
        }
    }
    const std::size_t copied = std::min<std::size_t>(result.size(), size - 1);
    result.copy(expanded, copied);
    expanded[copied] = L'\0';
    return static_cast<DWORD>(result.size() + 1);
}

DWORD GetModuleFileNameW(void*, wchar_t*, DWORD) noexcept
{
    return 0;
}

DWORD FormatMessageW(DWORD, const void*, DWORD, DWORD, wchar_t*, DWORD, va_list*) noexcept
{
    return 0;
}

LSTATUS RegOpenKeyExW(HKEY, const wchar_t*, DWORD, DWORD, HKEY*) noexcept
{
    return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegQueryValueExW(HKEY, const wchar_t*, DWORD*, DWORD*, BYTE*, DWORD*) noexcept
{
    return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD) noexcept
{
    return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegDeleteValueW(HKEY, const wchar_t*) noexcept
{
    return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
}

LSTATUS RegCloseKey(HKEY) noexcept
{
    return 0;
}

void* LocalAlloc(UINT, std::size_t size) noexcept
{
    return std::calloc(1, size);
}

void* LocalFree(void* memory) noexcept
{
    std::free(memory);
    return nullptr;
}

// COM and the Windows Runtime.

HRESULT CoInitializeEx(void*, DWORD) noexcept
{
    return S_OK;
}

void CoUninitialize() noexcept {}

void RoUninitialize() noexcept {}

HRESULT CoCreateInstance(REFCLSID, IUnknown*, DWORD, REFIID, void** object)
{
    constexpr HRESULT noSuchClass = static_cast<HRESULT>(0x80040154);
    return TheHooks().makeAppxFactory ? TheHooks().makeAppxFactory(object) : noSuchClass;
}

void* CoTaskMemAlloc(std::size_t size) noexcept
{
    return std::malloc(size);
}

void CoTaskMemFree(void* memory) noexcept
{
    std::free(memory);
}

HRESULT SHLoadIndirectString(const wchar_t* source, wchar_t* buffer, UINT size, void**)
{
    constexpr HRESULT notFound = static_cast<HRESULT>(0x80073B17);
    return TheHooks().loadIndirectString ? TheHooks().loadIndirectString(source, buffer, size) : notFound;
}

struct NativeString
{
    std::wstring text;
};

HRESULT WindowsCreateString(const wchar_t* text, UINT32 length, HSTRING* string) noexcept
{
    *string = new NativeString{std::wstring(text, length)};
    return S_OK;
}

HRESULT WindowsDeleteString(HSTRING string) noexcept
{
    delete string;
    return S_OK;
}

const wchar_t* WindowsGetStringRawBuffer(HSTRING string, UINT32* length) noexcept
{
    if (length) {
        *length = string ? static_cast<UINT32>(string->text.size()) : 0;
    }
    return string ? string->text.c_str() : L"";
}
