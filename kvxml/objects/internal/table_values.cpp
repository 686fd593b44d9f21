#include "kvxml/objects/internal/table_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/objects/internal/variant_facets.h"
#include "kvxml/objects/table_class.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/real_text.h"
#include "kvxml/xml/xml_writer.h"

namespace KvXmlLib16::internal {

namespace {

constexpr const char* kBlanks = " \t\n\r";

CWhitespaceUtils::WhitespaceRule RuleOf(CValueType::Whitespace whitespace) {
    switch (whitespace) {
        case CValueType::Whitespace::Preserve:
            return CWhitespaceUtils::WhitespaceRule_Preserve;
        case CValueType::Whitespace::Replace:
            return CWhitespaceUtils::WhitespaceRule_Replace;
        default:
            return CWhitespaceUtils::WhitespaceRule_Collapse;
    }
}

CPrimitiveRestrictions RestrictionsOf(const CValueType& type, CWhitespaceUtils::WhitespaceRule rule) {
    static constexpr CFacetTable kNone;
    const CFacetTable& facets = type.facets == nullptr ? kNone : *type.facets;
    // Of a list, lengths count the items, and its enumeration lists lists.
    const CPrimitiveRestrictions own =
        type.list != nullptr
            ? CPrimitiveRestrictions()
            : CPrimitiveRestrictions(nullptr, facets.minLength, facets.maxLength, facets.minInclusive,
                                     facets.maxInclusive, facets.minExclusive, facets.maxExclusive,
                                     facets.length, facets.totalDigits, facets.fractionDigits, rule,
                                     facets.enumeration);
    return own.WithPatterns(facets.patterns, facets.patternCount);
}

template <class Visit>
void ForEachWord(std::string_view text, Visit visit) {
    for (std::size_t begin = text.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
        visit(text.substr(begin, end - begin));
        begin = text.find_first_not_of(kBlanks, end);
    }
}

[[noreturn]] void ThrowInvalid(std::string_view name, std::string_view text) {
    throw CKvInvalidValueException(
        FormatString("Invalid Value for %s [%s].", std::string(name).c_str(), std::string(text).c_str()));
}

}  // namespace

CValueRecord::CValueRecord(const CValueType& type)
    : m_type(type),
      m_item(type.list != nullptr          ? type.list->item
             : type.enumeration != nullptr ? ItemType_i4
             : type.memberCount > 0        ? ItemType_string
                                           : type.item),
      m_rule(type.list != nullptr ? CWhitespaceUtils::WhitespaceRule_Collapse : RuleOf(type.whitespace)),
      m_restrictions(RestrictionsOf(type, m_rule)) {
    m_isPlainText = m_item == ItemType_string && type.list == nullptr && type.memberCount == 0 &&
                    m_restrictions.IsEmpty();
    for (std::int32_t i = 0; i < type.memberCount; ++i)
        m_members.push_back(std::make_unique<CValueRecord>(*type.members[i]));
    if (type.enumeration != nullptr) {
        for (std::int32_t i = 0; i < type.enumeration->count; ++i)
            m_texts.emplace_back(type.enumeration->texts[i], i);
        std::sort(m_texts.begin(), m_texts.end());
    }
    if (type.list == nullptr) return;
    m_list = std::make_unique<CValueRecord>(*type.list);
    m_item = m_list->m_item;
    if (type.facets == nullptr || type.facets->enumeration == nullptr) return;
    const std::string_view values = type.facets->enumeration;
    std::string scratch;
    std::unordered_set<std::string> lists;
    for (std::size_t begin = 0; begin <= values.size();) {
        const std::size_t end = std::min(values.find('\n', begin), values.size());
        const auto list = MakeValues(*m_list, "", "", 0, -1);
        ForEachWord(values.substr(begin, end - begin),
                    [&](std::string_view word) { AppendText(*list, m_item, "", word); });
        lists.emplace(FormatList("", *list, scratch));
        begin = end + 1;
    }
    m_lists = std::move(lists);
}

// --- enumerations, unions ----------------------------------------------------------------------------------

std::int32_t CValueRecord::FindText(std::string_view text) const {
    const auto found = std::lower_bound(m_texts.begin(), m_texts.end(), std::pair(text, std::int32_t{0}));
    if (found == m_texts.end() || found->first != text) ThrowInvalid(m_type.enumeration->name, text);
    return found->second;
}

const char* CValueRecord::TextOfNumber(std::int32_t number) const {
    if (number < 0 || number >= m_type.enumeration->count) {
        throw CKvInvalidValueException(
            FormatString("Invalid Value for %s [%d]", m_type.enumeration->name, number));
    }
    return m_type.enumeration->texts[number];
}

void CValueRecord::CheckUnion(std::string_view name, std::string_view text) const {
    for (const auto& member : m_members) {
        try {
            return member->Check(name, text);
        } catch (const CKvException&) {
            continue;
        }
    }
    ThrowInvalid(name, text);
}

void CValueRecord::Check(std::string_view name, std::string_view text) const {
    if (IsList()) {
        ParseList(name, text);
    } else {
        VisitHeldType(m_item, [&](auto* tag) { Parse<std::remove_pointer_t<decltype(tag)>>(name, text); });
    }
}

// --- single values -----------------------------------------------------------------------------------------

template <class T>
void CValueRecord::CheckFacets(std::string_view name, const T& value, std::string_view text) const {
    if constexpr (std::is_same_v<T, std::string>) {
        m_restrictions.Check(name, m_item, std::string_view(value));
    } else {
        m_restrictions.Check(name, m_item, value, text);
    }
}

template <class T>
T CValueRecord::Parse(std::string_view name, std::string_view text) const {
    T value = Convert<T>(name, text);
    if (!m_restrictions.IsEmpty()) {
        std::string scratch;
        CheckFacets(name, value, Lexical(text, scratch));
    }
    return value;
}

template <class T>
T CValueRecord::Convert(std::string_view name, std::string_view text) const {
    std::string scratch;
    T value{};
    if constexpr (std::is_same_v<T, std::int32_t>) {
        if (m_type.enumeration != nullptr) return FindText(ApplyRule(m_rule, text, scratch));
    }
    if constexpr (std::is_same_v<T, std::string>) {
        value.assign(ApplyRule(m_rule, text, scratch));
        if (!m_members.empty()) CheckUnion(name, value);
    } else {
        VisitItemType(m_item, [&](auto traits) {
            if constexpr (std::is_same_v<typename decltype(traits)::Type, T>)
                value = traits.FromString(text, m_rule);
        });
    }
    return value;
}

template <class T>
std::string_view CValueRecord::Format(std::string_view name, const T& value, std::string& scratch) const {
    std::string_view text;
    if constexpr (std::is_same_v<T, std::string>) {
        if (!m_members.empty()) CheckUnion(name, value);
        text = value;
    } else {
        if constexpr (std::is_same_v<T, std::int32_t>) {
            if (m_type.enumeration != nullptr) return TextOfNumber(value);
        }
        if constexpr (std::is_same_v<T, CDateTime>) {
            if (!value.IsSet()) throw CKvInvalidValueException("The date is not set");
        }
        // The most frequent kinds are written straight into the bytes of `scratch`.
        constexpr std::size_t kRoom = 64;
        if (scratch.size() < kRoom) scratch.resize(kRoom);
        char* const begin = scratch.data();
        char* end = begin;
        if constexpr (std::is_same_v<T, bool>) {
            text = value ? "true" : "false";
        } else if constexpr (std::is_same_v<T, CDecimal>) {
            if (value.IsSmall()) end = value.FormatTo(begin);
        } else if constexpr (std::is_same_v<T, double>) {
            end = WriteXsdReal(begin, value, kR8Digits);
        } else if constexpr (std::is_integral_v<T> && sizeof(T) >= sizeof(std::int32_t)) {
            end = std::to_chars(begin, begin + kRoom, value).ptr;
        } else if constexpr (std::is_same_v<T, CDateTime>) {
            if (m_item == ItemType_datetime) end = begin + value.FormatXsd(begin);
        }
        if (end != begin) {
            text = {begin, static_cast<std::size_t>(end - begin)};
        } else if (text.empty()) {
            scratch.clear();
            VisitItemType(m_item, [&](auto traits) {
                if constexpr (std::is_same_v<typename decltype(traits)::Type, T>)
                    traits.Append(scratch, value, {});
            });
            text = scratch;
        }
    }
    if (!m_restrictions.IsEmpty()) CheckFacets(name, value, text);
    return text;
}

// --- lists -------------------------------------------------------------------------------------------------

void CValueRecord::CheckList(std::string_view name, std::int32_t count, std::string_view text) const {
    m_restrictions.Check(name, ItemType_string, text);
    if (m_type.facets == nullptr) return;
    const CFacetTable& facets = *m_type.facets;
    const auto fail = [&](const char* facet, const std::string& limit) {
        throw CKvInvalidValueException(
            FormatString("Invalid Value for %s [%s]. It violates the facet %s [%s].",
                         std::string(name).c_str(), std::string(text).c_str(), facet, limit.c_str()));
    };
    const auto limit = [&](const char* facet, std::int32_t bound, bool isMet) {
        if (bound >= 0 && !isMet) fail(facet, std::to_string(bound));
    };
    limit("length", facets.length, count == facets.length);
    limit("minLength", facets.minLength, count >= facets.minLength);
    limit("maxLength", facets.maxLength, count <= facets.maxLength);
}

CSmartPtr<CXmlCollectionBase> CValueRecord::ParseList(std::string_view name, std::string_view text) const {
    CSmartPtr<CXmlCollectionBase> list = MakeValues(*m_list, std::string(name).c_str(), "", 0, -1);
    ForEachWord(text, [&](std::string_view word) { AppendText(*list, m_item, name, word); });
    std::string scratch;
    std::string form;
    CheckList(name, list->GetCount(), ApplyRule(m_rule, text, scratch));
    if (!m_lists.empty()) FormatList(name, *list, form);
    return list;
}

std::string_view CValueRecord::FormatList(std::string_view name, const CXmlCollectionBase& list,
                                          std::string& scratch) const {
    std::string text;
    VisitHeldType(m_item, [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        for (const T& value : static_cast<const CPrimitiveCollection<T>&>(list)) {
            const std::string_view word = m_list->Format(name, value, scratch);
            if (word.empty() || word.find_first_of(kBlanks) != std::string_view::npos)
                ThrowInvalid(name, word);
            if (!text.empty()) text += ' ';
            text += word;
        }
    });
    scratch.swap(text);
    CheckList(name, list.GetCount(), scratch);
    if (!m_lists.empty() && m_lists.count(scratch) == 0) {
        throw CKvInvalidValueException(
            FormatString("Invalid Value for %s [%s]. It violates the facet enumeration [%s].",
                         std::string(name).c_str(), scratch.c_str(), m_type.facets->enumeration));
    }
    return scratch;
}

// --- collections and places --------------------------------------------------------------------------------

CSmartPtr<CXmlCollectionBase> MakeValues(const CValueRecord& type, const char* name, const char* ns,
                                         int minOccurs, int maxOccurs) {
    CSmartPtr<CXmlCollectionBase> list;
    VisitHeldType(type.Item(), [&](auto* tag) {
        using Values = CTableValues<std::remove_pointer_t<decltype(tag)>>;
        list = CSmartPtr<CXmlCollectionBase>(new Values(type, name, ns, minOccurs, maxOccurs));
    });
    return list;
}

void AppendText(CXmlCollectionBase& list, ItemType item, std::string_view name, std::string_view text) {
    VisitHeldType(item, [&](auto* tag) {
        static_cast<CTableValues<std::remove_pointer_t<decltype(tag)>>&>(list).AddText(name, text);
    });
}

void WriteValues(const CXmlCollectionBase& list, ItemType item, const CXmlWriter::SimpleName& name,
                 CXmlWriter& writer) {
    VisitHeldType(item, [&](auto* tag) {
        static_cast<const CTableValues<std::remove_pointer_t<decltype(tag)>>&>(list).Write(writer, name);
    });
}

const void* AddressOf(const CMemberPlace& place, const CTableClass& object) noexcept {
    switch (place.GetKind()) {
#define KVXML_PLACE(kind, type)    \
    case CMemberPlace::Kind::kind: \
        return &place.kind(object);
        KVXML_PLACES(KVXML_PLACE)
#undef KVXML_PLACE
        default:
            return nullptr;
    }
}

#define KVXML_VALUE_TYPE(T)                                                      \
    template T CValueRecord::Parse<T>(std::string_view, std::string_view) const; \
    template std::string_view CValueRecord::Format<T>(std::string_view, const T&, std::string&) const;
KVXML_VALUE_TYPE(bool)
KVXML_VALUE_TYPE(std::int8_t)
KVXML_VALUE_TYPE(std::int16_t)
KVXML_VALUE_TYPE(std::int32_t)
KVXML_VALUE_TYPE(std::int64_t)
KVXML_VALUE_TYPE(std::uint8_t)
KVXML_VALUE_TYPE(std::uint16_t)
KVXML_VALUE_TYPE(std::uint32_t)
KVXML_VALUE_TYPE(std::uint64_t)
KVXML_VALUE_TYPE(float)
KVXML_VALUE_TYPE(double)
KVXML_VALUE_TYPE(std::string)
KVXML_VALUE_TYPE(CDecimal)
KVXML_VALUE_TYPE(CBigInteger)
KVXML_VALUE_TYPE(CDateTime)
KVXML_VALUE_TYPE(CDateTimeSpan)
KVXML_VALUE_TYPE(CBinaryData)
#undef KVXML_VALUE_TYPE

}  // namespace KvXmlLib16::internal
