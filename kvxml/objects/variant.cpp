#include "kvxml/objects/variant.h"

#include <charconv>

#include "kvxml/base/exceptions.h"
#include "kvxml/objects/internal/variant_facets.h"
#include "kvxml/objects/xml_collection_base.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/item_traits.h"
#include "kvxml/types/internal/real_text.h"

namespace KvXmlLib16 {

namespace {

[[noreturn]] void ThrowInvalidType(const char* format, ItemType type) {
    throw CKvException(FormatString(format, static_cast<int>(type)));
}

void RequireSet(const CDateTime& date) {
    if (!date.IsSet()) throw CKvInvalidValueException("The date is not set");
}

}  // namespace

// --- copying -----------------------------------------------------------------------------------------------

// The bytes of any plain value.
struct PlainValue {
    unsigned char bytes[sizeof(std::uint64_t)];
};

// Runs `action` with a null pointer of the C++ type that a kind is held as.
template <class Action>
static void WithHeldType(ItemType type, Action action) {
    if (type == ItemType_XmlObject) return action(static_cast<CXmlObjectBase**>(nullptr));
    if (type == ItemType_XmlCollection) return action(static_cast<CXmlCollectionBase**>(nullptr));
    internal::VisitItemType(type, [&](auto traits) {
        using Type = typename decltype(traits)::Type;
        using Held = std::conditional_t<std::is_arithmetic_v<Type>, PlainValue, Type>;
        action(static_cast<Held*>(nullptr));
    });
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
    std::string name;
    if (!internal::VisitItemType(m_type, [&](auto traits) { name = traits.kName; }))
        ThrowInvalidType("Invalid Type %d", m_type);
    return name;
}

std::string KvVariant::ToString(const char* format) const {
    if (m_holds && IsDate(m_type)) return DateTimeValue().ToString();
    std::string scratch;
    return std::string(ToText(scratch, format == nullptr ? std::string_view() : std::string_view(format)));
}

std::string_view KvVariant::ToText(std::string& scratch, std::string_view format) const {
    if (!m_holds) {
        if (m_type == ItemType_Unknown) ThrowInvalidType("Invalid Type %d to convert to string", m_type);
        return std::string_view();  // nil
    }
    // The most frequent kinds are written straight into the bytes of `scratch`, which keeps its size from one
    // call to the next; the others are appended to it after it is cleared.
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
        RequireSet(DateTimeValue());
        end = begin + DateTimeValue().FormatXsd(begin);
    }
    if (end == begin) return AppendText(scratch, format);
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::string_view KvVariant::AppendText(std::string& scratch, std::string_view format) const {
    scratch.clear();
    const bool isPrimitive = internal::VisitItemType(m_type, [&](auto traits) {
        using Type = typename decltype(traits)::Type;
        if constexpr (std::is_same_v<Type, CDateTime>) RequireSet(As<Type>());
        traits.Append(scratch, As<Type>(), format);
    });
    if (!isPrimitive) ThrowInvalidType("Invalid Type %d to convert to string", m_type);
    return scratch;
}

void KvVariant::FromString(std::string_view text, ItemType type, CWhitespaceUtils::WhitespaceRule rule) {
    const bool isPrimitive =
        internal::VisitItemType(type, [&](auto traits) { Set(type, traits.FromString(text, rule)); });
    if (!isPrimitive) ThrowInvalidType("Invalid Type %d to convert to string", type);
}

// --- facets ------------------------------------------------------------------------------------------------

namespace internal {

void CheckFacets(const CPrimitiveRestrictions& restrictions, std::string_view name, const KvVariant& value,
                 std::string_view lexical) {
    if (restrictions.IsEmpty() || !value.IsValid() || value.IsNil()) return;
    const ItemType type = value.GetTypeAsEnum();
    VisitItemType(type, [&](auto traits) {
        using Type = typename decltype(traits)::Type;
        if constexpr (std::is_same_v<Type, std::string>) {
            restrictions.Check(name, type, value.StringValue());
        } else if constexpr (std::is_same_v<Type, char>) {
            const char character = value.GetChar();
            restrictions.Check(name, type, std::string_view(&character, 1));
        } else {
            restrictions.Check(name, type, value.As<Type>(), lexical);
        }
    });
}

}  // namespace internal

}  // namespace KvXmlLib16
