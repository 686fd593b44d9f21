// The loads of CXmlDocument that take files and bytes: XML or Fast Infoset, plain or compressed.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/fastinfoset/internal/fast_infoset_reader.h"
#include "kvxml/io/internal/input_file.h"
#include "kvxml/platform/internal/text_settings.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/format_string.h"
#include "kvxml/types/internal/compression.h"
#include "kvxml/xml/internal/xml_reading.h"

namespace KvXmlLib16 {

using internal::InflateLimitsOf;
using internal::kEndOfFile;
using internal::OpenFile;
using internal::ParseOrConvert;
using internal::ReadAll;
using internal::ReadToEnd;
using internal::ThrowFileError;
using internal::ThrowReadError;

namespace {

// Files read in chunks are read in chunks of this size, as long as no tag or value is longer.
constexpr std::size_t kChunk = 0x20000;

// Pieces of files that are too large, or of unknown size.
constexpr std::size_t kPiece = std::size_t{1} << 26;

/// The first two bytes of gzip and zlib streams, which no XML text begins with.
bool MayBeCompressed(const unsigned char* data, std::size_t length) {
    if (length < 2) return false;
    if (data[0] == 0x1F && data[1] == 0x8B) return true;
    return (data[0] & 0x0F) == 8 && (data[0] << 8 | data[1]) % 31 == 0;
}

}  // namespace

void CXmlDocument::Load(const char* fileName) {
    if (fileName == nullptr) fileName = "";
    Cleanup();
    if (internal::IsAsyncFromXmlFile()) {
        LoadInChunks(fileName);
    } else {
        LoadWhole(fileName);
    }
}

void CXmlDocument::LoadXmlStream(const unsigned char* data, std::size_t length) {
    Cleanup();
    if (data == nullptr || length == 0) throw CKvException("XML Stream is empty!");
    Parse(data, length);
}

void CXmlDocument::Parse(const unsigned char* data, std::size_t length) {
    CBinaryData inflated;
    if (internal::Inflate(data, length, InflateLimitsOf(*m_context), inflated)) {
        data = inflated.GetData();
        length = inflated.GetLength();
    }
    if (TryParseFastInfoset(data, length)) return;
    ParseText(data, length, Encoding::Declared);
}

/// False, with nothing done, for anything that does not begin as Fast Infoset.
bool CXmlDocument::TryParseFastInfoset(const unsigned char* data, std::size_t length) {
    if (!internal::IsFastInfoset(data, length)) return false;
    internal::CXmlTreeBuilder builder(Tree(), m_filter, *m_context, !internal::IsLocalUtf8());
    builder.SetJudge(BeginJudging(nullptr, false), false);
    Tree().Arena().ExpectInput(length * 2);
    internal::CFastInfosetReader reader(
        Tree(), builder, m_context->GetFIContext(),
        {m_schemaType != SchemaType_NoNamespaces, !m_context->GetStripCDATA(), m_context->GetMaxExpansion()},
        std::string_view(reinterpret_cast<const char*>(data), length));
    reader.Parse();
    return true;
}

void CXmlDocument::LoadWhole(const char* fileName) {
    internal::CFile file;
    OpenFile(file, fileName);
    std::uint64_t size = 0;
    if (const int error = file.GetSize(size))
        ThrowFileError("Failed to get the size of the file [%s] Error [0x%08x]", fileName, error);
    if (size == 0) {  // an empty file, or one whose size is not known beforehand
        const std::vector<unsigned char> data = ReadToEnd(file, fileName);
        Parse(data.data(), data.size());
        return;
    }
    if (size > internal::CExpatReader::WholeLimit()) {
        LoadLarge(file, fileName, size);
        return;
    }
    // The file goes straight into the parser's own buffer.
    const auto length = static_cast<std::size_t>(size);
    auto reading = std::make_unique<CReading>(*this, Encoding::Declared, length);
    auto* const data = static_cast<unsigned char*>(reading->reader.GetBuffer(length));
    ReadAll(file, fileName, data, length);
    file.Close();
    CBinaryData inflated;
    if (internal::Inflate(data, length, InflateLimitsOf(*m_context), inflated)) {
        reading.reset();
        if (TryParseFastInfoset(inflated.GetData(), inflated.GetLength())) return;
        ParseText(inflated.GetData(), inflated.GetLength(), Encoding::Declared);
        return;
    }
    if (TryParseFastInfoset(data, length)) return;
    const std::string utf8 =
        ParseOrConvert(reading->reader, std::string_view(reinterpret_cast<const char*>(data), length),
                       [&] { reading->reader.ParseBuffer(length, true); });
    reading.reset();
    if (!utf8.empty()) ParseConverted(utf8);
}

/// A file that the parser cannot take in one piece.
void CXmlDocument::LoadLarge(internal::CFile& file, const char* fileName, std::uint64_t size) {
    auto reading = std::make_unique<CReading>(*this, Encoding::Declared, kPiece);
    const std::size_t piece = std::min(kPiece, internal::CExpatReader::WholeLimit());
    for (bool isFirst = true; size > 0; isFirst = false) {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size, piece));
        auto* const data = static_cast<unsigned char*>(reading->reader.GetBuffer(length));
        ReadAll(file, fileName, data, length);
        if (isFirst && (MayBeCompressed(data, length) || internal::IsFastInfoset(data, length))) {
            reading.reset();
            OpenFile(file, fileName);
            const std::vector<unsigned char> all = ReadToEnd(file, fileName);
            Parse(all.data(), all.size());
            return;
        }
        size -= length;
        reading->reader.ParseBuffer(length, size == 0);
    }
}

void CXmlDocument::LoadInChunks(const char* fileName) {
    internal::CFile file;
    OpenFile(file, fileName);
    try {
        CReading reading(*this, Encoding::Declared, 0);
        std::uint64_t offset = 0;
        std::size_t chunk = kChunk;
        for (bool isLast = false; !isLast;) {
            std::size_t got = 0;
            if (const int error = file.Read(reading.reader.GetBuffer(chunk), chunk, got)) {
                throw CKvException(FormatString("Failed to read the contents of the file. Error [0x%08x]",
                                                static_cast<unsigned int>(error)));
            }
            if (got == 0 && offset == 0) ThrowReadError(fileName, kEndOfFile);
            offset += got;
            isLast = got < chunk;
            if (!isLast) file.AdviseWillNeed(offset, kChunk);
            chunk = reading.reader.ParseBuffer(got, isLast) ? kChunk : std::min(chunk * 2, kPiece);
        }
        if (GetDocumentElement() == nullptr) throw CKvException("Invalid or empty XML document");
    } catch (const CKvSchemaValidationException&) {
        Cleanup();
        throw;
    } catch (const CKvException& e) {
        Cleanup();
        throw CKvException(e);
    } catch (...) {
        Cleanup();
        throw;
    }
}

}  // namespace KvXmlLib16
