#include "kvxml/objects/xml_tree_writer.h"

#include <vector>

#include "kvxml/objects/attribute_col.h"
#include "kvxml/objects/internal/attribute_names.h"
#include "kvxml/xml/internal/tree_output.h"
#include "kvxml/xml/internal/xml_tree.h"
#include "kvxml/xml/xml_element.h"

namespace KvXmlLib16 {

namespace {

internal::CTreeOutput::Name NameOf(const internal::CXmlName& name) {
    internal::ResolveName(name);
    return {&name, name.local, name.uri, name.sharedPrefix.View()};
}

bool IsLikeNext(const CXmlElement& element) noexcept {
    const CXmlElement* const next = element.GetNextSiblingElement();
    return next != nullptr && next->GetName() == element.GetName();
}

/// Whether xsi:type names a type of no namespace.
bool HasBareType(const CXmlElement& element) {
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        std::string_view typeNamespace;
        if (internal::IsTypeValue(*attribute, typeNamespace)) return typeNamespace.empty();
    }
    return false;
}

/// What a document needs to have looked at.
struct Writing {
    internal::CTreeOutput& output;
    const bool hasTypes;
};

/// Writes the element without its children. Returns whether blanks in it, and in what it contains, count.
bool WriteElement(const Writing& writing, const CXmlElement& element, bool keepBlanks,
                  const CSerializationContext* rootContext) {
    internal::CTreeOutput& output = writing.output;
    if (writing.hasTypes && HasBareType(element)) output.ExpectBareType();
    output.StartElement(NameOf(*element.GetName()));
    const CAttributeCol* const additional =
        rootContext == nullptr ? nullptr : rootContext->FindAdditionalRootAttributes();
    if (additional != nullptr) {
        internal::CAttributeNames own;
        for (const CXmlAttribute* attribute : element.GetAttributes())
            own.Add(attribute->GetLocalName(), attribute->GetNamespaceURI());
        additional->Write(output, &own);
    }
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        const internal::CTreeOutput::Name name = NameOf(*attribute->GetName());
        std::string_view typeNamespace;
        if (internal::IsTypeValue(*attribute, typeNamespace))
            output.WriteTypeAttribute(name, attribute->GetValueView(), typeNamespace);
        else
            output.WriteAttribute(name, attribute->GetValueView());
        if (attribute->GetName()->isSpaceAttribute) keepBlanks = internal::IsSpacePreserved(*attribute);
    }
    output.EndAttributes();
    const bool hasChildren = element.GetFirstElement() != nullptr;
    const bool hasText = !hasChildren || keepBlanks || !element.IsTextBlank();
    if (rootContext != nullptr) output.WriteInLineSchema(hasText);
    if (hasText) output.Text(element.GetTextView(), hasChildren, keepBlanks);
    return keepBlanks;
}

}  // namespace

void WriteXmlTree(const CXmlElement& element, CXmlWriter& writer, const CSerializationContext& context) {
    internal::CTreeOutput output(writer, context);
    const Writing writing{output, element.GetName()->tree->Names().HasTypeAttributes()};
    const bool isRoot = writer.GetDepth() == 0;
    const internal::CPrefixList prefixes(element);
    if (isRoot) {
        const internal::CTreeOutput::Name name = NameOf(*element.GetName());
        output.BeginDocument(name.uri, name.prefix, &prefixes);
    }
    struct Open {
        bool keepsBlanks;
        bool inArray = false;
    };
    std::vector<Open> open{{false}};  // what is around the first element, and the open elements
    const CXmlElement* at = &element;
    const CSerializationContext* rootContext = isRoot ? &context : nullptr;
    const auto end = [&] {
        output.EndElement();
        if (at != &element) output.AfterChild(IsLikeNext(*at), open.back().inArray);
    };
    for (;;) {
        if (at != &element) output.BeforeChild(IsLikeNext(*at), open.back().inArray);
        const bool keepBlanks = WriteElement(writing, *at, open.back().keepsBlanks, rootContext);
        rootContext = nullptr;
        if (at->GetFirstElement() != nullptr) {
            open.push_back({keepBlanks});
            at = at->GetFirstElement();
            continue;
        }
        end();
        while (at != &element && at->GetNextSiblingElement() == nullptr) {
            at = at->GetParentElm();
            open.pop_back();
            end();
        }
        if (at == &element) return;
        at = at->GetNextSiblingElement();
    }
}

}  // namespace KvXmlLib16
