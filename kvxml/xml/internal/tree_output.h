/// How untyped content is written: what parsed elements and untyped objects share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "kvxml/settings/serialization_context.h"
#include "kvxml/xml/internal/prefix_list.h"
#include "kvxml/xml/xml_text_writer.h"

namespace KvXmlLib16::internal {

/// Whether the text is markup, perhaps with blanks in front.
bool BeginsAsMarkup(std::string_view text) noexcept;

/// Writes elements and attributes whose names come from elsewhere: checks the names, and where an attribute
/// can declare them, declares the namespaces that are not in scope with the prefixes that their documents
/// used.
///
/// Per element: StartElement, the attributes, EndAttributes, Text, the children, EndElement. The texts in
/// names must stay where they are as long as the output is in use. The namespaces that are in force without
/// being the writer's own are bounded, and long ones are not copied, so that no document makes scopes that
/// take long to copy or to search.
class CTreeOutput {
public:
    struct Name {
        const void* key;  ///< stays the same as long as the text that it stands for does
        std::string_view local;
        std::string_view uri;
        std::string_view
            prefix;  ///< to be used for `uri` if it must be declared; empty for a default namespace
    };

    CTreeOutput(CXmlWriter& writer, const CSerializationContext& context);
    CTreeOutput(const CTreeOutput&) = delete;
    CTreeOutput& operator=(const CTreeOutput&) = delete;
    ~CTreeOutput();

    CXmlWriter& Writer() noexcept { return m_writer; }

    /// What the context wants before the document element, and the prefixes of the document that it comes
    /// from, which may be null.
    void BeginDocument(std::string_view rootUri, std::string_view rootPrefix, const CPrefixList* prefixes);
    void StartElement(const Name& name);
    /// The next element has an xsi:type whose value is without prefix and names a type of no namespace.
    void ExpectBareType() noexcept { m_expectsBareType = true; }
    void WriteAttribute(const Name& name, std::string_view value);
    /// Writes xsi:type with a value, prefix and all, that names a type of this namespace.
    void WriteTypeAttribute(const Name& name, std::string_view value, std::string_view typeNamespace);
    void EndAttributes();
    /// In the document element, after its attributes: what the context has as in-line schema. `hasText`:
    /// blanks beside it would count.
    void WriteInLineSchema(bool hasText);
    /// Text that children follow takes formatting away from them, for it would become part of the text; so
    /// does `keepBlanks`.
    void Text(std::string_view text, bool hasChildren, bool keepBlanks);
    void EndElement();

    /// Children of one name in a row are the items of an array. Called before and after each child; `like`:
    /// the next one has its name. `inArray` is kept per parent, false at first.
    bool HasArrays() const noexcept { return m_text == nullptr; }
    void BeforeChild(bool like, bool& inArray) {
        if (inArray || !like || !HasArrays()) return;
        m_writer.BeginArray();
        inArray = true;
    }
    void AfterChild(bool like, bool& inArray) {
        if (!inArray || like) return;
        m_writer.EndArray();
        inArray = false;
    }

private:
    using Scope = CXmlWriter::NamespaceScope;

    const Scope& CurrentScope() const noexcept;
    std::string_view ScopeUri(std::string_view uri);
    bool HasPrefixInScope(std::string_view uri);
    void CheckName(const Name& name);
    void CheckNameSlowly(const Name& name);
    void StartDeclaring(const Name& name);
    void StartWithPrefix(const Name& name);
    void Declare(std::string_view prefix, std::string_view uri);
    void DeclareRest();
    bool IsUsable(std::string_view prefix) const;
    std::string FreePrefix() const;
    std::string_view Qualifier(std::string_view uri, std::string_view prefix);

    CXmlWriter& m_writer;
    CXmlTextWriter* const m_text;  // the writer, if it writes XML text
    const bool m_declares;         // whether namespaces are declared by attributes
    const CSerializationContext& m_context;
    const bool m_allowColon;
    const CPrefixList* m_rest = nullptr;      // to be declared by the document element as far as it is not
    std::int32_t m_unformattedDepth = 0;      // of the element that took formatting away; 0: none
    std::array<const void*, 64> m_checked{};  // names that are in order, by their keys
    std::string m_name;
    bool m_expectsBareType = false;
    // Long namespaces are registered in scopes by short texts that stand for them, found by the address of
    // the namespace, which stays the same, and once by the namespace itself.
    std::map<const char*, std::string_view> m_standInsByAddress;
    std::map<std::string, std::string, std::less<>> m_standIns;
    std::map<std::string, std::string, std::less<>> m_ownQualifiers;  // of one element, beyond the bound
};

}  // namespace KvXmlLib16::internal
