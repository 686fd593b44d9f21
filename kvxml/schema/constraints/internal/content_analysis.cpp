#include "kvxml/schema/constraints/internal/content_analysis.h"

#include <algorithm>
#include <numeric>

#include "kvxml/schema/constraints/internal/reporter.h"
#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::uint64_t kUnbounded = CParticle::kUnbounded;
/// Faults of one pair of sets; more are of little use, and looking for them costs.
constexpr int kMaxOverlaps = 16;

/// Sums of the marks of different sets of references differ, so that a mark tells the way to a particle.
std::uint64_t MarkOf(const CParticle& reference) noexcept {
    std::uint64_t mark = (std::uint64_t{reference.order} + 1) * 0x9E3779B97F4A7C15u;
    mark = (mark ^ (mark >> 30)) * 0xBF58476D1CE4E5B9u;
    mark = (mark ^ (mark >> 27)) * 0x94D049BB133111EBu;
    return mark ^ (mark >> 31);
}

std::uint64_t Multiply(std::uint64_t& number, std::uint64_t by) noexcept {
    if (number == kUnbounded || by == kUnbounded) return number = kUnbounded;
    return number *= by;
}

/// `min / max` times the range of a repetition. Too large numbers lose their last digits.
void Widen(std::uint64_t& min, std::uint64_t& max, std::uint64_t from, std::uint64_t to) noexcept {
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 31;
    if (max != kUnbounded && to != kUnbounded) {
        const auto reduce = [](std::uint64_t& a, std::uint64_t& b) {
            const std::uint64_t common = std::gcd(a, b);
            a /= common;
            b /= common;
        };
        reduce(min, to);
        reduce(from, max);
        while (max >= kHalf || min >= kHalf) {
            max /= 2;
            min = std::max<std::uint64_t>(min / 2, 1);
        }
        while (to >= kHalf || from >= kHalf) {
            to /= 2;
            from = std::max<std::uint64_t>(from / 2, 1);
        }
        min *= from;
    }
    Multiply(max, to);
}

/// Whether `rounds` rounds of a content whose inner rounds vary so may also be fewer.
bool MayBeFewer(std::uint64_t rounds, std::uint64_t min, std::uint64_t max) noexcept {
    if (max == kUnbounded) return true;
    return max > min && rounds >= (max - 1) / (max - min) + 1;
}

/// One particle at one place.
bool IsSamePlace(const CKeySet& a, const CKeySet& b) noexcept {
    return a == b;
}
/// One declaration, wherever it stands.
bool IsSameDeclaration(const CKeySet& a, const CKeySet& b) noexcept {
    return a.node == b.node && a.mark == b.mark;
}

}  // namespace

// --- sets --------------------------------------------------------------------------------------------------

CContentAnalysis::Positions CContentAnalysis::Unite(const Positions& a, const Positions& b) {
    return {m_sets.Unite(a.names, b.names), m_sets.Unite(a.elementNamespaces, b.elementNamespaces),
            m_sets.Unite(a.wildcardNamespaces, b.wildcardNamespaces), m_sets.Unite(a.open, b.open)};
}

/// Keys that are in both sets with different places; the places of `b`.
CKeySet CContentAnalysis::Collisions(const CKeySet& a, const CKeySet& b) {
    CKeySet collisions;
    auto visit = [&](std::uint32_t, const CKeySet&, const CKeySet& place) {
        collisions = m_sets.Unite(collisions, place);
        return true;
    };
    Meet(a, b, IsSamePlace, visit);
    return collisions;
}

void CContentAnalysis::Add(Followers& all, const Positions& more) {
    const Positions second{Collisions(all.one.names, more.names),
                           {},
                           Collisions(all.one.wildcardNamespaces, more.wildcardNamespaces),
                           Collisions(all.one.open, more.open)};
    all.one = Unite(all.one, more);
    all.other = Unite(second, all.other);
}

void CContentAnalysis::Add(Followers& all, const Followers& more) {
    Add(all, more.one);
    all.other = Unite(all.other, more.other);
}

// --- who competes ------------------------------------------------------------------------------------------

void CContentAnalysis::Compare(const Followers& a, const Positions& b, const CParticle& at) {
    Compare(a.one, b, at);
    Compare(a.other, b, at);
}

void CContentAnalysis::Compare(const Positions& a, const Positions& b, const CParticle& at) {
    if (m_isUnused) return;
    int left = kMaxOverlaps;
    auto visit = [&](std::uint32_t, const CKeySet& one, const CKeySet& other) {
        ReportOverlap(*one.particle, *other.particle, at);
        return --left > 0;
    };
    Meet(a.names, b.names, IsSamePlace, visit);
    Meet(a.elementNamespaces, b.wildcardNamespaces, IsSamePlace, visit);
    Meet(a.wildcardNamespaces, b.elementNamespaces, IsSamePlace, visit);
    Meet(a.wildcardNamespaces, b.wildcardNamespaces, IsSamePlace, visit);
    Meet(a.open, b.open, IsSamePlace, visit);
    CompareOpen(a.open, b, at);
    CompareOpen(b.open, a, at);
}

void CContentAnalysis::CompareOpen(const CKeySet& open, const Positions& other, const CParticle& at) {
    if (open.IsEmpty()) return;
    const CWildcard& wildcard = *open.particle->AsWildcard();
    const bool admitsAll = wildcard.constraint == CWildcard::Constraint::Any;
    const std::uint32_t absent = m_names.NumberOf({});
    const std::uint32_t excluded = admitsAll ? absent : m_names.NumberOf(wildcard.namespaces.front());
    auto visit = [&](std::uint32_t key, const CKeySet& one) {
        if (!admitsAll && (key == absent || key == excluded)) return true;
        ReportOverlap(*open.particle, *one.particle, at);
        return false;
    };
    ForEach(other.elementNamespaces, visit);
    ForEach(other.wildcardNamespaces, visit);
}

void CContentAnalysis::ReportOverlap(const CParticle& a, const CParticle& b, const CParticle& at) {
    const CParticle& later = a.order < b.order ? b : a;
    const CParticle& earlier = a.order < b.order ? a : b;
    if (!m_overlaps.emplace(&earlier, &later).second) return;
    if (&a == &b) {
        return Report(m_faults, at.place,
                      "The " + DescribeParticle(a) + " of " + DescribePlace(a.place, at.place) +
                          " can take the same element at two places of the content, since its group is "
                          "referred to more than once.",
                      "cos-nonambig");
    }
    Report(m_faults, later.place,
           "The " + DescribeParticle(later) + " and the " + DescribeParticle(earlier) + " of " +
               DescribePlace(earlier.place, later.place) + " can take the same element.",
           "cos-nonambig");
}

/// All elements of one name must have one type.
void CContentAnalysis::AddNames(Content& all, const Content& next) {
    int left = kMaxOverlaps;
    auto visit = [&](std::uint32_t, const CKeySet& one, const CKeySet& other) {
        const CElementDeclaration& a = m_names.DeclarationOf(one.mark);
        const CElementDeclaration& b = m_names.DeclarationOf(other.mark);
        if (a.typeDefinition == b.typeDefinition) return true;
        if (!m_inconsistent.emplace(one.particle, other.particle).second) return true;
        const bool isFirstLater = one.particle->order > other.particle->order;
        const CSourcePlace& place = (isFirstLater ? one : other).particle->place;
        Report(m_faults, place,
               "The element " + ShownName(a.name) + " has another type than that of " +
                   DescribePlace((isFirstLater ? other : one).particle->place, place) + ".",
               "cos-element-consistent");
        return --left > 0;
    };
    Meet(all.names, next.names, IsSameDeclaration, visit);
    all.names = m_sets.Unite(all.names, next.names);
}

// --- particles ---------------------------------------------------------------------------------------------

CContentAnalysis::Content CContentAnalysis::OfLeaf(const CParticle& particle) {
    Content content;
    const auto placed = [&](CKeySet set) {
        set.particle = &particle;
        return set;
    };
    if (const CElementDeclaration* element = particle.AsElement()) {
        const CElementNames::Names names = m_names.Substitutable(*element);
        content.names = placed(names.names);
        content.first.names = content.names;
        content.first.elementNamespaces = placed(names.namespaces);
        return content;
    }
    const CWildcard& wildcard = *particle.AsWildcard();
    if (wildcard.constraint != CWildcard::Constraint::Set) {
        content.first.open = m_sets.Single(0, 0, &particle);
        return content;
    }
    for (const std::string_view uri : wildcard.namespaces) {
        content.first.wildcardNamespaces = m_sets.Unite(content.first.wildcardNamespaces,
                                                        m_sets.Single(m_names.NumberOf(uri), 0, &particle));
    }
    return content;
}

CContentAnalysis::Content CContentAnalysis::OfParticle(const CParticle& particle) {
    const CModelGroup* const group = particle.AsGroup();
    if (group == nullptr) {
        Content content = OfLeaf(particle);
        Repeat(content, particle);
        return content;
    }
    const bool isRepeated = particle.maxOccurs > 1;
    if (isRepeated) {
        const auto known = m_repeated.find(&particle);
        if (known != m_repeated.end()) return known->second;
    }
    Content content = m_groups.at(group);
    if (particle.modelGroupDefinition != nullptr) {
        const std::uint64_t mark = MarkOf(particle);
        for (Positions* positions : {&content.first, &content.following.one, &content.following.other}) {
            for (CKeySet* set : {&positions->names, &positions->elementNamespaces,
                                 &positions->wildcardNamespaces, &positions->open})
                set->mark += mark;
        }
    }
    Repeat(content, particle);
    if (isRepeated) m_repeated.emplace(&particle, content);
    return content;
}

void CContentAnalysis::Repeat(Content& content, const CParticle& particle) {
    const std::uint64_t min = particle.minOccurs;
    const std::uint64_t max = particle.maxOccurs;
    if (max > 1) {
        Compare(content.following, content.first, particle);
        // After a complete content, may the next element begin another round?
        if (min < max || content.isNullable || MayBeFewer(max, content.minRounds, content.maxRounds))
            Add(content.following, content.first);
    }
    if (min == 0) content.isNullable = true;
    if (!content.isNullable) Widen(content.minRounds, content.maxRounds, min, max);
    if (min != 1 || max != 1) ++content.particles;
}

// --- groups ------------------------------------------------------------------------------------------------

/// Inner groups first, without recursion.
const CContentAnalysis::Content& CContentAnalysis::Evaluate(const CModelGroup& group) {
    std::vector<const CModelGroup*> open{&group};
    while (!open.empty()) {
        const CModelGroup& at = *open.back();
        if (m_groups.count(&at) != 0) {
            open.pop_back();
            continue;
        }
        const std::size_t before = open.size();
        for (const CParticle* particle : at.particles) {
            const CModelGroup* const inner = particle->AsGroup();
            if (inner != nullptr && m_groups.count(inner) == 0) open.push_back(inner);
        }
        if (open.size() != before) continue;
        open.pop_back();
        m_groups.emplace(&at, OfGroup(at));
    }
    return m_groups.at(&group);
}

CContentAnalysis::Content CContentAnalysis::OfGroup(const CModelGroup& group) {
    using Compositor = CModelGroup::Compositor;
    Content all;
    all.isNullable = group.compositor != Compositor::Choice;
    for (const CParticle* particle : group.particles) {
        const Content next = OfParticle(*particle);
        AddNames(all, next);
        Count(all, next, *particle);
        if (group.compositor == Compositor::Sequence) {
            AddToSequence(all, next, *particle);
        } else {
            AddToChoice(all, next, *particle, group);
        }
    }
    return all;
}

/// All-groups too: any of the particles may come first.
void CContentAnalysis::AddToChoice(Content& all, const Content& next, const CParticle& particle,
                                   const CModelGroup& group) {
    const bool isFirst = &particle == group.particles.front();
    Compare(all.first, next.first, particle);
    all.first = Unite(all.first, next.first);
    Add(all.following, next.following);
    if (group.compositor == CModelGroup::Compositor::All) {
        all.isNullable = all.isNullable && next.isNullable;
        if (next.isNullable && group.particles.size() > 1) Add(all.following, next.first);
        return;
    }
    all.isNullable = all.isNullable || next.isNullable;
    const auto ratio = [](const Content& content) {
        return static_cast<long double>(content.maxRounds) / static_cast<long double>(content.minRounds);
    };
    if (isFirst || ratio(next) > ratio(all)) {
        all.minRounds = next.minRounds;
        all.maxRounds = next.maxRounds;
    }
}

void CContentAnalysis::AddToSequence(Content& all, const Content& next, const CParticle& particle) {
    Compare(all.following, next.first, particle);
    if (all.isNullable) Compare(all.first, next.first, particle);

    Followers following = next.following;
    if (next.isNullable) {
        const Positions& first = all.first;
        const bool hasContent =
            !first.names.IsEmpty() || !first.wildcardNamespaces.IsEmpty() || !first.open.IsEmpty();
        Add(following, all.following);
        if (hasContent) Add(following, next.first);
    } else {
        // Only what is alone in not being empty can make rounds run into each other.
        all.minRounds = all.isNullable ? next.minRounds : 1;
        all.maxRounds = all.isNullable ? next.maxRounds : 1;
    }
    all.following = following;
    if (all.isNullable) all.first = Unite(all.first, next.first);
    all.isNullable = all.isNullable && next.isNullable;
}

void CContentAnalysis::Count(Content& all, const Content& part, const CParticle& at) {
    all.isTooLarge = all.isTooLarge || part.isTooLarge;
    if (all.isTooLarge) return;
    all.particles += part.particles;
    all.nesting = std::max(all.nesting, part.nesting + 1);
    if (all.particles <= kMaxContentParticles && all.nesting <= kMaxContentNesting) return;
    all.isTooLarge = true;
    Report(m_faults, at.place,
           all.nesting > kMaxContentNesting
               ? "The content model is nested deeper than " + std::to_string(kMaxContentNesting) + " groups."
               : "With all references to groups the content model has more than " +
                     std::to_string(kMaxContentParticles) + " particles.",
           "");
}

// --- content models ----------------------------------------------------------------------------------------

void CContentAnalysis::CheckContent(const CParticle& particle) {
    if (const CModelGroup* group = particle.AsGroup()) Evaluate(*group);
    OfParticle(particle);
}

void CContentAnalysis::CheckUnused(const CModelGroup& group) {
    m_isUnused = true;
    Evaluate(group);
    m_isUnused = false;
}

}  // namespace KvXmlLib16::internal
