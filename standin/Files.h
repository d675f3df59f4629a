#pragma once

#include <functional>
#include <string>
#include <string_view>

// Files and folders, for the stand-in and for tests. Each throws Failure (Result.h) with the path in its
// text. Any thread.
namespace standin {

// Reads a whole file, also one that is being replaced, moved or deleted.
[[nodiscard]] std::string ReadFileBytes(const std::wstring& path);

// Writes a whole file, over an older one.
void WriteFileBytes(const std::wstring& path, std::string_view bytes);

// Makes the folder and its parents, those that are missing.
void MakeFolder(const std::wstring& path);

// The path in full, from the drive on; a relative one lies in the current folder.
[[nodiscard]] std::wstring FullPath(const std::wstring& path);

// Calls this for all that is in a folder, with the name and the attributes; without "." and "..". Not at all
// when the folder cannot be read.
void ForEachEntry(const std::wstring& folder,
                  const std::function<void(const std::wstring& name, unsigned long attributes)>& visit);

// The part of a path in front of its last backslash, empty without one.
[[nodiscard]] std::wstring FolderOf(const std::wstring& path);

// Starts a program without the shell between, so that it gets its arguments letter for letter; no folder: it
// stands in this process's. Returns the new process's number.
unsigned long StartProgram(const std::wstring& program, const std::wstring& arguments,
                           const std::wstring& folder);

} // namespace standin
