#include "kvxml/schema/validation/internal/identity_tracker.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace KvXmlLib16::internal {

namespace {

using Definition = CIdentityConstraintDefinition;
using Axis = Definition::Step::Axis;

bool Matches(const Definition::Step& step, std::string_view namespaceUri,
             std::string_view localName) noexcept {
    if (!step.anyNamespace && step.name.namespaceUri != namespaceUri) return false;
    return step.anyName || step.name.localName == localName;
}

/// Key sequences in messages: the values without their kinds.
std::string Shown(const std::string& sequence) {
    constexpr std::size_t kMost = 80;
    constexpr char kDecimal = 'A' + static_cast<char>(BuiltInType::Decimal);
    std::string text = "[";
    char kind = 0;
    const auto endValue = [&] {
        // Decimals have a point, and no zeros that they can do without.
        if (kind == kDecimal && text.back() == '.') text.pop_back();
        if (kind == kDecimal && (text.back() == '[' || text.back() == ' ' || text.back() == '-')) text += '0';
        kind = 0;
    };
    for (const char c : sequence) {
        if (c == '\x02' || c == '\x01') {
            endValue();
            text += c == '\x02' ? "], [" : " ";
        } else if (kind == 0) {
            kind = c;
        } else {
            text += c;
        }
    }
    endValue();
    if (text.size() > kMost) {
        std::size_t end = kMost;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end;
        text.resize(end);
        text += "...";
    }
    return text + "]";
}

}  // namespace

// --- paths -------------------------------------------------------------------------------------------------

CPathMatcher::CPathMatcher(const Definition::XPath& path) : m_paths(path.paths) {
    std::vector<Position> start;
    for (std::uint32_t i = 0; i < m_paths.size(); ++i)
        start.push_back({i, 0});
    m_isSelected = Open(std::move(start));
}

/// Begins a level; whether one of the paths ends here.
bool CPathMatcher::Open(std::vector<Position> reached) {
    const bool isSelected = std::any_of(reached.begin(), reached.end(), [&](const Position& position) {
        return position.step == m_paths[position.path].steps.size();
    });
    m_levels.push_back(std::move(reached));
    return isSelected;
}

bool CPathMatcher::Enter(std::string_view namespaceUri, std::string_view localName) {
    std::vector<Position> reached;
    for (const Position& position : m_levels.back()) {
        const Definition::Path& path = m_paths[position.path];
        if (position.step < path.steps.size()) {
            const Definition::Step& step = path.steps[position.step];
            if (step.axis == Axis::Child && Matches(step, namespaceUri, localName))
                reached.push_back({position.path, position.step + 1});
        }
        // Those that look at all descendants begin anew at each.
        if (position.step == 0 && path.fromDescendants) reached.push_back(position);
    }
    return Open(std::move(reached));
}

bool CPathMatcher::SelectsAttribute(std::string_view namespaceUri,
                                    std::string_view localName) const noexcept {
    return std::any_of(m_levels.back().begin(), m_levels.back().end(), [&](const Position& position) {
        const auto& steps = m_paths[position.path].steps;
        return position.step + 1 == steps.size() && steps.back().axis == Axis::Attribute &&
               Matches(steps.back(), namespaceUri, localName);
    });
}

bool CPathMatcher::MaySelectAttributes() const noexcept {
    return std::any_of(m_levels.back().begin(), m_levels.back().end(), [&](const Position& position) {
        const auto& steps = m_paths[position.path].steps;
        return position.step + 1 == steps.size() && steps.back().axis == Axis::Attribute;
    });
}

// --- tracking ----------------------------------------------------------------------------------------------

void CIdentityTracker::Clear() {
    m_scopes.clear();
    m_tables.clear();
    m_open.clear();
    m_wantsAttributes = false;
}

std::string CIdentityTracker::NameOf(const Scope& scope) const {
    static constexpr const char* kKinds[] = {"key", "keyref", "unique"};
    return std::string(kKinds[static_cast<std::size_t>(scope.constraint->category)]) + " [" +
           std::string(scope.constraint->name.localName) + "]";
}

std::string CIdentityTracker::NameOf(const Field& field, const Scope& scope) const {
    return "The field [" + std::string(field.text) + "] of the " + NameOf(scope);
}

void CIdentityTracker::Start(const CElementDeclaration* declaration, std::string_view namespaceUri,
                             std::string_view localName, std::uint32_t depth) {
    m_wantsAttributes = false;
    for (const auto& scope : m_scopes) {
        EnterTargets(*scope, namespaceUri, localName, depth);
        if (scope->selector.Enter(namespaceUri, localName)) Select(*scope, depth);
    }
    if (declaration == nullptr) return;
    for (const Definition* constraint : declaration->identityConstraints) {
        Scope& scope = *m_scopes.emplace_back(std::make_unique<Scope>(*constraint, depth));
        if (scope.selector.IsContextSelected()) Select(scope, depth);
    }
}

/// Goes on with the targets whose fields may still select something here or below.
void CIdentityTracker::EnterTargets(Scope& scope, std::string_view namespaceUri, std::string_view localName,
                                    std::uint32_t depth) {
    std::vector<std::uint32_t> active;
    for (const std::uint32_t index : scope.active.back()) {
        std::vector<Field>& fields = scope.targets[index].fields;
        bool isActive = false;
        for (std::uint32_t i = 0; i < fields.size(); ++i) {
            CPathMatcher& matcher = fields[i].matcher;
            if (matcher.Enter(namespaceUri, localName)) OpenField(scope, index, i, depth);
            isActive = isActive || matcher.IsAlive();
            m_wantsAttributes = m_wantsAttributes || matcher.MaySelectAttributes();
        }
        if (isActive) {
            active.push_back(index);
        } else {
            for (Field& field : fields)
                field.matcher.Leave();
        }
    }
    scope.active.push_back(std::move(active));
}

void CIdentityTracker::Select(Scope& scope, std::uint32_t depth) {
    const auto index = static_cast<std::uint32_t>(scope.targets.size());
    scope.active.back().push_back(index);
    Target& target = scope.targets.emplace_back();
    target.depth = depth;
    target.place = m_report.Here(scope.constraint->category == Definition::Category::Keyref);
    target.fields.reserve(scope.constraint->fields.size());
    for (const Definition::XPath& path : scope.constraint->fields) {
        const CPathMatcher& matcher = target.fields.emplace_back(path).matcher;
        if (matcher.IsContextSelected())
            OpenField(scope, index, static_cast<std::uint32_t>(target.fields.size() - 1), depth);
        m_wantsAttributes = m_wantsAttributes || matcher.MaySelectAttributes();
    }
}

void CIdentityTracker::OpenField(Scope& scope, std::uint32_t target, std::uint32_t index,
                                 std::uint32_t depth) {
    Field& field = scope.targets[target].fields[index];
    if (field.isFound || field.isOpen) {
        m_report.ReportIdentity(NameOf(field, scope) + " selects more than one node.",
                                "cvc-identity-constraint.3");
        return;
    }
    field.isOpen = true;
    m_open.push_back({&scope, target, index, depth});
}

void CIdentityTracker::Attribute(std::string_view namespaceUri, std::string_view localName,
                                 const std::string* key) {
    for (const auto& scope : m_scopes) {
        for (const std::uint32_t index : scope->active.back()) {
            for (Field& field : scope->targets[index].fields) {
                if (!field.matcher.SelectsAttribute(namespaceUri, localName)) continue;
                if (field.isFound) {
                    m_report.ReportIdentity(NameOf(field, *scope) + " selects more than one node.",
                                            "cvc-identity-constraint.3");
                }
                field.isFound = true;
                field.isRefused = key == nullptr;
                if (key != nullptr) field.key = *key;
            }
        }
    }
}

bool CIdentityTracker::WantsValue(std::uint32_t depth) const noexcept {
    return !m_open.empty() && m_open.back().depth == depth;
}

/// Gives the value of the element that ends to the fields that it is.
void CIdentityTracker::CloseFields(std::uint32_t depth, const std::string* key, bool hasSimpleType,
                                   bool isNillable, bool isRefused) {
    std::size_t first = m_open.size();
    while (first > 0 && m_open[first - 1].depth == depth)
        --first;
    for (std::size_t i = first; i < m_open.size(); ++i) {
        const Scope& scope = *m_open[i].scope;
        Field& field = m_open[i].scope->targets[m_open[i].target].fields[m_open[i].field];
        field.isOpen = false;
        if (!hasSimpleType) {
            m_report.ReportIdentity(NameOf(field, scope) + " selects an element that has no simple content.",
                                    "cvc-identity-constraint.3");
        } else if (key != nullptr || isRefused) {
            field.isFound = true;
            field.isRefused = isRefused;
            field.isNillable = isNillable;
            if (key != nullptr) field.key = *key;
        }
    }
    m_open.resize(first);
}

void CIdentityTracker::End(std::uint32_t depth, const std::string* key, bool hasSimpleType, bool isNillable,
                           bool isRefused) {
    CloseFields(depth, key, hasSimpleType, isNillable, isRefused);
    for (const auto& scope : m_scopes) {
        for (const std::uint32_t index : scope->active.back()) {
            for (Field& field : scope->targets[index].fields)
                field.matcher.Leave();
        }
        scope->active.pop_back();
        if (!scope->targets.empty() && scope->targets.back().depth == depth) {
            EndTarget(*scope, scope->targets.back());
            scope->targets.pop_back();
        }
        scope->selector.Leave();
    }
    // Keys first, since keyrefs of the same element look at them.
    const auto isHere = [depth](const auto& scope) { return scope->depth == depth; };
    for (const bool keyrefs : {false, true}) {
        for (const auto& scope : m_scopes) {
            if (isHere(scope) && (scope->constraint->category == Definition::Category::Keyref) == keyrefs)
                EndScope(*scope);
        }
    }
    m_scopes.erase(std::remove_if(m_scopes.begin(), m_scopes.end(), isHere), m_scopes.end());
    Propagate(depth);
}

void CIdentityTracker::EndTarget(Scope& scope, Target& target) {
    std::string sequence;
    bool isComplete = std::none_of(target.fields.begin(), target.fields.end(),
                                   [](const Field& field) { return field.isRefused; });
    if (!isComplete) return;  // which has been told
    const bool isKey = scope.constraint->category == Definition::Category::Key;
    for (const Field& field : target.fields) {
        isComplete = isComplete && field.isFound;
        if (&field != &target.fields.front()) sequence += '\x02';
        sequence += field.key;
        if (isKey && field.isFound && field.isNillable) {
            m_report.ReportIdentity(NameOf(field, scope) + " selects an element that may be nil.",
                                    "cvc-identity-constraint.4.2.3");
        }
        if (isKey && !field.isFound)
            m_report.ReportIdentity(NameOf(field, scope) + " has no value here.",
                                    "cvc-identity-constraint.4.2.1");
    }
    if (!isComplete) return;
    const auto [entry, isNew] = scope.table.try_emplace(sequence);
    if (isNew) entry->second.place = std::move(target.place);
    if (!isNew && scope.constraint->category != Definition::Category::Keyref) {
        m_report.ReportIdentity("The value " + Shown(sequence) + " of the " + NameOf(scope) +
                                    " stands there twice, first in line " +
                                    std::to_string(entry->second.place.line) + ".",
                                isKey ? "cvc-identity-constraint.4.2.2" : "cvc-identity-constraint.4.1");
    }
}

void CIdentityTracker::EndScope(Scope& scope) {
    const auto find = [&](const Definition* constraint) {
        return std::find_if(m_tables.begin(), m_tables.end(), [&](const Held& held) {
            return held.depth == scope.depth && held.constraint == constraint;
        });
    };
    if (scope.constraint->category != Definition::Category::Keyref) {
        if (!scope.constraint->isReferenced) return;
        // Own keys come before those from below.
        const auto held = find(scope.constraint);
        if (held == m_tables.end()) {
            m_tables.push_back({scope.depth, scope.constraint, std::move(scope.table)});
        } else {
            for (auto& entry : scope.table)
                held->table[entry.first].counts = true;
        }
        return;
    }
    if (scope.constraint->referencedKey == nullptr) return;
    const auto held = find(scope.constraint->referencedKey);
    std::vector<const Table::value_type*> dangling;
    for (const auto& entry : scope.table) {
        if (held != m_tables.end()) {
            const auto found = held->table.find(entry.first);
            if (found != held->table.end() && found->second.counts) continue;
        }
        dangling.push_back(&entry);
    }
    std::sort(dangling.begin(), dangling.end(), [](const auto* a, const auto* b) {
        return std::tie(a->second.place.line, a->second.place.column) <
               std::tie(b->second.place.line, b->second.place.column);
    });
    for (const auto* entry : dangling) {
        m_report.ReportIdentity("The value " + Shown(entry->first) + " of the " + NameOf(scope) +
                                    " refers to nothing: the key [" +
                                    std::string(scope.constraint->referencedKey->name.localName) +
                                    "] does not have it.",
                                "cvc-identity-constraint.4.3", &entry->second.place);
    }
}

/// Hands the keys of an ended element to its parent, as long as anybody may ask for them.
void CIdentityTracker::Propagate(std::uint32_t depth) {
    for (std::size_t i = 0; i < m_tables.size();) {
        if (m_tables[i].depth != depth) {
            ++i;
            continue;
        }
        const Definition* const constraint = m_tables[i].constraint;
        const bool isWanted = std::any_of(m_scopes.begin(), m_scopes.end(), [&](const auto& scope) {
            return scope->constraint->referencedKey == constraint || scope->constraint == constraint;
        });
        const auto outer = std::find_if(m_tables.begin(), m_tables.end(), [&](const Held& held) {
            return held.depth == depth - 1 && held.constraint == constraint;
        });
        if (!isWanted) {
            m_tables.erase(m_tables.begin() + static_cast<std::ptrdiff_t>(i));
        } else if (outer == m_tables.end()) {
            m_tables[i].depth = depth - 1;
            ++i;
        } else {
            // The smaller table goes into the larger one; what both have counts no longer.
            Table inner = std::move(m_tables[i].table);
            if (inner.size() > outer->table.size()) std::swap(inner, outer->table);
            for (const auto& entry : inner) {
                const auto [found, isNew] = outer->table.emplace(entry.first, entry.second);
                if (!isNew) found->second.counts = false;
            }
            m_tables.erase(m_tables.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

}  // namespace KvXmlLib16::internal
