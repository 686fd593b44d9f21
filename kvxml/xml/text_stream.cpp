#include "kvxml/xml/text_stream.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <typeinfo>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/words.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/xml/internal/text_encoding.h"

namespace KvXmlLib16 {

namespace internal {

void CheckEncoding(XmlEncoding encoding) {
    if (encoding != XmlEncoding_UTF8 && !IsUtf16(encoding))
        throw CKvException("Unknown Encoding, select UTF-8 (contact our support team)");
}

std::size_t UnfinishedLength(std::string_view utf8) noexcept {
    for (std::size_t tail = 1; tail <= 3 && tail <= utf8.size(); ++tail) {
        const auto byte = static_cast<unsigned char>(utf8[utf8.size() - tail]);
        if ((byte & 0xC0) == 0x80) continue;
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > tail ? tail : 0;
    }
    return 0;
}

const std::string& CPieceEncoder::Take(CStringBuffer& buffer, XmlEncoding encoding, bool isLast) {
    const std::size_t kept = m_pending.size();
    m_bytes.assign(m_pending);
    m_bytes.resize(kept + buffer.GetLength());
    const bool ascii = buffer.CopyTo(m_bytes.data() + kept) && kept == 0;
    buffer.Reset();
    m_pending.clear();

    CheckEncoding(encoding);
    if (!IsLocalUtf8()) {
        m_bytes = LocalToUtf8(m_bytes);
    } else if (!ascii) {
        if (!isLast) {
            const std::size_t unfinished = UnfinishedLength(m_bytes);
            m_pending.assign(m_bytes, m_bytes.size() - unfinished);
            m_bytes.resize(m_bytes.size() - unfinished);
        }
        if (!IsAsciiOnly() && WellFormedUtf8Length(m_bytes) != m_bytes.size()) m_bytes = RepairUtf8(m_bytes);
    }
    if (IsUtf16(encoding)) m_bytes = Utf8ToUtf16Le(m_bytes);
    return m_bytes;
}

}  // namespace internal

namespace {

struct FreeData {
    void operator()(unsigned char* data) const noexcept { CBinaryData::FreeData(data); }
};
using Bytes = std::unique_ptr<unsigned char[], FreeData>;

Bytes Allocate(std::size_t length) {
    return Bytes(CBinaryData::AllocateData(length));
}

CBinaryData Adopt(Bytes bytes, std::size_t length) {
    CBinaryData data(bytes.get(), length, true);
    if (length != 0) bytes.release();
    return data;
}

CBinaryData Copy(std::string_view bytes) {
    return CBinaryData(bytes);
}

/// The four low bytes of `word` as four 16-bit units.
constexpr std::uint64_t Spread(std::uint32_t word) noexcept {
    const std::uint64_t pairs = (std::uint64_t{word} | std::uint64_t{word} << 16) & 0x0000FFFF0000FFFFu;
    return (pairs | pairs << 8) & 0x00FF00FF00FF00FFu;
}

/// Builds UTF-16 from blocks of UTF-8.
class CUtf16Builder {
public:
    /// `length` is that of all blocks. No character takes more units than bytes.
    explicit CUtf16Builder(std::size_t length) : m_bytes(Allocate(2 * length)), m_capacity(2 * length) {}

    void Add(std::string_view block) {
        if (m_unfinished.empty()) block.remove_prefix(AddAscii(block));
        if (block.empty()) return;
        const std::string* text = nullptr;
        std::string joined;
        if (!m_unfinished.empty()) {
            joined = m_unfinished;
            joined += block;
            text = &joined;
            block = *text;
        }
        const std::size_t rest = internal::UnfinishedLength(block);
        AddConverted(block.substr(0, block.size() - rest));
        m_unfinished = block.substr(block.size() - rest);
    }

    CBinaryData Finish() {
        AddConverted(m_unfinished);
        if (m_used < m_capacity - m_capacity / 8) {
            if (void* const shrunk = std::realloc(m_bytes.get(), m_used != 0 ? m_used : 1)) {
                m_bytes.release();
                m_bytes.reset(static_cast<unsigned char*>(shrunk));
            }
        }
        return Adopt(std::move(m_bytes), m_used);
    }

private:
    /// Adds the ASCII characters that `text` begins with and returns how many they are.
    std::size_t AddAscii(std::string_view text) noexcept {
        unsigned char* out = m_bytes.get() + m_used;
        std::size_t i = 0;
        if constexpr (std::endian::native == std::endian::little) {
            for (; i + 4 <= text.size(); i += 4) {
                const auto word = internal::Load<std::uint32_t>(text.data() + i);
                if (internal::HasNonAscii(word) != 0) break;
                const std::uint64_t units = Spread(word);
                std::memcpy(out + 2 * i, &units, sizeof(units));
            }
        }
        for (; i < text.size() && static_cast<unsigned char>(text[i]) < 0x80; ++i) {
            out[2 * i] = static_cast<unsigned char>(text[i]);
            out[2 * i + 1] = 0;
        }
        m_used += 2 * i;
        return i;
    }

    void AddConverted(std::string_view utf8) {
        if (utf8.empty()) return;
        const std::string units = internal::Utf8ToUtf16Le(utf8);
        std::memcpy(m_bytes.get() + m_used, units.data(), units.size());
        m_used += units.size();
    }

    Bytes m_bytes;
    std::size_t m_capacity;
    std::size_t m_used = 0;
    std::string m_unfinished;  // the beginning of a character that ends in the next block
};

/// The buffer's text, in the local code page that is not UTF-8, as UTF-8.
std::string ConvertLocal(const CStringBuffer& buffer) {
    std::string text;
    buffer.CopyTo(text);
    return internal::LocalToUtf8(text);
}

}  // namespace

CTextStream::CTextStream(XmlEncoding encoding) noexcept : m_encoding(encoding) {}

CTextStream::~CTextStream() = default;

void CTextStream::Begin() {
    m_buffer.Reset();
}

void CTextStream::End() {}

void CTextStream::Flush() {}

bool CTextStream::NeedsFlush() const noexcept {
    return typeid(*this) != typeid(CTextStream);
}

CBinaryData CTextStream::ToBinaryData() const {
    internal::CheckEncoding(m_encoding);
    const std::size_t length = m_buffer.GetLength();
    if (length == 0) return CBinaryData();
    const bool isUtf8 = internal::IsLocalUtf8();
    if (internal::IsUtf16(m_encoding)) {
        if (!isUtf8) return Copy(internal::Utf8ToUtf16Le(ConvertLocal(m_buffer)));
        CUtf16Builder builder(length);
        m_buffer.ForEachBlock([&builder](std::string_view block) { builder.Add(block); });
        return builder.Finish();
    }
    if (!isUtf8) return Copy(ConvertLocal(m_buffer));
    Bytes bytes = Allocate(length);
    auto* const text = reinterpret_cast<char*>(bytes.get());
    if (!m_buffer.CopyTo(text) && !internal::IsAsciiOnly() &&
        internal::WellFormedUtf8Length({text, length}) != length)
        return Copy(internal::RepairUtf8({text, length}));
    return Adopt(std::move(bytes), length);
}

std::string CTextStream::TakeText() {
    std::string text;
    const bool isWellFormed = m_buffer.MoveTo(text);
    if (!isWellFormed && internal::IsLocalUtf8() && !internal::IsAsciiOnly())
        text = internal::RepairUtf8(text);
    return text;
}

}  // namespace KvXmlLib16
