/// Content models as automata with counters; nothing is unrolled, whatever numbers stand in minOccurs and
/// maxOccurs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/schema/model/schema_set.h"

namespace KvXmlLib16::internal {

/// What an element of a document is attributed to.
struct CMatch {
    const CElementDeclaration* element =
        nullptr;                          ///< the declaration, that of a substitution group's member included
    const CWildcard* wildcard = nullptr;  ///< else the wildcard
    explicit operator bool() const noexcept { return element != nullptr || wildcard != nullptr; }
};

/// The compiled content model of a complex type of element-only or mixed content. Immutable, shared by
/// threads.
class CContentModel {
public:
    /// Where in the model the children read so far have led. Copyable and reusable; no allocation per child
    /// in ordinary models.
    class State;

    virtual ~CContentModel() = default;

    virtual void Start(State& state) const = 0;
    /// Takes one child. Without a match the state is as before.
    virtual CMatch Next(State& state, std::string_view namespaceUri, std::string_view localName) const = 0;
    /// Whether the content may end here.
    virtual bool MayEnd(const State& state) const = 0;
    /// Names that may come next, for messages: "a, b, any element of namespace x"; at most `max`.
    virtual std::vector<std::string> Expected(const State& state, std::size_t max) const = 0;
    /// Where to go on after a child that does not fit, so that one mistake gives one message: true, with the
    /// state moved, when skipping required particles makes the child fit.
    virtual bool Recover(State& state, std::string_view namespaceUri, std::string_view localName) const = 0;
};

/// `particle` null: nothing is allowed.
std::shared_ptr<const CContentModel> CompileContentModel(const CParticle* particle);

}  // namespace KvXmlLib16::internal
