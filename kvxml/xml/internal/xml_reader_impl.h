/// The state of a CXmlReader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/xml/internal/document_events.h"
#include "kvxml/xml/internal/expat_reader.h"
#include "kvxml/xml/internal/text_position.h"
#include "kvxml/xml/internal/xml_event_queue.h"
#include "kvxml/xml/internal/xml_input.h"
#include "kvxml/xml/xml_reader.h"

namespace KvXmlLib16 {

struct CXmlReader::Impl {
    struct Open {
        const internal::CEventName* name;
        std::uint64_t position;  // among the siblings of its name
        std::size_t bindings;    // how many there were before
        std::uint64_t scope;     // before
        std::uint64_t offset;    // of its start tag
        std::uint64_t number;
        std::size_t otherCounts;  // how many there were before
    };
    struct Binding {
        std::string_view prefix;
        std::string_view uri;
    };

    internal::InflateLimits inflateLimits;
    std::size_t maxExpansion = 0;
    std::uint64_t maxNames = 0;
    std::uint64_t maxDepth = 0;

    // Of the document that is open
    std::string fileName;
    std::unique_ptr<internal::CXmlInput> input;
    std::unique_ptr<internal::CXmlEventQueue> queue;
    std::unique_ptr<internal::CExpatReader> parser;
    std::string buffer;
    std::string_view held;  // bytes that were given to the parser, from `bufferStart` on; mostly of `buffer`
    std::uint64_t bufferStart = 0;
    std::size_t piece = 0;  // how much is read at a time
    bool isUtf8 = false;    // whatever the text declares
    bool isLast = false;
    bool hasBegun = false;
    std::string converted;     // the whole text, where the parser does not know its encoding
    std::exception_ptr error;  // to be thrown when the queue is empty
    std::uint64_t errorOffset = 0;
    mutable internal::CTextPosition position;
    internal::CTextPosition firstPosition;  // where the bytes that are held begin, or before
    internal::CTextPosition openPosition;   // of the innermost element when the last piece was read

    // Where the caller is
    const internal::CXmlEventQueue::Event* event = nullptr;
    XmlEvent kind = XmlEvent::None;
    std::uint64_t offset = 0;
    const internal::CEventName* name = nullptr;
    bool isAfterEnd = false;  // the element that ends is still the last of `open`
    std::vector<CXmlReaderAttribute> attributes;
    std::vector<Open> open;
    /// How often a name was met among the children of one element, while it is counted among those of
    /// another.
    struct OtherCount {
        const internal::CEventName* name;
        std::uint64_t parent;
        std::uint64_t count;
    };
    std::vector<OtherCount> otherCounts;
    std::uint64_t lastElement = 0;  // elements are numbered from 1
    std::vector<Binding> bindings;
    std::uint64_t scope = 0;
    std::uint64_t lastScope = 0;
    bool isPushing = false;  // events are handed over while the parser runs

    struct Pump;
    std::unique_ptr<internal::IXmlEvents> pump;  // instead of the queue

    void Begin(std::string_view documentName);
    void StartParser();
    bool Fill();
    void ReadPiece();
    void Parse(std::string_view bytes);
    void ConvertAll();
    void CountTo(std::uint64_t where) const;
    const internal::CTextPosition& Locate(std::uint64_t where) const;
    std::uint64_t Offset() const noexcept { return isPushing ? parser->GetOffset() : offset; }
    void Leave() noexcept;
    void Enter(const internal::CEventName* entered, std::uint64_t place);
    void Take(const internal::CXmlEventQueue::Event& taken);
    void TakeStart();
    void Push(internal::IDocumentEvents& events);
};

}  // namespace KvXmlLib16
