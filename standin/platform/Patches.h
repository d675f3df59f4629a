#pragma once

#include <windows.h>

namespace standin {

// Makes every module of this process that imports SHLoadIndirectString get the texts of the store's packages
// for sources of the form "@{full name?ms-resource://name/key}"; any other source goes to the platform's
// function. To be repeated when modules may have been loaded since. own: the module that this code is in.
void PatchIndirectString(HMODULE own) noexcept;

// Makes every module of this process that imports CreateXmlWriter get a writer whose WriteAttributeString
// writes what the real platform's does; see the stand-in's README for the difference. To be repeated when
// modules may have been loaded since. own: the module that this code is in.
void PatchXmlWriter(HMODULE own) noexcept;

} // namespace standin
