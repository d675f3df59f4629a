#include "standin/platform/IndirectString.h"

#include "standin/Settings.h"
#include "standin/platform/ImportPatch.h"
#include "standin/store/Resources.h"

#include <algorithm>
#include <exception>
#include <string>

namespace standin {

namespace {

using LoadFunction = HRESULT(STDMETHODCALLTYPE*)(PCWSTR, PWSTR, UINT, void**);

// Asked for by name, so that this module has no import of its own that could lead back here.
LoadFunction PlatformLoadIndirectString() noexcept
{
    const HMODULE library = LoadLibraryW(L"shlwapi.dll");
    return library ? reinterpret_cast<LoadFunction>(
                         reinterpret_cast<void*>(GetProcAddress(library, "SHLoadIndirectString")))
                   : nullptr;
}

HRESULT LoadPackageText(const ResourceSource& source, wchar_t* buffer, UINT size)
{
    if (!buffer || size == 0) {
        return E_INVALIDARG;
    }
    const HRESULT failure = GetFailure(Setting::FailResources);
    if (FAILED(failure)) {
        return failure;
    }
    std::wstring text;
    const HRESULT hr = LoadResource(source, text);
    if (FAILED(hr)) {
        return hr;
    }
    const size_t length = std::min<size_t>(text.size(), size - 1); // what is too long is cut
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = L'\0';
    return S_OK;
}

HRESULT STDMETHODCALLTYPE LoadIndirectString(PCWSTR source, PWSTR buffer, UINT size, void** reserved)
{
    try {
        const auto packageSource = source ? ParseResourceSource(source) : std::nullopt;
        if (packageSource) {
            return LoadPackageText(*packageSource, buffer, size);
        }
    } catch (const std::exception&) {
        return E_OUTOFMEMORY;
    }
    static const LoadFunction load = PlatformLoadIndirectString();
    return load ? load(source, buffer, size, reserved) : E_UNEXPECTED;
}

} // namespace

void PatchIndirectString(HMODULE own) noexcept
{
    PatchImports({"shlwapi.dll", "SHLoadIndirectString", reinterpret_cast<void*>(&LoadIndirectString)}, own);
}

} // namespace standin
