// Makes the inputs of the proofs: documents that look like catalogues and manifests, and mostly are, out of
// any bytes. The same bytes make the same document everywhere, so that a fuzzer can steer it and a failure
// can be repeated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace proof {

// Bytes that are taken one after the other; behind the last there are zeros.
class Bytes
{
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    [[nodiscard]] bool IsEmpty() const { return m_next == m_end; }
    std::uint8_t Take() { return m_next == m_end ? std::uint8_t{0} : *m_next++; }
    // A number below the count.
    unsigned Pick(unsigned count) { return Take() % count; }
    unsigned TakeNumber()
    {
        const unsigned high = Take();
        return high << 8 | Take();
    }
    // What is left.
    std::string_view Rest()
    {
        const std::string_view rest(reinterpret_cast<const char*>(m_next),
                                    static_cast<std::size_t>(m_end - m_next));
        m_next = m_end;
        return rest;
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

// Bytes for one document, for programs that no fuzzer steers.
inline std::vector<std::uint8_t> RandomBytes(std::mt19937& random)
{
    std::vector<std::uint8_t> bytes(random() % 400);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

class DocumentMaker
{
public:
    explicit DocumentMaker(Bytes& bytes) : m_bytes(bytes) {}

    std::string Catalogue()
    {
        static const Words elements = {"Applications", "MetroApps", "Package",  "MetroApp", "DesktopApps",
                                       "DesktopApp",   "Other",     "Package2", "p:Package"};
        static const Words attributes = {"DisplayName",       "ShortName",   "RubyDisplayName",
                                         "RubyShortName",     "LnkFileName", "LocalizeName",
                                         "NeedReserve",       "IsInstalled", "IsDualMode",
                                         "PackageFamilyName", "Version",     "Other"};
        return Document("Applications", elements, attributes);
    }

    std::string Manifest()
    {
        static const Words elements = {"Package",     "Applications", "Application",       "VisualElements",
                                       "DefaultTile", "Other",        "m2:VisualElements", "Applications2"};
        static const Words attributes = {"DisplayName", "ShortName", "Id", "m2:DisplayName"};
        return Document("Package", elements, attributes);
    }

private:
    static constexpr std::size_t kLargest = 4096;
    static constexpr unsigned kDeepest = 12;

    using Words = std::vector<std::string_view>;

    std::string Document(std::string_view root, const Words& elements, const Words& attributes)
    {
        const unsigned spoil = m_bytes.Pick(16);
        const unsigned place = m_bytes.TakeNumber();
        const auto by = static_cast<char>(m_bytes.Take());
        if (m_bytes.Pick(2) == 0) {
            m_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
        }
        Element(root, 0, elements, attributes);
        Filling(3);
        // One in eight is cut off, one in sixteen has a wrong byte.
        const std::size_t at = place % (m_text.size() + 1);
        if (spoil < 2) {
            m_text.resize(at);
        } else if (spoil == 2 && at < m_text.size()) {
            m_text[at] = by;
        }
        return std::move(m_text);
    }

    void Element(std::string_view word, unsigned depth, const Words& elements, const Words& attributes)
    {
        const std::string name = InSomeCase(word);
        m_text += "<" + name;
        unsigned used = 0; // each but once: two of one name are no XML
        for (unsigned i = m_bytes.Pick(6); i > 0; --i) {
            const unsigned number = Pick(attributes);
            if ((used & 1u << number) == 0) {
                used |= 1u << number;
                const char quote = m_bytes.Pick(4) == 0 ? '\'' : '"';
                m_text += (m_bytes.Pick(8) == 0 ? "\r\n " : " ") + InSomeCase(attributes[number]) + "=";
                m_text += quote;
                Value();
                m_text += quote;
            }
        }
        unsigned children = depth < kDeepest ? m_bytes.Pick(6) : 0;
        if (children == 0 && m_bytes.Pick(4) != 0) {
            m_text += "/>";
            return;
        }
        m_text += ">";
        for (; children > 0 && !m_bytes.IsEmpty() && m_text.size() < kLargest; --children) {
            Filling(8);
            // Mostly the element that belongs there: the next one of the list.
            const unsigned next = m_bytes.Pick(3) != 0 ? Pick(elements) : NumberOf(word, elements) + 1;
            Element(elements[next % elements.size()], depth + 1, elements, attributes);
        }
        Filling(8);
        m_text += "</" + name + ">";
    }

    // What stands between elements.
    void Filling(unsigned kinds)
    {
        switch (m_bytes.Pick(kinds)) {
        case 1:
            m_text += "\r\n  ";
            break;
        case 2:
            m_text += "<!-- <Package PackageFamilyName=\"none\"/> -->";
            break;
        case 3:
            m_text += "text &amp; more";
            break;
        case 4:
            m_text += "<![CDATA[<DesktopApp/>]]>";
            break;
        case 5:
            m_text += "<?target words?>";
            break;
        default:
            break;
        }
    }

    void Value()
    {
        static constexpr std::string_view values[] = {"",
                                                      "Mail",
                                                      "mail and calendar",
                                                      "1.2.3.4",
                                                      "6.2.9200.16384",
                                                      "0",
                                                      "1",
                                                      "-1",
                                                      "yes",
                                                      " 7",
                                                      "7abc",
                                                      "+1",
                                                      "99999",
                                                      "4294967295",
                                                      "99999999999999999999",
                                                      "1.2",
                                                      "1..2",
                                                      ".",
                                                      "1.2.3.4.5",
                                                      "00",
                                                      "%ProgramData%\\a.lnk",
                                                      "%ProgramData%",
                                                      "C:\\Start\\A.LNK",
                                                      "%",
                                                      "%%",
                                                      "%NoSuchVariable%\\b.lnk",
                                                      "&amp;",
                                                      "&lt;b&gt;",
                                                      "&quot;x&apos;",
                                                      "&#65;",
                                                      "&#x30E1;",
                                                      "\xE3\x83\xA1\xE3\x83\xBC\xE3\x83\xAB",
                                                      "\xC3\xA9t\xC3\xA9",
                                                      "\xF0\x9F\x98\x80",
                                                      "ms-resource:Name",
                                                      "MS-RESOURCE:///Files/a",
                                                      "ms-resource:",
                                                      "ms-resource:///",
                                                      "ms-resource:/a/b/",
                                                      "Word 2013",
                                                      "a/b",
                                                      "Contoso.Mail_8wekyb3d8bbwe",
                                                      "\t",
                                                      "a\tb",
                                                      "-",
                                                      "-0",
                                                      "&#x9;"};
        const unsigned kind = m_bytes.Take();
        if (kind < 2 * std::size(values)) {
            m_text += values[kind % std::size(values)];
        } else if (kind < 224) {
            for (unsigned i = m_bytes.Pick(12); i > 0; --i) {
                m_text += static_cast<char>('a' + m_bytes.Pick(26));
            }
        } else if (kind < 250) {
            for (unsigned i = m_bytes.Pick(4); i > 0; --i) {
                m_text += std::to_string(m_bytes.TakeNumber()) + (i > 1 ? "." : "");
            }
        } else {
            m_text.append(250 + 2 * m_bytes.Pick(10), static_cast<char>('a' + m_bytes.Pick(2)));
        }
    }

    std::string InSomeCase(std::string_view word)
    {
        std::string name(word);
        if (m_bytes.Pick(8) == 0) {
            for (char& character : name) {
                if (character != ':' && m_bytes.Pick(2) == 0 && (character | 0x20) >= 'a') {
                    character = static_cast<char>(character ^ 0x20);
                }
            }
        }
        return name;
    }

    unsigned Pick(const Words& words) { return m_bytes.Pick(static_cast<unsigned>(words.size())); }

    static unsigned NumberOf(std::string_view word, const Words& words)
    {
        unsigned number = 0;
        while (number < words.size() && words[number] != word) {
            ++number;
        }
        return number;
    }

    Bytes& m_bytes;
    std::string m_text;
};

} // namespace proof
