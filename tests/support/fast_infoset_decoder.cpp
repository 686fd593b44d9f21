#include "tests/support/fast_infoset_decoder.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <tuple>

#include "kvxml/types/binary_data.h"

namespace testsupport {

namespace {

constexpr std::size_t kLimit = 1048576;

struct Name {
    std::string prefix, uri, local;
    bool operator<(const Name& other) const {
        return std::tie(prefix, uri, local) < std::tie(other.prefix, other.uri, other.local);
    }
    std::string Expanded() const { return uri.empty() ? local : '{' + uri + '}' + local; }
};

template <class Real>
std::string Shortest(Real value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof(text), value).ptr);
}

/// A table; what is in it must not come in full again.
template <class Entry>
struct Table {
    std::vector<Entry> entries;
    std::set<Entry> known;

    void Add(const Entry& entry) {
        if (!known.insert(entry).second) throw std::runtime_error("in full although it has a number");
        if (entries.size() < kLimit) entries.push_back(entry);
    }
    const Entry& At(std::size_t index) const {
        if (index > entries.size()) throw std::runtime_error("index beyond the table");
        return entries[index - 1];
    }
};

class Decoder {
public:
    Decoder(std::string_view octets, const KnownStrings* known) : m_in(octets) {
        m_prefixes.Add("xml");
        m_namespaces.Add("http://www.w3.org/XML/1998/namespace");
        m_scope.push_back({{"xml", "http://www.w3.org/XML/1998/namespace"}});
        Start(known);
    }

    std::string Document() {
        struct Level {
            bool hasChildren = false;
            std::string text;
        };
        std::vector<Level> open;
        bool hasRoot = false;
        std::string out;
        const auto flushText = [&] {
            if (open.back().hasChildren) return;
            if (!open.back().text.empty()) out += '\'' + open.back().text + '\'';
        };
        // Texts of elements with children are collected; Dump shows them in front of the children.
        std::vector<std::size_t> textAt;
        for (;;) {
            if (Terminated()) {
                if (open.empty()) break;
                if (open.back().hasChildren) {
                    out += ')';
                    if (!open.back().text.empty()) out.insert(textAt.back(), '\'' + open.back().text + '\'');
                } else {
                    flushText();
                }
                open.pop_back();
                textAt.pop_back();
                m_scope.pop_back();
                continue;
            }
            const unsigned octet = Peek();
            if (octet >= 0x80 && octet <= 0xBF) {
                Require(!open.empty(), "text outside");
                open.back().text += Text();
                continue;
            }
            if (octet == 0xE1 || octet == 0xE2) {
                Next();
                std::string item = octet == 0xE2 ? "!--" : '?' + Identifier(m_targets) + ' ';
                item += String(m_others);
                (open.empty() ? out : open.back().text) += '<' + item + (octet == 0xE2 ? "-->" : "?>");
                continue;
            }
            Require(octet < 0x80, "no such item");
            Require(!open.empty() || !hasRoot, "a second element");
            hasRoot = true;
            if (!open.empty()) {
                if (!open.back().hasChildren) textAt.back() = out.size();
                out += open.back().hasChildren ? ' ' : '(';
                open.back().hasChildren = true;
            }
            out += Element();
            open.emplace_back();
            textAt.push_back(out.size());
        }
        Require(hasRoot, "no element");
        Require(!m_half, "the last octet is half used");
        Require(m_at == m_in.size(), "octets behind the end");
        return out;
    }

private:
    static void Require(bool condition, const char* what) {
        if (!condition) throw std::runtime_error(what);
    }
    unsigned Peek() const {
        Require(m_at < m_in.size(), "cut off");
        return static_cast<unsigned char>(m_in[m_at]);
    }
    unsigned Next() {
        const unsigned octet = Peek();
        ++m_at;
        return octet;
    }
    std::size_t Number(int octets) {
        std::size_t number = 0;
        for (; octets > 0; --octets)
            number = number << 8 | Next();
        return number;
    }
    std::string Octets(std::size_t length) {
        Require(length <= m_in.size() - m_at, "longer than the input");
        m_at += length;
        return std::string(m_in.substr(m_at - length, length));
    }
    /// Takes a terminator, of which two may be in one octet.
    bool Terminated() {
        if (m_half) {
            m_half = false;
            return true;
        }
        if (m_at == m_in.size() || Peek() < 0xF0) return false;
        const unsigned octet = Next();
        Require(octet == 0xF0 || octet == 0xFF, "terminator");
        m_half = octet == 0xFF;
        return true;
    }

    void Start(const KnownStrings* known) {
        static const char* const kVersions[] = {"", " version='1.0'", " version='1.1'"};
        static const char* const kStandalone[] = {"", " standalone='no'", " standalone='yes'"};
        bool declared = m_in.substr(0, 1) != "<";
        for (const char* version : kVersions) {
            for (const char* standalone : kStandalone) {
                const std::string text =
                    std::string("<?xml") + version + " encoding='finf'" + standalone + "?>";
                if (declared || m_in.substr(0, text.size()) != text) continue;
                declared = true;
                m_at = text.size();
            }
        }
        Require(declared && Number(4) == 0xE0000001u, "start");
        const unsigned components = Next();
        Require(components == (known == nullptr ? 0u : 0x20u), "components");
        if (known == nullptr) return;
        Require(Number(2) == 0x1000, "vocabulary");
        Require(Octets(Length(Next(), 2)) == known->uri, "URI of the vocabulary");
        const auto add = [](auto& table, const auto& entries) {
            for (const auto& entry : entries)
                table.Add(entry);
        };
        add(m_prefixes, known->prefixes);
        add(m_namespaces, known->namespaces);
        add(m_localNames, known->localNames);
        add(m_values, known->values);
        add(m_texts, known->texts);
        const auto addNames = [](auto& table, const auto& names, const auto& prefixes) {
            for (std::size_t i = 0; i < names.size(); ++i) {
                const std::size_t brace = names[i].find('}');
                Name name{prefixes[i], "", names[i]};
                if (brace != std::string::npos)
                    name = {prefixes[i], names[i].substr(1, brace - 1), names[i].substr(brace + 1)};
                table.Add(name);
            }
        };
        addNames(m_elements, known->elements, known->elementPrefixes);
        addNames(m_attributes, known->attributes, known->attributePrefixes);
    }

    /// A length that starts on the given bit of the octet.
    std::size_t Length(unsigned octet, int bit) {
        const int bits = 9 - bit;
        octet &= (1u << bits) - 1;
        const std::size_t small = bit == 7 ? 2 : std::size_t{1} << (bits - 1);
        const unsigned medium = bit == 7 ? 2u : 1u << (bits - 1);
        const unsigned large = bit == 7 ? 3u : medium | medium >> 1;
        if (octet < small) return octet + 1;
        if (octet == medium) return Next() + small + 1;
        Require(octet == large, "length");
        return Number(4) + small + 257;
    }
    std::size_t Index2(unsigned octet) {
        octet &= 0x7F;
        if (octet < 0x40) return octet + 1;
        if (octet < 0x60) return ((octet & 0x1Fu) << 8 | Next()) + 65;
        Require(octet < 0x70, "index");
        const std::size_t index = ((octet & 0xFu) << 16 | Number(2)) + 8257;
        Require(index <= kLimit, "index");
        return index;
    }
    /// Of elements and texts, which have one bit less and two.
    std::size_t IndexOf(unsigned octet, unsigned mediumFlag) {
        const std::size_t small = mediumFlag;
        const std::size_t perOctet = mediumFlag / 4;
        octet &= mediumFlag * 2 - 1;
        if (octet < mediumFlag) return octet + 1;
        octet -= mediumFlag;
        if (octet < perOctet) return (octet << 8 | Next()) + small + 1;
        const std::size_t second = small + (perOctet << 8);
        if (octet < 2 * perOctet) return ((octet - perOctet) << 16 | Number(2)) + second + 1;
        Require(octet == 2 * perOctet && Peek() < 0x10, "index");
        return Number(3) + second + (perOctet << 16) + 1;
    }

    static void RequireXmlText(const std::string& text) {
        for (std::size_t i = 0; i < text.size();) {
            const auto byte = [&](std::size_t at) {
                return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
            };
            const unsigned lead = byte(i);
            const std::size_t more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
            Require(lead < 0x80 || (lead >= 0xC2 && lead < 0xF5), "UTF-8");
            unsigned code = more == 0 ? lead : lead & (0x3Fu >> more);
            for (std::size_t k = 1; k <= more; ++k) {
                Require((byte(i + k) & 0xC0) == 0x80, "UTF-8");
                code = code << 6 | (byte(i + k) & 0x3Fu);
            }
            const unsigned least = more == 3 ? 0x10000 : more == 2 ? 0x800 : 0;
            Require(code >= least && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF), "UTF-8");
            Require(
                (code >= 0x20 || code == 9 || code == 10 || code == 13) && code != 0xFFFE && code != 0xFFFF,
                "character");
            i += more + 1;
        }
    }

    std::string Identifier(Table<std::string>& table) {
        const unsigned octet = Next();
        if (octet >= 0x80) return table.At(Index2(octet));
        std::string text = Octets(Length(octet, 2));
        RequireXmlText(text);
        table.Add(text);
        return text;
    }
    std::string Decode(unsigned format, unsigned number, const std::string& octets) {
        if (format == 0) {
            RequireXmlText(octets);
            return octets;
        }
        std::string text;
        if (format == 2) {
            Require(number < 2, "alphabet");
            const char* const alphabet = number == 0 ? "0123456789-+.E " : "0123456789-:TZ ";
            for (std::size_t i = 0; i < 2 * octets.size(); ++i) {
                const unsigned value =
                    static_cast<unsigned char>(octets[i / 2]) >> (i % 2 == 0 ? 4 : 0) & 0xF;
                Require(value != 15 || (i + 1 == 2 * octets.size() && i != 0), "packed text");
                if (value != 15) text += alphabet[value];
            }
            return text;
        }
        const auto* const data = reinterpret_cast<const unsigned char*>(octets.data());
        std::uint64_t value = 0;
        for (const char c : octets)
            value = value << 8 | static_cast<unsigned char>(c);
        const auto size = [&](std::size_t expected) {
            Require(octets.size() == expected, "size of a value");
        };
        switch (number) {
            case 0:
                return KvXmlLib16::CBinaryData::GetAsHexString(data, octets.size());
            case 1:
                return KvXmlLib16::CBinaryData(data, octets.size()).GetAsBase64();
            case 2:
                size(2);
                return std::to_string(static_cast<std::int16_t>(value));
            case 3:
                size(4);
                return std::to_string(static_cast<std::int32_t>(value));
            case 4:
                size(8);
                return std::to_string(static_cast<std::int64_t>(value));
            case 5:
                Require(octets == "\x38" || octets == "\x30", "truth value");
                return octets == "\x38" ? "true" : "false";
            case 6: {
                size(4);
                const auto bits = static_cast<std::uint32_t>(value);
                float single;
                std::memcpy(&single, &bits, sizeof(single));
                return Shortest(single);
            }
            case 7: {
                size(8);
                double number8;
                std::memcpy(&number8, &value, sizeof(number8));
                return Shortest(number8);
            }
            default:
                Require(number == 9, "algorithm");
                RequireXmlText(octets);
                return "<![CDATA[" + octets + "]]>";
        }
    }
    std::string String(Table<std::string>& table) {
        const unsigned octet = Next();
        if (octet == 0xFF) return {};
        if (octet >= 0x80) return table.At(Index2(octet));
        const unsigned format = octet >> 4 & 3;
        unsigned number = 0;
        unsigned last = octet;
        if (format >= 2) {
            last = Next();
            number = (octet & 0xF) << 4 | last >> 4;
        }
        std::string text = Decode(format, number, Octets(Length(last, 5)));
        if ((octet & 0x40) != 0) table.Add(text);
        return text;
    }
    std::string Text() {
        const unsigned octet = Next();
        if ((octet & 0x20) != 0) return m_texts.At(IndexOf(octet, 0x10));
        const unsigned format = octet >> 2 & 3;
        unsigned number = 0;
        unsigned last = octet;
        if (format >= 2) {
            last = Next();
            number = (octet & 3) << 6 | last >> 2;
        }
        std::string text = Decode(format, number, Octets(Length(last, 7)));
        if ((octet & 0x10) != 0) m_texts.Add(text);
        return text;
    }

    Name LiteralName(unsigned flags, Table<Name>& table) {
        Require(flags != 2, "a prefix without namespace");
        Name name;
        const auto index = [&](Table<std::string>& strings) {
            Require(Peek() >= 0x80, "undeclared");
            return Identifier(strings);
        };
        if ((flags & 2) != 0) name.prefix = index(m_prefixes);
        if ((flags & 1) != 0) name.uri = index(m_namespaces);
        name.local = Identifier(m_localNames);
        Require(name.local.find(':') == std::string::npos, "a colon in a name");
        table.Add(name);
        return name;
    }
    void RequireInScope(const Name& name, bool isElement) {
        if (!isElement && name.prefix.empty())
            return Require(name.uri.empty(), "an attribute without prefix");
        for (auto level = m_scope.rbegin(); level != m_scope.rend(); ++level) {
            const auto found = level->find(name.prefix);
            if (found != level->end())
                return Require(found->second == name.uri, "another namespace is in scope");
        }
        Require(name.uri.empty(), "not declared");
    }
    void Namespaces() {
        Require(Peek() != 0xF0, "a list that is empty");
        while (Peek() != 0xF0) {
            const unsigned octet = Next();
            Require(octet == 0xCC || octet == 0xCD || octet == 0xCF, "declaration");
            const std::string prefix = (octet & 2) != 0 ? Identifier(m_prefixes) : "";
            const std::string uri = (octet & 1) != 0 ? Identifier(m_namespaces) : "";
            Require(m_scope.back().emplace(prefix, uri).second, "declared twice");
        }
        Next();
    }
    std::string Element() {
        m_scope.emplace_back();
        unsigned octet = Next();
        bool hasAttributes = (octet & 0x40) != 0;
        if ((octet & 0x3F) == 0x38) {
            Namespaces();
            octet = Next();
            Require(octet < 0x40 && octet != 0x38, "name");
        }
        const unsigned low = octet & 0x3F;
        const Name name =
            low >= 0x3C ? LiteralName(low & 3, m_elements) : m_elements.At(IndexOf(octet, 0x20));
        RequireInScope(name, true);
        std::string out = name.Expanded();
        if (!hasAttributes) return out;
        std::set<std::string> seen;
        do {
            const unsigned lead = Next();
            Require(lead < 0x70 || (lead >= 0x78 && lead < 0x7C), "attribute");
            const Name attribute =
                lead >= 0x78 ? LiteralName(lead & 3, m_attributes) : m_attributes.At(Index2(lead));
            RequireInScope(attribute, false);
            Require(seen.insert(attribute.Expanded()).second, "an attribute twice");
            out += '@' + attribute.Expanded() + '=' + String(m_values);
        } while (!Terminated());
        return out;
    }

    std::string_view m_in;
    std::size_t m_at = 0;
    bool m_half = false;
    Table<std::string> m_prefixes, m_namespaces, m_localNames, m_targets, m_values, m_texts, m_others;
    Table<Name> m_elements, m_attributes;
    std::vector<std::map<std::string, std::string>> m_scope;
};

}  // namespace

std::string DecodeFastInfoset(std::string_view octets, const KnownStrings* known) {
    return Decoder(octets, known).Document();
}

}  // namespace testsupport
