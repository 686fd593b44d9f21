/// The tagged value through which properties of generated classes are read and assigned by index.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kvxml/base/smart_ptr.h"
#include "kvxml/export.h"
#include "kvxml/types/big_integer.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/date_time.h"
#include "kvxml/types/date_time_span.h"
#include "kvxml/types/decimal.h"
#include "kvxml/types/item_type.h"
#include "kvxml/types/whitespace_utils.h"

namespace KvXmlLib16 {

class CPrimitiveRestrictions;
class CXmlCollectionBase;
class CXmlObjectBase;
struct KvVariant;

namespace internal {
class CObjectGraph;
class CTableAccess;
void CheckFacets(const CPrimitiveRestrictions& restrictions, std::string_view name, const KvVariant& value,
                 std::string_view lexical);
}  // namespace internal

/// Holds any primitive XSD value, a reference to an object or a collection, or a nil mark. Every value lives
/// inside the variant; setting one needs no allocation of its own.
///
/// Asking for another kind than `GetTypeAsEnum()` tells, or for the value when there is none, is a caller
/// error of every getter: debug builds end there, others do not notice.
struct KVXML_EXPORT KvVariant {
public:
    KvVariant() noexcept {}
    KvVariant(const KvVariant& other);
    KvVariant(KvVariant&& other) noexcept;
    KvVariant& operator=(const KvVariant& other);
    KvVariant& operator=(KvVariant&& other) noexcept;
    virtual ~KvVariant() { Destroy(); }

    /// No value, not nil.
    void Clear() noexcept {
        Destroy();
        m_type = ItemType_Unknown;
        m_nil = false;
    }
    /// A value is held or the nil mark is set.
    bool IsValid() const noexcept { return m_type != ItemType_Unknown || m_nil; }
    void SetInvalid() noexcept { Clear(); }
    /// Drops the value, keeps its kind and sets the nil mark.
    void SetNil() noexcept {
        Destroy();
        m_nil = true;
    }
    bool IsNil() const noexcept { return m_nil; }

    ItemType GetTypeAsEnum() const noexcept { return m_type; }
    /// Name of the kind; CKvException "Invalid Type %d" when no primitive value is held.
    std::string GetType() const;

    // --- setters: each replaces what was held -----------------------------------------------------------
    void SetHexBinary(const CBinaryData& value) { Set(ItemType_hexBinary, CBinaryData(value)); }
    void SetBase64Binary(const CBinaryData& value) { Set(ItemType_base64Binary, CBinaryData(value)); }
    void SetI1(std::int8_t value) noexcept { Set(ItemType_i1, value); }
    void SetI2(std::int16_t value) noexcept { Set(ItemType_i2, value); }
    void SetI4(std::int32_t value) noexcept { Set(ItemType_i4, value); }
    void SetI8(std::int64_t value) noexcept { Set(ItemType_i8, value); }
    void SetUI1(std::uint8_t value) noexcept { Set(ItemType_ui1, value); }
    void SetUI2(std::uint16_t value) noexcept { Set(ItemType_ui2, value); }
    void SetUI4(std::uint32_t value) noexcept { Set(ItemType_ui4, value); }
    void SetUI8(std::uint64_t value) noexcept { Set(ItemType_ui8, value); }
    void SetR4(float value) noexcept { Set(ItemType_r4, value); }
    void SetR8(double value) noexcept { Set(ItemType_r8, value); }
    void SetDuration(const CDateTimeSpan& value) { Set(ItemType_duration, CDateTimeSpan(value)); }
    void SetYearMonth(const CDateTime& value) { Set(ItemType_yearMonth, CDateTime(value)); }
    void SetMonthDay(const CDateTime& value) { Set(ItemType_monthDay, CDateTime(value)); }
    void SetYear(std::uint16_t value) noexcept { Set(ItemType_year, value); }
    void SetMonth(std::uint8_t value) noexcept { Set(ItemType_month, value); }
    void SetDay(std::uint8_t value) noexcept { Set(ItemType_day, value); }
    void SetDate(const CDateTime& value) { Set(ItemType_date, CDateTime(value)); }
    void SetDateTime(const CDateTime& value) { Set(ItemType_datetime, CDateTime(value)); }
    void SetTime(const CDateTime& value) { Set(ItemType_time, CDateTime(value)); }
    void SetChar(char value) noexcept { Set(ItemType_char, value); }
    void SetString(std::string value) { Set(ItemType_string, std::move(value)); }
    /// As SetString without copying: `value` must outlive this variant's use and stay unchanged meanwhile.
    /// Made for generated classes that hand out a property for writing.
    void SetStringReference(const std::string& value) noexcept {
        Set(ItemType_string, &value);
        m_borrowed = true;
    }
    void SetBoolean(bool value) noexcept { Set(ItemType_boolean, value); }
    void SetDecimal(CDecimal value) { Set(ItemType_decimal, std::move(value)); }
    void SetInteger(CBigInteger value) { Set(ItemType_integer, std::move(value)); }
    /// Adds a reference; null is allowed.
    void SetXmlObject(CXmlObjectBase* value);
    /// Adds a reference; null is allowed.
    void SetXmlCollection(CXmlCollectionBase* value);
    /// As SetXmlObject without adding a reference: somebody else's must outlive this variant's use. Made for
    /// generated classes, like `SetStringReference`. `Own` and copies of the variant take references of their
    /// own.
    void SetXmlObjectReference(CXmlObjectBase* value) noexcept {
        Set(ItemType_XmlObject, value);
        m_borrowed = true;
    }
    /// As SetXmlCollection without adding a reference.
    void SetXmlCollectionReference(CXmlCollectionBase* value) noexcept {
        Set(ItemType_XmlCollection, value);
        m_borrowed = true;
    }
    /// Makes what was set as a reference the variant's own: a string is copied, an object or collection gets
    /// a reference more.
    void Own();

    // --- getters ----------------------------------------------------------------------------------------
    CBinaryData GetHexBinary() const { return Held<CBinaryData>(ItemType_hexBinary); }
    CBinaryData GetBase64Binary() const { return Held<CBinaryData>(ItemType_base64Binary); }
    std::int8_t GetI1() const noexcept { return Held<std::int8_t>(ItemType_i1); }
    std::int16_t GetI2() const noexcept { return Held<std::int16_t>(ItemType_i2); }
    std::int32_t GetI4() const noexcept { return Held<std::int32_t>(ItemType_i4); }
    std::int64_t GetI8() const noexcept { return Held<std::int64_t>(ItemType_i8); }
    std::uint8_t GetUI1() const noexcept { return Held<std::uint8_t>(ItemType_ui1); }
    std::uint16_t GetUI2() const noexcept { return Held<std::uint16_t>(ItemType_ui2); }
    std::uint32_t GetUI4() const noexcept { return Held<std::uint32_t>(ItemType_ui4); }
    std::uint64_t GetUI8() const noexcept { return Held<std::uint64_t>(ItemType_ui8); }
    float GetR4() const noexcept { return Held<float>(ItemType_r4); }
    double GetR8() const noexcept { return Held<double>(ItemType_r8); }
    CDateTimeSpan GetDuration() const { return Held<CDateTimeSpan>(ItemType_duration); }
    CDateTime GetYearMonth() const { return Held<CDateTime>(ItemType_yearMonth); }
    CDateTime GetMonthDay() const { return Held<CDateTime>(ItemType_monthDay); }
    std::uint16_t GetYear() const noexcept { return Held<std::uint16_t>(ItemType_year); }
    std::uint8_t GetMonth() const noexcept { return Held<std::uint8_t>(ItemType_month); }
    std::uint8_t GetDay() const noexcept { return Held<std::uint8_t>(ItemType_day); }
    CDateTime GetDate() const { return Held<CDateTime>(ItemType_date); }
    CDateTime GetDateTime() const { return Held<CDateTime>(ItemType_datetime); }
    CDateTime GetTime() const { return Held<CDateTime>(ItemType_time); }
    char GetChar() const noexcept { return Held<char>(ItemType_char); }
    std::string GetString() const { return StringValue(); }
    bool GetBoolean() const noexcept { return Held<bool>(ItemType_boolean); }
    CDecimal GetDecimal() const { return Held<CDecimal>(ItemType_decimal); }
    CBigInteger GetInteger() const { return Held<CBigInteger>(ItemType_integer); }
    CSmartPtr<CXmlObjectBase> GetXmlObject() const;
    CSmartPtr<CXmlCollectionBase> GetXmlCollection() const;
    /// The held object or collection without taking a reference; null when none is held.
    CXmlObjectBase* PeekXmlObject() const noexcept {
        return m_holds && m_type == ItemType_XmlObject ? As<CXmlObjectBase*>() : nullptr;
    }
    CXmlCollectionBase* PeekXmlCollection() const noexcept {
        return m_holds && m_type == ItemType_XmlCollection ? As<CXmlCollectionBase*>() : nullptr;
    }

    /// Moves the value out; the variant keeps its kind and an empty value.
    std::string TakeString() {
        if (m_borrowed) return StringValue();
        return std::move(const_cast<std::string&>(StringValue()));
    }
    CDecimal TakeDecimal() { return std::move(const_cast<CDecimal&>(DecimalValue())); }
    CBigInteger TakeInteger() { return std::move(const_cast<CBigInteger&>(IntegerValue())); }
    CBinaryData TakeBinary() { return std::move(const_cast<CBinaryData&>(BinaryValue())); }

    // --- text forms -------------------------------------------------------------------------------------
    /// XSD text form; `format` (null or empty: the default form) shapes r4, r8 and decimal. CKvException
    /// "Invalid Type %d to convert to string" when no primitive value is held. A date that was never set
    /// gives what CDateTime::ToString does.
    std::string ToString(const char* format) const;
    /// As ToString for output; the result is a view of the held string or of `scratch`, valid until either
    /// changes. CKvInvalidValueException "The date is not set" for such a date.
    std::string_view ToText(std::string& scratch, std::string_view format) const;
    /// Parses `text` as `type` under `rule`. On failure (CKvInvalidValueException and what else the
    /// conversions throw) the previous value stays.
    void FromString(std::string_view text, ItemType type, CWhitespaceUtils::WhitespaceRule rule);

    /// The held string without copying it.
    const std::string& StringValue() const noexcept {
        assert(m_holds && m_type == ItemType_string);
        return m_borrowed ? *As<const std::string*>() : As<std::string>();
    }
    const CDecimal& DecimalValue() const noexcept { return Held<CDecimal>(ItemType_decimal); }
    const CBigInteger& IntegerValue() const noexcept { return Held<CBigInteger>(ItemType_integer); }
    /// Of every kind that is held as a CDateTime.
    const CDateTime& DateTimeValue() const noexcept {
        assert(m_holds && IsDate(m_type));
        return As<CDateTime>();
    }
    const CDateTimeSpan& DurationValue() const noexcept { return Held<CDateTimeSpan>(ItemType_duration); }
    /// Of both binary kinds.
    const CBinaryData& BinaryValue() const noexcept {
        assert(m_holds && (m_type == ItemType_hexBinary || m_type == ItemType_base64Binary));
        return As<CBinaryData>();
    }

private:
    friend class internal::CObjectGraph;
    friend class internal::CTableAccess;
    friend void internal::CheckFacets(const CPrimitiveRestrictions& restrictions, std::string_view name,
                                      const KvVariant& value, std::string_view lexical);

    static constexpr std::size_t kSize = sizeof(CDateTimeSpan) > sizeof(std::string) ? sizeof(CDateTimeSpan)
                                                                                     : sizeof(std::string);

    template <class T>
    T& As() noexcept {
        static_assert(sizeof(T) <= kSize && alignof(T) <= alignof(std::max_align_t));
        return *std::launder(reinterpret_cast<T*>(m_storage));
    }
    template <class T>
    const T& As() const noexcept {
        static_assert(sizeof(T) <= kSize && alignof(T) <= alignof(std::max_align_t));
        return *std::launder(reinterpret_cast<const T*>(m_storage));
    }

    template <class T>
    const T& Held([[maybe_unused]] ItemType type) const noexcept {
        assert(m_holds && m_type == type);
        return As<T>();
    }

    static constexpr bool IsDate(ItemType type) noexcept {
        constexpr std::uint32_t kDates = 1U << ItemType_yearMonth | 1U << ItemType_monthDay |
                                         1U << ItemType_date | 1U << ItemType_datetime | 1U << ItemType_time;
        return (kDates >> type & 1U) != 0;
    }

    template <class T>
    void Set(ItemType type, T value) noexcept {
        static_assert(std::is_nothrow_move_constructible_v<T>);
        Destroy();
        new (m_storage) T(std::move(value));
        m_type = type;
        m_nil = false;
        m_holds = true;
    }

    // Kinds whose value needs a destructor: binary, duration, dates, string, decimal, integer, references.
    static constexpr std::uint32_t kOwningKinds = 1U << ItemType_hexBinary | 1U << ItemType_base64Binary |
                                                  1U << ItemType_string | 1U << ItemType_decimal |
                                                  1U << ItemType_integer | 1U << ItemType_XmlObject |
                                                  1U << ItemType_XmlCollection;
    void Destroy() noexcept {
        if (m_holds && (kOwningKinds >> m_type & 1U) != 0 && !m_borrowed) DestroyOwned();
        m_holds = false;
        m_borrowed = false;
    }
    void DestroyOwned() noexcept;
    /// The text of what `ToText` has no short way for.
    std::string_view AppendText(std::string& scratch, std::string_view format) const;
    void CopyFrom(const KvVariant& other);
    void MoveFrom(KvVariant& other) noexcept;

    alignas(std::max_align_t) unsigned char m_storage[kSize];
    ItemType m_type = ItemType_Unknown;
    bool m_nil = false;
    bool m_holds = false;     // m_storage holds a live value of kind m_type
    bool m_borrowed = false;  // that value is a pointer to somebody else's string, or their reference
};

}  // namespace KvXmlLib16
