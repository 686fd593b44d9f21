/// Simple values of generated classes: from text into their places and back, checked.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/class_table.h"
#include "kvxml/objects/primitive_collections.h"
#include "kvxml/types/internal/item_traits.h"
#include "kvxml/types/internal/whitespace.h"
#include "kvxml/types/primitive_restrictions.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

class CTableClass;

namespace internal {

/// A simple type as the runtime uses it. Never changes; shared by all threads. Errors name the element or
/// attribute `name` that the value belongs to.
class CValueRecord {
public:
    explicit CValueRecord(const CValueType& type);
    CValueRecord(const CValueRecord&) = delete;
    CValueRecord& operator=(const CValueRecord&) = delete;

    /// Of the value; of lists, that of an item. Enumerations are numbers.
    ItemType Item() const noexcept { return m_item; }
    /// For writers: enumerations and lists are texts.
    ItemType WrittenAs() const noexcept {
        return IsList() || m_type.enumeration != nullptr ? ItemType_string : m_item;
    }
    /// Any text, which only the whitespace rule changes.
    bool IsPlainText() const noexcept { return m_isPlainText; }
    std::string_view Normalized(std::string_view text, std::string& scratch) const {
        return ApplyRule(m_rule, text, scratch);
    }
    bool IsList() const noexcept { return m_list != nullptr; }
    const CPrimitiveRestrictions& Restrictions() const noexcept { return m_restrictions; }

    /// The value that the text stands for, which need not be a list. `T` is the C++ type of `Item`.
    template <class T>
    T Parse(std::string_view name, std::string_view text) const;
    /// The same without the facets.
    template <class T>
    T Convert(std::string_view name, std::string_view text) const;
    /// The text that patterns of the type are matched against; empty when there are none.
    std::string_view Lexical(std::string_view text, std::string& scratch) const {
        return m_restrictions.HasPattern() ? ApplyRule(m_rule, text, scratch) : std::string_view();
    }
    /// The value as text: a view of it or of `scratch`.
    template <class T>
    std::string_view Format(std::string_view name, const T& value, std::string& scratch) const;

    /// Of the items of a list; null: it is none.
    const CValueRecord* Items() const noexcept { return m_list.get(); }
    CSmartPtr<CXmlCollectionBase> ParseList(std::string_view name, std::string_view text) const;
    /// `scratch` may be what the result is in.
    std::string_view FormatList(std::string_view name, const CXmlCollectionBase& list,
                                std::string& scratch) const;
    /// Throws unless the text is a value of the type, list or not.
    void Check(std::string_view name, std::string_view text) const;

private:
    template <class T>
    void CheckFacets(std::string_view name, const T& value, std::string_view text) const;
    void CheckUnion(std::string_view name, std::string_view text) const;
    void CheckList(std::string_view name, std::int32_t count, std::string_view text) const;
    std::int32_t FindText(std::string_view text) const;
    const char* TextOfNumber(std::int32_t number) const;

    const CValueType& m_type;
    ItemType m_item;
    CWhitespaceUtils::WhitespaceRule m_rule;
    bool m_isPlainText;
    CPrimitiveRestrictions m_restrictions;  // of lists, the patterns
    std::unique_ptr<CValueRecord> m_list;   // of the items
    std::vector<std::unique_ptr<CValueRecord>> m_members;
    std::vector<std::pair<std::string_view, std::int32_t>> m_texts;  // of the enumeration, sorted
    std::unordered_set<std::string> m_lists;  // that the facets allow, as they are written
};

/// The values of a repeated member or of a list, as elements or as one text.
template <class T>
class CTableValues final : public CPrimitiveCollection<T> {
public:
    /// `type` is that of the values and must outlive the collection.
    CTableValues(const CValueRecord& type, const char* name, const char* ns, int minOccurs, int maxOccurs)
        : CPrimitiveCollection<T>(type.Item(), name, ns, minOccurs, maxOccurs, type.Restrictions()),
          m_type(type) {}
    /// As elements of the name.
    void Write(CXmlWriter& writer, const CXmlWriter::SimpleName& name) const {
        this->WriteEach(*this, &writer, [&](const T& value) {
            writer.WriteSimpleElement(name, m_type.Format(name.localName, value, writer.ScratchText()), false,
                                      true);
        });
    }
    void AddText(std::string_view name, std::string_view text) {
        std::string scratch;
        this->InsertItem(this->GetCount(), m_type.Convert<T>(name, text), m_type.Lexical(text, scratch));
    }

protected:
    void ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext&, bool) const override {
        Write(*writer, {0, m_type.WrittenAs(), this->GetElementNameView(), this->GetItemNamespace()});
    }
    void AddFromString(std::string_view text) override { AddText(this->GetElementNameView(), text); }

private:
    const CValueRecord& m_type;
};

/// Calls `action` with a null pointer of the C++ type that values of the kind are held as.
template <class Action>
void VisitHeldType(ItemType type, Action action) {
    VisitItemType(type, [&](auto traits) {
        using T = typename decltype(traits)::Type;
        if constexpr (!std::is_same_v<T, char>) action(static_cast<T*>(nullptr));
    });
}

/// An empty collection of values of the type.
CSmartPtr<CXmlCollectionBase> MakeValues(const CValueRecord& type, const char* name, const char* ns,
                                         int minOccurs, int maxOccurs);
/// Writes the values of a collection that MakeValues made.
void WriteValues(const CXmlCollectionBase& list, ItemType item, const CXmlWriter::SimpleName& name,
                 CXmlWriter& writer);
/// Appends the value of the text to a collection that MakeValues made.
void AppendText(CXmlCollectionBase& list, ItemType item, std::string_view name, std::string_view text);

template <class T>
constexpr CMemberPlace::Kind PlaceKindOf() noexcept {
#define KVXML_PLACE(kind, type) \
    if constexpr (std::is_same_v<T, type>) return CMemberPlace::Kind::kind;
    KVXML_PLACES(KVXML_PLACE)
#undef KVXML_PLACE
    return CMemberPlace::Kind::None;
}
/// The data member at the place; `Object` is CTableClass, const or not.
template <class T, class Object>
auto& PlaceIn(const CMemberPlace& place, Object& object) noexcept {
#define KVXML_PLACE(kind, type) \
    if constexpr (std::is_same_v<T, type>) return place.kind(object);
    KVXML_PLACES(KVXML_PLACE)
#undef KVXML_PLACE
}
const void* AddressOf(const CMemberPlace& place, const CTableClass& object) noexcept;

}  // namespace internal
}  // namespace KvXmlLib16
