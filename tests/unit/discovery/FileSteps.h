#pragma once

#include "support/Test.h"

#include <map>

namespace discovery_test {

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
        : m_onStep(std::move(onStep)), m_create("CreateFileW", Create), m_read("ReadFile", Read),
          m_write("WriteFile", Write), m_flush("FlushFileBuffers", Flush), m_move("MoveFileExW", Move),
          m_delete("DeleteFileW", Delete), m_close("CloseHandle", Close)
    {
        s_current = this;
    }
    ~FileSteps() { s_current = nullptr; }
    FileSteps(const FileSteps&) = delete;
    FileSteps& operator=(const FileSteps&) = delete;

    [[nodiscard]] const std::vector<std::string>& Get() const { return m_steps; }

private:
    // The file's name, empty when it is none of the catalogue's.
    static std::string NameOf(const wchar_t* path)
    {
        const std::wstring whole = path;
        const std::wstring name = whole.substr(whole.rfind(L'\\') + 1);
        return name.starts_with(L"AppNameList.xml") ? test::ToUtf8(name) : "";
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

    static HANDLE WINAPI Create(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                                DWORD disposition, DWORD flags, HANDLE pattern)
    {
        const std::string name = NameOf(path);
        if (!s_current->GoesOn("open", name)) {
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE file =
            s_current->m_create.Original()(path, access, share, security, disposition, flags, pattern);
        if (file != INVALID_HANDLE_VALUE) {
            s_current->m_files[file] = name;
        }
        return file;
    }
    static BOOL WINAPI Close(HANDLE handle)
    {
        s_current->m_files.erase(handle);
        return s_current->m_close.Original()(handle);
    }
    static BOOL WINAPI Read(HANDLE file, void* bytes, DWORD size, DWORD* read, OVERLAPPED* overlapped)
    {
        return s_current->GoesOn("read", file) &&
               s_current->m_read.Original()(file, bytes, size, read, overlapped);
    }
    static BOOL WINAPI Write(HANDLE file, const void* bytes, DWORD size, DWORD* written,
                             OVERLAPPED* overlapped)
    {
        return s_current->GoesOn("write", file) &&
               s_current->m_write.Original()(file, bytes, size, written, overlapped);
    }
    static BOOL WINAPI Flush(HANDLE file)
    {
        return s_current->GoesOn("flush", file) && s_current->m_flush.Original()(file);
    }
    static BOOL WINAPI Move(const wchar_t* from, const wchar_t* to, DWORD flags)
    {
        return s_current->GoesOn("move", NameOf(from) + " to " + NameOf(to)) &&
               s_current->m_move.Original()(from, to, flags);
    }
    static BOOL WINAPI Delete(const wchar_t* path)
    {
        return s_current->GoesOn("delete", NameOf(path)) && s_current->m_delete.Original()(path);
    }

    static inline FileSteps* s_current = nullptr;
    std::function<DWORD(const std::string&)> m_onStep;
    std::vector<std::string> m_steps;
    std::map<HANDLE, std::string> m_files;
    test::ImportPatch<decltype(&CreateFileW)> m_create;
    test::ImportPatch<decltype(&ReadFile)> m_read;
    test::ImportPatch<decltype(&WriteFile)> m_write;
    test::ImportPatch<decltype(&FlushFileBuffers)> m_flush;
    test::ImportPatch<decltype(&MoveFileExW)> m_move;
    test::ImportPatch<decltype(&DeleteFileW)> m_delete;
    test::ImportPatch<decltype(&CloseHandle)> m_close;
};

} // namespace discovery_test
