#pragma once

#include "standin/Files.h"

#include <optional>
#include <string>

namespace test {

// An empty folder of the test's own, deleted with all that is in it at the end of the scope.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Without a backslash at the end.
    [[nodiscard]] const std::wstring& Path() const { return m_path; }
    // The path of something in it; "a\\b" is fine.
    [[nodiscard]] std::wstring operator/(const std::wstring& name) const { return m_path + L"\\" + name; }

private:
    std::wstring m_path;
};

using standin::MakeFolder;
// Makes the folders above the file and an empty file.
void MakeFile(const std::wstring& path);
bool Exists(const std::wstring& path);

// Gives an environment variable of this process another value until the end of the scope; a null value
// removes it.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const wchar_t* name, const wchar_t* value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::wstring m_name;
    std::optional<std::wstring> m_old;
};

} // namespace test
