#include "kvxml/io/internal/standard_streams.h"

#include <algorithm>
#include <istream>
#include <ostream>

#include "kvxml/base/exceptions.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFirstPiece = std::size_t{1} << 16;

}  // namespace

CQuietStream::~CQuietStream() {
    try {
        m_stream.exceptions(m_mask);
    } catch (const std::ios_base::failure&) {
        // The state is kept, and the failure is told by a CKvException.
    }
}

std::string ReadRest(std::istream& in) {
    const CQuietStream quiet(in);
    if (!in.good()) throw CKvException("Failed to read from the stream.");
    std::string bytes;
    std::size_t length = 0;
    while (in.good()) {
        if (bytes.size() == length) bytes.resize(std::max(kFirstPiece, length * 2));
        in.read(bytes.data() + length, static_cast<std::streamsize>(bytes.size() - length));
        length += static_cast<std::size_t>(in.gcount());
    }
    // The end sets failbit as well, for more was asked for than there was.
    if (in.bad() || !in.eof()) throw CKvException("Failed to read from the stream.");
    in.clear(std::ios::eofbit);
    bytes.resize(length);
    return bytes;
}

COutput::COutput(std::ostream& out) : m_out(out), m_quiet(out) {
    if (!out.good()) throw CKvException("Failed to write to the stream.");
}

void COutput::Write(std::string_view bytes) {
    if (!m_out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())))
        throw CKvException("Failed to write to the stream.");
}

void COutput::Flush() {
    if (!m_out.flush()) throw CKvException("Failed to write to the stream.");
}

void COutput::WriteLast(const CBinaryData& data) {
    Write({reinterpret_cast<const char*>(data.GetData()), data.GetLength()});
    Flush();
}

void COutputTextStream::Flush() {
    m_output.Write(m_encoder.Take(GetBuffer(), GetEncoding(), false));
}

void COutputTextStream::End() {
    m_output.Write(m_encoder.Take(GetBuffer(), GetEncoding(), true));
    m_output.Flush();
}

}  // namespace KvXmlLib16::internal
