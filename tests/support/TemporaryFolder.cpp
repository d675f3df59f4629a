#include "support/TemporaryFolder.h"

#include <windows.h>

#include <atomic>
#include <utility>

namespace {

void DeleteTree(const std::wstring& path)
{
    standin::ForEachEntry(path, [&](const std::wstring& name, DWORD attributes) {
        const std::wstring entry = path + L"\\" + name;
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
            DeleteTree(entry);
        } else {
            SetFileAttributesW(entry.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(entry.c_str());
        }
    });
    RemoveDirectoryW(path.c_str());
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
    if (const DWORD size = GetEnvironmentVariableW(name, nullptr, 0)) {
        std::wstring old(size, L'\0');
        old.resize(GetEnvironmentVariableW(name, old.data(), size));
        m_old = std::move(old);
    }
    SetEnvironmentVariableW(name, value);
}

ScopedEnvironment::~ScopedEnvironment()
{
    SetEnvironmentVariableW(m_name.c_str(), m_old ? m_old->c_str() : nullptr);
}

} // namespace test
