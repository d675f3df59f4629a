#pragma once

#include "support/Test.h"

#include <map>

namespace discovery_test {

using namespace test;

// For FileSteps: the step fails with the error, every time.
inline std::function<DWORD(const std::string&)> FailAt(const std::string& failing, DWORD error)
{
    return [failing, error](const std::string& step) {
        return step == failing ? error : static_cast<DWORD>(ERROR_SUCCESS);
    };
}

// Notes what the library does with the catalogue file and the files beside it, one step for each call into
// the platform: "open <file>", "read <file>", "write <file>", "flush <file>", "move <file> to <file>",
// "delete <file>", with names without their folder. At each step the test may do something, and lets the call
// fail by returning an error. One at a time; keep the scope tight, since the checks of a test open files too.
class FileSteps
{
public:
    explicit FileSteps(std::function<DWORD(const std::string& step)> onStep =
                           [](const std::string&) { return DWORD{ERROR_SUCCESS}; })
        : m_onStep(std::move(onStep))
    {
    }

    [[nodiscard]] const Lines& Get() const { return m_steps; }

private:
    // The file's name, empty when it is none of the catalogue's.
    static std::string NameOf(const wchar_t* path)
    {
        const std::wstring whole = path;
        const std::wstring name = whole.substr(whole.rfind(L'\\') + 1);
        return name.starts_with(L"AppNameList.xml") ? ToUtf8(name) : "";
    }
    // False, with the last error set: the call is to fail.
    bool GoesOn(const char* call, const std::string& names)
    {
        if (names.empty()) {
            return true;
        }
        m_steps.push_back(call + (" " + names));
        const DWORD error = m_onStep(m_steps.back());
        SetLastError(error);
        return error == ERROR_SUCCESS;
    }
    bool GoesOn(const char* call, HANDLE file) { return GoesOn(call, m_files[file]); }

    HANDLE Create(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                  DWORD disposition, DWORD flags, HANDLE pattern)
    {
        const std::string name = NameOf(path);
        if (!GoesOn("open", name)) {
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE file = m_create.Original(path, access, share, security, disposition, flags, pattern);
        if (file != INVALID_HANDLE_VALUE) {
            m_files[file] = name;
        }
        return file;
    }

    std::function<DWORD(const std::string&)> m_onStep;
    Lines m_steps;
    std::map<HANDLE, std::string> m_files;
    CapturingPatch<decltype(&CreateFileW)> m_create{
        "CreateFileW", [this](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD flags, HANDLE pattern) {
            return Create(path, access, share, security, disposition, flags, pattern);
        }};
    CapturingPatch<decltype(&ReadFile)> m_read{
        "ReadFile", [this](HANDLE file, void* bytes, DWORD size, DWORD* read, OVERLAPPED* overlapped) {
            return GoesOn("read", file) && m_read.Original(file, bytes, size, read, overlapped);
        }};
    CapturingPatch<decltype(&WriteFile)> m_write{
        "WriteFile",
        [this](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
            return GoesOn("write", file) && m_write.Original(file, bytes, size, written, overlapped);
        }};
    CapturingPatch<decltype(&FlushFileBuffers), 2> m_flush{
        "FlushFileBuffers", [this](HANDLE file) { return GoesOn("flush", file) && m_flush.Original(file); }};
    CapturingPatch<decltype(&MoveFileExW)> m_move{
        "MoveFileExW", [this](const wchar_t* from, const wchar_t* to, DWORD flags) {
            return GoesOn("move", NameOf(from) + " to " + NameOf(to)) && m_move.Original(from, to, flags);
        }};
    CapturingPatch<decltype(&DeleteFileW), 2> m_delete{"DeleteFileW", [this](const wchar_t* path) {
                                                           return GoesOn("delete", NameOf(path)) &&
                                                                  m_delete.Original(path);
                                                       }};
    CapturingPatch<decltype(&CloseHandle), 3> m_close{"CloseHandle", [this](HANDLE handle) {
                                                          m_files.erase(handle);
                                                          return m_close.Original(handle);
                                                      }};
};

} // namespace discovery_test
