#include <algorithm>
#include <memory>
#include <string_view>
#include <tuple>
#include <typeinfo>
#include <unordered_set>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/object_graph.h"
#include "kvxml/objects/internal/table_objects.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/types/internal/item_traits.h"

namespace KvXmlLib16 {

namespace internal {

bool CObjectGraph::IsSameValue(const KvVariant& a, const KvVariant& b) {
    if (a.IsValid() != b.IsValid() || a.IsNil() != b.IsNil()) return false;
    if (!a.IsValid() || a.IsNil()) return true;
    if (a.GetTypeAsEnum() != b.GetTypeAsEnum()) return false;
    if (a.GetTypeAsEnum() == ItemType_string) return a.StringValue() == b.StringValue();
    bool isSame = false;
    VisitItemType(a.GetTypeAsEnum(), [&](auto traits) {
        using Type = typename decltype(traits)::Type;
        isSame = IsSameValue(a.As<Type>(), b.As<Type>());
    });
    return isSame;
}

/// Compares pairs of objects until one differs.
class CObjectGraph::CComparer {
public:
    bool Run(const CXmlObjectBase& first, const CXmlObjectBase& second) {
        Push(first, second);
        while (!m_pairs.empty()) {
            Pair& top = m_pairs.back();
            if (top.isOpen) {
                m_open.erase(top.a);
                m_pairs.pop_back();
                continue;
            }
            if (top.a == top.b) {
                m_pairs.pop_back();
                continue;
            }
            top.isOpen = true;
            if (!m_open.insert(top.a).second)
                throw CKvInvalidStateException("An object that contains itself can not be compared.");
            const CXmlObjectBase& a = *top.a;
            const CXmlObjectBase& b = *top.b;
            if (typeid(a) != typeid(b) || !Compare(a, b)) return false;  // may add pairs
        }
        return true;
    }

private:
    struct Pair {
        const CXmlObjectBase* a;
        const CXmlObjectBase* b;
        bool isOpen = false;
        std::unique_ptr<std::pair<KvVariant, KvVariant>> holder = nullptr;  // what they were read into
    };

    Pair& Push(const CXmlObjectBase& a, const CXmlObjectBase& b) {
        m_pairs.push_back({&a, &b});
        return m_pairs.back();
    }

    bool Compare(const CXmlObjectBase& a, const CXmlObjectBase& b) {
        if (const auto* object = dynamic_cast<const CXmlGeneratedClass*>(&a))
            return CompareObjects(*object, static_cast<const CXmlGeneratedClass&>(b));
        if (const auto* attributes = dynamic_cast<const CAttributeCol*>(&a))
            return CompareAttributes(*attributes, static_cast<const CAttributeCol&>(b));
        if (const auto* list = dynamic_cast<const CXmlCollection*>(&a))
            return CompareLists(*list, static_cast<const CXmlCollection&>(b));
        if (const auto* values = dynamic_cast<const CXmlTypeCollection*>(&a))
            return CompareValues(*values, static_cast<const CXmlTypeCollection&>(b));
        if (const auto* element = dynamic_cast<const CElement*>(&a))
            return CompareElements(*element, static_cast<const CElement&>(b));
        if (const auto* attribute = dynamic_cast<const CAttribute*>(&a))
            return KeyOf(*attribute) == KeyOf(static_cast<const CAttribute&>(b));
        return false;  // of classes that nothing is known about, each object equals itself
    }

    // --- generated classes --------------------------------------------------------------------------------

    static bool IsUnset(const KvVariant& value) {
        if (value.GetTypeAsEnum() == ItemType_XmlObject) return value.PeekXmlObject() == nullptr;
        if (value.GetTypeAsEnum() == ItemType_XmlCollection)
            return value.PeekXmlCollection() == nullptr || value.PeekXmlCollection()->empty();
        return !value.IsValid();
    }

    bool CompareObjects(const CXmlGeneratedClass& a, const CXmlGeneratedClass& b) {
        if (a.IsNillableClass(*a.GetClassInfo()) &&
            dynamic_cast<const INillable&>(a).IsNil() != dynamic_cast<const INillable&>(b).IsNil())
            return false;
        const auto* const table = dynamic_cast<const CTableClass*>(&a);
        if (table != nullptr && !HaveSameLists(*table, static_cast<const CTableClass&>(b))) return false;
        const std::uint64_t usedA = a.GetUsedProperties();
        const std::uint64_t usedB = b.GetUsedProperties();
        bool isEqual = true;
        ForEachProperty(a, [&](int index, const CElementInfo*) {
            if (!isEqual || (!IsUsed(usedA, index) && !IsUsed(usedB, index))) return;
            KvVariant valueA;
            KvVariant valueB;
            a.ReadProperty(index, valueA);
            b.ReadProperty(index, valueB);
            isEqual = CompareMembers(valueA, valueB);
        });
        return isEqual;
    }

    bool CompareMembers(KvVariant& a, KvVariant& b) {
        if (IsUnset(a) || IsUnset(b)) return IsUnset(a) && IsUnset(b);
        const CXmlObjectBase* objectA = a.PeekXmlObject();
        const CXmlObjectBase* objectB = b.PeekXmlObject();
        if (objectA != nullptr && objectB != nullptr) {
            if (!HaveSameName(*objectA, *objectB)) return false;
        } else {
            objectA = a.PeekXmlCollection();
            objectB = b.PeekXmlCollection();
        }
        if (objectA == nullptr || objectB == nullptr) return IsSameValue(a, b);
        Push(*objectA, *objectB).holder =
            std::make_unique<std::pair<KvVariant, KvVariant>>(std::move(a), std::move(b));
        return true;
    }

    /// Objects of generated classes: they are written under the same name.
    static bool HaveSameName(const CXmlObjectBase& a, const CXmlObjectBase& b) {
        if (a.GetElementNameView() == b.GetElementNameView()) return true;
        const auto* objectA = dynamic_cast<const CXmlGeneratedClass*>(&a);
        const auto* objectB = dynamic_cast<const CXmlGeneratedClass*>(&b);
        return objectA != nullptr && objectB != nullptr &&
               objectA->EffectiveElementName() == objectB->EffectiveElementName();
    }

    // --- collections and untyped content ------------------------------------------------------------------

    bool CompareLists(const CXmlCollection& a, const CXmlCollection& b) {
        if (a.size() != b.size()) return false;
        const CCollectionNode* other = b.m_head;
        for (const CCollectionNode* node = a.m_head; node != nullptr;
             node = node->next, other = other->next) {
            if (!HaveSameName(*node->item, *other->item)) return false;
            Push(*node->item, *other->item);
        }
        return true;
    }

    static bool CompareValues(const CXmlTypeCollection& a, const CXmlTypeCollection& b) {
        bool isEqual = false;
        VisitValues(a, b, [&isEqual](const auto& x, const auto& y) {
            isEqual = std::equal(x.begin(), x.end(), y.begin(), y.end(),
                                 [](const auto& u, const auto& v) { return IsSameValue(u, v); });
        });
        return isEqual;
    }

    using AttributeKey =
        std::tuple<std::string_view, std::string_view, std::string_view, bool, std::string_view>;
    static AttributeKey KeyOf(const CAttribute& attribute) {
        return {attribute.m_namespace.View(), attribute.GetNameView(), attribute.m_value,
                attribute.m_isTypeValue,
                attribute.m_isTypeValue ? attribute.m_valueNamespace.View() : std::string_view()};
    }

    static bool CompareAttributes(const CAttributeCol& a, const CAttributeCol& b) {
        if (a.size() != b.size()) return false;
        const auto sorted = [](const CAttributeCol& attributes) {
            std::vector<AttributeKey> keys;
            keys.reserve(attributes.size());
            for (const CAttribute* attribute : attributes)
                keys.push_back(KeyOf(*attribute));
            std::sort(keys.begin(), keys.end());
            return keys;
        };
        return sorted(a) == sorted(b);
    }

    bool CompareElements(const CElement& a, const CElement& b) {
        if (a.GetNameView() != b.GetNameView() || a.m_hasNamespace != b.m_hasNamespace ||
            a.GetNamespaceView() != b.GetNamespaceView() || a.m_value != b.m_value)
            return false;
        return CompareParts(a.m_attributes.Get(), b.m_attributes.Get()) &&
               CompareParts(a.m_elements.Get(), b.m_elements.Get());
    }

    bool CompareParts(const CXmlCollection* a, const CXmlCollection* b) {
        const bool hasA = a != nullptr && !a->empty();
        const bool hasB = b != nullptr && !b->empty();
        if (hasA && hasB) Push(*a, *b);
        return hasA == hasB;
    }

    std::vector<Pair> m_pairs;
    std::unordered_set<const CXmlObjectBase*> m_open;
};

bool CObjectGraph::AreEqual(const CXmlObjectBase& a, const CXmlObjectBase& b) {
    return CComparer().Run(a, b);
}

}  // namespace internal

bool CXmlObjectBase::Equals(const CXmlObjectBase& other) const {
    return internal::CObjectGraph::AreEqual(*this, other);
}

}  // namespace KvXmlLib16
