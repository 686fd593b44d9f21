/// How records reach the property of their member, and what they throw when that fails: the same for
/// elements, attributes and the items of collections.
#pragma once

#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/variant_facets.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/types/internal/whitespace.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16::internal {

/// CKvValidationException "Failed to get the property value for [%s].".
[[noreturn]] void ThrowGetFailed(std::string_view name, const CKvException& inner);
/// CKvValidationException "Failed to set the property value [%s]." with the path of what was read.
[[noreturn]] void ThrowSetFailed(std::string_view name, const std::string& path, const CKvException& inner);
/// CKvInvalidParamException "The Property [%s] is mandatory, it may not be NULL".
[[noreturn]] void ThrowMandatoryIsNull(std::string_view name);

class CMemberAccess {
public:
    /// Reads the property into `value`. A failure is thrown with the name of the member.
    static void Get(const CXmlGeneratedClass& owner, int index, const std::string& name, KvVariant& value) {
        try {
            owner.ReadProperty(index, value);
        } catch (const CKvException& e) {
            ThrowGetFailed(name, e);
        }
    }
    /// Assigns the property. A failure is thrown with the path of `source`, the element or attribute read.
    template <class Source>
    static void Set(CXmlGeneratedClass& owner, int index, const std::string& name, KvVariant& value,
                    const Source& source) {
        try {
            owner.AccessProperty(index, false, value);
        } catch (const CKvException& e) {
            ThrowSetFailed(name, source.GetXPath(), e);
        }
    }
    /// Makes the property, a collection that the class has not made yet.
    static void SetUnset(CXmlGeneratedClass& owner, int index) {
        KvVariant unset;
        owner.AccessProperty(index, false, unset);
    }
};

/// Makes the value that `text` stands for and checks it against the facets; patterns see the text as the
/// whitespace rule leaves it.
inline void ToCheckedValue(std::string_view text, ItemType type, CWhitespaceUtils::WhitespaceRule rule,
                           const CPrimitiveRestrictions& restrictions, std::string_view name,
                           KvVariant& value) {
    value.FromString(text, type, rule);
    if (restrictions.IsEmpty()) return;
    std::string scratch;
    const bool hasPattern = restrictions.HasPattern();
    CheckFacets(restrictions, name, value, hasPattern ? ApplyRule(rule, text, scratch) : std::string_view());
}

}  // namespace KvXmlLib16::internal
