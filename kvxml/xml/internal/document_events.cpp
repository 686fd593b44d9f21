#include "kvxml/xml/internal/document_events.h"

#include <algorithm>

#include "kvxml/xml/internal/tree_limits.h"
#include "kvxml/xml/internal/xml_reader_impl.h"

namespace KvXmlLib16 {

using internal::CDocumentAttribute;
using internal::CEventName;
using internal::CXmlEventQueue;

namespace {

// Texts in memory up to this length are parsed in one piece.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 26;

}  // namespace

/// Hands events over at once. Of attributes the reader itself knows nothing meanwhile.
struct CXmlReader::Impl::Pump : internal::IXmlEvents {
    Pump(Impl& reader, internal::IDocumentEvents& receiver)
        : impl(reader), events(receiver), names(reader.maxNames) {}

    /// What leaves the parser when the receiver wants no more.
    struct Stopped {};

    Impl& impl;
    internal::IDocumentEvents& events;
    internal::CEventNames names;
    std::vector<CDocumentAttribute> attributes;
    std::vector<CXmlEventQueue::Declaration> declarations;

    bool Wants(std::string_view text) const noexcept {
        using Wish = internal::IDocumentEvents::Wish;
        if (events.GetWish() == Wish::None) return false;
        if (events.GetWish() == Wish::All) return !text.empty();
        // Of what is not greater than a blank, only blanks may stand in a document.
        return std::any_of(text.begin(), text.end(),
                           [](char c) { return static_cast<unsigned char>(c) > ' '; });
    }
    static void GoOn(bool wantsMore) {
        if (!wantsMore) throw Stopped();
    }
    void OnDeclarePrefix(const char* prefix, const char* uri) override {
        declarations.push_back({names.Keep(prefix), names.Keep(uri)});
    }
    void OnStart(const char* element, const char** values, int) override {
        impl.Leave();
        if (impl.open.size() >= impl.maxDepth)
            throw internal::CTreeLimitPassed{internal::kTooDeep, impl.maxDepth};
        const CEventName* const known = names.Element(element);
        attributes.clear();
        for (; *values != nullptr; values += 2)
            attributes.push_back({names.Attribute(values[0]), values[1]});
        const std::uint64_t tagOffset = impl.parser->GetOffset();
        impl.Enter(known, tagOffset);
        if (!declarations.empty()) {
            impl.scope = ++impl.lastScope;
            for (const CXmlEventQueue::Declaration& declared : declarations)
                impl.bindings.push_back({*declared.prefix, *declared.uri});
            declarations.clear();
        }
        impl.kind = XmlEvent::StartElement;
        GoOn(events.OnStart(*known, attributes.data(), attributes.size(), tagOffset));
    }
    void OnEnd() override {
        impl.Leave();
        impl.kind = XmlEvent::EndElement;
        impl.isAfterEnd = true;
        impl.name = impl.open.back().name;
        GoOn(events.OnEnd());
    }
    void OnText(const char* text, std::size_t length) override {
        if (!Wants({text, length})) return;
        impl.Leave();
        impl.kind = XmlEvent::Text;
        GoOn(events.OnText({text, length}));
    }
    void OnCData(bool) override {}
    void OnComment(const char*) override {}
    void OnProcessingInstruction(const char*, const char*) override {}
    void OnDocumentType(const char*) override {}
};

/// Nothing has been read yet.
void CXmlReader::Impl::Push(internal::IDocumentEvents& events) {
    struct Reset {
        ~Reset() {
            impl.offset = impl.Offset();
            impl.isPushing = false;
            impl.isLast = true;
            impl.kind = XmlEvent::None;
        }
        Impl& impl;
    } reset{*this};
    pump = std::make_unique<Pump>(*this, events);
    isPushing = true;
    StartParser();
    const std::string_view whole = input->WholeMemory();
    if (!whole.empty() && whole.size() <= kMostAtOnce) {
        // The parser need not count lines in a last piece.
        held = whole;
        isLast = true;
        Parse(whole);
    }
    while (!isLast)
        ReadPiece();
    if (error == nullptr) return;
    try {
        std::rethrow_exception(std::exchange(error, nullptr));
    } catch (const Pump::Stopped&) {
    }
}

bool internal::CReaderEvents::Deliver(const CXmlReader& reader, IDocumentEvents& events) {
    const CXmlReader::Impl& impl = *reader.m_impl;
    switch (impl.kind) {
        case XmlEvent::StartElement: {
            std::vector<CDocumentAttribute> attributes;
            for (std::size_t i = 0; i < impl.event->attributeCount; ++i) {
                const auto& attribute = impl.queue->Attributes()[impl.event->firstAttribute + i];
                attributes.push_back({attribute.name, impl.queue->ViewOf(attribute.value)});
            }
            return events.OnStart(*impl.name, attributes.data(), attributes.size(), impl.offset);
        }
        case XmlEvent::EndElement:
            return events.OnEnd();
        case XmlEvent::Text:
        case XmlEvent::CData:
            return reader.GetText().empty() || events.OnText(reader.GetText());
        default:
            return true;
    }
}

void internal::CReaderEvents::ReadAll(CXmlReader& reader, IDocumentEvents& events) {
    CXmlReader::Impl& impl = *reader.m_impl;
    if (impl.input != nullptr && !impl.hasBegun) return impl.Push(events);
    while (reader.Read() && Deliver(reader, events)) {
    }
}

void internal::CReaderEvents::Locate(const CXmlReader& reader, std::uint64_t offset, std::uint64_t& line,
                                     std::uint64_t& column) {
    const internal::CTextPosition& place = reader.m_impl->Locate(offset);
    line = place.GetLine();
    column = place.GetColumn();
}

}  // namespace KvXmlLib16
