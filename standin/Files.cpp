#include "standin/Files.h"

#include "standin/Result.h"
#include "standin/Text.h"
#include "standin/TryStart.h"

#include <windows.h>

namespace standin {

namespace {

[[noreturn]] void Fail(const char* what, const std::wstring& path)
{
    const HRESULT hr = LastError();
    throw Failure(hr, what + ToUtf8(path));
}

} // namespace

std::string ReadFileBytes(const std::wstring& path)
{
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        Fail("cannot read ", path);
    }
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(file, buffer, sizeof(buffer), &read, nullptr) && read > 0) {
        bytes.append(buffer, read);
    }
    CloseHandle(file);
    return bytes;
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    if (file == INVALID_HANDLE_VALUE ||
        !WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        Fail("cannot write ", path);
    }
    CloseHandle(file);
}

void MakeFolder(const std::wstring& path)
{
    if (CreateDirectoryW(path.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) {
        return;
    }
    if (GetLastError() != ERROR_PATH_NOT_FOUND || FolderOf(path).empty()) {
        Fail("cannot make ", path);
    }
    MakeFolder(FolderOf(path));
    MakeFolder(path);
}

std::wstring FullPath(const std::wstring& path)
{
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

void ForEachEntry(const std::wstring& folder,
                  const std::function<void(const std::wstring& name, unsigned long attributes)>& visit)
{
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") {
            visit(name, entry.dwFileAttributes);
        }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

std::wstring FolderOf(const std::wstring& path)
{
    const size_t end = path.find_last_of(L'\\');
    return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

unsigned long StartProgram(const std::wstring& program, const std::wstring& arguments,
                           const std::wstring& folder)
{
    std::wstring commandLine = L"\"" + program + L"\"";
    if (!arguments.empty()) {
        commandLine += L" " + arguments;
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const BOOL isStarted = TryStart([&] {
        return CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                              folder.empty() ? nullptr : folder.c_str(), &startup, &process);
    });
    if (!isStarted) {
        Fail("cannot start ", program);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return process.dwProcessId;
}

} // namespace standin
