#include "kvxml/types/binary_data.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "kvxml/base/exceptions.h"
#include "kvxml/types/base64.h"
#include "kvxml/types/format_string.h"

namespace KvXmlLib16 {

static_assert(sizeof(CBinaryData) <= 16);

/// Bytes and the number of objects that share them. The count is also the lock of the block: while one object
/// appends it is kLocked, and whoever wants to share the block meanwhile waits.
struct CBinaryData::Block : BlockBase {
    static constexpr std::int32_t kLocked = -1;

    Block(unsigned char* bytes, std::size_t usedLength, std::size_t allocatedLength) noexcept
        : BlockBase{bytes, usedLength}, capacity(allocatedLength) {}
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { FreeData(data); }

    void AddRef() noexcept {
        std::int32_t present = count.load(std::memory_order_relaxed);
        for (;;) {
            if (present == kLocked) {
                std::this_thread::yield();
                present = count.load(std::memory_order_relaxed);
            } else if (count.compare_exchange_weak(present, present + 1, std::memory_order_acq_rel,
                                                   std::memory_order_relaxed)) {
                return;
            }
        }
    }
    void Release() noexcept {
        if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    bool IsShared() const noexcept { return count.load(std::memory_order_acquire) > 1; }
    /// Locks a block that one object holds and returns 1; returns the number of holders when there are more.
    std::int32_t Lock() noexcept {
        for (;;) {
            std::int32_t present = 1;
            if (count.compare_exchange_strong(present, kLocked, std::memory_order_acquire)) return 1;
            if (present != kLocked) return present;
            std::this_thread::yield();
        }
    }
    void Unlock() noexcept { count.store(1, std::memory_order_release); }

    bool Reallocate(std::size_t newCapacity) noexcept {
        void* const moved = std::realloc(data, newCapacity);
        if (moved == nullptr) return false;
        data = static_cast<unsigned char*>(moved);
        capacity = newCapacity;
        return true;
    }

    std::size_t capacity;
    std::atomic<std::int32_t> count{1};
};

namespace {

constexpr std::size_t kMinGrowingCapacity = 8192;

struct DataDeleter {
    void operator()(unsigned char* data) const noexcept { CBinaryData::FreeData(data); }
};
using DataPtr = std::unique_ptr<unsigned char, DataDeleter>;

DataPtr Allocate(std::size_t length) {
    return DataPtr(CBinaryData::AllocateData(length));
}

/// Capacity for a block that is expected to grow.
std::size_t GrowingCapacity(std::size_t needed) noexcept {
    const std::size_t twice = needed > std::numeric_limits<std::size_t>::max() / 2 ? needed : needed * 2;
    return std::max(twice, kMinGrowingCapacity);
}

std::size_t CheckedSum(std::size_t a, std::size_t b) {
    if (b > std::numeric_limits<std::size_t>::max() - a) throw std::bad_alloc();
    return a + b;
}

const unsigned char* AsBytes(std::string_view text) noexcept {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string_view AsView(const char* text) noexcept {
    return text == nullptr ? std::string_view() : text;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

constexpr auto kHexPairs = [] {
    std::array<char, 512> pairs{};
    for (std::size_t i = 0; i < 256; ++i) {
        pairs[i * 2] = kHexDigits[i >> 4];
        pairs[i * 2 + 1] = kHexDigits[i & 15];
    }
    return pairs;
}();

constexpr std::uint8_t kNoHexDigit = 0xff;

constexpr auto kHexValues = [] {
    std::array<std::uint8_t, 256> values{};
    for (std::uint8_t& value : values)
        value = kNoHexDigit;
    for (std::uint8_t i = 0; i < 16; ++i) {
        values[static_cast<std::size_t>(kHexDigits[i])] = i;
        if (i > 9) values[static_cast<std::size_t>(kHexDigits[i]) + ('a' - 'A')] = i;
    }
    return values;
}();

}  // namespace

// --- memory -----------------------------------------------------------------------------------------------

unsigned char* CBinaryData::AllocateData(std::size_t length) {
    void* const data = std::malloc(std::max<std::size_t>(length, 1));
    if (data == nullptr) throw std::bad_alloc();
    return static_cast<unsigned char*>(data);
}

void CBinaryData::FreeData(unsigned char* data) noexcept {
    std::free(data);
}

CBinaryData::Block* CBinaryData::OwnBlock() const noexcept {
    return static_cast<Block*>(m_block);
}

void CBinaryData::MakeUnique(std::size_t extra) {
    Block* const old = OwnBlock();
    if (old == nullptr || !old->IsShared()) return;
    const std::size_t length = old->length;
    const std::size_t capacity = extra == 0 ? length : GrowingCapacity(CheckedSum(length, extra));
    DataPtr copy = Allocate(capacity);
    std::memcpy(copy.get(), old->data, length);
    m_block = new Block(copy.get(), length, capacity);
    copy.release();
    old->Release();
}

// --- construction -----------------------------------------------------------------------------------------

CBinaryData::CBinaryData(Block* block) noexcept : m_block(block) {}

CBinaryData::CBinaryData(const CBinaryData& other) noexcept : m_block(other.m_block) {
    if (m_block != nullptr) OwnBlock()->AddRef();
}

CBinaryData::CBinaryData(const unsigned char* data, std::size_t length) {
    if (length == 0) return;
    DataPtr copy = Allocate(length);
    std::memcpy(copy.get(), data, length);
    m_block = new Block(copy.get(), length, length);
    copy.release();
}

CBinaryData::CBinaryData(unsigned char* data, std::size_t length, bool adopt) {
    if (length == 0) return;
    if (adopt) {
        m_block = new Block(data, length, length);
    } else {
        *this = CBinaryData(data, length);
    }
}

CBinaryData::CBinaryData(const char* text) : CBinaryData(AsView(text)) {}

CBinaryData::CBinaryData(std::string_view text) : CBinaryData(AsBytes(text), text.size()) {}

CBinaryData::~CBinaryData() {
    Clear();
}

CBinaryData& CBinaryData::operator=(const CBinaryData& other) noexcept {
    *this = CBinaryData(other);
    return *this;
}

CBinaryData& CBinaryData::operator=(CBinaryData&& other) noexcept {
    if (this != &other) {
        Clear();
        m_block = std::exchange(other.m_block, nullptr);
    }
    return *this;
}

void CBinaryData::Clear() noexcept {
    if (m_block != nullptr) {
        OwnBlock()->Release();
        m_block = nullptr;
    }
}

// --- changes ----------------------------------------------------------------------------------------------

void CBinaryData::Append(const unsigned char* data, std::size_t length) {
    if (length == 0) return;
    if (m_block == nullptr) {
        const std::size_t capacity = GrowingCapacity(length);
        DataPtr copy = Allocate(capacity);
        std::memcpy(copy.get(), data, length);
        m_block = new Block(copy.get(), length, capacity);
        copy.release();
        return;
    }

    // Bytes out of this very buffer are found again by their place when the buffer moves.
    const std::less<const unsigned char*> before;
    const bool isOwn = !before(data, m_block->data) && before(data, m_block->data + m_block->length);
    const std::size_t place = isOwn ? static_cast<std::size_t>(data - m_block->data) : 0;

    MakeUnique(length);
    Block* const block = OwnBlock();
    const std::int32_t holders = block->Lock();
    if (holders != 1) throw CKvException(FormatString("Failed to append. [RefCount=%d]", holders));
    if (length > block->capacity - block->length) {
        const std::size_t needed = block->length + length;
        const bool overflow = needed < length;
        if (overflow || (!block->Reallocate(GrowingCapacity(needed)) && !block->Reallocate(needed))) {
            block->Unlock();
            throw std::bad_alloc();
        }
    }
    std::memcpy(block->data + block->length, isOwn ? block->data + place : data, length);
    block->length += length;
    block->Unlock();
}

void CBinaryData::Append(const char* text) {
    const std::string_view view = AsView(text);
    Append(AsBytes(view), view.size());
}

void CBinaryData::Append(const std::string& text) {
    Append(text.c_str());
}

void CBinaryData::Append(const CBinaryData& other) {
    Append(other.GetData(), other.GetLength());
}

void CBinaryData::SetBuffer(const unsigned char* data, std::size_t length) {
    *this = CBinaryData(data, length);
}

void CBinaryData::SetBuffer(const char* text) {
    *this = CBinaryData(text);
}

unsigned char* CBinaryData::ReleaseData() {
    if (m_block == nullptr) return nullptr;
    MakeUnique(0);
    Block* const block = OwnBlock();
    const std::int32_t holders = block->Lock();
    if (holders != 1) throw CKvException(FormatString("Failed to release data. [RefCount=%d]", holders - 1));
    m_block = nullptr;
    unsigned char* const data = std::exchange(block->data, nullptr);
    delete block;
    return data;
}

// --- reading ----------------------------------------------------------------------------------------------

bool CBinaryData::operator==(const CBinaryData& other) const noexcept {
    if (m_block == other.m_block) return true;
    const std::size_t length = GetLength();
    return length == other.GetLength() &&
           (length == 0 || std::memcmp(GetData(), other.GetData(), length) == 0);
}

namespace {
[[noreturn]] void ThrowOutOfRange(std::size_t index) {
    throw CKvException(FormatString("Index Out of range [%lld]", static_cast<long long>(index)));
}
}  // namespace

const unsigned char& CBinaryData::operator[](std::size_t index) const {
    static constexpr unsigned char kBehindEnd = 0;
    if (m_block == nullptr || index > m_block->length) ThrowOutOfRange(index);
    return index == m_block->length ? kBehindEnd : m_block->data[index];
}

unsigned char& CBinaryData::operator[](std::size_t index) {
    if (m_block == nullptr || index > m_block->length) ThrowOutOfRange(index);
    MakeUnique(0);
    Block* const block = OwnBlock();
    if (index == block->length) {
        if (block->capacity == block->length && !block->Reallocate(block->length + 1)) throw std::bad_alloc();
        block->data[index] = 0;
    }
    return block->data[index];
}

// --- text forms -------------------------------------------------------------------------------------------

std::string CBinaryData::GetAsBase64() const {
    std::string text(CBase64::EncodedLength(GetLength()), '\0');
    CBase64(GetData(), GetLength()).Encode(text.data());
    return text;
}

void CBinaryData::SetAsBase64(const char* text) {
    SetAsBase64(AsView(text));
}

void CBinaryData::SetAsBase64(std::string_view text) {
    const std::size_t capacity = CBase64::MaxDecodedLength(text.size());
    DataPtr data = Allocate(text.empty() ? 0 : capacity);
    const std::size_t length = CBase64(text).Decode(data.get());
    Clear();
    if (length == 0) return;
    Block* const block = new Block(data.get(), length, capacity);
    data.release();
    m_block = block;
    if (capacity - length > 3 && capacity - length > capacity / 8) block->Reallocate(length);
}

std::string CBinaryData::GetAsHexString(const unsigned char* data, std::size_t length) {
    if (data == nullptr) return std::string();
    std::string text(length * 2, '\0');
    char* out = text.data();
    for (std::size_t i = 0; i < length; ++i, out += 2) {
        std::memcpy(out, &kHexPairs[std::size_t{data[i]} * 2], 2);
    }
    return text;
}

void CBinaryData::SetAsHexString(const char* text) {
    SetAsHexString(AsView(text));
}

void CBinaryData::SetAsHexString(std::string_view text) {
    const CBinaryData former(std::move(*this));  // kept until the end: `text` may be made of its bytes
    unsigned char* data = nullptr;
    const std::size_t length = ConvertToHexData(text, &data);
    DataPtr guard(data);
    if (length == 0) return;
    m_block = new Block(data, length, length);
    guard.release();
}

std::size_t CBinaryData::ConvertToHexData(const char* hex, unsigned char** out) {
    return ConvertToHexData(AsView(hex), out);
}

std::size_t CBinaryData::ConvertToHexData(std::string_view hex, unsigned char** out) {
    *out = nullptr;
    if (hex.size() % 2 != 0) throw CKvException("Invalid length in hex string");
    if (hex.empty()) return 0;
    const std::size_t length = hex.size() / 2;
    DataPtr data = Allocate(length);
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t high = kHexValues[static_cast<unsigned char>(hex[i * 2])];
        const std::uint8_t low = kHexValues[static_cast<unsigned char>(hex[i * 2 + 1])];
        if ((high | low) == kNoHexDigit) {
            throw CKvException(std::string("Invalid char in hex string [") +
                               hex[i * 2 + (high == kNoHexDigit ? 0 : 1)] + "]");
        }
        data.get()[i] = static_cast<unsigned char>(high << 4 | low);
    }
    *out = data.release();
    return length;
}

}  // namespace KvXmlLib16
