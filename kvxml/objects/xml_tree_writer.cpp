#include "kvxml/objects/xml_tree_writer.h"

#include <vector>

#include "kvxml/objects/attribute_col.h"
#include "kvxml/xml/internal/tree_output.h"
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

/// Writes the element without its children. Returns whether blanks in it, and in what it contains, count.
bool WriteElement(internal::CTreeOutput& output, const CXmlElement& element, bool keepBlanks,
                  const CSerializationContext* rootContext) {
    output.StartElement(NameOf(*element.GetName()));
    if (rootContext != nullptr) {
        if (const CAttributeCol* const attributes = rootContext->FindAdditionalRootAttributes())
            attributes->Write(output, nullptr, &element);
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
    if (rootContext != nullptr && !rootContext->GetInLineSchemaRef().empty())
        output.Writer().WriteRawAfterSpace(rootContext->GetInLineSchemaRef());
    const bool hasChildren = element.GetFirstElement() != nullptr;
    if (!hasChildren || keepBlanks || !element.IsTextBlank())
        output.Text(element.GetTextView(), hasChildren, keepBlanks);
    return keepBlanks;
}

}  // namespace

void WriteXmlTree(const CXmlElement& element, CXmlWriter& writer, const CSerializationContext& context) {
    internal::CTreeOutput output(writer, context);
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
        const bool keepBlanks = WriteElement(output, *at, open.back().keepsBlanks, rootContext);
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
