/// The names of one document.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kvxml/xml/internal/xml_name.h"

namespace KvXmlLib16::internal {

/// A name with what finds it again.
struct CXmlNameEntry : CXmlName {
    using CXmlName::CXmlName;

    /// As the parser writes it: URI, separator, local name. Empty where the URI is long, for then the names
    /// would take far more memory than the document.
    std::string raw;
    std::string ownRawLocal;  // the local name as the parser writes it, where that is not `local`
    std::size_t hash = 0;
    /// For readers: number of the element that had an attribute of this name last.
    mutable std::uint64_t lastElement = 0;
    // What came after this name last time, which is what comes next time in regular documents; where records
    // end or have optional members, it is one of two.
    CXmlNameEntry* nextElement = nullptr;
    CXmlNameEntry* otherElement = nullptr;
    CXmlNameEntry* firstAttribute = nullptr;
    CXmlNameEntry* nextAttribute = nullptr;

    std::string_view RawLocal() const noexcept { return ownRawLocal.empty() ? local : ownRawLocal; }
    bool Is(const char* text) const noexcept { return std::strcmp(raw.c_str(), text) == 0; }
};

/// Names by their raw texts. Each distinct name is split and converted once, and each namespace is kept once.
class CXmlNameTable {
public:
    /// Between the namespace URI and the local name; a raw name without it is in no namespace.
    static constexpr char kSeparator = '|';

    /// `convert`: names are to be converted from UTF-8 to the local code page.
    CXmlNameTable(CXmlTree* tree, bool convert);

    /// Number of names from which on a new one throws CTreeLimitPassed.
    void SetMaxNames(std::size_t maxNames) noexcept { m_maxNames = maxNames; }
    /// The namespace of this URI, in UTF-8; may be empty.
    const CXmlNamespace& Namespace(std::string_view raw);

    /// Whether there may be attributes xsi:type.
    bool HasTypeAttributes() const noexcept { return m_hasTypeAttributes; }

    /// For a parser that writes the names of elements in one namespace to one place until the next
    /// declaration: that place tells the namespace then, where to compare a long URI would take long.
    void TrustPlaces() noexcept { m_trustsPlaces = true; }
    /// A declaration has been read.
    void ForgetPlaces() noexcept { m_places.clear(); }

    /// The name of the element that starts after the last one asked for. `raw` is zero-terminated UTF-8.
    const CXmlNameEntry* Element(const char* raw) {
        CXmlNameEntry& last = *m_last;
        if (!last.nextElement->Is(raw)) {
            std::swap(last.nextElement, last.otherElement);
            if (!last.nextElement->Is(raw)) last.nextElement = FindElement(raw);
        }
        m_last = last.nextElement;
        return m_last;
    }
    /// The names of that element's attributes are asked for next, from the first one on.
    void BeginAttributes() noexcept { m_attribute = &m_last->firstAttribute; }
    /// The name of the next attribute.
    const CXmlNameEntry* Attribute(const char* raw) {
        CXmlNameEntry* const name = Expect(*m_attribute, raw);
        m_attribute = &name->nextAttribute;
        return name;
    }

    /// The name of these parts, in UTF-8; for readers that remember what they asked for. The URIs
    /// must stay where they are.
    const CXmlNameEntry* Intern(std::string_view uri, std::string_view local);

private:
    struct RawHash {
        std::size_t operator()(std::string_view text) const noexcept;
    };

    CXmlNameEntry* Expect(CXmlNameEntry*& expected, const char* raw) {
        if (!expected->Is(raw)) expected = Find(raw);
        return expected;
    }
    CXmlNameEntry* FindElement(const char* raw);
    CXmlNameEntry* Find(std::string_view raw);
    CXmlNameEntry* Find(const CXmlNamespace& space, std::string_view local);
    std::unique_ptr<CXmlNameEntry> Make(const CXmlNamespace& space, std::string_view local);
    void Grow();

    CXmlTree* const m_tree;
    const bool m_convert;
    std::size_t m_maxNames = std::numeric_limits<std::size_t>::max();
    bool m_trustsPlaces = false;
    bool m_hasTypeAttributes = false;
    const CXmlNamespace m_noNamespace;
    const CXmlNamespace* m_lastNamespace = &m_noNamespace;  // of the last name that was in one
    const CXmlNamespace* m_lastLongNamespace = &m_noNamespace;
    std::unordered_map<const char*, const CXmlNamespace*> m_places;    // of long URIs
    std::unordered_map<const char*, const CXmlNamespace*> m_interned;  // by the address of the URI
    std::unordered_map<std::string_view, std::unique_ptr<CXmlNamespace>, RawHash> m_namespaces;
    CXmlNameEntry m_none;  // stands where nothing is expected; no name has its empty text
    CXmlNameEntry* m_last = &m_none;
    CXmlNameEntry** m_attribute = &m_none.firstAttribute;
    std::vector<std::unique_ptr<CXmlNameEntry>> m_names;
    std::vector<CXmlNameEntry*> m_slots;  // open addressing; the size is a power of two
};

}  // namespace KvXmlLib16::internal
