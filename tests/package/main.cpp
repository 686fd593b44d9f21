/// Uses one thing of each folder of an installed kvxml; ends with 0 when all behave.
#include <cstdio>
#include <cstring>
#include <string>

#include "kvxml/kvxml.h"

static_assert(__cplusplus < 202002L, "host applications are built as C++17");

namespace {

int failures = 0;

void Expect(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "failed: %s\n", what);
    ++failures;
}

}  // namespace

int main() {
    using namespace KvXmlLib16;
    Expect(std::strcmp(KVXML_VERSION_STRING, "16.0.0") == 0, "version");
    try {
        CXmlDocument document;
        document.LoadXml("<order number='7'><item>3.50</item></order>");
        const CXmlElement* item = document.GetDocumentElement()->GetFirstElement();
        Expect(item->GetXPath().find("item") != std::string::npos, "path of an element");
        CDecimal price =
            CConversions::decimalFromString(item->GetText(), CWhitespaceUtils::WhitespaceRule_Collapse);
        Expect(CConversions::decimalToString(price) == "3.5", "decimal");
    } catch (const CKvException& e) {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
        ++failures;
    }
    // The type of an exception must be recognised across the library boundary.
    try {
        CXmlDocument().LoadXml("<order>");
        Expect(false, "ill-formed document refused");
    } catch (const CKvException& e) {
        Expect(!e.GetMessage().empty(), "message of a refusal");
    }
    CSerializationContext context;
    context.SetIndentChars("  ");
    Expect(context.GetIndentChars() == "  ", "context");
    return failures == 0 ? 0 : 1;
}
