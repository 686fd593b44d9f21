/// What a validator needs to know of each complex type, made when the type is met first.
#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "kvxml/schema/model/internal/schema_store.h"
#include "kvxml/schema/validation/internal/content_model.h"

namespace KvXmlLib16::internal {

/// Attributes by name, and the content model.
struct CTypeTable {
    struct Use {
        const CAttributeUse* use;
        std::size_t index;     ///< among the uses
        std::string fixedKey;  ///< of the value that a fixed attribute must have
        bool hasFixedKey = false;
    };
    std::unordered_map<CExpandedName, Use, CExpandedNameHash> uses;
    std::vector<std::size_t> required;             ///< indexes of uses
    std::vector<std::size_t> defaulted;            ///< indexes of uses
    std::unique_ptr<const CContentModel> content;  ///< element-only and mixed content
};

/// The tables of one validator. One thread at a time.
class CTypeTables {
public:
    const CTypeTable& Get(const CComplexTypeDefinition& type);
    /// The key of an element's fixed value, by the type that judges it; null when it is not valid.
    const std::string* GetFixedKey(const CElementDeclaration& element, const CSimpleTypeDefinition& type);

private:
    std::unordered_map<const CComplexTypeDefinition*, std::unique_ptr<CTypeTable>> m_tables;
    struct Fixed {
        bool isValid = false;
        std::string key;
    };
    std::unordered_map<const CElementDeclaration*, std::unordered_map<const CSimpleTypeDefinition*, Fixed>>
        m_fixed;
};

}  // namespace KvXmlLib16::internal
