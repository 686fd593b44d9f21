#include "kvxml/schema/validation/internal/content_model.h"

#include <algorithm>

#include "kvxml/base/exceptions.h"

namespace KvXmlLib16::internal {

namespace {

/// Choices of more alternatives are looked up by name.
constexpr std::size_t kSmallChoice = 8;

}  // namespace

// --- compiling ---------------------------------------------------------------------------------------------

CContentModel::CContentModel(const CParticle* particle, const NumberOf& numberOf) {
    if (particle == nullptr) return;
    m_root = AddParticle(*particle, 0, numberOf);
    Finish();
    m_known = std::vector<std::atomic<std::uint64_t>>(kWays * (m_nodes.size() + 1));
}

std::uint32_t CContentModel::AddNode(Kind kind) {
    if (m_nodes.size() >= kMaxNodes) throw CKvException("The content model has too many particles.");
    Node& node = m_nodes.emplace_back();
    node.kind = kind;
    return static_cast<std::uint32_t>(m_nodes.size() - 1);
}

void CContentModel::AdoptChildren(std::uint32_t parent, const std::vector<std::uint32_t>& children) {
    m_nodes[parent].firstChild = static_cast<std::uint32_t>(m_children.size());
    m_nodes[parent].childCount = static_cast<std::uint32_t>(children.size());
    for (std::uint32_t i = 0; i < children.size(); ++i) {
        m_nodes[children[i]].parent = parent;
        m_nodes[children[i]].index = i;
        m_children.push_back(children[i]);
    }
}

std::uint32_t CContentModel::AddParticle(const CParticle& particle, std::size_t nesting,
                                         const NumberOf& numberOf) {
    if (nesting > kMaxNesting) throw CKvException("The content model is nested too deeply.");
    const std::uint32_t term = AddTerm(particle, nesting, numberOf);
    if (particle.minOccurs == 1 && particle.maxOccurs == 1) return term;
    const std::uint32_t repeat = AddNode(Kind::Repeat);
    Node& node = m_nodes[repeat];
    node.min = particle.minOccurs;
    node.max = particle.maxOccurs;
    // One round or any number of rounds need no count.
    const bool isUnbounded = node.max == CParticle::kUnbounded;
    node.counts = node.min > 1 || (node.max > 1 && !isUnbounded);
    node.isNullable = node.min == 0 || m_nodes[term].isNullable;
    AdoptChildren(repeat, {term});
    return repeat;
}

std::uint32_t CContentModel::AddElement(const CElementDeclaration& element, const NumberOf& numberOf) {
    const std::uint32_t leaf = AddNode(Kind::Element);
    m_nodes[leaf].element = &element;
    m_nodes[leaf].number = numberOf(element.name);
    if (!element.substitutionGroupMembers.empty()) {
        Table table;
        AddMembers(element, leaf, table, numberOf);
        m_nodes[leaf].table = static_cast<std::uint32_t>(m_tables.size());
        m_tables.push_back(std::move(table));
    }
    return leaf;
}

std::uint32_t CContentModel::AddTerm(const CParticle& particle, std::size_t nesting,
                                     const NumberOf& numberOf) {
    if (const CElementDeclaration* element = particle.AsElement()) return AddElement(*element, numberOf);
    if (const CWildcard* wildcard = particle.AsWildcard()) {
        const std::uint32_t leaf = AddNode(Kind::Wildcard);
        m_nodes[leaf].wildcard = wildcard;
        return leaf;
    }
    const CModelGroup& group = *particle.AsGroup();
    using Compositor = CModelGroup::Compositor;
    const bool isChoice = group.compositor == Compositor::Choice;
    const std::uint32_t node = AddNode(isChoice                              ? Kind::Choice
                                       : group.compositor == Compositor::All ? Kind::All
                                                                             : Kind::Sequence);
    std::vector<std::uint32_t> children;
    bool anyNullable = false;
    bool allNullable = true;
    for (const CParticle* child : group.particles) {
        children.push_back(AddParticle(*child, nesting + 1, numberOf));
        anyNullable = anyNullable || m_nodes[children.back()].isNullable;
        allNullable = allNullable && m_nodes[children.back()].isNullable;
    }
    m_nodes[node].isNullable = isChoice ? anyNullable : allNullable;
    AdoptChildren(node, children);
    m_hasAll = m_hasAll || group.compositor == Compositor::All;
    if (group.compositor == Compositor::Sequence) {
        bool isNullable = true;
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            m_nodes[*child].isRestNullable = isNullable;
            isNullable = isNullable && m_nodes[*child].isNullable;
        }
    }
    return node;
}

/// Everything that may stand for the head, at any number of steps.
void CContentModel::AddMembers(const CElementDeclaration& head, std::uint32_t leaf, Table& table,
                               const NumberOf& numberOf) const {
    std::vector<const CElementDeclaration*> open{&head};
    while (!open.empty()) {
        const CElementDeclaration& at = *open.back();
        open.pop_back();
        if (IsSubstitutable(at, head)) table.elements.emplace(numberOf(at.name), Target{leaf, &at});
        open.insert(open.end(), at.substitutionGroupMembers.begin(), at.substitutionGroupMembers.end());
    }
}

void CContentModel::Finish() {
    // Parents come before their children but for repetitions, so the depths are found from the root down.
    std::vector<std::uint32_t> open{m_root};
    while (!open.empty()) {
        const std::uint32_t at = open.back();
        open.pop_back();
        const Node& node = m_nodes[at];
        const bool isTabled = node.parent != kNone && m_nodes[node.parent].kind == Kind::Choice &&
                              m_nodes[node.parent].table != kNone;
        if (node.kind == Kind::Choice && node.childCount > kSmallChoice && !isTabled) {
            Table table;
            CollectFirst(at, table);
            m_nodes[at].table = static_cast<std::uint32_t>(m_tables.size());
            m_tables.push_back(std::move(table));
        }
        const std::uint32_t below = node.depth + (node.kind == Kind::Repeat && node.counts ? 1 : 0);
        for (std::uint32_t i = 0; i < node.childCount; ++i) {
            m_nodes[m_children[node.firstChild + i]].depth = below;
            open.push_back(m_children[node.firstChild + i]);
        }
    }
    for (Node& node : m_nodes)
        node.repeatsItself = RepeatsItself(node);
}

/// An element of a range such as 0 to 5, with no repetition further out: one more of it can be nothing else.
bool CContentModel::RepeatsItself(const Node& leaf) const noexcept {
    if (leaf.kind != Kind::Element || leaf.table != kNone || leaf.depth != 1 || m_hasAll) return false;
    const Node& repeat = m_nodes[leaf.parent];
    if (repeat.kind != Kind::Repeat || !repeat.counts) return false;
    for (std::uint32_t at = repeat.parent; at != kNone; at = m_nodes[at].parent) {
        if (m_nodes[at].kind == Kind::Repeat && m_nodes[at].max > 1) return false;
    }
    return true;
}

/// Leaves that may come first in the node.
void CContentModel::CollectFirst(std::uint32_t at, Table& table) const {
    std::vector<std::uint32_t> open{at};
    while (!open.empty()) {
        const std::uint32_t index = open.back();
        const Node& node = m_nodes[index];
        open.pop_back();
        if (node.kind == Kind::Element) {
            if (node.table == kNone) {
                table.elements.emplace(node.number, Target{index, node.element});
            } else {
                for (const auto& entry : m_tables[node.table].elements)
                    table.elements.insert(entry);
            }
        } else if (node.kind == Kind::Wildcard) {
            table.wildcards.push_back(index);
        } else {
            for (std::uint32_t i = 0; i < node.childCount; ++i) {
                open.push_back(m_children[node.firstChild + i]);
                if (node.kind == Kind::Sequence && !Child(node, i).isNullable) break;
            }
        }
    }
}

// --- steps -------------------------------------------------------------------------------------------------

CContentModel::Target CContentModel::FindIn(const Table& table, const Name& name) const {
    const auto found = table.elements.find(name.number);
    if (found != table.elements.end()) return found->second;
    for (const std::uint32_t wildcard : table.wildcards) {
        if (m_nodes[wildcard].wildcard->Admits(name.namespaceUri)) return {wildcard, nullptr};
    }
    return {kNone, nullptr};
}

/// The leaf that takes the name as the first of the node's content.
CContentModel::Target CContentModel::FindFirst(std::uint32_t at, const Name& name) const {
    const Node& node = m_nodes[at];
    if (node.table != kNone) return FindIn(m_tables[node.table], name);
    switch (node.kind) {
        case Kind::Element:
            return node.number == name.number ? Target{at, node.element} : Target{kNone, nullptr};
        case Kind::Wildcard:
            return {node.wildcard->Admits(name.namespaceUri) ? at : kNone, nullptr};
        default:
            break;
    }
    Target wildcard{kNone, nullptr};
    for (std::uint32_t i = 0; i < node.childCount; ++i) {
        const std::uint32_t child = m_children[node.firstChild + i];
        const Target found = FindFirst(child, name);
        if (found.element != nullptr) return found;
        if (found.leaf != kNone && wildcard.leaf == kNone) wildcard = found;
        if (node.kind == Kind::Sequence && !m_nodes[child].isNullable) break;
    }
    return wildcard;
}

CContentModel::Target CContentModel::FindInAll(const Node& all, const State& state, const Name& name) const {
    for (std::uint32_t i = 0; i < all.childCount; ++i) {
        if ((state.taken[i / 64] >> (i % 64) & 1) != 0) continue;
        const Target found = FindFirst(m_children[all.firstChild + i], name);
        if (found.leaf != kNone) return found;
    }
    return {kNone, nullptr};
}

bool CContentModel::IsAllDone(const Node& all, const State& state) const {
    for (std::uint32_t i = 0; i < all.childCount; ++i) {
        if ((state.taken[i / 64] >> (i % 64) & 1) == 0 && !Child(all, i).isNullable) return false;
    }
    return true;
}

/// Calls `emit(target, node below which it lies, repetition that begins a new round or kNone)` for each way
/// to go on from a place with the name. `lenient`: as if everything required in between had been there.
template <class Emit>
void CContentModel::Walk(const State& state, const Place& place, const Name& name, bool lenient,
                         Emit emit) const {
    std::uint32_t at = place.leaf;
    while (m_nodes[at].parent != kNone) {
        const std::uint32_t above = m_nodes[at].parent;
        const Node& node = m_nodes[above];
        if (node.kind == Kind::Sequence) {
            for (std::uint32_t i = m_nodes[at].index + 1; i < node.childCount; ++i) {
                const std::uint32_t child = m_children[node.firstChild + i];
                const Target found = FindFirst(child, name);
                if (found.leaf != kNone) emit(found, above, kNone);
                if (found.leaf != kNone && found.element != nullptr && !lenient && !m_nodes[child].isNullable)
                    return;
                if (!m_nodes[child].isNullable && !lenient) return;
            }
        } else if (node.kind == Kind::All) {
            const Target found = FindInAll(node, state, name);
            if (found.leaf != kNone) emit(found, above, kNone);
            if (!lenient && !IsAllDone(node, state)) return;
        } else if (node.kind == Kind::Repeat) {
            const std::uint64_t rounds = node.counts ? place.counts[node.depth] : 1;
            const bool isNullable = m_nodes[m_children[node.firstChild]].isNullable;
            if (node.max == CParticle::kUnbounded || rounds < node.max) {
                const Target found = FindFirst(m_children[node.firstChild], name);
                if (found.leaf != kNone) emit(found, above, above);
            }
            if (rounds < node.min && !isNullable && !lenient) return;
        }
        at = above;
    }
}

/// Moves the place to a leaf below `from`, whose counting nodes in between begin their first round.
void CContentModel::Enter(Place& place, std::uint32_t leaf, std::uint32_t from) const {
    const Node& outer = m_nodes[from];
    const std::size_t kept = outer.depth + (outer.kind == Kind::Repeat && outer.counts ? 1u : 0u);
    place.counts.resize(kept);
    place.counts.resize(m_nodes[leaf].depth, 1);
    place.leaf = leaf;
}

void CContentModel::Start(State& state) const {
    state.isAtStart = true;
    state.isPlain = false;
    state.places.clear();
}

/// Whether everything that may follow `less` may follow `more` too, which is at the same leaf: its counts are
/// equal, or lower and enough.
bool CContentModel::AllowsAll(const Place& more, const Place& less) const {
    for (std::uint32_t at = more.leaf; m_nodes[at].parent != kNone; at = m_nodes[at].parent) {
        const Node& node = m_nodes[m_nodes[at].parent];
        if (node.kind != Kind::Repeat || !node.counts) continue;
        const std::uint64_t mine = more.counts[node.depth];
        const std::uint64_t other = less.counts[node.depth];
        if (mine != other && (mine > other || mine < node.min)) return false;
    }
    return true;
}

void CContentModel::AddPlace(std::vector<Place>& places, Place place) const {
    for (std::size_t i = 0; i < places.size();) {
        if (places[i].leaf != place.leaf) {
            ++i;
            continue;
        }
        if (AllowsAll(places[i], place)) return;
        if (AllowsAll(place, places[i])) {
            std::swap(places[i], places.back());
            places.pop_back();
        } else {
            ++i;
        }
    }
    if (places.size() < kMaxPlaces) places.push_back(std::move(place));
}

CMatch CContentModel::MatchOf(const Target& target) const noexcept {
    return {target.element, target.element == nullptr ? m_nodes[target.leaf].wildcard : nullptr};
}

/// The member of an all-group is taken; the leaf may be inside a repetition of it.
void CContentModel::TakeMember(State& state, std::uint32_t leaf) const {
    for (std::uint32_t at = leaf; m_nodes[at].parent != kNone; at = m_nodes[at].parent) {
        const Node& parent = m_nodes[m_nodes[at].parent];
        if (parent.kind != Kind::All) continue;
        state.taken.resize(parent.childCount / 64 + 1, 0);
        state.taken[m_nodes[at].index / 64] |= std::uint64_t{1} << (m_nodes[at].index % 64);
    }
}

/// From the start.
CMatch CContentModel::StepFirst(State& state, const Name& name, bool lenient) const {
    Target target = FindFirst(m_root, name);
    if (target.leaf == kNone && lenient) {
        // Anywhere in the outermost sequence.
        const Node* node = &m_nodes[m_root];
        if (node->kind == Kind::Repeat) node = &Child(*node, 0);
        for (std::uint32_t i = 0; node->kind == Kind::Sequence && i < node->childCount; ++i) {
            target = FindFirst(m_children[node->firstChild + i], name);
            if (target.leaf != kNone) break;
        }
    }
    if (target.leaf == kNone) return {};
    state.taken.clear();
    SetPlace(state, target.leaf);
    TakeMember(state, target.leaf);
    if (target.element != nullptr && !lenient) Remember(m_nodes.size(), name.number, target.leaf);
    return MatchOf(target);
}

/// The leaf that takes the name, with all places to which it leads in `state.next`.
CContentModel::Target CContentModel::FindNext(State& state, const Name& name, bool lenient) const {
    Target best{kNone, nullptr};
    state.next.clear();
    for (const Place& place : state.places) {
        Walk(state, place, name, lenient, [&](const Target& target, std::uint32_t from, std::uint32_t round) {
            if (lenient && best.leaf != kNone) return;
            if (best.leaf != kNone && best.element == nullptr && target.element != nullptr)
                state.next.clear();
            if (best.leaf != kNone && best.element != nullptr && target.element == nullptr) return;
            best = target;
            Place moved = place;
            if (round != kNone && m_nodes[round].counts) {
                const Node& node = m_nodes[round];
                std::uint64_t& rounds = moved.counts[node.depth];
                // Beyond the least number they are all alike when there is no greatest.
                if (node.max != CParticle::kUnbounded || rounds < node.min) ++rounds;
            }
            Enter(moved, target.leaf, from);
            AddPlace(state.next, std::move(moved));
        });
    }
    return best;
}

CMatch CContentModel::Step(State& state, const Name& name, bool lenient) const {
    if (m_root == kNone) return {};
    if (state.isAtStart) return StepFirst(state, name, lenient);
    const bool wasPlain = state.isPlain;
    if (wasPlain) {
        state.places.resize(1);
        state.places[0].counts.clear();
        state.places[0].leaf = state.leaf;
    }
    const Target best = FindNext(state, name, lenient);
    if (best.leaf == kNone) return {};
    if (wasPlain && best.element != nullptr && !lenient) Remember(state.leaf, name.number, best.leaf);
    std::swap(state.places, state.next);
    state.isPlain = !m_hasAll && m_nodes[best.leaf].depth == 0;
    state.leaf = best.leaf;
    TakeMember(state, best.leaf);
    return MatchOf(best);
}

void CContentModel::Remember(std::size_t from, std::uint32_t number, std::uint32_t leaf) const noexcept {
    if (m_hasAll || m_nodes[leaf].table != kNone) return;
    std::atomic<std::uint64_t>* const known = &m_known[kWays * from];
    for (std::size_t way = kWays - 1; way > 0; --way)
        known[way].store(known[way - 1].load(std::memory_order_relaxed), std::memory_order_relaxed);
    known[0].store(std::uint64_t{number} << 32 | leaf, std::memory_order_relaxed);
}

CMatch CContentModel::NextUnknown(State& state, std::uint32_t number, std::string_view namespaceUri) const {
    if (!state.isAtStart && !state.isPlain && state.places.size() == 1) {
        const Node& node = m_nodes[state.leaf];
        if (node.repeatsItself && node.number == number) {
            const Node& repeat = m_nodes[node.parent];
            std::uint64_t& rounds = state.places[0].counts[0];
            if (rounds < repeat.max) {
                if (repeat.max != CParticle::kUnbounded || rounds < repeat.min) ++rounds;
                return {node.element, nullptr};
            }
        }
    }
    return Step(state, {number, namespaceUri}, false);
}

CMatch CContentModel::Recover(State& state, std::uint32_t number, std::string_view namespaceUri) const {
    return Step(state, {number, namespaceUri}, true);
}

bool CContentModel::MayEnd(const State& state, const Place& place) const {
    for (std::uint32_t at = place.leaf; m_nodes[at].parent != kNone; at = m_nodes[at].parent) {
        const Node& node = m_nodes[m_nodes[at].parent];
        if (node.kind == Kind::Sequence) {
            if (!m_nodes[at].isRestNullable) return false;
        } else if (node.kind == Kind::All) {
            if (!IsAllDone(node, state)) return false;
        } else if (node.kind == Kind::Repeat && node.counts) {
            if (place.counts[node.depth] < node.min && !Child(node, 0).isNullable) return false;
        }
    }
    return true;
}

bool CContentModel::MayEnd(const State& state) const {
    if (m_root == kNone) return true;
    if (state.isAtStart) return m_nodes[m_root].isNullable;
    if (state.isPlain) return MayEnd(state, {state.leaf, {}});
    return std::any_of(state.places.begin(), state.places.end(),
                       [&](const Place& place) { return MayEnd(state, place); });
}

// --- messages ----------------------------------------------------------------------------------------------

const CElementDeclaration* CContentModel::Find(std::string_view namespaceUri,
                                               std::string_view localName) const noexcept {
    for (const Node& node : m_nodes) {
        if (node.kind == Kind::Element && node.element->name == CExpandedName{namespaceUri, localName})
            return node.element;
    }
    return nullptr;
}

void CContentModel::ListFirst(std::uint32_t at, std::vector<std::string>& names, std::size_t max,
                              const std::string_view* namespaceUri) const {
    if (names.size() >= max) return;
    const Node& node = m_nodes[at];
    std::string name;
    if (node.kind == Kind::Element) {
        const CExpandedName& own = node.element->name;
        name = "[" + std::string(own.localName) + "]";
        if (namespaceUri != nullptr && own.namespaceUri != *namespaceUri) {
            name += own.namespaceUri.empty() ? std::string(" of no namespace")
                                             : " of the namespace [" + std::string(own.namespaceUri) + "]";
        }
    }
    if (node.kind == Kind::Wildcard) {
        name = node.wildcard->constraint == CWildcard::Constraint::Any
                   ? "any element"
                   : "any element of [" + std::string(node.wildcard->namespaceText) + "]";
    }
    if (!name.empty()) {
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
        return;
    }
    for (std::uint32_t i = 0; i < node.childCount; ++i) {
        ListFirst(m_children[node.firstChild + i], names, max, namespaceUri);
        if (node.kind == Kind::Sequence && !Child(node, i).isNullable) break;
    }
}

std::vector<std::string> CContentModel::Expected(const State& state, std::size_t max,
                                                 const std::string_view* namespaceUri) const {
    std::vector<std::string> names;
    if (m_root == kNone) return names;
    if (state.isAtStart) {
        ListFirst(m_root, names, max, namespaceUri);
        return names;
    }
    const Place place = state.isPlain ? Place{state.leaf, {}} : state.places.front();
    for (std::uint32_t at = place.leaf; m_nodes[at].parent != kNone; at = m_nodes[at].parent) {
        const Node& node = m_nodes[m_nodes[at].parent];
        if (node.kind == Kind::Sequence) {
            for (std::uint32_t i = m_nodes[at].index + 1; i < node.childCount; ++i) {
                ListFirst(m_children[node.firstChild + i], names, max, namespaceUri);
                if (!Child(node, i).isNullable) return names;
            }
        } else if (node.kind == Kind::All) {
            for (std::uint32_t i = 0; i < node.childCount; ++i) {
                if ((state.taken[i / 64] >> (i % 64) & 1) == 0)
                    ListFirst(m_children[node.firstChild + i], names, max, namespaceUri);
            }
            if (!IsAllDone(node, state)) return names;
        } else if (node.kind == Kind::Repeat) {
            const std::uint64_t rounds = node.counts ? place.counts[node.depth] : 1;
            if (node.max == CParticle::kUnbounded || rounds < node.max)
                ListFirst(m_children[node.firstChild], names, max, namespaceUri);
            if (rounds < node.min && !Child(node, 0).isNullable) return names;
        }
    }
    return names;
}

}  // namespace KvXmlLib16::internal
