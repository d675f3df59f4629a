#include "standin/ModulePath.h"

namespace standin {

namespace {

constexpr DWORD longestPath = 32768; // characters, the terminator included

} // namespace

std::wstring ModulePath(HMODULE module)
{
    std::wstring path(longestPath, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), longestPath));
    return path;
}

std::wstring ModuleFolder(HMODULE module)
{
    const std::wstring path = ModulePath(module);
    return path.substr(0, path.rfind(L'\\'));
}

} // namespace standin
