/// Writing of floating point numbers with a given number of significant digits.
#pragma once

namespace KvXmlLib16::internal {

/// Room that WriteReal needs.
inline constexpr int kMaxRealLength = 48;

/// Writes a finite `value` as printf does with "%.*g" in the "C" locale and round-to-nearest, for 7 or 16
/// `digits`; returns the end.
char* WriteReal(char* out, double value, int digits) noexcept;

}  // namespace KvXmlLib16::internal
