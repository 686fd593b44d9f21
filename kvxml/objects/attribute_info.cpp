#include "kvxml/objects/attribute_info.h"

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/format_override.h"
#include "kvxml/types/internal/whitespace.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16Data {

using KvXmlLib16::CAttributeCol;
using KvXmlLib16::CKvException;
using KvXmlLib16::CKvValidationException;
using KvXmlLib16::FormatString;
using KvXmlLib16::internal::CMemberAccess;
using KvXmlLib16::internal::OrEmpty;
using KvXmlLib16::internal::ThrowSetFailed;

CAttributeInfo::CAttributeInfo(const char* name, const char* ns, int propertyIndex, bool optional,
                               const char* defaultValue)
    : m_nameId(CXmlWriter::NewNameId()),
      m_name(OrEmpty(name)),
      m_namespace(OrEmpty(ns)),
      m_propertyIndex(propertyIndex),
      m_optional(optional),
      m_defaultValue(OrEmpty(defaultValue)) {}

CAttributeInfo::CAttributeInfo(const CAttributeInfo&) = default;
CAttributeInfo& CAttributeInfo::operator=(const CAttributeInfo&) = default;
CAttributeInfo::~CAttributeInfo() = default;

void CAttributeInfo::ReadMatched(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                 CXmlAttribute* attribute) {
    AttributeFromXml(context, owner, attribute);
}

bool CAttributeInfo::IsThisAttribute(const CSerializationContext& context,
                                     const CXmlAttribute* attribute) const {
    if (attribute == nullptr) return false;
    const KvXmlLib16::internal::CXmlName& own = *attribute->GetName();
    return own.local == m_name && (context.GetIgnoreNamespaces() || own.uri == m_namespace);
}

void CAttributeInfo::InvokePropertyGet(const CXmlGeneratedClass* owner, KvVariant& value) const {
    CMemberAccess::Get(*owner, m_propertyIndex, m_name, value);
}

void CAttributeInfo::InvokePropertySet(CXmlGeneratedClass* owner, KvVariant& value,
                                       const CXmlAttribute& attribute) const {
    CMemberAccess::Set(*owner, m_propertyIndex, m_name, value, attribute);
}

bool CAttributeInfo::ReadForOutput(const CXmlGeneratedClass* owner, KvVariant& value) const {
    InvokePropertyGet(owner, value);
    if (value.IsValid() && !value.IsNil()) return true;
    if (m_optional) return false;
    KvXmlLib16::internal::ThrowMandatoryIsNull(m_name);
}

void CAttributeInfo::WriteAttribute(const CSerializationContext& context, CXmlWriter* writer,
                                    std::string_view text, ItemType type, bool isCanonical) const {
    if (m_optional && !m_defaultValue.empty() && text == m_defaultValue &&
        context.GetNoOptionalAttributeDefaultOutput()) {
        return;
    }
    writer->WriteSimpleAttribute({m_nameId, type, m_name, m_namespace}, text, isCanonical);
}

void CAttributeInfo::RequireFound(bool found) const {
    if (!found && !m_optional) {
        throw CKvValidationException(
            FormatString("Failed to find the required Attribute [%s].", m_name.c_str()), std::string());
    }
}

void CAttributeInfo::TestNamespace(const CXmlObjectBase* object, const char* ns, const char* allowed,
                                   const char* targetNs) {
    object->TestNamespace(ns, allowed, targetNs);
}

bool CAttributeInfo::IsNamespaceValid(const CXmlObjectBase* object, const char* ns, const char* allowed,
                                      const char* targetNs) {
    return object->IsNamespaceValid(ns, allowed, targetNs);
}

std::string CAttributeInfo::GetTargetNamespace(const CXmlObjectBase* object) {
    return object->GetTargetNamespace();
}

void CAttributeInfo::ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, bool isRoot,
                               const char* namespaceUri, const CSerializationContext& context) {
    CXmlObjectBase::ToXml_Int(object, writer, isRoot, namespaceUri, context, false);
}

// --- CAttributeInfoPrimitive -------------------------------------------------------------------------------

CAttributeInfoPrimitive::CAttributeInfoPrimitive(const char* name, const char* ns, int propertyIndex,
                                                 bool optional, ItemType itemType, const char* formatOverride,
                                                 CWhitespaceUtils::WhitespaceRule rule,
                                                 const CPrimitiveRestrictions& restrictions,
                                                 const char* defaultValue)
    : CAttributeInfo(name, ns, propertyIndex, optional, defaultValue),
      m_restrictions(restrictions),
      m_itemType(itemType),
      m_formatOverride(OrEmpty(formatOverride)),
      m_whitespaceRule(rule) {
    KvXmlLib16::internal::CheckFormat(itemType, m_formatOverride);
}

CAttributeInfoPrimitive::CAttributeInfoPrimitive(const CAttributeInfoPrimitive&) = default;
CAttributeInfoPrimitive& CAttributeInfoPrimitive::operator=(const CAttributeInfoPrimitive&) = default;
CAttributeInfoPrimitive::~CAttributeInfoPrimitive() = default;

void CAttributeInfoPrimitive::CheckRestriction(const KvVariant& value, std::string_view lexical) const {
    if (!m_restrictions.IsEmpty()) KvXmlLib16::internal::CheckFacets(m_restrictions, m_name, value, lexical);
}

void CAttributeInfoPrimitive::AttributeToXml(const CSerializationContext& context,
                                             const CXmlGeneratedClass* owner, CXmlWriter* writer) {
    KvVariant value;
    if (!ReadForOutput(owner, value)) return;
    const std::string_view text = value.ToText(writer->ScratchText(), m_formatOverride);
    CheckRestriction(value, text);
    const bool isCanonical = m_formatOverride.empty() && value.GetTypeAsEnum() == m_itemType;
    WriteAttribute(context, writer, text, m_itemType, isCanonical);
}

bool CAttributeInfoPrimitive::AttributeFromXml(const CSerializationContext& context,
                                               CXmlGeneratedClass* owner, CXmlAttribute* attribute) {
    if (!IsThisAttribute(context, attribute)) return false;
    ReadMatched(context, owner, attribute);
    return true;
}

void CAttributeInfoPrimitive::ReadMatched(const CSerializationContext&, CXmlGeneratedClass* owner,
                                          CXmlAttribute* attribute) {
    KvVariant value;
    try {
        KvXmlLib16::internal::ToCheckedValue(attribute->GetValueView(), m_itemType, m_whitespaceRule,
                                             m_restrictions, m_name, value);
    } catch (const CKvException& e) {
        ThrowSetFailed(m_name, attribute->GetXPath(), e);
    }
    InvokePropertySet(owner, value, *attribute);
}

void CAttributeInfoPrimitive::Validate(const CSerializationContext&, bool found) {
    RequireFound(found);
}

// --- CAttributeInfoEnum ------------------------------------------------------------------------------------

CAttributeInfoEnum::CAttributeInfoEnum(const char* name, const char* ns, int propertyIndex, bool optional,
                                       const char* (*enumToString)(int), int (*enumFromString)(const char*),
                                       const char* defaultValue)
    : CAttributeInfo(name, ns, propertyIndex, optional, defaultValue),
      m_enumToString(enumToString),
      m_enumFromString(enumFromString) {}

CAttributeInfoEnum::CAttributeInfoEnum(const CAttributeInfoEnum&) = default;
CAttributeInfoEnum& CAttributeInfoEnum::operator=(const CAttributeInfoEnum&) = default;
CAttributeInfoEnum::~CAttributeInfoEnum() = default;

void CAttributeInfoEnum::AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                        CXmlWriter* writer) {
    KvVariant value;
    if (!ReadForOutput(owner, value)) return;
    const char* text = m_enumToString(value.GetI4());
    WriteAttribute(context, writer, OrEmpty(text), KvXmlLib16::ItemType_string, true);
}

bool CAttributeInfoEnum::AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                          CXmlAttribute* attribute) {
    if (!IsThisAttribute(context, attribute)) return false;
    ReadMatched(context, owner, attribute);
    return true;
}

void CAttributeInfoEnum::ReadMatched(const CSerializationContext&, CXmlGeneratedClass* owner,
                                     CXmlAttribute* attribute) {
    KvVariant value;
    try {
        value.SetI4(m_enumFromString(std::string(attribute->GetValueView()).c_str()));
    } catch (const CKvException& e) {
        ThrowSetFailed(m_name, attribute->GetXPath(), e);
    }
    InvokePropertySet(owner, value, *attribute);
}

void CAttributeInfoEnum::Validate(const CSerializationContext&, bool found) {
    RequireFound(found);
}

// --- CAttributeInfoAny -------------------------------------------------------------------------------------

namespace {

constexpr const char* kNoAttributeCollection =
    "Serialization Data Error : The collection should be a CAttributeCol, it was not!";

/// The collection in the property, if there is one.
CAttributeCol* AttributesOf(const KvVariant& value) {
    return dynamic_cast<CAttributeCol*>(value.PeekXmlCollection());
}

}  // namespace

CAttributeInfoAny::CAttributeInfoAny(const char* name, const char* ns, int propertyIndex, bool optional,
                                     const char* restriction, const char* targetNamespace,
                                     const char* defaultValue)
    : CAttributeInfo(name, ns, propertyIndex, optional, defaultValue),
      m_restriction(OrEmpty(restriction)),
      m_targetNamespace(OrEmpty(targetNamespace)) {}

CAttributeInfoAny::CAttributeInfoAny(const CAttributeInfoAny&) = default;
CAttributeInfoAny& CAttributeInfoAny::operator=(const CAttributeInfoAny&) = default;
CAttributeInfoAny::~CAttributeInfoAny() = default;

void CAttributeInfoAny::AttributeToXml(const CSerializationContext& context, const CXmlGeneratedClass* owner,
                                       CXmlWriter* writer) {
    KvVariant value;
    InvokePropertyGet(owner, value);
    const CAttributeCol* const attributes = AttributesOf(value);
    if (attributes == nullptr && (value.PeekXmlCollection() != nullptr || value.PeekXmlObject() != nullptr))
        throw CKvException(kNoAttributeCollection);
    if (attributes == nullptr || attributes->GetCount() == 0) return;
    ToXml_Int(attributes, writer, false, owner->GetTargetNamespace().c_str(), context);
}

bool CAttributeInfoAny::AttributeFromXml(const CSerializationContext& context, CXmlGeneratedClass* owner,
                                         CXmlAttribute* attribute) {
    if (attribute == nullptr || !KvXmlLib16::internal::IsNamespaceValid(attribute->GetNamespaceURI(),
                                                                        m_restriction, m_targetNamespace)) {
        return false;
    }
    ReadMatched(context, owner, attribute);
    return true;
}

void CAttributeInfoAny::ReadMatched(const CSerializationContext&, CXmlGeneratedClass* owner,
                                    CXmlAttribute* attribute) {
    KvVariant value;
    InvokePropertyGet(owner, value);
    if (AttributesOf(value) == nullptr) {
        KvVariant unset;
        InvokePropertySet(owner, unset, *attribute);
        InvokePropertyGet(owner, value);
    }
    value.Own();
    CAttributeCol* const attributes = AttributesOf(value);
    if (attributes == nullptr) {
        ThrowSetFailed(m_name, attribute->GetXPath(), CKvException(kNoAttributeCollection));
    }
    try {
        attributes->AddFrom(*attribute);
    } catch (const CKvException& e) {
        ThrowSetFailed(m_name, attribute->GetXPath(), e);
    }
}

void CAttributeInfoAny::Validate(const CSerializationContext&, bool) {}

}  // namespace KvXmlLib16Data
