// The platform's XML reader and writer, as far as the library and the tests' readers name them.
#pragma once

#include <unknwn.h>

enum XmlNodeType
{
    XmlNodeType_None = 0,
    XmlNodeType_Element = 1,
    XmlNodeType_Attribute = 2,
    XmlNodeType_Text = 3,
    XmlNodeType_CDATA = 4,
    XmlNodeType_ProcessingInstruction = 7,
    XmlNodeType_Comment = 8,
    XmlNodeType_DocumentType = 10,
    XmlNodeType_Whitespace = 13,
    XmlNodeType_EndElement = 15,
    XmlNodeType_XmlDeclaration = 17,
};

struct IXmlReader : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetInput(IUnknown* input) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(UINT property, LONG_PTR* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperty(UINT property, LONG_PTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Read(XmlNodeType* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNodeType(XmlNodeType* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToFirstAttribute() = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToNextAttribute() = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToAttributeByName(LPCWSTR name, LPCWSTR namespaceUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveToElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetQualifiedName(LPCWSTR* name, UINT* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNamespaceUri(LPCWSTR* uri, UINT* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLocalName(LPCWSTR* name, UINT* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPrefix(LPCWSTR* prefix, UINT* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetValue(LPCWSTR* value, UINT* length) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReadValueChunk(WCHAR* buffer, UINT size, UINT* read) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBaseUri(LPCWSTR* uri, UINT* length) = 0;
    virtual BOOL STDMETHODCALLTYPE IsDefault() = 0;
    virtual BOOL STDMETHODCALLTYPE IsEmptyElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLineNumber(UINT* line) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLinePosition(UINT* position) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAttributeCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDepth(UINT* depth) = 0;
    virtual BOOL STDMETHODCALLTYPE IsEOF() = 0;
};

enum XmlWriterProperty
{
    XmlWriterProperty_Indent = 1,
};
enum XmlStandalone
{
    XmlStandalone_Omit = 0,
};

struct IXmlWriter : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetOutput(IUnknown* output) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperty(UINT property, LONG_PTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteStartDocument(XmlStandalone standalone) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteStartElement(LPCWSTR prefix, LPCWSTR name,
                                                        LPCWSTR namespaceUri) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteAttributeString(LPCWSTR prefix, LPCWSTR name, LPCWSTR namespaceUri,
                                                           LPCWSTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteEndElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE Flush() = 0;
};

HRESULT CreateXmlReader(REFIID id, void** reader, IMalloc* allocator);
HRESULT CreateXmlWriter(REFIID id, void** writer, IMalloc* allocator);
