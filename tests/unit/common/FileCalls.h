#pragma once

#include "support/Test.h"

namespace test {

// Notes what the log asks of the file system and of the clock, until the end of the scope; each kind of call
// can be made to fail. The clock stands at 2014/03/01 09:05:07.042. One at a time; keep the scope tight,
// since the checks of a test open files too.
class FileCalls
{
public:
    std::vector<std::string> journal;
    std::vector<std::wstring> paths; // of the files that were asked for
    bool failsToOpen = false;
    int failingWrite = 0; // 1 is the first

private:
    HANDLE Create(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                  DWORD disposition, DWORD flags, HANDLE pattern)
    {
        paths.emplace_back(path);
        const bool isAsItMustBe = access == GENERIC_WRITE && share == (FILE_SHARE_READ | FILE_SHARE_WRITE) &&
                                  !security && disposition == OPEN_ALWAYS && flags == FILE_ATTRIBUTE_NORMAL &&
                                  !pattern;
        journal.push_back(isAsItMustBe ? "open for appending" : "open in another way");
        if (failsToOpen) {
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        }
        return m_file = m_create.Original(path, access, share, security, disposition, flags, pattern);
    }
    BOOL Write(HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped)
    {
        if (file == m_file) {
            journal.push_back("write " + std::string(static_cast<const char*>(bytes), size));
            if (++m_writes == failingWrite) {
                SetLastError(ERROR_DISK_FULL);
                return FALSE;
            }
        }
        return m_write.Original(file, bytes, size, written, overlapped);
    }

    HANDLE m_file = nullptr;
    int m_writes = 0;
    CapturingPatch<decltype(&CreateFileW)> m_create{
        "CreateFileW", [this](const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                              DWORD disposition, DWORD flags, HANDLE pattern) {
            return Create(path, access, share, security, disposition, flags, pattern);
        }};
    NotingPatch<decltype(&SetFilePointer)> m_seek{
        "SetFilePointer", journal, [this](HANDLE file, LONG low, LONG* high, DWORD method) {
            const bool isEnd = file == m_file && low == 0 && !high && method == FILE_END;
            return std::string(isEnd ? "seek the end" : "seek something else");
        }};
    CapturingPatch<decltype(&WriteFile)> m_write{
        "WriteFile",
        [this](HANDLE file, const void* bytes, DWORD size, DWORD* written, OVERLAPPED* overlapped) {
            return Write(file, bytes, size, written, overlapped);
        }};
    NotingPatch<decltype(&CloseHandle)> m_close{
        "CloseHandle", journal, [this](HANDLE handle) {
            if (handle == m_file) {
                SetLastError(ERROR_INVALID_HANDLE); // to see that it is not passed on
            }
            return std::string(handle == m_file ? "close" : "");
        }};
    CapturingPatch<decltype(&GetLocalTime)> m_clock{"GetLocalTime", [this](SYSTEMTIME* time) {
                                                        journal.push_back("look at the clock");
                                                        *time = SYSTEMTIME{2014, 3, 6, 1, 9, 5, 7, 42};
                                                    }};
};

} // namespace test
