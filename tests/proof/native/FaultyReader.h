#pragma once

#include "Platform.h"
#include "standin/platform/ComObject.h"
#include "support/UnaskedReader.h"

#include <xmllite.h>

#include <wrl/client.h>

namespace native {

// An XML reader that goes wrong at one of its calls, and from there on: fails, or says that all is well and
// does not move. It must never hold the library up.
struct Fault
{
    unsigned call = 0; // 0: none
    HRESULT result = E_FAIL;
};

class FaultyReader final : public standin::ComObject<test::UnaskedReader>
{
public:
    FaultyReader(Microsoft::WRL::ComPtr<IXmlReader> reader, Fault fault)
        : m_reader(std::move(reader)), m_fault(fault)
    {
    }

    HRESULT STDMETHODCALLTYPE SetInput(IUnknown* input) override { return m_reader->SetInput(input); }
    HRESULT STDMETHODCALLTYPE Read(XmlNodeType* type) override
    {
        return IsFaulty() ? m_fault.result : m_reader->Read(type);
    }
    HRESULT STDMETHODCALLTYPE GetNodeType(XmlNodeType* type) override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->GetNodeType(type);
    }
    HRESULT STDMETHODCALLTYPE MoveToFirstAttribute() override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->MoveToFirstAttribute();
    }
    HRESULT STDMETHODCALLTYPE MoveToNextAttribute() override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->MoveToNextAttribute();
    }
    HRESULT STDMETHODCALLTYPE MoveToElement() override { return m_reader->MoveToElement(); }
    HRESULT STDMETHODCALLTYPE GetLocalName(LPCWSTR* name, UINT* length) override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->GetLocalName(name, length);
    }
    HRESULT STDMETHODCALLTYPE GetValue(LPCWSTR* value, UINT* length) override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->GetValue(value, length);
    }
    HRESULT STDMETHODCALLTYPE GetDepth(UINT* depth) override
    {
        return IsFaulty() && FAILED(m_fault.result) ? m_fault.result : m_reader->GetDepth(depth);
    }
    HRESULT STDMETHODCALLTYPE GetLineNumber(UINT* line) override { return m_reader->GetLineNumber(line); }
    HRESULT STDMETHODCALLTYPE GetLinePosition(UINT* position) override
    {
        return m_reader->GetLinePosition(position);
    }
    BOOL STDMETHODCALLTYPE IsEmptyElement() override { return m_reader->IsEmptyElement(); }
    BOOL STDMETHODCALLTYPE IsEOF() override { return m_reader->IsEOF(); }

private:
    bool IsFaulty() { return m_fault.call != 0 && ++m_calls >= m_fault.call; }

    Microsoft::WRL::ComPtr<IXmlReader> m_reader;
    Fault m_fault;
    unsigned m_calls = 0;
};

// Every reader that is made from now on has that fault; none takes it back.
inline void SetReaderFault(Fault fault)
{
    TheHooks().makeReader = nullptr;
    if (fault.call != 0) {
        TheHooks().makeReader = [fault](REFIID id, void** reader) {
            Microsoft::WRL::ComPtr<IXmlReader> sound;
            const HRESULT hr = MakeSoundReader(IID_PPV_ARGS(sound.GetAddressOf()));
            return FAILED(hr) ? hr
                              : standin::CreateComObject<FaultyReader>(id, reader, std::move(sound), fault);
        };
    }
}

} // namespace native
