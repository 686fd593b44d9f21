/// Identity constraints while a document streams by (XML Schema Part 1, 3.11.4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/schema/model/schema_set.h"

namespace KvXmlLib16::internal {

/// Where an element stands.
struct CIdentityPlace {
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    std::string path;
};

/// What a tracker finds wrong, with the place of the current event.
class IIdentityReport {
public:
    virtual ~IIdentityReport() = default;
    /// About the current event, or about `place` when it is not null.
    virtual void ReportIdentity(std::string message, const char* constraint,
                                const CIdentityPlace* place = nullptr) = 0;
    /// Of the current event; the path, which takes time, when it is wanted.
    virtual CIdentityPlace Here(bool withPath) const = 0;
};

/// Follows one path of a selector or field, from its context element down.
class CPathMatcher {
public:
    explicit CPathMatcher(const CIdentityConstraintDefinition::XPath& path);

    /// Whether the context element itself is selected.
    bool IsContextSelected() const noexcept { return m_isSelected; }
    /// A child of the element entered last; whether it is selected.
    bool Enter(std::string_view namespaceUri, std::string_view localName);
    void Leave() { m_levels.pop_back(); }
    /// Whether the attribute of the element entered last is selected.
    bool SelectsAttribute(std::string_view namespaceUri, std::string_view localName) const noexcept;
    bool MaySelectAttributes() const noexcept;
    /// Whether anything may be selected at the element entered last or below it.
    bool IsAlive() const noexcept { return !m_levels.back().empty(); }

private:
    struct Position {
        std::uint32_t path;
        std::uint32_t step;
    };
    bool Open(std::vector<Position> reached);

    const std::vector<CIdentityConstraintDefinition::Path>& m_paths;
    std::vector<std::vector<Position>> m_levels;
    bool m_isSelected;
};

/// All constraints of the elements that are open. Memory: a key for each selected element of the scopes that
/// are open, and of ended ones whose keys an outer keyref may ask for.
class CIdentityTracker {
public:
    explicit CIdentityTracker(IIdentityReport& report) : m_report(report) {}

    void Clear();
    /// Nothing is to be told to it between the start of an element without constraints and its end.
    bool IsIdle() const noexcept { return m_scopes.empty() && m_tables.empty(); }

    /// A start tag. `declaration` may be null; `depth` is 1 for the document element.
    void Start(const CElementDeclaration* declaration, std::string_view namespaceUri,
               std::string_view localName, std::uint32_t depth);
    /// Whether attributes of the element just started may be fields.
    bool WantsAttributes() const noexcept { return m_wantsAttributes; }
    /// An attribute with the key of its value; null: it is missing or not valid, which has been told.
    void Attribute(std::string_view namespaceUri, std::string_view localName, const std::string* key);
    /// Whether the value of the innermost element is wanted at its end.
    bool WantsValue(std::uint32_t depth) const noexcept;
    /// An end tag. `key`: of the value of simple content; null: there is no such value (`hasSimpleType` tells
    /// whether there could be one). `isRefused`: the value is not valid, which has been told.
    void End(std::uint32_t depth, const std::string* key, bool hasSimpleType, bool isNillable,
             bool isRefused);

private:
    struct Entry {
        CIdentityPlace place;  ///< of the first element that has it; the path for keyrefs only
        bool counts = true;    ///< false: two nodes below had it, so that neither does
    };
    /// Key sequences of one constraint.
    using Table = std::unordered_map<std::string, Entry>;

    struct Field {
        explicit Field(const CIdentityConstraintDefinition::XPath& path) : matcher(path), text(path.text) {}
        CPathMatcher matcher;
        std::string_view text;
        std::string key;
        bool isFound = false;
        bool isNillable = false;
        bool isRefused = false;  ///< its value is missing or not valid, which has been told
        bool isOpen = false;     ///< it is an element whose end is to come
    };
    /// A selected element that is open.
    struct Target {
        std::uint32_t depth;
        CIdentityPlace place;
        std::vector<Field> fields;
    };
    /// A constraint in force on an element that is open.
    struct Scope {
        Scope(const CIdentityConstraintDefinition& definition, std::uint32_t elementDepth)
            : constraint(&definition), depth(elementDepth), selector(definition.selector) {}
        const CIdentityConstraintDefinition* constraint;
        std::uint32_t depth;
        CPathMatcher selector;
        std::vector<Target> targets;
        /// For each level from the scope's own on: the targets whose fields may select something there or
        /// below. Elements have many targets around them, few of which care.
        std::vector<std::vector<std::uint32_t>> active{{}};
        Table table;
    };

    void Select(Scope& scope, std::uint32_t depth);
    void EnterTargets(Scope& scope, std::string_view namespaceUri, std::string_view localName,
                      std::uint32_t depth);
    void OpenField(Scope& scope, std::uint32_t target, std::uint32_t index, std::uint32_t depth);
    void CloseFields(std::uint32_t depth, const std::string* key, bool hasSimpleType, bool isNillable,
                     bool isRefused);
    void EndTarget(Scope& scope, Target& target);
    void EndScope(Scope& scope);
    void Propagate(std::uint32_t depth);
    std::string NameOf(const Scope& scope) const;
    std::string NameOf(const Field& field, const Scope& scope) const;

    IIdentityReport& m_report;
    std::vector<std::unique_ptr<Scope>> m_scopes;  // by depth
    /// Keys of ended elements that an outer keyref may ask for, by the depth of the element that holds them.
    struct Held {
        std::uint32_t depth;
        const CIdentityConstraintDefinition* constraint;
        Table table;
    };
    std::vector<Held> m_tables;
    /// Fields that are elements whose ends are to come, by depth.
    struct Open {
        Scope* scope;
        std::uint32_t target;
        std::uint32_t field;
        std::uint32_t depth;
    };
    std::vector<Open> m_open;
    bool m_wantsAttributes = false;
};

}  // namespace KvXmlLib16::internal
