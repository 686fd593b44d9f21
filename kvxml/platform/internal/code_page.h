/// Conversion of narrow text between the local code page, UTF-8 and wide characters, and the encodings in
/// which documents may come.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/export.h"

namespace KvXmlLib16::internal {

/// Process-wide text switches, set once at start-up and read without locking.
bool IsAsciiOnly() noexcept;
void SetAsciiOnly(bool value) noexcept;
/// Code page of the host's default narrow text: the code set of the calling thread's locale.
inline constexpr unsigned int kThreadCodePage = 3;
unsigned int LocalCodePage() noexcept;
/// 0 and 3 mean the code set of the calling thread's locale, the C/POSIX locale counting as UTF-8; 65001
/// is UTF-8; other Windows numbers (1252, 28591, 932, ...) map to the host's converter.
void SetLocalCodePage(unsigned int codePage) noexcept;

/// True when narrow text needs no conversion from or to UTF-8: `ASCIIOnly` is on or the local code page is
/// UTF-8. Cheap; asked once per document or writer.
KVXML_EXPORT bool IsLocalUtf8() noexcept;

/// UTF-8 (well-formed) to the local code page. A character that it cannot hold becomes "?". An unknown code
/// page throws CKvException. With `ASCIIOnly` on, the bytes are returned as they are.
std::string Utf8ToLocal(std::string_view utf8);
/// Local code page to UTF-8. Ill-formed input becomes U+FFFD; the result is always well-formed UTF-8, also
/// when the local code page is UTF-8. With `ASCIIOnly` on, the bytes are returned as they are. An unknown
/// code page throws CKvException.
KVXML_EXPORT std::string LocalToUtf8(std::string_view local);
/// Replaces each ill-formed sequence by U+FFFD, one for each longest beginning of a character.
std::string RepairUtf8(std::string_view utf8);
/// True when all bytes are below 128.
bool IsAllAscii(std::string_view text) noexcept;
/// Length of the well-formed prefix of `text`: `text.size()` when all of it is well-formed UTF-8 (no
/// overlong forms, no surrogates, nothing beyond U+10FFFF).
std::size_t WellFormedUtf8Length(std::string_view text) noexcept;

/// wchar_t text (UTF-16 or UTF-32 as wchar_t is) to UTF-8 and back; unpaired surrogates and ill-formed
/// sequences become U+FFFD.
std::string WideToUtf8(std::wstring_view wide);
std::wstring Utf8ToWide(std::string_view utf8);
/// UTF-8 (repaired where ill-formed) to UTF-16 little-endian bytes, without byte-order mark.
std::string Utf8ToUtf16Le(std::string_view utf8);

/// Maps the 256 single bytes of an encoding to Unicode for the parser, or says that it is multi-byte.
/// Entries of `map`: code point 0..0xFFFF; -1 for a byte that is no character; -n (n = 2..4) for the
/// first byte of an n-byte sequence.
///
/// Returns false for an encoding that the host does not know, and for one that the parser cannot read byte
/// by byte: those in which the ASCII characters that XML markup and names consist of do not stand for
/// themselves (EBCDIC, UTF-16), those with shift sequences (ISO-2022-JP, UTF-7), those whose sequence
/// length depends on more than the first byte (GB18030), those with sequences that mean two characters, and
/// those that would take too long to explore (four-byte sequences, EUC-TW). `EncodingToUtf8` converts whole
/// documents in such encodings. Names are compared without case. Results are kept for later calls, which are
/// cheap. Thread-safe.
bool DescribeEncoding(const char* encodingName, int (&map)[256]);
/// Decodes the multi-byte character of `length` bytes at `bytes` in the named encoding; -1 when it is none.
/// `cache` keeps what is needed between calls; start it with null, release it with CloseDecoder. One cache
/// serves one encoding and one thread at a time. May throw std::bad_alloc, which must not pass through the
/// parser's C code.
int DecodeMultiByte(const char* encodingName, const char* bytes, int length, void*& cache);
/// Releases a cache; null is allowed.
void CloseDecoder(void* cache) noexcept;

/// Whole text in a named encoding to UTF-8. Returns false for an unknown encoding or ill-formed input.
/// `utf8` is replaced on success only.
bool EncodingToUtf8(const char* encodingName, std::string_view text, std::string& utf8);

}  // namespace KvXmlLib16::internal
