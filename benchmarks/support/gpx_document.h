/// A generated GPX 1.1 document of any size, the same for the same arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace benchmarks {

/// Formatted document of about `bytes` bytes: one track after the other with segments of a few hundred
/// points (position, elevation, time; now and then satellites, dilution, a name), after some waypoints.
std::string MakeGpxDocument(std::size_t bytes, std::uint32_t seed = 1);

/// The same document in pieces, for files larger than memory should hold.
void WriteGpxDocument(std::size_t bytes, std::uint32_t seed,
                      const std::function<void(std::string_view)>& sink);

}  // namespace benchmarks
