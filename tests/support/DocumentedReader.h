#pragma once

#include "standin/platform/ComObject.h"
#include "support/UnaskedReader.h"

#include <windows.h>

#include <objidl.h>
#include <xmllite.h>

#include <string>
#include <string_view>
#include <vector>

namespace test {

// An XML reader that ends as the platform's is documented to, where the one of a runtime may not: a document
// whose input ends before its root is closed is a failure wherever that is, with XmlLite's "input ends", and
// behind the end there is no node to ask about. It reads what catalogues and manifests consist of: UTF-8
// with elements, attributes, texts, comments, CDATA sections and instructions. Of other faults it sees those
// that it meets, such as what is no character; they are failures, too.
class DocumentedReader : public standin::ComObject<UnaskedReader>
{
public:
    static constexpr HRESULT kInputEnds = static_cast<HRESULT>(0xC00CEE01);
    static constexpr HRESULT kNoXml = static_cast<HRESULT>(0xC00CEE23);

    // The input is an IStream.
    HRESULT STDMETHODCALLTYPE SetInput(IUnknown* input) override;
    HRESULT STDMETHODCALLTYPE Read(XmlNodeType* type) override;
    // S_FALSE when there is no node: before the first and behind the last.
    HRESULT STDMETHODCALLTYPE GetNodeType(XmlNodeType* type) override;
    HRESULT STDMETHODCALLTYPE MoveToFirstAttribute() override;
    HRESULT STDMETHODCALLTYPE MoveToNextAttribute() override;
    HRESULT STDMETHODCALLTYPE MoveToElement() override;
    HRESULT STDMETHODCALLTYPE GetLocalName(LPCWSTR* name, UINT* length) override;
    HRESULT STDMETHODCALLTYPE GetValue(LPCWSTR* value, UINT* length) override;
    // An end tag counts as one deeper than its element, and so does an attribute.
    HRESULT STDMETHODCALLTYPE GetDepth(UINT* depth) override;
    // Where the node begins.
    HRESULT STDMETHODCALLTYPE GetLineNumber(UINT* line) override;
    HRESULT STDMETHODCALLTYPE GetLinePosition(UINT* position) override;
    BOOL STDMETHODCALLTYPE IsEmptyElement() override { return m_isEmptyElement; }
    BOOL STDMETHODCALLTYPE IsEOF() override { return m_position == m_text.size(); }

private:
    struct Attribute
    {
        std::wstring name;
        std::wstring value;
    };

    // The steps of Read(). Each throws its failure: kInputEnds when the text ends in it, kNoXml.
    bool ReadNode();
    void ReadStartTag();
    void ReadEndTag();
    Attribute ReadAttribute();
    // The next character, which is passed over.
    char Take();
    // Whether the text goes on with this, which is passed over then.
    bool TakeIf(std::string_view expected);
    // What stands before the terminator, which is passed over too.
    std::string TakeUpTo(std::string_view terminator);
    std::string TakeName();
    void PassOverBlanks();
    void NotePlace();
    static HRESULT Give(const std::wstring& text, LPCWSTR* given, UINT* length);

    std::string m_text;
    std::size_t m_position = 0;
    std::vector<std::wstring> m_open; // the elements around the node, the innermost last
    bool m_hasRoot = false;
    HRESULT m_result = S_OK; // of the last Read()

    XmlNodeType m_type = XmlNodeType_None;
    std::wstring m_name;
    std::wstring m_value;
    bool m_isEmptyElement = false;
    UINT m_depth = 0;
    // Of the node; and how far the text was looked through for that.
    UINT m_line = 1;
    UINT m_linePosition = 0;
    std::size_t m_noted = 0;
    std::size_t m_lineStart = 0;
    std::vector<Attribute> m_attributes;
    std::size_t m_attribute = 0; // its number from 1 on; 0: the reader stands on the node itself
};

} // namespace test
