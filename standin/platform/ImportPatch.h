#pragma once

#include <windows.h>

namespace standin {

// One function that the modules of this process import from another library, and what they get instead.
struct ImportPatch
{
    const char* library;  // as import tables name it, case aside: "xmllite.dll"
    const char* function; // by name; imports by number are left alone
    void* replacement;    // of the same type as the function
};

// Walks the import tables of all modules that are loaded now, the one at except left out, and points every
// import of the function at the replacement. Returns how many imports were changed; one that was changed
// before is not counted, so the walk may be repeated whenever new modules may have come. A call that asks for
// the function by GetProcAddress is not reached. The patches stay: the module that holds the replacement must
// never be unloaded. May be called on any thread, from DllMain too.
unsigned PatchImports(const ImportPatch& patch, HMODULE except) noexcept;

} // namespace standin
