// Compares what the library reads out of catalogue files with what the independent model of tests/proof/model
// makes of them. The cases come from standard input.

#include "Compared.h"
#include "Platform.h"
#include "proof/CatalogueCases.h"
#include "proof/Proof.h"
#include "standin/platform/ComObject.h"

#include <xmllite.h>

#include <iostream>

namespace {

// Writes down what it is asked for.
class Writer final : public standin::ComObject<IXmlWriter>
{
public:
    explicit Writer(std::vector<std::wstring>& calls) : m_calls(calls) {}

    HRESULT STDMETHODCALLTYPE SetOutput(IUnknown*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetProperty(UINT, LONG_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE WriteStartDocument(XmlStandalone) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE WriteStartElement(LPCWSTR, LPCWSTR name, LPCWSTR) override
    {
        return Note(std::wstring(L"start ") + name);
    }
    HRESULT STDMETHODCALLTYPE WriteAttributeString(LPCWSTR, LPCWSTR name, LPCWSTR, LPCWSTR value) override
    {
        return Note(std::wstring(name) + L"=" + value);
    }
    HRESULT STDMETHODCALLTYPE WriteEndElement() override { return Note(L"end"); }
    HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }

private:
    HRESULT Note(std::wstring call)
    {
        m_calls.push_back(std::move(call));
        return S_OK;
    }

    std::vector<std::wstring>& m_calls;
};

std::string Calls(const CQanhAppNameList& list)
{
    std::vector<std::wstring> calls;
    native::TheHooks().makeWriter = [&](REFIID id, void** writer) {
        return standin::CreateComObject<Writer>(id, writer, calls);
    };
    (void)list.Save(L"saved");
    native::TheHooks().makeWriter = nullptr;
    return proof::TextOfCalls(calls);
}

} // namespace

int main()
{
    long long files = 0;
    long long whole = 0;
    long long lines = 0;
    for (proof::CatalogueCase tried; proof::ReadCase(std::cin, tried); ++files) {
        native::SetFile(L"file", tried.document);
        CQanhAppNameList list;
        const HRESULT read = list.Load(L"file");
        bool holds = native::IsSame("how the reading ends", tried.document,
                                    read == S_FALSE ? "to the end" : "in a failure",
                                    tried.isWhole ? "to the end" : "in a failure");
        holds = native::IsSame("the records", tried.document, Calls(list), tried.calls) && holds;
        proof::MarkAllInstalled(list);
        holds = native::IsSame("the records that are not installed", tried.document, Calls(list),
                               tried.allCalls) &&
                holds;
        if (!holds) {
            return 1;
        }
        whole += tried.isWhole;
        lines += std::count(tried.allCalls.begin(), tried.allCalls.end(), '\n');
        proof::Progress(files, proof::Count(2000LL, 100000LL));
    }
    proof::Figure("files of which library and model make the same records", static_cast<double>(files),
                  "files");
    proof::Figure("of them read to the end", static_cast<double>(whole), "files");
    proof::Figure("elements and attributes compared", static_cast<double>(lines));
    return files >= proof::Count(2000LL, 100000LL) ? 0 : 1;
}
