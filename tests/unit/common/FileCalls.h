#pragma once

#include "support/ImportPatch.h"
#include "support/Text.h"

#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

namespace test {

// Notes what the log asks of the file system and of the clock, until the end of the scope; each kind of call
// can be made to fail. The clock stands at 2014/03/01 09:05:07.042. One at a time; keep the scope tight,
// since the checks of a test open files too.
class FileCalls
{
public:
    FileCalls()
        : m_create("CreateFileW", Create), m_seek("SetFilePointer", Seek), m_write("WriteFile", Write),
          m_close("CloseHandle", Close), m_clock("GetLocalTime", TellTime)
    {
        s_current = this;
    }
    ~FileCalls() { s_current = nullptr; }
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    std::vector<std::string> journal;
    std::vector<std::wstring> paths; // of the files that were asked for
    bool failsToOpen = false;
    int failingWrite = 0; // 1 is the first

private:
    static void Note(const std::string& call) { s_current->journal.push_back(call); }

    static HANDLE WINAPI Create(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                                DWORD disposition, DWORD flags, HANDLE pattern)
    {
        s_current->paths.emplace_back(path);
        const bool isAsItMustBe = access == GENERIC_WRITE && share == (FILE_SHARE_READ | FILE_SHARE_WRITE) &&
                                  !security && disposition == OPEN_ALWAYS && flags == FILE_ATTRIBUTE_NORMAL &&
                                  !pattern;
        Note(isAsItMustBe ? "open for appending" : "open in another way");
        if (s_current->failsToOpen) {
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        }
        s_current->m_file =
            s_current->m_create.Original()(path, access, share, security, disposition, flags, pattern);
        return s_current->m_file;
    }
    static DWORD WINAPI Seek(HANDLE file, LONG low, LONG* high, DWORD method)
    {
        const bool isEnd = file == s_current->m_file && low == 0 && !high && method == FILE_END;
        Note(isEnd ? "seek the end" : "seek something else");
        return s_current->m_seek.Original()(file, low, high, method);
    }
    static BOOL WINAPI Write(HANDLE file, const void* bytes, DWORD size, DWORD* written,
                             OVERLAPPED* overlapped)
    {
        if (file != s_current->m_file) {
            return s_current->m_write.Original()(file, bytes, size, written, overlapped);
        }
        Note("write " + std::string(static_cast<const char*>(bytes), size));
        if (++s_current->m_writes == s_current->failingWrite) {
            SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
        return s_current->m_write.Original()(file, bytes, size, written, overlapped);
    }
    static BOOL WINAPI Close(HANDLE handle)
    {
        if (handle == s_current->m_file) {
            Note("close");
            SetLastError(ERROR_INVALID_HANDLE); // to see that it is not passed on
        }
        return s_current->m_close.Original()(handle);
    }
    static void WINAPI TellTime(SYSTEMTIME* time)
    {
        Note("look at the clock");
        *time = SYSTEMTIME{2014, 3, 6, 1, 9, 5, 7, 42};
    }

    static inline FileCalls* s_current = nullptr;
    ImportPatch<decltype(&CreateFileW)> m_create;
    ImportPatch<decltype(&SetFilePointer)> m_seek;
    ImportPatch<decltype(&WriteFile)> m_write;
    ImportPatch<decltype(&CloseHandle)> m_close;
    ImportPatch<decltype(&GetLocalTime)> m_clock;
    HANDLE m_file = nullptr;
    int m_writes = 0;
};

} // namespace test
