/// Characters of UTF-8 text.
#pragma once

#include <cstddef>
#include <string_view>

namespace tool {

/// A character, or one byte that is part of none.
struct Character {
    char32_t code;
    std::size_t length;  // in bytes; 0 at the end of the text
    bool isWellFormed;
};

/// The character that the text begins with; when it is ill-formed, `code` is its first byte.
Character FirstCharacter(std::string_view text);

/// The largest length up to `length` that cuts no character in two.
std::size_t CutLength(std::string_view text, std::size_t length);

}  // namespace tool
