#pragma once

#include "standin/platform/ImportPatch.h"

#include <stdexcept>
#include <string>

namespace host {

// Has the library call something else than a function that it imports. Throws when it does not import it.
template <typename Function> void Patch(HMODULE library, const char* function, Function replacement)
{
    if (!standin::PatchImport(library, {nullptr, function, reinterpret_cast<void*>(replacement)})) {
        throw std::runtime_error(std::string("the library does not import ") + function);
    }
}

} // namespace host
