#include "kvxml/schema/reader/internal/schema_node.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::string_view kVersioningNamespace = "http://www.w3.org/2007/XMLSchema-versioning";

// In the order of SchemaTag, which is that of the alphabet.
constexpr std::string_view kTagNames[] = {
    "",
    "all",
    "annotation",
    "any",
    "anyAttribute",
    "appinfo",
    "attribute",
    "attributeGroup",
    "choice",
    "complexContent",
    "complexType",
    "documentation",
    "element",
    "enumeration",
    "extension",
    "field",
    "fractionDigits",
    "group",
    "import",
    "include",
    "key",
    "keyref",
    "length",
    "list",
    "maxExclusive",
    "maxInclusive",
    "maxLength",
    "minExclusive",
    "minInclusive",
    "minLength",
    "notation",
    "pattern",
    "redefine",
    "restriction",
    "schema",
    "selector",
    "sequence",
    "simpleContent",
    "simpleType",
    "totalDigits",
    "union",
    "unique",
    "whiteSpace",
};

SchemaTag TagOf(std::string_view namespaceUri, std::string_view name) {
    if (namespaceUri != kSchemaNamespace) return SchemaTag::Other;
    const auto* const found = std::lower_bound(std::begin(kTagNames), std::end(kTagNames), name);
    if (found == std::end(kTagNames) || *found != name) return SchemaTag::Other;
    return static_cast<SchemaTag>(found - std::begin(kTagNames));
}

constexpr bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsAllBlank(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), IsBlank);
}

void AppendEscaped(std::string& out, std::string_view text, bool isAttribute) {
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += isAttribute ? "&quot;" : "\"";
                break;
            case '\r':
                out += "&#13;";
                break;
            case '\n':
                out += isAttribute ? "&#10;" : "\n";
                break;
            case '\t':
                out += isAttribute ? "&#9;" : "\t";
                break;
            default:
                out += c;
        }
    }
}

/// A version of the vc: attributes, in thousandths; -1 when the text is none.
int VersionOf(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    int whole = 0;
    int part = 0;
    int scale = 1000;
    bool afterPoint = false;
    bool anyDigit = false;
    for (const char c : text) {
        if (c == '.' && !afterPoint) {
            afterPoint = true;
        } else if (c >= '0' && c <= '9') {
            anyDigit = true;
            if (!afterPoint) {
                whole = std::min(whole * 10 + (c - '0'), 100000);
            } else if (scale > 1) {
                scale /= 10;
                part += (c - '0') * scale;
            }
        } else {
            break;
        }
    }
    return anyDigit ? whole * 1000 + part : -1;
}

}  // namespace

std::string_view TagName(SchemaTag tag) noexcept {
    return kTagNames[static_cast<std::size_t>(tag)];
}

std::string_view CSchemaNode::GetRaw(std::string_view name) const noexcept {
    for (const CSchemaNodeAttribute& attribute : attributes) {
        if (attribute.localName == name && attribute.namespaceUri.empty()) return attribute.value;
    }
    return {};
}

std::string_view CSchemaNode::Get(std::string_view name) const noexcept {
    std::string_view value = GetRaw(name);
    while (!value.empty() && IsBlank(value.front()))
        value.remove_prefix(1);
    while (!value.empty() && IsBlank(value.back()))
        value.remove_suffix(1);
    return value;
}

const CSchemaNode* CSchemaNode::Child(SchemaTag which) const noexcept {
    for (const CSchemaNode* child : children) {
        if (child->tag == which) return child;
    }
    return nullptr;
}

/// Turns the events of one document into nodes.
class CSchemaTree::Builder {
public:
    Builder(CSchemaTree& tree, CXmlReader& reader, CSchemaStore& store)
        : m_tree(tree), m_reader(reader), m_store(store) {}

    void Run() {
        while (m_reader.Read()) {
            switch (m_reader.GetEvent()) {
                case XmlEvent::StartElement:
                    Start();
                    break;
                case XmlEvent::EndElement:
                    m_open = m_open->parent == nullptr ? nullptr : Mutable(m_open->parent);
                    break;
                case XmlEvent::Text:
                case XmlEvent::CData:
                    if (!IsAllBlank(m_reader.GetText())) m_open->hasCharacters = true;
                    break;
                default:
                    break;
            }
        }
    }

private:
    // Nodes are const to all others only.
    static CSchemaNode* Mutable(const CSchemaNode* node) noexcept { return const_cast<CSchemaNode*>(node); }

    void Start() {
        if (IsExcluded()) return m_reader.SkipSubtree();
        CSchemaNode& node = m_tree.m_nodes.emplace_back();
        node.namespaceUri = m_store.Keep(m_reader.GetNamespaceUri());
        node.localName = m_store.Keep(m_reader.GetLocalName());
        node.tag = TagOf(node.namespaceUri, node.localName);
        node.line = static_cast<std::uint32_t>(m_reader.GetLine());
        node.column = static_cast<std::uint32_t>(m_reader.GetColumn());
        node.scope = Scope();
        node.parent = m_open;
        for (std::size_t i = 0; i < m_reader.GetAttributeCount(); ++i) {
            const CXmlReaderAttribute& attribute = m_reader.GetAttributeAt(i);
            std::string_view value = m_store.Keep(attribute.value);
            if (value.data() == nullptr) value = "";
            node.attributes.push_back(
                {m_store.Keep(attribute.namespaceUri), m_store.Keep(attribute.localName), value});
        }
        if (m_open == nullptr) {
            m_tree.m_root = &node;
        } else {
            m_open->children.push_back(&node);
        }
        if (node.tag == SchemaTag::Documentation || node.tag == SchemaTag::Appinfo) {
            TakeContent(node);
        } else {
            m_open = &node;
        }
    }

    bool IsExcluded() const {
        const CXmlReaderAttribute* const least = m_reader.FindAttribute(kVersioningNamespace, "minVersion");
        const CXmlReaderAttribute* const most = m_reader.FindAttribute(kVersioningNamespace, "maxVersion");
        if (m_open == nullptr) return false;
        if (least != nullptr && VersionOf(least->value) > 1000) return true;
        const int limit = most == nullptr ? -1 : VersionOf(most->value);
        return limit >= 0 && limit <= 1000;
    }

    /// The prefixes in scope; elements with the same ones share them.
    const CSchemaStore::Scope* Scope() {
        const std::uint64_t number = m_reader.GetScopeNumber();
        const CSchemaStore::Scope*& known = m_scopes[number];
        if (known == nullptr) {
            CSchemaStore::Scope scope = m_reader.GetScope();
            known = m_store.KeepScope(std::move(scope));
        }
        return known;
    }

    /// Reads to the end of the element, which may hold anything.
    void TakeContent(CSchemaNode& node) {
        std::string text;
        std::string content;
        std::vector<bool> isOpenTag;  // of the elements that are open: the start tag still lacks its ">"
        const std::uint32_t depth = m_reader.GetDepth();
        const auto closeTag = [&] {
            if (!isOpenTag.empty() && isOpenTag.back()) content += '>', isOpenTag.back() = false;
        };
        while (m_reader.Read()) {
            const XmlEvent event = m_reader.GetEvent();
            if (event == XmlEvent::EndElement && m_reader.GetDepth() == depth) break;
            if (event == XmlEvent::Text || event == XmlEvent::CData) {
                closeTag();
                text += m_reader.GetText();
                AppendEscaped(content, m_reader.GetText(), false);
            } else if (event == XmlEvent::StartElement) {
                closeTag();
                content += '<' + QualifiedName(m_reader.GetPrefix(), m_reader.GetLocalName());
                for (std::size_t i = 0; i < m_reader.GetAttributeCount(); ++i) {
                    const CXmlReaderAttribute& attribute = m_reader.GetAttributeAt(i);
                    content += ' ' + QualifiedName(attribute.prefix, attribute.localName) + "=\"";
                    AppendEscaped(content, attribute.value, true);
                    content += '"';
                }
                isOpenTag.push_back(true);
            } else if (event == XmlEvent::EndElement) {
                if (isOpenTag.back()) {
                    content += "/>";
                } else {
                    content += "</" + QualifiedName(m_reader.GetPrefix(), m_reader.GetLocalName()) + '>';
                }
                isOpenTag.pop_back();
            }
        }
        node.text = m_store.Keep(text);
        node.content = m_store.Keep(content);
    }

    static std::string QualifiedName(std::string_view prefix, std::string_view local) {
        std::string name(prefix);
        if (!name.empty()) name += ':';
        return name.append(local);
    }

    CSchemaTree& m_tree;
    CXmlReader& m_reader;
    CSchemaStore& m_store;
    CSchemaNode* m_open = nullptr;
    std::unordered_map<std::uint64_t, const CSchemaStore::Scope*> m_scopes;
};

void CSchemaTree::Read(CXmlReader& reader, CSchemaStore& store) {
    Builder(*this, reader, store).Run();
}

}  // namespace KvXmlLib16::internal
