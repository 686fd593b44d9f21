/// The elements and texts of a document that CXmlReader reads, handed over without being kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kvxml/base/internal/document_name.h"
#include "kvxml/export.h"

namespace KvXmlLib16 {

class CXmlReader;

namespace internal {

/// Receiver. Each operation returns whether it wants more. What they throw leaves the reading.
class IDocumentEvents {
public:
    /// Which characters of the innermost element it wants.
    enum class Wish : std::uint8_t { None, NotBlank, All };

    virtual ~IDocumentEvents() = default;
    Wish GetWish() const noexcept { return m_wish; }
    /// `offset`: of the tag in the input.
    virtual bool OnStart(const CDocumentName& name, const CDocumentAttribute* attributes, std::size_t count,
                         std::uint64_t offset) = 0;
    /// One run of characters, not empty; neighbouring runs may come in several calls.
    virtual bool OnText(std::string_view text) = 0;
    virtual bool OnEnd() = 0;

protected:
    void SetWish(Wish wish) noexcept { m_wish = wish; }

private:
    Wish m_wish = Wish::All;
};

/// What a reader tells the library beyond what it tells everybody.
class KVXML_EXPORT CReaderEvents {
public:
    /// Hands over the reader's current event, if it is one of these; returns what the receiver does, else
    /// true.
    static bool Deliver(const CXmlReader& reader, IDocumentEvents& events);
    /// Reads the rest of the document, or until the receiver wants no more. During a call the reader tells
    /// place, path and prefixes of the event, but neither its text nor its attributes. Throws what Read does.
    static void ReadAll(CXmlReader& reader, IDocumentEvents& events);
    /// Line and column at an offset that the reader had at the start of an element that is still open, or has
    /// now.
    static void Locate(const CXmlReader& reader, std::uint64_t offset, std::uint64_t& line,
                       std::uint64_t& column);
};

}  // namespace internal
}  // namespace KvXmlLib16
