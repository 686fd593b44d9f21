// Arithmetic of wildcards (XML Schema Part 1, 3.10.6).
#include <algorithm>
#include <iterator>

#include "kvxml/schema/constraints/internal/schema_constraints.h"

namespace KvXmlLib16::internal {

namespace {

using Constraint = CWildcard::Constraint;

bool Has(const CWildcard& set, std::string_view uri) noexcept {
    return std::find(set.namespaces.begin(), set.namespaces.end(), uri) != set.namespaces.end();
}

void Copy(const CWildcard& from, CWildcard& to) {
    to.constraint = from.constraint;
    to.namespaces = from.namespaces;
    to.namespaceText = from.namespaceText;
}

bool AreEqual(const CWildcard& a, const CWildcard& b) {
    return a.constraint == b.constraint && a.namespaces == b.namespaces;  // sets are sorted
}

}  // namespace

bool IsSubset(const CWildcard& sub, const CWildcard& super) noexcept {
    if (super.constraint == Constraint::Any) return true;
    if (sub.constraint == Constraint::Any) return false;
    if (sub.constraint == Constraint::Not)
        return super.constraint == Constraint::Not && sub.namespaces == super.namespaces;
    return std::all_of(sub.namespaces.begin(), sub.namespaces.end(),
                       [&](std::string_view uri) { return super.Admits(uri); });
}

bool Unite(const CWildcard& a, const CWildcard& b, CWildcard& result) {
    if (AreEqual(a, b) || a.constraint == Constraint::Any) {
        Copy(a, result);
        return true;
    }
    if (b.constraint == Constraint::Any) {
        Copy(b, result);
        return true;
    }
    if (a.constraint == Constraint::Set && b.constraint == Constraint::Set) {
        result.constraint = Constraint::Set;
        result.namespaces.clear();
        std::set_union(a.namespaces.begin(), a.namespaces.end(), b.namespaces.begin(), b.namespaces.end(),
                       std::back_inserter(result.namespaces));
        result.namespaceText = a.namespaceText;
        return true;
    }
    if (a.constraint == Constraint::Not && b.constraint == Constraint::Not) {
        // Different names: everything but the absent namespace.
        result.constraint = Constraint::Not;
        result.namespaces = {std::string_view()};
        return true;
    }
    const CWildcard& negation = a.constraint == Constraint::Not ? a : b;
    const CWildcard& set = a.constraint == Constraint::Not ? b : a;
    const std::string_view name = negation.namespaces.front();
    const bool hasName = Has(set, name);
    const bool hasAbsent = Has(set, {});
    if (name.empty()) {
        if (hasAbsent) {
            result.constraint = Constraint::Any;
            result.namespaces.clear();
        } else {
            Copy(negation, result);
        }
        return true;
    }
    if (hasName && hasAbsent) {
        result.constraint = Constraint::Any;
        result.namespaces.clear();
    } else if (hasName) {
        result.constraint = Constraint::Not;
        result.namespaces = {std::string_view()};
    } else if (hasAbsent) {
        return false;
    } else {
        Copy(negation, result);
    }
    return true;
}

bool Intersect(const CWildcard& a, const CWildcard& b, CWildcard& result) {
    if (AreEqual(a, b) || b.constraint == Constraint::Any) {
        Copy(a, result);
        return true;
    }
    if (a.constraint == Constraint::Any) {
        Copy(b, result);
        return true;
    }
    if (a.constraint == Constraint::Not && b.constraint == Constraint::Not) {
        // One of them may say "not absent", which the other one says too.
        if (a.namespaces.front().empty()) {
            Copy(b, result);
        } else if (b.namespaces.front().empty()) {
            Copy(a, result);
        } else {
            return false;
        }
        return true;
    }
    const CWildcard& set = a.constraint == Constraint::Set ? a : b;
    const CWildcard& other = a.constraint == Constraint::Set ? b : a;
    std::vector<std::string_view> common;
    for (const std::string_view uri : set.namespaces) {
        if (other.Admits(uri)) common.push_back(uri);
    }
    result.constraint = Constraint::Set;
    result.namespaces = std::move(common);
    result.namespaceText = set.namespaceText;
    return true;
}

}  // namespace KvXmlLib16::internal
