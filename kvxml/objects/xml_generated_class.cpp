#include "kvxml/objects/xml_generated_class.h"

#include <optional>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/attribute_info.h"
#include "kvxml/objects/element_info.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/simple_element.h"
#include "kvxml/objects/internal/tagless_reads.h"
#include "kvxml/objects/nillable.h"
#include "kvxml/objects/parent_element_info.h"
#include "kvxml/objects/variant.h"
#include "kvxml/platform/critical_section.h"
#include "kvxml/settings/serialization_context.h"
#include "kvxml/types/format_string.h"
#include "kvxml/xml/internal/xml_name.h"
#include "kvxml/xml/xml_attribute.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

using internal::CTaglessReads;
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
    /// True when every flag is set, as far as a glance can tell: of more than 64 flags it says false.
    bool AreAllSet(int count) const {
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
CXmlGeneratedClass::CXmlGeneratedClass(CXmlGeneratedClass&& other) noexcept = default;
CXmlGeneratedClass& CXmlGeneratedClass::operator=(CXmlGeneratedClass&& other) noexcept = default;
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

bool CXmlGeneratedClass::HasTaglessMembers() const {
    auto& known = GetClassInfo()->m_facts.hasPseudoElements;
    std::int8_t has = known.load(std::memory_order_relaxed);
    if (has < 0) {
        has = 0;
        CElementInfo** const records = GetClassElementInfo();
        for (int i = 0, count = GetClassElementInfoCount(); i < count; ++i)
            if (records[i]->m_hasPseudoElement) has = 1;
        known.store(has, std::memory_order_relaxed);
    }
    return has != 0;
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
    const CParentElementInfo& record = *GetClassInfo();
    const ReadStart start = BeginRead();
    if (!start.isNew || !record.GetNewIsAsInit()) Init();
    if (record.GetElementType() == XmlElementType_Element) {
        const internal::CXmlName& name = *element->GetName();
        if (name.shared.IsEmpty()) name.shared = internal::CSharedName(name.local);
        SetElementName(name.shared);
    }
    // The attributes in the parent's tag have been looked at by the first try; those that follow want them
    // only when they find something.
    const bool attributesLast = start.isRetried;
    const auto readAttributes = [&] {
        ProcessAttributesFromXml(context, element, record.GetFromXmlFailIfAttributeUnknown());
    };
    if (!attributesLast) readAttributes();
    if (IsNillableClass(record)) {
        auto* const nillable = dynamic_cast<INillable*>(this);
        if (element->IsNull() && record.GetElementType() == XmlElementType_Element) nillable->SetNil(true);
        if (nillable->IsNil()) return;
    }
    CXmlElement* const first = cursor;
    if (context.GetIgnoreUnknownElements() && HasTaglessMembers() && CTaglessReads::Of(element) == nullptr) {
        const CTaglessReads reads(*element);
        cursor = ReadGroup(element, cursor, context, suppressChoiceError);
    } else {
        cursor = ReadGroup(element, cursor, context, suppressChoiceError);
    }
    if (attributesLast && cursor != first) readAttributes();
    if (record.GetPrimitiveValuePropertyIndex() != -1) ReadSimpleContent(*element);
}

CXmlElement* CXmlGeneratedClass::ReadGroup(CXmlElement* element, CXmlElement* cursor,
                                           const CSerializationContext& context, bool suppressChoiceError) {
    const CParentElementInfo& record = *GetClassInfo();
    const XmlElementType type = record.GetElementType();
    switch (record.GetElementGroupType()) {
        case XmlElementGroupType_Sequence:
            return ProcessElementSeqFromXml(context, element, cursor, type);
        case XmlElementGroupType_Choice:
            return ProcessElementChoiceFromXml(context, element, cursor, type, suppressChoiceError);
        case XmlElementGroupType_All:
            return ProcessElementAllFromXml(context, element, cursor, type);
        default:
            throw CKvException("Unknown Group Type");
    }
}

void CXmlGeneratedClass::SetIncompleteAt(const CXmlElement* parent, const CXmlElement* at) noexcept {
    SetIncomplete();
    if (CTaglessReads* const reads = CTaglessReads::Of(parent)) reads->SetHalt(at);
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
    if (nillable == nullptr) internal::ThrowNilNotAllowed(element);
    const std::optional<bool> isNil = internal::ToNil(attribute.GetValueView());
    if (!isNil.has_value()) internal::ThrowUnexpectedNil(attribute);
    nillable->SetNil(*isNil);
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
    if (seen.AreAllSet(count)) return;  // a record has nothing to say about an attribute that was found
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
        if (!DoesElementContainOptionalElements() && !context.GetIgnoreMissingChoice())
            SetIncompleteAt(parent, first);
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
            SetIncompleteAt(parent, cursor);
            return first;
        }
    }
    if (type == XmlElementType_Element && cursor != nullptr && !context.GetIgnoreUnknownElements()) {
        CheckNoneRemains(context, *parent, cursor);
    }
    return cursor;
}

/// Reads the members of a sequence, one record after the other.
class CXmlGeneratedClass::SequenceReader {
public:
    SequenceReader(CXmlGeneratedClass& owner, const CSerializationContext& context, CXmlElement* parent,
                   CXmlElement* cursor, XmlElementType type)
        : m_owner(owner), m_context(context), m_parent(parent), m_cursor(cursor), m_type(type) {
        const CParentElementInfo& record = *owner.GetClassInfo();
        m_records = owner.GetClassElementInfo();
        m_count = KnownCount(record.m_facts.elementCount, m_records);
        m_ns = record.GetElementNamespace().c_str();
        m_key = CacheKey(record.m_id, NameUse::Element, context.GetIgnoreNamespaces());
    }

    int Count() const noexcept { return m_count; }
    CXmlElement* Cursor() const noexcept { return m_cursor; }
    /// After a failure: where the next try may begin.
    const CXmlElement* Halt() const noexcept { return m_halt; }
    void Skip() noexcept { m_cursor = m_cursor->GetNextSiblingElement(); }

    /// Reads the members from the record `start` on. `isAgain`: they have been read before, from earlier
    /// elements. False when something is missing.
    bool Read(int start, bool isAgain) {
        m_claimed = nullptr;
        for (int i = start; i < m_count; ++i) {
            CElementInfo& record = *m_records[i];
            if (!IsSettled(record, i) && !Ask(record, isAgain)) return false;
        }
        return true;
    }

private:
    /// Deals with the member as far as that takes nothing but the name of the element at the cursor: reads it
    /// or passes over it.
    bool IsSettled(CElementInfo& record, int index) {
        const bool isSkippable = record.m_skippedWhenAbsent.load(std::memory_order_relaxed);
        if (m_cursor == nullptr) return isSkippable;
        if (!isSkippable && !record.m_readsMatched) return false;
        if (m_claimed != m_cursor || m_claimant < index) {
            const internal::CXmlName& name = *m_cursor->GetName();
            const bool isKnown = name.cacheKey == m_key && static_cast<int>(name.cacheValue) >= index;
            m_claimant = isKnown ? static_cast<int>(name.cacheValue)
                                 : FindElementRecord(m_context, *m_cursor, index, m_records, m_count, m_key);
            m_claimed = m_cursor;
        }
        if (m_claimant != index) return isSkippable;
        if (!record.m_readsMatched) return false;
        if (record.m_isPrim) {
            record.ElementFromXmlPrim(m_context, &m_owner, &m_cursor);
        } else {
            record.ReadMatched(m_context, &m_owner, &m_cursor);
        }
        return true;
    }

    /// Has the record read what it can, after unknown elements too where these are ignored.
    bool Ask(CElementInfo& record, bool isAgain) {
        const CXmlElement* const before = m_cursor;
        KvVariant had;
        if (isAgain && record.m_hasPseudoElement) {
            m_owner.ReadProperty(record.m_propertyIndex, had);
            had.Own();
        }
        while (!record.ElementFromXml(m_context, &m_owner, m_parent, &m_cursor, m_ns, m_type)) {
            if (!m_context.GetIgnoreUnknownElements()) return false;
            if (m_type != XmlElementType_Element) {
                CTaglessReads* const reads = CTaglessReads::Of(m_parent);
                if (reads != nullptr && reads->TakeOverflow(m_halt)) return false;
            }
            if (m_cursor == nullptr) return false;
            Skip();
        }
        // A member without a tag that found nothing more stays as it was.
        if (m_cursor == before && had.PeekXmlObject() != nullptr)
            m_owner.AccessProperty(record.m_propertyIndex, false, had);
        return true;
    }

    CXmlGeneratedClass& m_owner;
    const CSerializationContext& m_context;
    CXmlElement* m_parent;
    CXmlElement* m_cursor;
    const CXmlElement* m_halt = nullptr;
    XmlElementType m_type;
    CElementInfo** m_records;
    int m_count;
    const char* m_ns;
    std::uint64_t m_key;
    const CXmlElement* m_claimed = nullptr;  // the element that `m_claimant` was found for
    int m_claimant = 0;
};

CXmlElement* CXmlGeneratedClass::ProcessElementSeqFromXml(const CSerializationContext& context,
                                                          CXmlElement* parent, CXmlElement* cursor,
                                                          XmlElementType type) {
    SequenceReader reader(*this, context, parent, cursor, type);
    int start = 0;
    for (bool isAgain = false;; isAgain = true) {
        if (!reader.Read(start, isAgain)) {
            SetIncompleteAt(parent, reader.Halt());
            return cursor;
        }
        if (type != XmlElementType_Element || reader.Cursor() == nullptr) return reader.Cursor();
        if (!context.GetIgnoreUnknownElements()) {
            CXmlElement* remaining = reader.Cursor();
            CheckNoneRemains(context, *parent, remaining);
            return nullptr;
        }
        reader.Skip();
        if (reader.Cursor() == nullptr) return nullptr;
        // Only the last member, typically a repeating one, is offered what follows an unknown element.
        start = reader.Count() > 0 ? reader.Count() - 1 : 0;
    }
}

}  // namespace KvXmlLib16
