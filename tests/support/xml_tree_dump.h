/// A tree as text, to compare with what was expected.
#pragma once

#include <string>

#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

namespace testsupport {

/// "a@x=1'text'(b{urn:n}c)": name, attributes, text and children in document order, without recursion.
inline std::string Dump(const KvXmlLib16::CXmlElement* root) {
    using KvXmlLib16::CXmlElement;
    std::string out;
    const auto name = [&](const auto& node) {
        if (!node.GetNamespaceURI().empty()) out += '{' + node.GetNamespaceURI() + '}';
        out += node.GetLocalName();
    };
    const auto open = [&](const CXmlElement& element) {
        name(element);
        for (const auto* attribute : element.GetAttributes()) {
            out += '@';
            name(*attribute);
            out.append(1, '=').append(attribute->GetValueView());
        }
        if (!element.GetTextView().empty()) out.append(1, '\'').append(element.GetTextView()) += '\'';
    };
    const CXmlElement* element = root;
    if (element != nullptr) open(*element);
    while (element != nullptr) {
        if (element->GetFirstElement() != nullptr) {
            element = element->GetFirstElement();
            out += '(';
        } else {
            while (element != root && element->GetNextSiblingElement() == nullptr) {
                element = element->GetParentElm();
                out += ')';
            }
            if (element == root) break;
            element = element->GetNextSiblingElement();
            out += ' ';
        }
        open(*element);
    }
    return out;
}

inline std::string Dump(const KvXmlLib16::CXmlDocument& document) {
    return Dump(document.GetDocumentElement());
}

}  // namespace testsupport
