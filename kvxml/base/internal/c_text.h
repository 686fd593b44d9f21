/// Zero-terminated text in which null counts as empty.
#pragma once

namespace KvXmlLib16::internal {

inline const char* OrEmpty(const char* text) noexcept {
    return text == nullptr ? "" : text;
}

}  // namespace KvXmlLib16::internal
