#include "kvxml/objects/xml_type_collection.h"

#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/member_access.h"
#include "kvxml/objects/internal/simple_element.h"
#include "kvxml/objects/internal/write_failure.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

CXmlTypeCollection::CXmlTypeCollection(ItemType type, const char* elementName, const char* ns, int minOccurs,
                                       int maxOccurs, const char* pattern, std::int32_t minLength,
                                       std::int32_t maxLength, const char* minInclusive,
                                       const char* maxInclusive, const char* minExclusive,
                                       const char* maxExclusive, std::int32_t length,
                                       std::int32_t totalDigits, std::int32_t fractionDigits,
                                       WhitespaceRule rule, const char* enumeration)
    : CXmlCollectionBase(elementName, ns, minOccurs, maxOccurs),
      m_itemType(type),
      m_restrictions(pattern, minLength, maxLength, minInclusive, maxInclusive, minExclusive, maxExclusive,
                     length, totalDigits, fractionDigits, rule, enumeration) {}

CXmlTypeCollection::CXmlTypeCollection(ItemType type, const char* elementName, const char* ns, int minOccurs,
                                       int maxOccurs, const CPrimitiveRestrictions& restrictions)
    : CXmlCollectionBase(elementName, ns, minOccurs, maxOccurs),
      m_itemType(type),
      m_restrictions(restrictions) {}

CXmlTypeCollection::CXmlTypeCollection(const CXmlTypeCollection&) = default;
CXmlTypeCollection& CXmlTypeCollection::operator=(const CXmlTypeCollection&) = default;
// Kind and facets are in both then.
CXmlTypeCollection::CXmlTypeCollection(CXmlTypeCollection&& other) noexcept
    : CXmlCollectionBase(std::move(other)),
      m_itemType(other.m_itemType),           // NOLINT(bugprone-use-after-move)
      m_restrictions(other.m_restrictions) {  // NOLINT(performance-move-constructor-init)
}
CXmlTypeCollection& CXmlTypeCollection::operator=(CXmlTypeCollection&& other) noexcept {
    m_itemType = other.m_itemType;
    m_restrictions = other.m_restrictions;
    CXmlCollectionBase::operator=(std::move(other));
    return *this;
}
CXmlTypeCollection::~CXmlTypeCollection() = default;

CXmlElement* CXmlTypeCollection::FromXml_Int(CXmlElement*, CXmlElement* cursor,
                                             const CSerializationContext& context, bool) {
    const internal::CXmlName* matched = nullptr;
    for (; cursor != nullptr; cursor = cursor->GetNextSiblingElement()) {
        if (cursor->GetName() != matched) {
            if (!internal::DoesElementNameMatch(context, *cursor, GetElementNameView(), GetItemNamespace()))
                break;
            matched = cursor->GetName();
        }
        internal::JudgeSimpleElement(context, *cursor, false);
        try {
            AddFromString(cursor->GetTextView());
        } catch (const CKvException& e) {
            internal::ThrowSetFailed(GetElementNameView(), cursor->GetXPath(), e);
        }
    }
    return cursor;
}

void CXmlTypeCollection::WriteItem(CXmlWriter* writer, std::string_view text, ItemType type) const {
    writer->WriteSimpleElement({0, type, GetElementNameView(), GetItemNamespace()}, text, false, true);
}

void CXmlTypeCollection::NoteFailedItem(std::int32_t index, CXmlWriter* writer) const {
    internal::CWriteFailure::NoteItem(*this, index, *writer);
}

}  // namespace KvXmlLib16
