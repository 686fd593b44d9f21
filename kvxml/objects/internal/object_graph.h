/// Deep copies and deep comparison of objects by their properties.
///
/// Generated classes are walked by their records and AccessProperty, so they provide nothing for it. Neither
/// takes stack per level; an object that contains itself is found out.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/primitive_collections.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_generated_class.h"

namespace KvXmlLib16::internal {

class CObjectGraph {
public:
    static void Copy(const CXmlObjectBase& source, CXmlObjectBase& target);
    static bool AreEqual(const CXmlObjectBase& a, const CXmlObjectBase& b);

    static void BeginClone(CXmlObjectBase& copy) noexcept;
    static void CopyName(const CXmlObjectBase& source, CXmlObjectBase& target) noexcept {
        target.m_elementName = source.m_elementName;
    }

private:
    class CCopier;
    class CComparer;

    /// Calls `visit(propertyIndex, record)` for every attribute, element and for the simple content; the
    /// record is that of an element, else null.
    template <class Visit>
    static void ForEachProperty(const CXmlGeneratedClass& object, Visit visit) {
        if (CAttributeInfo** records = object.GetClassAttributeInfo()) {
            for (; *records != nullptr; ++records)
                visit((*records)->GetPropertyIndex(), static_cast<const CElementInfo*>(nullptr));
        }
        if (CElementInfo** records = object.GetClassElementInfo()) {
            for (; *records != nullptr; ++records)
                visit((*records)->GetPropertyIndex(), static_cast<const CElementInfo*>(*records));
        }
        const int content = object.GetClassInfo()->GetPrimitiveValuePropertyIndex();
        if (content != -1) visit(content, static_cast<const CElementInfo*>(nullptr));
    }

    /// Same kind and same value; NaN is the same as NaN.
    static bool IsSameValue(const KvVariant& a, const KvVariant& b);
    template <class T>
    static bool IsSameValue(const T& a, const T& b) {
        if constexpr (std::is_floating_point_v<T>) {
            return a == b || (a != a && b != b);
        } else {
            return a == b;
        }
    }

    /// Whether reading the property can give a value; `used` as GetUsedProperties returns it.
    static bool IsUsed(std::uint64_t used, int index) noexcept {
        return index < 0 || index >= 64 || (used >> index & 1) != 0;
    }

    /// Calls `visit` with both collections as what they are; false for a collection that is none of values.
    template <class Collection, class Visit>
    static bool VisitValues(const CXmlTypeCollection& a, Collection& b, Visit visit) {
        return VisitValuesOf<std::string, std::int32_t, double, CDecimal, CDateTime, bool, std::int64_t,
                             std::uint32_t, std::uint8_t, std::uint16_t, std::uint64_t, std::int8_t,
                             std::int16_t, float, CBigInteger, CDateTimeSpan, CBinaryData>(a, b, visit);
    }
    template <class... T, class Collection, class Visit>
    static bool VisitValuesOf(const CXmlTypeCollection& a, Collection& b, Visit visit) {
        const auto tryOne = [&](auto* tag) {
            using Values = CPrimitiveCollection<std::remove_pointer_t<decltype(tag)>>;
            using Other = std::conditional_t<std::is_const_v<Collection>, const Values, Values>;
            const auto* const values = dynamic_cast<const Values*>(&a);
            auto* const others = values == nullptr ? nullptr : dynamic_cast<Other*>(&b);
            if (others != nullptr) visit(*values, *others);
            return others != nullptr;
        };
        return (tryOne(static_cast<T*>(nullptr)) || ...);
    }
};

}  // namespace KvXmlLib16::internal
