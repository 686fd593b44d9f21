#include "kvxml/types/internal/compression.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16::internal {
namespace {

// zlib counts in unsigned int: longer input and output goes through in pieces.
constexpr std::size_t kMaxPiece = std::numeric_limits<uInt>::max();
constexpr std::size_t kInflateStep = 65536;
// Below this size any ratio is good.
constexpr std::size_t kFreeRatio = std::size_t{8} << 20;
constexpr int kLevel = 1;
constexpr int kMemoryLevel = 8;
constexpr int kGZipWindowBits = 31;
constexpr int kZLibWindowBits = 15;
constexpr int kDetectWindowBits = 47;

uInt Piece(std::size_t length) noexcept {
    return static_cast<uInt>(std::min(length, kMaxPiece));
}

/// Memory for the output, of the kind that CBinaryData adopts.
class Output {
public:
    explicit Output(std::size_t capacity)
        : m_data(CBinaryData::AllocateData(capacity)), m_capacity(capacity) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() { CBinaryData::FreeData(m_data); }

    unsigned char* End() const noexcept { return m_data + length; }
    std::size_t Room() const noexcept { return m_capacity - length; }
    std::size_t Capacity() const noexcept { return m_capacity; }
    void Resize(std::size_t capacity) {
        void* const moved = std::realloc(m_data, std::max<std::size_t>(capacity, 1));
        if (moved == nullptr) throw std::bad_alloc();
        m_data = static_cast<unsigned char*>(moved);
        m_capacity = capacity;
    }
    /// Gives the bytes to a buffer, without the unused rest.
    CBinaryData Take() {
        if (length < m_capacity) Resize(length);
        CBinaryData result(m_data, length, true);
        if (length != 0) m_data = nullptr;
        return result;
    }

    std::size_t length = 0;

private:
    unsigned char* m_data;
    std::size_t m_capacity;
};

/// A stream of zlib with the function that ends it.
class Stream {
public:
    explicit Stream(int (*end)(z_streamp)) noexcept : m_end(end) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { m_end(&zlib); }

    /// Runs one call of zlib on what both sides have left, as far as one call reaches.
    int Step(int (*function)(z_streamp, int), int flush, const unsigned char*& input, std::size_t& rest,
             Output& output) {
        const uInt in = Piece(rest);
        const uInt room = Piece(output.Room());
        zlib.next_in = const_cast<unsigned char*>(input);  // zlib only reads it
        zlib.avail_in = in;
        zlib.next_out = output.End();
        zlib.avail_out = room;
        const int code = function(&zlib, flush);
        input += in - zlib.avail_in;
        rest -= in - zlib.avail_in;
        output.length += room - zlib.avail_out;
        return code;
    }

    z_stream zlib{};

private:
    int (*m_end)(z_streamp);
};

[[noreturn]] void ThrowCompressError(int code) {
    throw CKvException(FormatString("Failed to compress data. [Error Code: %d]", code));
}

bool IsGZip(const unsigned char* data, std::size_t length) noexcept {
    return length >= 3 && data[0] == 0x1f && data[1] == 0x8b && data[2] == Z_DEFLATED;
}

bool IsZLib(const unsigned char* data, std::size_t length) noexcept {
    return length >= 2 && (data[0] & 0x0f) == Z_DEFLATED && data[0] >> 4 <= 7 &&
           (data[0] * 256 + data[1]) % 31 == 0;
}

void CheckSize(std::size_t inflated, std::size_t compressed, const InflateLimits& limits) {
    if (limits.maxSize != 0 && inflated > limits.maxSize) {
        throw CKvException(FormatString("The compressed data inflates to more than the limit of %llu bytes.",
                                        static_cast<unsigned long long>(limits.maxSize)));
    }
    if (limits.maxRatio != 0 && inflated > kFreeRatio && inflated / limits.maxRatio > compressed) {
        throw CKvException(FormatString(
            "The compressed data inflates to more than the limit of %u times its size: its first %llu bytes "
            "give %llu.",
            limits.maxRatio, static_cast<unsigned long long>(compressed),
            static_cast<unsigned long long>(inflated)));
    }
}

/// More room, twice as much each time, but never more than is needed to see that the limit is passed.
void Grow(Output& output, std::size_t maxSize) {
    std::size_t capacity = output.Capacity();
    capacity = std::max(capacity + kInflateStep,
                        capacity > std::numeric_limits<std::size_t>::max() / 2 ? capacity : capacity * 2);
    if (maxSize != 0) capacity = std::min(capacity, maxSize + 1);
    output.Resize(capacity);
}

}  // namespace

void Compress(CBinaryData& data, CompressionType type) {
    if (data.GetLength() == 0 || (type != CompressionType_GZip && type != CompressionType_ZLib)) return;

    const unsigned char* input = data.GetData();
    std::size_t rest = data.GetLength();
    Output output(rest);
    Stream stream(deflateEnd);
    int code = deflateInit2(&stream.zlib, kLevel, Z_DEFLATED,
                            type == CompressionType_GZip ? kGZipWindowBits : kZLibWindowBits, kMemoryLevel,
                            Z_DEFAULT_STRATEGY);
    if (code != Z_OK) ThrowCompressError(code);

    do {
        code = stream.Step(deflate, Z_NO_FLUSH, input, rest, output);
    } while (code == Z_OK && rest != 0 && output.Room() != 0);
    do {
        code = stream.Step(deflate, Z_FINISH, input, rest, output);
    } while (code == Z_OK && output.Room() != 0);
    if (code != Z_STREAM_END) ThrowCompressError(code);
    data = output.Take();
}

bool Inflate(const unsigned char* data, std::size_t length, const InflateLimits& limits, CBinaryData& out) {
    out.Clear();
    const bool isGZip = IsGZip(data, length);
    if (!isGZip && !IsZLib(data, length)) return false;

    std::size_t capacity =
        std::max(kInflateStep, length <= std::numeric_limits<std::size_t>::max() / 4 ? length * 4 : length);
    const std::size_t maxSize =
        limits.maxSize == std::numeric_limits<std::size_t>::max() ? 0 : limits.maxSize;
    if (maxSize != 0) capacity = std::min(capacity, maxSize + 1);
    Output output(capacity);
    Stream stream(inflateEnd);
    if (inflateInit2(&stream.zlib, kDetectWindowBits) != Z_OK) throw std::bad_alloc();

    const unsigned char* input = data;
    std::size_t rest = length;
    for (;;) {
        if (output.Room() == 0) Grow(output, maxSize);
        const std::size_t restBefore = rest;
        const std::size_t lengthBefore = output.length;
        const int code = stream.Step(inflate, Z_NO_FLUSH, input, rest, output);
        CheckSize(output.length, length - rest, limits);
        if (code == Z_STREAM_END) {
            if (!isGZip || !IsGZip(input, rest)) break;
            if (inflateReset(&stream.zlib) != Z_OK) return false;
        } else if (code == Z_MEM_ERROR) {
            throw std::bad_alloc();
        } else if (code != Z_OK || (rest == restBefore && output.length == lengthBefore)) {
            return false;  // damaged, cut off, or in need of a dictionary
        }
    }
    out = output.Take();
    return true;
}

// --- piece by piece ----------------------------------------------------------------------------------------

struct CInflater::Impl {
    Stream stream{inflateEnd};
    bool isGZip = false;
    bool hasBegun = false;
    bool isBetweenMembers = false;
};

bool CInflater::IsCompressed(const unsigned char* data, std::size_t length) noexcept {
    return IsGZip(data, length) || IsZLib(data, length);
}

CInflater::CInflater(const InflateLimits& limits) : m_impl(std::make_unique<Impl>()), m_limits(limits) {
    if (inflateInit2(&m_impl->stream.zlib, kDetectWindowBits) != Z_OK) throw std::bad_alloc();
}

CInflater::~CInflater() = default;

std::size_t CInflater::Inflate(const unsigned char*& input, std::size_t& length, bool isLast,
                               unsigned char* output, std::size_t room) {
    Impl& impl = *m_impl;
    z_stream& zlib = impl.stream.zlib;
    if (!impl.hasBegun) {
        impl.isGZip = IsGZip(input, length);
        impl.hasBegun = true;
    }
    std::size_t made = 0;
    while (!m_isAtEnd && made < room) {
        if (impl.isBetweenMembers) {
            if (length < 3 && !isLast) break;
            impl.isBetweenMembers = false;
            if (!IsGZip(input, length)) {
                m_isAtEnd = true;
                break;
            }
            if (inflateReset(&zlib) != Z_OK) throw CKvException("The compressed data is damaged.");
        }
        zlib.next_in = const_cast<unsigned char*>(input);  // zlib only reads it
        zlib.avail_in = Piece(length);
        zlib.next_out = output + made;
        zlib.avail_out = Piece(room - made);
        const uInt in = zlib.avail_in;
        const uInt out = zlib.avail_out;
        const int code = inflate(&zlib, Z_NO_FLUSH);
        const std::size_t took = in - zlib.avail_in;
        const std::size_t gave = out - zlib.avail_out;
        input += took;
        length -= took;
        made += gave;
        m_taken += took;
        m_made += gave;
        CheckSize(m_made, m_taken, m_limits);
        if (code == Z_STREAM_END) {
            impl.isBetweenMembers = impl.isGZip;
            m_isAtEnd = !impl.isGZip;
        } else if (code == Z_MEM_ERROR) {
            throw std::bad_alloc();
        } else if (code != Z_OK && code != Z_BUF_ERROR) {
            throw CKvException("The compressed data is damaged.");
        } else if (took == 0 && gave == 0) {
            if (isLast) throw CKvException("The compressed data is cut off.");
            break;
        }
    }
    return made;
}

}  // namespace KvXmlLib16::internal
