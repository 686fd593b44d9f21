/// Binary and packed forms of texts in Fast Infoset documents.
#pragma once

#include <string>
#include <string_view>

#include "kvxml/types/item_type.h"

namespace KvXmlLib16::internal {

/// Numbers of the built-in encoding algorithms (ITU-T X.891, clause 10), counted from 0.
enum FastInfosetAlgorithm : unsigned {
    FastInfosetAlgorithm_Hexadecimal = 0,
    FastInfosetAlgorithm_Base64 = 1,
    FastInfosetAlgorithm_Short = 2,
    FastInfosetAlgorithm_Int = 3,
    FastInfosetAlgorithm_Long = 4,
    FastInfosetAlgorithm_Boolean = 5,
    FastInfosetAlgorithm_Float = 6,
    FastInfosetAlgorithm_Double = 7,
    FastInfosetAlgorithm_CData = 9,
};

/// Encodes the text of a value of that type by the algorithm made for it. False, with `octets` undefined,
/// when there is none or when decoding would not give back this very text.
bool EncodeValue(ItemType type, std::string_view text, unsigned& algorithm, std::string& octets);

/// Packs a text of the characters of one of the built-in restricted alphabets; false when there is none.
bool PackText(std::string_view text, unsigned& alphabet, std::string& octets);

}  // namespace KvXmlLib16::internal
