/// A generated document of orders of any size, the same for the same arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace benchmarks {

/// Document of at most `bytes` bytes (or one order), indented by two blanks: orders of one to nine items with
/// some text in many scripts, a tenth of it in need of escaping. Business data: few attributes, short
/// elements.
std::string MakeOrdersDocument(std::size_t bytes, std::uint32_t seed = 20261121);

/// The same document in pieces, for files larger than memory should hold.
void WriteOrdersDocument(std::size_t bytes, std::uint32_t seed,
                         const std::function<void(std::string_view)>& sink);

}  // namespace benchmarks
