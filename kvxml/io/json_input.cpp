// The loads of CXmlDocument that take JSON: files, bytes and text, plain or compressed.
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/internal/c_text.h"
#include "kvxml/io/internal/input_file.h"
#include "kvxml/json/internal/json_conversion.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/document_check.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/internal/compression.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/internal/xml_tree_builder.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16 {

namespace {

/// JSON input as UTF-8 text, and what holds it.
class CJsonInput {
public:
    CJsonInput(const unsigned char* data, std::size_t length, const CSerializationContext& context) {
        if (data == nullptr || length == 0) throw CKvException("JSON Stream is empty!");
        if (internal::Inflate(data, length, internal::InflateLimitsOf(context), m_inflated)) {
            data = m_inflated.GetData();
            length = m_inflated.GetLength();
        }
        m_text = std::string_view(reinterpret_cast<const char*>(data), length);
        if (const char* const utf16 = Utf16NameOf(m_text)) {
            if (!internal::EncodingToUtf8(utf16, m_text, m_utf8))
                throw CKvException("The JSON text is not valid UTF-16.");
            m_text = m_utf8;
        }
        DropByteOrderMark();
    }
    explicit CJsonInput(std::string_view json) : m_text(json) {
        if (m_text.empty()) ThrowEmpty();
        if (!internal::IsLocalUtf8()) m_text = m_utf8 = internal::LocalToUtf8(m_text);
        DropByteOrderMark();
    }
    explicit CJsonInput(const wchar_t* json) {
        if (json == nullptr || *json == L'\0') ThrowEmpty();
        m_text = m_utf8 = internal::WideToUtf8(json);
        DropByteOrderMark();
    }
    CJsonInput(const CJsonInput&) = delete;
    CJsonInput& operator=(const CJsonInput&) = delete;

    std::string_view Text() const noexcept { return m_text; }

private:
    /// The name of its encoding if the text is UTF-16: it begins with a byte-order mark, or one of its first
    /// two bytes is zero, since the first character of JSON is ASCII.
    static const char* Utf16NameOf(std::string_view text) noexcept {
        const std::string_view first = text.substr(0, 2);
        if (first == "\xFF\xFE" || first == "\xFE\xFF") return "UTF-16";
        if (first.size() < 2 || (first[0] == '\0') == (first[1] == '\0')) return nullptr;
        return first[0] == '\0' ? "UTF-16BE" : "UTF-16LE";
    }
    void DropByteOrderMark() noexcept {
        if (m_text.substr(0, 3) == "\xEF\xBB\xBF") m_text.remove_prefix(3);
    }
    [[noreturn]] static void ThrowEmpty() { throw CKvException("JSON String is empty!"); }

    CBinaryData m_inflated;
    std::string m_utf8;
    std::string_view m_text;
};

}  // namespace

CBinaryData CXmlDocument::LoadJsonFile(const char* fileName) {
    Cleanup();
    const std::vector<unsigned char> data = internal::ReadWhole(internal::OrEmpty(fileName));
    return LoadJsonStream(data.data(), data.size());
}

CBinaryData CXmlDocument::LoadJsonStream(const unsigned char* data, std::size_t length) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(data, length, *m_context).Text(), *m_context);
}

CBinaryData CXmlDocument::LoadJson(const char* json) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(std::string_view(internal::OrEmpty(json))).Text(), *m_context);
}

CBinaryData CXmlDocument::LoadJson(const wchar_t* json) {
    Cleanup();
    return internal::JsonToXml(CJsonInput(json).Text(), *m_context);
}

void CXmlDocument::BuildFromJsonFile(const char* fileName) {
    const std::vector<unsigned char> data = internal::ReadWhole(internal::OrEmpty(fileName));
    BuildFromJsonStream(data.data(), data.size());
}

void CXmlDocument::BuildFromJsonStream(const unsigned char* data, std::size_t length) {
    BuildTree(CJsonInput(data, length, *m_context).Text());
}

void CXmlDocument::BuildFromJson(const char* json) {
    BuildFromJsonText(internal::OrEmpty(json));
}

void CXmlDocument::BuildFromJsonText(std::string_view json) {
    BuildTree(CJsonInput(json).Text());
}

void CXmlDocument::BuildFromJson(const wchar_t* json) {
    BuildTree(CJsonInput(json).Text());
}

void CXmlDocument::BuildTree(std::string_view json) {
    for (const bool anyOrder : {false, true}) {
        Cleanup();
        internal::CXmlTreeBuilder builder(Tree(), m_filter, *m_context, !internal::IsLocalUtf8());
        // Attributes that come late are not told of before the second reading.
        builder.SetJudge(BeginJudging(nullptr, true), true);
        Tree().Arena().ExpectInput(json.size());
        if (internal::JsonToTree(json, *m_context, builder, anyOrder)) return builder.EndJudging();
    }
}

}  // namespace KvXmlLib16
