/// Maps the tokens of JSON text to the elements and attributes of an XML document.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/json/internal/json_names.h"
#include "kvxml/json/internal/json_scanner.h"
#include "kvxml/settings/json_context.h"

namespace KvXmlLib16::internal {

/// Thrown when a member that names an attribute comes after a child element of its object, and when a prefix
/// is unknown that such an attribute may yet declare.
struct CLateJsonAttribute {};

struct CJsonMapping {
    JsonRoundTrip roundTrip = JsonRoundTrip_Full;
    bool namespaces = true;       ///< prefixes are looked up; else they are parts of the names
    bool allowLate = false;       ///< throw CLateJsonAttribute, not the error that such an attribute is
    bool deliverLiteral = false;  ///< give the sink names as they stand, and declarations as attributes
    bool countItems = false;      ///< `Item` is not called
    bool exactStrings = false;    ///< tabs and carriage returns in the values of attributes stay
};

/// What does not depend on where the elements go: paths, names, attributes of the element that is about to
/// start, and errors.
///
/// An element starts once something follows its attributes, since the namespaces that it declares count for
/// its own name.
class CJsonToXmlBase {
public:
    explicit CJsonToXmlBase(const CJsonMapping& mapping);
    CJsonToXmlBase(const CJsonToXmlBase&) = delete;
    CJsonToXmlBase& operator=(const CJsonToXmlBase&) = delete;

    /// "$.orders.order[3]": members by name, items of arrays counted from 0.
    std::string GetErrorPath() const;

    void Name(const CJsonText& name);
    void Item() noexcept { ++m_top->items; }

protected:
    enum class Container : std::uint8_t { Document, Element, Array };
    enum class Member : std::uint8_t { Element, Attribute, Text };

    /// One for each object and array that is open.
    struct Frame {
        Container container = Container::Document;
        bool isStarted = false;        // the element's start tag is out
        bool hasMember = false;        // `name` is set
        std::string_view elementName;  // of an Element
        std::string_view name;         // of the member at hand; of an Array, the name of its items
        std::string ownName;           // `name`, if it does not live elsewhere
        std::uint64_t items = 0;       // of an Array, begun so far
        CJsonNames::Scope scope{0, 0};
    };
    struct Attribute {
        std::size_t name;  // offsets into m_pending
        std::size_t nameLength;
        std::size_t value;
        std::size_t valueLength;
        std::size_t expanded;
        bool isDeclaration;
    };

    /// The frame at hand; there must be one.
    Frame& Top() noexcept { return *m_top; }
    bool IsEmpty() const noexcept { return m_depth == 0; }
    Frame& Push(Container container);
    void Pop() noexcept {
        --m_depth;
        m_top = m_depth == 0 ? nullptr : &m_frames[m_depth - 1];
    }

    /// Checks that an array may begin here, and opens it.
    void PushArray();
    /// Checks that an element may begin here; its name.
    std::string_view BeginItem();
    bool IsTextOrAttribute() const noexcept {
        return m_top->container == Container::Element && m_member != Member::Element;
    }
    bool IsAttribute() const noexcept { return m_member == Member::Attribute; }
    bool IsInArray() const noexcept { return m_top->container == Container::Array; }
    [[noreturn]] void RefuseContainer(const char* shown);

    void AddAttribute(std::string_view value, bool isSpecial);
    /// An attribute that is null is not there. A declaration that is null has the empty value.
    void AddNullAttribute();
    /// Resolves the names of the element that is about to start. Its attributes are in `m_pairs`.
    const CJsonNames::Name& PrepareStart(std::string_view elementName);
    void DropPending() {
        m_attributes.clear();
        m_pending.clear();
    }

    /// Keeps text until its element starts.
    void HoldText(std::string_view text, bool isStable, bool isSpecial);

    /// Leaves out carriage returns, and in attributes makes tabs blanks, as XML text would have it.
    /// Characters that XML does not have are errors. Good until the next call.
    std::string_view Clean(std::string_view value, bool isAttribute);

    /// The document holds what a document must hold.
    void CheckDocument() const;

    [[noreturn]] void ThrowValue(std::string_view value, bool isAttribute, const std::string& reason) const;
    [[noreturn]] void ThrowValue(std::string_view value, bool isAttribute, const CKvException& reason) const;
    [[noreturn]] void ThrowName(std::string_view name, bool isAttribute) const;
    [[noreturn]] void Throw(const char* message) const;

    const CJsonMapping m_mapping;
    CJsonNames m_names;
    std::vector<const char*> m_pairs;  // name, value, ..., null
    std::vector<Attribute> m_attributes;
    // Text in front of the first child and attribute; like these it waits for the start of its element.
    bool m_hasHeldText = false;
    bool m_isHeldTextSpecial = false;
    std::string_view m_heldText;

    void DeclarationOf(const Attribute& attribute, std::string_view& prefix, std::string_view& uri) const;

private:
    void CheckDuplicates();

    std::deque<Frame> m_frames;  // those at m_depth and above are kept for reuse
    std::size_t m_depth = 0;
    Frame* m_top = nullptr;
    Member m_member = Member::Element;
    std::uint64_t m_roots = 0;
    std::string m_pending;  // zero-terminated names and values of m_attributes
    std::vector<std::string_view> m_sorted;
    std::string m_clean;
    std::string m_ownHeldText;
};

/// A handler of CJsonScanner. `Sink` is a class with
///
///     void DeclarePrefix(std::string_view prefix, std::string_view uri);
///     void StartElement(const CJsonNames::Name& name, const char* const* attributes);
///     void Text(std::string_view text);
///     void Null(bool isItem);  // of an array
///     void EndElement();
template <class Sink>
class CJsonToXml final : public CJsonToXmlBase {
public:
    CJsonToXml(const CJsonMapping& mapping, Sink& sink) : CJsonToXmlBase(mapping), m_sink(sink) {}

    void String(const CJsonText& text) { Value(text.text, text.isStable, text.isSpecial); }
    void Number(std::string_view text) { Value(text, true, false); }
    void Boolean(bool value) { Value(value ? "true" : "false", true, false); }
    void Null() {
        if (!IsEmpty() && IsTextOrAttribute()) {
            if (IsAttribute()) AddNullAttribute();
            return;
        }
        StartValue();
        m_sink.Null(IsInArray());
        m_sink.EndElement();
    }

    void StartObject(int) {
        if (IsEmpty()) {
            Push(Container::Document);
            return;
        }
        if (IsTextOrAttribute()) RefuseContainer("{");
        StartPending();
        const std::string_view name = BeginItem();
        Frame& frame = Push(Container::Element);
        frame.elementName = name;
        frame.scope = m_names.GetScope();
    }
    void EndObject() {
        if (Top().container == Container::Element) {
            StartPending();
            m_sink.EndElement();
            m_names.Leave(Top().scope);
        }
        Pop();
    }
    void StartArray(int) {
        if (!IsEmpty()) {
            if (IsTextOrAttribute()) RefuseContainer("[");
            StartPending();
        }
        PushArray();
    }
    void EndArray() { Pop(); }
    void EndDocument() { CheckDocument(); }

private:
    void Value(std::string_view text, bool isStable, bool isSpecial) {
        if (!IsEmpty() && IsTextOrAttribute()) {
            if (IsAttribute()) {
                AddAttribute(text, isSpecial);
            } else {
                AddText(text, isStable, isSpecial);
            }
            return;
        }
        StartValue();
        Write(text, isSpecial);
        m_sink.EndElement();
    }
    /// Starts the element of a plain value.
    void StartValue() {
        if (!IsEmpty()) StartPending();
        const std::string_view name = BeginItem();
        static constexpr const char* kNoAttributes[] = {nullptr};
        const CJsonNames::Name* const resolved = m_names.Element(name);
        if (resolved == nullptr) ThrowName(name, false);
        m_sink.StartElement(*resolved, kNoAttributes);
    }
    void AddText(std::string_view text, bool isStable, bool isSpecial) {
        if (!Top().isStarted && !m_hasHeldText) {
            HoldText(text, isStable, isSpecial);
            return;
        }
        StartPending();
        Write(text, isSpecial);
    }
    void Write(std::string_view text, bool isSpecial) {
        if (isSpecial) text = Clean(text, false);
        if (text.empty()) return;
        if constexpr (Sink::kMayRefuse) {
            try {
                m_sink.Text(text);
            } catch (const CKvException& e) {
                ThrowValue(text, false, e);
            }
        } else {
            m_sink.Text(text);
        }
    }
    /// Starts the element at hand if that is still to be done.
    void StartPending() {
        Frame& frame = Top();
        if (frame.isStarted || frame.container != Container::Element) return;
        const CJsonNames::Name& name = PrepareStart(frame.elementName);
        if (!m_mapping.deliverLiteral) {
            for (const Attribute& attribute : m_attributes)
                if (attribute.isDeclaration) Declare(attribute);
        }
        m_sink.StartElement(name, m_pairs.data());
        frame.isStarted = true;
        if (!m_attributes.empty()) DropPending();
        if (m_hasHeldText) {
            m_hasHeldText = false;
            Write(m_heldText, m_isHeldTextSpecial);
        }
    }
    void Declare(const Attribute& attribute) {
        std::string_view prefix, uri;
        DeclarationOf(attribute, prefix, uri);
        m_sink.DeclarePrefix(prefix, uri);
    }

    Sink& m_sink;
};

}  // namespace KvXmlLib16::internal
