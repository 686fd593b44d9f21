/// The blocks of the Unicode standard by name.
#pragma once

#include <string_view>

namespace KvXmlLib16::internal {

/// First and last code point of the block with that name, written without blanks ("BasicLatin"). False when
/// there is none.
bool FindUnicodeBlock(std::string_view name, char32_t& first, char32_t& last) noexcept;

}  // namespace KvXmlLib16::internal
