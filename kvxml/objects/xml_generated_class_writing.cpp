// How generated classes are written; the rest of the class is in xml_generated_class.cpp.
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/internal/attribute_names.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/write_failure.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/objects/xml_generated_class.h"
#include "kvxml/settings/namespace_alias_map.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

using KvXmlLib16Data::XmlElementGroupType_All;
using KvXmlLib16Data::XmlElementGroupType_Choice;
using KvXmlLib16Data::XmlElementGroupType_Sequence;
using KvXmlLib16Data::XmlElementType_Element;
using KvXmlLib16Data::XmlElementType_PseudoElement;

void CXmlGeneratedClass::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                                   const CSerializationContext& context, bool suppressChoiceError) const {
    try {
        WriteContent(writer, isRoot, namespaceUri, context, suppressChoiceError);
    } catch (const CKvException& e) {
        internal::CWriteFailure::NoteObject(*this, *writer);
        throw CKvValidationException(FormatString("Failed to convert the element [%s] to XML",
                                                  std::string(EffectiveElementName()).c_str()),
                                     isRoot ? writer->FailedPath().Take() : std::string(), e);
    }
}

std::string_view CXmlGeneratedClass::EffectiveElementName() const {
    const std::string_view name = GetElementNameView();
    return name.empty() ? std::string_view(GetClassInfo()->GetElementName()) : name;
}

void CXmlGeneratedClass::WriteStart(CXmlWriter* writer, bool isRoot, std::string_view name,
                                    std::string_view namespaceUri,
                                    const CSerializationContext& context) const {
    if (isRoot) {
        for (const std::string& instruction : context.GetProcessingInstructions())
            writer->WriteRaw(instruction);
        for (const auto& [uri, alias] : context.GetNamespaceAliases())
            writer->AddNamespaceAlias(alias, uri);
        const std::string& defaultNamespace = context.GetDefaultNamespaceURIRef();
        if (!defaultNamespace.empty()) writer->SetDefaultNamespace(defaultNamespace);
    }
    if (writer->GetDepth() >=
        static_cast<std::int64_t>(internal::OrUnlimited(context.GetMaxElementDepth()))) {
        throw CKvException(FormatString("The elements are nested deeper than the limit of %u.",
                                        context.GetMaxElementDepth()));
    }
    writer->WriteStartElement(name, namespaceUri);
    if (!isRoot) return;
    if (const CAttributeCol* attributes = context.FindAdditionalRootAttributes())
        WriteAdditionalAttributes(*attributes, writer, context);
}

std::string_view CXmlGeneratedClass::WriteInLineSchema(CXmlWriter* writer,
                                                       const CSerializationContext& context) {
    const std::string& schema = context.GetInLineSchemaRef();
    if (internal::BeginsAsMarkup(schema)) return schema;
    if (!schema.empty()) writer->WriteRawAfterSpace(schema);
    return {};
}

void CXmlGeneratedClass::WriteContent(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                                      const CSerializationContext& context, bool suppressChoiceError) const {
    const CParentElementInfo& record = *GetClassInfo();
    const bool hasTag = record.GetElementType() == XmlElementType_Element;
    if (hasTag) WriteStart(writer, isRoot, EffectiveElementName(), namespaceUri, context);
    // The owner's start tag has the attributes of a pseudo element already.
    if (record.GetElementType() != XmlElementType_PseudoElement) AttributesToXml_Int(writer, context);
    const std::string_view schema = isRoot ? WriteInLineSchema(writer, context) : std::string_view();
    if (IsWrittenNil()) {
        writer->WriteNilAttribute();
    } else {
        const int valueIndex = record.GetPrimitiveValuePropertyIndex();
        if (!schema.empty()) writer->WriteRawContent(schema, valueIndex == -1);
        switch (record.GetElementGroupType()) {
            case XmlElementGroupType_Sequence:
                ProcessElementSeqToXml(context, GetClassElementInfo(), writer);
                break;
            case XmlElementGroupType_Choice:
                ProcessElementChoiceToXml(context, GetClassElementInfo(), writer, suppressChoiceError);
                break;
            case XmlElementGroupType_All:
                ProcessElementAllToXml(context, GetClassElementInfo(), writer);
                break;
            default:
                throw CKvException("Unknown XML Group Type");
        }
        if (valueIndex != -1) {
            KvVariant value;
            ReadProperty(valueIndex, value);
            const std::string_view text =
                value.ToText(writer->ScratchText(), record.GetPrimitiveFormatOverride().c_str());
            writer->WriteText(text, value.GetTypeAsEnum(), false);
        }
    }
    if (hasTag) writer->WriteEndElement();
}

/// Writes attributes into the open start tag, but those that the object itself is going to write.
void CXmlGeneratedClass::WriteAdditionalAttributes(const CAttributeCol& attributes, CXmlWriter* writer,
                                                   const CSerializationContext& context) const {
    if (attributes.GetCount() == 0) return;
    internal::CAttributeNameWriter own;
    try {
        AttributesToXml_Int(&own, context);
    } catch (const CKvException&) {
        return;  // the object's own attributes come next, fail likewise and say where
    }
    if (IsWrittenNil()) own.WriteNilAttribute();
    internal::CTreeOutput output(*writer, context);
    attributes.Write(output, &own.Names());
    output.EndAttributes();
}

bool CXmlGeneratedClass::IsWrittenNil() const {
    return IsNillableClass(*GetClassInfo()) && dynamic_cast<const INillable*>(this)->IsNil();
}

void CXmlGeneratedClass::AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const {
    try {
        const CParentElementInfo& record = *GetClassInfo();
        // A pseudo element has no element whose type could differ.
        if (record.GetHasBaseClasses() && context.GetWriteTypeAttribute() &&
            record.GetElementType() == XmlElementType_Element &&
            record.GetElementName() != EffectiveElementName()) {
            writer->WriteTypeAttribute(record.GetElementNamespace(), record.GetElementName(),
                                       ItemType_string);
        }
        ProcessAttributesToXml(context, GetClassElementInfo(), GetClassAttributeInfo(), writer);
    } catch (const CKvException& e) {
        throw CKvException("Failed to convert attributes to XML", e);
    }
}

void CXmlGeneratedClass::ProcessAttributesToXml(const CSerializationContext& context,
                                                CElementInfo** elementInfo, CAttributeInfo** attributeInfo,
                                                CXmlWriter* writer) const {
    if (attributeInfo != nullptr) {
        CAttributeInfo** record = attributeInfo;
        try {
            for (; *record != nullptr; ++record)
                (*record)->AttributeToXml(context, this, writer);
        } catch (const CKvException&) {
            internal::CWriteFailure::NoteMember(*this, (*record)->GetPropertyIndex(),
                                                '@' + (*record)->GetAttributeName(), *writer);
            throw;
        }
    }
    if (elementInfo == nullptr || !HasTaglessMembers()) return;
    for (CElementInfo** record = elementInfo; *record != nullptr; ++record) {
        if ((*record)->m_hasPseudoElement) (*record)->PseudoChildAttributeToXml(context, this, writer);
    }
}

void CXmlGeneratedClass::ProcessElementChoiceToXml(const CSerializationContext& context,
                                                   CElementInfo** elementInfo, CXmlWriter* writer,
                                                   bool suppressChoiceError) const {
    const std::uint64_t used = GetUsedProperties();
    if (elementInfo != nullptr) {
        CElementInfo** record = elementInfo;
        try {
            for (; *record != nullptr; ++record) {
                if (IsUsed(used, **record) && (*record)->ElementToXml(context, this, writer)) return;
            }
        } catch (const CKvException&) {
            internal::CWriteFailure::NoteMember(*this, (*record)->m_propertyIndex, (*record)->m_name,
                                                *writer);
            throw;
        }
    }
    if (suppressChoiceError || context.GetIgnoreMissingChoice() || DoesElementContainOptionalElements())
        return;
    throw CKvValidationException(
        "This element is a choice, and as such must have at one (and only one) valid item, currently there "
        "are none set",
        std::string());
}

bool CXmlGeneratedClass::IsUsed(std::uint64_t used, const CElementInfo& record) noexcept {
    const auto index = static_cast<unsigned>(record.m_propertyIndex);
    return index >= 64 || (used >> index & 1) != 0 || !record.IsSkippedWhenAbsent();
}

void CXmlGeneratedClass::ProcessElementSeqToXml(const CSerializationContext& context,
                                                CElementInfo** elementInfo, CXmlWriter* writer) const {
    if (elementInfo == nullptr) return;
    const std::uint64_t used = GetUsedProperties();
    KvVariant value;
    CElementInfo** at = elementInfo;
    try {
        for (; *at != nullptr; ++at) {
            CElementInfo& record = **at;
            if (record.m_writesValue) {
                if (!IsUsed(used, record)) continue;
                value.Clear();
                internal::CMemberAccess::Get(*this, record.m_propertyIndex, record.m_name, value);
                if (!value.IsValid()) {
                    if (record.IsSkippedWhenAbsent()) continue;
                } else if (record.m_isPrim ? record.WritePrim(value, writer)
                                           : record.WriteValue(context, value, writer)) {
                    continue;
                }
            }
            record.ElementToXml(context, this, writer);
        }
    } catch (const CKvException&) {
        internal::CWriteFailure::NoteMember(*this, (*at)->m_propertyIndex, (*at)->m_name, *writer);
        throw;
    }
}

}  // namespace KvXmlLib16
