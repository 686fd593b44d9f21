/// Builds the tree of a document from the events of a reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string_view>
#include <vector>

#include "kvxml/settings/document_check.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/xml_document.h"

namespace KvXmlLib16::internal {

/// An attribute of an element that is to be opened.
struct CXmlNewAttribute {
    const CXmlName* name;
    std::string_view value;  ///< of at most 4 GiB
    bool isShared;           ///< the value lies in the tree's shared characters and need not be copied
};

/// One pass over one document. Texts are UTF-8 and are converted to the local code page where that is
/// another.
///
/// Elements must be closed in the reverse order of their opening. All operations may throw std::bad_alloc,
/// and those that open elements CTreeLimitPassed for what is beyond a limit of the context; the tree stays
/// sound, though incomplete, at every point.
class CXmlTreeBuilder {
public:
    CXmlTreeBuilder(CXmlTree& tree, CXmlDocument::ElementFilter filter, const CSerializationContext& limits,
                    bool convert);

    /// Tells the judge, if it is not null, of all elements from now on. With `throwsLate` what it throws is
    /// thrown by `EndJudging` only, to be called after the document.
    void SetJudge(std::unique_ptr<CDocumentJudge> judge, bool throwsLate);
    void EndJudging();

    /// See `CXmlNameTable::TrustPlaces`.
    void TrustPlacesOfNames() noexcept { m_names.TrustPlaces(); }

    /// Opens an element. `name` and the names in `attributes`, pairs of name and value up to a null, are
    /// namespace URI, CXmlNameTable::kSeparator and local name, or the local name alone.
    void StartElement(const char* name, const char* const* attributes) {
        FlushText();
        if (!m_isPlain || attributes[0] != nullptr || m_open + 1 == m_framesEnd)
            return StartAnyElement(name, attributes);
        auto* const element = new (m_arena.Allocate(sizeof(CXmlElement))) CXmlElement();
        element->m_name = m_names.Element(name);
        LinkElement(m_open + 1, element);
    }
    /// The same with names and attributes as the tree has them.
    void StartElement(const CXmlName* name, const CXmlNewAttribute* attributes, std::size_t count);
    /// Closes the element opened last, tells the judge and asks the filter; the exceptions of both pass.
    void EndElement() {
        FinishText();
        --m_open;
        if (m_watchesEnds) WatchEnd();
    }
    /// Adds to the text of the element opened last. Carriage returns must have been left out.
    void AppendText(const char* text, std::size_t length) { m_arena.AppendToRun(text, length); }
    /// The same for one character; false, with nothing done, when that takes more memory.
    bool AppendCharacter(char character) noexcept { return m_arena.AppendToRun(character); }
    /// The same for text that lies in the tree's shared characters.
    void AppendShared(const char* text, std::size_t length);
    /// Marks the element opened last, which must be empty, as null.
    void MarkNull(bool isItem) noexcept {
        m_open->element->m_textLength = isItem ? CXmlElement::kNullItem : CXmlElement::kNullMember;
    }
    /// The element that is opened next declares a prefix, or with an empty one the default namespace.
    void DeclarePrefix(std::string_view prefix, std::string_view uri);
    /// To be called when reading ends before the document does: keeps the text that is still held back.
    void Abandon();

private:
    struct Frame {
        CXmlElement* element;
        CXmlElement** nextChild;  // where the next child is linked in
        // Filled only when there is a filter: how things stood before the element.
        CXmlElement** place;  // where it was linked in
        CArena::Mark mark;
        std::size_t boxes;
    };

    void StartAnyElement(const char* name, const char* const* attributes);
    Frame* BeginElement();
    void LinkElement(Frame* frame, CXmlElement* element) noexcept {
        element->m_parent = m_open->element;
        *m_open->nextChild = element;
        m_open->nextChild = &element->m_next;
        frame->element = element;
        frame->nextChild = &element->m_firstChild;
        m_open = frame;
    }
    CXmlElement* MakeElement(const CXmlName* name, const CXmlNewAttribute* attributes, std::size_t count);
    CXmlElement* MakeElement(const char* name, const char* const* attributes);
    char* PutDeclared(std::size_t size);
    CXmlElement* MakeListedElement(const char* name, const char* const* attributes);
    char* AddAttributes(const char* const* attributes, std::size_t count);
    std::size_t FrameCount(std::size_t wanted) const noexcept;
    Frame* OpenFrame();

    /// Ends the run of text in front of a child element.
    void FlushText() {
        const std::size_t length = m_arena.RunLength();
        if (length == 0) return;
        if (!ShareExpectedText(length)) FlushRun();
    }
    /// Ends the last run of text of the element.
    void FinishText() {
        const std::size_t length = m_arena.RunLength();
        if (length == 0) return;
        CXmlElement& element = *m_open->element;
        if (element.m_textKind == CXmlElement::TextKind_None && length <= UINT32_MAX && !m_convert) {
            element.m_text.characters = m_arena.CommitRun();
            element.m_textLength = static_cast<std::uint32_t>(length);
            element.m_textKind = CXmlElement::TextKind_Characters;
        } else if (!ShareExpectedText(length)) {
            FlushRun();
        }
    }
    bool ShareExpectedText(std::size_t length) {
        CXmlElement& element = *m_open->element;
        const CSharedTextRuns::Node* chain = m_noRuns;
        if (element.m_textKind == CXmlElement::TextKind_SharedRuns) {
            chain = static_cast<const CSharedTextRuns::Node*>(element.m_text.sharedRuns);
        } else if (element.m_textKind != CXmlElement::TextKind_None) {
            return false;
        }
        const auto* const node = CSharedTextRuns::Expected(chain, m_arena.Run(), length);
        if (node == nullptr) return false;
        m_arena.DropRun();
        element.m_text.sharedRuns = node;
        element.m_textKind = CXmlElement::TextKind_SharedRuns;
        return true;
    }
    void FlushRun();
    void AppendRun(CXmlElement& element);
    bool RepeatsLastRun(const CXmlElement& element, std::string_view text) const noexcept;
    void LinkRun(CXmlElement& element, const char* characters, std::size_t length);
    CXmlTextRun* NewRun(const CXmlTextRun* previous, const char* characters, std::size_t length);
    void ConvertRun();
    void WatchEnd();
    template <class Call>
    void Judge(Call call);

    CXmlTree& m_tree;
    CArena& m_arena;
    CXmlNameTable& m_names;
    const CSharedTextRuns::Node* const m_noRuns;
    const CXmlDocument::ElementFilter m_filter;
    const std::uint32_t m_maxDepth;
    const bool m_convert;
    bool m_mayBePlain;
    bool m_watchesEnds;
    bool m_throwsLate = false;
    bool m_isPlain;      // elements need nothing but to be made
    Frame* m_open;       // of the element opened last; the first one stands for the document
    Frame* m_framesEnd;  // after the last one that may be opened without a look
    std::vector<Frame> m_frames;
    std::unique_ptr<CDocumentJudge> m_judge;
    std::exception_ptr m_refusal;         // thrown by the judge
    std::vector<CXmlBinding> m_declared;  // by the element that is opened next
    std::vector<CXmlNewAttribute> m_attributes;
};

}  // namespace KvXmlLib16::internal
