#pragma once

#include <windows.h>

namespace standin {

// One function that a module imports, and what it gets instead.
struct ImportPatch
{
    const char* library; // as import tables name it, case aside: "xmllite.dll"; null: whichever it comes from
    const char* function; // by name; imports by number are left alone
    void* replacement;    // of the same type as the function
};

// Points the module's imports of the function at the replacement, each in one piece: other threads may be
// calling through it. Returns what stood there before, also when that was the replacement; null: the module
// does not import the function, or its table cannot be written. A call that asks for the function by
// GetProcAddress is not reached. Allocates nothing; may be called on any thread, from DllMain too.
void* PatchImport(HMODULE module, const ImportPatch& patch) noexcept;

// Points one place of a table of functions at the replacement, likewise. Returns what stood there; null: it
// cannot be written.
void* PatchSlot(void* slot, void* replacement) noexcept;

// The same as PatchImport for all modules of this process that are loaded now, the one at except left out.
// Returns how many modules were changed, so the walk may be repeated whenever new modules may have come. The
// patches stay: the module that holds the replacement must never be unloaded.
unsigned PatchImports(const ImportPatch& patch, HMODULE except) noexcept;

} // namespace standin
