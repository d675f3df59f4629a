#include "support/FolderLink.h"

#include "standin/ModulePath.h"
#include "support/Text.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

[[nodiscard]] bool IsLink(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Wine cannot make or remove such links, but it runs the programs of the system below, which can.
void RunBelow(const std::wstring& arguments, const std::wstring& path)
{
    using NameBelow = char*(CDECL*)(const wchar_t*);
    const auto nameBelow =
        standin::FunctionOf<NameBelow>(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    if (!nameBelow) {
        return;
    }
    char* const name = nameBelow(path.c_str());
    if (!name) {
        return;
    }
    std::wstring commandLine = arguments + L" \"" + test::FromUtf8(name) + L"\"";
    HeapFree(GetProcessHeap(), 0, name);
    const std::wstring program = L"Z:\\bin\\" + arguments.substr(0, arguments.find(L' '));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &startup, &process)) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
}

template <typename Condition> bool ComesTrue(Condition condition)
{
    for (int round = 0; round < 1000 && !condition(); ++round) {
        Sleep(5);
    }
    return condition();
}

} // namespace

namespace test {

FolderLink::FolderLink(std::wstring path, const std::wstring& target) : m_path(std::move(path))
{
    CreateSymbolicLinkW(m_path.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
    if (IsLink(m_path)) {
        return;
    }
    std::wstring targetBelow = target;
    std::replace(targetBelow.begin(), targetBelow.end(), L'\\', L'/');
    RunBelow(L"ln -s \"" + targetBelow + L"\"", m_path);
    if (!ComesTrue([&] { return IsLink(m_path); })) {
        throw std::runtime_error("cannot make the link " + ToUtf8(m_path));
    }
}

void FolderLink::Remove()
{
    if (IsLink(m_path) && !RemoveDirectoryW(m_path.c_str())) {
        RunBelow(L"rm", m_path);
        ComesTrue([&] { return !IsLink(m_path); });
    }
}

} // namespace test
