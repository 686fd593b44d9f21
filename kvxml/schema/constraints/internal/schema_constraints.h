/// Schema component constraints (XML Schema Part 1, 3.x.6): is this a schema?
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kvxml/schema/model/fault.h"
#include "kvxml/schema/model/internal/schema_store.h"

namespace KvXmlLib16::internal {

/// Checks all components of a store whose references are resolved and whose simple types have their checkers.
/// Each fault is added once, with place and constraint name. Time and memory grow with the number of
/// components (products of two content models at most), never with minOccurs and maxOccurs.
void CheckSchemaConstraints(CSchemaStore& store, CFaultList& faults);

/// Particles that group references may make of one content model, and their nesting: more cannot be validated
/// against.
inline constexpr std::size_t kMaxContentParticles = 1000000;
inline constexpr std::size_t kMaxContentNesting = 2000;

// Its parts, a file each.

/// Unique particle attribution (cos-nonambig), element declarations consistent (cos-element-consistent), all
/// groups limited (cos-all-limited).
void CheckContentModels(CSchemaStore& store, CFaultList& faults);
/// Derivation valid of complex types: extension (cos-ct-extends), restriction (derivation-ok-restriction)
/// with attributes (wildcards included) and the particle mapping of 3.9.6 (rcase-...).
void CheckComplexTypes(CSchemaStore& store, CFaultList& faults);
/// Substitution groups, value constraints, ID attributes, of elements, attributes and their uses; simple type
/// derivation (final, circular unions); identity constraints and keyrefs; notations.
void CheckDeclarations(CSchemaStore& store, CFaultList& faults);

/// Told what is wrong: the place (without document: that of the derived component), a clause, the constraint.
using AttributeReport = std::function<void(const CSourcePlace&, std::string, const char*)>;
/// Attribute uses and wildcard of a restriction against those of its base (3.4.6, Derivation Valid
/// (Restriction, Complex), 2 to 4).
void CheckAttributeRestriction(const std::vector<const CAttributeUse*>& uses, const CWildcard* wildcard,
                               const std::vector<const CAttributeUse*>& baseUses,
                               const CWildcard* baseWildcard, bool isFromAnyType,
                               const AttributeReport& report);

/// Particle Valid (Restriction) of 3.9.6: `restricted` against `base`. On failure gives the constraint's
/// name; an empty one when references to groups make too many particles of them to look at.
bool IsParticleRestriction(const CParticle* restricted, const CParticle* base, const char** constraint);
/// Wildcard Subset (3.10.6).
bool IsSubset(const CWildcard& sub, const CWildcard& super) noexcept;
/// Attribute Wildcard Union and Intersection (3.10.6); false when not expressible.
bool Unite(const CWildcard& a, const CWildcard& b, CWildcard& result);
bool Intersect(const CWildcard& a, const CWildcard& b, CWildcard& result);
/// Particle Emptiable (3.9.6).
bool IsEmptiable(const CParticle* particle);
/// Type Derivation OK (3.4.6, 3.14.6) with the subset of derivations that are blocked.
bool IsDerivationOk(const CTypeDefinition& derived, const CTypeDefinition& base, DerivationSet blocked);

}  // namespace KvXmlLib16::internal
