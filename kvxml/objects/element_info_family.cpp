#include "kvxml/objects/element_info_family.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/objects/element.h"
#include "kvxml/objects/internal/substitution.h"
#include "kvxml/objects/internal/tagless_reads.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16Data {

using KvXmlLib16::CElement;
using KvXmlLib16::CElementCol;
using KvXmlLib16::CKvValidationException;
using KvXmlLib16::CSmartPtr;
using KvXmlLib16::FormatString;
using KvXmlLib16::INillable;
using KvXmlLib16::internal::CSubstitution;
using KvXmlLib16::internal::CTaglessReads;
using KvXmlLib16::internal::OrEmpty;

// --- single-valued members ---------------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoSingle<group, cardinality>::Describe(bool claimsByName) {
    SetWritesValue();
    if (!claimsByName) return;
    SetClaimsByName();
    SetReadsMatched();
    if (cardinality == RecordCardinality::Opt) SetSkippedWhenAbsent();
}

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoSingle<group, cardinality>::CElementInfoSingle(const char* name, const char* ns,
                                                           int propertyIndex, bool claimsByName)
    : CElementInfo(name, ns, propertyIndex) {
    Describe(claimsByName);
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
bool CElementInfoSingle<group, cardinality>::LetsChoiceBeEmpty(const CXmlGeneratedClass*) const {
    return group == RecordGroup::Choice && cardinality == RecordCardinality::Opt;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::TryRead(const CSerializationContext& context,
                                                     CXmlGeneratedClass* owner, CXmlElement*,
                                                     CXmlElement** cursor, XmlElementType) const {
    if (!this->IsThisElement(context, *cursor)) return false;
    // A null that is dropped is no choice.
    if (group != RecordGroup::Seq && this->PassNull(owner, cursor)) return false;
    this->ReadMatched(context, owner, cursor);
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::DropsNull(const CXmlGeneratedClass*) const {
    return cardinality == RecordCardinality::Opt && !this->m_nillable;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::ElementFromXml(const CSerializationContext& context,
                                                            CXmlGeneratedClass* owner, CXmlElement* parent,
                                                            CXmlElement** cursor, const char*,
                                                            XmlElementType type) {
    if (TryRead(context, owner, parent, cursor, type)) return true;
    if constexpr (group != RecordGroup::Seq) {
        return false;  // another member's element, or nobody's
    } else if constexpr (cardinality == RecordCardinality::Opt) {
        return true;
    } else {
        if (type == XmlElementType_Element && context.GetIgnoreMissingMandatoryElements()) return true;
        while (context.GetIgnoreUnknownElements() && *cursor != nullptr) {
            *cursor = (*cursor)->GetNextSiblingElement();
            if (TryRead(context, owner, parent, cursor, type)) return true;
        }
        if (type != XmlElementType_Element) return false;
        this->ThrowRequiredChildMissing(parent);
    }
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoSingle<group, cardinality>::Validate(const CSerializationContext& context,
                                                      const CXmlGeneratedClass* owner, bool found,
                                                      bool isElement) {
    if constexpr (group != RecordGroup::All) {
        return CElementInfo::Validate(context, owner, found, isElement);
    } else {
        if (found || cardinality == RecordCardinality::Opt || context.GetIgnoreMissingMandatoryElements())
            return true;
        if (!isElement) return false;
        if (const std::string* const namespaces = this->GetWantedNamespaces())
            this->ThrowWildcardUnfilled(*namespaces, std::string());
        throw CKvValidationException(
            FormatString("Failed to find the mandatory element [%s].", this->m_name.c_str()), std::string());
    }
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoSingle<group, cardinality>::Assign(CXmlGeneratedClass* owner, CXmlObjectBase* object,
                                                    const CXmlElement& element) const {
    KvVariant value;
    value.SetXmlObject(object);
    this->InvokePropertySet(owner, value, element);
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
                                             rule, restrictions, defaultValue) {
    this->SetIsPrim();
}

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

// --- objects of one generated class ------------------------------------------------------------------------

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
    // A class that was chosen does not itself insist on a choice within it.
    return this->WriteCls(context, value, writer, group == RecordGroup::Choice);
}

template <RecordGroup group, RecordCardinality cardinality>
CSmartPtr<CXmlObjectBase> CElementInfoCls<group, cardinality>::MemberObject(CXmlGeneratedClass* owner,
                                                                            bool makeNew, bool& isNew) const {
    KvVariant value;
    this->InvokePropertyGet(owner, value);
    CSmartPtr<CXmlObjectBase> object(value.PeekXmlObject());
    isNew = m_factory != nullptr && (makeNew || object == nullptr);
    if (isNew) object = m_factory(m_classId, this->m_name.c_str());
    if (object == nullptr) this->ThrowMandatoryIsNull();
    if (isNew) this->MarkNew(object.Get());
    return object;
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoCls<group, cardinality>::ReadMatched(const CSerializationContext& context,
                                                      CXmlGeneratedClass* owner, CXmlElement** cursor) const {
    CXmlElement& element = **cursor;
    CXmlElement* const first = element.GetFirstElement();
    if (first == nullptr && this->PassNull(owner, cursor)) return;
    bool isNew = false;
    const CSmartPtr<CXmlObjectBase> object = MemberObject(owner, false, isNew);
    this->FromXml_Int(object.Get(), &element, first, context, false);
    if (isNew) this->Assign(owner, object.Get(), element);
    *cursor = element.GetNextSiblingElement();
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoCls<group, cardinality>::TryRead(const CSerializationContext& context,
                                                  CXmlGeneratedClass* owner, CXmlElement* parent,
                                                  CXmlElement** cursor, XmlElementType type) const {
    if (m_memberType == XmlElementType_Element) {
        return CElementInfoSingle<group, cardinality>::TryRead(context, owner, parent, cursor, type);
    }
    // The member has no tag of its own: it reads what it can from the owner's children. Where unknown
    // elements are skipped it may be tried more than once, and trying must not cost what was read before.
    CXmlElement* const before = *cursor;
    CTaglessReads* const reads = CTaglessReads::Of(parent);
    if (reads != nullptr && reads->IsInVain(this, before)) return false;
    bool isNew = false;
    const CSmartPtr<CXmlObjectBase> object = MemberObject(owner, context.GetIgnoreUnknownElements(), isNew);
    if (reads != nullptr && reads->WasTried(this)) this->MarkRetried(object.Get());
    CXmlElement* const after =
        this->FromXml_Int(object.Get(), parent, before, context, cardinality == RecordCardinality::Opt);
    const bool isIncomplete = this->IsIncomplete(object.Get());
    const bool isThere =
        after != before || (group == RecordGroup::Seq &&
                            (cardinality == RecordCardinality::Mnd || this->HasReadAttributes(object.Get())));
    if (isIncomplete || !isThere) {
        if (reads != nullptr) reads->NoteFailure(this, before, isIncomplete);
        return false;
    }
    *cursor = after;
    if (isNew) this->Assign(owner, object.Get(), *parent);
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoCls<group, cardinality>::DropsNull(const CXmlGeneratedClass* owner) const {
    if (cardinality != RecordCardinality::Opt || m_memberType != XmlElementType_Element) return false;
    bool isNew = false;
    const CSmartPtr<CXmlObjectBase> object =
        MemberObject(const_cast<CXmlGeneratedClass*>(owner), false, isNew);
    return dynamic_cast<const INillable*>(object.Get()) == nullptr;
}

template <RecordGroup group, RecordCardinality cardinality>
CSmartPtr<CXmlObjectBase> CElementInfoCls<group, cardinality>::NewMemberLike(const CXmlObjectBase&) const {
    return m_factory == nullptr ? nullptr : m_factory(m_classId, this->m_name.c_str());
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoCls<group, cardinality>::Validate(const CSerializationContext& context,
                                                   const CXmlGeneratedClass* owner, bool found,
                                                   bool isElement) {
    if (group == RecordGroup::All && m_memberType != XmlElementType_PseudoElement && !m_required) return true;
    return CElementInfoSingle<group, cardinality>::Validate(context, owner, found, isElement);
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoCls<group, cardinality>::PseudoChildAttributeToXml(const CSerializationContext& context,
                                                                    const CXmlGeneratedClass* owner,
                                                                    CXmlWriter* writer) {
    if (m_memberType == XmlElementType_PseudoElement) this->WriteMemberAttributes(context, owner, writer);
}

// --- objects whose class depends on the element ------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoAbsCls<group, cardinality>::CElementInfoAbsCls(const char* name, const char* ns,
                                                           int propertyIndex, XmlElementType memberType,
                                                           SubstitutionFactory factory, int)
    : CElementInfoSingle<group, cardinality>(name, ns, propertyIndex, false),
      m_memberType(memberType),
      m_factory(factory) {
    if (memberType == XmlElementType_PseudoElement) this->SetHasPseudoElement();
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoAbsCls<group, cardinality>::WriteValue(const CSerializationContext& context,
                                                        const KvVariant& value, CXmlWriter* writer) const {
    const CXmlObjectBase* object = value.PeekXmlObject();
    if (object == nullptr) return false;
    CSubstitution::Write(*object, this->m_name, this->m_namespace.c_str(), writer, context);
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoAbsCls<group, cardinality>::TryRead(const CSerializationContext& context,
                                                     CXmlGeneratedClass* owner, CXmlElement*,
                                                     CXmlElement** cursor, XmlElementType type) const {
    if (*cursor == nullptr) return false;
    CXmlElement& element = **cursor;
    const bool named = this->IsThisElement(context, &element);
    if (named && this->PassNull(owner, cursor)) return false;
    const CSmartPtr<CXmlObjectBase> object = CSubstitution::Make(m_factory, element, named);
    if (object == nullptr) {
        if (named && type == XmlElementType_Element) CSubstitution::ThrowNone(this->m_name, element);
        return false;
    }
    this->FromXml_Int(object.Get(), &element, element.GetFirstElement(), context, false);
    this->Assign(owner, object.Get(), element);
    *cursor = element.GetNextSiblingElement();
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
CSmartPtr<CXmlObjectBase> CElementInfoAbsCls<group, cardinality>::NewMemberLike(
    const CXmlObjectBase& object) const {
    return CSubstitution::MakeLike(m_factory, object, this->m_name, this->m_namespace);
}

template <RecordGroup group, RecordCardinality cardinality>
void CElementInfoAbsCls<group, cardinality>::PseudoChildAttributeToXml(const CSerializationContext& context,
                                                                       const CXmlGeneratedClass* owner,
                                                                       CXmlWriter* writer) {
    if (m_memberType == XmlElementType_PseudoElement) this->WriteMemberAttributes(context, owner, writer);
}

// --- untyped content ---------------------------------------------------------------------------------------

template <RecordGroup group, RecordCardinality cardinality>
CElementInfoUntpd<group, cardinality>::CElementInfoUntpd(const char* name, const char* ns, int propertyIndex,
                                                         const char* restriction,
                                                         const char* defaultNamespace)
    : CElementInfoSingle<group, cardinality>(name, ns, propertyIndex, false),
      m_restriction(OrEmpty(restriction)),
      m_defaultNamespace(OrEmpty(defaultNamespace)) {}

template <RecordGroup group, RecordCardinality cardinality>
const std::string* CElementInfoUntpd<group, cardinality>::GetWantedNamespaces() const noexcept {
    return this->m_name.empty() ? &m_restriction : nullptr;
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoUntpd<group, cardinality>::WriteValue(const CSerializationContext& context,
                                                       const KvVariant& value, CXmlWriter* writer) const {
    const CXmlObjectBase* object = value.PeekXmlObject();
    if (object == nullptr) return false;
    const std::string ns = this->GetAnyDefaultNamespace(m_restriction.c_str(), this->m_namespace.c_str(),
                                                        m_defaultNamespace.c_str());
    this->ToXml_Int(object, writer, ns.c_str(), context, false);
    return true;
}

template <RecordGroup group, RecordCardinality cardinality>
CSmartPtr<CXmlObjectBase> CElementInfoUntpd<group, cardinality>::NewMemberLike(const CXmlObjectBase&) const {
    return CSmartPtr<CElement>(new CElement());
}

template <RecordGroup group, RecordCardinality cardinality>
bool CElementInfoUntpd<group, cardinality>::TryRead(const CSerializationContext& context,
                                                    CXmlGeneratedClass* owner, CXmlElement*,
                                                    CXmlElement** cursor, XmlElementType) const {
    if (*cursor == nullptr) return false;
    CXmlElement& element = **cursor;
    const auto allowed = [&] {
        return KvXmlLib16::internal::IsNamespaceValid(element.GetNamespaceURI(), m_restriction,
                                                      m_defaultNamespace);
    };
    const bool accepted = this->m_name.empty()    ? allowed() && !this->IsListed(context, owner, element)
                          : m_restriction.empty() ? this->IsThisElement(context, &element)
                                                  : element.GetLocalName() == this->m_name && allowed();
    if (!accepted) return false;
    if (!this->m_name.empty() && this->PassNull(owner, cursor)) return false;
    const CSmartPtr<CXmlObjectBase> object(new CElement());
    this->FromXml_Int(object.Get(), &element, element.GetFirstElement(), context, false);
    this->Assign(owner, object.Get(), element);
    *cursor = element.GetNextSiblingElement();
    return true;
}

// --- collections -------------------------------------------------------------------------------------------

template <RecordGroup group>
CElementInfoCol<group>::CElementInfoCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfo(name, ns, propertyIndex) {
    SetWritesValue();
}

template <RecordGroup group>
bool CElementInfoCol<group>::WriteValue(const CSerializationContext& context, const KvVariant& value,
                                        CXmlWriter* writer) const {
    const CXmlCollectionBase* collection = value.PeekXmlCollection();
    if (collection == nullptr) return false;
    if constexpr (group == RecordGroup::Choice) {
        return WriteCol(context, value, writer);
    } else {
        collection->ValidateCount(context);
        WriteCol(context, value, writer);
        return true;
    }
}

template <RecordGroup group>
void CElementInfoCol<group>::LearnBounds(const CXmlCollectionBase& collection) const {
    if (m_itemsHaveTags && collection.GetMinOccurs() <= 0) SetSkippedWhenAbsent();
}

template <RecordGroup group>
bool CElementInfoCol<group>::LetsChoiceBeEmpty(const CXmlGeneratedClass* owner) const {
    if (group != RecordGroup::Choice) return false;
    if (IsSkippedWhenAbsent()) return true;
    KvVariant value;
    const CXmlCollectionBase* collection = MakeCollection(owner, value);
    return collection != nullptr && collection->GetMinOccurs() <= 0;
}

template <RecordGroup group>
bool CElementInfoCol<group>::DropsNull(const CXmlGeneratedClass* owner) const {
    if (IsSkippedWhenAbsent()) return true;
    KvVariant value;
    const CXmlCollectionBase* collection = m_name.empty() ? nullptr : MakeCollection(owner, value);
    return collection != nullptr && collection->GetMinOccurs() <= 0;
}

template <RecordGroup group>
bool CElementInfoCol<group>::ElementToXml(const CSerializationContext& context,
                                          const CXmlGeneratedClass* owner, CXmlWriter* writer) {
    if (group != RecordGroup::Choice && !context.GetIgnoreInvalidCollectionCounts()) {
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

template <RecordGroup group>
CXmlElement* CElementInfoCol<group>::ReadItems(const CSerializationContext& context, CXmlGeneratedClass*,
                                               CXmlElement* parent, CXmlElement* cursor,
                                               CXmlCollectionBase& collection) const {
    return FromXml_Int(&collection, parent, cursor, context, false);
}

template <RecordGroup group>
CXmlElement* CElementInfoCol<group>::FirstThatFits(const CXmlCollectionBase& collection, CXmlElement* first,
                                                   const CXmlElement* after) noexcept {
    std::int32_t length = 0;
    for (const CXmlElement* at = first; at != after; at = at->GetNextSiblingElement())
        ++length;
    for (; length > collection.GetMaxOccurs(); --length)
        first = first->GetNextSiblingElement();
    return first;
}

template <RecordGroup group>
bool CElementInfoCol<group>::ElementFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                            CXmlElement* parent, CXmlElement** cursor, const char*,
                                            XmlElementType type) {
    CXmlElement* const before = *cursor;
    // Those of a sequence count what they find at several places; there the sequence keeps account.
    CTaglessReads* const reads = type == XmlElementType_Element ? nullptr : CTaglessReads::Of(parent);
    if (group != RecordGroup::Seq && reads != nullptr && reads->IsInVain(this, before)) return false;
    KvVariant value;
    CXmlCollectionBase* collection = MakeCollection(owner, value);
    if (collection == nullptr) ThrowMandatoryIsNull();
    LearnBounds(*collection);
    // The whole collection is null, not an item.
    if (*cursor != nullptr && (*cursor)->IsNullMember() && IsThisElement(context, *cursor) &&
        PassNull(owner, cursor))
        return group == RecordGroup::Seq;
    *cursor = ReadItems(context, owner, parent, before, *collection);
    // Of a choice or an all-group another member may be meant, or this one's items come later.
    if (group != RecordGroup::Seq && *cursor == before) return false;
    if (type != XmlElementType_Element) {
        if (collection->IsValidCount(context)) return true;
        const int maxOccurs = collection->GetMaxOccurs();
        if (reads != nullptr && maxOccurs != -1 && collection->GetCount() > maxOccurs) {
            // For items without a tag nobody knows how many elements they take.
            CXmlElement* const retryAt =
                HasPseudoElement() ? *cursor : FirstThatFits(*collection, before, *cursor);
            if (group == RecordGroup::Seq) {
                reads->SetOverflow(retryAt);
            } else {
                reads->NoteRange(this, before, retryAt);
            }
        }
        if (group != RecordGroup::Seq) *cursor = before;  // what was not placed is not consumed
        return false;
    }
    collection->ValidateCount(context);
    return true;
}

template <RecordGroup group>
bool CElementInfoCol<group>::Validate(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                      bool found, bool isElement) {
    if constexpr (group != RecordGroup::All) {
        return CElementInfo::Validate(context, owner, found, isElement);
    } else {
        if (found || IsSkippedWhenAbsent()) return true;
        KvVariant value;
        const CXmlCollectionBase* collection = MakeCollection(owner, value);
        if (collection == nullptr) ThrowMandatoryIsNull();
        if (!isElement) return collection->IsValidCount(context);
        collection->ValidateCount(context);
        return true;
    }
}

template <RecordGroup group>
CElementInfoPrimCol<group>::CElementInfoPrimCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfoCol<group>(name, ns, propertyIndex) {
    this->m_itemsHaveTags = true;
    this->SetClaimsByName();
}

template <RecordGroup group>
CElementInfoEnumCol<group>::CElementInfoEnumCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfoCol<group>(name, ns, propertyIndex) {
    this->m_itemsHaveTags = true;
    this->SetClaimsByName();
}

template <RecordGroup group, bool isAbstract>
CElementInfoObjectCol<group, isAbstract>::CElementInfoObjectCol(const char* name, const char* ns,
                                                                int propertyIndex, XmlElementType memberType)
    : CElementInfoCol<group>(name, ns, propertyIndex), m_memberType(memberType) {
    this->m_itemsHaveTags = !isAbstract && memberType == XmlElementType_Element;
    if (this->m_itemsHaveTags) this->SetClaimsByName();
    if (memberType == XmlElementType_PseudoElement) this->SetHasPseudoElement();
}

template <RecordGroup group, bool isAbstract>
CXmlElement* CElementInfoObjectCol<group, isAbstract>::ReadItems(const CSerializationContext& context,
                                                                 CXmlGeneratedClass* owner,
                                                                 CXmlElement* parent, CXmlElement* cursor,
                                                                 CXmlCollectionBase& collection) const {
    const auto read = [&] {
        return CElementInfoCol<group>::ReadItems(context, owner, parent, cursor, collection);
    };
    if (isAbstract || m_memberType != XmlElementType_PseudoElement) return read();
    CTaglessReads* const reads = CTaglessReads::Of(parent);
    if (reads == nullptr) return read();
    if (reads->IsInVain(this, cursor)) return cursor;
    if (reads->WasTried(this)) this->MarkRetried(&collection);
    CXmlElement* const after = read();
    reads->NoteFailure(this, after, this->IsIncomplete(&collection));
    return after;
}

template <RecordGroup group, bool isAbstract>
void CElementInfoObjectCol<group, isAbstract>::PseudoChildAttributeToXml(const CSerializationContext& context,
                                                                         const CXmlGeneratedClass* owner,
                                                                         CXmlWriter* writer) {
    if (m_memberType == XmlElementType_PseudoElement) this->WriteMemberAttributes(context, owner, writer);
}

template <RecordGroup group>
CElementInfoUntpdCol<group>::CElementInfoUntpdCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfoCol<group>(name, ns, propertyIndex) {}

template <RecordGroup group>
CXmlElement* CElementInfoUntpdCol<group>::ReadItems(const CSerializationContext& context,
                                                    CXmlGeneratedClass* owner, CXmlElement* parent,
                                                    CXmlElement* cursor,
                                                    CXmlCollectionBase& collection) const {
    auto* untyped = dynamic_cast<CElementCol*>(&collection);
    if (untyped == nullptr) {
        return CElementInfoCol<group>::ReadItems(context, owner, parent, cursor, collection);
    }
    while (cursor != nullptr && untyped->Accepts(context, *cursor) &&
           (!this->m_name.empty() || !this->IsListed(context, owner, *cursor))) {
        const CSmartPtr<CElement> item(new CElement());
        this->FromXml_Int(item.Get(), cursor, cursor->GetFirstElement(), context, false);
        untyped->Append(item.Get());
        cursor = cursor->GetNextSiblingElement();
    }
    return cursor;
}

CElementInfoAllEnumCol::CElementInfoAllEnumCol(const char* name, const char* ns, int propertyIndex)
    : CElementInfo(name, ns, propertyIndex) {}

#define KVXML_INSTANTIATE_SINGLE(group, cardinality)                                       \
    template class CElementInfoSingle<RecordGroup::group, RecordCardinality::cardinality>; \
    template class CElementInfoPrim<RecordGroup::group, RecordCardinality::cardinality>;   \
    template class CElementInfoEnum<RecordGroup::group, RecordCardinality::cardinality>;   \
    template class CElementInfoCls<RecordGroup::group, RecordCardinality::cardinality>;    \
    template class CElementInfoAbsCls<RecordGroup::group, RecordCardinality::cardinality>; \
    template class CElementInfoUntpd<RecordGroup::group, RecordCardinality::cardinality>;
KVXML_SINGLE_RECORDS(KVXML_INSTANTIATE_SINGLE)

#define KVXML_INSTANTIATE_COLLECTION(group)                          \
    template class CElementInfoCol<RecordGroup::group>;              \
    template class CElementInfoPrimCol<RecordGroup::group>;          \
    template class CElementInfoObjectCol<RecordGroup::group, false>; \
    template class CElementInfoObjectCol<RecordGroup::group, true>;  \
    template class CElementInfoUntpdCol<RecordGroup::group>;
KVXML_COLLECTION_RECORDS(KVXML_INSTANTIATE_COLLECTION)

template class CElementInfoEnumCol<RecordGroup::Seq>;
template class CElementInfoEnumCol<RecordGroup::Choice>;

}  // namespace KvXmlLib16Data
