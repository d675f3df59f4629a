#include "standin/Shortcuts.h"

#include "standin/Address.h"
#include "standin/Files.h"
#include "standin/Result.h"

#include <objbase.h> // what follows cannot do without it

#include <intshcut.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <cwchar>

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

template <typename Object> ComPtr<IPersistFile> FileOf(const ComPtr<Object>& object)
{
    ComPtr<IPersistFile> file;
    Check(object.As(&file));
    return file;
}

ComPtr<IShellLinkW> CreateLink()
{
    ComPtr<IShellLinkW> link;
    Check(CoCreateInstance(shellLinkClass, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link)));
    return link;
}

void WriteLink(const std::wstring& path, const std::wstring& target, const std::wstring& arguments)
{
    const ComPtr<IShellLinkW> link = CreateLink();
    Check(link->SetPath(target.c_str()));
    Check(link->SetArguments(arguments.c_str()));
    Check(link->SetWorkingDirectory(FolderOf(target).c_str()));
    Check(FileOf(link)->Save(path.c_str(), TRUE));
}

// The item that the link names is asked before the path: Wine keeps the path in the system's code page only,
// which may not hold all its letters.
std::wstring TargetOf(IShellLinkW& link)
{
    PIDLIST_ABSOLUTE item = nullptr;
    wchar_t path[MAX_PATH] = L"";
    if (link.GetIDList(&item) == S_OK) {
        const bool isFile = SHGetPathFromIDListW(item, path) && path[0] != L'\0';
        CoTaskMemFree(item);
        if (isFile) {
            return path;
        }
    }
    Check(link.GetPath(path, MAX_PATH, nullptr, 0));
    return path;
}

Shortcut ReadLink(const std::wstring& path)
{
    const ComPtr<IShellLinkW> link = CreateLink();
    Check(FileOf(link)->Load(path.c_str(), STGM_READ));
    const std::wstring target = TargetOf(*link.Get());
    std::wstring arguments(longestPath, L'\0');
    Check(link->GetArguments(arguments.data(), static_cast<int>(longestPath)));
    wchar_t folder[MAX_PATH] = L"";
    Check(link->GetWorkingDirectory(folder, MAX_PATH));
    if (target.empty()) {
        CheckStatus(ERROR_FILE_NOT_FOUND); // a shortcut to something that is no file
    }
    arguments.resize(std::wcslen(arguments.c_str()));
    return {Expand(target), arguments, Expand(folder)};
}

// The object is declared without an identifier in some headers, hence no IID_PPV_ARGS.
ComPtr<IUniformResourceLocatorW> CreateInternetShortcut()
{
    ComPtr<IUniformResourceLocatorW> locator;
    Check(CoCreateInstance(internetShortcutClass, nullptr, CLSCTX_INPROC_SERVER,
                           uniformResourceLocatorInterface,
                           reinterpret_cast<void**>(locator.GetAddressOf())));
    return locator;
}

void WriteAddress(const std::wstring& path, const std::wstring& target)
{
    const std::wstring address = PathIsURLW(target.c_str()) ? target : PathToAddress(target);
    const ComPtr<IUniformResourceLocatorW> locator = CreateInternetShortcut();
    Check(locator->SetURL(address.c_str(), 0));
    Check(FileOf(locator)->Save(path.c_str(), TRUE));
}

Shortcut ReadAddress(const std::wstring& path)
{
    const ComPtr<IUniformResourceLocatorW> locator = CreateInternetShortcut();
    Check(FileOf(locator)->Load(path.c_str(), STGM_READ));
    wchar_t* text = nullptr;
    Check(locator->GetURL(&text));
    const std::wstring address = text ? text : L"";
    CoTaskMemFree(text);
    if (address.empty()) {
        CheckStatus(ERROR_INVALID_DATA);
    }
    if (!UrlIsFileUrlW(address.c_str())) {
        return {address, {}, {}};
    }
    const std::wstring target = AddressToPath(address);
    return {target, {}, FolderOf(target)};
}

} // namespace

void WriteShortcut(const std::wstring& path, const std::wstring& target, const std::wstring& arguments)
{
    const bool isLink = HasExtension(path, L".lnk");
    if (!IsShortcut(path) || target.empty() || (!isLink && !arguments.empty())) {
        throw Failure(E_INVALIDARG);
    }
    const ComScope com;
    const std::wstring full = FullPath(path);
    const std::wstring fullTarget = PathIsURLW(target.c_str()) ? target : FullPath(target);
    MakeFolder(FolderOf(full));
    if (isLink) {
        WriteLink(full, fullTarget, arguments);
    } else {
        WriteAddress(full, fullTarget);
    }
}

Shortcut ReadShortcut(const std::wstring& path)
{
    if (!IsShortcut(path)) {
        throw Failure(E_INVALIDARG);
    }
    const ComScope com;
    const std::wstring full = FullPath(path);
    return HasExtension(full, L".lnk") ? ReadLink(full) : ReadAddress(full);
}

bool HasExtension(const std::wstring& path, const wchar_t* extension) noexcept
{
    const wchar_t* found = PathFindExtensionW(path.c_str());
    return CompareStringOrdinal(found, -1, extension, -1, TRUE) == CSTR_EQUAL;
}

bool IsShortcut(const std::wstring& path) noexcept
{
    return HasExtension(path, L".lnk") || HasExtension(path, L".url");
}

} // namespace standin
