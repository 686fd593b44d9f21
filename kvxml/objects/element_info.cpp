#include "kvxml/objects/element_info.h"

#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/simple_element.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/format_override.h"
#include "kvxml/types/internal/whitespace.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16Data {

using KvXmlLib16::CKvException;
using KvXmlLib16::CKvValidationException;
using KvXmlLib16::FormatString;
using KvXmlLib16::internal::CMemberAccess;
using KvXmlLib16::internal::OrEmpty;

CElementInfo::CElementInfo(const char* name, const char* ns, int propertyIndex)
    : m_name(OrEmpty(name)),
      m_namespace(OrEmpty(ns)),
      m_propertyIndex(propertyIndex),
      m_simpleName{CXmlWriter::NewNameId(), KvXmlLib16::ItemType_string, m_name, m_namespace} {}

CElementInfo::CElementInfo(const char* name, const char* ns, int propertyIndex, bool nillable,
                           const char* (*enumToString)(int), int (*enumFromString)(const char*),
                           const char* defaultValue)
    : CElementInfo(name, ns, propertyIndex) {
    m_nillable = nillable;
    m_enumToString = enumToString;
    m_enumFromString = enumFromString;
    m_defaultValue = OrEmpty(defaultValue);
}

CElementInfo::CElementInfo(const char* name, const char* ns, int propertyIndex, bool nillable,
                           ItemType itemType, const char* formatOverride,
                           CWhitespaceUtils::WhitespaceRule rule, const CPrimitiveRestrictions& restrictions,
                           const char* defaultValue)
    : CElementInfo(name, ns, propertyIndex) {
    m_nillable = nillable;
    m_itemType = itemType;
    m_formatOverride = OrEmpty(formatOverride);
    m_whitespaceRule = rule;
    m_restrictions = restrictions;
    m_defaultValue = OrEmpty(defaultValue);
    m_hasRestrictions = true;
    m_simpleName.type = itemType;
    KvXmlLib16::internal::CheckFormat(itemType, m_formatOverride);
    m_isPlain = m_formatOverride.empty() && m_defaultValue.empty() && m_restrictions.IsEmpty();
}

CElementInfo::CElementInfo(const CElementInfo& other) {
    *this = other;
}

CElementInfo& CElementInfo::operator=(const CElementInfo& other) {
    m_name = other.m_name;
    m_namespace = other.m_namespace;
    m_propertyIndex = other.m_propertyIndex;
    m_simpleName = {other.m_simpleName.id, other.m_simpleName.type, m_name, m_namespace};
    m_isPlain = other.m_isPlain;
    m_restrictions = other.m_restrictions;
    m_itemType = other.m_itemType;
    m_formatOverride = other.m_formatOverride;
    m_whitespaceRule = other.m_whitespaceRule;
    m_defaultValue = other.m_defaultValue;
    m_nillable = other.m_nillable;
    m_enumToString = other.m_enumToString;
    m_enumFromString = other.m_enumFromString;
    m_hasRestrictions = other.m_hasRestrictions;
    m_skippedWhenAbsent.store(other.m_skippedWhenAbsent.load(std::memory_order_relaxed),
                              std::memory_order_relaxed);
    m_hasPseudoElement = other.m_hasPseudoElement;
    m_writesValue = other.m_writesValue;
    m_claimsByName = other.m_claimsByName;
    m_readsMatched = other.m_readsMatched;
    m_isPrim = other.m_isPrim;
    return *this;
}

CElementInfo::~CElementInfo() = default;

bool CElementInfo::Validate(const CSerializationContext&, const CXmlGeneratedClass*, bool, bool) {
    throw CKvException("Not implemented, should never be called");
}

void CElementInfo::PseudoChildAttributeToXml(const CSerializationContext&, const CXmlGeneratedClass*,
                                             CXmlWriter*) {}

bool CElementInfo::IsThisElement(const CSerializationContext& context, const CXmlElement* element) const {
    return element != nullptr &&
           KvXmlLib16::internal::DoesElementNameMatch(context, *element, m_name, m_namespace);
}

bool CElementInfo::IsListed(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                            const CXmlElement& element) {
    return owner->IsElementInList(context, &element);
}

bool CElementInfo::LetsChoiceBeEmpty(const CXmlGeneratedClass*) const {
    return false;
}

bool CElementInfo::DropsNull(const CXmlGeneratedClass*) const {
    return false;
}

bool CElementInfo::PassNull(const CXmlGeneratedClass* owner, CXmlElement** cursor) const {
    if (!(*cursor)->IsNullMember() || !DropsNull(owner)) return false;
    *cursor = (*cursor)->GetNextSiblingElement();
    return true;
}

KvXmlLib16::CSmartPtr<CXmlObjectBase> CElementInfo::NewMemberLike(const CXmlObjectBase&) const {
    return nullptr;
}

std::string CElementInfo::GetAnyDefaultNamespace(const char* restriction, const char* ns,
                                                 const char* targetNamespace) {
    std::string_view rule = OrEmpty(restriction);
    const std::size_t blank = rule.find(' ');
    if (blank != std::string_view::npos) {
        const std::string_view first = rule.substr(0, blank);
        if (first.size() < 3 || first.substr(0, 2) != "##") return std::string();
        rule = first;
    }
    if (rule == "##any") return OrEmpty(ns);
    if (rule == "##other") return *OrEmpty(ns) == '\0' ? "DefaultNamespace" : "";
    if (rule == "##targetNamespace") return OrEmpty(targetNamespace);
    return std::string();
}

// --- properties --------------------------------------------------------------------------------------------

void CElementInfo::InvokePropertyGet(const CXmlGeneratedClass* owner, KvVariant& value) const {
    CMemberAccess::Get(*owner, m_propertyIndex, m_name, value);
}

void CElementInfo::InvokePropertySet(CXmlGeneratedClass* owner, KvVariant& value,
                                     const CXmlElement& element) const {
    CMemberAccess::Set(*owner, m_propertyIndex, m_name, value, element);
}

CXmlCollectionBase* CElementInfo::MakeCollection(const CXmlGeneratedClass* owner, KvVariant& value) const {
    InvokePropertyGet(owner, value);
    if (value.PeekXmlCollection() == nullptr) {
        CMemberAccess::SetUnset(const_cast<CXmlGeneratedClass&>(*owner), m_propertyIndex);
        InvokePropertyGet(owner, value);
    }
    value.Own();  // reading may make the owner give it up
    return value.PeekXmlCollection();
}

void CElementInfo::CheckRestriction(const KvVariant& value, std::string_view lexical) const {
    if (!m_hasRestrictions) throw CKvException("Cannot CheckRestriction for type: " + value.GetType());
    if (!m_restrictions.IsEmpty()) KvXmlLib16::internal::CheckFacets(m_restrictions, m_name, value, lexical);
}

void CElementInfo::ThrowMandatoryIsNull() const {
    KvXmlLib16::internal::ThrowMandatoryIsNull(m_name);
}

const std::string* CElementInfo::GetWantedNamespaces() const noexcept {
    return nullptr;
}

void CElementInfo::ThrowWildcardUnfilled(const std::string& namespaces, const std::string& path) {
    throw CKvValidationException(
        FormatString("Failed to find the required element from namespace [%s].", namespaces.c_str()), path);
}

void CElementInfo::ThrowRequiredChildMissing(const CXmlElement* parent) const {
    if (const std::string* const namespaces = GetWantedNamespaces())
        ThrowWildcardUnfilled(*namespaces, parent->GetXPath());
    throw CKvValidationException(
        FormatString("Failed to find the required child element [%s].", m_name.c_str()), parent->GetXPath());
}

// --- writing -----------------------------------------------------------------------------------------------

void CElementInfo::WriteNilElement(CXmlWriter* writer) const {
    writer->WriteStartElement(m_name, m_namespace);
    writer->WriteNilAttribute();
    writer->WriteEndElement();
}

bool CElementInfo::WriteValue(const CSerializationContext&, const KvVariant&, CXmlWriter*) const {
    return false;
}

bool CElementInfo::WritePrim(const KvVariant& value, CXmlWriter* writer) const {
    if (!value.IsValid()) return false;
    if (value.IsNil()) {
        WriteNilElement(writer);
        return true;
    }
    const bool isOfType = value.GetTypeAsEnum() == m_itemType;
    if (m_isPlain) {
        writer->WriteSimpleElement(m_simpleName, value.ToText(writer->ScratchText(), {}), false, isOfType);
        return true;
    }
    const std::string_view text = value.ToText(writer->ScratchText(), m_formatOverride);
    if (!m_restrictions.IsEmpty()) CheckRestriction(value, text);
    writer->WriteSimpleElement(m_simpleName, text, IsDefault(text), isOfType && m_formatOverride.empty());
    return true;
}

bool CElementInfo::WriteEnum(const KvVariant& value, CXmlWriter* writer,
                             const char* (*enumToString)(int)) const {
    if (!value.IsValid()) return false;
    if (value.IsNil()) {
        WriteNilElement(writer);
        return true;
    }
    const std::string_view text = OrEmpty(enumToString(value.GetI4()));
    writer->WriteSimpleElement(m_simpleName, text, IsDefault(text), true);
    return true;
}

bool CElementInfo::WriteCls(const CSerializationContext& context, const KvVariant& value, CXmlWriter* writer,
                            bool suppressChoiceError) const {
    const CXmlObjectBase* object = value.PeekXmlObject();
    if (object == nullptr) return false;
    CXmlObjectBase::ToXml_Int(object, writer, false, m_namespace.c_str(), context, suppressChoiceError);
    return true;
}

bool CElementInfo::WriteCol(const CSerializationContext& context, const KvVariant& value,
                            CXmlWriter* writer) const {
    const CXmlCollectionBase* collection = value.PeekXmlCollection();
    if (collection == nullptr || collection->GetCount() <= 0) return false;
    writer->BeginArray();
    CXmlObjectBase::ToXml_Int(collection, writer, false, m_namespace.c_str(), context, false);
    writer->EndArray();
    return true;
}

bool CElementInfo::ElementToXmlPrim(const CSerializationContext&, const CXmlGeneratedClass* owner,
                                    CXmlWriter* writer) const {
    KvVariant value;
    InvokePropertyGet(owner, value);
    return WritePrim(value, writer);
}

bool CElementInfo::ElementToXmlEnum(const CSerializationContext&, const CXmlGeneratedClass* owner,
                                    CXmlWriter* writer, const char* (*enumToString)(int)) const {
    KvVariant value;
    InvokePropertyGet(owner, value);
    return WriteEnum(value, writer, enumToString);
}

bool CElementInfo::ElementToXmlCls(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer, bool suppressChoiceError) const {
    KvVariant value;
    InvokePropertyGet(owner, value);
    return WriteCls(context, value, writer, suppressChoiceError);
}

bool CElementInfo::ElementToXmlCol(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                   CXmlWriter* writer) const {
    KvVariant value;
    InvokePropertyGet(owner, value);
    return WriteCol(context, value, writer);
}

// --- reading -----------------------------------------------------------------------------------------------

void CElementInfo::ReadMatched(const CSerializationContext&, CXmlGeneratedClass*, CXmlElement**) const {
    throw CKvException("Not implemented, should never be called");
}

template <class Convert>
void CElementInfo::ReadSimpleElement(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                     CXmlElement** cursor, Convert convert) const {
    CXmlElement& element = **cursor;
    KvVariant value;
    bool isNil = KvXmlLib16::internal::JudgeSimpleElement(context, element, m_nillable);
    std::string_view text;
    if (!isNil) {
        text = element.GetTextView();
        if (text.empty()) {
            if (PassNull(owner, cursor)) return;
            isNil = m_nillable && element.IsNull();
            text = m_defaultValue;
        }
    }
    if (isNil) {
        value.SetNil();
    } else {
        try {
            convert(text, value);
        } catch (const CKvException& e) {
            KvXmlLib16::internal::ThrowSetFailed(m_name, element.GetXPath(), e);
        }
    }
    InvokePropertySet(owner, value, element);
    *cursor = element.GetNextSiblingElement();
}

void CElementInfo::ElementFromXmlPrim(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                      CXmlElement** cursor) const {
    ReadSimpleElement(context, owner, cursor, [this](std::string_view text, KvVariant& value) {
        KvXmlLib16::internal::ToCheckedValue(text, m_itemType, m_whitespaceRule, m_restrictions, m_name,
                                             value);
    });
}

void CElementInfo::ElementFromXmlEnum(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                      CXmlElement** cursor) const {
    ReadSimpleElement(context, owner, cursor, [this](std::string_view text, KvVariant& value) {
        value.SetI4(m_enumFromString(std::string(text).c_str()));
    });
}

CXmlElement* CElementInfo::FromXml_Int(CXmlObjectBase* object, CXmlElement* element, CXmlElement* cursor,
                                       const CSerializationContext& context, bool suppressChoiceError) {
    return CXmlObjectBase::FromXml_Int(object, element, cursor, context, suppressChoiceError);
}

void CElementInfo::AttributesToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer,
                                       const CSerializationContext& context) {
    CXmlObjectBase::AttributesToXml_Int(object, writer, context);
}

void CElementInfo::ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, const char* namespaceUri,
                             const CSerializationContext& context, bool suppressChoiceError) {
    CXmlObjectBase::ToXml_Int(object, writer, false, namespaceUri, context, suppressChoiceError);
}

void CElementInfo::WriteMemberAttributes(const CSerializationContext& context,
                                         const CXmlGeneratedClass* owner, CXmlWriter* writer) const {
    KvVariant value;
    InvokePropertyGet(owner, value);
    const CXmlObjectBase* object = value.PeekXmlObject();
    if (object == nullptr) object = value.PeekXmlCollection();
    if (object != nullptr) AttributesToXml_Int(object, writer, context);
}

void CElementInfo::MarkNew(CXmlObjectBase* object) noexcept {
    CXmlObjectBase::MarkNew(object);
}

void CElementInfo::MarkRetried(CXmlObjectBase* object) noexcept {
    CXmlObjectBase::MarkRetried(object);
}

bool CElementInfo::IsIncomplete(const CXmlObjectBase* object) noexcept {
    return object->IsIncomplete();
}

bool CElementInfo::HasReadAttributes(const CXmlObjectBase* object) noexcept {
    return object->HasReadAttributes();
}

}  // namespace KvXmlLib16Data
