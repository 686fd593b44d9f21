/// Content models: which child may come next. Nothing is unrolled, whatever numbers stand in minOccurs and
/// maxOccurs.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kvxml/schema/model/schema_set.h"

namespace KvXmlLib16::internal {

/// What an element of a document is attributed to.
struct CMatch {
    /// The declaration, that of a substitution group's member included; null: a wildcard.
    const CElementDeclaration* element = nullptr;
    const CWildcard* wildcard = nullptr;
    explicit operator bool() const noexcept { return element != nullptr || wildcard != nullptr; }
};

/// The compiled content model of a complex type of element-only or mixed content. Immutable, shared by
/// threads.
///
/// It is the tree of particles as the schema has it, each particle with a range other than 1 being a node
/// that repeats its child. A place in it is the leaf that took the last child, with a count for each node
/// around it that counts. Since a child may be the next round of an inner or of an outer repetition,
/// `(a{1,2}){2,10}`, there may be several places at a time; unique particle attribution keeps them at the
/// same leaf.
class CContentModel {
public:
    /// Places beyond this number are dropped: then a document may be refused that is valid by a model that
    /// nests ranges of hundreds, `(a{1,500}){7,500}`.
    static constexpr std::size_t kMaxPlaces = 256;
    /// Particles that group references may make of one content model, and their nesting.
    static constexpr std::size_t kMaxNodes = 1000000;
    static constexpr std::size_t kMaxNesting = 2000;

    struct Place {
        std::uint32_t leaf = 0;
        std::vector<std::uint64_t> counts;  ///< of the counting nodes around it, from the outside
        friend bool operator==(const Place& a, const Place& b) noexcept {
            return a.leaf == b.leaf && a.counts == b.counts;
        }
    };
    /// How far the children of one element have led. Can be started again and again; keeps its memory.
    struct State {
        bool isAtStart = true;
        bool isPlain = false;  ///< at `leaf`, where nothing is counted; `places` do not count
        std::uint32_t leaf = 0;
        std::vector<Place> places;         ///< not empty unless at the start or plain
        std::vector<Place> next;           ///< for the step
        std::vector<std::uint64_t> taken;  ///< members of an all-group that were there, as bits
    };

    /// `particle` null: nothing is allowed. CKvException when the model has more nodes, or is nested deeper,
    /// than the limits.
    ///
    /// `numberOf` gives the number by which the name of an element is known, not 0.
    CContentModel(const CParticle* particle,
                  const std::function<std::uint32_t(const CExpandedName&)>& numberOf);

    void Start(State& state) const;
    /// Takes one child, by the number of its name; 0: no declaration has it, so that only wildcards may admit
    /// its namespace. Without a match the state is as before.
    CMatch Next(State& state, std::uint32_t number, std::string_view namespaceUri) const {
        const Node* const known = FindKnown(state, number);
        if (known == nullptr) return NextUnknown(state, number, namespaceUri);
        SetPlace(state, static_cast<std::uint32_t>(known - m_nodes.data()));
        return {known->element, nullptr};
    }
    /// Whether the content may end here.
    bool MayEnd(const State& state) const;
    /// A declaration of the name anywhere in the content; null when there is none. For messages: it looks
    /// through all.
    const CElementDeclaration* Find(std::string_view namespaceUri, std::string_view localName) const noexcept;
    /// Names that may come next, "[a]" or "any element", at most `max`. With `namespaceUri`, names of others
    /// are told with theirs.
    std::vector<std::string> Expected(const State& state, std::size_t max,
                                      const std::string_view* namespaceUri = nullptr) const;
    /// After a child that does not fit: goes on as if required particles in between had been there, so that
    /// one mistake gives one message. No match, and the state as before, when that does not help.
    CMatch Recover(State& state, std::uint32_t number, std::string_view namespaceUri) const;

private:
    enum class Kind : std::uint8_t { Element, Wildcard, Sequence, Choice, All, Repeat };
    struct Node {
        Kind kind;
        bool isNullable = false;
        bool counts = false;         // Repeat: the number of rounds matters
        bool isRestNullable = true;  // Sequence above: all that comes after it
        bool repeatsItself = false;  // Element: nothing but its parent counts or repeats
        std::uint32_t parent = kNone;
        std::uint32_t index = 0;       // among the parent's children
        std::uint32_t firstChild = 0;  // in m_children
        std::uint32_t childCount = 0;
        std::uint32_t depth = 0;      // number of counting nodes around it
        std::uint32_t table = kNone;  // Choice, Element: of m_tables
        std::uint64_t min = 1;
        std::uint64_t max = 1;
        std::uint32_t number = 0;  // Element: of its name
        const CElementDeclaration* element = nullptr;
        const CWildcard* wildcard = nullptr;
    };
    struct Target {
        std::uint32_t leaf;
        const CElementDeclaration* element;
    };
    /// By the numbers of names: elements of a large choice, or members of a substitution group.
    struct Table {
        std::unordered_multimap<std::uint32_t, Target> elements;
        std::vector<std::uint32_t> wildcards;
    };
    struct Name {
        std::uint32_t number;
        std::string_view namespaceUri;
    };
    using NumberOf = std::function<std::uint32_t(const CExpandedName&)>;
    static constexpr std::uint32_t kNone = UINT32_MAX;
    static constexpr std::size_t kWays = 2;  // steps remembered for each leaf

    std::uint32_t AddParticle(const CParticle& particle, std::size_t nesting, const NumberOf& numberOf);
    std::uint32_t AddTerm(const CParticle& particle, std::size_t nesting, const NumberOf& numberOf);
    std::uint32_t AddElement(const CElementDeclaration& element, const NumberOf& numberOf);
    std::uint32_t AddNode(Kind kind);
    void AdoptChildren(std::uint32_t parent, const std::vector<std::uint32_t>& children);
    void Finish();
    void CollectFirst(std::uint32_t node, Table& table) const;
    void AddMembers(const CElementDeclaration& head, std::uint32_t leaf, Table& table,
                    const NumberOf& numberOf) const;
    bool RepeatsItself(const Node& leaf) const noexcept;

    const Node& Child(const Node& node, std::uint32_t index) const {
        return m_nodes[m_children[node.firstChild + index]];
    }
    Target FindFirst(std::uint32_t node, const Name& name) const;
    Target FindIn(const Table& table, const Name& name) const;
    template <class Emit>
    void Walk(const State& state, const Place& place, const Name& name, bool lenient, Emit emit) const;
    Target FindInAll(const Node& all, const State& state, const Name& name) const;
    bool IsAllDone(const Node& all, const State& state) const;
    bool MayEnd(const State& state, const Place& place) const;
    void Enter(Place& place, std::uint32_t leaf, std::uint32_t from) const;
    void AddPlace(std::vector<Place>& places, Place place) const;
    bool AllowsAll(const Place& more, const Place& less) const;
    CMatch Step(State& state, const Name& name, bool lenient) const;
    CMatch StepFirst(State& state, const Name& name, bool lenient) const;
    Target FindNext(State& state, const Name& name, bool lenient) const;
    void TakeMember(State& state, std::uint32_t leaf) const;
    CMatch NextUnknown(State& state, std::uint32_t number, std::string_view namespaceUri) const;
    /// The only place, in the first round of all that counts around it.
    void SetPlace(State& state, std::uint32_t leaf) const {
        state.isAtStart = false;
        state.isPlain = m_nodes[leaf].depth == 0 && !m_hasAll;
        state.leaf = leaf;
        if (state.isPlain) return;
        state.places.resize(1);
        state.places[0].counts.assign(m_nodes[leaf].depth, 1);
        state.places[0].leaf = leaf;
    }
    CMatch MatchOf(const Target& target) const noexcept;
    /// Where nothing is counted, a step depends on the leaf and the name alone.
    const Node* FindKnown(const State& state, std::uint32_t number) const noexcept {
        if (number == 0 || m_known.empty() || (!state.isPlain && !state.isAtStart)) return nullptr;
        const std::atomic<std::uint64_t>* const known =
            &m_known[kWays * (state.isAtStart ? m_nodes.size() : state.leaf)];
        for (std::size_t way = 0; way < kWays; ++way) {
            const std::uint64_t step = known[way].load(std::memory_order_relaxed);
            if (step >> 32 == number) return &m_nodes[static_cast<std::uint32_t>(step)];
        }
        return nullptr;
    }
    void Remember(std::size_t from, std::uint32_t number, std::uint32_t leaf) const noexcept;
    void ListFirst(std::uint32_t node, std::vector<std::string>& names, std::size_t max,
                   const std::string_view* namespaceUri) const;

    std::vector<Node> m_nodes;
    std::vector<std::uint32_t> m_children;
    std::vector<Table> m_tables;
    std::uint32_t m_root = kNone;
    bool m_hasAll = false;
    /// Steps taken before, two for each leaf where nothing is counted, and for the start: the number of the
    /// name and the leaf that it leads to. Any thread may replace one.
    mutable std::vector<std::atomic<std::uint64_t>> m_known;
};

}  // namespace KvXmlLib16::internal
