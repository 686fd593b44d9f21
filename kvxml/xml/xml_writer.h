/// The abstract writer through which objects describe themselves, whatever the format is.
///
///     writer.WriteStartElement("point", "urn:geo");
///     writer.WriteAttribute("lat", "", "52.5", ItemType_r8);
///     writer.WriteText("Berlin", ItemType_string, false);
///     writer.WriteEndElement();
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/export.h"
#include "kvxml/types/item_type.h"

namespace KvXmlLib16 {

namespace internal {
class CTreeOutput;
struct CFailedPath;
}  // namespace internal

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
    /// Before the document element: a prefix that it declares; an invented one, if `prefix` is empty. Inside
    /// an element: a prefix to use for `uri` from here to its end, or with an empty one none; nothing is
    /// written. Replaces an earlier prefix of `uri`. A prefix that another namespace of the document element
    /// has already is not used. The namespace of "xml" keeps that prefix and is never declared.
    virtual void AddNamespaceAlias(std::string_view prefix, std::string_view uri);
    virtual void WriteComment(std::string_view text) = 0;
    /// Writes `text` as it is, on lines of its own.
    virtual void WriteRaw(std::string_view text) = 0;
    /// Writes `text` as it is, after a blank and a line end.
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
    /// Name and kind of an attribute or of an element that holds nothing but a text. The records of a class
    /// have one each and pass it with every value that they write.
    struct SimpleName {
        /// A number from `NewNameId` that stands for this element or attribute name and namespace, by which
        /// writers remember what they made of them; 0: nothing is remembered.
        std::uint32_t id = 0;
        ItemType type = ItemType_Unknown;
        std::string_view localName;
        std::string_view namespaceUri;
    };
    /// As WriteAttribute, in fewer steps. `isCanonical`: as for `WriteSimpleElement`.
    virtual void WriteSimpleAttribute(const SimpleName& name, std::string_view value, bool isCanonical);
    /// Start, text and end of an element in one call, which some writers do faster than by three calls.
    /// `isCanonical`: the text is what the library makes of a value of the name's kind, and so has no
    /// character that needs escaping unless the kind is a string.
    virtual void WriteSimpleElement(const SimpleName& name, std::string_view text, bool isDefaultValue,
                                    bool isCanonical);

    /// Writes `text`, which is markup, as it is and as content of the current element. `onOwnLines`: line
    /// ends around it do no harm.
    virtual void WriteRawContent(std::string_view text, bool onOwnLines);

    /// A number that no other caller gets, or 0 when there are no more. Any thread may call it.
    static std::uint32_t NewNameId() noexcept;

    /// Number of elements that are open.
    std::int32_t GetDepth() const noexcept;

    /// Announces that the next children of the current element are the items of one non-empty collection.
    void BeginArray() noexcept;
    /// The last item of the collection has been written.
    void EndArray() noexcept;

    /// Text that callers may format values into and pass to the writer, reused to save allocations. Belongs
    /// to whoever uses it from the moment of filling to the call that consumes it.
    std::string& ScratchText() noexcept { return m_scratch; }

    /// For the library: where writing failed, filled while an exception passes.
    internal::CFailedPath& FailedPath();

protected:
    // What writers keep of the open elements and of the namespaces in scope. Only the library's own writers
    // know more of it.
    enum ArrayMode : std::int32_t;
    struct NamespaceAlias;
    struct NamespaceScope;
    class CXmlWriterContext;

    CXmlWriter();

    CXmlWriterContext* GetCurrentContext() const noexcept { return m_current; }
    /// Makes the context of a new element current: the document element's takes the writer's default
    /// namespace and prefixes, a child shares its parent's. The start tag is open; depth is the parent's
    /// plus 1.
    inline CXmlWriterContext* PushContext();
    /// The context that the next `PushContext` makes current, as its last element left it; null when there
    /// was none yet. There must be a current one.
    inline const CXmlWriterContext* PeekContext() const noexcept;
    /// Makes the parent's context current. There must be a current one.
    inline void PopContext() noexcept;

    /// Namespaces declared by the document element, as set before it.
    const NamespaceScope& GetDocumentScope() const noexcept { return *m_documentScope; }
    /// Invents the first free prefix (AA, AB, ...) and registers it for `uri` in the current context.
    const NamespaceAlias& InventPrefix(std::string_view uri);
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

    CXmlWriterContext* AddContext();
    void EnterDocument(CXmlWriterContext& context);
    NamespaceScope& OwnScope(CXmlWriterContext& context);
    static const NamespaceAlias& InventPrefix(NamespaceScope& scope, std::string_view uri);

    CXmlWriterContext* m_current = nullptr;
    CXmlWriterContext* m_first = nullptr;  // of the document element; owns the rest through `m_reusable`
    std::unique_ptr<NamespaceScope> m_documentScope;
    std::string m_scratch;
    std::unique_ptr<internal::CFailedPath> m_failedPath;  // null as long as nothing has failed
    std::uint64_t m_namesVersion = 0;
    bool m_declaresByAttribute = false;
};

}  // namespace KvXmlLib16
