// The attributes of an element, and what they refer to.
#include <algorithm>
#include <utility>

#include "kvxml/schema/validation/internal/element_validator.h"

namespace KvXmlLib16::internal {

namespace {

/// An attribute of the local name, in whatever namespace; null when the type has none.
const CAttributeUse* FindMeant(const CComplexTypeDefinition* type, std::string_view localName) {
    if (type == nullptr) return nullptr;
    for (const CAttributeUse* use : type->attributeUses) {
        if (use->attributeDeclaration->name.localName == localName) return use;
    }
    return nullptr;
}

}  // namespace

void CElementValidator::CheckAttributes(Frame& frame) {
    std::size_t wildIds = 0;
    if (frame.table != nullptr) m_present.assign(frame.complex->attributeUses.size(), 0);
    for (std::size_t i = 0; i < m_attributeCount; ++i)
        CheckAttribute(frame, m_attributes[i], wildIds);
    if (frame.table == nullptr) return;
    for (const std::size_t index : frame.table->required) {
        if (m_present[index] != 0) continue;
        const CAttributeUse& use = *frame.complex->attributeUses[index];
        const CExpandedName& missing = use.attributeDeclaration->name;
        Fault("The element " + Name() + " lacks the attribute " + Described(missing) + ".",
              "cvc-complex-type.4");
        if (m_identity.WantsAttributes())
            m_identity.Attribute(missing.namespaceUri, missing.localName, nullptr);
    }
    if (!frame.table->defaulted.empty()) AddDefaults(frame);
}

const CTypeTable::Use* CElementValidator::FindUse(const CTypeTable& table, const CDocumentName& name) const {
    if (!m_ignoresNamespaces) return table.Find(m_tables.NumberOf(name));
    for (const std::uint32_t number : m_tables.AlikeOf(name)) {
        if (const CTypeTable::Use* found = table.Find(number)) return found;
    }
    return nullptr;
}

/// Attributes that every element may have. Declarations of prefixes are among them where the document was
/// read without namespaces.
bool CElementValidator::IsAboutDocument(const CDocumentName& name) const {
    if (InstanceNumber(name) != 0) return true;
    return m_ignoresNamespaces && (name.localName == "xmlns" || name.localName.substr(0, 6) == "xmlns:");
}

void CElementValidator::CheckAttribute(Frame& frame, const CDocumentAttribute& attribute,
                                       std::size_t& wildIds) {
    if (frame.table != nullptr) {
        if (const CTypeTable::Use* entry = FindUse(*frame.table, *attribute.name)) {
            m_present[entry->index] = 1;
            return CheckAttributeValue(*entry->use->attributeDeclaration, attribute,
                                       entry->hasFixedKey ? &entry->fixedKey : nullptr, *entry->constraint,
                                       nullptr);
        }
    }
    if (!IsAboutDocument(*attribute.name)) CheckWildAttribute(frame, attribute, wildIds);
}

void CElementValidator::CheckWildAttribute(Frame& frame, const CDocumentAttribute& attribute,
                                           std::size_t& wildIds) {
    const CDocumentName& given = *attribute.name;
    const CWildcard* const wildcard = frame.table == nullptr ? nullptr : frame.complex->attributeWildcard;
    if (wildcard == nullptr || !wildcard->Admits(given.namespaceUri)) {
        std::string name(given.localName);
        if (!given.prefix.empty()) name = std::string(given.prefix) + ":" + name;
        std::string message = "The attribute " + Bracket(name) + " is not allowed on the element " + Name();
        if (const CAttributeUse* meant = FindMeant(frame.complex, given.localName))
            message += "; " + Described(meant->attributeDeclaration->name) +
                       (meant->attributeDeclaration->name.namespaceUri.empty() ? " of no namespace" : "") +
                       " is";
        Fault(message + ".", frame.table == nullptr ? "cvc-type.3.1.1" : "cvc-complex-type.3.2.2", name);
        return;
    }
    if (wildcard->processContents == CWildcard::ProcessContents::Skip) return;
    const CAttributeDeclaration* const declaration = m_tables.FindAttribute(m_tables.NumberOf(given));
    if (declaration != nullptr) {
        CheckAttributeValue(*declaration, attribute, nullptr, declaration->valueConstraint, &wildIds);
    } else if (wildcard->processContents == CWildcard::ProcessContents::Strict) {
        Fault("The attribute " + Bracket(given.localName) +
                  " is admitted by a strict wildcard, but has no declaration.",
              "cvc-complex-type.3.2.2", given.localName);
    }
}

void CElementValidator::CheckAttributeValue(const CAttributeDeclaration& declaration,
                                            const CDocumentAttribute& attribute, const std::string* fixedKey,
                                            const CValueConstraint& fixed, std::size_t* wildIds) {
    const CSimpleTypeDefinition& type = *declaration.typeDefinition;
    if (type.checker == nullptr) return;
    const bool isFixed = fixed.kind == CValueConstraint::Fixed;
    const bool wantsKey = isFixed || m_identity.WantsAttributes();
    const bool needsValue = wantsKey || type.checker->MayHaveReferences();
    if (!needsValue && type.checker->AcceptsAnyText()) return;
    const std::string_view localName = attribute.name->localName;
    std::string error;
    const char* constraint = nullptr;
    if (!type.checker->Check(attribute.value, m_place, needsValue ? &m_value : nullptr, &error,
                             &constraint)) {
        Fault("The attribute " + Bracket(localName) + " is not valid: " + error, constraint, localName);
        if (m_identity.WantsAttributes())
            m_identity.Attribute(attribute.name->namespaceUri, localName, nullptr);
        return;
    }
    if (!needsValue) return;
    if (isFixed) {
        std::string own;
        if (fixedKey == nullptr) {
            const CVectorScope scope(fixed.scope);
            CCheckedValue value;
            if (type.checker->Check(fixed.text, &scope, &value, nullptr, nullptr)) own = std::move(value.key);
            fixedKey = &own;
        }
        if (m_value.key != *fixedKey) {
            Fault("The attribute " + Bracket(localName) + " must have the value " + Bracket(fixed.text) +
                      ", not " + Bracket(m_value.normalized) + ".",
                  "cvc-attribute.4", localName);
        }
    }
    if (wildIds != nullptr && std::any_of(m_value.references.begin(), m_value.references.end(),
                                          [](const auto& one) { return one.first == BuiltInType::ID; })) {
        if (++*wildIds > 1)
            Fault("The element has two attributes of the type ID.", "cvc-complex-type.5.1", localName);
    }
    TakeReferences(m_value);
    if (m_identity.WantsAttributes())
        m_identity.Attribute(attribute.name->namespaceUri, localName, &m_value.key);
}

/// Absent attributes with a default take part in identity constraints and tables of IDs.
void CElementValidator::AddDefaults(Frame& frame) {
    for (const std::size_t index : frame.table->defaulted) {
        if (m_present[index] != 0) continue;
        const CAttributeUse& use = *frame.complex->attributeUses[index];
        const CSimpleTypeDefinition& type = *use.attributeDeclaration->typeDefinition;
        if (type.checker == nullptr || !(m_identity.WantsAttributes() || type.checker->MayHaveReferences()))
            continue;
        const CValueConstraint& constraint = use.EffectiveValueConstraint();
        const CVectorScope scope(constraint.scope);
        if (!type.checker->Check(constraint.text, &scope, &m_value, nullptr, nullptr)) continue;
        TakeReferences(m_value);
        const CExpandedName& name = use.attributeDeclaration->name;
        if (m_identity.WantsAttributes())
            m_identity.Attribute(name.namespaceUri, name.localName, &m_value.key);
    }
}

void CElementValidator::TakeReferences(const CCheckedValue& value) {
    for (const auto& [kind, text] : value.references) {
        if (kind == BuiltInType::ID) {
            const auto [found, isNew] = m_ids.emplace(std::string(text), true);
            if (!isNew) Fault("The ID " + Bracket(text) + " stands there twice.", "cvc-id.2");
            m_idrefs.erase(found->first);
        } else if (kind == BuiltInType::IDREF && m_ids.count(std::string(text)) == 0) {
            const auto [reference, isNew] = m_idrefs.emplace(std::string(text), Reference());
            if (!isNew) continue;
            CFault place;
            m_place->Locate(m_frames[m_depth - 1]->mark, place);
            reference->second = {place.line, place.column, m_place->GetPath()};
            m_file = std::move(place.file);
        }
    }
}

}  // namespace KvXmlLib16::internal
