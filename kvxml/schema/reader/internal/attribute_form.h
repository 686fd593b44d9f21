/// Lexical forms of the attributes of schema documents.
#pragma once

#include <cstdint>
#include <string_view>

namespace KvXmlLib16::internal {

/// What the value of an attribute must look like, blanks collapsed.
enum class AttributeForm : std::uint8_t {
    Text,  ///< anything
    Id,    ///< an NCName, once in a document
    NcName,
    QName,
    QNames,  ///< blanks between them; may be empty
    AnyUri,
    TargetNamespace,  ///< a URI that is not empty
    Boolean,
    Count,  ///< nonNegativeInteger
    CountOrUnbounded,
    ZeroOrOne,  ///< occurrence of and in `all`
    One,
    Qualification,  ///< qualified, unqualified
    Use,
    ProcessContents,
    NamespaceList,
    BlockSet,             ///< #all, or extension, restriction, substitution
    DerivationSet,        ///< #all, or extension, restriction
    FullDerivationSet,    ///< #all, or extension, restriction, list, union
    SimpleDerivationSet,  ///< #all, or restriction, list, union
    Language,             ///< of xml:lang
    Space,                ///< of xml:space
};

bool HasForm(std::string_view text, AttributeForm form) noexcept;

/// What a message says the value must be, "true, false, 1 or 0".
std::string_view DescriptionOf(AttributeForm form) noexcept;

}  // namespace KvXmlLib16::internal
