/// Where the elements of JSON text go: into a tree, or to a writer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/json/internal/json_names.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/xml_tree_builder.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16::internal {

/// Builds a tree, the same as the XML text would give.
class CJsonTreeSink {
public:
    static constexpr bool kMayRefuse = false;

    CJsonTreeSink(CXmlTreeBuilder& builder, bool stripCData) : m_builder(builder), m_stripCData(stripCData) {}

    void DeclarePrefix(std::string_view prefix, std::string_view uri) {
        m_builder.DeclarePrefix(prefix, uri);
    }
    void StartElement(const CJsonNames::Name& name, const char* const* attributes) {
        m_builder.StartElement(name.expanded.c_str(), attributes);
    }
    void Text(std::string_view text) {
        if (m_stripCData && text.front() == '<') {
            TextWithSections(text);
        } else {
            m_builder.AppendText(text.data(), text.size());
        }
    }
    void Null(bool isItem) { m_builder.MarkNull(isItem); }
    void EndElement() { m_builder.EndElement(); }

private:
    /// A text that begins with a CDATA section holds its sections without their marks.
    void TextWithSections(std::string_view text) {
        constexpr std::string_view kStart = "<![CDATA[";
        constexpr std::string_view kEnd = "]]>";
        const auto append = [this](std::string_view piece) {
            if (!piece.empty()) m_builder.AppendText(piece.data(), piece.size());
        };
        if (text.substr(0, kStart.size()) == kStart) {
            for (;;) {
                const std::size_t start = text.find(kStart);
                const std::size_t end =
                    start == text.npos ? text.npos : text.find(kEnd, start + kStart.size());
                if (end == text.npos) break;
                append(text.substr(0, start));
                append(text.substr(start + kStart.size(), end - start - kStart.size()));
                text.remove_prefix(end + kEnd.size());
            }
        }
        append(text);
    }

    CXmlTreeBuilder& m_builder;
    const bool m_stripCData;
};

/// Writes the elements with the names that the JSON text gives them; declarations are attributes.
class CJsonWriterSink {
public:
    static constexpr bool kMayRefuse = true;

    /// `convert`: the writer takes text in the local code page, which is not UTF-8.
    CJsonWriterSink(CXmlWriter& writer, bool convert, std::uint32_t maxDepth)
        : m_writer(writer), m_convert(convert), m_maxDepth(maxDepth) {}

    /// Formatting, which is `writer`'s, adds no blanks after the texts of elements that have children as
    /// well.
    void KeepTextsWhole(CXmlTextWriter& writer) { m_formatted = &writer; }

    void DeclarePrefix(std::string_view, std::string_view) {}
    void StartElement(const CJsonNames::Name& name, const char* const* attributes) {
        if (m_writer.GetDepth() >= m_maxDepth)
            throw CTreeLimitPassed{kTooDeep, static_cast<std::uint64_t>(m_maxDepth)};
        if (m_formatted != nullptr && m_textDepth != 0 && m_textDepth == m_writer.GetDepth())
            m_formatted->SetFormatted(false);
        if (m_convert) {
            m_writer.WriteStartElement(Utf8ToLocal(name.literal), {});
            for (; *attributes != nullptr; attributes += 2) {
                m_writer.WriteAttribute(Utf8ToLocal(attributes[0]), {}, Utf8ToLocal(attributes[1]),
                                        ItemType_string);
            }
            return;
        }
        m_writer.WriteStartElement(name.literal, {});
        for (; *attributes != nullptr; attributes += 2)
            m_writer.WriteAttribute(attributes[0], {}, attributes[1], ItemType_string);
    }
    void Text(std::string_view text) {
        if (m_textDepth == 0) m_textDepth = m_writer.GetDepth();
        if (m_convert) {
            m_writer.WriteText(Utf8ToLocal(text), ItemType_string, false);
        } else {
            m_writer.WriteText(text, ItemType_string, false);
        }
    }
    void Null(bool) {}
    void EndElement() {
        const bool endsText = m_textDepth == m_writer.GetDepth();
        m_writer.WriteEndElement();
        if (!endsText) return;
        m_textDepth = 0;
        if (m_formatted != nullptr) m_formatted->SetFormatted(true);
    }

private:
    CXmlWriter& m_writer;
    const bool m_convert;
    const std::int64_t m_maxDepth;
    CXmlTextWriter* m_formatted = nullptr;
    std::int32_t m_textDepth = 0;  // of the outermost open element with text
};

}  // namespace KvXmlLib16::internal
