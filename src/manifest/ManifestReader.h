#pragma once

#include "platform/WinRtPackages.h"

#include <windows.h>

#include <string>
#include <string_view>

class CQanhPackage;
struct IXmlReader;

// Reads the names of a Store package's applications out of its manifest. Stateless: each call opens the
// manifest anew, on the calling thread.
class CQanhManifestReader
{
public:
    CQanhManifestReader() = delete;

    // The texts that resources are resolved to hold 255 characters and the terminator.
    static constexpr int kTextSize = 256;
    // How a name that is a reference to a resource begins, in lower case.
    static constexpr std::wstring_view kResourcePrefix = L"ms-resource:";

    // Adds an application to the package's record for each one that the manifest declares, with the reader
    // that LoadSetting() chooses, and returns that reader's result.
    [[nodiscard]] static HRESULT AddAppsToPackage(const wchar_t* path, CQanhPackage* pPackage) noexcept;

    // 1 for the XML reader, 0 for the system's manifest reader.
    [[nodiscard]] static DWORD LoadSetting() noexcept;

    // The two readers. Both: E_POINTER, E_INVALIDARG for an empty path, the failure to open or read the
    // manifest (with the applications up to there added), E_FAIL for an exception. The system's reader stores
    // display names as they stand and no short names, and ends with S_OK; the XML reader stores both in lower
    // case, with resources resolved, and ends with S_FALSE at the end of the document.
    [[nodiscard]] static HRESULT GetAppNameUsingAPI(const wchar_t* path, CQanhPackage* pPackage) noexcept;
    [[nodiscard]] static HRESULT GetAppNameUsingXmlParser(const wchar_t* path,
                                                          CQanhPackage* pPackage) noexcept;

    // Sets *pCan to 1 when every name of the manifest can be had now, and to 0 when one of them stays an
    // unresolved resource or the manifest cannot be read to its end. Results as GetAppNameUsingXmlParser().
    [[nodiscard]] static HRESULT IsCanGetAppNameFromManifest(const wchar_t* path, CQanhPackage* pPackage,
                                                             BOOL* pCan) noexcept;

    // The display name of a package of one application, in lower case unless it is a resource: a text of
    // kTextSize characters for LocalFree, which may be handed out although the call fails. S_OK; S_FALSE with
    // an empty text when the manifest gives no name; E_POINTER; 0xA0000002 for a package of several
    // applications; E_FAIL; E_OUTOFMEMORY; or the failure to open or read the manifest. The caller holds an
    // apartment around the package.
    [[nodiscard]] static HRESULT GetAppDisplayName(platform::IPackage* pPackage, wchar_t** ppName) noexcept;

    // Moves on to the next element of this name, wherever it stands. S_OK; S_FALSE at the end of the
    // document; E_POINTER; or the reader's failure. What the reader raises is passed on, here and below.
    [[nodiscard]] static HRESULT MoveToElementByName(IXmlReader* pReader, const wchar_t* name);

    // Copies an attribute of the element at hand. S_OK; S_FALSE when there is none of this name, with the
    // text as it was; E_POINTER; or the reader's failure. Throws std::bad_alloc.
    [[nodiscard]] static HRESULT GetAttributeValueByName(IXmlReader* pReader, const wchar_t* name,
                                                         std::wstring& value);

    // Turns a resource reference ("ms-resource:...") of a package into the text that the user sees. False
    // when it is no reference or cannot be resolved; the buffer then holds what the system left in it. The
    // package's names must not be empty. Throws std::bad_alloc.
    [[nodiscard]] static BOOL ConvertMsResourceToString(std::wstring resource, const wchar_t* packageFullName,
                                                        const wchar_t* packageName, wchar_t* buffer);
};
