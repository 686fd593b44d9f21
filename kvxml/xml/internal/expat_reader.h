/// Reads XML text by way of expat, into a tree or as events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "kvxml/xml/internal/xml_events.h"
#include "kvxml/xml/internal/xml_tree_builder.h"

struct XML_ParserStruct;

namespace KvXmlLib16::internal {

/// What a reader has to know besides the text.
struct CExpatOptions {
    bool namespaces = true;        ///< names are taken apart into namespace and local name
    bool keepCData = false;        ///< texts keep the markers of CDATA sections
    bool isUtf8 = false;           ///< the text is UTF-8 whatever it declares
    std::size_t maxExpansion = 0;  ///< as the context has it
};

/// One pass over one text, which is given whole or in pieces. Errors are CKvException "%s at line %d", except
/// those of the element filter, which pass as they are. After an error the reader is of no more use.
class CExpatReader {
public:
    CExpatReader(CXmlTreeBuilder& builder, const CExpatOptions& options);
    /// With prefixes in the names; `namespaces` and `keepCData` are of no account.
    CExpatReader(IXmlEvents& events, const CExpatOptions& options);
    CExpatReader(const CExpatReader&) = delete;
    CExpatReader& operator=(const CExpatReader&) = delete;
    ~CExpatReader();

    /// Largest text that the parser takes in one piece; whole texts are read fastest in one.
    static std::size_t WholeLimit() noexcept;

    /// The whole text, or what remains of it.
    void ParseWhole(const char* text, std::size_t length);
    /// Room of the parser's own for the next piece, at most `WholeLimit`.
    void* GetBuffer(std::size_t length);
    /// Parses what was put into that room. False when the parser got no further: it waits for the end of what
    /// it has begun, and looks at all of it again with each piece, so that pieces should grow.
    bool ParseBuffer(std::size_t length, bool isLast);

    /// Parses the next piece, which lies in memory of the caller's, at most `WholeLimit`.
    void ParsePiece(const char* text, std::size_t length, bool isLast);
    /// Where in the input the event stands that is being handled, or the error that was found.
    std::uint64_t GetOffset() const noexcept;
    /// Line and column of a place that the text still at hand has, else of the event that is being handled.
    void Locate(std::uint64_t offset, std::uint64_t& line, std::uint64_t& column) const;

    /// Set when parsing failed because the parser cannot read the encoding that the text declares, though the
    /// host's converter may know it; else empty.
    const std::string& GetUnreadEncoding() const noexcept { return m_unreadEncoding; }

private:
    struct Handlers;
    struct EventHandlers;
    struct Release {
        void operator()(XML_ParserStruct* parser) const noexcept;
    };

    void Begin(const char* separator, const CExpatOptions& options);
    void LimitEntities();
    void AllowMemory() noexcept;
    void CountDeclaredAttribute(const char* element);
    void CountElement(const char** attributes);
    void CountExpansion(std::size_t length);
    void Count(std::uint64_t& counted, std::size_t length, const char* message) const;
    template <class Action>
    void Run(std::size_t length, Action parse);
    void Check(int status);
    void Stop() noexcept;
    std::string Locate(const std::string& message) const;

    CXmlTreeBuilder* const m_builder = nullptr;  // one of these two
    IXmlEvents* const m_events = nullptr;
    std::unique_ptr<XML_ParserStruct, Release> m_parser;
    std::exception_ptr m_exception;  // thrown by a handler
    std::string m_unreadEncoding;
    int m_nestedEntities = 0;
    bool m_isCounting = false;  // for events: the document type adds to the document
    const std::uint64_t m_maxExpansion;
    std::uint64_t m_memoryLeft = 0;     // that the parser may allocate while it runs
    std::uint64_t m_nameExpansion = 0;  // by long namespaces of attributes
    std::uint64_t m_expansion = 0;      // memory that declarations of the document type took
    std::int64_t m_elementPlace = -1;   // of the last element that was counted
    std::map<std::string, int, std::less<>> m_declaredAttributes;  // how many, by element
    std::int64_t m_position = -1;
};

/// Tests only: makes `WholeLimit` smaller than it is, to reach the reading of large texts in pieces. 0
/// restores it.
void SetWholeLimit(std::size_t limit) noexcept;

}  // namespace KvXmlLib16::internal
