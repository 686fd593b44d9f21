#include "kvxml/objects/attribute_col.h"

#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/objects/internal/attribute_names.h"
#include "kvxml/settings/internal/shared_settings.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/internal/xml_name_check.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

using internal::CSharedName;
using internal::CTreeOutput;
using internal::OrEmpty;

namespace {

[[noreturn]] void ThrowNotAnElement() {
    throw CKvException("Attributes can not be read from an element");
}

[[noreturn]] void ThrowInvalidNamespace(std::string_view ns) {
    throw CKvInvalidNamespaceException(FormatString("Invalid Namespace [%s].", std::string(ns).c_str()),
                                       std::string());
}

}  // namespace

// --- CAttribute --------------------------------------------------------------------------------------------

CAttribute::CAttribute() = default;

CAttribute::CAttribute(const char* name, const char* ns, const char* value)
    : m_namespace(OrEmpty(ns)), m_value(OrEmpty(value)) {
    SetName(name);
}

CAttribute::CAttribute(const CXmlAttribute& attribute) : m_value(attribute.GetValueView()) {
    const internal::CXmlName& name = *attribute.GetName();
    internal::ResolveName(name);
    SetElementName(name.shared);
    m_namespace = name.sharedUri;
    m_prefix = name.sharedPrefix;
    std::string_view typeNamespace;
    m_isTypeValue = internal::IsTypeValue(attribute, typeNamespace);
    if (m_isTypeValue) m_valueNamespace = CSharedName(typeNamespace);
}

CAttribute::CAttribute(const CAttribute&) = default;
CAttribute& CAttribute::operator=(const CAttribute&) = default;
CAttribute::CAttribute(CAttribute&&) noexcept = default;
CAttribute& CAttribute::operator=(CAttribute&&) noexcept = default;
CAttribute::~CAttribute() = default;

void CAttribute::SetName(const char* name) {
    if (name == nullptr || *name == '\0') throw CKvInvalidParamException("Attribute Name must have a value");
    if (!internal::IsXmlName(name, true))
        throw CKvInvalidParamException(FormatString("[%s] is not a valid XML name.", name));
    SetElementName(name);
}

void CAttribute::SetNamespace(const char* ns) {
    m_namespace = CSharedName(OrEmpty(ns));
}

void CAttribute::SetPrefix(const char* prefix) {
    if (*OrEmpty(prefix) != '\0' && !internal::IsXmlName(prefix, false))
        throw CKvInvalidParamException(FormatString("[%s] is not a valid XML name.", prefix));
    m_prefix = CSharedName(OrEmpty(prefix));
}

void CAttribute::SetValue(std::string value) {
    m_value = std::move(value);
    m_isTypeValue = false;
}

void CAttribute::SetTypeValue(const char* typeNamespace, const char* typeName) {
    if (!internal::IsXmlName(OrEmpty(typeName), false))
        throw CKvInvalidParamException(FormatString("[%s] is not a valid XML name.", OrEmpty(typeName)));
    m_valueNamespace = CSharedName(OrEmpty(typeNamespace));
    m_value = typeName;
    m_isTypeValue = true;
}

void CAttribute::Write(CTreeOutput& output) const {
    const CTreeOutput::Name name{GetElementNameText(), GetElementNameView(), m_namespace.View(),
                                 m_prefix.View()};
    if (m_isTypeValue && Is("type", internal::kInstanceNamespace))
        output.WriteTypeAttribute(name, m_value, m_valueNamespace.View());
    else
        output.WriteAttribute(name, m_value);
}

void CAttribute::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext& context,
                           bool) const {
    CTreeOutput output(*writer, context);
    Write(output);
    output.EndAttributes();
}

CXmlElement* CAttribute::FromXml_Int(CXmlElement*, CXmlElement*, const CSerializationContext&, bool) {
    throw CKvException("This should be done by the collection");
}

// --- CAttributeCol -----------------------------------------------------------------------------------------

CAttributeCol::CAttributeCol(const char* restriction, const char* targetNamespace)
    : CXmlTypedCollection<CAttribute>("", "", 0, -1),
      m_restriction(OrEmpty(restriction)),
      m_targetNamespace(OrEmpty(targetNamespace)) {
    if (m_restriction.IsEmpty())
        throw CKvInvalidNamespaceException("Namespace Restriction must have a value", std::string());
    internal::RequireTargetNamespace(m_restriction.View(), targetNamespace);
}

CAttributeCol::CAttributeCol(const CAttributeCol&) = default;
CAttributeCol& CAttributeCol::operator=(const CAttributeCol&) = default;
CAttributeCol::CAttributeCol(CAttributeCol&&) noexcept = default;
CAttributeCol& CAttributeCol::operator=(CAttributeCol&&) noexcept = default;
CAttributeCol::~CAttributeCol() = default;

bool CAttributeCol::AcceptsNamespace(std::string_view ns) const noexcept {
    return m_restriction.View() == "##any" ||
           internal::IsNamespaceValid(ns, m_restriction.View(), m_targetNamespace.View());
}

void CAttributeCol::CheckNamespace(const CAttribute& attribute) const {
    if (AcceptsNamespace(attribute.GetNamespaceView())) return;
    throw CKvInvalidNamespaceException(
        FormatString("Invalid Attribute [%s]. The attributes namespace is Inappropriate.",
                     attribute.GetName().c_str()),
        std::string());
}

CSmartPtr<CAttribute> CAttributeCol::Add(const char* name, const char* ns, const char* value) {
    if (!AcceptsNamespace(OrEmpty(ns))) ThrowInvalidNamespace(OrEmpty(ns));
    CSmartPtr<CAttribute> attribute(new CAttribute(name, ns, value));
    AppendItem(attribute.Get());
    return attribute;
}

void CAttributeCol::Add(const CSmartPtr<CAttribute>& attribute) {
    if (attribute != nullptr) CheckNamespace(*attribute);
    AppendItem(attribute.Get());
}

CSmartPtr<CAttribute> CAttributeCol::Set(const char* name, const char* ns, const char* value) {
    CSmartPtr<CAttribute> attribute = Find(OrEmpty(name), OrEmpty(ns));
    if (attribute == nullptr) return Add(name, ns, value);
    attribute->SetValue(OrEmpty(value));
    return attribute;
}

CSmartPtr<CAttribute> CAttributeCol::Find(std::string_view name, std::string_view ns) const {
    for (CAttribute* attribute : *this) {
        if (attribute->Is(name, ns)) return attribute;
    }
    return nullptr;
}

bool CAttributeCol::Remove(std::string_view name, std::string_view ns) {
    for (CNode* node = Head(); node != nullptr; node = node->next) {
        if (!static_cast<CAttribute*>(node->item.Get())->Is(name, ns)) continue;
        RemoveNode(node);
        return true;
    }
    return false;
}

void CAttributeCol::AddFrom(const CXmlAttribute& attribute) {
    if (!AcceptsNamespace(attribute.GetNamespaceURI())) ThrowInvalidNamespace(attribute.GetNamespaceURI());
    AppendItem(new CAttribute(attribute));
}

void CAttributeCol::CheckUnique() const {
    const auto refuse = [](const CAttribute& attribute) {
        throw CKvInvalidStateException(
            FormatString("The attribute [%s] occurs more than once.", attribute.GetName().c_str()));
    };
    constexpr std::int32_t kFew = 16;
    if (GetCount() > kFew) {
        std::set<std::pair<std::string_view, std::string_view>> names;
        for (const CAttribute* attribute : *this) {
            if (!names.emplace(attribute->GetNameView(), attribute->GetNamespaceView()).second)
                refuse(*attribute);
        }
        return;
    }
    for (auto first = begin(); first != end(); ++first) {
        for (auto other = begin(); other != first; ++other) {
            if (first->Is(other->GetNameView(), other->GetNamespaceView())) refuse(**first);
        }
    }
}

void CAttributeCol::Write(CTreeOutput& output, const internal::CAttributeNames* except) const {
    CheckUnique();
    for (const CAttribute* attribute : *this) {
        if (except != nullptr && except->Has(attribute->GetNameView(), attribute->GetNamespaceView()))
            continue;
        CheckNamespace(*attribute);
        attribute->Write(output);
    }
}

bool CAttributeCol::HasBareType() const noexcept {
    for (const CAttribute* attribute : *this) {
        if (attribute->m_isTypeValue && attribute->m_valueNamespace.IsEmpty()) return true;
    }
    return false;
}

void CAttributeCol::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext& context,
                              bool) const {
    CTreeOutput output(*writer, context);
    Write(output, nullptr);
    output.EndAttributes();
}

CXmlElement* CAttributeCol::FromXml_Int(CXmlElement*, CXmlElement*, const CSerializationContext&, bool) {
    ThrowNotAnElement();
}

CSmartPtr<CAttributeCol> CSerializationContext::GetAdditionalRootAttributes() {
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    std::shared_ptr<CAttributeCol>& attributes = m_shared->pointers.rootAttributes;
    if (attributes == nullptr) {
        const auto holder = std::make_shared<CSmartPtr<CAttributeCol>>(new CAttributeCol("##any", ""));
        attributes = std::shared_ptr<CAttributeCol>(holder, holder->Get());
    }
    return attributes.get();
}

}  // namespace KvXmlLib16
