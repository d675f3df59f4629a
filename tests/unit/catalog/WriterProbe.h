#pragma once

#include "support/ImportPatch.h"

#include <windows.h>

#include <xmllite.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace test {

// A writer that writes down what it is asked for, and fails when it is told to.
class WriterProbe final : public IXmlWriter
{
public:
    WriterProbe() = default;
    WriterProbe(const WriterProbe&) = delete;
    WriterProbe& operator=(const WriterProbe&) = delete;

    // The calls in order: "start Package", "IsInstalled=0", "end" and so on.
    std::vector<std::wstring> calls;
    std::size_t failingCall = static_cast<std::size_t>(-1);
    HRESULT failure = HRESULT_FROM_WIN32(ERROR_DISK_FULL);
    std::function<void(const std::wstring& call)> onCall;
    ULONG references = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppObject) override
    {
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE SetOutput(IUnknown* pOutput) override
    {
        return Note(pOutput ? L"output" : L"no output");
    }
    HRESULT STDMETHODCALLTYPE GetProperty(UINT, LONG_PTR*) override { return Note(L"get property"); }
    HRESULT STDMETHODCALLTYPE SetProperty(UINT property, LONG_PTR value) override
    {
        return Note(L"property " + std::to_wstring(property) + L"=" + std::to_wstring(value));
    }
    HRESULT STDMETHODCALLTYPE WriteAttributes(IXmlReader*, BOOL) override { return Note(L"attributes"); }
    HRESULT STDMETHODCALLTYPE WriteAttributeString(LPCWSTR prefix, LPCWSTR name, LPCWSTR uri,
                                                   LPCWSTR value) override
    {
        return Note(Prefixed(prefix, uri) + name + L"=" + value);
    }
    HRESULT STDMETHODCALLTYPE WriteCData(LPCWSTR) override { return Note(L"cdata"); }
    HRESULT STDMETHODCALLTYPE WriteCharEntity(WCHAR) override { return Note(L"char entity"); }
    HRESULT STDMETHODCALLTYPE WriteChars(const WCHAR*, UINT) override { return Note(L"chars"); }
    HRESULT STDMETHODCALLTYPE WriteComment(LPCWSTR) override { return Note(L"comment"); }
    HRESULT STDMETHODCALLTYPE WriteDocType(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) override
    {
        return Note(L"doctype");
    }
    HRESULT STDMETHODCALLTYPE WriteElementString(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) override
    {
        return Note(L"element string");
    }
    HRESULT STDMETHODCALLTYPE WriteEndDocument() override { return Note(L"end document"); }
    HRESULT STDMETHODCALLTYPE WriteEndElement() override { return Note(L"end"); }
    HRESULT STDMETHODCALLTYPE WriteEntityRef(LPCWSTR) override { return Note(L"entity"); }
    HRESULT STDMETHODCALLTYPE WriteFullEndElement() override { return Note(L"full end"); }
    HRESULT STDMETHODCALLTYPE WriteName(LPCWSTR) override { return Note(L"name"); }
    HRESULT STDMETHODCALLTYPE WriteNmToken(LPCWSTR) override { return Note(L"token"); }
    HRESULT STDMETHODCALLTYPE WriteNode(IXmlReader*, BOOL) override { return Note(L"node"); }
    HRESULT STDMETHODCALLTYPE WriteNodeShallow(IXmlReader*, BOOL) override { return Note(L"shallow node"); }
    HRESULT STDMETHODCALLTYPE WriteProcessingInstruction(LPCWSTR, LPCWSTR) override
    {
        return Note(L"instruction");
    }
    HRESULT STDMETHODCALLTYPE WriteQualifiedName(LPCWSTR, LPCWSTR) override
    {
        return Note(L"qualified name");
    }
    HRESULT STDMETHODCALLTYPE WriteRaw(LPCWSTR) override { return Note(L"raw"); }
    HRESULT STDMETHODCALLTYPE WriteRawChars(const WCHAR*, UINT) override { return Note(L"raw chars"); }
    HRESULT STDMETHODCALLTYPE WriteStartDocument(XmlStandalone standalone) override
    {
        return Note(L"start document " + std::to_wstring(standalone));
    }
    HRESULT STDMETHODCALLTYPE WriteStartElement(LPCWSTR prefix, LPCWSTR name, LPCWSTR uri) override
    {
        return Note(L"start " + Prefixed(prefix, uri) + name);
    }
    HRESULT STDMETHODCALLTYPE WriteString(LPCWSTR) override { return Note(L"string"); }
    HRESULT STDMETHODCALLTYPE WriteSurrogateCharEntity(WCHAR, WCHAR) override { return Note(L"surrogates"); }
    HRESULT STDMETHODCALLTYPE WriteWhitespace(LPCWSTR) override { return Note(L"whitespace"); }
    HRESULT STDMETHODCALLTYPE Flush() override { return Note(L"flush"); }

private:
    static std::wstring Prefixed(LPCWSTR prefix, LPCWSTR uri)
    {
        return (prefix ? std::wstring(prefix) + L":" : L"") + (uri ? L"{" + std::wstring(uri) + L"}" : L"");
    }

    HRESULT Note(const std::wstring& call)
    {
        calls.push_back(call);
        if (onCall) {
            onCall(call);
        }
        return calls.size() - 1 == failingCall ? failure : S_OK;
    }
};

// Lets the library write with this writer, until the end of the scope. One at a time.
class WriterInstead
{
public:
    explicit WriterInstead(WriterProbe* pWriter) : m_patch("CreateXmlWriter", Create) { s_pWriter = pWriter; }

private:
    using CreateFunction = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);

    static HRESULT WINAPI Create(REFIID iid, void** ppObject, IMalloc*)
    {
        *ppObject = nullptr;
        if (!IsEqualIID(iid, __uuidof(IXmlWriter))) {
            return E_NOINTERFACE;
        }
        s_pWriter->AddRef();
        *ppObject = s_pWriter;
        return S_OK;
    }

    static inline WriterProbe* s_pWriter = nullptr;
    ImportPatch<CreateFunction> m_patch;
};

} // namespace test
