#pragma once

#include <windows.h>

namespace test {

// Replaces a function that this program (with the library's code in it) imports, until the end of the scope:
// to see what the library asks of the platform, or to make that fail. The function is known by its name,
// whichever DLL it comes from. Only calls from this module are affected.
//
//     test::ImportPatch<decltype(&CreateEventW)> patch("CreateEventW",
//         [](SECURITY_ATTRIBUTES*, BOOL, BOOL, const wchar_t*) -> HANDLE { SetLastError(5); return nullptr;
//         });
//     ... patch.Original()(...) calls the real one.
class ImportPatchBase
{
protected:
    // The function's name must outlive the patch.
    ImportPatchBase(const char* function, void* replacement);
    ~ImportPatchBase();
    ImportPatchBase(const ImportPatchBase&) = delete;
    ImportPatchBase& operator=(const ImportPatchBase&) = delete;

    [[nodiscard]] void* Replaced() const { return m_original; }

private:
    const char* m_function;
    void* m_original;
};

template <typename Function> class ImportPatch : private ImportPatchBase
{
public:
    ImportPatch(const char* function, Function replacement)
        : ImportPatchBase(function, reinterpret_cast<void*>(replacement))
    {
    }
    // The function that the patch stands in for.
    [[nodiscard]] Function Original() const { return reinterpret_cast<Function>(Replaced()); }
};

} // namespace test
