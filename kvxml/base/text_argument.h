/// Which arguments are texts of known length, for functions that take zero-terminated text as well.
#pragma once

#include <string_view>
#include <type_traits>

namespace KvXmlLib16::internal {

/// For overloads beside those for `const char*` and `const wchar_t*`: `std::string`, `std::string_view` and
/// what converts to a view, but nothing that the other overloads take.
template <class Text>
using IfTextView = std::enable_if_t<std::is_convertible_v<const Text&, std::string_view> &&
                                        !std::is_convertible_v<const Text&, const char*> &&
                                        !std::is_convertible_v<const Text&, const wchar_t*>,
                                    int>;

}  // namespace KvXmlLib16::internal
