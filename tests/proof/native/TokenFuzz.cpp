// What a name means to the search: compared with the rules written down here once more, a character at a
// time.

#include "Fuzzing.h"
#include "catalog/DesktopApp.h"
#include "catalog/ExcludeList.h"
#include "catalog/MetroApp.h"

#include <string>
#include <vector>

const char fuzz::kName[] = "the token rule";

namespace {

using fuzz::Check;

std::wstring NameFrom(proof::Bytes& bytes)
{
    static constexpr wchar_t characters[] =
        L"aAbBmM2_/ -\\.\u3041\u30A1\u30FF\u3400\u4DB5\u4DB6\u4E00\u9FC3\uF900\uFA2D\uFA2E"
        L"\uFA30\uFA6A\uFF10\uFF19\uFF21\uFF3A\uFF41\uFF5A\uFF66\uFF9F\uFFA0\u3040\u00E4";
    std::wstring name;
    for (unsigned i = bytes.Pick(9); i > 0; --i) {
        const unsigned choice = bytes.Take();
        name += choice < 230 ? characters[choice % (std::size(characters) - 1)]
                             : static_cast<wchar_t>(1 + bytes.TakeNumber() % 0xFFFF);
    }
    return name;
}

bool IsWord(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'_' ||
           c == L'/';
}

bool IsSingle(wchar_t c)
{
    return c == L'\\' || (c >= 0x3041 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x4DB5) ||
           (c >= 0x4E00 && c <= 0x9FC3) || (c >= 0xF900 && c <= 0xFA2D) || (c >= 0xFA30 && c <= 0xFA6A) ||
           (c >= 0xFF10 && c <= 0xFF19) || (c >= 0xFF21 && c <= 0xFF3A) || (c >= 0xFF41 && c <= 0xFF5A) ||
           (c >= 0xFF66 && c <= 0xFF9F);
}

bool Contains(const std::wstring& part, const std::wstring& whole)
{
    std::wstring run;
    for (std::size_t i = 0; i <= part.size(); ++i) {
        const wchar_t character = i < part.size() ? part[i] : L'\0';
        if (IsWord(character)) {
            run += character;
            continue;
        }
        if (!run.empty() && whole.find(run) == std::wstring::npos) {
            return false;
        }
        run.clear();
        if (IsSingle(character) && whole.find(character) == std::wstring::npos) {
            return false;
        }
    }
    return true;
}

std::wstring Lower(std::wstring text)
{
    for (wchar_t& character : text) {
        character = character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character + 32) : character;
    }
    return text;
}

struct Answer
{
    HRESULT result = S_OK;
    bool isFound = false;
    std::vector<std::wstring> names;

    void Add(const std::wstring& name)
    {
        for (const std::wstring& known : names) {
            if (Lower(known) == Lower(name)) {
                result = S_FALSE;
                return;
            }
        }
        names.push_back(name);
        result = S_OK;
    }
    void Ask(const std::wstring& wanted, const std::wstring& name, const std::wstring& reading)
    {
        if (Contains(wanted, name)) {
            if (Contains(name, wanted)) {
                isFound = true;
            } else {
                Add(name);
            }
        }
        if (!reading.empty() && Contains(wanted, reading)) {
            Add(name);
        }
    }
};

void Compare(const CQanhApp& app, const std::wstring& wanted, const Answer& expected)
{
    ExcludeList excluded;
    BOOL found = FALSE;
    Check(app.AddToExcludeAppNameList(wanted.c_str(), &excluded, &found) == expected.result,
          "the result is as expected");
    Check((found != FALSE) == expected.isFound, "the wanted one is found as expected");
    std::vector<std::wstring> names;
    for (const WideString& name : excluded) {
        names.emplace_back(name.View());
    }
    Check(names == expected.names, "the names are excluded as expected");
}

} // namespace

void fuzz::Run(proof::Bytes bytes)
{
    const std::wstring wanted = L"x" + NameFrom(bytes);
    const std::wstring w = bytes.Pick(2) == 0 ? wanted : wanted.substr(1);
    std::wstring names[4];
    for (std::wstring& name : names) {
        // Often one that has much of the wanted name.
        const unsigned kind = bytes.Pick(4);
        name = kind == 0   ? NameFrom(bytes)
               : kind == 1 ? w + NameFrom(bytes)
               : kind == 2 ? Lower(NameFrom(bytes) + w)
                           : Lower(w);
    }
    const CQanhMetroApp metro(names[0].c_str(), names[1].c_str(), names[2].c_str(), names[3].c_str());
    Check(metro.IsSubStrNoOrder(w.c_str(), names[0].c_str()) == (Contains(w, names[0]) ? 1 : 0),
          "the token rule");
    if (w.empty()) {
        return;
    }
    const std::wstring lower = Lower(w);

    Answer expected;
    if (!names[0].empty() && Lower(names[0]) != lower) {
        expected.Ask(lower, names[0], names[2]);
        if (!names[1].empty()) {
            expected.Ask(lower, names[1], names[3]);
        }
    }
    Compare(metro, w, expected);

    const bool isInstalled = bytes.Pick(8) != 0;
    const bool isDual = bytes.Pick(2) == 0;
    const CQanhDesktopApp desktop(names[0].c_str(), L"a.lnk", names[1].c_str(), names[2].c_str(), false,
                                  isInstalled, isDual);
    const std::wstring& shown = names[1].empty() ? names[0] : names[1];
    Answer desktopExpected;
    if (!isInstalled) {
        desktopExpected.result = S_FALSE;
    } else if (!shown.empty() && Lower(shown) == lower) {
        desktopExpected.isFound = !isDual;
    } else if (!shown.empty()) {
        desktopExpected.Ask(lower, shown, names[2]);
    }
    Compare(desktop, w, desktopExpected);
}
