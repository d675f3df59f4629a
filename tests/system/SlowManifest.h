#pragma once

#include "support/Text.h"

#include <windows.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace test {

// An install folder whose manifest comes when the test says so: whoever reads it is held up until then. One
// at a time.
class SlowManifest
{
public:
    SlowManifest()
        : m_folder(L"\\\\.\\pipe\\QanHelperTest" + std::to_wstring(GetCurrentProcessId())),
          m_pipe(CreateNamedPipeW((m_folder + L"\\AppxManifest.xml").c_str(),
                                  PIPE_ACCESS_OUTBOUND | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE, 1, 1 << 16, 0,
                                  0, nullptr)),
          m_opened(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        if (m_pipe == INVALID_HANDLE_VALUE) {
            throw std::runtime_error("no pipe for the manifest");
        }
        m_connection.hEvent = m_opened;
        if (ConnectNamedPipe(m_pipe, &m_connection) || GetLastError() == ERROR_PIPE_CONNECTED) {
            SetEvent(m_opened);
        }
    }
    ~SlowManifest()
    {
        if (m_pipe != INVALID_HANDLE_VALUE) {
            CancelIo(m_pipe);
            CloseHandle(m_pipe);
        }
        CloseHandle(m_opened);
    }
    SlowManifest(const SlowManifest&) = delete;
    SlowManifest& operator=(const SlowManifest&) = delete;

    // The folder, for a package.ini.
    [[nodiscard]] std::string Folder() const { return ToUtf8(m_folder); }

    // Throws when nobody opens the manifest in time.
    void WaitForReader()
    {
        if (WaitForSingleObject(m_opened, 20000) != WAIT_OBJECT_0) {
            throw std::runtime_error("nobody reads the manifest");
        }
    }
    // Gives the manifest to its reader.
    void Answer(std::string_view manifest)
    {
        OVERLAPPED write = {};
        write.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        DWORD written = 0;
        const bool isWritten =
            (WriteFile(m_pipe, manifest.data(), static_cast<DWORD>(manifest.size()), nullptr, &write) ||
             GetLastError() == ERROR_IO_PENDING) &&
            GetOverlappedResult(m_pipe, &write, &written, TRUE) && written == manifest.size();
        CloseHandle(write.hEvent);
        // The reader takes what is in the pipe and then comes to its end.
        FlushFileBuffers(m_pipe);
        CloseHandle(m_pipe);
        m_pipe = INVALID_HANDLE_VALUE;
        if (!isWritten) {
            throw std::runtime_error("the manifest cannot be given");
        }
    }

private:
    std::wstring m_folder;
    HANDLE m_pipe;
    HANDLE m_opened; // manual-reset event
    OVERLAPPED m_connection = {};
};

} // namespace test
