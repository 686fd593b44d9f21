/// Tables that describe a class made from a schema: constant data, no code. `kvxml generate` writes them.
///
/// PUBLIC ONLY FOR GENERATED CODE. What stands here may change with any release, together with the generator.
///
///     struct CItemType::Members {
///         using C = CItemType;
///         static constexpr CMember kAll[] = {
///             CMember::Attribute("sku", "", At(&C::m_sku), kTextType).Bit(0).Required(),
///             CMember::Element("price", kNs, At(&C::m_price), kPriceType).Bit(1).Required(),
///             CMember::Elements("tag", kNs, At(&C::m_tag), kTextType, 0, 5),
///         };
///     };
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16 {

class CAttributeCol;
class CBigInteger;
class CBinaryData;
class CDateTime;
class CDateTimeSpan;
class CDecimal;
class CElement;
class CTableClass;
class CXmlCollectionBase;
class CXmlObjectBase;
struct CClassTable;

namespace internal {
struct CTableRecords;
}

/// The texts of an enumeration; the value at position i of the C++ enumeration has the number i.
struct CEnumTable {
    const char* name;  ///< of the simple type, for messages
    const char* const* texts;
    std::int32_t count;
};
/// The text of a value; empty when it is none of the enumeration.
KVXML_EXPORT const char* TextAt(const CEnumTable& table, std::int32_t value) noexcept;
/// The value that has the text, compared byte by byte; -1 when none has.
KVXML_EXPORT std::int32_t FindText(const CEnumTable& table, std::string_view text) noexcept;

/// Facets of a simple type, those of all its steps of derivation together. Texts are UTF-8.
struct CFacetTable {
    /// One entry per step; each must match, and has its alternatives joined by "|". Null: none.
    const char* const* patterns = nullptr;
    std::int32_t patternCount = 0;
    std::int32_t length = -1;  ///< -1: not set; so below
    std::int32_t minLength = -1;
    std::int32_t maxLength = -1;
    std::int32_t totalDigits = -1;
    std::int32_t fractionDigits = -1;
    const char* minInclusive = nullptr;  ///< null: not set; so below
    const char* maxInclusive = nullptr;
    const char* minExclusive = nullptr;
    const char* maxExclusive = nullptr;
    const char* enumeration = nullptr;  ///< values with line feeds between them
};

/// How text becomes a value, and what the value must fulfil.
struct CValueType {
    enum class Whitespace : std::uint8_t { Preserve, Replace, Collapse };

    ItemType item = ItemType_string;  ///< of the value; of lists, that of an item
    Whitespace whitespace = Whitespace::Collapse;
    const CFacetTable* facets = nullptr;      ///< null: none; of lists, those of the list (lengths in items)
    const CEnumTable* enumeration = nullptr;  ///< the member is an std::int32_t; null: it is a value
    const CValueType* list = nullptr;         ///< type of the items of a list, whose place is a collection
    /// A union, which is held as text: the text must be valid for one of these.
    const CValueType* const* members = nullptr;
    std::int32_t memberCount = 0;
};

/// Where in an object a member lives: a pointer to a data member, seen from the common base of all classes.
class CMemberPlace {
public:
    enum class Kind : std::uint8_t {
        None,
        Bool,
        Int8,
        Int16,
        Int32,
        Int64,
        UInt8,
        UInt16,
        UInt32,
        UInt64,
        Float,
        Double,
        String,
        Decimal,
        Integer,
        DateTime,
        Duration,
        Binary,
        Object,
        Collection,
        Attributes,
        Untyped,
    };

#define KVXML_PLACES(X)                          \
    X(Bool, bool)                                \
    X(Int8, std::int8_t)                         \
    X(Int16, std::int16_t)                       \
    X(Int32, std::int32_t)                       \
    X(Int64, std::int64_t)                       \
    X(UInt8, std::uint8_t)                       \
    X(UInt16, std::uint16_t)                     \
    X(UInt32, std::uint32_t)                     \
    X(UInt64, std::uint64_t)                     \
    X(Float, float)                              \
    X(Double, double)                            \
    X(String, std::string)                       \
    X(Decimal, CDecimal)                         \
    X(Integer, CBigInteger)                      \
    X(DateTime, CDateTime)                       \
    X(Duration, CDateTimeSpan)                   \
    X(Binary, CBinaryData)                       \
    X(Object, CSmartPtr<CXmlObjectBase>)         \
    X(Collection, CSmartPtr<CXmlCollectionBase>) \
    X(Attributes, CSmartPtr<CAttributeCol>)      \
    X(Untyped, CSmartPtr<CElement>)

    constexpr CMemberPlace() noexcept : m_kind(Kind::None), m_Bool(nullptr) {}
#define KVXML_PLACE(kind, type)                                                                        \
    constexpr CMemberPlace(type CTableClass::*place) noexcept : m_kind(Kind::kind), m_##kind(place) {} \
    type& kind(CTableClass& object) const noexcept {                                                   \
        return object.*m_##kind;                                                                       \
    }                                                                                                  \
    const type& kind(const CTableClass& object) const noexcept {                                       \
        return object.*m_##kind;                                                                       \
    }
    KVXML_PLACES(KVXML_PLACE)
#undef KVXML_PLACE

    constexpr Kind GetKind() const noexcept {
        return m_kind;
    }

private:
    Kind m_kind;
    union {
#define KVXML_PLACE(kind, type) type CTableClass::*m_##kind;
        KVXML_PLACES(KVXML_PLACE)
#undef KVXML_PLACE
    };
};

/// The place of a data member of a class that derives from CTableClass.
template <class T, class Class>
constexpr CMemberPlace At(T Class::*place) noexcept {
    return CMemberPlace(static_cast<T CTableClass::*>(place));
}

/// An element that may stand in for the head of its substitution group, and the class of its type (null: it
/// has a simple type, that of the head or derived from it).
struct CSubstitute {
    const char* name;
    const char* namespaceUri;
    const CClassTable* classTable;
};

/// One member: attribute, child element or elements, text, wildcard. Made by the named functions and
/// completed by the chained ones.
class CMember {
private:
    template <class T>
    constexpr CMember With(T CMember::*field, T value) const noexcept {
        CMember copy = *this;
        copy.*field = value;
        return copy;
    }
    constexpr CMember Typed(const CValueType& type) const noexcept {
        return With(&CMember::valueType, &type);
    }
    constexpr CMember Of(const CClassTable& table) const noexcept {
        return With(&CMember::classTable, &table);
    }
    constexpr CMember In(const char* list, const char* targetNs) const noexcept {
        return With(&CMember::namespaces, list).With(&CMember::targetNamespace, targetNs);
    }
    constexpr CMember Times(std::uint32_t min, std::uint32_t max) const noexcept {
        return With(&CMember::minOccurs, min).With(&CMember::maxOccurs, max);
    }

public:
    enum class Kind : std::uint8_t {
        Attribute,      ///< one simple value
        AnyAttributes,  ///< attribute wildcard
        Text,           ///< simple content; of mixed content all text together
        Value,          ///< element of simple type, at most one
        Values,         ///< elements of simple type
        Object,         ///< element of complex type, at most one
        Objects,        ///< elements of complex type
        Groups,         ///< a repeated model group: objects without a tag, each one occurrence of it
        Any,            ///< element wildcard, or element of anyType (with a name), at most one
        Anys,           ///< the same, repeated
    };
    static constexpr std::uint16_t kNoBit = 0xFFFF;
    static constexpr std::uint32_t kUnbounded = 0xFFFFFFFF;

    Kind kind;
    bool isRequired = false;  ///< single ones: must be there (where its group is); attributes: `required`
    bool isNillable = false;
    bool isFixed = false;        ///< `defaultText` is the only value
    bool isAbstract = false;     ///< the head of the substitution group is abstract: only substitutes occur
    std::uint16_t bit = kNoBit;  ///< says whether a simple value is set; kNoBit: the place says it
    std::uint16_t nilBit = kNoBit;  ///< says whether a simple value is nil
    std::uint16_t substituteCount = 0;
    const char* name;          ///< empty: wildcards, text, groups
    const char* namespaceUri;  ///< empty: none
    CMemberPlace place;
    const CValueType* valueType = nullptr;    ///< of simple values
    const CClassTable* classTable = nullptr;  ///< of objects and groups
    const CSubstitute* substitutes = nullptr;
    const char* defaultText = nullptr;  ///< default or fixed value; null: none
    /// Wildcards: the namespace list as the schema has it; members of anyType: null.
    const char* namespaces = nullptr;
    const char* targetNamespace = nullptr;  ///< what ##other and ##targetNamespace mean
    std::uint32_t minOccurs = 0;            ///< of repeated members
    std::uint32_t maxOccurs = kUnbounded;

    constexpr CMember(Kind memberKind, const char* memberName, const char* ns, CMemberPlace at) noexcept
        : kind(memberKind), name(memberName), namespaceUri(ns), place(at) {}

    static constexpr CMember Attribute(const char* name, const char* ns, CMemberPlace at,
                                       const CValueType& type) noexcept {
        return CMember(Kind::Attribute, name, ns, at).Typed(type);
    }
    static constexpr CMember AnyAttributes(CMemberPlace at, const char* namespaces,
                                           const char* targetNs) noexcept {
        return CMember(Kind::AnyAttributes, "", "", at).In(namespaces, targetNs);
    }
    static constexpr CMember Text(CMemberPlace at, const CValueType& type) noexcept {
        return CMember(Kind::Text, "", "", at).Typed(type);
    }
    static constexpr CMember Value(const char* name, const char* ns, CMemberPlace at,
                                   const CValueType& type) noexcept {
        return CMember(Kind::Value, name, ns, at).Typed(type);
    }
    static constexpr CMember Values(const char* name, const char* ns, CMemberPlace at, const CValueType& type,
                                    std::uint32_t min, std::uint32_t max) noexcept {
        return CMember(Kind::Values, name, ns, at).Typed(type).Times(min, max);
    }
    static constexpr CMember Object(const char* name, const char* ns, CMemberPlace at,
                                    const CClassTable& table) noexcept {
        return CMember(Kind::Object, name, ns, at).Of(table);
    }
    static constexpr CMember Objects(const char* name, const char* ns, CMemberPlace at,
                                     const CClassTable& table, std::uint32_t min,
                                     std::uint32_t max) noexcept {
        return CMember(Kind::Objects, name, ns, at).Of(table).Times(min, max);
    }
    static constexpr CMember Groups(CMemberPlace at, const CClassTable& table, std::uint32_t min,
                                    std::uint32_t max) noexcept {
        return CMember(Kind::Groups, "", "", at).Of(table).Times(min, max);
    }
    static constexpr CMember Any(const char* name, const char* ns, CMemberPlace at, const char* namespaces,
                                 const char* targetNs) noexcept {
        return CMember(Kind::Any, name, ns, at).In(namespaces, targetNs);
    }
    static constexpr CMember Anys(const char* name, const char* ns, CMemberPlace at, const char* namespaces,
                                  const char* targetNs, std::uint32_t min, std::uint32_t max) noexcept {
        return CMember(Kind::Anys, name, ns, at).In(namespaces, targetNs).Times(min, max);
    }

    constexpr CMember Required() const noexcept { return With(&CMember::isRequired, true); }
    constexpr CMember Nillable() const noexcept { return With(&CMember::isNillable, true); }
    constexpr CMember Abstract() const noexcept { return With(&CMember::isAbstract, true); }
    constexpr CMember Bit(std::uint16_t number) const noexcept { return With(&CMember::bit, number); }
    constexpr CMember NilBit(std::uint16_t number) const noexcept { return With(&CMember::nilBit, number); }
    constexpr CMember Default(const char* text) const noexcept { return With(&CMember::defaultText, text); }
    constexpr CMember Fixed(const char* text) const noexcept {
        return With(&CMember::defaultText, text).With(&CMember::isFixed, true);
    }
    template <std::uint16_t count>
    constexpr CMember Or(const CSubstitute (&list)[count]) const noexcept {
        return With(&CMember::substitutes, static_cast<const CSubstitute*>(list))
            .With(&CMember::substituteCount, count);
    }
};

/// A node of a content model in preorder. Groups here occur at most once; a group that may occur more often
/// is a member of the kind Groups.
struct CContentNode {
    enum class Kind : std::uint8_t { Sequence, Choice, All, Member };

    Kind kind;
    bool isOptional;       ///< groups: may be missing as a whole; members: not used
    std::uint16_t size;    ///< nodes of the subtree, this one included
    std::uint16_t member;  ///< index into the class's own members

    static constexpr CContentNode Sequence(std::uint16_t size, bool isOptional = false) noexcept {
        return {Kind::Sequence, isOptional, size, 0};
    }
    static constexpr CContentNode Choice(std::uint16_t size, bool isOptional = false) noexcept {
        return {Kind::Choice, isOptional, size, 0};
    }
    static constexpr CContentNode All(std::uint16_t size, bool isOptional = false) noexcept {
        return {Kind::All, isOptional, size, 0};
    }
    static constexpr CContentNode Member(std::uint16_t index) noexcept {
        return {Kind::Member, false, 1, index};
    }
};

/// The class of a complex type, of a global element, or of a repeated group.
struct CClassTable {
    enum Flags : std::uint8_t {
        kNone = 0,
        kGroup = 1,        ///< objects have no tag of their own: one occurrence of a model group
        kRoot = 2,         ///< of a global element whose type has a class, `base`; adds nothing but the name
        kRestriction = 4,  ///< `members` and `content` are all there is; else they come after those of `base`
        kMixed = 8,        ///< text may stand between the elements
        kAnonymous = 16,   ///< the type has no name: no xsi:type names it
        kNillable = 32,    ///< roots: the element may be nil
    };

    const char* name;          ///< of the type; of the element for anonymous types and roots
    const char* namespaceUri;  ///< of the same
    /// A new object, which nobody refers to yet; null for an abstract type.
    CTableClass* (*create)();
    const CClassTable* base;  ///< of the C++ base class; null: CTableClass itself
    const CMember* members;
    const CContentNode* content;  ///< null: a sequence of all own members that are elements, in order
    /// Classes derived from this one, in any number of steps, that xsi:type may name.
    const CClassTable* const* derived;
    std::uint16_t memberCount;
    std::uint16_t contentCount;
    std::uint16_t derivedCount;
    std::uint8_t flags;
    /// What the runtime makes of the table, when it is first used.
    mutable std::atomic<const internal::CTableRecords*> records{nullptr};
};

/// An object for documents whose root has the name: of the first of the tables that is called so; null when
/// none is.
KVXML_EXPORT CSmartPtr<CTableClass> NewRootOf(const CClassTable* const* tables, std::size_t count,
                                              std::string_view namespaceUri, std::string_view localName);

/// For `CClassTable::create`.
template <class T>
CTableClass* NewTableClass() {
    return new T;
}

}  // namespace KvXmlLib16
