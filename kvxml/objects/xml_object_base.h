/// Root of every object that the library reads and writes, with the public To.../From... entry points.
///
///     CSmartPtr<CGpxType> gpx = new CGpxType();
///     gpx->FromXmlFile("in.gpx");
///     CWriteOptions options;
///     options.compression = CompressionType_GZip;
///     gpx->ToXmlFile("out.gpx.gz", options);
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "kvxml/base/shared_name.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/base/text_argument.h"
#include "kvxml/export.h"
#include "kvxml/objects/event_sink.h"
#include "kvxml/settings/default_context.h"
#include "kvxml/settings/eol_type.h"
#include "kvxml/settings/fast_infoset_decl.h"
#include "kvxml/settings/write_options.h"
#include "kvxml/settings/xml_encoding.h"
#include "kvxml/types/binary_data.h"
#include "kvxml/types/compression_type.h"

namespace KvXmlLib16Data {
class CAttributeInfo;
class CElementInfo;
}  // namespace KvXmlLib16Data

namespace KvXmlLib16 {

class CElement;
class CXmlCollectionBase;
class CXmlElement;
class CXmlObjectBase;
class CXmlReader;
class CXmlWriter;

namespace internal {
class CObjectGraph;
class CSubstitution;
class CTableAccess;
class CWriteFailure;
}  // namespace internal

/// Reference-counted base of generated classes, collections and untyped content.
///
/// The count starts at 0; the first `CSmartPtr` raises it to 1, and the `Release` that brings it back to 0
/// deletes the object. An object on the stack or inside another must never be put into a `CSmartPtr`.
/// AddRef and Release may be called from any thread; everything else by one thread at a time.
///
/// Reading replaces the content of an object; a collection keeps the items it has and appends those it reads.
/// A failed read throws and leaves the object partly filled but usable.
/// Errors carry the path of the element or attribute at fault. Every entry point accepts a context that
/// decides what is tolerated and how output looks; left out, it is the shared default context.
class KVXML_EXPORT CXmlObjectBase : public IEventSink {
protected:
    /// Receives the events of collections this object listens to; does nothing here.
    void OnEvent(CXmlObjectBase* source, MsgType type, void* data) override;

public:
    CXmlObjectBase* GetBase() override = 0;

    // --- writing --------------------------------------------------------------------------------------
    /// Writes the object as an XML file. With `compression` gzip the file is compressed; zlib is refused
    /// ("ZLIB Compression only available for To Stream methods.") before the file is touched. A failed
    /// write may leave a partial file.
    virtual void ToXmlFile(const char* fileName, bool includeDocHeader = true, bool formatted = true,
                           XmlEncoding encoding = XmlEncoding_UTF8, EOLType eol = EOLType_LF,
                           const CSerializationContext& context = DefaultContext(),
                           CompressionType compression = CompressionType_None) const;
    /// Writes the object as a Fast Infoset file, under the rules of ToXmlFile for compression and failures;
    /// `context.GetFIContext()` has the settings.
    virtual void ToFastInfosetFile(const char* fileName, FInfoDecl decl = FInfoDecl_None,
                                   const CSerializationContext& context = DefaultContext(),
                                   CompressionType compression = CompressionType_None) const;
    /// Writes the object as a JSON file, under the rules of ToXmlFile for compression and failures.
    virtual void ToJsonFile(const char* fileName, bool formatted = true,
                            XmlEncoding encoding = XmlEncoding_UTF8, EOLType eol = EOLType_LF,
                            const CSerializationContext& context = DefaultContext(),
                            CompressionType compression = CompressionType_None) const;
    /// The object as XML text in the local code page.
    virtual std::string ToXml(bool includeDocHeader = true, bool formatted = true, EOLType eol = EOLType_LF,
                              const CSerializationContext& context = DefaultContext()) const;
    /// The object as JSON text in the local code page; `context.GetJsonContext()` has the settings.
    virtual std::string ToJson(bool formatted = true, EOLType eol = EOLType_LF,
                               const CSerializationContext& context = DefaultContext()) const;
    /// The object as XML bytes in `encoding`, without byte-order mark, compressed on request.
    virtual CBinaryData ToXmlStream(bool includeDocHeader = true, bool formatted = true,
                                    XmlEncoding encoding = XmlEncoding_UTF8, EOLType eol = EOLType_LF,
                                    const CSerializationContext& context = DefaultContext(),
                                    CompressionType compression = CompressionType_None) const;
    /// The object as a Fast Infoset document, compressed on request.
    virtual CBinaryData ToFastInfosetStream(FInfoDecl decl = FInfoDecl_None,
                                            const CSerializationContext& context = DefaultContext(),
                                            CompressionType compression = CompressionType_None) const;
    /// The object as JSON bytes in `encoding`, without byte-order mark, compressed on request.
    virtual CBinaryData ToJsonStream(bool formatted = true, XmlEncoding encoding = XmlEncoding_UTF8,
                                     EOLType eol = EOLType_LF,
                                     const CSerializationContext& context = DefaultContext(),
                                     CompressionType compression = CompressionType_None) const;

    // The same by named options: each calls the one above.

    std::string ToXml(const CWriteOptions& options,
                      const CSerializationContext& context = DefaultContext()) const;
    std::string ToJson(const CWriteOptions& options,
                       const CSerializationContext& context = DefaultContext()) const;
    CBinaryData ToXmlStream(const CWriteOptions& options,
                            const CSerializationContext& context = DefaultContext()) const;
    CBinaryData ToJsonStream(const CWriteOptions& options,
                             const CSerializationContext& context = DefaultContext()) const;
    CBinaryData ToFastInfosetStream(const CWriteOptions& options,
                                    const CSerializationContext& context = DefaultContext()) const;
    void ToXmlFile(const char* fileName, const CWriteOptions& options,
                   const CSerializationContext& context = DefaultContext()) const;
    void ToJsonFile(const char* fileName, const CWriteOptions& options,
                    const CSerializationContext& context = DefaultContext()) const;
    void ToFastInfosetFile(const char* fileName, const CWriteOptions& options,
                           const CSerializationContext& context = DefaultContext()) const;

    /// Write the bytes that the operation without a stream returns, and flush the stream. XML and JSON that
    /// are not compressed are passed on while they are written, in pieces of a few kilobytes. CKvException
    /// "Failed to write to the stream." for a stream that has failed or fails, whether or not it throws by
    /// itself; what was written stays, also when the object cannot be written to its end.
    void ToXmlStream(std::ostream& out, const CWriteOptions& options = {},
                     const CSerializationContext& context = DefaultContext()) const;
    void ToJsonStream(std::ostream& out, const CWriteOptions& options = {},
                      const CSerializationContext& context = DefaultContext()) const;
    void ToFastInfosetStream(std::ostream& out, const CWriteOptions& options = {},
                             const CSerializationContext& context = DefaultContext()) const;

    // --- reading --------------------------------------------------------------------------------------
    /// Reads an XML file, plain or compressed with gzip or zlib; in chunks, and then plain only, with
    /// `AsyncFromXmlFile(true)`.
    virtual void FromXmlFile(const char* fileName, const CSerializationContext& context = DefaultContext());
    /// Reads a JSON file, plain or compressed with gzip or zlib. Text that is no JSON, or no document, is a
    /// CKvException "Error converting JSON to XML:\n%s" with the cause inside. Unless the JSON settings keep
    /// namespaces, the context ignores them during the call; then no other thread may use it.
    virtual void FromJsonFile(const char* fileName, const CSerializationContext& context = DefaultContext());
    virtual void FromXml(const wchar_t* xml, const CSerializationContext& context = DefaultContext());
    /// Reads XML text; its declaration tells the encoding of the bytes.
    virtual void FromXml(const char* xml, const CSerializationContext& context = DefaultContext());
    virtual void FromJson(const wchar_t* json, const CSerializationContext& context = DefaultContext());
    /// Reads JSON text in the local code page.
    virtual void FromJson(const char* json, const CSerializationContext& context = DefaultContext());
    /// Reads XML bytes, plain or compressed with gzip or zlib.
    virtual void FromXmlStream(const CBinaryData& data,
                               const CSerializationContext& context = DefaultContext());
    virtual void FromXmlStream(const unsigned char* data, std::size_t length,
                               const CSerializationContext& context = DefaultContext());
    /// Reads JSON bytes in UTF-8 or UTF-16, with or without byte-order mark, plain or compressed.
    virtual void FromJsonStream(const CBinaryData& data,
                                const CSerializationContext& context = DefaultContext());
    virtual void FromJsonStream(const unsigned char* data, std::size_t length,
                                const CSerializationContext& context = DefaultContext());
    /// Reads what the untyped element writes, as a document of its own: names are checked.
    virtual void FromXmlElement(const CElement* element,
                                const CSerializationContext& context = DefaultContext());
    /// Reads from an element of a tree that the caller keeps; the element's own name is not checked.
    virtual void FromXmlElement(const CXmlElement* element,
                                const CSerializationContext& context = DefaultContext());

    /// As from zero-terminated text, for `std::string`, `std::string_view` and what converts to a view; a
    /// zero byte is a part of the text.
    template <class Text, internal::IfTextView<Text> = 0>
    void FromXml(const Text& xml, const CSerializationContext& context = DefaultContext()) {
        ReadXmlText(xml, context);
    }
    template <class Text, internal::IfTextView<Text> = 0>
    void FromJson(const Text& json, const CSerializationContext& context = DefaultContext()) {
        ReadJsonText(json, context);
    }
    /// Reads the element that the reader has just started, so that the records of a large document become
    /// objects one after another; the end of the element is then the reader's current event, also after a
    /// failure, unless the document is not well-formed. The element's own name is not checked. What is wrong
    /// with the content is a CKvValidationException with line and path in the document, and the cause inside;
    /// CKvInvalidStateException when the reader stands elsewhere.
    void FromXml(CXmlReader& reader, const CSerializationContext& context = DefaultContext());
    /// Read all that is left in the stream, as from bytes. CKvException "Failed to read from the stream." for
    /// a stream that has failed or fails, whether or not it throws by itself; its state is then as the
    /// failure left it, and otherwise eofbit.
    void FromXmlStream(std::istream& in, const CSerializationContext& context = DefaultContext());
    void FromJsonStream(std::istream& in, const CSerializationContext& context = DefaultContext());

    // --- copying and comparing ------------------------------------------------------------------------

    /// Becomes a deep copy of an object of the same class: all properties, with the objects and collections
    /// in them. An object of a generated class keeps its element name, which belongs to where it stands, as
    /// does a collection its name, bounds, facets and listeners. Takes no stack per level.
    ///
    /// Objects in members are made by the class's records, items by their collections. A property that is
    /// unset but that a new object has set, by a default, is set to that default. CKvInvalidParamException
    /// for objects of different classes; CKvInvalidStateException for an object that contains itself, or one
    /// in it whose class the member does not know. After a failure this object is partly filled.
    void CopyFrom(const CXmlObjectBase& source);
    /// Whether the other object is of the same class and has the same properties, deep: values by their `==`
    /// (NaN equals NaN), items in order, untyped attributes in any order. Objects in members must go by the
    /// same element name, too. An empty collection equals none. Prefixes do not count. Takes no stack per
    /// level. CKvInvalidStateException for an object that contains itself.
    bool Equals(const CXmlObjectBase& other) const;

    virtual ~CXmlObjectBase();

    /// Namespace in which the object's element is written.
    virtual std::string GetTargetNamespace() const = 0;
    /// Namespace of the object's class.
    virtual std::string GetNamespace() const = 0;

protected:
    /// Writes the object's attributes into the open start tag; nothing here.
    virtual void AttributesToXml_Int(CXmlWriter* writer, const CSerializationContext& context) const;
    /// Writes the object as one element in `namespaceUri`.
    virtual void ToXml_Int(CXmlWriter* writer, bool isRoot, const char* namespaceUri,
                           const CSerializationContext& context, bool suppressChoiceError) const = 0;
    /// Reads the object from `element`, whose children start at `cursor`; returns the first child it did
    /// not consume.
    virtual CXmlElement* FromXml_Int(CXmlElement* element, CXmlElement* cursor,
                                     const CSerializationContext& context, bool suppressChoiceError) = 0;

public:
    const CXmlObjectBase* GetBase() const;

    /// Returns the new count.
    std::int32_t AddRef() const noexcept { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// Returns the new count; at 0 the object has deleted itself. Chains of objects that own each other are
    /// deleted without recursing per object, so their length is not limited by the stack.
    std::int32_t Release() const noexcept {
        // The only reference is the caller's, so nobody else can take one meanwhile.
        const bool isLast = m_references.load(std::memory_order_acquire) == 1;
        if (isLast) m_references.store(0, std::memory_order_relaxed);
        const std::int32_t count = isLast ? 0 : m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (count == 0) DeleteThis();
        return count;
    }

protected:
    CXmlObjectBase() noexcept;
    /// Copies the element name and, by definition of the type, the reference count of the source. A copy
    /// that is to be shared must have its count set right by whoever copies.
    CXmlObjectBase(const CXmlObjectBase& other) noexcept;
    CXmlObjectBase& operator=(const CXmlObjectBase& other) noexcept;
    /// Takes the element name, which `other` keeps. References stay with the object that they are to: the new
    /// object has none.
    CXmlObjectBase(CXmlObjectBase&& other) noexcept;
    CXmlObjectBase& operator=(CXmlObjectBase&& other) noexcept;

    /// Local name under which the object is read and written; empty at first.
    std::string GetElementName() const { return std::string(m_elementName.View()); }
    const char* GetElementNameText() const noexcept { return m_elementName.CStr(); }
    std::string_view GetElementNameView() const noexcept { return m_elementName.View(); }
    void SetElementName(const char* name);
    void SetElementName(std::string_view name) {
        if (name != m_elementName.View()) m_elementName = internal::CSharedName(name);
    }

    void SetElementName(const internal::CSharedName& name) {
        if (!name.IsSame(m_elementName)) m_elementName = name;
    }

    // For objects that were constructed a moment ago and that nobody else knows yet. Where their class says
    // that a new object is as Init leaves it, the read that follows goes without Init.

    /// Takes the first reference, as AddRef would, and marks the object new.
    static CXmlObjectBase* PrepareNew(CXmlObjectBase* object) noexcept {
        object->m_references.store(1, std::memory_order_relaxed);
        MarkNew(object);
        return object;
    }
    static void MarkNew(CXmlObjectBase* object) noexcept { object->m_readState |= kIsNew; }
    /// The read that follows repeats one, for the same member and from the same parent, that found nothing
    /// but that it came too early.
    static void MarkRetried(CXmlObjectBase* object) noexcept { object->m_readState |= kIsRetried; }

    /// What was said about the read that begins.
    struct ReadStart {
        bool isNew;
        bool isRetried;
    };
    ReadStart BeginRead() noexcept {
        const std::uint8_t state = std::exchange(m_readState, std::uint8_t{0});
        return {(state & kIsNew) != 0, (state & kIsRetried) != 0};
    }

    // What the last read found out, for the reader of the member that holds the object.

    /// Content without a tag of its own lacks something mandatory; nothing of it counts as read.
    bool IsIncomplete() const noexcept { return (m_readState & kIsIncomplete) != 0; }
    void SetIncomplete() noexcept { m_readState |= kIsIncomplete; }
    bool HasReadAttributes() const noexcept { return (m_readState & kHasReadAttributes) != 0; }
    void SetHasReadAttributes() noexcept { m_readState |= kHasReadAttributes; }

    // Reach the protected operations of another object; used by collections and the metadata records.
    static void SetElementName(CXmlObjectBase* object, std::string_view name) {
        object->SetElementName(name);
    }
    static std::string_view GetElementNameView(const CXmlObjectBase& object) noexcept {
        return object.GetElementNameView();
    }
    static bool IsIncomplete(const CXmlObjectBase& object) noexcept { return object.IsIncomplete(); }
    static void ToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer, bool isRoot,
                          const char* namespaceUri, const CSerializationContext& context,
                          bool suppressChoiceError) {
        object->ToXml_Int(writer, isRoot, namespaceUri, context, suppressChoiceError);
    }
    static CXmlElement* FromXml_Int(CXmlObjectBase* object, CXmlElement* element, CXmlElement* cursor,
                                    const CSerializationContext& context, bool suppressChoiceError) {
        return object->FromXml_Int(element, cursor, context, suppressChoiceError);
    }
    static void AttributesToXml_Int(const CXmlObjectBase* object, CXmlWriter* writer,
                                    const CSerializationContext& context) {
        object->AttributesToXml_Int(writer, context);
    }

    // Tell one listener about a change of `collection`.
    static void FireOnCollectionChangeEvent(IEventSink* sink, CXmlCollectionBase* collection);
    static void FireOnCollectionAddEvent(IEventSink* sink, CXmlCollectionBase* collection, void* item);
    static void FireOnCollectionAddCompleteEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                                 void* item);
    static void FireOnCollectionRemoveEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                            std::int32_t index);
    static void FireOnCollectionRemoveCompleteEvent(IEventSink* sink, CXmlCollectionBase* collection,
                                                    std::int32_t index);

    // --- helpers for generated code -------------------------------------------------------------------
    // `current` is a generated class's record of which member of its choice is set; empty means none.

    /// With `valid`, `current` must already be `name`, else CKvInvalidStateException; without, clears it.
    void Choice_SetElementValid(bool valid, const char* name, std::string& current);
    /// Claims the choice for `name` (non-null `value`) or gives it up (null). CKvInvalidStateException when
    /// another member holds it.
    void Choice_SelectElement(const char* name, CXmlObjectBase* value, std::string& current);
    /// As Choice_SelectElement for a collection member that now has `count` items.
    void Choice_CollectionChanged(const char* name, std::int32_t count, std::string& current);
    /// Reads one run of items into `collection` unless `count` says that it was read before.
    void Choice_Read_Collection(CXmlCollectionBase* collection, CXmlElement* parent, CXmlElement*& next,
                                std::int32_t& count, const CSerializationContext& context);

    /// CKvInvalidParamException when a mandatory property is set to null.
    void Throw_IfPropertyIsNull(CXmlObjectBase* value, const char* propertyName);
    /// CKvInvalidParamException when a non-null `value` has another element name.
    void Throw_IfElementNameDiffers(CXmlObjectBase* value, const char* requiredName);

    /// CKvInvalidNamespaceException when `IsNamespaceValid` is false.
    void TestNamespace(const char* ns, const char* allowed, const char* targetNs) const;
    /// Tests `ns` against a wildcard's namespace list. Only the first token of `allowed` is interpreted
    /// ("##any", "##other", "##local", "##targetNamespace", else a literal that must equal the whole list
    /// or an empty `ns`).
    bool IsNamespaceValid(const char* ns, const char* allowed, const char* targetNs) const;
    /// Local name and, unless the context ignores namespaces, namespace URI are byte for byte the same.
    bool DoesElementNameMatch(const CSerializationContext& context, const CXmlElement* element,
                              const char* name, const char* ns) const;

private:
    friend class KvXmlLib16Data::CAttributeInfo;
    friend class KvXmlLib16Data::CElementInfo;
    friend class internal::CObjectGraph;
    friend class internal::CSubstitution;
    friend class internal::CTableAccess;
    friend class internal::CWriteFailure;

    void ReadXmlText(std::string_view xml, const CSerializationContext& context);
    void ReadJsonText(std::string_view json, const CSerializationContext& context);
    void DeleteThis() const noexcept;

    internal::CSharedName m_elementName;
    mutable std::atomic<std::int32_t> m_references{0};
    enum : std::uint8_t { kIsNew = 1, kIsIncomplete = 2, kHasReadAttributes = 4, kIsRetried = 8 };
    std::uint8_t m_readState = 0;
};

namespace internal {
/// The namespace test behind CXmlObjectBase::IsNamespaceValid.
bool IsNamespaceValid(std::string_view ns, std::string_view allowed, std::string_view targetNs) noexcept;
/// CKvInvalidNamespaceException "Target Namespace must have a value" for null where the namespace list needs
/// it.
void RequireTargetNamespace(std::string_view allowed, const char* targetNs);
/// The name test behind CXmlObjectBase::DoesElementNameMatch.
bool DoesElementNameMatch(const CSerializationContext& context, const CXmlElement& element,
                          std::string_view name, std::string_view ns) noexcept;
}  // namespace internal

/// As CXmlObjectBase::Equals.
inline bool operator==(const CXmlObjectBase& a, const CXmlObjectBase& b) {
    return a.Equals(b);
}
inline bool operator!=(const CXmlObjectBase& a, const CXmlObjectBase& b) {
    return !a.Equals(b);
}

}  // namespace KvXmlLib16
