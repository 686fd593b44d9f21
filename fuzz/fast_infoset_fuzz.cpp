/// Any bytes as a Fast Infoset document: all of the tree is looked at, and reading the same bytes without the
/// element filter must come to the same end. The first byte chooses the options.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "kvxml/base/exceptions.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/fast_infoset_vocabulary.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"

using namespace KvXmlLib16;

namespace {

void Check(bool condition) {
    if (!condition) std::abort();
}

void VisitElement(const CXmlElement& element) {
    Check(!element.GetLocalName().empty());
    const std::string text(element.GetTextView());
    Check(text == element.GetText());
    Check(text.find('\r') == std::string::npos && text.find('\0') == std::string::npos);
    const CXmlAttributeList attributes = element.GetAttributes();
    for (const CXmlAttribute* attribute : attributes) {
        Check(attribute->GetElement() == &element);
        const std::string value(attribute->GetValueView());
        Check(value == attribute->GetValue() && value.find('\0') == std::string::npos);
    }
    // No two of one name, so each is found.
    if (attributes.size() > 20) return;
    for (const CXmlAttribute* attribute : attributes)
        Check(element.GetAttribute(attribute->GetLocalName(), attribute->GetNamespaceURI()) ==
              attribute->GetValue());
}

void Walk(const CXmlElement* root) {
    const CXmlElement* element = root;
    while (element != nullptr) {
        VisitElement(*element);
        if (element->GetFirstElement() != nullptr) {
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
    static unsigned called = 0;
    ++called;
    VisitElement(*element);
    if (called % 5 == 0 && element->GetParentElm() != nullptr) VisitElement(*element->GetParentElm());
    return called % 3 == 0;
}

std::string Load(CXmlDocument& document, const std::string& octets) {
    std::string message;
    try {
        document.LoadXmlStream(reinterpret_cast<const unsigned char*>(octets.data()), octets.size());
    } catch (const CKvException& e) {
        message = e.GetFullMessage();
        Check(!message.empty());
    }
    Walk(document.GetDocumentElement());
    return message;
}

std::shared_ptr<const CFastInfosetVocabulary> MakeVocabulary() {
    auto vocabulary = std::make_shared<CFastInfosetVocabulary>("urn:v");
    vocabulary->AddElementName("p", "urn:a", "a");
    vocabulary->AddAttributeName("", "", "x");
    vocabulary->AddAttributeValue("value");
    vocabulary->AddText("text");
    vocabulary->AddAlphabet("ACGT");
    return vocabulary;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned options = data[0];
    CSerializationContext context;
    if ((options & 1) != 0) context.SetSchemaType(SchemaType_NoNamespaces);
    if ((options & 2) != 0) context.SetStripCDATA(false);
    if ((options & 4) != 0) context.SetMaxElementDepth(5);
    context.SetMaxInflatedSize((options & 8) != 0 ? 100 : 1U << 22);
    context.GetFIContext().AddKnownVocabulary(MakeVocabulary());
    std::string octets(reinterpret_cast<const char*>(data + 1), size - 1);
    // Most inputs should get past the identification.
    if ((options & 16) == 0) octets.insert(0, std::string_view("\xE0\x00\x00\x01", 4));
    CXmlDocument plain(context);
    CXmlDocument filtered(&Filter, context);
    Check(Load(plain, octets) == Load(filtered, octets));
    return 0;
}
