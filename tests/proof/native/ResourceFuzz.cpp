// Any text can be a reference to a resource. What is asked of the system is compared with what the rules for
// references make of the text, written down here once more in another way.

#include "Fuzzing.h"
#include "Platform.h"
#include "manifest/ManifestReader.h"

#include <algorithm>
#include <vector>

const char fuzz::kName[] = "references to resources";

namespace {

std::wstring TextFrom(proof::Bytes& bytes, unsigned longest)
{
    static constexpr std::wstring_view pieces[] = {
        L"ms-resource:", L"MS-Resource:",   L"///", L"/", L"//", L"%s", L"Name", L"?", L"}", L"@{", L" ",
        L"\u30E1",       L"ms-resource:///"};
    std::wstring text;
    for (unsigned i = bytes.Pick(longest); i > 0; --i) {
        const unsigned choice = bytes.Take();
        if (choice < 200) {
            text += pieces[choice % std::size(pieces)];
        } else if (choice < 210) {
            text.append(bytes.TakeNumber() % 2000, L'x');
        } else {
            text += static_cast<wchar_t>(1 + bytes.TakeNumber() % 0xFFFF);
        }
    }
    return text;
}

std::wstring Lower(std::wstring text)
{
    for (wchar_t& character : text) {
        character = L'A' <= character && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
    }
    return text;
}

// The sources to be asked for, in their order.
std::vector<std::wstring> Expected(const std::wstring& reference, const std::wstring& fullName,
                                   const std::wstring& name)
{
    constexpr std::wstring_view prefix = L"ms-resource:";
    std::wstring key = Lower(reference);
    if (fullName.empty() || name.empty() || key.compare(0, prefix.size(), prefix) != 0) {
        return {};
    }
    key = key.substr(prefix.size());
    if (key.compare(0, 3, L"///") == 0) {
        return {L"@{" + fullName + L"?ms-resource://" + name + L"/" + key.substr(3) + L"}"};
    }
    while (!key.empty() && key.front() == L'/') {
        key.erase(key.begin());
    }
    while (!key.empty() && key.back() == L'/') {
        key.pop_back();
    }
    return {L"@{" + fullName + L"?ms-resource://" + name + L"/resources/" + key + L"}",
            L"@{" + fullName + L"? ms-resource://" + name + L"/" + key + L"}"};
}

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    const unsigned found = bytes.Pick(3); // the try that finds it; 2: none does
    const std::wstring fullName = TextFrom(bytes, 4);
    const std::wstring name = TextFrom(bytes, 4);
    const std::wstring reference = (bytes.Pick(8) != 0 ? L"ms-resource:" : L"") + TextFrom(bytes, 10);
    std::vector<std::wstring> asked;
    native::TheHooks().loadIndirectString = [&](std::wstring_view source, wchar_t* buffer, UINT size) {
        Check(size == CQanhManifestReader::kTextSize, "the buffer's size is told");
        asked.emplace_back(source);
        if (asked.size() != found + 1) {
            return E_FAIL;
        }
        std::fill_n(buffer, size - 1, L'r');
        buffer[size - 1] = L'\0';
        return S_OK;
    };
    wchar_t text[CQanhManifestReader::kTextSize] = {};
    const BOOL isLoaded =
        CQanhManifestReader::ConvertMsResourceToString(reference, fullName.c_str(), name.c_str(), text);

    std::vector<std::wstring> expected = Expected(reference, fullName, name);
    Check((isLoaded != FALSE) == (found < expected.size()), "it is loaded when one of the tries finds it");
    expected.resize(std::min<std::size_t>(expected.size(), found + 1));
    Check(asked == expected, "the sources are those of the rules");
    Check(isLoaded != FALSE || text[0] == L'\0', "what is not found leaves no text");
}
