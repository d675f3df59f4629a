#pragma once

#include <unknwn.h>

#include <functional>
#include <string>
#include <string_view>

// What stands behind the platform's names in the native proofs. The hooks and the files are set before the
// library is called; the library may then be called from several threads.
namespace native {

struct Hooks
{
    // Makes XML readers; none: the tests' reader that ends as the platform's is documented to.
    std::function<HRESULT(REFIID id, void** reader)> makeReader;
    // Makes XML writers; none: one that writes as the platform's is documented to.
    std::function<HRESULT(REFIID id, void** writer)> makeWriter;
    // Makes the system's manifest reader; none: there is no such class.
    std::function<HRESULT(void** factory)> makeAppxFactory;
    // Looks up a resource; none: it is not found.
    std::function<HRESULT(std::wstring_view source, wchar_t* buffer, UINT size)> loadIndirectString;
    UINT codePage = 1252; // that, or UTF-8
    // What the C runtime's bounded formatter does with a text that does not fit.
    enum class Overflow
    {
        Empties, // and gives -1
        FillsWithoutEnd,
        EndsBehind, // with a zero behind the buffer
    } overflow = Overflow::Empties;
};
Hooks& TheHooks();

// The reader that there is without a hook.
HRESULT MakeSoundReader(REFIID id, void** reader);

void SetFile(const std::wstring& path, std::string bytes);
std::string FileBytes(const std::wstring& path);

// What the trace has written since the last call; it is dropped.
std::string TakeLog();

} // namespace native
