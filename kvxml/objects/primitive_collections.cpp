#include "kvxml/objects/primitive_collections.h"

#include <type_traits>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/conversions.h"
#include "kvxml/types/internal/whitespace.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16 {

// --- date kinds -------------------------------------------------------------------------------------------

namespace {

struct DateKind {
    ItemType type;
    CDateTime::DTType dateType;
    CDateTime (*fromString)(std::string_view, CWhitespaceUtils::WhitespaceRule);
    const char* message;
};

constexpr DateKind kDateKinds[] = {
    {ItemType_date, CDateTime::dt_date, CConversions::dateFromString,
     "Dates added to this collection must be of type dt_date"},
    {ItemType_datetime, CDateTime::dt_dateTime, CConversions::datetimeFromString,
     "Dates added to this collection must be of type dt_dateTime"},
    {ItemType_time, CDateTime::dt_time, CConversions::timeFromString,
     "Dates added to this collection must be of type dt_time"},
    {ItemType_yearMonth, CDateTime::dt_gYearMonth, CConversions::yearMonthFromString,
     "Dates added to this collection must be of type dt_gYearMonth"},
    {ItemType_monthDay, CDateTime::dt_gMonthDay, CConversions::monthDayFromString,
     "Dates added to this collection must be of type dt_gMonthDay"},
};

const DateKind& DateKindOf(ItemType type) {
    for (const DateKind& kind : kDateKinds) {
        if (kind.type == type) return kind;
    }
    throw CKvInvalidParamException("A collection of dates must have a date kind");
}

}  // namespace

// --- all types ---------------------------------------------------------------------------------------------

template <class T>
CPrimitiveCollection<T>::CPrimitiveCollection(const CPrimitiveCollection&) = default;
template <class T>
CPrimitiveCollection<T>& CPrimitiveCollection<T>::operator=(const CPrimitiveCollection&) = default;
template <class T>
CPrimitiveCollection<T>::CPrimitiveCollection(CPrimitiveCollection&&) noexcept = default;
template <class T>
CPrimitiveCollection<T>& CPrimitiveCollection<T>::operator=(CPrimitiveCollection&&) noexcept = default;
template <class T>
CPrimitiveCollection<T>::~CPrimitiveCollection() = default;

template <class T>
void CPrimitiveCollection<T>::InsertItem(int index, T value, std::string_view lexical) {
    if constexpr (std::is_same_v<T, CDateTime>) {
        const DateKind& kind = DateKindOf(GetItemType());
        if (value.GetType() != kind.dateType) throw CKvInvalidParamException(kind.message);
    }
    const auto data = [&value] { return const_cast<void*>(static_cast<const void*>(&value)); };
    if (HasListeners()) {
        const std::int32_t count = GetCount();
        FireOnCollectionAdd(data());
        if (index == count || (index >= 0 && index < count && index > GetCount())) index = GetCount();
    }
    if (index < 0 || index > GetCount()) throw CKvInvalidParamException("Index out of range");
    const CPrimitiveRestrictions& facets = GetRestrictions();
    if (!facets.IsEmpty()) {
        if constexpr (std::is_same_v<T, std::string>) {
            facets.Check(GetElementNameView(), GetItemType(), value);
        } else {
            facets.Check(GetElementNameView(), GetItemType(), value, lexical);
        }
    }
    const auto position = static_cast<std::size_t>(index);
    if (!HasListeners()) {
        m_items.Insert(position, std::move(value));
        return;
    }
    m_items.Insert(position, value);
    FireOnCollectionAddComplete(data());
    FireOnCollectionChange();
}

template <class T>
void CPrimitiveCollection<T>::AppendRead(T value, std::string_view text) {
    constexpr bool kIsDate = std::is_same_v<T, CDateTime>;  // whose kind is always checked
    if (!kIsDate && GetRestrictions().IsEmpty() && !HasListeners())
        return m_items.Insert(m_items.Size(), std::move(value));
    if (!GetRestrictions().HasPattern()) return InsertItem(GetCount(), std::move(value));
    std::string scratch;
    const WhitespaceRule rule = GetRestrictions().GetWhitespaceRule();
    InsertItem(GetCount(), std::move(value), internal::ApplyRule(rule, text, scratch));
}

template <class T>
void CPrimitiveCollection<T>::Remove(int index) {
    if (HasListeners()) {
        const bool wasValid = index >= 0 && index < GetCount();
        FireOnCollectionRemove(index);
        if (wasValid && index >= GetCount()) return;
    }
    CheckItemIndex(index);
    m_items.Remove(static_cast<std::size_t>(index));
    FireOnCollectionRemoveComplete(index);
    FireOnCollectionChange();
}

template <class T>
void CPrimitiveCollection<T>::Clear() {
    for (std::int32_t left = GetCount(); left > 0 && GetCount() > 0; --left)
        Remove(0);
}

template class CPrimitiveCollection<std::int8_t>;
template class CPrimitiveCollection<std::int16_t>;
template class CPrimitiveCollection<std::int32_t>;
template class CPrimitiveCollection<std::int64_t>;
template class CPrimitiveCollection<std::uint8_t>;
template class CPrimitiveCollection<std::uint16_t>;
template class CPrimitiveCollection<std::uint32_t>;
template class CPrimitiveCollection<std::uint64_t>;
template class CPrimitiveCollection<float>;
template class CPrimitiveCollection<double>;
template class CPrimitiveCollection<bool>;
template class CPrimitiveCollection<std::string>;
template class CPrimitiveCollection<CDecimal>;
template class CPrimitiveCollection<CBigInteger>;
template class CPrimitiveCollection<CDateTimeSpan>;
template class CPrimitiveCollection<CBinaryData>;
template class CPrimitiveCollection<CDateTime>;

// --- the kinds ---------------------------------------------------------------------------------------------

namespace {

template <auto fromString, auto append>
struct Conversions {
    static constexpr auto kFromString = fromString;
    template <class T>
    static void Append(std::string& out, const T& value) {
        if constexpr (std::is_invocable_v<decltype(append), std::string&, const T&>) {
            append(out, value);
        } else {
            append(out, value, std::string_view());
        }
    }
};

template <ItemType kind>
struct Row;
#define KVXML_ROW(kind, name) \
    template <>               \
    struct Row<ItemType_##kind> : Conversions<CConversions::kind##FromString, CConversions::Append##name> {}
KVXML_ROW(i1, I1);
KVXML_ROW(i2, I2);
KVXML_ROW(i4, I4);
KVXML_ROW(i8, I8);
KVXML_ROW(ui1, UI1);
KVXML_ROW(ui2, UI2);
KVXML_ROW(ui4, UI4);
KVXML_ROW(ui8, UI8);
KVXML_ROW(r4, R4);
KVXML_ROW(r8, R8);
KVXML_ROW(boolean, Boolean);
KVXML_ROW(string, String);
KVXML_ROW(year, Year);
KVXML_ROW(month, Month);
KVXML_ROW(day, Day);
KVXML_ROW(decimal, Decimal);
KVXML_ROW(integer, Integer);
KVXML_ROW(duration, Duration);
KVXML_ROW(hexBinary, HexBinary);
KVXML_ROW(base64Binary, Base64Binary);
#undef KVXML_ROW

}  // namespace

template <ItemType kind, class T>
CPrimitiveKindCollection<kind, T>::CPrimitiveKindCollection(const CPrimitiveKindCollection&) = default;
template <ItemType kind, class T>
CPrimitiveKindCollection<kind, T>& CPrimitiveKindCollection<kind, T>::operator=(
    const CPrimitiveKindCollection&) = default;
template <ItemType kind, class T>
CPrimitiveKindCollection<kind, T>::CPrimitiveKindCollection(CPrimitiveKindCollection&&) noexcept = default;
template <ItemType kind, class T>
CPrimitiveKindCollection<kind, T>& CPrimitiveKindCollection<kind, T>::operator=(
    CPrimitiveKindCollection&&) noexcept = default;
template <ItemType kind, class T>
CPrimitiveKindCollection<kind, T>::~CPrimitiveKindCollection() = default;

template <ItemType kind, class T>
void CPrimitiveKindCollection<kind, T>::ToXml_Int(CXmlWriter* writer, bool, const char*,
                                                  const CSerializationContext&, bool) const {
    this->WriteEach(*this, writer, [&](const T& value) {
        if constexpr (std::is_same_v<T, std::string>) {
            this->WriteItem(writer, value, kind);
        } else {
            std::string& text = writer->ScratchText();
            text.clear();
            Row<kind>::Append(text, value);
            this->WriteItem(writer, text, kind);
        }
    });
}

template <ItemType kind, class T>
void CPrimitiveKindCollection<kind, T>::AddFromString(std::string_view text) {
    this->AppendRead(Row<kind>::kFromString(text, this->GetRestrictions().GetWhitespaceRule()), text);
}

template class CPrimitiveKindCollection<ItemType_i1, std::int8_t>;
template class CPrimitiveKindCollection<ItemType_i2, std::int16_t>;
template class CPrimitiveKindCollection<ItemType_i4, std::int32_t>;
template class CPrimitiveKindCollection<ItemType_i8, std::int64_t>;
template class CPrimitiveKindCollection<ItemType_ui1, std::uint8_t>;
template class CPrimitiveKindCollection<ItemType_ui2, std::uint16_t>;
template class CPrimitiveKindCollection<ItemType_ui4, std::uint32_t>;
template class CPrimitiveKindCollection<ItemType_ui8, std::uint64_t>;
template class CPrimitiveKindCollection<ItemType_r4, float>;
template class CPrimitiveKindCollection<ItemType_r8, double>;
template class CPrimitiveKindCollection<ItemType_boolean, bool>;
template class CPrimitiveKindCollection<ItemType_string, std::string>;
template class CPrimitiveKindCollection<ItemType_year, std::uint16_t>;
template class CPrimitiveKindCollection<ItemType_month, std::uint8_t>;
template class CPrimitiveKindCollection<ItemType_day, std::uint8_t>;
template class CPrimitiveKindCollection<ItemType_decimal, CDecimal>;
template class CPrimitiveKindCollection<ItemType_integer, CBigInteger>;
template class CPrimitiveKindCollection<ItemType_duration, CDateTimeSpan>;
template class CPrimitiveKindCollection<ItemType_hexBinary, CBinaryData>;
template class CPrimitiveKindCollection<ItemType_base64Binary, CBinaryData>;

// --- dates -------------------------------------------------------------------------------------------------

CdatetimeBaseCol::CdatetimeBaseCol(ItemType type, const char* elementName, const char* ns, int minOccurs,
                                   int maxOccurs, const char* pattern, std::int32_t minLength,
                                   std::int32_t maxLength, const char* minInclusive, const char* maxInclusive,
                                   const char* minExclusive, const char* maxExclusive, std::int32_t length,
                                   std::int32_t totalDigits, std::int32_t fractionDigits, WhitespaceRule rule,
                                   const char* enumeration)
    : CPrimitiveCollection(DateKindOf(type).type, elementName, ns, minOccurs, maxOccurs, pattern, minLength,
                           maxLength, minInclusive, maxInclusive, minExclusive, maxExclusive, length,
                           totalDigits, fractionDigits, rule, enumeration) {}

CdatetimeBaseCol::CdatetimeBaseCol(const CdatetimeBaseCol& other) : CPrimitiveCollection(other) {}
CdatetimeBaseCol& CdatetimeBaseCol::operator=(const CdatetimeBaseCol& other) {
    CPrimitiveCollection::operator=(other);
    return *this;
}
CdatetimeBaseCol::CdatetimeBaseCol(CdatetimeBaseCol&& other) noexcept
    : CPrimitiveCollection(std::move(other)) {}
CdatetimeBaseCol& CdatetimeBaseCol::operator=(CdatetimeBaseCol&& other) noexcept {
    CPrimitiveCollection::operator=(std::move(other));
    return *this;
}
CdatetimeBaseCol::~CdatetimeBaseCol() = default;

void CdatetimeBaseCol::Add(CDateTime value) {
    AddAt(GetCount(), std::move(value));
}

void CdatetimeBaseCol::AddAt(int index, CDateTime value) {
    // The text is taken before listeners run, who may add values of their own.
    InsertItem(index, std::move(value), std::exchange(m_lexical, {}));
}

void CdatetimeBaseCol::AddFromString(std::string_view text) {
    const WhitespaceRule rule = GetRestrictions().GetWhitespaceRule();
    const CDateTime value = DateKindOf(GetItemType()).fromString(text, rule);
    if (!GetRestrictions().HasPattern()) return AddAt(GetCount(), value);
    std::string scratch;
    const struct Scope {
        ~Scope() { lexical = {}; }
        std::string_view& lexical;
    } scope{m_lexical};
    m_lexical = internal::ApplyRule(rule, text, scratch);
    AddAt(GetCount(), value);
}

std::string CdatetimeBaseCol::ItemToString(const CDateTime& value) const {
    return value.ToString("s");
}

void CdatetimeBaseCol::ToXml_Int(CXmlWriter* writer, bool, const char*, const CSerializationContext&,
                                 bool) const {
    WriteEach(*this, writer, [&](const CDateTime& value) {
        if (!value.IsSet()) throw CKvInvalidValueException("The date is not set");
        WriteItem(writer, ItemToString(value), GetItemType());
    });
}

}  // namespace KvXmlLib16
