/// The concrete element records, named by group, content and cardinality: CElementInfoSeqPrimMnd is a
/// mandatory primitive member of a sequence.
///
/// Group: Seq, Choice, All. Content: Prim (primitive value), Enum (enumeration value), Cls (object of a
/// generated class), AbsCls (object whose class depends on the element), Untpd (untyped content), none (a
/// collection of anything). Cardinality: Mnd (exactly one), Opt (zero or one), Col (a collection).
#pragma once

#include <string>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/objects/element_info.h"

namespace KvXmlLib16Data {

/// Group that a record's member belongs to.
enum class KVXML_EXPORT_ENUM RecordGroup { Seq, Choice, All };
/// How often a record's member occurs.
enum class KVXML_EXPORT_ENUM RecordCardinality { Mnd, Opt };

// --- members that occur at most once -----------------------------------------------------------------------

/// What all single-valued members share: writing by cardinality, reading by group and cardinality. The
/// content says how one element is written and read.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoSingle : public CElementInfo {
public:
    bool ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                      CXmlWriter* writer) override;
    bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                        CXmlElement** cursor, const char* ns, XmlElementType type) override;
    /// In an all-group: CKvValidationException "Failed to find the mandatory element [%s]." when `isElement`,
    /// else false, for a mandatory member that was not found and that the context does not let be missing.
    bool Validate(const CSerializationContext& context, const CXmlGeneratedClass* owner, bool found,
                  bool isElement) override;

protected:
    /// `claimsByName`: the member is an element of the record's name.
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool claimsByName);
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool nillable,
                       const char* (*enumToString)(int), int (*enumFromString)(const char*),
                       const char* defaultValue);
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool nillable, ItemType itemType,
                       const char* formatOverride, CWhitespaceUtils::WhitespaceRule rule,
                       const CPrimitiveRestrictions& restrictions, const char* defaultValue);

    bool LetsChoiceBeEmpty(const CXmlGeneratedClass* owner) const override;
    bool DropsNull(const CXmlGeneratedClass* owner) const override;
    /// Reads the member if what is at the cursor is the member's, and moves the cursor past it. Returns
    /// whether the member is there.
    virtual bool TryRead(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                         CXmlElement** cursor, XmlElementType type) const;
    /// Assigns an object that was made for the member.
    void Assign(CXmlGeneratedClass* owner, CXmlObjectBase* object, const CXmlElement& element) const;

private:
    void Describe(bool claimsByName);
};

/// Primitive member.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoPrim final : public CElementInfoSingle<group, cardinality> {
public:
    CElementInfoPrim(const char* name, const char* ns, int propertyIndex, bool nillable, ItemType itemType,
                     const char* formatOverride, CWhitespaceUtils::WhitespaceRule rule,
                     const CPrimitiveRestrictions& restrictions, const char* defaultValue);

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlElement** cursor) const override;
};

/// Enumeration member; the property travels as i4.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoEnum final : public CElementInfoSingle<group, cardinality> {
public:
    /// `enumFromString` throws CKvInvalidValueException for a text that is none of the enumeration.
    CElementInfoEnum(const char* name, const char* ns, int propertyIndex, bool nillable,
                     const char* (*enumToString)(int), int (*enumFromString)(const char*),
                     const char* defaultValue);

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlElement** cursor) const override;
};

/// Makes an object of a generated class, as its constructor leaves it: class identifier and element name.
/// Never null for a known class.
using ObjectFactory = KvXmlLib16::CSmartPtr<CXmlObjectBase> (*)(int classId, const char* elementName);

/// Member of a generated class. The object that the property holds is read into; when it holds none, one is
/// made by the factory and assigned once it has been read.
///
/// A member whose class has no tag of its own reads from and writes into the owner's element. It is there
/// when its mandatory parts are.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoCls final : public CElementInfoSingle<group, cardinality> {
public:
    /// `memberType`: element type of the member's class. `required`: a mandatory member of an all-group whose
    /// class has a tag may be missing if false.
    CElementInfoCls(const char* name, const char* ns, int propertyIndex, XmlElementType memberType,
                    ObjectFactory factory, int classId, bool required = true);

    bool Validate(const CSerializationContext& context, const CXmlGeneratedClass* owner, bool found,
                  bool isElement) override;
    void PseudoChildAttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer) override;

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlElement** cursor) const override;
    bool TryRead(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                 CXmlElement** cursor, XmlElementType type) const override;
    bool DropsNull(const CXmlGeneratedClass* owner) const override;
    KvXmlLib16::CSmartPtr<CXmlObjectBase> NewMemberLike(const CXmlObjectBase& object) const override;

private:
    /// The object to read into: what the property holds, or with `makeNew` or when it holds none, a new one.
    KvXmlLib16::CSmartPtr<CXmlObjectBase> MemberObject(CXmlGeneratedClass* owner, bool makeNew,
                                                       bool& isNew) const;

    XmlElementType m_memberType;
    ObjectFactory m_factory;
    int m_classId;
    bool m_required;
};

/// Makes the object for an element of an abstract or substitutable class, by the element's xsi:type or name.
/// Null when the element is neither the member's nor a substitute for it, and when its type is unknown,
/// abstract or not derived from the member's class.
using SubstitutionFactory = KvXmlLib16::CSmartPtr<CXmlObjectBase> (*)(CXmlElement* element);

/// Member whose class depends on the element that is read: an element of the record's name, or one that
/// substitutes it. CKvValidationException "Failed to find a suitable substitution element for [%s]." when the
/// factory has nothing for an element of the record's name.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoAbsCls final : public CElementInfoSingle<group, cardinality> {
public:
    /// `memberType`: element type of the member's classes. The last argument is not used.
    CElementInfoAbsCls(const char* name, const char* ns, int propertyIndex, XmlElementType memberType,
                       SubstitutionFactory factory, int reserved = 0);

    void PseudoChildAttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer) override;

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    bool TryRead(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                 CXmlElement** cursor, XmlElementType type) const override;
    KvXmlLib16::CSmartPtr<CXmlObjectBase> NewMemberLike(const CXmlObjectBase& object) const override;

private:
    XmlElementType m_memberType;
    SubstitutionFactory m_factory;
};

/// Member that takes an element as it is, a CElement.
///
/// With a name, elements of that name: in the record's namespace, or with a restriction, in one that it
/// allows. Without a name, any element in a namespace that the restriction allows and that no other member of
/// the class claims.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoUntpd final : public CElementInfoSingle<group, cardinality> {
public:
    /// `restriction`: a wildcard's namespace list. "##other" and "##targetNamespace" are judged against
    /// `defaultNamespace`.
    CElementInfoUntpd(const char* name, const char* ns, int propertyIndex, const char* restriction,
                      const char* defaultNamespace);

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    bool TryRead(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                 CXmlElement** cursor, XmlElementType type) const override;
    KvXmlLib16::CSmartPtr<CXmlObjectBase> NewMemberLike(const CXmlObjectBase& object) const override;
    const std::string* GetWantedNamespaces() const noexcept override;

private:
    std::string m_restriction;
    std::string m_defaultNamespace;
};

// --- collections -------------------------------------------------------------------------------------------

/// Collection member, whatever it collects. Its count is checked on reading and, but for choices, on writing,
/// unless the context ignores invalid counts. In a choice or all-group it is there when an item is.
template <RecordGroup group>
class KVXML_EXPORT CElementInfoCol : public CElementInfo {
public:
    CElementInfoCol(const char* name, const char* ns, int propertyIndex);

    bool ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                      CXmlWriter* writer) override;
    bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                        CXmlElement** cursor, const char* ns, XmlElementType type) override;
    /// In an all-group: checks the count of a collection of which nothing was found.
    bool Validate(const CSerializationContext& context, const CXmlGeneratedClass* owner, bool found,
                  bool isElement) override;

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    bool LetsChoiceBeEmpty(const CXmlGeneratedClass* owner) const override;
    bool DropsNull(const CXmlGeneratedClass* owner) const override;
    /// Reads the items at the cursor and returns what is after them.
    virtual CXmlElement* ReadItems(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                   CXmlElement* parent, CXmlElement* cursor,
                                   CXmlCollectionBase& collection) const;

    /// The items are elements of the record's name.
    bool m_itemsHaveTags = false;

private:
    void LearnBounds(const CXmlCollectionBase& collection) const;
    /// The first element from which the run from `first` to before `after` is not too long.
    static CXmlElement* FirstThatFits(const CXmlCollectionBase& collection, CXmlElement* first,
                                      const CXmlElement* after) noexcept;
};

/// Collection of primitive values.
template <RecordGroup group>
class KVXML_EXPORT CElementInfoPrimCol final : public CElementInfoCol<group> {
public:
    CElementInfoPrimCol(const char* name, const char* ns, int propertyIndex);
};

/// Collection of enumeration values.
template <RecordGroup group>
class KVXML_EXPORT CElementInfoEnumCol final : public CElementInfoCol<group> {
public:
    CElementInfoEnumCol(const char* name, const char* ns, int propertyIndex);
};

/// Collection of objects of generated classes: of one class, or (`isAbstract`) of classes that depend on the
/// element.
template <RecordGroup group, bool isAbstract>
class KVXML_EXPORT CElementInfoObjectCol final : public CElementInfoCol<group> {
public:
    /// `memberType`: element type of the items' class.
    CElementInfoObjectCol(const char* name, const char* ns, int propertyIndex, XmlElementType memberType);

    XmlElementType GetMemberType() const noexcept { return m_memberType; }
    void PseudoChildAttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer) override;

protected:
    CXmlElement* ReadItems(const CSerializationContext& context, CXmlGeneratedClass* owner,
                           CXmlElement* parent, CXmlElement* cursor,
                           CXmlCollectionBase& collection) const override;

private:
    XmlElementType m_memberType;
};

/// Collection of untyped elements, a CElementCol, which says what it accepts. A collection without an element
/// name leaves elements that other members of the class claim.
template <RecordGroup group>
class KVXML_EXPORT CElementInfoUntpdCol final : public CElementInfoCol<group> {
public:
    CElementInfoUntpdCol(const char* name, const char* ns, int propertyIndex);

protected:
    CXmlElement* ReadItems(const CSerializationContext& context, CXmlGeneratedClass* owner,
                           CXmlElement* parent, CXmlElement* cursor,
                           CXmlCollectionBase& collection) const override;
};

/// An all-group has no collections of enumeration values: this record can be named but not made.
class KVXML_EXPORT CElementInfoAllEnumCol : public CElementInfo {
protected:
    CElementInfoAllEnumCol(const char* name, const char* ns, int propertyIndex);
};

// --- names -------------------------------------------------------------------------------------------------

#define KVXML_SINGLE_RECORDS(X) X(Seq, Mnd) X(Seq, Opt) X(All, Mnd) X(All, Opt) X(Choice, Opt)
#define KVXML_COLLECTION_RECORDS(X) X(Seq) X(All) X(Choice)

#define KVXML_NAME_SINGLE(group, cardinality)                                                     \
    using CElementInfo##group##Prim##cardinality =                                                \
        CElementInfoPrim<RecordGroup::group, RecordCardinality::cardinality>;                     \
    using CElementInfo##group##Enum##cardinality =                                                \
        CElementInfoEnum<RecordGroup::group, RecordCardinality::cardinality>;                     \
    using CElementInfo##group##Cls##cardinality =                                                 \
        CElementInfoCls<RecordGroup::group, RecordCardinality::cardinality>;                      \
    using CElementInfo##group##AbsCls##cardinality =                                              \
        CElementInfoAbsCls<RecordGroup::group, RecordCardinality::cardinality>;                   \
    using CElementInfo##group##Untpd##cardinality =                                               \
        CElementInfoUntpd<RecordGroup::group, RecordCardinality::cardinality>;                    \
    extern template class CElementInfoSingle<RecordGroup::group, RecordCardinality::cardinality>; \
    extern template class CElementInfoPrim<RecordGroup::group, RecordCardinality::cardinality>;   \
    extern template class CElementInfoEnum<RecordGroup::group, RecordCardinality::cardinality>;   \
    extern template class CElementInfoCls<RecordGroup::group, RecordCardinality::cardinality>;    \
    extern template class CElementInfoAbsCls<RecordGroup::group, RecordCardinality::cardinality>; \
    extern template class CElementInfoUntpd<RecordGroup::group, RecordCardinality::cardinality>;
KVXML_SINGLE_RECORDS(KVXML_NAME_SINGLE)
#undef KVXML_NAME_SINGLE

#define KVXML_NAME_COLLECTION(group)                                                        \
    using CElementInfo##group##Col = CElementInfoCol<RecordGroup::group>;                   \
    using CElementInfo##group##PrimCol = CElementInfoPrimCol<RecordGroup::group>;           \
    using CElementInfo##group##ClsCol = CElementInfoObjectCol<RecordGroup::group, false>;   \
    using CElementInfo##group##AbsClsCol = CElementInfoObjectCol<RecordGroup::group, true>; \
    using CElementInfo##group##UntpdCol = CElementInfoUntpdCol<RecordGroup::group>;         \
    extern template class CElementInfoCol<RecordGroup::group>;                              \
    extern template class CElementInfoPrimCol<RecordGroup::group>;                          \
    extern template class CElementInfoObjectCol<RecordGroup::group, false>;                 \
    extern template class CElementInfoObjectCol<RecordGroup::group, true>;                  \
    extern template class CElementInfoUntpdCol<RecordGroup::group>;
KVXML_COLLECTION_RECORDS(KVXML_NAME_COLLECTION)
#undef KVXML_NAME_COLLECTION

using CElementInfoSeqEnumCol = CElementInfoEnumCol<RecordGroup::Seq>;
using CElementInfoChoiceEnumCol = CElementInfoEnumCol<RecordGroup::Choice>;
extern template class CElementInfoEnumCol<RecordGroup::Seq>;
extern template class CElementInfoEnumCol<RecordGroup::Choice>;

}  // namespace KvXmlLib16Data
