/// A judge of documents that are read into trees and objects, as `MakeDocumentCheck` of the schema library
/// makes one.
///
///     context.SetDocumentCheck(MakeDocumentCheck(schema));
///     orders->FromXmlFile("orders.xml", context);   // throws what the schema refuses
#pragma once

#include <cstdint>
#include <memory>

namespace KvXmlLib16 {

class CXmlElement;

/// Places in the text of a document, while it is being read.
class CReadingPlaces {
public:
    virtual ~CReadingPlaces() = default;
    /// A number for the place of the tag that was read last. Cheap.
    virtual std::uint64_t GetMark() const noexcept = 0;
    /// Line and column (from 1) of a mark of the current element or of one that is still open; those of the
    /// current tag where the text in between is no longer at hand.
    virtual void Locate(std::uint64_t mark, std::uint64_t& line, std::uint64_t& column) const = 0;
};

/// What a judge is told of a document before it begins.
struct CJudgedDocument {
    /// Null where the format has no lines. Stays as long as the judge does.
    const CReadingPlaces* places = nullptr;
    /// Names are matched by their local parts alone.
    bool ignoresNamespaces = false;
    /// Texts have the markers of CDATA sections in them.
    bool keepsCData = false;
};

/// Judges one document, whose elements it is told of in document order while the tree is built. What it
/// throws leaves the load; it is told nothing more then.
class CDocumentJudge {
public:
    virtual ~CDocumentJudge() = default;
    /// A start tag. The element has its attributes, but neither text nor children.
    virtual void StartElement(const CXmlElement& element) = 0;
    /// Its end. The element has all its text; children may have been discarded by the element filter.
    virtual void EndElement(const CXmlElement& element) = 0;
    /// After the end of the document element.
    virtual void EndDocument() = 0;
};

/// Makes the judges. Shared by contexts; any number of threads may call it at once.
class CDocumentCheck {
public:
    virtual ~CDocumentCheck() = default;
    virtual std::unique_ptr<CDocumentJudge> Begin(const CJudgedDocument& document) const = 0;
};

}  // namespace KvXmlLib16
