/// The concrete element records, named by group, content and cardinality: CElementInfoSeqPrimMnd is a
/// mandatory primitive member of a sequence.
///
/// Content: Prim (primitive value), Enum (enumeration value), Cls (object of a generated class), none
/// (a collection). Cardinality: Mnd (exactly one), Opt (zero or one), Col (a collection).
#pragma once

#include "kvxml/export.h"
#include "kvxml/metadata/element_info.h"
#include "kvxml/runtime/smart_ptr.h"

namespace KvXmlLib16Data {

/// Group that a record's member belongs to.
enum class RecordGroup { Seq };
/// How often a record's member occurs.
enum class RecordCardinality { Mnd, Opt };

/// What all single-valued members share: writing by cardinality, reading by group and cardinality. The
/// content says how one element is written and read.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoSingle : public CElementInfo {
public:
    bool ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                      CXmlWriter* writer) override;
    bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                        CXmlElement** cursor, const char* ns, XmlElementType type) override;

protected:
    /// `memberHasTag`: the member is an element of the record's name.
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool memberHasTag);
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool nillable,
                       const char* (*enumToString)(int), int (*enumFromString)(const char*),
                       const char* defaultValue);
    CElementInfoSingle(const char* name, const char* ns, int propertyIndex, bool nillable, ItemType itemType,
                       const char* formatOverride, CWhitespaceUtils::WhitespaceRule rule,
                       const CPrimitiveRestrictions& restrictions, const char* defaultValue);

private:
    void Describe(bool memberHasTag);
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

/// Makes an object of a generated class: class identifier and element name. Never null for a known class.
using ObjectFactory = KvXmlLib16::CSmartPtr<CXmlObjectBase> (*)(int classId, const char* elementName);

/// Member of a generated class. The object that the property holds is read into; when it holds none, one is
/// made by the factory and assigned once it has been read.
template <RecordGroup group, RecordCardinality cardinality>
class KVXML_EXPORT CElementInfoCls final : public CElementInfoSingle<group, cardinality> {
public:
    /// `memberType`: element type of the member's class. `required` is kept for all-groups.
    CElementInfoCls(const char* name, const char* ns, int propertyIndex, XmlElementType memberType,
                    ObjectFactory factory, int classId, bool required = true);

    bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                        CXmlElement** cursor, const char* ns, XmlElementType type) override;
    void PseudoChildAttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer) override;

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;
    void ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                     CXmlElement** cursor) const override;

private:
    KvXmlLib16::CSmartPtr<CXmlObjectBase> MemberObject(CXmlGeneratedClass* owner, bool& isNew) const;

    XmlElementType m_memberType;
    ObjectFactory m_factory;
    int m_classId;
    bool m_required;
};

/// Collection member of a sequence, whatever it collects. Its count is checked on reading and writing unless
/// the context ignores invalid counts.
class KVXML_EXPORT CElementInfoSeqCol : public CElementInfo {
public:
    CElementInfoSeqCol(const char* name, const char* ns, int propertyIndex);

    bool ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                      CXmlWriter* writer) override;
    bool ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner, CXmlElement* parent,
                        CXmlElement** cursor, const char* ns, XmlElementType type) override;

protected:
    bool WriteValue(const CSerializationContext& context, const KvVariant& value,
                    CXmlWriter* writer) const override;

    /// The items are elements of the record's name.
    bool m_itemsHaveTags = true;

private:
    void LearnBounds(const CXmlCollectionBase& collection) const;
};

/// Collection of primitive values.
class KVXML_EXPORT CElementInfoSeqPrimCol final : public CElementInfoSeqCol {
public:
    using CElementInfoSeqCol::CElementInfoSeqCol;
};

/// Collection of enumeration values.
class KVXML_EXPORT CElementInfoSeqEnumCol final : public CElementInfoSeqCol {
public:
    using CElementInfoSeqCol::CElementInfoSeqCol;
};

/// Collection of objects of a generated class.
class KVXML_EXPORT CElementInfoSeqClsCol final : public CElementInfoSeqCol {
public:
    /// `memberType`: element type of the items' class.
    CElementInfoSeqClsCol(const char* name, const char* ns, int propertyIndex, XmlElementType memberType);

    XmlElementType GetMemberType() const noexcept { return m_memberType; }

private:
    XmlElementType m_memberType;
};

using CElementInfoSeqPrimMnd = CElementInfoPrim<RecordGroup::Seq, RecordCardinality::Mnd>;
using CElementInfoSeqPrimOpt = CElementInfoPrim<RecordGroup::Seq, RecordCardinality::Opt>;
using CElementInfoSeqEnumMnd = CElementInfoEnum<RecordGroup::Seq, RecordCardinality::Mnd>;
using CElementInfoSeqEnumOpt = CElementInfoEnum<RecordGroup::Seq, RecordCardinality::Opt>;
using CElementInfoSeqClsMnd = CElementInfoCls<RecordGroup::Seq, RecordCardinality::Mnd>;
using CElementInfoSeqClsOpt = CElementInfoCls<RecordGroup::Seq, RecordCardinality::Opt>;

#define KVXML_EXTERN_RECORDS(cardinality)                                                       \
    extern template class CElementInfoSingle<RecordGroup::Seq, RecordCardinality::cardinality>; \
    extern template class CElementInfoPrim<RecordGroup::Seq, RecordCardinality::cardinality>;   \
    extern template class CElementInfoEnum<RecordGroup::Seq, RecordCardinality::cardinality>;   \
    extern template class CElementInfoCls<RecordGroup::Seq, RecordCardinality::cardinality>
KVXML_EXTERN_RECORDS(Mnd);
KVXML_EXTERN_RECORDS(Opt);
#undef KVXML_EXTERN_RECORDS

}  // namespace KvXmlLib16Data
