#include "standin/platform/Patches.h"

#include "standin/ModulePath.h"
#include "standin/Result.h"
#include "standin/platform/ImportPatch.h"

#include <xmllite.h>

#include <string>
#include <string_view>
#include <utility>

namespace standin {

namespace {

// What stands for a character in an attribute's value; null: it stands for itself.
const wchar_t* EscapedForm(wchar_t character) noexcept
{
    constexpr std::pair<wchar_t, const wchar_t*> forms[] = {
        {L'&', L"&amp;"},  {L'<', L"&lt;"},   {L'>', L"&gt;"},  {L'"', L"&quot;"},
        {L'\t', L"&#x9;"}, {L'\n', L"&#xA;"}, {L'\r', L"&#xD;"}};
    for (const auto& [known, form] : forms) {
        if (known == character) {
            return form;
        }
    }
    return nullptr;
}

// Fails unless XML can hold the text, surrogates only in pairs.
void CheckCharacters(const wchar_t* text)
{
    for (; *text != L'\0'; ++text) {
        if (IS_SURROGATE_PAIR(*text, text[1])) {
            ++text;
        } else if (IS_HIGH_SURROGATE(*text) || IS_LOW_SURROGATE(*text)) {
            throw Failure(static_cast<HRESULT>(WR_E_INVALIDSURROGATEPAIR));
        } else if (*text == 0xFFFE || *text == 0xFFFF ||
                   (*text < L' ' && *text != L'\t' && *text != L'\n' && *text != L'\r')) {
            throw Failure(static_cast<HRESULT>(WC_E_XMLCHARACTER));
        }
    }
}

using WriteAttribute = HRESULT(STDMETHODCALLTYPE*)(IXmlWriter*, LPCWSTR prefix, LPCWSTR name, LPCWSTR uri,
                                                   LPCWSTR value);
constexpr size_t writeAttributePlace = 7; // of WriteAttributeString in a writer's table of methods

WriteAttribute platformWriteAttribute = nullptr;

HRESULT STDMETHODCALLTYPE WriteEscapedAttribute(IXmlWriter* writer, LPCWSTR prefix, LPCWSTR name, LPCWSTR uri,
                                                LPCWSTR value)
{
    if (!value) {
        return platformWriteAttribute(writer, prefix, name, uri, value);
    }
    return ResultOf([&] {
        CheckCharacters(value);
        std::wstring escaped;
        for (const wchar_t character : std::wstring_view(value)) {
            const wchar_t* const form = EscapedForm(character);
            escaped += form ? std::wstring(form) : std::wstring(1, character);
        }
        return platformWriteAttribute(writer, prefix, name, uri, escaped.c_str());
    });
}

using CreateFunction = HRESULT(STDMETHODCALLTYPE*)(REFIID, void**, IMalloc*);

// All writers share one table of methods: it is changed once, with the first of them.
HRESULT STDMETHODCALLTYPE CreateEscapingXmlWriter(REFIID interfaceId, void** object, IMalloc* allocator)
{
    // Asked for by name, so that this module has no import of its own that could lead back here.
    static const auto create = FunctionOf<CreateFunction>(LoadLibraryW(L"xmllite.dll"), "CreateXmlWriter");
    const HRESULT hr = create ? create(interfaceId, object, allocator) : E_UNEXPECTED;
    if (SUCCEEDED(hr)) {
        void** const slot = *static_cast<void***>(*object) + writeAttributePlace;
        [[maybe_unused]] static const void* const patched = [slot] {
            platformWriteAttribute = reinterpret_cast<WriteAttribute>(*slot);
            return PatchSlot(slot, reinterpret_cast<void*>(&WriteEscapedAttribute));
        }();
    }
    return hr;
}

} // namespace

void PatchXmlWriter(HMODULE own) noexcept
{
    PatchImports({"xmllite.dll", "CreateXmlWriter", reinterpret_cast<void*>(&CreateEscapingXmlWriter)}, own);
}

} // namespace standin
