/// Collections of primitive values, one class per kind, for repeated members of primitive type.
///
///     CSmartPtr<Ci4Col> numbers = new Ci4Col("number", "urn:example", 0, -1);
///     numbers->Add(7);
///     for (std::int32_t number : *numbers) ...
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/objects/primitive_collection.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/date_time_span.h"
#include "kvxml/types/decimal.h"

namespace KvXmlLib16 {

extern template class CPrimitiveCollection<std::int8_t>;
extern template class CPrimitiveCollection<std::int16_t>;
extern template class CPrimitiveCollection<std::int32_t>;
extern template class CPrimitiveCollection<std::int64_t>;
extern template class CPrimitiveCollection<std::uint8_t>;
extern template class CPrimitiveCollection<std::uint16_t>;
extern template class CPrimitiveCollection<std::uint32_t>;
extern template class CPrimitiveCollection<std::uint64_t>;
extern template class CPrimitiveCollection<float>;
extern template class CPrimitiveCollection<double>;
extern template class CPrimitiveCollection<bool>;
extern template class CPrimitiveCollection<std::string>;
extern template class CPrimitiveCollection<CDecimal>;
extern template class CPrimitiveCollection<CBigInteger>;
extern template class CPrimitiveCollection<CDateTimeSpan>;
extern template class CPrimitiveCollection<CBinaryData>;
extern template class CPrimitiveCollection<CDateTime>;
extern template class CPrimitiveKindCollection<ItemType_i1, std::int8_t>;
extern template class CPrimitiveKindCollection<ItemType_i2, std::int16_t>;
extern template class CPrimitiveKindCollection<ItemType_i4, std::int32_t>;
extern template class CPrimitiveKindCollection<ItemType_i8, std::int64_t>;
extern template class CPrimitiveKindCollection<ItemType_ui1, std::uint8_t>;
extern template class CPrimitiveKindCollection<ItemType_ui2, std::uint16_t>;
extern template class CPrimitiveKindCollection<ItemType_ui4, std::uint32_t>;
extern template class CPrimitiveKindCollection<ItemType_ui8, std::uint64_t>;
extern template class CPrimitiveKindCollection<ItemType_r4, float>;
extern template class CPrimitiveKindCollection<ItemType_r8, double>;
extern template class CPrimitiveKindCollection<ItemType_boolean, bool>;
extern template class CPrimitiveKindCollection<ItemType_string, std::string>;
extern template class CPrimitiveKindCollection<ItemType_year, std::uint16_t>;
extern template class CPrimitiveKindCollection<ItemType_month, std::uint8_t>;
extern template class CPrimitiveKindCollection<ItemType_day, std::uint8_t>;
extern template class CPrimitiveKindCollection<ItemType_decimal, CDecimal>;
extern template class CPrimitiveKindCollection<ItemType_integer, CBigInteger>;
extern template class CPrimitiveKindCollection<ItemType_duration, CDateTimeSpan>;
extern template class CPrimitiveKindCollection<ItemType_hexBinary, CBinaryData>;
extern template class CPrimitiveKindCollection<ItemType_base64Binary, CBinaryData>;

// One class per kind. Each is constructed with element name, namespace, bounds
// and, where there are any, facets.
#define KVXML_PRIMITIVE_COLLECTION(name, kind, type)                          \
    class KVXML_EXPORT name : public CPrimitiveKindCollection<kind, type> {   \
    public:                                                                   \
        using CPrimitiveKindCollection<kind, type>::CPrimitiveKindCollection; \
    }
KVXML_PRIMITIVE_COLLECTION(Ci1Col, ItemType_i1, std::int8_t);
KVXML_PRIMITIVE_COLLECTION(Ci2Col, ItemType_i2, std::int16_t);
KVXML_PRIMITIVE_COLLECTION(Ci4Col, ItemType_i4, std::int32_t);
KVXML_PRIMITIVE_COLLECTION(Ci8Col, ItemType_i8, std::int64_t);
KVXML_PRIMITIVE_COLLECTION(Cui1Col, ItemType_ui1, std::uint8_t);
KVXML_PRIMITIVE_COLLECTION(Cui2Col, ItemType_ui2, std::uint16_t);
KVXML_PRIMITIVE_COLLECTION(Cui4Col, ItemType_ui4, std::uint32_t);
KVXML_PRIMITIVE_COLLECTION(Cui8Col, ItemType_ui8, std::uint64_t);
KVXML_PRIMITIVE_COLLECTION(Cr4Col, ItemType_r4, float);
KVXML_PRIMITIVE_COLLECTION(Cr8Col, ItemType_r8, double);
KVXML_PRIMITIVE_COLLECTION(CbooleanCol, ItemType_boolean, bool);
KVXML_PRIMITIVE_COLLECTION(CstringCol, ItemType_string, std::string);
KVXML_PRIMITIVE_COLLECTION(CyearCol, ItemType_year, std::uint16_t);
KVXML_PRIMITIVE_COLLECTION(CmonthCol, ItemType_month, std::uint8_t);
KVXML_PRIMITIVE_COLLECTION(CdayCol, ItemType_day, std::uint8_t);
KVXML_PRIMITIVE_COLLECTION(CdecimalCol, ItemType_decimal, CDecimal);
KVXML_PRIMITIVE_COLLECTION(CintegerCol, ItemType_integer, CBigInteger);
KVXML_PRIMITIVE_COLLECTION(CdurationCol, ItemType_duration, CDateTimeSpan);
KVXML_PRIMITIVE_COLLECTION(ChexBinaryCol, ItemType_hexBinary, CBinaryData);
KVXML_PRIMITIVE_COLLECTION(Cbase64BinaryCol, ItemType_base64Binary, CBinaryData);
#undef KVXML_PRIMITIVE_COLLECTION

/// What the collections of the five date kinds share. Their values must be of the collection's kind.
class KVXML_EXPORT CdatetimeBaseCol : public CPrimitiveCollection<CDateTime> {
public:
    /// `type` is one of the date kinds. The rest is as in the other collections.
    CdatetimeBaseCol(ItemType type, const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                     const char* pattern, std::int32_t minLength, std::int32_t maxLength,
                     const char* minInclusive, const char* maxInclusive, const char* minExclusive,
                     const char* maxExclusive, std::int32_t length, std::int32_t totalDigits,
                     std::int32_t fractionDigits, WhitespaceRule rule, const char* enumeration);
    ~CdatetimeBaseCol() override;

    /// Appends through AddAt.
    void Add(CDateTime value);
    /// CKvInvalidParamException "Dates added to this collection must be of type ..." for a value of another
    /// kind, before any listener hears of it. Otherwise as in the other collections.
    virtual void AddAt(int index, CDateTime value);
    void push_back(const CDateTime& value) { Add(value); }

protected:
    CdatetimeBaseCol(const CdatetimeBaseCol&);
    CdatetimeBaseCol& operator=(const CdatetimeBaseCol&);
    CdatetimeBaseCol(CdatetimeBaseCol&&) noexcept;
    CdatetimeBaseCol& operator=(CdatetimeBaseCol&&) noexcept;

    void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                   const CSerializationContext& context, bool suppressChoiceError) const override;
    /// Adds through AddAt.
    void AddFromString(std::string_view text) override;
    /// The text that `value` is written as: its XSD form.
    virtual std::string ItemToString(const CDateTime& value) const;

private:
    std::string_view m_lexical;  // of the value that AddFromString is handing to AddAt
};

/// The collection of one date kind.
template <ItemType kind>
class KVXML_EXPORT CDateKindCollection : public CdatetimeBaseCol {
public:
    /// As the constructors of the other collections.
    CDateKindCollection(const char* elementName, const char* ns, int minOccurs, int maxOccurs,
                        const char* pattern = nullptr, std::int32_t minLength = -1,
                        std::int32_t maxLength = -1, const char* minInclusive = nullptr,
                        const char* maxInclusive = nullptr, const char* minExclusive = nullptr,
                        const char* maxExclusive = nullptr, std::int32_t length = -1,
                        std::int32_t totalDigits = -1, std::int32_t fractionDigits = -1,
                        WhitespaceRule rule = CWhitespaceUtils::WhitespaceRule_Collapse,
                        const char* enumeration = nullptr)
        : CdatetimeBaseCol(kind, elementName, ns, minOccurs, maxOccurs, pattern, minLength, maxLength,
                           minInclusive, maxInclusive, minExclusive, maxExclusive, length, totalDigits,
                           fractionDigits, rule, enumeration) {}
};

class KVXML_EXPORT CdateCol : public CDateKindCollection<ItemType_date> {
public:
    using CDateKindCollection::CDateKindCollection;
};

class KVXML_EXPORT CdatetimeCol : public CDateKindCollection<ItemType_datetime> {
public:
    using CDateKindCollection::CDateKindCollection;
};

class KVXML_EXPORT CtimeCol : public CDateKindCollection<ItemType_time> {
public:
    using CDateKindCollection::CDateKindCollection;
};

class KVXML_EXPORT CyearMonthCol : public CDateKindCollection<ItemType_yearMonth> {
public:
    using CDateKindCollection::CDateKindCollection;
};

class KVXML_EXPORT CmonthDayCol : public CDateKindCollection<ItemType_monthDay> {
public:
    using CDateKindCollection::CDateKindCollection;
};

}  // namespace KvXmlLib16
