#pragma once

#include <unknwn.h>

constexpr DWORD STGM_READ = 0;
constexpr DWORD STGM_WRITE = 1;
constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
constexpr DWORD STGM_CREATE = 0x1000;
HRESULT SHCreateStreamOnFileW(const wchar_t* path, DWORD mode, IStream** stream);
HRESULT SHCreateStreamOnFileEx(const wchar_t* path, DWORD mode, DWORD attributes, BOOL create,
                               IStream* reserved, IStream** stream);
HRESULT SHLoadIndirectString(const wchar_t* source, wchar_t* buffer, UINT size, void** reserved);
