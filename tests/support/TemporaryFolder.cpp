#include "support/TemporaryFolder.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>

namespace {

void DeleteTree(const std::wstring& path)
{
    WIN32_FIND_DATAW entry{};
    const HANDLE find = FindFirstFileW((path + L"\\*").c_str(), &entry);
    if (find != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = entry.cFileName;
            if (name == L"." || name == L"..") {
                continue;
            }
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                DeleteTree(path + L"\\" + name);
            } else {
                const std::wstring file = path + L"\\" + name;
                SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(file.c_str());
            }
        } while (FindNextFileW(find, &entry));
        FindClose(find);
    }
    RemoveDirectoryW(path.c_str());
}

void SetVariable(const std::wstring& name, const wchar_t* value)
{
    _wputenv((name + L"=" + (value ? value : L"")).c_str());
    SetEnvironmentVariableW(name.c_str(), value);
}

} // namespace

namespace test {

TemporaryFolder::TemporaryFolder()
{
    static std::atomic<unsigned> s_count = 0;
    wchar_t base[MAX_PATH];
    GetTempPathW(MAX_PATH, base);
    do {
        m_path = std::wstring(base) + L"qanh" + std::to_wstring(GetCurrentProcessId()) + L"_" +
                 std::to_wstring(++s_count);
    } while (!CreateDirectoryW(m_path.c_str(), nullptr) && GetLastError() == ERROR_ALREADY_EXISTS);
}

TemporaryFolder::~TemporaryFolder()
{
    DeleteTree(m_path);
}

void MakeFolder(const std::wstring& path)
{
    for (std::size_t end = path.find(L'\\', 3); end != std::wstring::npos; end = path.find(L'\\', end + 1)) {
        CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
    }
    CreateDirectoryW(path.c_str(), nullptr);
}

void MakeFile(const std::wstring& path)
{
    MakeFolder(path.substr(0, path.rfind(L'\\')));
    CloseHandle(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool Exists(const std::wstring& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

ScopedEnvironment::ScopedEnvironment(const wchar_t* name, const wchar_t* value) : m_name(name)
{
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0); // with the end of the text
    m_wasSet = size > 0;
    m_old.resize(size);
    m_old.resize(GetEnvironmentVariableW(name, m_old.data(), size));
    SetVariable(m_name, value);
}

ScopedEnvironment::~ScopedEnvironment()
{
    SetVariable(m_name, m_wasSet ? m_old.c_str() : nullptr);
}

} // namespace test
