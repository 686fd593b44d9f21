/// What validators need to know of a schema set beyond its components. Made once for each set, and shared by
/// all of its validators in all threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/base/internal/document_name.h"
#include "kvxml/schema/model/internal/schema_store.h"
#include "kvxml/schema/validation/internal/content_model.h"

namespace KvXmlLib16::internal {

/// Attributes by the numbers of their names, and the content model, of one complex type.
struct CTypeTable {
    struct Use {
        std::uint32_t number;
        std::uint32_t index;  ///< among the uses of the type
        const CAttributeUse* use;
        const CValueConstraint* constraint;  ///< the one in force
        std::string fixedKey;                ///< of the value that a fixed attribute must have
        bool hasFixedKey = false;
    };
    std::vector<Use> uses;                         ///< in ascending order of the numbers
    std::vector<std::size_t> required;             ///< indexes of uses
    std::vector<std::size_t> defaulted;            ///< indexes of uses
    std::unique_ptr<const CContentModel> content;  ///< element-only and mixed content

    /// Null when the type has no attribute of the name.
    const Use* Find(std::uint32_t number) const noexcept;
};

/// The tables of all types, made when a type is met first, and the names of the schema as numbers.
class CTypeTables {
public:
    /// Numbers of names that have a meaning of their own. 0: a name that no declaration has.
    enum Number : std::uint32_t { kXsiType = 1, kXsiNil, kXsiSchemaLocation, kXsiNoNamespaceSchemaLocation };

    explicit CTypeTables(CSchemaStore& store);
    CTypeTables(const CTypeTables&) = delete;
    CTypeTables& operator=(const CTypeTables&) = delete;
    ~CTypeTables();

    static const CTypeTables& Of(const CSchemaSet& set);

    /// The name's number, which is kept in its note.
    std::uint32_t NumberOf(const CDocumentName& name) const {
        if (name.note >> 32 == m_id) return static_cast<std::uint32_t>(name.note);
        const std::uint32_t number = Find({name.namespaceUri, name.localName});
        name.note = std::uint64_t{m_id} << 32 | number;
        return number;
    }
    /// Numbers of all names that have the name's local part, where namespaces do not count; may be empty.
    /// Names of the instance namespace count with it, also where "xsi:" is a part of the local name.
    const std::vector<std::uint32_t>& AlikeOf(const CDocumentName& name) const;
    std::string_view NamespaceOf(std::uint32_t number) const noexcept { return m_names[number].namespaceUri; }

    /// Global declarations; null when there is none.
    const CElementDeclaration* FindElement(std::uint32_t number) const noexcept { return m_elements[number]; }
    const CAttributeDeclaration* FindAttribute(std::uint32_t number) const noexcept {
        return m_attributes[number];
    }

    /// CKvException when the content model is beyond its limits.
    const CTypeTable& Get(const CComplexTypeDefinition& type) const {
        const CTypeTable* const known = m_tables[type.order].load(std::memory_order_acquire);
        return known != nullptr ? *known : Make(type);
    }
    /// The key of an element's fixed value, by the type that judges it; null when it is not valid.
    const std::string* GetFixedKey(const CElementDeclaration& element,
                                   const CSimpleTypeDefinition& type) const;

private:
    std::uint32_t Find(const CExpandedName& name) const;
    void Add(const CExpandedName& name);
    const CTypeTable& Make(const CComplexTypeDefinition& type) const;

    struct Fixed {
        bool isValid = false;
        std::string key;
    };

    const std::uint32_t m_id;  // and the next one is for names without namespace
    std::unordered_map<CExpandedName, std::uint32_t, CExpandedNameHash> m_numbers;
    std::vector<CExpandedName> m_names;  // by number
    std::vector<const CElementDeclaration*> m_elements;
    std::vector<const CAttributeDeclaration*> m_attributes;
    std::unordered_map<std::string_view, std::uint32_t> m_locals;
    std::vector<std::vector<std::uint32_t>> m_alike;  // by the values of m_locals

    mutable std::mutex m_mutex;
    mutable std::vector<std::atomic<const CTypeTable*>> m_tables;  // by the order of the type
    mutable std::vector<std::unique_ptr<const CTypeTable>> m_made;
    mutable std::unordered_map<const CElementDeclaration*,
                               std::unordered_map<const CSimpleTypeDefinition*, Fixed>>
        m_fixed;
};

}  // namespace KvXmlLib16::internal
