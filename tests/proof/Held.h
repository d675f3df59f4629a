#pragma once

#include <windows.h>

#include <cstddef>
#include <map>
#include <string>

namespace proof {

// What the library holds of the platform's: memory, handles, searches, registry keys, references to modules,
// apartments and the clipboard, counted where it asks for them and where it gives them back.
class Held
{
public:
    // Functions for CallGate that keep the account, by the names of those that they stand in for.
    [[nodiscard]] static std::map<std::string, void*> Functions();

    static void Clear();
    // What is held, in words; empty: nothing.
    [[nodiscard]] static std::string Describe(bool isMemoryCounted = true);

    // The C++ runtime in the library takes one of the process's 1,088 places for threads' values when it
    // raises its first exception, and keeps it when the library is unloaded: gives it back, so that the
    // library can be loaded any number of times. Call when it is gone. Returns how many there were.
    static std::size_t FreeThreadPlaces();

    // Bytes of memory that were given back to the C runtime since Clear().
    [[nodiscard]] static std::size_t FreedBytes();

    enum class Kind
    {
        Memory,
        Handle,
        Search,
        Key,
        Module,
        Apartment,
        Clipboard
    };
    // How often a class of the Windows Runtime was looked up since Clear().
    static std::size_t LookUps();

    // For what stands in for further functions. Both keep the last error.
    static void Take(Kind kind, const void* value, const char* function);
    static void GiveBack(Kind kind, const void* value);
};

} // namespace proof
