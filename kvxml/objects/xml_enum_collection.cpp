#include "kvxml/objects/xml_enum_collection.h"

#include <string>

#include "kvxml/base/internal/c_text.h"

namespace KvXmlLib16 {

CXmlEnumCollection::CXmlEnumCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                                       const char* (*enumToString)(int), int (*enumFromString)(const char*))
    : CPrimitiveCollection(ItemType_i4, elementName, ns, minOccurs, maxOccurs, nullptr, -1, -1, nullptr,
                           nullptr, nullptr, nullptr, -1, -1, -1, CWhitespaceUtils::WhitespaceRule_None,
                           nullptr),
      m_enumToString(enumToString),
      m_enumFromString(enumFromString) {}

CXmlEnumCollection::CXmlEnumCollection(const CXmlEnumCollection&) = default;
CXmlEnumCollection& CXmlEnumCollection::operator=(const CXmlEnumCollection&) = default;
CXmlEnumCollection::CXmlEnumCollection(CXmlEnumCollection&&) noexcept = default;
CXmlEnumCollection& CXmlEnumCollection::operator=(CXmlEnumCollection&&) noexcept = default;
CXmlEnumCollection::~CXmlEnumCollection() = default;

void CXmlEnumCollection::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext&,
                                   bool) const {
    WriteEach(*this, writer, [&](std::int32_t value) {
        WriteItem(writer, internal::OrEmpty(m_enumToString(value)), ItemType_string);
    });
}

void CXmlEnumCollection::AddFromString(std::string_view text) {
    InsertItem(GetCount(), m_enumFromString(std::string(text).c_str()));
}

}  // namespace KvXmlLib16
