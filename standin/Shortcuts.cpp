#include "standin/Shortcuts.h"

#include "standin/Address.h"

#include <objbase.h> // what follows cannot do without it

#include <intshcut.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <cwchar>
#include <utility>

namespace standin {

namespace {

using Microsoft::WRL::ComPtr;

// Not all import libraries bring these along.
constexpr CLSID shellLinkClass = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr CLSID internetShortcutClass = {
    0xFBF23B40, 0xE3F0, 0x101B, {0x84, 0x88, 0x00, 0xAA, 0x00, 0x3E, 0x56, 0xF8}};
constexpr IID uniformResourceLocatorInterface = {
    0xCABB0DA0, 0xDA57, 0x11CF, {0x99, 0x74, 0x00, 0x20, 0xAF, 0xD7, 0x97, 0x62}};

constexpr DWORD longestPath = 32768; // UTF-16 units, the terminator included

class ComScope
{
public:
    ComScope() noexcept : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComScope()
    {
        if (SUCCEEDED(m_result)) {
            CoUninitialize();
        }
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    HRESULT m_result; // a failure means that the thread is in an apartment of another kind, which will do
};

bool HasExtension(const std::wstring& path, const wchar_t* extension) noexcept
{
    const wchar_t* found = PathFindExtensionW(path.c_str());
    return CompareStringOrdinal(found, -1, extension, -1, TRUE) == CSTR_EQUAL;
}

std::wstring FullPath(const std::wstring& path)
{
    std::wstring full(longestPath, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), longestPath, full.data(), nullptr));
    return full;
}

std::wstring FolderOf(const std::wstring& path)
{
    const size_t end = path.find_last_of(L'\\');
    return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

std::wstring Expand(const std::wstring& text)
{
    std::wstring expanded(longestPath, L'\0');
    const DWORD length = ExpandEnvironmentStringsW(text.c_str(), expanded.data(), longestPath);
    if (length == 0 || length > longestPath) {
        return text;
    }
    expanded.resize(length - 1);
    return expanded;
}

HRESULT MakeFolder(const std::wstring& folder)
{
    const int error = SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
    if (error == ERROR_SUCCESS || error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) {
        return S_OK;
    }
    return HRESULT_FROM_WIN32(static_cast<DWORD>(error));
}

template <typename Object> HRESULT SaveTo(const ComPtr<Object>& object, const std::wstring& path)
{
    ComPtr<IPersistFile> file;
    const HRESULT hr = object.As(&file);
    return SUCCEEDED(hr) ? file->Save(path.c_str(), TRUE) : hr;
}

template <typename Object> HRESULT LoadFrom(const ComPtr<Object>& object, const std::wstring& path)
{
    ComPtr<IPersistFile> file;
    const HRESULT hr = object.As(&file);
    return SUCCEEDED(hr) ? file->Load(path.c_str(), STGM_READ) : hr;
}

HRESULT WriteLink(const std::wstring& path, const std::wstring& target, const std::wstring& arguments)
{
    ComPtr<IShellLinkW> link;
    HRESULT hr = CoCreateInstance(shellLinkClass, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link));
    if (SUCCEEDED(hr)) {
        hr = link->SetPath(target.c_str());
    }
    if (SUCCEEDED(hr)) {
        hr = link->SetArguments(arguments.c_str());
    }
    if (SUCCEEDED(hr)) {
        hr = link->SetWorkingDirectory(FolderOf(target).c_str());
    }
    return SUCCEEDED(hr) ? SaveTo(link, path) : hr;
}

// The item that the link names is asked before the path: Wine keeps the path in the system's code page only,
// which may not hold all its letters.
HRESULT GetTarget(IShellLinkW& link, std::wstring& target)
{
    PIDLIST_ABSOLUTE item = nullptr;
    wchar_t path[MAX_PATH] = L"";
    if (link.GetIDList(&item) == S_OK) {
        const bool isFile = SHGetPathFromIDListW(item, path) && path[0] != L'\0';
        CoTaskMemFree(item);
        if (isFile) {
            target = path;
            return S_OK;
        }
    }
    const HRESULT hr = link.GetPath(path, MAX_PATH, nullptr, 0);
    if (SUCCEEDED(hr)) {
        target = path;
    }
    return hr;
}

HRESULT ReadLink(const std::wstring& path, Shortcut& shortcut)
{
    ComPtr<IShellLinkW> link;
    HRESULT hr = CoCreateInstance(shellLinkClass, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link));
    if (SUCCEEDED(hr)) {
        hr = LoadFrom(link, path);
    }
    std::wstring target;
    wchar_t folder[MAX_PATH] = L"";
    std::wstring arguments(longestPath, L'\0');
    if (SUCCEEDED(hr)) {
        hr = GetTarget(*link.Get(), target);
    }
    if (SUCCEEDED(hr)) {
        hr = link->GetArguments(arguments.data(), static_cast<int>(longestPath));
    }
    if (SUCCEEDED(hr)) {
        hr = link->GetWorkingDirectory(folder, MAX_PATH);
    }
    if (FAILED(hr)) {
        return hr;
    }
    if (target.empty()) {
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND); // a shortcut to something that is no file
    }
    arguments.resize(std::wcslen(arguments.c_str()));
    shortcut = {Expand(target), std::move(arguments), Expand(folder)};
    return S_OK;
}

// The object is declared without an identifier in some headers, hence no IID_PPV_ARGS.
HRESULT CreateInternetShortcut(ComPtr<IUniformResourceLocatorW>& locator)
{
    return CoCreateInstance(internetShortcutClass, nullptr, CLSCTX_INPROC_SERVER,
                            uniformResourceLocatorInterface,
                            reinterpret_cast<void**>(locator.GetAddressOf()));
}

HRESULT WriteAddress(const std::wstring& path, const std::wstring& target)
{
    std::wstring address = target;
    HRESULT hr = PathIsURLW(target.c_str()) ? S_OK : PathToAddress(target, address);
    if (FAILED(hr)) {
        return hr;
    }
    ComPtr<IUniformResourceLocatorW> locator;
    hr = CreateInternetShortcut(locator);
    if (SUCCEEDED(hr)) {
        hr = locator->SetURL(address.c_str(), 0);
    }
    return SUCCEEDED(hr) ? SaveTo(locator, path) : hr;
}

HRESULT ReadAddress(const std::wstring& path, Shortcut& shortcut)
{
    ComPtr<IUniformResourceLocatorW> locator;
    HRESULT hr = CreateInternetShortcut(locator);
    if (SUCCEEDED(hr)) {
        hr = LoadFrom(locator, path);
    }
    wchar_t* text = nullptr;
    if (SUCCEEDED(hr)) {
        hr = locator->GetURL(&text);
    }
    if (FAILED(hr)) {
        return hr;
    }
    Shortcut read;
    read.target = text ? text : L"";
    CoTaskMemFree(text);
    if (read.target.empty()) {
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }
    if (UrlIsFileUrlW(read.target.c_str())) {
        hr = AddressToPath(std::wstring(read.target), read.target);
        if (FAILED(hr)) {
            return hr;
        }
        read.workingFolder = FolderOf(read.target);
    }
    shortcut = std::move(read);
    return S_OK;
}

} // namespace

HRESULT WriteShortcut(const std::wstring& path, const std::wstring& target, const std::wstring& arguments)
{
    if (!IsShortcut(path) || target.empty()) {
        return E_INVALIDARG;
    }
    const bool isLink = HasExtension(path, L".lnk");
    if (!isLink && !arguments.empty()) {
        return E_INVALIDARG;
    }
    const ComScope com;
    const std::wstring full = FullPath(path);
    const std::wstring fullTarget = PathIsURLW(target.c_str()) ? target : FullPath(target);
    const HRESULT hr = MakeFolder(FolderOf(full));
    if (FAILED(hr)) {
        return hr;
    }
    return isLink ? WriteLink(full, fullTarget, arguments) : WriteAddress(full, fullTarget);
}

HRESULT ReadShortcut(const std::wstring& path, Shortcut& shortcut)
{
    if (!IsShortcut(path)) {
        return E_INVALIDARG;
    }
    const ComScope com;
    const std::wstring full = FullPath(path);
    return HasExtension(full, L".lnk") ? ReadLink(full, shortcut) : ReadAddress(full, shortcut);
}

bool IsShortcut(const std::wstring& path) noexcept
{
    return HasExtension(path, L".lnk") || HasExtension(path, L".url");
}

} // namespace standin
