#include "standin/platform/Patches.h"

#include "standin/ModulePath.h"
#include "standin/Result.h"
#include "standin/Settings.h"
#include "standin/platform/ImportPatch.h"
#include "standin/store/Resources.h"

#include <algorithm>
#include <string>

namespace standin {

namespace {

using LoadFunction = HRESULT(STDMETHODCALLTYPE*)(PCWSTR, PWSTR, UINT, void**);

HRESULT LoadPackageText(const ResourceSource& source, wchar_t* buffer, UINT size)
{
    if (!buffer || size == 0) {
        return E_INVALIDARG;
    }
    Check(GetFailure(Setting::FailResources));
    std::wstring text;
    Check(LoadResource(source, text));
    const size_t length = std::min<size_t>(text.size(), size - 1); // what is too long is cut
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = L'\0';
    return S_OK;
}

HRESULT STDMETHODCALLTYPE LoadIndirectString(PCWSTR source, PWSTR buffer, UINT size, void** reserved)
{
    // Asked for by name, so that this module has no import of its own that could lead back here.
    static const auto load = FunctionOf<LoadFunction>(LoadLibraryW(L"shlwapi.dll"), "SHLoadIndirectString");
    return ResultOf([&] {
        const auto packageSource = source ? ParseResourceSource(source) : std::nullopt;
        if (packageSource) {
            return LoadPackageText(*packageSource, buffer, size);
        }
        return load ? load(source, buffer, size, reserved) : E_UNEXPECTED;
    });
}

} // namespace

void PatchIndirectString(HMODULE own) noexcept
{
    PatchImports({"shlwapi.dll", "SHLoadIndirectString", reinterpret_cast<void*>(&LoadIndirectString)}, own);
}

} // namespace standin
