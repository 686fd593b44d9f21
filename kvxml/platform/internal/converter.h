/// RAII handle of the host's character set converter.
#pragma once

#include <iconv.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace KvXmlLib16::internal {

/// One direction of conversion. Not thread-safe.
class CConverter {
public:
    /// What became of a piece of input.
    enum class Result {
        Done,        ///< all of it was converted
        Invalid,     ///< stopped in front of a sequence that is ill-formed or has no counterpart
        Incomplete,  ///< stopped in front of a character that the input ends in
    };

    CConverter() = default;
    /// Check `IsOpen` afterwards: the host may not know one of the names.
    CConverter(const char* to, const char* from) noexcept;
    CConverter(CConverter&& other) noexcept : m_handle(std::exchange(other.m_handle, Closed())) {}
    CConverter& operator=(CConverter&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~CConverter();

    bool IsOpen() const noexcept { return m_handle != Closed(); }
    /// Back to the initial shift state.
    void Reset() noexcept { iconv(m_handle, nullptr, nullptr, nullptr, nullptr); }
    /// Appends the conversion of `input` and removes from its front what was converted.
    Result Convert(std::string_view& input, std::string& output);
    /// Appends what the converter still holds back and returns to the initial shift state.
    void Finish(std::string& output);

private:
    static constexpr std::size_t kShortestPiece = 16;

    static iconv_t Closed() noexcept;

    iconv_t m_handle = Closed();
    std::size_t m_piece = kShortestPiece;  // of the input, for the next call of the host
};

}  // namespace KvXmlLib16::internal
