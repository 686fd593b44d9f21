#include "kvxml/objects/xml_generated_class.h"

#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/ascii.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/internal/attribute_names.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"
#include "kvxml/settings/namespace_alias_map.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

using internal::EqualsIgnoreAsciiCase;
using KvXmlLib16Data::XmlElementGroupType_All;
using KvXmlLib16Data::XmlElementGroupType_Choice;
using KvXmlLib16Data::XmlElementGroupType_Sequence;
using KvXmlLib16Data::XmlElementType_Element;
using KvXmlLib16Data::XmlElementType_PseudoElement;

CKVCriticalSection CXmlGeneratedClass::m_csInit;

namespace {

/// One flag per record; in place for all but extreme classes.
class SeenFlags {
public:
    explicit SeenFlags(int count) {
        if (count > 64) m_many.resize(static_cast<std::size_t>(count));
    }
    void Set(int index) {
        if (m_many.empty()) {
            m_few |= std::uint64_t{1} << index;
        } else {
            m_many[static_cast<std::size_t>(index)] = true;
        }
    }
    /// Quick: false may be wrong.
    bool All(int count) const {
        return m_many.empty() && (count == 0 || m_few == ~std::uint64_t{0} >> (64 - count));
    }
    bool Test(int index) const {
        return m_many.empty() ? (m_few >> index & 1) != 0 : m_many[static_cast<std::size_t>(index)];
    }

private:
    std::uint64_t m_few = 0;
    std::vector<bool> m_many;
};

template <class Record>
int CountRecords(Record** records) {
    int count = 0;
    if (records != nullptr) {
        while (records[count] != nullptr)
            ++count;
    }
    return count;
}

/// The number of records, counted once per class.
template <class Record>
int KnownCount(std::atomic<std::int32_t>& known, Record** records) {
    int count = known.load(std::memory_order_relaxed);
    if (count < 0) {
        count = CountRecords(records);
        known.store(count, std::memory_order_relaxed);
    }
    return count;
}

[[noreturn]] void ThrowElementRemains(const CXmlElement& parent, const CXmlElement& remaining) {
    throw CKvValidationException(
        FormatString("Failed read all the elements held within the element [%s]. The unexpected element [%s] "
                     "remains un processed",
                     parent.GetLocalName().c_str(), remaining.GetLocalName().c_str()),
        parent.GetXPath());
}

// A name of the document remembers which record of which class claimed it. The key tells class, kind of
// record and way of matching apart.
enum class NameUse : std::uint64_t { Element = 0, Attribute = 1 };
std::uint64_t CacheKey(std::uint64_t classId, NameUse use, bool ignoreNamespaces) {
    return classId << 2 | static_cast<std::uint64_t>(use) << 1 | (ignoreNamespaces ? 1 : 0);
}

}  // namespace

CXmlGeneratedClass::CXmlGeneratedClass() noexcept = default;
CXmlGeneratedClass::CXmlGeneratedClass(const CXmlGeneratedClass& other) noexcept = default;
CXmlGeneratedClass& CXmlGeneratedClass::operator=(const CXmlGeneratedClass& other) noexcept = default;
CXmlGeneratedClass::~CXmlGeneratedClass() = default;

std::uint64_t CXmlGeneratedClass::GetUsedProperties() const {
    return ~std::uint64_t{0};
}

// --- metadata ----------------------------------------------------------------------------------------------

int CXmlGeneratedClass::GetClassElementInfoCount() const {
    return KnownCount(GetClassInfo()->m_facts.elementCount, GetClassElementInfo());
}

bool CXmlGeneratedClass::IsNillableClass(const CParentElementInfo& record) const {
    auto& known = record.m_facts.isNillable;
    std::int8_t nillable = known.load(std::memory_order_relaxed);
    if (nillable < 0) {
        nillable = dynamic_cast<const INillable*>(this) != nullptr ? 1 : 0;
        known.store(nillable, std::memory_order_relaxed);
    }
    return nillable != 0;
}

bool CXmlGeneratedClass::IsElementInList(const CSerializationContext& context,
                                         const CXmlElement* element) const {
    CElementInfo** records = GetClassElementInfo();
    const int count = GetClassElementInfoCount();
    for (int i = 0; i < count; ++i) {
        if (records[i]->IsThisElement(context, element)) return true;
    }
    return false;
}

void CXmlGeneratedClass::CleanMetaData(CParentElementInfo*& classInfo, CElementInfo**& elementInfo,
                                       CAttributeInfo**& attributeInfo) {
    delete classInfo;
    classInfo = nullptr;
    const auto destroyAll = [](auto**& records) {
        if (records == nullptr) return;
        for (auto** record = records; *record != nullptr; ++record) {
            delete *record;
            *record = nullptr;
        }
        records = nullptr;
    };
    destroyAll(elementInfo);
    destroyAll(attributeInfo);
}

// --- reading -----------------------------------------------------------------------------------------------

CXmlElement* CXmlGeneratedClass::FromXml_Int(CXmlElement* element, CXmlElement* cursor,
                                             const CSerializationContext& context, bool suppressChoiceError) {
    try {
        ReadContent(element, cursor, context, suppressChoiceError);
    } catch (const CKvException& e) {
        if (e.GetPath().empty()) {
            throw CKvValidationException("Failed to process the element.", element->GetXPath(), e);
        }
        throw CKvException(e);  // keeps the innermost path
    }
    return cursor;
}

void CXmlGeneratedClass::ReadContent(CXmlElement* element, CXmlElement*& cursor,
                                     const CSerializationContext& context, bool suppressChoiceError) {
    if (!TakeIsNew()) Init();  // a new object is as Init leaves it
    const CParentElementInfo& record = *GetClassInfo();
    if (record.GetElementType() == XmlElementType_Element) {
        const internal::CXmlName& name = *element->GetName();
        if (name.shared.IsEmpty()) name.shared = internal::CSharedName(name.local);
        SetElementName(name.shared);
    }
    ProcessAttributesFromXml(context, element, record.GetFromXmlFailIfAttributeUnknown());
    if (IsNillableClass(record)) {
        auto* const nillable = dynamic_cast<INillable*>(this);
        if (element->IsNull() && record.GetElementType() == XmlElementType_Element) nillable->SetNil(true);
        if (nillable->IsNil()) return;
    }
    switch (record.GetElementGroupType()) {
        case XmlElementGroupType_Sequence:
            cursor = ProcessElementSeqFromXml(context, element, cursor, record.GetElementType());
            break;
        case XmlElementGroupType_Choice:
            cursor = ProcessElementChoiceFromXml(context, element, cursor, record.GetElementType(),
                                                 suppressChoiceError);
            break;
        case XmlElementGroupType_All:
            cursor = ProcessElementAllFromXml(context, element, cursor, record.GetElementType());
            break;
        default:
            throw CKvException("Unknown Group Type");
    }
    if (record.GetPrimitiveValuePropertyIndex() != -1) ReadSimpleContent(*element);
}

void CXmlGeneratedClass::ReadSimpleContent(const CXmlElement& element) {
    const CParentElementInfo& record = *GetClassInfo();
    if (record.GetPrimitiveValuePropertyIndex() == -1 || record.GetPrimitiveDataType() == ItemType_Unknown)
        return;
    KvVariant value;
    if (record.GetOutputPrimitiveClassAsTextProperty()) {
        value.SetString(std::string(element.GetTextView()));
    } else {
        value.FromString(element.GetTextView(), record.GetPrimitiveDataType(),
                         CWhitespaceUtils::WhitespaceRule_None);
    }
    AccessProperty(record.GetPrimitiveValuePropertyIndex(), false, value);
}

void CXmlGeneratedClass::ReadNilAttribute(const CXmlElement& element, const CXmlAttribute& attribute) {
    auto* nillable = IsNillableClass(*GetClassInfo()) ? dynamic_cast<INillable*>(this) : nullptr;
    if (nillable == nullptr) {
        throw CKvValidationException("Invalid use of 'nil' attribute in non-nillable element.",
                                     element.GetXPath());
    }
    const std::string& value = attribute.GetValue();
    if (EqualsIgnoreAsciiCase(value, "true") || value == "1") {
        nillable->SetNil(true);
    } else if (EqualsIgnoreAsciiCase(value, "false") || value == "0") {
        nillable->SetNil(false);
    } else {
        throw CKvValidationException(
            FormatString("Unexpected Value [%s] for 'nil' Attribute found.", value.c_str()),
            attribute.GetXPath());
    }
}

void CXmlGeneratedClass::ProcessAttributesFromXml(const CSerializationContext& context, CXmlElement* element,
                                                  bool failIfAttributeUnknown) {
    CAttributeInfo** records = GetClassAttributeInfo();
    const CParentElementInfo& record = *GetClassInfo();
    const int count = KnownCount(record.m_facts.attributeCount, records);
    SeenFlags seen(count);
    const std::uint64_t key = CacheKey(record.m_id, NameUse::Attribute, context.GetIgnoreNamespaces());
    for (auto* attribute : element->GetAttributes()) {
        const internal::CXmlName& name = *attribute->GetName();
        // A name that a record took before is taken by it again: which record takes an attribute depends on
        // the name alone.
        int index = name.cacheKey == key ? static_cast<int>(name.cacheValue) : -1;
        if (index >= 0) {
            records[index]->ReadMatched(context, this, attribute);
            seen.Set(index);
            SetHasReadAttributes();
            continue;
        }
        if (attribute->IsNamespaceAttribute()) continue;
        if (attribute->IsNilAttribute()) {
            // That of an object without a tag is its owner's.
            if (record.GetElementType() == XmlElementType_Element) ReadNilAttribute(*element, *attribute);
            continue;
        }
        for (index = 0; index < count; ++index) {
            if (records[index]->AttributeFromXml(context, this, attribute)) break;
        }
        if (index < count) {
            seen.Set(index);
            SetHasReadAttributes();
            name.cacheKey = key;
            name.cacheValue = static_cast<std::uint32_t>(index);
        } else if (failIfAttributeUnknown && !context.GetIgnoreUnknownAttributes()) {
            throw CKvValidationException("Unexpected Attribute found.", attribute->GetXPath());
        }
    }
    if (seen.All(count)) return;  // a record has nothing to say about an attribute that was found
    for (int i = 0; i < count; ++i)
        records[i]->Validate(context, seen.Test(i));
}

int CXmlGeneratedClass::FindElementRecord(const CSerializationContext& context, const CXmlElement& element,
                                          int from, CElementInfo** records, int count, std::uint64_t key) {
    const internal::CXmlName& name = *element.GetName();
    if (name.cacheKey == key && static_cast<int>(name.cacheValue) >= from) {
        return static_cast<int>(name.cacheValue);
    }
    const auto find = [&](int first) {
        while (first < count && !records[first]->IsThisElement(context, &element))
            ++first;
        return first;
    };
    if (name.cacheKey != key) {
        const int first = find(0);
        name.cacheKey = key;
        name.cacheValue = static_cast<std::uint32_t>(first);
        if (first >= from) return first;
    }
    return find(from);
}

/// Passes over nulls of JSON that mean that a member is not there; any other element is one too many.
void CXmlGeneratedClass::CheckNoneRemains(const CSerializationContext& context, const CXmlElement& parent,
                                          CXmlElement*& cursor) const {
    CElementInfo** records = GetClassElementInfo();
    const int count = GetClassElementInfoCount();
    while (cursor != nullptr) {
        CXmlElement* const remaining = cursor;
        for (int i = 0; i < count && cursor == remaining; ++i) {
            if (records[i]->IsThisElement(context, cursor)) records[i]->PassNull(this, &cursor);
        }
        if (cursor == remaining) ThrowElementRemains(parent, *remaining);
    }
}

/// Offers elements to the records of a choice or an all-group. Records that go by the name are only asked for
/// elements of their name.
class CXmlGeneratedClass::RecordOfferer {
public:
    RecordOfferer(CXmlGeneratedClass& owner, const CSerializationContext& context, CXmlElement* parent,
                  XmlElementType type)
        : m_owner(owner),
          m_context(context),
          m_parent(parent),
          m_type(type),
          m_records(owner.GetClassElementInfo()),
          m_count(owner.GetClassElementInfoCount()),
          m_ns(owner.GetClassInfo()->GetElementNamespace().c_str()),
          m_key(CacheKey(owner.GetClassInfo()->m_id, NameUse::Element, context.GetIgnoreNamespaces())) {}

    int Count() const noexcept { return m_count; }
    CElementInfo& Record(int index) const noexcept { return *m_records[index]; }

    /// Whether the record read what is at the cursor, which then is after it.
    bool Offer(int index, CXmlElement** cursor) {
        CElementInfo& record = *m_records[index];
        if (record.m_claimsByName) {
            if (*cursor == nullptr) return false;
            if (*cursor != m_claimed) {
                m_claimed = *cursor;
                m_claimant = FindElementRecord(m_context, *m_claimed, 0, m_records, m_count, m_key);
            }
            // A later record may have the same name.
            if (m_claimant > index || (m_claimant < index && !record.IsThisElement(m_context, *cursor)))
                return false;
        }
        return record.ElementFromXml(m_context, &m_owner, m_parent, cursor, m_ns, m_type);
    }

private:
    CXmlGeneratedClass& m_owner;
    const CSerializationContext& m_context;
    CXmlElement* m_parent;
    XmlElementType m_type;
    CElementInfo** m_records;
    int m_count;
    const char* m_ns;
    std::uint64_t m_key;
    const CXmlElement* m_claimed = nullptr;  // the element that `m_claimant` was found for
    int m_claimant = 0;
};

bool CXmlGeneratedClass::DoesElementContainOptionalElements() const {
    CElementInfo** records = GetClassElementInfo();
    const int count = GetClassElementInfoCount();
    for (int i = 0; i < count; ++i) {
        if (records[i]->LetsChoiceBeEmpty(this)) return true;
    }
    return false;
}

CXmlElement* CXmlGeneratedClass::ProcessElementChoiceFromXml(const CSerializationContext& context,
                                                             CXmlElement* parent, CXmlElement* cursor,
                                                             XmlElementType type, bool suppressChoiceError) {
    CXmlElement* const first = cursor;
    const bool ignoreUnknown = context.GetIgnoreUnknownElements();
    RecordOfferer offerer(*this, context, parent, type);
    bool chosen = false;
    for (;;) {
        const CXmlElement* const before = cursor;
        for (int i = 0; i < offerer.Count() && !chosen; ++i)
            chosen = offerer.Offer(i, &cursor);
        if (!chosen && cursor != before) continue;  // a null was passed
        if (chosen || cursor == nullptr || !ignoreUnknown || type != XmlElementType_Element) break;
        cursor = cursor->GetNextSiblingElement();
        if (cursor == nullptr) break;
    }
    if (type != XmlElementType_Element) {
        if (chosen || suppressChoiceError) return cursor;
        if (!DoesElementContainOptionalElements() && !context.GetIgnoreMissingChoice()) SetIncomplete();
        return type == XmlElementType_PseudoElement && ignoreUnknown ? first : cursor;
    }
    if (!chosen && !suppressChoiceError && !context.GetIgnoreMissingChoice() &&
        !DoesElementContainOptionalElements()) {
        throw CKvValidationException(
            FormatString("No child elements within the element [%s] were populated. The element represents a "
                         "choice, so one and only one element should be populated. The element contained no "
                         "sutable child elements",
                         parent->GetLocalName().c_str()),
            parent->GetXPath());
    }
    if (cursor != nullptr && !ignoreUnknown) CheckNoneRemains(context, *parent, cursor);
    return cursor;
}

CXmlElement* CXmlGeneratedClass::ProcessElementAllFromXml(const CSerializationContext& context,
                                                          CXmlElement* parent, CXmlElement* cursor,
                                                          XmlElementType type) {
    CXmlElement* const first = cursor;
    RecordOfferer offerer(*this, context, parent, type);
    const int count = offerer.Count();
    SeenFlags found(count);
    // Each pass offers what is at the cursor to the members not found yet, until one brings nothing.
    for (const CXmlElement* before = nullptr; cursor != nullptr && cursor != before;) {
        before = cursor;
        for (int i = 0; i < count; ++i) {
            if (!found.Test(i) && offerer.Offer(i, &cursor)) found.Set(i);
        }
    }
    for (int i = 0; i < count; ++i) {
        if (!offerer.Record(i).Validate(context, this, found.Test(i), type == XmlElementType_Element)) {
            SetIncomplete();
            return first;
        }
    }
    if (type == XmlElementType_Element && cursor != nullptr && !context.GetIgnoreUnknownElements()) {
        CheckNoneRemains(context, *parent, cursor);
    }
    return cursor;
}

CXmlElement* CXmlGeneratedClass::ProcessElementSeqFromXml(const CSerializationContext& context,
                                                          CXmlElement* parent, CXmlElement* cursor,
                                                          XmlElementType type) {
    CXmlElement* const first = cursor;
    const CParentElementInfo& classRecord = *GetClassInfo();
    CElementInfo** records = GetClassElementInfo();
    const int count = KnownCount(classRecord.m_facts.elementCount, records);
    const char* ns = classRecord.GetElementNamespace().c_str();
    const std::uint64_t key = CacheKey(classRecord.m_id, NameUse::Element, context.GetIgnoreNamespaces());
    int start = 0;
    for (bool isAgain = false;; isAgain = true) {
        const CXmlElement* claimed = nullptr;  // the element that `claimant` was found for
        int claimant = count;
        for (int i = start; i < count; ++i) {
            CElementInfo& record = *records[i];
            const bool isSkippable = record.m_skippedWhenAbsent.load(std::memory_order_relaxed);
            if (cursor == nullptr) {
                if (isSkippable) continue;
            } else if (isSkippable || record.m_readsMatched) {
                if (claimed != cursor || claimant < i) {
                    const internal::CXmlName& name = *cursor->GetName();
                    const bool isKnown = name.cacheKey == key && static_cast<int>(name.cacheValue) >= i;
                    claimant = isKnown ? static_cast<int>(name.cacheValue)
                                       : FindElementRecord(context, *cursor, i, records, count, key);
                    claimed = cursor;
                }
                if (claimant == i && record.m_readsMatched) {
                    if (record.m_isPrim) {
                        record.ElementFromXmlPrim(context, this, &cursor);
                    } else {
                        record.ReadMatched(context, this, &cursor);
                    }
                    continue;
                }
                if (claimant != i && isSkippable) continue;
            }
            const CXmlElement* const before = cursor;
            KvVariant had;
            if (isAgain && record.m_hasPseudoElement) {
                ReadProperty(record.m_propertyIndex, had);
                had.Own();
            }
            while (!record.ElementFromXml(context, this, parent, &cursor, ns, type)) {
                if (!context.GetIgnoreUnknownElements() || cursor == nullptr) {
                    SetIncomplete();
                    return first;
                }
                cursor = cursor->GetNextSiblingElement();
            }
            // A member without a tag that found nothing more stays as it was.
            if (cursor == before && had.PeekXmlObject() != nullptr)
                AccessProperty(record.m_propertyIndex, false, had);
        }
        if (type != XmlElementType_Element || cursor == nullptr) return cursor;
        if (!context.GetIgnoreUnknownElements()) {
            CheckNoneRemains(context, *parent, cursor);
            return nullptr;
        }
        cursor = cursor->GetNextSiblingElement();
        if (cursor == nullptr) return nullptr;
        // Only the last member, typically a repeating one, is offered what follows an unknown element.
        start = count > 0 ? count - 1 : 0;
    }
}

// --- writing -----------------------------------------------------------------------------------------------

void CXmlGeneratedClass::ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                                   const CSerializationContext& context, bool suppressChoiceError) const {
    try {
        WriteContent(writer, isRoot, namespaceUri, context, suppressChoiceError);
    } catch (const CKvException& e) {
        throw CKvValidationException(
            FormatString("Failed to convert the element [%s] to XML", GetElementNameText()), std::string(),
            e);
    }
}

std::string_view CXmlGeneratedClass::EffectiveElementName() const {
    const std::string_view name = GetElementNameView();
    return name.empty() ? std::string_view(GetClassInfo()->GetElementName()) : name;
}

void CXmlGeneratedClass::WriteContent(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                                      const CSerializationContext& context, bool suppressChoiceError) const {
    const CParentElementInfo& record = *GetClassInfo();
    const bool hasTag = record.GetElementType() == XmlElementType_Element;
    if (hasTag) {
        if (isRoot) {
            for (const std::string& instruction : context.GetProcessingInstructions()) {
                writer->WriteRaw(instruction);
            }
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
        writer->WriteStartElement(EffectiveElementName(), namespaceUri);
        if (isRoot) {
            if (const CAttributeCol* attributes = context.FindAdditionalRootAttributes())
                WriteAdditionalAttributes(*attributes, writer, context);
        }
    }
    // The owner's start tag has the attributes of a pseudo element already.
    if (record.GetElementType() != XmlElementType_PseudoElement) AttributesToXml_Int(writer, context);
    const std::string& schema = context.GetInLineSchemaRef();
    const bool hasSchema = isRoot && !schema.empty();
    const bool isSchemaContent = hasSchema && internal::BeginsAsMarkup(schema);
    if (hasSchema && !isSchemaContent) writer->WriteRawAfterSpace(schema);
    if (IsWrittenNil()) {
        writer->WriteNilAttribute();
    } else {
        const int valueIndex = record.GetPrimitiveValuePropertyIndex();
        if (isSchemaContent) writer->WriteRawContent(schema, valueIndex == -1);
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
    AttributesToXml_Int(&own, context);
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
        for (CAttributeInfo** record = attributeInfo; *record != nullptr; ++record) {
            (*record)->AttributeToXml(context, this, writer);
        }
    }
    auto& known = GetClassInfo()->m_facts.hasPseudoElements;
    if (known.load(std::memory_order_relaxed) == 0 || elementInfo == nullptr) return;
    bool anyPseudo = false;
    for (CElementInfo** record = elementInfo; *record != nullptr; ++record) {
        if ((*record)->m_hasPseudoElement) {
            anyPseudo = true;
            (*record)->PseudoChildAttributeToXml(context, this, writer);
        }
    }
    known.store(anyPseudo ? 1 : 0, std::memory_order_relaxed);
}

void CXmlGeneratedClass::ProcessElementChoiceToXml(const CSerializationContext& context,
                                                   CElementInfo** elementInfo, CXmlWriter* writer,
                                                   bool suppressChoiceError) const {
    const std::uint64_t used = GetUsedProperties();
    if (elementInfo != nullptr) {
        for (CElementInfo** record = elementInfo; *record != nullptr; ++record) {
            if (IsUsed(used, **record) && (*record)->ElementToXml(context, this, writer)) return;
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
    for (CElementInfo** at = elementInfo; *at != nullptr; ++at) {
        CElementInfo& record = **at;
        if (record.m_writesValue) {
            if (!IsUsed(used, record)) continue;
            value.Clear();
            try {
                ReadProperty(record.m_propertyIndex, value);
            } catch (const CKvException& e) {
                record.ThrowGetFailed(e);
            }
            if (!value.IsValid()) {
                if (record.IsSkippedWhenAbsent()) continue;
            } else if (record.m_isPrim ? record.WritePrim(value, writer)
                                       : record.WriteValue(context, value, writer)) {
                continue;
            }
        }
        record.ElementToXml(context, this, writer);
    }
}

}  // namespace KvXmlLib16
