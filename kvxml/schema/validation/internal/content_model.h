/// Content models: which child may come next. Nothing is unrolled, whatever numbers stand in minOccurs and
/// maxOccurs.
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
        std::vector<Place> places;         ///< not empty unless at the start
        std::vector<Place> next;           ///< for the step
        std::vector<std::uint64_t> taken;  ///< members of an all-group that were there, as bits
    };

    /// `particle` null: nothing is allowed. CKvException when the model has more nodes, or is nested deeper,
    /// than the limits.
    explicit CContentModel(const CParticle* particle);

    void Start(State& state) const;
    /// Takes one child. Without a match the state is as before.
    CMatch Next(State& state, std::string_view namespaceUri, std::string_view localName) const;
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
    CMatch Recover(State& state, std::string_view namespaceUri, std::string_view localName) const;

private:
    enum class Kind : std::uint8_t { Element, Wildcard, Sequence, Choice, All, Repeat };
    struct Node {
        Kind kind;
        bool isNullable = false;
        bool counts = false;  // Repeat: the number of rounds matters
        std::uint32_t parent = kNone;
        std::uint32_t index = 0;       // among the parent's children
        std::uint32_t firstChild = 0;  // in m_children
        std::uint32_t childCount = 0;
        std::uint32_t depth = 0;      // number of counting nodes around it
        std::uint32_t table = kNone;  // Choice, Element: of m_tables
        std::uint64_t min = 1;
        std::uint64_t max = 1;
        const CElementDeclaration* element = nullptr;
        const CWildcard* wildcard = nullptr;
    };
    struct Target {
        std::uint32_t leaf;
        const CElementDeclaration* element;
    };
    /// By local name: elements of a large choice, or members of a substitution group.
    struct Table {
        std::unordered_multimap<std::string_view, Target> elements;
        std::vector<std::uint32_t> wildcards;
    };
    struct Name {
        std::string_view namespaceUri;
        std::string_view localName;
    };
    static constexpr std::uint32_t kNone = UINT32_MAX;

    std::uint32_t AddParticle(const CParticle& particle, std::size_t nesting);
    std::uint32_t AddTerm(const CParticle& particle, std::size_t nesting);
    std::uint32_t AddNode(Kind kind);
    void AdoptChildren(std::uint32_t parent, const std::vector<std::uint32_t>& children);
    void Finish();
    void CollectFirst(std::uint32_t node, Table& table) const;
    void AddMembers(const CElementDeclaration& head, std::uint32_t leaf, Table& table) const;

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
    void ListFirst(std::uint32_t node, std::vector<std::string>& names, std::size_t max,
                   const std::string_view* namespaceUri) const;

    std::vector<Node> m_nodes;
    std::vector<std::uint32_t> m_children;
    std::vector<Table> m_tables;
    std::uint32_t m_root = kNone;
};

}  // namespace KvXmlLib16::internal
