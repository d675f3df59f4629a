#pragma once

#include <windows.h>

#include <objidl.h>
#include <shlwapi.h>
#include <xmllite.h>

#include <wrl/client.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace test {

// What a record writes of itself through the platform's writer, without indenting, as UTF-8.
template <typename Record> std::string Written(const Record& record)
{
    Microsoft::WRL::ComPtr<IStream> stream;
    Microsoft::WRL::ComPtr<IXmlWriter> writer;
    stream.Attach(SHCreateMemStream(nullptr, 0));
    if (FAILED(CreateXmlWriter(__uuidof(IXmlWriter), reinterpret_cast<void**>(writer.GetAddressOf()),
                               nullptr)) ||
        FAILED(writer->SetOutput(stream.Get()))) {
        throw std::runtime_error("no XML writer");
    }
    if (record.ToXmlNode(writer.Get()) != S_OK) {
        return "the record cannot be written";
    }
    writer->Flush();
    STATSTG state = {};
    stream->Stat(&state, STATFLAG_NONAME);
    std::string text(state.cbSize.LowPart, '\0');
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    ULONG read = 0;
    stream->Read(text.data(), state.cbSize.LowPart, &read);
    text.resize(read);
    return text;
}

// The platform's reader over a text in UTF-8.
class XmlSource
{
public:
    explicit XmlSource(std::string_view text)
    {
        m_stream.Attach(
            SHCreateMemStream(reinterpret_cast<const BYTE*>(text.data()), static_cast<UINT>(text.size())));
        if (FAILED(CreateXmlReader(__uuidof(IXmlReader), reinterpret_cast<void**>(m_reader.GetAddressOf()),
                                   nullptr)) ||
            FAILED(m_reader->SetInput(m_stream.Get()))) {
            throw std::runtime_error("no XML reader");
        }
    }

    // The same, standing on the first element of this name.
    XmlSource(std::string_view text, std::wstring_view element) : XmlSource(text)
    {
        while (Name() != element) {
            if (m_reader->Read(nullptr) != S_OK) {
                throw std::runtime_error("the element is not there");
            }
        }
    }

    [[nodiscard]] IXmlReader* Reader() const { return m_reader.Get(); }

    // The name of the element at hand, empty for everything else.
    [[nodiscard]] std::wstring Name() const
    {
        XmlNodeType type = XmlNodeType_None;
        const wchar_t* name = nullptr;
        const bool isElement = m_reader->GetNodeType(&type) == S_OK && type == XmlNodeType_Element &&
                               SUCCEEDED(m_reader->GetLocalName(&name, nullptr));
        return isElement ? name : L"";
    }

private:
    Microsoft::WRL::ComPtr<IStream> m_stream;
    Microsoft::WRL::ComPtr<IXmlReader> m_reader;
};

// The record that is made of the first element of this name.
template <typename Record>
std::unique_ptr<Record> ReadRecord(std::string_view text, std::wstring_view element)
{
    const XmlSource source(text, element);
    std::unique_ptr<Record> record;
    // The reader is left on the element or its last attribute.
    if (Record::FromXmlNode(source.Reader(), &record) != S_OK || FAILED(source.Reader()->MoveToElement()) ||
        source.Name() != element) {
        throw std::runtime_error("the record cannot be read");
    }
    return record;
}

} // namespace test
