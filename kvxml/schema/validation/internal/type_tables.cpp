#include "kvxml/schema/validation/internal/type_tables.h"

#include <algorithm>
#include <utility>

#include "kvxml/base/internal/namespace_uris.h"
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

/// Differs from set to set, so that the notes of one are not taken for those of another.
std::uint32_t NextId() noexcept {
    static std::atomic<std::uint32_t> last{0};
    return last.fetch_add(2) + 1;
}

}  // namespace

const CTypeTable::Use* CTypeTable::Find(std::uint32_t number) const noexcept {
    constexpr std::size_t kFew = 12;
    if (number == 0) return nullptr;
    auto found = uses.begin();
    if (uses.size() > kFew) {
        found = std::lower_bound(uses.begin(), uses.end(), number,
                                 [](const Use& use, std::uint32_t wanted) { return use.number < wanted; });
    } else {
        while (found != uses.end() && found->number != number)
            ++found;
    }
    return found != uses.end() && found->number == number ? &*found : nullptr;
}

CTypeTables::CTypeTables(CSchemaStore& store) : m_id(NextId()), m_names(1), m_alike(1) {
    // In the order of the enumeration.
    for (const char* name : {"type", "nil", "schemaLocation", "noNamespaceSchemaLocation"})
        Add({kInstanceNamespace, name});
    for (const CElementDeclaration& element : store.Pool<CElementDeclaration>())
        Add(element.name);
    for (const CAttributeDeclaration& attribute : store.Pool<CAttributeDeclaration>())
        Add(attribute.name);
    m_elements.resize(m_names.size());
    for (const auto& [name, element] : store.elements.byName)
        m_elements[m_numbers.at(name)] = element;
    m_attributes.resize(m_names.size());
    for (const auto& [name, attribute] : store.attributes.byName)
        m_attributes[m_numbers.at(name)] = attribute;
    m_tables = std::vector<std::atomic<const CTypeTable*>>(store.GetOrderEnd());
}

CTypeTables::~CTypeTables() = default;

const CTypeTables& CTypeTables::Of(const CSchemaSet& set) {
    return CSchemaStore::Of(set).Derived<CTypeTables>();
}

void CTypeTables::Add(const CExpandedName& name) {
    const auto number = static_cast<std::uint32_t>(m_names.size());
    if (!m_numbers.emplace(name, number).second) return;
    m_names.push_back(name);
    if (name.namespaceUri == kInstanceNamespace) return;
    const auto [local, isNew] = m_locals.emplace(name.localName, static_cast<std::uint32_t>(m_alike.size()));
    if (isNew) m_alike.emplace_back();
    m_alike[local->second].push_back(number);
}

std::uint32_t CTypeTables::Find(const CExpandedName& name) const {
    const auto found = m_numbers.find(name);
    return found == m_numbers.end() ? 0 : found->second;
}

const std::vector<std::uint32_t>& CTypeTables::AlikeOf(const CDocumentName& name) const {
    static const std::vector<std::uint32_t> kInstance[] = {
        {kXsiType}, {kXsiNil}, {kXsiSchemaLocation}, {kXsiNoNamespaceSchemaLocation}};
    const std::uint32_t id = m_id + 1;
    if (name.note >> 32 == id) return m_alike[static_cast<std::uint32_t>(name.note)];
    std::string_view local = name.localName;
    const std::size_t colon = local.find(':');
    const std::string_view prefix = colon == local.npos ? std::string_view() : local.substr(0, colon);
    if (colon != local.npos) local.remove_prefix(colon + 1);
    if (name.namespaceUri == kInstanceNamespace || prefix == "xsi") {
        const std::uint32_t number = Find({kInstanceNamespace, local});
        return number == 0 ? m_alike[0] : kInstance[number - 1];
    }
    const auto found = m_locals.find(local);
    const std::uint32_t index = found == m_locals.end() ? 0 : found->second;
    name.note = std::uint64_t{id} << 32 | index;
    return m_alike[index];
}

const CTypeTable& CTypeTables::Make(const CComplexTypeDefinition& type) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::atomic<const CTypeTable*>& place = m_tables[type.order];
    if (const CTypeTable* known = place.load(std::memory_order_relaxed)) return *known;
    auto table = std::make_unique<CTypeTable>();
    for (std::size_t i = 0; i < type.attributeUses.size(); ++i) {
        const CAttributeUse& use = *type.attributeUses[i];
        const CAttributeDeclaration& declaration = *use.attributeDeclaration;
        const CValueConstraint& constraint = use.EffectiveValueConstraint();
        CTypeTable::Use entry{
            Find(declaration.name), static_cast<std::uint32_t>(i), &use, &constraint, {}, false};
        if (constraint.kind == CValueConstraint::Fixed)
            entry.hasFixedKey = KeyOf(constraint, *declaration.typeDefinition, entry.fixedKey);
        table->uses.push_back(std::move(entry));
        if (use.isRequired) table->required.push_back(i);
        if (constraint.kind != CValueConstraint::None) table->defaulted.push_back(i);
    }
    std::sort(table->uses.begin(), table->uses.end(),
              [](const CTypeTable::Use& a, const CTypeTable::Use& b) { return a.number < b.number; });
    using Content = CComplexTypeDefinition::ContentKind;
    if (type.contentKind == Content::ElementOnly || type.contentKind == Content::Mixed) {
        table->content = std::make_unique<const CContentModel>(
            type.particle, [this](const CExpandedName& name) { return Find(name); });
    }
    m_made.push_back(std::move(table));
    place.store(m_made.back().get(), std::memory_order_release);
    return *m_made.back();
}

const std::string* CTypeTables::GetFixedKey(const CElementDeclaration& element,
                                            const CSimpleTypeDefinition& type) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto [found, isNew] = m_fixed[&element].emplace(&type, Fixed());
    if (isNew) found->second.isValid = KeyOf(element.valueConstraint, type, found->second.key);
    return found->second.isValid ? &found->second.key : nullptr;
}

}  // namespace KvXmlLib16::internal
