#include "kvxml/xml/internal/xml_tree_builder.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "kvxml/platform/internal/code_page.h"
#include "kvxml/xml/internal/tree_limits.h"

namespace KvXmlLib16::internal {

namespace {

constexpr std::size_t kFirstFrames = 64;

// As many as an element can count.
constexpr std::size_t kMaxAttributes = 0x0FFFFFFFU;

// Shorter text is rather copied after other text than linked to it.
constexpr std::size_t kLeastShared = 64;

}  // namespace

CXmlTreeBuilder::CXmlTreeBuilder(CXmlTree& tree, CXmlDocument::ElementFilter filter,
                                 const CSerializationContext& limits, bool convert)
    : m_tree(tree),
      m_arena(tree.Arena()),
      m_names(tree.Names()),
      m_noRuns(tree.SharedRuns().Root()),
      m_filter(filter),
      m_maxDepth(OrUnlimited(limits.GetMaxElementDepth())),
      m_convert(convert),
      m_mayBePlain(filter == nullptr && !convert),
      m_watchesEnds(filter != nullptr),
      m_isPlain(m_mayBePlain),
      m_frames(FrameCount(kFirstFrames)) {
    m_open = m_frames.data();
    m_framesEnd = m_open + m_frames.size();
    *m_open = Frame{};
    m_open->nextChild = tree.RootPlace();
    m_names.SetMaxNames(OrUnlimited(limits.GetMaxDistinctNames()));
}

/// `wanted` or as many as the maximum depth allows.
std::size_t CXmlTreeBuilder::FrameCount(std::size_t wanted) const noexcept {
    return wanted > m_maxDepth ? std::size_t{m_maxDepth} + 1 : wanted;
}

CXmlTreeBuilder::Frame* CXmlTreeBuilder::OpenFrame() {
    if (m_open + 1 == m_framesEnd) {
        const std::size_t depth = m_frames.size() - 1;
        if (depth >= m_maxDepth) {
            throw CTreeLimitPassed{kTooDeep, m_maxDepth};
        }
        m_frames.resize(FrameCount(m_frames.size() * 2));
        m_open = m_frames.data() + depth;
        m_framesEnd = m_frames.data() + m_frames.size();
    }
    return m_open + 1;
}

void CXmlTreeBuilder::StartAnyElement(const char* name, const char* const* attributes) {
    Frame* const frame = BeginElement();
    LinkElement(frame, m_convert || !m_declared.empty() ? MakeListedElement(name, attributes)
                                                        : MakeElement(name, attributes));
    if (m_judge != nullptr) Judge([this](CDocumentJudge& judge) { judge.StartElement(*m_open->element); });
}

void CXmlTreeBuilder::StartElement(const CXmlName* name, const CXmlNewAttribute* attributes,
                                   std::size_t count) {
    Frame* const frame = BeginElement();
    if (m_convert) {
        std::vector<std::string> values;
        for (std::size_t i = 0; i < count; ++i)
            values.push_back(Utf8ToLocal(attributes[i].value));
        std::vector<CXmlNewAttribute> converted;
        for (std::size_t i = 0; i < count; ++i)
            converted.push_back({attributes[i].name, values[i], false});
        LinkElement(frame, MakeElement(name, converted.data(), count));
    } else {
        LinkElement(frame, MakeElement(name, attributes, count));
    }
    if (m_judge != nullptr) Judge([this](CDocumentJudge& judge) { judge.StartElement(*m_open->element); });
}

CXmlTreeBuilder::Frame* CXmlTreeBuilder::BeginElement() {
    FlushText();
    Frame* const frame = OpenFrame();
    if (m_filter != nullptr) {
        frame->mark = m_arena.GetMark();
        frame->boxes = m_tree.GetBoxCount();
        frame->place = m_open->nextChild;
    }
    return frame;
}

CXmlElement* CXmlTreeBuilder::MakeElement(const CXmlName* name, const CXmlNewAttribute* attributes,
                                          std::size_t count) {
    std::size_t size = sizeof(CXmlElement) + count * sizeof(CXmlAttribute);
    for (std::size_t i = 0; i < count; ++i)
        size += attributes[i].isShared ? 0 : attributes[i].value.size();
    char* const place = m_declared.empty() ? static_cast<char*>(m_arena.Allocate(size)) : PutDeclared(size);
    auto* const element = new (place) CXmlElement();
    element->m_name = name;
    element->m_attributeCount = count & kMaxAttributes;
    element->m_declares = m_declared.empty() ? 0 : 1;
    m_declared.clear();
    auto* const first = reinterpret_cast<CXmlAttribute*>(element + 1);
    char* values = reinterpret_cast<char*>(first + count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view value = attributes[i].value;
        auto* const attribute = new (first + i) CXmlAttribute();
        attribute->m_name = attributes[i].name;
        attribute->m_length = static_cast<std::uint32_t>(value.size());
        attribute->m_index = i & 0x7FFFFFFFU;
        if (attributes[i].isShared) {
            attribute->m_value.characters = value.data();
        } else {
            CStringBuffer::CopyBytes(values, value.data(), value.size());
            attribute->m_value.characters = values;
            values += value.size();
        }
    }
    return element;
}

CXmlElement* CXmlTreeBuilder::MakeElement(const char* name, const char* const* attributes) {
    const CXmlName* const elementName = m_names.Element(name);
    std::size_t count = 0;
    while (attributes[2 * count] != nullptr)
        ++count;
    const std::size_t nodeSize = sizeof(CXmlElement) + count * sizeof(CXmlAttribute);
    if (!m_arena.Fits(nodeSize)) m_arena.NewChunk(nodeSize);
    char* end = AddAttributes(attributes, count);
    if (end == nullptr) {
        std::size_t size = nodeSize;
        for (std::size_t i = 0; i < count; ++i)
            size += std::strlen(attributes[2 * i + 1]);
        m_arena.NewChunk(size);
        end = AddAttributes(attributes, count);
    }
    void* const memory = m_arena.Take(static_cast<std::size_t>(end - m_arena.AlignedTip()));
    auto* const element = new (memory) CXmlElement();
    element->m_name = elementName;
    element->m_attributeCount = count & kMaxAttributes;
    return element;
}

/// Writes the attributes to where they stand after the element, and their values after the last of them.
/// Returns the end of the values; null when the chunk is too small.
char* CXmlTreeBuilder::AddAttributes(const char* const* attributes, std::size_t count) {
    auto* const first = reinterpret_cast<CXmlAttribute*>(m_arena.AlignedTip() + sizeof(CXmlElement));
    char* values = reinterpret_cast<char*>(first + count);
    m_names.BeginAttributes();
    for (std::size_t i = 0; i < count; ++i) {
        const char* const value = attributes[2 * i + 1];
        const std::size_t length = std::strlen(value);
        if (length > static_cast<std::size_t>(m_arena.End() - values)) return nullptr;
        CStringBuffer::CopyBytes(values, value, length);
        auto* const attribute = new (first + i) CXmlAttribute();
        attribute->m_name = m_names.Attribute(attributes[2 * i]);
        attribute->m_value.characters = values;
        attribute->m_length = static_cast<std::uint32_t>(length);
        attribute->m_index = i & 0x7FFFFFFFU;
        values += length;
    }
    return values;
}

/// Puts what the element declares, and their number, in front of where the element with its `size` goes;
/// returns that place.
char* CXmlTreeBuilder::PutDeclared(std::size_t size) {
    const std::size_t count = m_declared.size();
    auto* const first =
        static_cast<CXmlBinding*>(m_arena.Allocate(count * sizeof(CXmlBinding) + sizeof(count) + size));
    std::uninitialized_copy(m_declared.begin(), m_declared.end(), first);
    auto* const number = new (first + count) std::size_t(count);
    m_isPlain = m_mayBePlain;
    return reinterpret_cast<char*>(number + 1);
}

/// An element that declares prefixes, or whose values are to be converted.
CXmlElement* CXmlTreeBuilder::MakeListedElement(const char* name, const char* const* attributes) {
    const CXmlName* const elementName = m_names.Element(name);
    m_names.BeginAttributes();
    std::deque<std::string> converted;
    m_attributes.clear();
    for (; *attributes != nullptr; attributes += 2) {
        std::string_view value = attributes[1];
        if (m_convert) value = converted.emplace_back(Utf8ToLocal(value));
        m_attributes.push_back({m_names.Attribute(attributes[0]), value, false});
    }
    return MakeElement(elementName, m_attributes.data(), m_attributes.size());
}

void CXmlTreeBuilder::FlushRun() {
    if (m_convert) ConvertRun();
    CXmlElement& element = *m_open->element;
    const std::string_view text(m_arena.Run(), m_arena.RunLength());
    const CSharedTextRuns::Node* chain = nullptr;
    if (element.m_textKind == CXmlElement::TextKind_None) {
        chain = m_noRuns;
    } else if (element.m_textKind == CXmlElement::TextKind_SharedRuns) {
        chain = static_cast<const CSharedTextRuns::Node*>(element.m_text.sharedRuns);
    }
    const auto* const node = chain == nullptr ? nullptr : m_tree.SharedRuns().Find(chain, text);
    if (node == nullptr) {
        AppendRun(element);
        return;
    }
    m_arena.DropRun();
    element.m_text.sharedRuns = node;
    element.m_textKind = CXmlElement::TextKind_SharedRuns;
}

bool CXmlTreeBuilder::RepeatsLastRun(const CXmlElement& element, std::string_view text) const noexcept {
    if (element.m_textKind != CXmlElement::TextKind_Runs) return false;
    const CXmlTextRun& last = *element.m_text.runs;
    return std::string_view(last.characters, last.length) == text;
}

void CXmlTreeBuilder::AppendRun(CXmlElement& element) {
    const std::string_view text(m_arena.Run(), m_arena.RunLength());
    if (element.m_textKind == CXmlElement::TextKind_Box) {
        element.m_text.box->text += text;
        m_arena.DropRun();
        return;
    }
    if (RepeatsLastRun(element, text)) {
        ++element.m_text.runs->repeat;
        m_arena.DropRun();
        return;
    }
    const char* characters = m_tree.SharedRuns().FindCharacters(text);
    if (characters != nullptr) {
        m_arena.DropRun();
    } else {
        characters = m_arena.CommitRun();
    }
    LinkRun(element, characters, text.size());
}

/// Adds characters that stay where they are. There must be no run.
void CXmlTreeBuilder::LinkRun(CXmlElement& element, const char* characters, std::size_t length) {
    if (element.m_textKind == CXmlElement::TextKind_None && length <= UINT32_MAX) {
        element.m_text.characters = characters;
        element.m_textLength = static_cast<std::uint32_t>(length);
        element.m_textKind = CXmlElement::TextKind_Characters;
        return;
    }
    const CXmlTextRun* previous = nullptr;
    if (element.m_textKind == CXmlElement::TextKind_Characters) {
        previous = NewRun(nullptr, element.m_text.characters, element.m_textLength);
    } else if (element.m_textKind == CXmlElement::TextKind_SharedRuns) {
        previous = element.m_text.sharedRuns;
    } else if (element.m_textKind == CXmlElement::TextKind_Runs) {
        previous = element.m_text.runs;
    }
    element.m_text.runs = NewRun(previous, characters, length);
    element.m_textKind = CXmlElement::TextKind_Runs;
}

void CXmlTreeBuilder::AppendShared(const char* text, std::size_t length) {
    CXmlElement& element = *m_open->element;
    const bool isFirst = element.m_textKind == CXmlElement::TextKind_None && m_arena.RunLength() == 0;
    if (m_convert || element.m_textKind == CXmlElement::TextKind_Box || (!isFirst && length < kLeastShared)) {
        m_arena.AppendToRun(text, length);
        return;
    }
    FlushText();
    if (RepeatsLastRun(element, std::string_view(text, length))) {
        ++element.m_text.runs->repeat;
    } else {
        LinkRun(element, text, length);
    }
}

CXmlTextRun* CXmlTreeBuilder::NewRun(const CXmlTextRun* previous, const char* characters,
                                     std::size_t length) {
    return new (m_arena.Allocate(sizeof(CXmlTextRun))) CXmlTextRun{previous, characters, length, 1};
}

void CXmlTreeBuilder::ConvertRun() {
    const std::string converted = Utf8ToLocal(std::string_view(m_arena.Run(), m_arena.RunLength()));
    m_arena.DropRun();
    m_arena.AppendToRun(converted.data(), converted.size());
}

void CXmlTreeBuilder::SetJudge(std::unique_ptr<CDocumentJudge> judge, bool throwsLate) {
    m_judge = std::move(judge);
    m_throwsLate = throwsLate;
    m_watchesEnds = m_filter != nullptr || m_judge != nullptr;
    m_mayBePlain = !m_watchesEnds && !m_convert;
    m_isPlain = m_mayBePlain && m_declared.empty();
}

template <class Call>
void CXmlTreeBuilder::Judge(Call call) {
    if (!m_throwsLate) return call(*m_judge);
    try {
        call(*m_judge);
    } catch (...) {
        m_refusal = std::current_exception();
        m_judge.reset();
    }
}

void CXmlTreeBuilder::EndJudging() {
    if (m_refusal != nullptr) std::rethrow_exception(m_refusal);
}

void CXmlTreeBuilder::WatchEnd() {
    const Frame& closed = *(m_open + 1);
    CXmlElement* const element = closed.element;
    if (m_judge != nullptr) {
        Judge([&](CDocumentJudge& judge) {
            judge.EndElement(*element);
            if (m_open->element == nullptr) judge.EndDocument();
        });
    }
    if (m_filter == nullptr || !m_filter(element) || m_open->element == nullptr) return;
    m_open->nextChild = closed.place;
    *closed.place = nullptr;
    m_tree.DropBoxes(closed.boxes, *element);
    m_arena.Rewind(closed.mark);
}

void CXmlTreeBuilder::DeclarePrefix(std::string_view prefix, std::string_view uri) {
    const CXmlNamespace& space = m_names.Namespace(uri);
    m_names.ForgetPlaces();
    const std::string& kept =
        m_convert ? m_tree.SetPrefix(Utf8ToLocal(prefix), space.uri) : m_tree.SetPrefix(prefix, space.uri);
    m_declared.push_back({&kept, &space});
    m_isPlain = false;
    if (m_open->element != nullptr) m_tree.SetHasInnerDeclarations();
}

void CXmlTreeBuilder::Abandon() {
    if (m_open->element != nullptr) FinishText();
}

}  // namespace KvXmlLib16::internal
