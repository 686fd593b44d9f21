/// Any bytes through the XML tree: every node is looked at through every accessor, and the texts must agree
/// however they are asked for. The first byte chooses the options.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

using namespace KvXmlLib16;

namespace {

std::size_t g_touched = 0;
std::size_t g_called = 0;

void Check(bool condition) {
    if (!condition) std::abort();
}

void VisitElement(const CXmlElement& element, bool stringFirst) {
    g_touched += element.GetLocalName().size() + element.GetNamespaceURI().size();
    Check(element.GetDocument() != nullptr);
    if (stringFirst) g_touched += element.GetText().size();
    const std::string view(element.GetTextView());
    Check(view == element.GetText() && view == element.GetTextView());
    Check(view.find('\r') == std::string::npos);
    for (const CXmlAttribute* attribute : element.GetAttributes()) {
        const std::string value(attribute->GetValueView());
        Check(attribute->GetElement() == &element && value == attribute->GetValue());
        Check(attribute->IsNamespaceAttribute() + attribute->IsNilAttribute() < 2);
        element.GetAttribute(attribute->GetLocalName(), attribute->GetNamespaceURI());
    }
}

/// The whole tree in document order. Paths take time with the number of siblings, so some must do.
void Walk(const CXmlElement* root) {
    const CXmlElement* element = root;
    for (std::size_t visited = 0; element != nullptr; ++visited) {
        VisitElement(*element, visited % 2 == 0);
        if (visited < 50) {
            g_touched += element->GetXPath().size();
            for (const CXmlAttribute* attribute : element->GetAttributes())
                g_touched += attribute->GetXPath().size();
        }
        if (element->GetFirstElement() != nullptr) {
            Check(element->GetFirstElement()->GetParentElm() == element);
            element = element->GetFirstElement();
            continue;
        }
        while (element != root && element->GetNextSiblingElement() == nullptr)
            element = element->GetParentElm();
        element = element == root ? nullptr : element->GetNextSiblingElement();
    }
}

/// Discards every third element and takes strings of its surroundings.
bool Filter(CXmlElement* element) {
    ++g_called;
    const CXmlElement* const parent = element->GetParentElm();
    if (g_called % 2 == 0) VisitElement(*element, g_called % 4 == 0);
    if (parent != nullptr && g_called % 5 == 0) g_touched += parent->GetText().size();
    return g_called % 3 == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned options = data[0];
    ++data;
    --size;
    CSerializationContext context;
    if ((options & 1) != 0) context.SetSchemaType(SchemaType_NoNamespaces);
    if ((options & 2) != 0) context.SetStripCDATA(false);
    if ((options & 8) != 0) context.SetMaxElementDepth(5);
    context.SetMaxInflatedSize((options & 16) != 0 ? 1000 : 1U << 22);
    g_called = 0;
    CXmlDocument document((options & 4) != 0 ? &Filter : nullptr, context);
    for (int round = 0; round < 2; ++round) {
        try {
            if ((options & 32) != 0) {
                document.LoadXml(std::string(reinterpret_cast<const char*>(data), size).c_str());
            } else if ((options & 64) != 0) {
                std::wstring wide;
                for (std::size_t i = 0; i < size; ++i)
                    wide += static_cast<wchar_t>(data[i]);
                document.LoadXml(wide.c_str());
            } else {
                document.LoadXmlStream(data, size);
            }
        } catch (const CKvException& e) {
            g_touched += e.GetFullMessage().size();
        }
        Walk(document.GetDocumentElement());
        g_touched += document.LookupAliasFromNamespace("urn:a").size();
        g_touched += document.LookupNamespaceFromAlias("a").size();
    }
    return 0;
}
