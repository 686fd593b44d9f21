/// Events of one piece of a document, kept until they are asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/xml/internal/event_names.h"
#include "kvxml/xml/internal/xml_events.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16::internal {

class CExpatReader;

/// Fills itself from a parser, and is emptied by CXmlReader. Views of names stay for the whole document.
class CXmlEventQueue : public IXmlEvents {
public:
    struct Text {
        std::size_t start = 0;
        std::size_t length = 0;
    };
    struct Attribute {
        const CEventName* name;
        Text value;
        bool isDefaulted;
    };
    struct Declaration {
        const std::string* prefix;
        const std::string* uri;
    };
    struct Event {
        XmlEvent kind;
        std::uint64_t offset;
        const CEventName* name;  ///< of a start
        Text text;
        Text target;  ///< of a processing instruction or document type
        std::size_t firstAttribute;
        std::size_t attributeCount;
        std::size_t firstDeclaration;
        std::size_t declarationCount;
    };

    /// `maxNames`, `maxDepth`: beyond, CTreeLimitPassed.
    CXmlEventQueue(std::uint64_t maxNames, std::uint64_t maxDepth)
        : m_maxDepth(maxDepth), m_names(maxNames) {}

    /// To be set before the parser runs.
    void SetParser(const CExpatReader* parser) noexcept { m_parser = parser; }
    bool IsEmpty() const noexcept { return m_next == m_events.size(); }
    const Event& Pop() noexcept { return m_events[m_next++]; }
    /// Forgets all that was popped; views of texts end.
    void Clear() noexcept;

    std::string_view ViewOf(const Text& text) const noexcept {
        return std::string_view(m_characters).substr(text.start, text.length);
    }
    const std::vector<Attribute>& Attributes() const noexcept { return m_attributes; }
    const std::vector<Declaration>& Declarations() const noexcept { return m_declarations; }

    void OnDeclarePrefix(const char* prefix, const char* uri) override;
    void OnStart(const char* name, const char** attributes, int specified) override;
    void OnEnd() override;
    void OnText(const char* text, std::size_t length) override;
    void OnCData(bool isStart) override;
    void OnComment(const char* text) override;
    void OnProcessingInstruction(const char* target, const char* data) override;
    void OnDocumentType(const char* name) override;

private:
    Event& Add(XmlEvent kind);
    Text Keep(const char* text, std::size_t length);

    const std::uint64_t m_maxDepth;
    const CExpatReader* m_parser = nullptr;
    std::vector<Event> m_events;
    std::size_t m_next = 0;
    std::string m_characters;
    std::vector<Attribute> m_attributes;
    std::vector<Declaration> m_declarations;
    std::size_t m_newDeclarations = 0;  // for the start that comes next
    std::uint64_t m_depth = 0;
    bool m_isInCData = false;
    CEventNames m_names;
};

}  // namespace KvXmlLib16::internal
