#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace test {

// An install folder whose manifest comes when the test says so: whoever reads it is held up until then. One
// at a time.
class SlowManifest
{
public:
    SlowManifest();
    ~SlowManifest();
    SlowManifest(const SlowManifest&) = delete;
    SlowManifest& operator=(const SlowManifest&) = delete;

    // The folder, for a package.ini.
    [[nodiscard]] std::string Folder() const;

    // Throws when nobody opens the manifest in time.
    void WaitForReader();
    // Gives the manifest to its reader.
    void Answer(std::string_view manifest);

private:
    std::wstring m_folder;
    HANDLE m_pipe;
    HANDLE m_opened; // manual-reset event
    OVERLAPPED m_connection = {};
};

} // namespace test
