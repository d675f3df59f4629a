#pragma once

#include "support/Trace.h"

#include <string>

namespace test {

// What reading, setting and deleting the browser's tile setting leaves in the log.
inline Lines GetTileLines(int value)
{
    return Call("CQanhReg::GetCurrentTileImmersiveActivation",
                "(*pdwTileImmersiveActivation = " + std::to_string(value) + ")");
}
inline Lines SetTileLines(int value, const std::string& result = "")
{
    return Call("CQanhReg::SetCurrentTileImmersiveActivation(" + std::to_string(value) + ")", result);
}
inline Lines DeleteTileLines(const std::string& result = "")
{
    return Call("CQanhReg::DeleteTileImmersiveActivation", result);
}

} // namespace test
