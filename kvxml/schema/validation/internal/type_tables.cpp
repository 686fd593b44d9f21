#include "kvxml/schema/validation/internal/type_tables.h"

#include "kvxml/schema/datatypes/internal/simple_type_checker.h"

namespace KvXmlLib16::internal {

namespace {

bool KeyOf(const CValueConstraint& constraint, const CSimpleTypeDefinition& type, std::string& key) {
    if (type.checker == nullptr) return false;
    const CVectorScope scope(constraint.scope);
    CCheckedValue value;
    if (!type.checker->Check(constraint.text, &scope, &value, nullptr, nullptr)) return false;
    key = std::move(value.key);
    return true;
}

}  // namespace

const CTypeTable& CTypeTables::Get(const CComplexTypeDefinition& type) {
    std::unique_ptr<CTypeTable>& known = m_tables[&type];
    if (known != nullptr) return *known;
    auto table = std::make_unique<CTypeTable>();
    for (std::size_t i = 0; i < type.attributeUses.size(); ++i) {
        const CAttributeUse& use = *type.attributeUses[i];
        CTypeTable::Use entry{&use, i, {}, false};
        const CValueConstraint& constraint = use.EffectiveValueConstraint();
        if (constraint.kind == CValueConstraint::Fixed)
            entry.hasFixedKey = KeyOf(constraint, *use.attributeDeclaration->typeDefinition, entry.fixedKey);
        table->uses.emplace(use.attributeDeclaration->name, std::move(entry));
        if (use.isRequired) table->required.push_back(i);
        if (constraint.kind != CValueConstraint::None) table->defaulted.push_back(i);
    }
    using Content = CComplexTypeDefinition::ContentKind;
    if (type.contentKind == Content::ElementOnly || type.contentKind == Content::Mixed)
        table->content = std::make_unique<const CContentModel>(type.particle);
    known = std::move(table);
    return *known;
}

const std::string* CTypeTables::GetFixedKey(const CElementDeclaration& element,
                                            const CSimpleTypeDefinition& type) {
    const auto [found, isNew] = m_fixed[&element].emplace(&type, Fixed());
    if (isNew) found->second.isValid = KeyOf(element.valueConstraint, type, found->second.key);
    return found->second.isValid ? &found->second.key : nullptr;
}

}  // namespace KvXmlLib16::internal
