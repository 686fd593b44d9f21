/// Particles, model groups and wildcards: what content models are made of (XML Schema Part 1, 3.7 to 3.10).
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/component.h"

namespace KvXmlLib16 {

struct CElementDeclaration;
struct CModelGroup;
struct CModelGroupDefinition;
struct CWildcard;

/// A term with the number of times that it may occur (3.9).
struct CParticle : CComponent {
    /// {max occurs} of `unbounded`. Larger numbers than 64 bits hold are read as unbounded.
    static constexpr std::uint64_t kUnbounded = UINT64_MAX;

    CParticle() noexcept : CComponent(ComponentKind::Particle) {}

    std::uint64_t minOccurs = 1;
    std::uint64_t maxOccurs = 1;
    /// An element declaration, model group or wildcard; `term->kind` tells which.
    const CComponent* term = nullptr;
    /// The named group that the term was taken from by reference; null: none.
    const CModelGroupDefinition* modelGroupDefinition = nullptr;
    /// The element was referred to, not declared here.
    bool isReference = false;

    inline const CElementDeclaration* AsElement() const noexcept;
    inline const CModelGroup* AsGroup() const noexcept;
    inline const CWildcard* AsWildcard() const noexcept;
};

/// A model group (3.8).
struct CModelGroup : CComponent {
    enum class Compositor : std::uint8_t { All, Choice, Sequence };

    CModelGroup() noexcept : CComponent(ComponentKind::ModelGroup) {}

    Compositor compositor = Compositor::Sequence;
    std::vector<const CParticle*> particles;  ///< those of maxOccurs 0 left out
};

/// A model group definition (3.7).
struct CModelGroupDefinition : CComponent {
    CModelGroupDefinition() noexcept : CComponent(ComponentKind::ModelGroupDefinition) {}

    CExpandedName name;
    const CModelGroup* modelGroup = nullptr;
};

/// Which names `any` or `anyAttribute` admits, and how what they admit is judged (3.10).
struct CWildcard : CComponent {
    enum class ProcessContents : std::uint8_t { Skip, Lax, Strict };
    /// {namespace constraint}: any; not a namespace, nor the absent one; or one of a set.
    enum class Constraint : std::uint8_t { Any, Not, Set };

    CWildcard() noexcept : CComponent(ComponentKind::Wildcard) {}

    ProcessContents processContents = ProcessContents::Strict;
    Constraint constraint = Constraint::Any;
    /// Not: the one namespace (empty: "not absent"). Set: the namespaces, the empty one for the absent.
    std::vector<std::string_view> namespaces;
    /// The `namespace` attribute as it stands.
    std::string_view namespaceText;

    /// Wildcard allows Namespace Name (3.10.4).
    bool Admits(std::string_view namespaceUri) const noexcept {
        if (constraint == Constraint::Any) return true;
        if (constraint == Constraint::Not) return !namespaceUri.empty() && namespaceUri != namespaces.front();
        for (const std::string_view one : namespaces) {
            if (one == namespaceUri) return true;
        }
        return false;
    }
};

}  // namespace KvXmlLib16

#include "kvxml/schema/model/declarations.h"

namespace KvXmlLib16 {

inline const CElementDeclaration* CParticle::AsElement() const noexcept {
    return term->kind == ComponentKind::ElementDeclaration ? static_cast<const CElementDeclaration*>(term)
                                                           : nullptr;
}
inline const CModelGroup* CParticle::AsGroup() const noexcept {
    return term->kind == ComponentKind::ModelGroup ? static_cast<const CModelGroup*>(term) : nullptr;
}
inline const CWildcard* CParticle::AsWildcard() const noexcept {
    return term->kind == ComponentKind::Wildcard ? static_cast<const CWildcard*>(term) : nullptr;
}

}  // namespace KvXmlLib16
