/// Writing of floating point numbers.
#pragma once

#include <string>
#include <string_view>

namespace KvXmlLib16::internal {

/// Room that WriteReal and WriteXsdReal need.
inline constexpr int kMaxRealLength = 48;

/// Significant digits that values of the two kinds are written with.
inline constexpr int kR4Digits = 7;
inline constexpr int kR8Digits = 16;

/// Writes a finite `value` as printf does with "%.*g" in the "C" locale and round-to-nearest, for 7 or 16
/// `digits`; returns the end.
char* WriteReal(char* out, double value, int digits) noexcept;

/// Writes any `value` in its XSD form: as WriteReal, or "NaN", "INF", "-INF".
char* WriteXsdReal(char* out, double value, int digits) noexcept;

/// CKvInvalidParamException for a format that is not text with at most one conversion of a double.
void CheckRealFormat(std::string_view format);

/// Appends what printf makes of `format` and `value` in the "C" locale, after CheckRealFormat.
void AppendFormattedReal(std::string& out, double value, std::string_view format);

}  // namespace KvXmlLib16::internal
