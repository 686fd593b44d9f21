#include "tools/kvxml/encoded_stream.h"

#include <iconv.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>

#include "kvxml/base/internal/ascii.h"
#include "tools/kvxml/messages.h"
#include "tools/kvxml/progress.h"
#include "tools/kvxml/utf8.h"

namespace tool {

using namespace KvXmlLib16;

namespace {

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);
constexpr std::size_t kPassLength = std::size_t{1} << 18;
constexpr std::size_t kShortestWindow = 16;
constexpr std::size_t kLongestWindow = std::size_t{1} << 16;

bool IsNamed(const std::string& encoding, const char* name) {
    return internal::EqualsIgnoreAsciiCase(encoding, name);
}

bool IsEncodingName(const std::string& name) {
    const auto fits = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '_' || c == '-';
    };
    return !name.empty() && std::isalpha(static_cast<unsigned char>(name[0])) != 0 &&
           std::all_of(name.begin(), name.end(), fits);
}

iconv_t Open(const std::string& encoding) {
    return iconv_open(IsNamed(encoding, "UTF-16") ? "UTF-16LE" : encoding.c_str(), "UTF-8");
}

/// Converts until the text ends or something stops it; returns the error number, or 0.
int ConvertSome(iconv_t converter, const char*& at, const char* end, std::string& out) {
    char room[4096];
    char* in = const_cast<char*>(at);
    std::size_t length = static_cast<std::size_t>(end - at);
    int error = 0;
    do {
        char* to = room;
        std::size_t left = sizeof(room);
        const std::size_t result = iconv(converter, &in, &length, &to, &left);
        error = result == static_cast<std::size_t>(-1) ? errno : 0;
        out.append(room, sizeof(room) - left);
        if (error == 0 && result > 0) throw CFailure("characters that the encoding does not have");
    } while (error == E2BIG);
    at = in;
    return error;
}

}  // namespace

// --- encoder -----------------------------------------------------------------------------------------------

bool CEncoder::Knows(const std::string& encoding) {
    if (!IsEncodingName(encoding)) return false;
    const iconv_t converter = Open(encoding);
    if (converter == kNoConverter) return false;
    std::string ascii;
    for (char c = ' '; c < '~'; ++c) {
        if (c != '\\' && c != '~') ascii += c;  // where some have their own characters
    }
    std::string converted;
    const char* at = ascii.data();
    const int error = ConvertSome(converter, at, at + ascii.size(), converted);
    iconv_close(converter);
    return error == 0 && (converted == ascii || IsNamed(encoding, "UTF-16"));
}

CEncoder::CEncoder(const std::string& encoding) : m_encoding(encoding), m_converter(Open(encoding)) {
    if (m_converter == kNoConverter) throw CFailure("unknown encoding " + encoding);
}

CEncoder::~CEncoder() {
    iconv_close(m_converter);
}

void CEncoder::Convert(std::string_view utf8, std::string& out) {
    m_text += utf8;
    m_at = m_followed = m_text.data();
    const char* const end = m_at + m_text.size();
    // The converter looks far ahead each time, so where it stops often, it is to see little of the text.
    std::size_t window = kLongestWindow;
    while (m_at != end) {
        const std::string_view rest(m_at, static_cast<std::size_t>(end - m_at));
        const int error = ConvertSome(m_converter, m_at, m_at + CutLength(rest, window), out);
        if (error == EILSEQ) {
            const Character character = FirstCharacter({m_at, static_cast<std::size_t>(end - m_at)});
            Follow(m_at);
            Refer(character.code, out);
            m_at += character.length;
            window = kShortestWindow;
        } else if (error != 0) {
            break;  // the rest of a character is missing
        } else {
            window = std::min(2 * window, kLongestWindow);
        }
    }
    Follow(m_at);
    m_text.erase(0, static_cast<std::size_t>(m_at - m_text.data()));
}

void CEncoder::Finish(std::string& out) {
    char reset[64];
    char* to = reset;
    std::size_t left = sizeof(reset);
    iconv(m_converter, nullptr, nullptr, &to, &left);
    out.append(reset, sizeof(reset) - left);
}

void CEncoder::Refer(char32_t character, std::string& out) {
    const auto code = static_cast<unsigned>(character);
    char reference[16];
    if (m_inTag && m_quote == '\0') {
        std::snprintf(reference, sizeof(reference), "U+%04X", code);
        throw CFailure("a name contains " + std::string(reference) + ", which " + m_encoding +
                       " does not have");
    }
    const int length = std::snprintf(reference, sizeof(reference), "&#x%X;", code);
    const char* at = reference;
    ConvertSome(m_converter, at, reference + length, out);
}

/// Keeps track of tags and attribute values, up to `end`.
void CEncoder::Follow(const char* end) {
    for (; m_followed != end; ++m_followed) {
        const char c = *m_followed;
        if (!m_inTag) {
            m_inTag = c == '<';
        } else if (m_quote != '\0') {
            if (c == m_quote) m_quote = '\0';
        } else if (c == '"' || c == '\'') {
            m_quote = c;
        } else if (c == '>') {
            m_inTag = false;
        }
    }
}

// --- stream ------------------------------------------------------------------------------------------------

CEncodedStream::CEncodedStream(COutput& output, const std::string& encoding)
    : CTextStream(IsNamed(encoding, "UTF-8")    ? XmlEncoding_UTF8
                  : IsNamed(encoding, "UTF-16") ? XmlEncoding_UTF16
                                                : XmlEncoding_None),
      m_output(output),
      m_declaredName(encoding) {
    if (GetEncoding() != XmlEncoding_None)
        for (char& c : m_declaredName)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (GetEncoding() != XmlEncoding_UTF8) m_encoder = std::make_unique<CEncoder>(encoding);
}

void CEncodedStream::Begin() {
    CTextStream::Begin();
    m_text.reserve(kPassLength + 2 * kFlushLength);
    if (GetEncoding() == XmlEncoding_UTF16) m_output.Write("\xFF\xFE");
}

void CEncodedStream::Flush() {
    const std::size_t used = m_text.size();
    m_text.resize(used + GetBufferedLength());
    GetBuffer().CopyTo(m_text.data() + used);
    GetBuffer().Reset();
    if (m_text.size() >= kPassLength) Pass(false);
}

void CEncodedStream::End() {
    Flush();
    Pass(true);
}

void CEncodedStream::Pass(bool isLast) {
    Progress().Advance(m_text.size());
    if (m_encoder == nullptr) {
        m_output.Write(m_text);
    } else {
        m_bytes.clear();
        m_encoder->Convert(m_text, m_bytes);
        if (isLast) m_encoder->Finish(m_bytes);
        m_output.Write(m_bytes);
    }
    m_text.clear();
}

}  // namespace tool
