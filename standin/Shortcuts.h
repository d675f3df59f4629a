#pragma once

#include <string>

// Shortcut files as the shell keeps them: ".lnk" through the shell link object, ".url" through the Internet
// shortcut object. The functions enter COM for themselves, throw Failure (Result.h) and may be
// called on any thread.
namespace standin {

struct Shortcut
{
    std::wstring target; // a program or document; for a ".url" that is no file: its address
    std::wstring arguments;
    std::wstring workingFolder;
};

// Writes a shortcut to target at path (ending in ".lnk" or ".url", full or relative), over an older one, and
// makes the folders that are missing. The working folder is the target's folder. E_INVALIDARG: another
// ending, or arguments for a ".url", which cannot hold any.
void WriteShortcut(const std::wstring& path, const std::wstring& target, const std::wstring& arguments = {});

// Variables in the target are expanded.
[[nodiscard]] Shortcut ReadShortcut(const std::wstring& path);

// True when path ends in the extension (".exe"), in any case.
[[nodiscard]] bool HasExtension(const std::wstring& path, const wchar_t* extension) noexcept;

// True when path ends in ".lnk" or ".url", in any case.
[[nodiscard]] bool IsShortcut(const std::wstring& path) noexcept;

} // namespace standin
