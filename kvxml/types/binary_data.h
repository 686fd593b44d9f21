/// Byte buffer with shared storage: the value of base64Binary and hexBinary, and the form of documents in
/// memory.
///
///     CBinaryData photo;
///     photo.SetAsBase64(text);
///     file.write(reinterpret_cast<const char*>(photo.GetData()), photo.GetLength());
///     std::vector<unsigned char> bytes(photo.begin(), photo.end());
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kvxml/export.h"

namespace KvXmlLib16 {

namespace internal {
/// Enables a template for containers that keep bytes side by side and are no text.
template <class Bytes, class Byte = std::remove_pointer_t<decltype(std::declval<const Bytes&>().data())>,
          class = decltype(std::declval<const Bytes&>().size())>
using EnableIfBytes =
    std::enable_if_t<sizeof(Byte) == 1 && !std::is_convertible<const Bytes&, std::string_view>::value &&
                         (std::is_same<std::remove_cv_t<Byte>, unsigned char>::value ||
                          std::is_same<std::remove_cv_t<Byte>, char>::value ||
                          std::is_same<std::remove_cv_t<Byte>, std::byte>::value),
                     int>;
}  // namespace internal

/// Copies share one block of bytes; the first change through one of them gives that one a block of its own.
///
/// Memory. The bytes live in memory of `malloc`: `ReleaseData` hands such memory out (give it back with
/// `FreeData`), and memory to be adopted must come from `malloc` or `AllocateData`.
///
/// Threads. Copies of one buffer may be made, changed and dropped by several threads at once, each using its
/// own copy; one object may be copied by many threads. An object may also be copied while another thread
/// appends to it as long as its block is not shared at that moment. Reading bytes is not guarded.
class KVXML_EXPORT CBinaryData {
public:
    CBinaryData() noexcept = default;
    CBinaryData(const CBinaryData& other) noexcept;
    /// Leaves `other` empty.
    CBinaryData(CBinaryData&& other) noexcept : m_block(other.m_block) { other.m_block = nullptr; }
    /// Copies `length` bytes.
    CBinaryData(const unsigned char* data, std::size_t length);
    /// With `adopt` the object takes over `data` without copying; otherwise it copies. A length of 0 leaves
    /// the object empty, and then `data` stays the caller's, as it does when the constructor throws.
    CBinaryData(unsigned char* data, std::size_t length, bool adopt);
    /// Copies the text without its terminator.
    CBinaryData(const char* text);
    /// Copies all bytes of the text.
    explicit CBinaryData(std::string_view text);
    /// Copies the bytes of a vector, an array or a span of `char`, `unsigned char` or `std::byte`.
    template <class Bytes, internal::EnableIfBytes<Bytes> = 0>
    explicit CBinaryData(const Bytes& bytes)
        : CBinaryData(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) {}
    virtual ~CBinaryData();

    CBinaryData& operator=(const CBinaryData& other) noexcept;
    CBinaryData& operator=(CBinaryData&& other) noexcept;

    /// The bytes, null when empty. Valid until this object changes. Writing through the pointer changes every
    /// copy that shares the bytes; use `operator[]` to write to this one only.
    unsigned char* GetData() const noexcept { return m_block == nullptr ? nullptr : m_block->data; }
    std::size_t GetLength() const noexcept { return m_block == nullptr ? 0 : m_block->length; }

    /// The bytes as a range, which vectors are made of and spans look at. Valid until this object changes.
    const unsigned char* begin() const noexcept { return GetData(); }
    const unsigned char* end() const noexcept { return GetData() + GetLength(); }
    const unsigned char* data() const noexcept { return GetData(); }
    std::size_t size() const noexcept { return GetLength(); }
    bool empty() const noexcept { return GetLength() == 0; }

    /// Adds bytes at the end, in amortised constant time each. `data` may be part of this buffer. When
    /// another thread comes to share the block during the call: CKvException "Failed to append.
    /// [RefCount=%d]".
    void Append(const unsigned char* data, std::size_t length);
    void Append(const char* text, std::size_t length) {
        Append(reinterpret_cast<const unsigned char*>(text), length);
    }
    void Append(char value) { Append(&value, 1); }
    /// Adds one byte, the low eight bits of the number.
    template <class Integer, std::enable_if_t<std::is_integral<Integer>::value, int> = 0>
    void Append(Integer value) {
        Append(static_cast<char>(value));
    }
    /// Adds the text without its terminator.
    void Append(const char* text);
    /// Adds the text up to its first zero byte.
    void Append(const std::string& text);
    void Append(const CBinaryData& other);

    /// Replaces the contents by a copy of the bytes.
    void SetBuffer(const unsigned char* data, std::size_t length);
    /// Replaces the contents by the text without its terminator.
    void SetBuffer(const char* text);

    /// Hands the bytes to the caller, who gives them back with `FreeData`, and leaves the object empty; null
    /// when it was empty. Shared bytes are copied first.
    unsigned char* ReleaseData();
    /// Memory that the adopting constructor may take over.
    static unsigned char* AllocateData(std::size_t length);
    /// Frees what `ReleaseData` or `AllocateData` returned; null is allowed.
    static void FreeData(unsigned char* data) noexcept;

    /// Drops this object's share of the bytes.
    void Clear() noexcept;

    /// Equal lengths and equal bytes.
    bool operator==(const CBinaryData& other) const noexcept;
    bool operator!=(const CBinaryData& other) const noexcept { return !(*this == other); }
    std::size_t GetHash() const noexcept {
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(GetData()), GetLength()});
    }

    /// The byte at `index`; CKvException "Index Out of range [%d]" for an empty object or an index beyond the
    /// length. The index that equals the length is accepted and reads as zero.
    const unsigned char& operator[](std::size_t index) const;
    /// As above, for writing; the byte after the last one may be written but is not part of the contents.
    /// The reference is valid until this object changes or is copied.
    unsigned char& operator[](std::size_t index);

    /// Base64 text without line breaks; empty for an empty object.
    std::string GetAsBase64() const;
    /// Replaces the contents by the decoded text. Blanks, tabs, line ends and "=" are passed over; any other
    /// character outside the alphabet leaves the object empty. Only the low seven bits of a character count.
    void SetAsBase64(const char* text);
    void SetAsBase64(std::string_view text);

    /// Two upper-case hexadecimal digits per byte.
    std::string GetAsHexString() const { return GetAsHexString(GetData(), GetLength()); }
    /// The digits of `length` bytes; empty for null.
    static std::string GetAsHexString(const unsigned char* data, std::size_t length);
    /// Replaces the contents by the decoded digits. CKvException "Invalid length in hex string" or "Invalid
    /// char in hex string [%c]" leave the object empty.
    void SetAsHexString(const char* text);
    void SetAsHexString(std::string_view text);

protected:
    /// Decodes hexadecimal digits into new memory, to be given back with `FreeData`; null for an empty text.
    /// Returns the number of bytes. Errors as for `SetAsHexString`.
    static std::size_t ConvertToHexData(const char* hex, unsigned char** out);
    static std::size_t ConvertToHexData(std::string_view hex, unsigned char** out);

private:
    struct Block;

    /// What accessors read of a block without a call.
    struct BlockBase {
        unsigned char* data;
        std::size_t length;
    };

    explicit CBinaryData(Block* block) noexcept;
    Block* OwnBlock() const noexcept;
    /// Gives a shared object a block of its own with room for `extra` more bytes.
    void MakeUnique(std::size_t extra);

    BlockBase* m_block = nullptr;
};

}  // namespace KvXmlLib16

template <>
struct std::hash<KvXmlLib16::CBinaryData> {
    std::size_t operator()(const KvXmlLib16::CBinaryData& value) const noexcept { return value.GetHash(); }
};
