#pragma once

#include <windows.h>

#include <string>

// Where this program and its libraries stand. Any thread.
namespace standin {

// The path of a module's file, of the program's for null. Empty when it cannot be had.
[[nodiscard]] std::wstring ModulePath(HMODULE module = nullptr);

// The folder that it stands in, without a backslash at the end.
[[nodiscard]] std::wstring ModuleFolder(HMODULE module = nullptr);

// A function that a module exports; null without a module, or when it has none of that name.
template <typename Function> [[nodiscard]] Function FunctionOf(HMODULE module, const char* name) noexcept
{
    return module ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)))
                  : nullptr;
}

} // namespace standin
