#include "File.h"

#include "Failure.h"
#include "Text.h"
#include "common/UniqueHandle.h"

void WriteNewFile(const std::wstring& path, std::wstring_view text)
{
    UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::string bytes = ToUtf8(text);
    DWORD written = 0;
    DWORD error = ERROR_SUCCESS;
    if (!file || !WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        error = GetLastError();
    } else if (written != bytes.size()) {
        error = ERROR_DISK_FULL;
    }
    if (error == ERROR_SUCCESS) {
        return;
    }
    if (file) {
        // Only a part of it stands there, and would be in the way of the next try.
        file.Reset();
        DeleteFileW(path.c_str());
    }
    throw Failure{L"cannot write " + path, HRESULT_FROM_WIN32(error)};
}
