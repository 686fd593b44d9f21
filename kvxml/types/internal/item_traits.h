/// What is known at compile time about each kind of primitive values, in one table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "kvxml/types/conversions.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// `Type`: the C++ type of a value. `kName`: the name of the kind. `FromString`, `Append`: as those of
/// CConversions, with a format that most kinds pass over.
template <ItemType Kind>
struct ItemTraits;

/// The columns: name of the kind, C++ type, name of the appending conversion, arguments after the value.
#define KVXML_ITEM_TRAITS(X)                         \
    X(hexBinary, CBinaryData, HexBinary, )           \
    X(base64Binary, CBinaryData, Base64Binary, )     \
    X(i1, std::int8_t, I1, )                         \
    X(i2, std::int16_t, I2, )                        \
    X(i4, std::int32_t, I4, )                        \
    X(i8, std::int64_t, I8, )                        \
    X(ui1, std::uint8_t, UI1, )                      \
    X(ui2, std::uint16_t, UI2, )                     \
    X(ui4, std::uint32_t, UI4, )                     \
    X(ui8, std::uint64_t, UI8, )                     \
    X(r4, float, R4, KVXML_WITH_FORMAT)              \
    X(r8, double, R8, KVXML_WITH_FORMAT)             \
    X(duration, CDateTimeSpan, Duration, )           \
    X(yearMonth, CDateTime, DateTime, )              \
    X(monthDay, CDateTime, DateTime, )               \
    X(year, std::uint16_t, Year, )                   \
    X(month, std::uint8_t, Month, )                  \
    X(day, std::uint8_t, Day, )                      \
    X(date, CDateTime, DateTime, )                   \
    X(datetime, CDateTime, DateTime, )               \
    X(time, CDateTime, DateTime, )                   \
    X(char, char, Char, )                            \
    X(string, std::string, String, )                 \
    X(boolean, bool, Boolean, )                      \
    X(decimal, CDecimal, Decimal, KVXML_WITH_FORMAT) \
    X(integer, CBigInteger, Integer, )
#define KVXML_WITH_FORMAT , format

#define KVXML_ITEM_TRAITS_ROW(kind, CppType, Name, format_)                                                 \
    template <>                                                                                             \
    struct ItemTraits<ItemType_##kind> {                                                                    \
        using Type = CppType;                                                                               \
        static constexpr ItemType kKind = ItemType_##kind;                                                  \
        static constexpr const char* kName = #kind;                                                         \
        static Type FromString(std::string_view text, CWhitespaceUtils::WhitespaceRule rule) {              \
            return CConversions::kind##FromString(text, rule);                                              \
        }                                                                                                   \
        static void Append(std::string& out, const Type& value, [[maybe_unused]] std::string_view format) { \
            CConversions::Append##Name(out, value format_);                                                 \
        }                                                                                                   \
    };
KVXML_ITEM_TRAITS(KVXML_ITEM_TRAITS_ROW)
#undef KVXML_ITEM_TRAITS_ROW

/// Kinds whose values are text themselves.
template <class Traits>
inline constexpr bool kIsText = Traits::kKind == ItemType_char || Traits::kKind == ItemType_string;

/// Calls `action` with the traits of the kind; false for a number that is no primitive kind.
template <class Action>
bool VisitItemType(ItemType type, Action&& action) {
    switch (type) {
#define KVXML_ITEM_TRAITS_ROW(kind, CppType, Name, format) \
    case ItemType_##kind:                                  \
        action(ItemTraits<ItemType_##kind>());             \
        return true;
        KVXML_ITEM_TRAITS(KVXML_ITEM_TRAITS_ROW)
#undef KVXML_ITEM_TRAITS_ROW
        default:
            return false;
    }
}

#undef KVXML_WITH_FORMAT
#undef KVXML_ITEM_TRAITS

}  // namespace KvXmlLib16::internal
