#include "kvxml/objects/variant.h"

#include <charconv>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/variant_facets.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/types/conversions.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/real_text.h"

namespace KvXmlLib16 {

namespace {

constexpr const char* kTypeNames[] = {
    nullptr, "hexBinary", "base64Binary", "i1",   "i2",       "i4",        "i8",       "ui1",     "ui2",
    "ui4",   "ui8",       "r4",           "r8",   "duration", "yearMonth", "monthDay", "year",    "month",
    "day",   "date",      "datetime",     "time", "char",     "string",    "boolean",  "decimal", "integer",
};

[[noreturn]] void ThrowInvalidType(const char* format, ItemType type) {
    throw CKvException(FormatString(format, static_cast<int>(type)));
}

}  // namespace

// --- copying -----------------------------------------------------------------------------------------------

// The bytes of any plain value.
struct PlainValue {
    unsigned char bytes[sizeof(std::uint64_t)];
};

// Runs `action` with a value-initialised pointer of the C++ type that a kind is held as.
template <class Action>
static void WithHeldType(ItemType type, Action action) {
    switch (type) {
        case ItemType_hexBinary:
        case ItemType_base64Binary:
            return action(static_cast<CBinaryData*>(nullptr));
        case ItemType_duration:
            return action(static_cast<CDateTimeSpan*>(nullptr));
        case ItemType_yearMonth:
        case ItemType_monthDay:
        case ItemType_date:
        case ItemType_datetime:
        case ItemType_time:
            return action(static_cast<CDateTime*>(nullptr));
        case ItemType_string:
            return action(static_cast<std::string*>(nullptr));
        case ItemType_decimal:
            return action(static_cast<CDecimal*>(nullptr));
        case ItemType_integer:
            return action(static_cast<CBigInteger*>(nullptr));
        case ItemType_XmlObject:
            return action(static_cast<CXmlObjectBase**>(nullptr));
        case ItemType_XmlCollection:
            return action(static_cast<CXmlCollectionBase**>(nullptr));
        default:
            return action(static_cast<PlainValue*>(nullptr));
    }
}

KvVariant::KvVariant(const KvVariant& other) {
    CopyFrom(other);
}

KvVariant::KvVariant(KvVariant&& other) noexcept {
    MoveFrom(other);
}

KvVariant& KvVariant::operator=(const KvVariant& other) {
    if (this != &other) {
        KvVariant copy(other);
        Destroy();
        MoveFrom(copy);
    }
    return *this;
}

KvVariant& KvVariant::operator=(KvVariant&& other) noexcept {
    if (this != &other) {
        Destroy();
        MoveFrom(other);
    }
    return *this;
}

void KvVariant::CopyFrom(const KvVariant& other) {
    if (other.m_holds) {
        if (other.m_type < ItemType_hexBinary || other.m_type > ItemType_XmlCollection) {
            throw CKvException("Unknown Type");
        }
        if (other.m_borrowed && other.m_type == ItemType_string) {
            new (m_storage) std::string(other.StringValue());
        } else {
            WithHeldType(other.m_type, [&](auto* tag) {
                using Held = std::remove_pointer_t<decltype(tag)>;
                const Held& value = other.As<Held>();
                if constexpr (std::is_pointer_v<Held>) {
                    if (value != nullptr) value->AddRef();
                }
                new (m_storage) Held(value);
            });
        }
    }
    m_holds = other.m_holds;
    m_type = other.m_type;
    m_nil = other.m_nil;
}

void KvVariant::MoveFrom(KvVariant& other) noexcept {
    if (other.m_holds) {
        if (other.m_borrowed && other.m_type == ItemType_string) {
            new (m_storage) const std::string*(other.As<const std::string*>());
        } else {
            WithHeldType(other.m_type, [&](auto* tag) {
                using Held = std::remove_pointer_t<decltype(tag)>;
                Held& value = other.As<Held>();
                new (m_storage) Held(std::move(value));
                if constexpr (std::is_pointer_v<Held>) value = nullptr;
            });
        }
    }
    m_holds = other.m_holds;
    m_borrowed = other.m_borrowed;
    m_type = other.m_type;
    m_nil = other.m_nil;
    other.Clear();
}

void KvVariant::DestroyOwned() noexcept {
    WithHeldType(m_type, [&](auto* tag) {
        using Held = std::remove_pointer_t<decltype(tag)>;
        Held& value = As<Held>();
        if constexpr (std::is_pointer_v<Held>) {
            if (value != nullptr) value->Release();
        } else {
            value.~Held();
        }
    });
}

void KvVariant::Own() {
    if (m_borrowed) *this = KvVariant(*this);  // by way of a copy, which owns what it has
}

// --- objects -----------------------------------------------------------------------------------------------

void KvVariant::SetXmlObject(CXmlObjectBase* value) {
    if (value != nullptr) value->AddRef();
    Set(ItemType_XmlObject, value);
}

void KvVariant::SetXmlCollection(CXmlCollectionBase* value) {
    if (value != nullptr) value->AddRef();
    Set(ItemType_XmlCollection, value);
}

CSmartPtr<CXmlObjectBase> KvVariant::GetXmlObject() const {
    return PeekXmlObject();
}

CSmartPtr<CXmlCollectionBase> KvVariant::GetXmlCollection() const {
    return PeekXmlCollection();
}

// --- text forms --------------------------------------------------------------------------------------------

std::string KvVariant::GetType() const {
    if (m_type <= ItemType_Unknown || m_type > ItemType_integer) ThrowInvalidType("Invalid Type %d", m_type);
    return kTypeNames[m_type];
}

std::string KvVariant::ToString(const char* format) const {
    std::string scratch;
    const std::string_view text =
        ToText(scratch, format == nullptr ? std::string_view() : std::string_view(format));
    return std::string(text);
}

std::string_view KvVariant::ToText(std::string& scratch, std::string_view format) const {
    if (!m_holds) {
        if (m_type == ItemType_Unknown) ThrowInvalidType("Invalid Type %d to convert to string", m_type);
        return std::string_view();  // nil
    }
    // The kinds that documents consist of are written in place, into scratch text that keeps its length.
    constexpr std::size_t kRoom = 64;
    static_assert(CDecimal::kMaxSmallLength <= kRoom && CDateTime::kMaxTextLength <= kRoom &&
                  internal::kMaxRealLength <= kRoom);
    if (m_type == ItemType_string) return StringValue();
    if (m_type == ItemType_boolean) return GetBoolean() ? "true" : "false";
    if (scratch.size() < kRoom) scratch.resize(kRoom);
    char* const begin = scratch.data();
    char* end = begin;
    if (m_type == ItemType_i4) {
        end = std::to_chars(begin, begin + kRoom, GetI4()).ptr;
    } else if (m_type == ItemType_decimal) {
        if (format.empty() && DecimalValue().IsSmall()) end = DecimalValue().FormatTo(begin);
    } else if (m_type == ItemType_r8) {
        if (format.empty()) end = internal::WriteXsdReal(begin, GetR8(), internal::kR8Digits);
    } else if (m_type == ItemType_datetime) {
        end = begin + DateTimeValue().FormatXsd(begin);
    }
    if (end == begin) return ToAnyText(scratch, format);
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// The text of what `ToText` leaves, by way of appending.
std::string_view KvVariant::ToAnyText(std::string& scratch, std::string_view format) const {
    scratch.clear();
    switch (m_type) {
        case ItemType_hexBinary:
            CConversions::AppendHexBinary(scratch, BinaryValue());
            break;
        case ItemType_base64Binary:
            CConversions::AppendBase64Binary(scratch, BinaryValue());
            break;
        case ItemType_i1:
            CConversions::AppendI1(scratch, GetI1());
            break;
        case ItemType_i2:
            CConversions::AppendI2(scratch, GetI2());
            break;
        case ItemType_i8:
            CConversions::AppendI8(scratch, GetI8());
            break;
        case ItemType_ui1:
            CConversions::AppendUI1(scratch, GetUI1());
            break;
        case ItemType_ui2:
            CConversions::AppendUI2(scratch, GetUI2());
            break;
        case ItemType_ui4:
            CConversions::AppendUI4(scratch, GetUI4());
            break;
        case ItemType_ui8:
            CConversions::AppendUI8(scratch, GetUI8());
            break;
        case ItemType_r4:
            CConversions::AppendR4(scratch, GetR4(), format);
            break;
        case ItemType_r8:
            CConversions::AppendR8(scratch, GetR8(), format);
            break;
        case ItemType_duration:
            CConversions::AppendDuration(scratch, DurationValue());
            break;
        case ItemType_yearMonth:
        case ItemType_monthDay:
        case ItemType_date:
        case ItemType_datetime:
        case ItemType_time:
            CConversions::AppendDateTime(scratch, DateTimeValue());
            break;
        case ItemType_year:
            CConversions::AppendYear(scratch, GetYear());
            break;
        case ItemType_month:
            CConversions::AppendMonth(scratch, GetMonth());
            break;
        case ItemType_day:
            CConversions::AppendDay(scratch, GetDay());
            break;
        case ItemType_char:
            CConversions::AppendChar(scratch, GetChar());
            break;
        case ItemType_decimal:
            CConversions::AppendDecimal(scratch, DecimalValue(), format);
            break;
        case ItemType_integer:
            CConversions::AppendInteger(scratch, IntegerValue());
            break;
        default:
            ThrowInvalidType("Invalid Type %d to convert to string", m_type);
    }
    return scratch;
}

void KvVariant::FromString(std::string_view text, ItemType type, CWhitespaceUtils::WhitespaceRule rule) {
    switch (type) {
        case ItemType_hexBinary:
            return Set(type, CConversions::hexBinaryFromString(text, rule));
        case ItemType_base64Binary:
            return Set(type, CConversions::base64BinaryFromString(text, rule));
        case ItemType_i1:
            return Set(type, CConversions::i1FromString(text, rule));
        case ItemType_i2:
            return Set(type, CConversions::i2FromString(text, rule));
        case ItemType_i4:
            return Set(type, CConversions::i4FromString(text, rule));
        case ItemType_i8:
            return Set(type, CConversions::i8FromString(text, rule));
        case ItemType_ui1:
            return Set(type, CConversions::ui1FromString(text, rule));
        case ItemType_ui2:
            return Set(type, CConversions::ui2FromString(text, rule));
        case ItemType_ui4:
            return Set(type, CConversions::ui4FromString(text, rule));
        case ItemType_ui8:
            return Set(type, CConversions::ui8FromString(text, rule));
        case ItemType_r4:
            return Set(type, CConversions::r4FromString(text, rule));
        case ItemType_r8:
            return Set(type, CConversions::r8FromString(text, rule));
        case ItemType_duration:
            return Set(type, CConversions::durationFromString(text, rule));
        case ItemType_yearMonth:
            return Set(type, CConversions::yearMonthFromString(text, rule));
        case ItemType_monthDay:
            return Set(type, CConversions::monthDayFromString(text, rule));
        case ItemType_year:
            return Set(type, CConversions::yearFromString(text, rule));
        case ItemType_month:
            return Set(type, CConversions::monthFromString(text, rule));
        case ItemType_day:
            return Set(type, CConversions::dayFromString(text, rule));
        case ItemType_date:
            return Set(type, CConversions::dateFromString(text, rule));
        case ItemType_datetime:
            return Set(type, CConversions::datetimeFromString(text, rule));
        case ItemType_time:
            return Set(type, CConversions::timeFromString(text, rule));
        case ItemType_char:
            return Set(type, CConversions::charFromString(text, rule));
        case ItemType_string:
            return Set(type, CConversions::stringFromString(text, rule));
        case ItemType_boolean:
            return Set(type, CConversions::booleanFromString(text, rule));
        case ItemType_decimal:
            return Set(type, CConversions::decimalFromString(text, rule));
        case ItemType_integer:
            return Set(type, CConversions::integerFromString(text, rule));
        default:
            ThrowInvalidType("Invalid Type %d to convert to string", type);
    }
}

// --- facets ------------------------------------------------------------------------------------------------

namespace internal {

void CheckFacets(const CPrimitiveRestrictions& restrictions, std::string_view name, const KvVariant& value,
                 std::string_view lexical) {
    if (restrictions.IsEmpty() || !value.IsValid() || value.IsNil()) return;
    const ItemType type = value.GetTypeAsEnum();
    switch (type) {
        case ItemType_hexBinary:
        case ItemType_base64Binary:
            return restrictions.Check(name, type, value.BinaryValue(), lexical);
        case ItemType_i1:
            return restrictions.Check(name, type, value.GetI1(), lexical);
        case ItemType_i2:
            return restrictions.Check(name, type, value.GetI2(), lexical);
        case ItemType_i4:
            return restrictions.Check(name, type, value.GetI4(), lexical);
        case ItemType_i8:
            return restrictions.Check(name, type, value.GetI8(), lexical);
        case ItemType_ui1:
            return restrictions.Check(name, type, value.GetUI1(), lexical);
        case ItemType_ui2:
            return restrictions.Check(name, type, value.GetUI2(), lexical);
        case ItemType_ui4:
            return restrictions.Check(name, type, value.GetUI4(), lexical);
        case ItemType_ui8:
            return restrictions.Check(name, type, value.GetUI8(), lexical);
        case ItemType_r4:
            return restrictions.Check(name, type, value.GetR4(), lexical);
        case ItemType_r8:
            return restrictions.Check(name, type, value.GetR8(), lexical);
        case ItemType_duration:
            return restrictions.Check(name, type, value.DurationValue(), lexical);
        case ItemType_yearMonth:
        case ItemType_monthDay:
        case ItemType_date:
        case ItemType_datetime:
        case ItemType_time:
            return restrictions.Check(name, type, value.DateTimeValue(), lexical);
        case ItemType_year:
            return restrictions.Check(name, type, value.GetYear(), lexical);
        case ItemType_month:
            return restrictions.Check(name, type, value.GetMonth(), lexical);
        case ItemType_day:
            return restrictions.Check(name, type, value.GetDay(), lexical);
        case ItemType_char: {
            const char character = value.GetChar();
            return restrictions.Check(name, type, std::string_view(&character, 1));
        }
        case ItemType_string:
            return restrictions.Check(name, type, value.StringValue());
        case ItemType_boolean:
            return restrictions.Check(name, type, value.GetBoolean(), lexical);
        case ItemType_decimal:
            return restrictions.Check(name, type, value.DecimalValue(), lexical);
        case ItemType_integer:
            return restrictions.Check(name, type, value.IntegerValue(), lexical);
        default:
            return;
    }
}

}  // namespace internal

}  // namespace KvXmlLib16
