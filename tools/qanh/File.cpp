#include "File.h"

#include "Failure.h"
#include "Text.h"
#include "common/UniqueHandle.h"

void WriteNewFile(const std::wstring& path, std::wstring_view text)
{
    const UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::string bytes = ToUtf8(text);
    DWORD written = 0;
    if (!file || !WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        throw Failure{L"cannot write " + path, HRESULT_FROM_WIN32(GetLastError())};
    }
}
