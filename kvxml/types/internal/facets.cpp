#include "kvxml/types/internal/facets.h"

#include "kvxml/platform/internal/code_page.h"

namespace KvXmlLib16::internal {

Facets::~Facets() {
    for (const TypedFacetsBase* typed = m_typed.load(); typed != nullptr;) {
        const TypedFacetsBase* const next = typed->next;
        delete typed;
        typed = next;
    }
}

std::shared_ptr<Facets> Facets::CopyOfTexts() const {
    auto copy = std::make_shared<Facets>();
    copy->patterns = patterns;
    copy->minLength = minLength;
    copy->maxLength = maxLength;
    copy->length = length;
    copy->minInclusive = minInclusive;
    copy->maxInclusive = maxInclusive;
    copy->minExclusive = minExclusive;
    copy->maxExclusive = maxExclusive;
    copy->totalDigits = totalDigits;
    copy->fractionDigits = fractionDigits;
    copy->enumeration = enumeration;
    copy->rule = rule;
    return copy;
}

std::vector<std::shared_ptr<const CXsdRegex>> Facets::Compile(std::string_view name) const {
    try {
        std::vector<std::shared_ptr<const CXsdRegex>> regexes;
        for (const std::string& pattern : patterns)
            regexes.push_back(CXsdRegex::Get(IsLocalUtf8() ? pattern : LocalToUtf8(pattern)));
        return regexes;
    } catch (const CKvException& e) {
        throw CKvException(e.GetMessage(),
                           CKvInvalidParamException("Invalid Facet of " + std::string(name) + ": pattern."));
    }
}

void BadFacet(std::string_view name, const std::string& what) {
    throw CKvInvalidParamException("Invalid Facet of " + std::string(name) + ": " + what);
}

void Contradiction(std::string_view name, const char* facet, const std::string& value, const char* other,
                   const std::string& otherValue) {
    BadFacet(name, std::string(facet) + " [" + value + "] contradicts " + other + " [" + otherValue + "].");
}

static void RefuseIfMore(std::string_view name, const char* facet, std::int32_t value, const char* other,
                         std::int32_t otherValue) {
    if (value >= 0 && otherValue >= 0 && value > otherValue) {
        Contradiction(name, facet, std::to_string(value), other, std::to_string(otherValue));
    }
}

void CheckLengths(const Facets& facets, std::string_view name) {
    RefuseIfMore(name, "minLength", facets.minLength, "maxLength", facets.maxLength);
    RefuseIfMore(name, "minLength", facets.minLength, "length", facets.length);
    RefuseIfMore(name, "length", facets.length, "maxLength", facets.maxLength);
}

void CheckDigits(const Facets& facets, std::string_view name) {
    if (facets.totalDigits == 0) BadFacet(name, "totalDigits [0] must be positive.");
    RefuseIfMore(name, "fractionDigits", facets.fractionDigits, "totalDigits", facets.totalDigits);
}

}  // namespace KvXmlLib16::internal
