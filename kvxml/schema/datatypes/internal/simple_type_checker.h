/// Judges text against a simple type, strictly as XML Schema Part 2 has it, and gives values that can be
/// compared.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/type_definition.h"

namespace KvXmlLib16::internal {

/// Resolves prefixes where a value stands, for QName and NOTATION. Null text pointers never occur.
class IPrefixScope {
public:
    virtual ~IPrefixScope() = default;
    /// The namespace of the prefix (empty: the default namespace); false when it is not declared.
    virtual bool Resolve(std::string_view prefix, std::string_view& namespaceUri) const = 0;
};

/// The scope of a facet or value constraint, as components keep it; null: no prefix.
class CVectorScope : public IPrefixScope {
public:
    explicit CVectorScope(const std::vector<std::pair<std::string_view, std::string_view>>* entries)
        : m_entries(entries) {}
    bool Resolve(std::string_view prefix, std::string_view& uri) const override {
        if (m_entries != nullptr) {
            for (const auto& [known, value] : *m_entries) {
                if (known == prefix) {
                    uri = value;
                    return true;
                }
            }
        }
        return false;
    }

private:
    const std::vector<std::pair<std::string_view, std::string_view>>* m_entries;
};

/// What a check found out about a valid value.
struct CCheckedValue {
    /// After whitespace was treated.
    std::string normalized;
    /// The atomic type that the value (or each of the items) was judged by: for unions the member.
    const CSimpleTypeDefinition* actualType = nullptr;
    /// Equal for equal values only: primitive type, a separator, the canonical form. For identity
    /// constraints, fixed values, enumerations.
    std::string key;
    /// Items of the kinds ID, IDREF and ENTITY found in the value, as views into `normalized`.
    std::vector<std::pair<BuiltInType, std::string_view>> references;
};

/// Compiled form of a simple type definition: all facets of all steps. Immutable, shared by threads.
class CSimpleTypeChecker {
public:
    virtual ~CSimpleTypeChecker() = default;

    /// Whether `text` is valid. When not, `error` (if not null) gets one sentence and `constraint` the rule's
    /// name ("cvc-datatype-valid.1.2.1", "cvc-pattern-valid", ...). `value` is filled when not null, which
    /// costs more. `scope` may be null where no QName can occur.
    virtual bool Check(std::string_view text, const IPrefixScope* scope, CCheckedValue* value,
                       std::string* error, const char** constraint) const = 0;
    /// Values may be, or contain, an ID, IDREF or ENTITY.
    bool MayHaveReferences() const noexcept { return m_mayHaveReferences; }
    /// Every text is a value, and whitespace does not change that.
    bool AcceptsAnyText() const noexcept { return m_acceptsAnyText; }

protected:
    bool m_mayHaveReferences = false;
    bool m_acceptsAnyText = false;
};

/// Compiles the type's checker from its base's, item's or members' checkers, which must be there, and its own
/// facets. Reports facets that make no sense and derivations that are not valid: each violated constraint is
/// handed to `report` with its place, sentence and name ("length-minLength", "cos-applicable-facets", ...).
/// Returns null when the type is too wrong to check anything by; else the checker, which leaves bad facets
/// out.
class IFacetReport {
public:
    virtual ~IFacetReport() = default;
    virtual void Report(const CSourcePlace& place, std::string message, const char* constraint) = 0;
};
std::shared_ptr<const CSimpleTypeChecker> CompileSimpleType(const CSimpleTypeDefinition& type,
                                                            IFacetReport& report);

}  // namespace KvXmlLib16::internal
