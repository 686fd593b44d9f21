#include "kvxml/metadata/element_info_family.h"

#include "kvxml/metadata/xml_collection_base.h"
#include "kvxml/runtime/serialization_context.h"
#include "kvxml/runtime/xml_generated_class.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16Data {

using KvXmlLib16::CSmartPtr;

// --- single-valued members ---------------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoSingle<group, cardinality>::Describe(bool memberHasTag) {
    SetWritesValue();
    if (!memberHasTag) return;
    SetReadsMatched();
    if (cardinality == RecordCardinality::Opt) SetSkippedWhenAbsent();
}

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoSingle<group, cardinality>::CElementInfoSingle(const char* name, const char* ns,
                                                           int propertyIndex, bool memberHasTag)
    : CElementInfo(name, ns, propertyIndex) {
    Describe(memberHasTag);
}

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoSingle<group, cardinality>::CElementInfoSingle(const char* name, const char* ns,
                                                           int propertyIndex, bool nillable,
                                                           const char* (*enumToString)(int),
                                                           int (*enumFromString)(const char*),
                                                           const char* defaultValue)
    : CElementInfo(name, ns, propertyIndex, nillable, enumToString, enumFromString, defaultValue) {
    Describe(true);
}

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoSingle<group, cardinality>::CElementInfoSingle(const char* name, const char* ns,
                                                           int propertyIndex, bool nillable,
                                                           ItemType itemType, const char* formatOverride,
                                                           CWhitespaceUtils::WhitespaceRule rule,
                                                           const CPrimitiveRestrictions& restrictions,
                                                           const char* defaultValue)
    : CElementInfo(name, ns, propertyIndex, nillable, itemType, formatOverride, rule, restrictions,
                   defaultValue) {
    Describe(true);
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::ElementToXml(const CSerializationContext& context,
                                                          const CXmlGeneratedClass* owner,
                                                          CXmlWriter* writer) {
    KvVariant value;
    InvokePropertyGet(owner, value);
    const bool written = WriteValue(context, value, writer);
    if constexpr (cardinality == RecordCardinality::Mnd) {
        if (!written) this->ThrowMandatoryIsNull();
    }
    return written;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::ElementFromXml(const CSerializationContext& context,
                                                            CXmlGeneratedClass* owner, CXmlElement* parent,
                                                            CXmlElement** cursor, const char*,
                                                            XmlElementType type) {
    if (this->IsThisElement(context, *cursor)) {
        this->ReadMatched(context, owner, cursor);
        return true;
    }
    if constexpr (cardinality == RecordCardinality::Opt) {
        return true;
    } else {
        if (type == XmlElementType_Element && context.GetIgnoreMissingMandatoryElements()) return true;
        while (context.GetIgnoreUnknownElements() && *cursor != nullptr) {
            *cursor = (*cursor)->GetNextSiblingElement();
            if (this->IsThisElement(context, *cursor)) {
                this->ReadMatched(context, owner, cursor);
                return true;
            }
        }
        if (type != XmlElementType_Element) return false;
        this->ThrowRequiredChildMissing(parent);
    }
}

// --- primitive values --------------------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoPrim<group, cardinality>::CElementInfoPrim(const char* name, const char* ns, int propertyIndex,
                                                       bool nillable, ItemType itemType,
                                                       const char* formatOverride,
                                                       CWhitespaceUtils::WhitespaceRule rule,
                                                       const CPrimitiveRestrictions& restrictions,
                                                       const char* defaultValue)
    : CElementInfoSingle<group, cardinality>(name, ns, propertyIndex, nillable, itemType, formatOverride,
                                             rule, restrictions, defaultValue) {}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoPrim<group, cardinality>::WriteValue(const CSerializationContext&, const KvVariant& value,
                                                      CXmlWriter* writer) const {
    return this->WritePrim(value, writer);
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoPrim<group, cardinality>::ReadMatched(const CSerializationContext& context,
                                                       CXmlGeneratedClass* owner,
                                                       CXmlElement** cursor) const {
    this->ElementFromXmlPrim(context, owner, cursor);
}

// --- enumeration values ------------------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoEnum<group, cardinality>::CElementInfoEnum(const char* name, const char* ns, int propertyIndex,
                                                       bool nillable, const char* (*enumToString)(int),
                                                       int (*enumFromString)(const char*),
                                                       const char* defaultValue)
    : CElementInfoSingle<group, cardinality>(name, ns, propertyIndex, nillable, enumToString, enumFromString,
                                             defaultValue) {}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoEnum<group, cardinality>::WriteValue(const CSerializationContext&, const KvVariant& value,
                                                      CXmlWriter* writer) const {
    return this->WriteEnum(value, writer, this->m_enumToString);
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoEnum<group, cardinality>::ReadMatched(const CSerializationContext& context,
                                                       CXmlGeneratedClass* owner,
                                                       CXmlElement** cursor) const {
    this->ElementFromXmlEnum(context, owner, cursor);
}

// --- objects of generated classes --------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoCls<group, cardinality>::CElementInfoCls(const char* name, const char* ns, int propertyIndex,
                                                     XmlElementType memberType, ObjectFactory factory,
                                                     int classId, bool required)
    : CElementInfoSingle<group, cardinality>(name, ns, propertyIndex, memberType == XmlElementType_Element),
      m_memberType(memberType),
      m_factory(factory),
      m_classId(classId),
      m_required(required) {
    if (memberType == XmlElementType_PseudoElement) this->SetHasPseudoElement();
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoCls<group, cardinality>::WriteValue(const CSerializationContext& context,
                                                     const KvVariant& value, CXmlWriter* writer) const {
    return this->WriteCls(context, value, writer, false);
}

template <RecordGroup group, RecordCardinality cardinality>
CSmartPtr<CXmlObjectBase> CElementInfoCls<group, cardinality>::MemberObject(CXmlGeneratedClass* owner,
                                                                            bool& isNew) const {
    KvVariant value;
    this->InvokePropertyGet(owner, value);
    CSmartPtr<CXmlObjectBase> object(value.PeekXmlObject());
    isNew = object == nullptr;
    if (isNew && m_factory != nullptr) object = m_factory(m_classId, this->m_name.c_str());
    return object;
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoCls<group, cardinality>::ReadMatched(const CSerializationContext& context,
                                                      CXmlGeneratedClass* owner, CXmlElement** cursor) const {
    CXmlElement& element = **cursor;
    bool isNew = false;
    const CSmartPtr<CXmlObjectBase> object = MemberObject(owner, isNew);
    if (object == nullptr) this->ThrowMandatoryIsNull();
    this->FromXml_Int(object.Get(), &element, element.GetFirstElement(), context, false);
    if (isNew) {
        KvVariant value;
        value.SetXmlObject(object.Get());
        this->InvokePropertySet(owner, value, element);
    }
    *cursor = element.GetNextSiblingElement();
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoCls<group, cardinality>::ElementFromXml(const CSerializationContext& context,
                                                         CXmlGeneratedClass* owner, CXmlElement* parent,
                                                         CXmlElement** cursor, const char* ns,
                                                         XmlElementType type) {
    if (m_memberType == XmlElementType_Element) {
        return CElementInfoSingle<group, cardinality>::ElementFromXml(context, owner, parent, cursor, ns,
                                                                      type);
    }
    // The member has no tag of its own: it reads what it can from the owner's children.
    bool isNew = false;
    const CSmartPtr<CXmlObjectBase> object = MemberObject(owner, isNew);
    if (object == nullptr) this->ThrowMandatoryIsNull();
    CXmlElement* const before = *cursor;
    *cursor = this->FromXml_Int(object.Get(), parent, before, context, cardinality == RecordCardinality::Opt);
    if (*cursor == before && cardinality == RecordCardinality::Opt) return true;
    if (isNew) {
        KvVariant value;
        value.SetXmlObject(object.Get());
        this->InvokePropertySet(owner, value, *parent);
    }
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoCls<group, cardinality>::PseudoChildAttributeToXml(const CSerializationContext& context,
                                                                    const CXmlGeneratedClass* owner,
                                                                    CXmlWriter* writer) {
    if (m_memberType != XmlElementType_PseudoElement) return;
    KvVariant value;
    this->InvokePropertyGet(owner, value);
    if (const CXmlObjectBase* object = value.PeekXmlObject()) {
        this->AttributesToXml_Int(object, writer, context);
    }
}

// --- collections -------------------------------------------------------------------------------------------

CElementInfoSeqCol::CElementInfoSeqCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfo(name, ns, propertyIndex) {
    SetWritesValue();
}

bool CElementInfoSeqCol::WriteValue(const CSerializationContext& context, const KvVariant& value,
                                    CXmlWriter* writer) const {
    const CXmlCollectionBase* collection = value.PeekXmlCollection();
    if (collection == nullptr) return false;
    collection->ValidateCount(context);
    WriteCol(context, value, writer);
    return true;
}

void CElementInfoSeqCol::LearnBounds(const CXmlCollectionBase& collection) const {
    if (m_itemsHaveTags && collection.GetMinOccurs() <= 0) SetSkippedWhenAbsent();
}

bool CElementInfoSeqCol::ElementToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                      CXmlWriter* writer) {
    if (!context.GetIgnoreInvalidCollectionCounts()) {
        KvVariant value;
        InvokePropertyGet(owner, value);
        const CXmlCollectionBase* collection = value.PeekXmlCollection();
        // Only the collection knows its bounds, so one that may have to hold items is made to ask it.
        if (collection == nullptr && !IsSkippedWhenAbsent()) {
            collection = MakeCollection(owner, value);
            if (collection != nullptr) LearnBounds(*collection);
        }
        if (collection != nullptr) collection->ValidateCount(context);
    }
    return ElementToXmlCol(context, owner, writer);
}

bool CElementInfoSeqCol::ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                        CXmlElement* parent, CXmlElement** cursor, const char*,
                                        XmlElementType type) {
    KvVariant value;
    CXmlCollectionBase* collection = MakeCollection(owner, value);
    if (collection == nullptr) ThrowMandatoryIsNull();
    LearnBounds(*collection);
    *cursor = FromXml_Int(collection, parent, *cursor, context, false);
    if (type != XmlElementType_Element) return collection->IsValidCount(context);
    collection->ValidateCount(context);
    return true;
}

CElementInfoSeqClsCol::CElementInfoSeqClsCol(const char* name, const char* ns, int propertyIndex,
                                             XmlElementType memberType)
    : CElementInfoSeqCol(name, ns, propertyIndex), m_memberType(memberType) {
    m_itemsHaveTags = memberType == XmlElementType_Element;
}

#define KVXML_INSTANTIATE_RECORDS(cardinality)                                           \
    template class CElementInfoSingle<RecordGroup::Seq, RecordCardinality::cardinality>; \
    template class CElementInfoPrim<RecordGroup::Seq, RecordCardinality::cardinality>;   \
    template class CElementInfoEnum<RecordGroup::Seq, RecordCardinality::cardinality>;   \
    template class CElementInfoCls<RecordGroup::Seq, RecordCardinality::cardinality>
KVXML_INSTANTIATE_RECORDS(Mnd);
KVXML_INSTANTIATE_RECORDS(Opt);

}  // namespace KvXmlLib16Data
