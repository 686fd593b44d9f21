/// Collection of the values of an enumeration, for repeated members of enumeration type.
///
///     CXmlEnumCollection colors("color", "urn:example", 0, -1, ColorToString, ColorFromString);
///     colors.Add(Color_red);
#pragma once

#include <cstdint>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/objects/primitive_collections.h"

namespace KvXmlLib16 {

/// Holds the numbers of the values; reads and writes their texts. Numbers are only checked when they are
/// written, by the function that makes the text.
class KVXML_EXPORT CXmlEnumCollection : public CPrimitiveCollection<std::int32_t> {
public:
    /// `maxOccurs` -1: unbounded. `enumFromString` throws CKvInvalidValueException for a text that is none of
    /// the enumeration.
    CXmlEnumCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                       const char* (*enumToString)(int), int (*enumFromString)(const char*));
    CXmlEnumCollection(const CXmlEnumCollection&);
    CXmlEnumCollection& operator=(const CXmlEnumCollection&);
    CXmlEnumCollection(CXmlEnumCollection&&) noexcept;
    CXmlEnumCollection& operator=(CXmlEnumCollection&&) noexcept;
    ~CXmlEnumCollection() override;

protected:
    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    void AddFromString(std::string_view text) override;

private:
    const char* (*m_enumToString)(int);
    int (*m_enumFromString)(const char*);
};

}  // namespace KvXmlLib16
