#pragma once

#include "support/Current.h"
#include "support/ImportPatch.h"
#include "support/ReaderProbe.h"

#include <windows.h>

#include <xmllite.h>

#include <wrl/client.h>

#include <functional>
#include <memory>
#include <optional>

namespace test {

// Every XML reader that the library makes is one whose calls the test can make fail, until the end of the
// scope. One at a time.
class BrokenReader : private Current<BrokenReader>
{
public:
    std::optional<HRESULT> createResult;        // when set, there is no reader
    std::function<void(ReaderProbe&)> prepares; // tells a new reader what to answer

    // The reader that was made last.
    [[nodiscard]] const ReaderProbe& Reader() const { return *m_probe; }

private:
    static HRESULT WINAPI Create(REFIID id, void** object, IMalloc* allocator)
    {
        if (s_current->createResult) {
            return *s_current->createResult;
        }
        const HRESULT hr = s_current->m_patch.Original()(
            id, reinterpret_cast<void**>(s_current->m_real.ReleaseAndGetAddressOf()), allocator);
        s_current->m_probe = std::make_unique<ReaderProbe>(s_current->m_real.Get());
        if (s_current->prepares) {
            s_current->prepares(*s_current->m_probe);
        }
        s_current->m_probe->AddRef();
        *object = static_cast<IXmlReader*>(s_current->m_probe.get());
        return hr;
    }

    friend Current<BrokenReader>;

    Microsoft::WRL::ComPtr<IXmlReader> m_real;
    std::unique_ptr<ReaderProbe> m_probe;
    ImportPatch<decltype(&CreateXmlReader)> m_patch{"CreateXmlReader", Create};
};

} // namespace test
