#include "kvxml/json/internal/json_names.h"

#include <expat.h>

#include <climits>
#include <new>

#include "kvxml/base/internal/namespace_uris.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/xml/internal/xml_name_table.h"

namespace KvXmlLib16::internal {

namespace {

bool IsAsciiNameStart(char character) noexcept {
    const char lower = static_cast<char>(character | 0x20);
    return (lower >= 'a' && lower <= 'z') || character == '_' || character == ':';
}

bool IsAsciiNameCharacter(char character) noexcept {
    return IsAsciiNameStart(character) || (character >= '0' && character <= '9') || character == '-' ||
           character == '.';
}

}  // namespace

void CJsonNames::Release::operator()(XML_ParserStruct* parser) const noexcept {
    XML_ParserFree(parser);
}

CJsonNames::CJsonNames(bool namespaces) : m_namespaces(namespaces) {
    m_uris.emplace("", "");
    m_uris.emplace("xml", kXmlNamespace);
}

CJsonNames::~CJsonNames() = default;

bool CJsonNames::Resolve(std::string_view name, Name& out) {
    out.scope = 0;
    out.expanded.clear();
    if (!IsName(name) || !Expand(name, true, out.expanded)) return false;
    out.literal = name;
    out.scope = m_scope.id;
    return true;
}

bool CJsonNames::ExpandAttribute(std::string_view name, std::string& out) const {
    return Expand(name, false, out);
}

bool CJsonNames::Expand(std::string_view name, bool isElement, std::string& out) const {
    const std::size_t colon = m_namespaces ? name.find(':') : name.npos;
    if (!m_namespaces || (colon == name.npos && !isElement)) {
        out += name;
        return true;
    }
    const std::string_view prefix = colon == name.npos ? std::string_view() : name.substr(0, colon);
    const auto found = m_uris.find(prefix);
    if (found == m_uris.end()) return false;
    if (!found->second.empty()) {
        out += found->second;
        out += CXmlNameTable::kSeparator;
    }
    out += colon == name.npos ? name : name.substr(colon + 1);
    return true;
}

bool CJsonNames::IsName(std::string_view name) {
    if (name.empty()) return false;
    if (m_namespaces) {
        const std::size_t colon = name.find(':');
        if (colon != name.npos) {
            const std::string_view local = name.substr(colon + 1);
            return local.find(':') == local.npos && colon != 0 && IsName(name.substr(0, colon)) &&
                   IsName(local);
        }
    }
    if (!IsAllAscii(name)) return IsNameForParser(name);
    if (!IsAsciiNameStart(name.front())) return false;
    for (const char character : name)
        if (!IsAsciiNameCharacter(character)) return false;
    return true;
}

/// Which characters beyond ASCII may be in names differs between editions of XML; what counts is what the
/// parser takes.
bool CJsonNames::IsNameForParser(std::string_view name) {
    for (const char character : name)
        if (static_cast<unsigned char>(character) < 0x80 && !IsAsciiNameCharacter(character)) return false;
    if (m_parser == nullptr) {
        m_parser.reset(XML_ParserCreate("UTF-8"));
        if (m_parser == nullptr) throw std::bad_alloc();
    } else {
        XML_ParserReset(m_parser.get(), "UTF-8");
    }
    std::string document = "<";
    document += name;
    document += "/>";
    return document.size() <= INT_MAX / 2 &&
           XML_Parse(m_parser.get(), document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
}

bool CJsonNames::Declare(std::string_view prefix, std::string_view uri) {
    if (prefix == "xmlns" || uri == kXmlnsNamespace || (prefix == "xml") != (uri == kXmlNamespace))
        return false;
    if (uri.empty() && !prefix.empty()) return false;
    if (uri.find(CXmlNameTable::kSeparator) != uri.npos) return false;
    const auto found = m_uris.find(prefix);
    if (found != m_uris.end() && found->second == uri) return true;
    Declaration declaration{std::string(prefix), found == m_uris.end() ? "" : found->second,
                            found == m_uris.end()};
    m_declarations.push_back(std::move(declaration));
    m_scope = {++m_lastId, m_declarations.size()};
    if (found != m_uris.end()) {
        found->second = uri;
    } else {
        m_uris.emplace(prefix, uri);
    }
    return true;
}

void CJsonNames::Undo(const Scope& scope) {
    while (m_declarations.size() > scope.declarations) {
        Declaration& last = m_declarations.back();
        if (last.isNew) {
            m_uris.erase(last.prefix);
        } else {
            m_uris.find(last.prefix)->second = std::move(last.uri);
        }
        m_declarations.pop_back();
    }
    m_scope = scope;
}

}  // namespace KvXmlLib16::internal
