/// What is made of the table of a class once, when it is first used.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/shared_name.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/class_table.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/internal/table_values.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

class CXmlAttribute;

namespace internal {

struct CTableRecords;

/// The namespace list of a wildcard.
class CNamespaceList {
public:
    CNamespaceList() = default;
    CNamespaceList(const char* list, const char* targetNamespace);
    bool Accepts(std::string_view ns) const noexcept;
    /// A namespace that the list admits, for elements that have none of their own.
    const char* Preferred() const noexcept { return m_preferred.c_str(); }

private:
    bool m_isAny = false;
    bool m_isOther = false;
    std::string m_target;
    std::string m_preferred;
    std::vector<std::string> m_uris;  // the empty one for ##local
};

/// A name under which an element of the member may stand.
struct CTableName {
    CSharedName shared;
    CXmlWriter::SimpleName name;
    const CClassTable* classTable;
};

/// A member of the complete list of a class, those of its base classes first.
struct CTableMember {
    static constexpr std::uint16_t kNoNode = 0xFFFF;
    static constexpr std::uint32_t kNoName = 0xFFFFFFFF;

    const CMember* member;
    std::uint16_t node = kNoNode;    // the leaf of the content model
    std::uint32_t nameId = kNoName;  // of the member's own name
    const CValueRecord* value = nullptr;
    bool isPlainValue = false;  // one value, whose element has the member's own name
    CTableName own;
    std::vector<CTableName> substitutes;
    std::map<std::uint32_t, std::uint16_t> substituteOf;  // name to index
    CNamespaceList namespaces;
    KvVariant defaultValue;  // invalid: none
    CSmartPtr<CXmlCollectionBase> defaultList;

    bool IsList() const noexcept { return value != nullptr && value->IsList(); }
    bool IsWildcard() const noexcept { return member->namespaces != nullptr && *member->name == '\0'; }
    /// Takes elements of its own name only.
    bool IsPlain() const noexcept { return nameId != kNoName && substituteOf.empty(); }
    bool IsRepeated() const noexcept {
        return member->kind == CMember::Kind::Values || member->kind == CMember::Kind::Objects ||
               member->kind == CMember::Kind::Groups || member->kind == CMember::Kind::Anys;
    }
    bool IsOptional() const noexcept { return IsRepeated() ? member->minOccurs == 0 : !member->isRequired; }
    /// For messages.
    const char* Label() const noexcept {
        return *member->name == '\0' && member->namespaces != nullptr ? member->namespaces : member->name;
    }
};

/// A node of the complete content model.
struct CTableNode {
    CContentNode::Kind kind;
    bool isOptional;
    bool isNullable = false;  // may be empty
    std::uint16_t end;        // the node after the subtree
    std::uint16_t member;     // of the complete list
    std::uint16_t parent = 0;
    // What the content may begin with.
    std::vector<std::uint64_t> names;   // a bit for each name; empty: none
    std::vector<std::uint16_t> others;  // members that are wildcards or groups

    bool HasName(std::uint32_t id) const noexcept {
        return id / 64 < names.size() && (names[id / 64] >> id % 64 & 1) != 0;
    }
};

struct CTableRecords {
    explicit CTableRecords(const CClassTable& table);
    ~CTableRecords();
    CTableRecords(const CTableRecords&) = delete;
    CTableRecords& operator=(const CTableRecords&) = delete;

    /// Of the table; made when there are none yet.
    static const CTableRecords& Of(const CClassTable& table) {
        const CTableRecords* const known = table.records.load(std::memory_order_acquire);
        return known != nullptr ? *known : Make(table);
    }

    /// The number of the element's name, kNoName for one that no member has.
    std::uint32_t NameOf(const CXmlElement& element, bool ignoreNamespaces) const {
        const CXmlName& name = *element.GetName();
        return name.cacheKey == (elementKey | (ignoreNamespaces ? 1 : 0)) ? name.cacheValue
                                                                          : LookUp(name, ignoreNamespaces);
    }
    /// The member of the attribute; -1: none.
    int AttributeOf(const CXmlAttribute& attribute, bool ignoreNamespaces) const;
    /// Whether the content of the node may begin with the element.
    bool MayBeginWith(const CTableNode& node, const CXmlElement& element, bool ignoreNamespaces) const;
    /// Whether the node `from` or one after it could take the element.
    bool HasPlaceFor(const CXmlElement& element, std::uint16_t from, bool ignoreNamespaces) const;
    /// Whether the wildcard takes the element: none that a later member has the name of.
    bool DoesWildcardTake(const CTableMember& member, const CXmlElement& element,
                          bool ignoreNamespaces) const;
    /// The record of a member of the complete list.
    const CTableMember& RecordOf(const CMember& member) const;
    /// The member that lives at `place` of the object; -1: none.
    int MemberAt(const CTableClass& object, const void* place) const noexcept;
    /// The table of the type of the class: that of its base for roots.
    static const CClassTable& TypeOf(const CClassTable& table) noexcept;
    static bool IsDerived(const CClassTable& table, const CClassTable& base) noexcept;

    const CClassTable& table;
    bool isGroup;
    bool isMixed = false;
    std::vector<CTableMember> members;
    std::vector<CTableNode> nodes;  // empty: no elements
    std::vector<std::uint16_t> attributes;
    int anyAttributes = -1;
    int text = -1;
    std::vector<std::uint16_t> lastNodes;  // by name: the last leaf that has it
    std::unique_ptr<KvXmlLib16Data::CParentElementInfo> classInfo;
    std::uint64_t elementKey = 0;  // for the cache of names; with 1 added, when namespaces are ignored
    std::uint64_t attributeKey = 0;
    std::vector<KvXmlLib16Data::CElementInfo*> elementInfo;  // with null at the end
    std::vector<KvXmlLib16Data::CAttributeInfo*> attributeInfo;

private:
    struct NameEntry {
        std::string_view local;
        std::string_view ns;
        std::uint32_t number;
    };

    static const CTableRecords& Make(const CClassTable& table);
    static std::uint32_t Find(const std::vector<NameEntry>& names, std::string_view local,
                              std::string_view ns, bool ignoreNamespaces);
    std::uint32_t LookUp(const CXmlName& name, bool ignoreNamespaces) const;
    void AddMembers(const CClassTable& from);
    void AddContent(const CClassTable& from, std::uint16_t& firstMember);
    void AddOwnContent(const CClassTable& from, std::uint16_t firstMember);
    void FinishMember(CTableMember& member);
    void SetNames();
    void FinishNode(std::uint16_t index);
    void SetFirst(CTableNode& node, const CTableMember& leaf);
    void MakeInfo();
    const CValueRecord* ValueRecord(const CValueType& type);

    std::vector<NameEntry> m_elementNames;
    std::vector<NameEntry> m_attributeNames;
    std::map<const CValueType*, std::unique_ptr<CValueRecord>> m_values;
};

}  // namespace internal
}  // namespace KvXmlLib16
