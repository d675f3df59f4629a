#pragma once

#include "support/UnaskedReader.h"

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace test {

// A reader that hands on to another one what the library asks for, counts the calls and gives some of them a
// result of its own.
class ReaderProbe final : public UnaskedReader
{
public:
    explicit ReaderProbe(IXmlReader* pReader) : m_pReader(pReader) {}
    ReaderProbe(const ReaderProbe&) = delete;
    ReaderProbe& operator=(const ReaderProbe&) = delete;

    // The result of this call of the method (0 is the first), which is not handed on; only the name of a node
    // is asked for all the same, to see that nobody uses it then.
    void Answer(const char* method, int index, HRESULT result) { m_answers[{method, index}] = result; }
    // This call raises an exception.
    void Raise(const char* method, int index) { m_raises.insert({method, index}); }
    [[nodiscard]] int Calls(const char* method) const
    {
        const auto calls = m_calls.find(method);
        return calls == m_calls.end() ? 0 : calls->second;
    }
    ULONG references = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppObject) override
    {
        *ppObject = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE SetInput(IUnknown* input) override
    {
        return Call("SetInput", [&] { return m_pReader->SetInput(input); });
    }
    HRESULT STDMETHODCALLTYPE Read(XmlNodeType* type) override
    {
        return Call("Read", [&] { return m_pReader->Read(type); });
    }
    HRESULT STDMETHODCALLTYPE GetNodeType(XmlNodeType* type) override
    {
        return Call("GetNodeType", [&] { return m_pReader->GetNodeType(type); });
    }
    HRESULT STDMETHODCALLTYPE MoveToFirstAttribute() override
    {
        return Call("MoveToFirstAttribute", [&] { return m_pReader->MoveToFirstAttribute(); });
    }
    HRESULT STDMETHODCALLTYPE MoveToNextAttribute() override
    {
        return Call("MoveToNextAttribute", [&] { return m_pReader->MoveToNextAttribute(); });
    }
    HRESULT STDMETHODCALLTYPE MoveToElement() override { return m_pReader->MoveToElement(); }
    HRESULT STDMETHODCALLTYPE GetLocalName(LPCWSTR* name, UINT* length) override
    {
        const HRESULT hr = m_pReader->GetLocalName(name, length);
        return Call("GetLocalName", [hr] { return hr; });
    }
    HRESULT STDMETHODCALLTYPE GetValue(LPCWSTR* value, UINT* length) override
    {
        return Call("GetValue", [&] { return m_pReader->GetValue(value, length); });
    }
    BOOL STDMETHODCALLTYPE IsEmptyElement() override { return m_pReader->IsEmptyElement(); }
    HRESULT STDMETHODCALLTYPE GetLineNumber(UINT* line) override { return m_pReader->GetLineNumber(line); }
    HRESULT STDMETHODCALLTYPE GetLinePosition(UINT* position) override
    {
        return m_pReader->GetLinePosition(position);
    }
    HRESULT STDMETHODCALLTYPE GetDepth(UINT* depth) override
    {
        return Call("GetDepth", [&] { return m_pReader->GetDepth(depth); });
    }
    BOOL STDMETHODCALLTYPE IsEOF() override { return m_pReader->IsEOF(); }

private:
    template <typename Original> HRESULT Call(const char* method, Original original)
    {
        const std::pair<std::string, int> call(method, m_calls[method]++);
        if (m_raises.contains(call)) {
            throw std::runtime_error("of the reader");
        }
        const auto answer = m_answers.find(call);
        return answer == m_answers.end() ? original() : answer->second;
    }

    IXmlReader* m_pReader;
    std::map<std::string, int> m_calls;
    std::map<std::pair<std::string, int>, HRESULT> m_answers;
    std::set<std::pair<std::string, int>> m_raises;
};

} // namespace test
