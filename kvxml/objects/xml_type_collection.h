/// Base of the collections of primitive values: reading, writing and facets of their items.
#pragma once

#include <cstdint>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {

/// Values of one primitive kind, each written as an element of its own. All items are checked against the
/// same facets.
class KVXML_EXPORT CXmlTypeCollection : public CXmlCollectionBase {
public:
    using WhitespaceRule = CWhitespaceUtils::WhitespaceRule;

    /// The name and namespace of the items' elements, their number (`maxOccurs` -1: unbounded), and their
    /// facets in the order of CPrimitiveRestrictions: texts are not set when null or empty, numbers when -1.
    CXmlTypeCollection(ItemType type, const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                       const char* pattern, std::int32_t minLength, std::int32_t maxLength,
                       const char* minInclusive, const char* maxInclusive, const char* minExclusive,
                       const char* maxExclusive, std::int32_t length, std::int32_t totalDigits,
                       std::int32_t fractionDigits, WhitespaceRule rule, const char* enumeration);
    ~CXmlTypeCollection() override;

protected:
    /// The same with facets that there are already.
    CXmlTypeCollection(ItemType type, const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                       const CPrimitiveRestrictions& restrictions);
    CXmlTypeCollection(const CXmlTypeCollection&);
    CXmlTypeCollection& operator=(const CXmlTypeCollection&);
    /// The facets are in both then.
    CXmlTypeCollection(CXmlTypeCollection&& other) noexcept;
    CXmlTypeCollection& operator=(CXmlTypeCollection&& other) noexcept;

    /// Appends the value that `text` stands for. CKvException of the conversion or the facets.
    virtual void AddFromString(std::string_view text) = 0;

    /// Adds one item for each element of the run at `cursor` that has the collection's name and namespace;
    /// returns the first other element. CKvValidationException with the path of the element for what is no
    /// simple element ("Failed to set the property value [%s]." for a value that is refused).
    CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor, const CSerializationContext& context,
                             bool suppressChoiceError) override;

    /// Writes one item.
    void WriteItem(CXmlWriter* writer, std::string_view text, ItemType type) const;
    /// Calls `write` for each of `items`, which are those of the collection, so that the path of one that
    /// fails can be told.
    template <class Items, class Write>
    void WriteEach(const Items& items, CXmlWriter* writer, Write write) const {
        std::int32_t index = 0;
        try {
            for (const auto& item : items) {
                write(item);
                ++index;
            }
        } catch (...) {
            NoteFailedItem(index, writer);
            throw;
        }
    }

    ItemType GetItemType() const noexcept { return m_itemType; }
    /// The whitespace rule is among them.
    const CPrimitiveRestrictions& GetRestrictions() const noexcept { return m_restrictions; }

private:
    friend class internal::CObjectGraph;
    void NoteFailedItem(std::int32_t index, CXmlWriter* writer) const;

    ItemType m_itemType;
    CPrimitiveRestrictions m_restrictions;
};

}  // namespace KvXmlLib16
