/// One parser run that fills a document, as the loads of CXmlDocument share it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/platform/internal/code_page.h"
#include "kvxml/settings/document_check.h"
#include "kvxml/xml/internal/expat_reader.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/internal/xml_tree_builder.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16 {

/// A reader with what it fills, and the judge of it where the context has one.
struct CXmlDocument::CReading : private CReadingPlaces {
    CReading(CXmlDocument& document, Encoding encoding, std::size_t expectedInput)
        : builder(document.Tree(), document.m_filter, *document.m_context, !internal::IsLocalUtf8()),
          reader(builder,
                 {document.m_schemaType != SchemaType_NoNamespaces, !document.m_context->GetStripCDATA(),
                  encoding == Encoding::Utf8, document.m_context->GetMaxExpansion()}) {
        document.Tree().Arena().ExpectInput(expectedInput);
        builder.SetJudge(document.BeginJudging(this, false), false);
    }
    CReading(const CReading&) = delete;
    CReading& operator=(const CReading&) = delete;

    internal::CXmlTreeBuilder builder;
    internal::CExpatReader reader;

private:
    std::uint64_t GetMark() const noexcept override { return reader.GetOffset(); }
    void Locate(std::uint64_t mark, std::uint64_t& line, std::uint64_t& column) const override {
        reader.Locate(mark, line, column);
    }
};

namespace internal {

/// Runs the parser. When it cannot read the encoding that the text declares, but the host's converter can,
/// returns the text in UTF-8, to be parsed instead.
template <class Action>
std::string ParseOrConvert(CExpatReader& reader, std::string_view text, Action parse) {
    try {
        parse();
        return std::string();
    } catch (const CKvException&) {
        const std::string& encoding = reader.GetUnreadEncoding();
        std::string utf8;
        if (encoding.empty() || !EncodingToUtf8(encoding.c_str(), text, utf8)) throw;
        return utf8;
    }
}

}  // namespace internal
}  // namespace KvXmlLib16
