/// Schema documents as trees, as the reader of components walks them.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/internal/schema_store.h"

namespace KvXmlLib16 {

class CXmlReader;

namespace internal {

/// Elements of the schema namespace.
enum class SchemaTag : std::uint8_t {
    Other,  ///< of another namespace, or unknown
    All,
    Annotation,
    Any,
    AnyAttribute,
    Appinfo,
    Attribute,
    AttributeGroup,
    Choice,
    ComplexContent,
    ComplexType,
    Documentation,
    Element,
    Enumeration,
    Extension,
    Field,
    FractionDigits,
    Group,
    Import,
    Include,
    Key,
    Keyref,
    Length,
    List,
    MaxExclusive,
    MaxInclusive,
    MaxLength,
    MinExclusive,
    MinInclusive,
    MinLength,
    Notation,
    Pattern,
    Redefine,
    Restriction,
    Schema,
    Selector,
    Sequence,
    SimpleContent,
    SimpleType,
    TotalDigits,
    Union,
    Unique,
    WhiteSpace,
};

/// Its name in schema documents; empty for Other.
std::string_view TagName(SchemaTag tag) noexcept;

struct CSchemaNodeAttribute {
    std::string_view namespaceUri;
    std::string_view localName;
    std::string_view value;
};

/// One element of a schema document. Texts are kept by the store.
struct CSchemaNode {
    SchemaTag tag = SchemaTag::Other;
    std::string_view namespaceUri;
    std::string_view localName;
    std::uint32_t line = 0;
    std::uint32_t column = 0;
    const CSchemaNode* parent = nullptr;
    const CSchemaStore::Scope* scope = nullptr;  ///< prefixes in scope
    std::vector<CSchemaNodeAttribute> attributes;
    std::vector<const CSchemaNode*> children;  ///< elements; none below documentation and appinfo
    std::string_view text;                     ///< characters of documentation and appinfo, tags left out
    std::string_view content;                  ///< the same as XML text
    bool hasCharacters = false;                ///< others: there are characters that are no blanks

    /// Value of an attribute without namespace, blanks collapsed; null data when it is not there.
    std::string_view Get(std::string_view name) const noexcept;
    /// The same, as it stands.
    std::string_view GetRaw(std::string_view name) const noexcept;
    bool Has(std::string_view name) const noexcept { return GetRaw(name).data() != nullptr; }
    /// The attribute is there, and says yes.
    bool IsTrue(std::string_view name) const noexcept { return Get(name) == "true" || Get(name) == "1"; }
    /// The first child with the tag; null when there is none.
    const CSchemaNode* Child(SchemaTag which) const noexcept;
};

/// The tree of one document. Lives as long as the reading of the set.
class CSchemaTree {
public:
    CSchemaTree() = default;
    CSchemaTree(const CSchemaTree&) = delete;
    CSchemaTree& operator=(const CSchemaTree&) = delete;

    /// Reads the opened document to its end. Elements that `vc:minVersion` and `vc:maxVersion` exclude for
    /// XML Schema 1.0 are left out. CKvException as the reader throws it.
    void Read(CXmlReader& reader, CSchemaStore& store);
    /// Null before Read.
    const CSchemaNode* GetRoot() const noexcept { return m_root; }

private:
    class Builder;

    std::deque<CSchemaNode> m_nodes;
    const CSchemaNode* m_root = nullptr;
};

}  // namespace internal
}  // namespace KvXmlLib16
