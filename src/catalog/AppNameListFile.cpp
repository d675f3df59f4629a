// How the catalogue is written to its file and read from it.

#include "catalog/AppNameList.h"
#include "catalog/CatalogXml.h"
#include "common/Arguments.h"
#include "common/DiagnosticLog.h"
#include "common/MemoryPool.h"
#include "common/OutOfMemory.h"
#include "common/Xml.h"

#include <shlwapi.h>

using Microsoft::WRL::ComPtr;

namespace {

HRESULT OpenWriter(const wchar_t* path, ComPtr<IXmlWriter>& writer)
{
    ComPtr<IStream> stream;
    HRESULT hr = SHCreateStreamOnFileW(path, STGM_CREATE | STGM_WRITE, stream.GetAddressOf());
    if (FAILED(hr)) {
        return hr;
    }
    hr = CreateXmlWriter(IID_PPV_ARGS(writer.ReleaseAndGetAddressOf()), nullptr);
    if (FAILED(hr)) {
        return hr;
    }
    return writer->SetOutput(stream.Get());
}

// Writes the records of one list; a record that cannot be written does not keep the others from the file.
template <typename Records> void WriteRecords(IXmlWriter* writer, const wchar_t* name, const Records& records)
{
    if (FAILED(writer->WriteStartElement(nullptr, name, nullptr))) {
        return;
    }
    for (const auto& record : records) {
        (void)record->ToXmlNode(writer);
    }
    writer->WriteEndElement();
}

} // namespace

HRESULT CQanhAppNameList::Save(const wchar_t* path) const noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::Save";
    LogIn(kName, path);
    HRESULT hr = CheckString(path);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    ComPtr<IXmlWriter> writer;
    hr = OpenWriter(path, writer);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    writer->SetProperty(XmlWriterProperty_Indent, TRUE);
    writer->WriteStartDocument(XmlStandalone_Omit);
    // Deliberate: neither the root element nor the document is ended by a call; the reader takes what the
    // flush makes of that.
    if (SUCCEEDED(writer->WriteStartElement(nullptr, CatalogXml::kApplications, nullptr))) {
        const auto lists = m_lists.Read();
        WriteRecords(writer.Get(), CatalogXml::kMetroApps, lists->packages);
        WriteRecords(writer.Get(), CatalogXml::kDesktopApps, lists->desktopApps);
    }
    return LogOut(kName, writer->Flush());
}

template <typename ReadWith>
HRESULT CQanhAppNameList::LoadWith(const wchar_t* path, ReadWith readWith) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::Load";
    LogIn(kName, path);
    HRESULT hr = CheckString(path);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    ComPtr<IXmlReader> reader;
    hr = Xml::OpenReader(path, reader);
    if (FAILED(hr)) {
        return LogOut(kName, hr);
    }
    return LogOut(kName, CatchOutOfMemory([&] { return readWith(reader.Get()); }));
}

HRESULT CQanhAppNameList::Load(const wchar_t* path) noexcept
{
    return LoadWith(path, [this](IXmlReader* reader) {
        return AppendRead([&](Lists& lists) { return ReadNodes(reader, lists); });
    });
}

HRESULT CQanhAppNameList::Reload(const wchar_t* path) noexcept
{
    return LoadWith(path, [this](IXmlReader* reader) {
        Lists fresh(m_listLimit, m_listLimit);
        const HRESULT hr = CatchOutOfMemory([&] { return ReadNodes(reader, fresh); });
        // The old records go with the other lists, when the lock is free again.
        const auto lists = m_lists.Write();
        lists->packages.Swap(fresh.packages);
        lists->desktopApps.Swap(fresh.desktopApps);
        return hr;
    });
}

template <typename ReadInto> HRESULT CQanhAppNameList::AppendRead(ReadInto readInto)
{
    Lists read = [this] {
        const auto lists = m_lists.Read();
        return Lists(lists->packages.Room(), lists->desktopApps.Room());
    }();
    const HRESULT hr = CatchOutOfMemory([&] { return readInto(read); });
    const auto lists = m_lists.Write();
    lists->packages.AppendAll(read.packages);
    lists->desktopApps.AppendAll(read.desktopApps);
    return hr;
}

HRESULT CQanhAppNameList::ReadNodes(IXmlReader* pReader, Lists& lists) const
{
    MemoryPool pool;
    Xml::NodePlace place = Xml::PlaceOf(pReader);
    HRESULT hr = Xml::ReadNode(pReader, place);
    while (hr == S_OK) {
        if (place.typed != S_OK) {
            return place.typed;
        }
        // A record's reading ends at the first node behind it, which is then looked at here: it may begin the
        // next.
        bool readOn = true;
        if (place.IsElement()) {
            if (Xml::HasLocalName(pReader, CatalogXml::kPackage)) {
                std::unique_ptr<CQanhPackage> package;
                hr = CQanhPackage::FromXmlNode(pReader, &package, m_listLimit, &pool);
                readOn = package == nullptr;
                if (package) {
                    AppendPackage(std::move(package), lists, pool);
                }
            } else if (Xml::HasLocalName(pReader, CatalogXml::kDesktopApps)) {
                hr = ReadDesktopApps(pReader, lists, pool);
                readOn = false;
            }
        }
        if (readOn) {
            hr = Xml::ReadNode(pReader, place);
        } else {
            place = Xml::PlaceOf(pReader);
        }
    }
    return hr;
}

void CQanhAppNameList::AppendPackage(std::unique_ptr<CQanhPackage> package, Lists& lists,
                                     MemoryPool& pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::AddMetroPackage";
    LogIn(kName);
    // One that finds no place is left out; it is in the log.
    LogOut(kName, CatchOutOfMemory([&] {
               lists.packages.AppendUnindexed(std::move(package), &pool);
               return S_OK;
           }));
}

HRESULT CQanhAppNameList::ReadDesktopApps(IXmlReader* pReader) noexcept
{
    return CatchOutOfMemory([&] {
        return AppendRead([pReader](Lists& lists) {
            MemoryPool pool;
            return ReadDesktopApps(pReader, lists, pool);
        });
    });
}

HRESULT CQanhAppNameList::ReadDesktopApps(IXmlReader* pReader, Lists& lists, MemoryPool& pool) noexcept
{
    static constexpr wchar_t kName[] = L"CQanhAppNameList::ReadDesktopApps";
    LogIn(kName);
    if (!pReader) {
        return LogOut(kName, E_POINTER);
    }
    const auto append = [&](std::unique_ptr<CQanhDesktopApp> app) {
        return CatchOutOfMemory([&] {
            lists.desktopApps.AppendUnindexed(std::move(app), &pool);
            return S_OK;
        });
    };
    const Xml::ElementPlace top = Xml::ElementPlaceOf(pReader);
    return LogOut(kName, Xml::ForEachElementBelow(pReader, top, CatalogXml::kDesktopApp, [&] {
                      std::unique_ptr<CQanhDesktopApp> app;
                      if (SUCCEEDED(CQanhDesktopApp::FromXmlNode(pReader, &app, &pool)) &&
                          FAILED(append(std::move(app)))) {
                          DiagnosticLog::WriteLine("%S Error (0x%08X)\r\n", kName,
                                                   static_cast<unsigned>(E_OUTOFMEMORY));
                      }
                  }));
}
