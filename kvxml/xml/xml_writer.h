/// The abstract writer through which objects describe themselves, whatever the format is.
///
///     writer.WriteStartElement("point", "urn:geo");
///     writer.WriteAttribute("lat", "", "52.5", ItemType_r8);
///     writer.WriteText("Berlin", ItemType_string, false);
///     writer.WriteEndElement();
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kvxml/export.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16 {

namespace internal {
class CTreeOutput;
}

/// Forward-only writer of one document: strictly nested elements, attributes before content. Keeps the
/// namespaces in scope for every open element; what is declared inside an element ends with it.
class KVXML_EXPORT CXmlWriter {
public:
    CXmlWriter(const CXmlWriter&) = delete;
    CXmlWriter& operator=(const CXmlWriter&) = delete;
    virtual ~CXmlWriter();

    /// Starts the output; nothing here.
    virtual void BeginOutput();
    /// CKvException "An Element has not been closed." when one is still open.
    virtual void EndDocument();
    /// Before the document element: the default namespace that it declares. Inside an element: what counts
    /// as the default namespace from here to its end; nothing is written.
    virtual void SetDefaultNamespace(std::string_view uri);
    /// Before the document element: a prefix that it declares. Inside an element: a prefix to use for `uri`
    /// from here to its end; nothing is written. Replaces an earlier prefix of `uri`; an empty one removes
    /// it. A prefix that another namespace of the document element has already is not used.
    virtual void AddNamespaceAlias(std::string_view prefix, std::string_view uri);
    virtual void WriteComment(std::string_view text) = 0;
    /// Writes `text` as it is, on lines of its own.
    virtual void WriteRaw(std::string_view text) = 0;
    /// Writes `text` as it is, behind a blank and a line end.
    virtual void WriteRawAfterSpace(std::string_view text) = 0;
    virtual void WriteStartElement(std::string_view localName, std::string_view namespaceUri) = 0;
    /// Writes the text of the current element. `type` tells formats that distinguish them what kind of
    /// value it is; a default value may be left out.
    virtual void WriteText(std::string_view text, ItemType type, bool isDefaultValue) = 0;
    virtual void WriteEndElement() = 0;
    /// An empty `namespaceUri` is no namespace; the default namespace never applies to attributes.
    virtual void WriteAttribute(std::string_view localName, std::string_view namespaceUri,
                                std::string_view value, ItemType type) = 0;
    /// Writes the attribute that names the type of the current element.
    virtual void WriteTypeAttribute(std::string_view typeNamespaceUri, std::string_view typeName,
                                    ItemType type) = 0;
    /// Marks the current element as nil.
    virtual void WriteNilAttribute() = 0;
    /// What the attributes of one name have in common, or the elements that have nothing but a text, as most
    /// elements of most documents.
    struct SimpleName {
        /// Lets writers remember the name: 0, or a number from `NewNameId` that stands for this element or
        /// attribute name and namespace.
        std::uint32_t id = 0;
        ItemType type = ItemType_Unknown;
        std::string_view localName;
        std::string_view namespaceUri;
    };
    /// As WriteAttribute, in fewer steps. `isCanonical`: as for `WriteSimpleElement`.
    virtual void WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical);
    /// Start, text and end of such an element in one call, for writers that can do that faster than by the
    /// three calls. `isCanonical`: the text is what the library makes of a value of the name's kind, so that
    /// nobody need look at it.
    virtual void WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                                    bool isCanonical);

    /// A number that no other caller gets, or 0 when there are no more. Any thread may call it.
    static std::uint32_t NewNameId() noexcept;

    /// Number of elements that are open.
    std::int32_t GetDepth() const noexcept { return m_current == nullptr ? 0 : m_current->depth + 1; }

    /// Announces that the next children of the current element are the items of one non-empty collection.
    void BeginArray() noexcept { SetArrayMode(kArrayStarting); }
    /// The last item of the collection has been written.
    void EndArray() noexcept { SetArrayMode(kArrayEnded); }

    /// Text that callers may format values into and pass to the writer, reused to save allocations. Belongs
    /// to whoever uses it from the moment of filling to the call that consumes it.
    std::string& ScratchText() noexcept { return m_scratch; }

protected:
    /// Where a context stands in writing a collection.
    enum ArrayMode : std::int32_t {
        kArrayNone = 0,
        kArrayStarting = 1,
        kArrayOpen = 2,
        kArrayEnded = 3,
    };

    /// Default namespace and prefixes that hold for an element, shared by all descendants that change
    /// nothing.
    struct NamespaceScope {
        struct Alias {
            std::string uri;
            std::string qualifier;  // the prefix and the colon behind it

            std::string_view Prefix() const noexcept { return {qualifier.data(), qualifier.size() - 1}; }
        };

        /// What is registered for `uri`, or null. Valid until the scope changes.
        const Alias* Find(std::string_view uri) const noexcept {
            if (lastFound < aliases.size() && Equal(aliases[lastFound].uri, uri)) return &aliases[lastFound];
            return FindSorted(uri);
        }
        /// Registers a prefix that is not empty and returns what was registered.
        const Alias& Set(std::string_view prefix, std::string_view uri);
        void Remove(std::string_view uri) noexcept;
        /// Whether names in this namespace need no prefix.
        bool IsDefault(std::string_view uri) const noexcept { return Equal(uri, defaultNamespace); }
        bool IsPrefixUsed(std::string_view prefix) const noexcept;

        std::string defaultNamespace;
        std::vector<Alias> aliases;         // ascending by URI
        mutable std::size_t lastFound = 0;  // index that the next search tries first
        unsigned firstFree = 0;             // no invented prefix before this one is free

    private:
        /// Comparison of URIs, which are of one length more often than not equal, without a call.
        static bool Equal(std::string_view left, std::string_view right) noexcept {
            if (left.size() != right.size()) return false;
            if (left.size() < sizeof(std::uint64_t)) return left == right;
            const std::size_t last = left.size() - sizeof(std::uint64_t);
            for (std::size_t i = 0; i < last; i += sizeof(std::uint64_t))
                if (Word(left.data() + i) != Word(right.data() + i)) return false;
            return Word(left.data() + last) == Word(right.data() + last);
        }
        static std::uint64_t Word(const char* text) noexcept {
            std::uint64_t word;
            std::memcpy(&word, text, sizeof(word));
            return word;
        }
        const Alias* FindSorted(std::string_view uri) const noexcept;
        std::size_t Position(std::string_view uri) const noexcept;
    };

    /// State of one open element. Contexts are kept for reuse when their element ends.
    class KVXML_EXPORT CXmlWriterContext {
    public:
        CXmlWriterContext() = default;
        CXmlWriterContext(const CXmlWriterContext&) = delete;
        CXmlWriterContext& operator=(const CXmlWriterContext&) = delete;
        ~CXmlWriterContext() = default;

        /// The longest name, with its qualifier, that is kept in place.
        static constexpr std::size_t kShortName = 48;

        std::int32_t childCount = 0;
        std::int32_t depth = 0;
        std::int32_t arrayMode = kArrayNone;
        bool startTagOpen = false;
        bool isArrayOpen = false;         // for formats with brackets: that of a collection is to be closed
        std::size_t qualifierLength = 0;  // of the prefix and colon that the name begins with
        std::size_t nameLength = 0;       // of the whole name, which the end tag repeats
        char shortName[kShortName] = {};  // the name, when it fits
        std::string longName;             // the name, when it does not
        CXmlWriterContext* parent = nullptr;
        const NamespaceScope* scope = nullptr;  // the effective one: m_ownScope or an ancestor's

    private:
        friend class CXmlWriter;
        std::unique_ptr<NamespaceScope> m_ownScope;  // kept for reuse; in force only if `scope` points to it
        CXmlWriterContext* m_reusable = nullptr;     // the context of the next level, when there was one
    };

    CXmlWriter();

    CXmlWriterContext* GetCurrentContext() const noexcept { return m_current; }
    /// Makes the context of a new element current: the document element's takes the writer's default
    /// namespace and prefixes, a child shares its parent's. The start tag is open; depth is the parent's
    /// plus 1.
    CXmlWriterContext* PushContext() {
        CXmlWriterContext* context = m_current != nullptr ? m_current->m_reusable : m_first;
        if (context == nullptr) context = AddContext();
        context->childCount = 0;
        context->arrayMode = kArrayNone;
        context->startTagOpen = true;
        if (m_current != nullptr) {
            context->depth = m_current->depth + 1;
            context->scope = m_current->scope;
        } else {
            context->depth = 0;
            EnterDocument(*context);
        }
        m_current = context;
        return context;
    }
    /// The context that the next `PushContext` makes current, as its last element left it; null when there
    /// was none yet. There must be a current one.
    const CXmlWriterContext* PeekContext() const noexcept { return m_current->m_reusable; }
    /// Makes the parent's context current. There must be a current one.
    void PopContext() noexcept { m_current = m_current->parent; }

    /// Namespaces declared by the document element, as set before it.
    const NamespaceScope& GetDocumentScope() const noexcept { return m_documentScope; }
    /// Invents the first free prefix (AA, AB, ...) and registers it for `uri` in the current context.
    const NamespaceScope::Alias& InventPrefix(std::string_view uri);
    /// Changes with every change of what names look like: of a scope, and of settings whose setters say so.
    std::uint64_t GetNamesVersion() const noexcept { return m_namesVersion; }
    void ForgetNames() noexcept { ++m_namesVersion; }
    /// Whether an attribute called "xmlns" or "xmlns:..." declares a namespace in this format; not unless
    /// set.
    void SetDeclaresByAttribute(bool value) noexcept { m_declaresByAttribute = value; }
    /// The namespace that is bound to "xml" and never declared.
    static bool IsXmlNamespace(std::string_view uri) noexcept;

private:
    friend class internal::CTreeOutput;

    void SetArrayMode(ArrayMode mode) noexcept {
        if (m_current != nullptr) m_current->arrayMode = mode;
    }
    CXmlWriterContext* AddContext();
    void EnterDocument(CXmlWriterContext& context);
    NamespaceScope& OwnScope(CXmlWriterContext& context);

    CXmlWriterContext* m_current = nullptr;
    CXmlWriterContext* m_first = nullptr;  // of the document element; owns the rest through `m_reusable`
    NamespaceScope m_documentScope;
    std::string m_scratch;
    std::uint64_t m_namesVersion = 0;
    bool m_declaresByAttribute = false;
};

}  // namespace KvXmlLib16
