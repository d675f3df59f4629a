#pragma once

#include <string>

namespace test {

// A symbolic link to a folder, removed at the end of the scope; the folder stays. Throws std::runtime_error
// when it cannot be made.
class FolderLink
{
public:
    // The target may be relative to the folder that the link is in.
    FolderLink(std::wstring path, const std::wstring& target);
    ~FolderLink() { Remove(); }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;

    void Remove();

private:
    std::wstring m_path;
};

} // namespace test
