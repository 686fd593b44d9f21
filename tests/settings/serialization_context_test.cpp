#include "kvxml/settings/serialization_context.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/base/exceptions.h"
#include "kvxml/base/smart_ptr.h"
#include "kvxml/objects/attribute_col.h"
#include "kvxml/settings/fast_infoset_context.h"
#include "kvxml/settings/json_context.h"
#include "tests/support/error_of.h"

namespace KvXmlLib16 {
namespace {

/// The switches, then the other settings, in one line.
std::string TextOf(const CSerializationContext& c) {
    std::string text;
    for (const bool isOn :
         {c.GetIgnoreUnknownAttributes(), c.GetIgnoreUnknownElements(), c.GetIgnoreMissingMandatoryElements(),
          c.GetIgnoreMissingChoice(), c.GetIgnoreInvalidCollectionCounts(), c.GetIgnoreNamespaces(),
          c.GetNoOptionalAttributeDefaultOutput(), c.GetWriteDefaultElementValues(),
          c.GetWriteTypeAttribute(), c.GetStripCDATA()}) {
        text += isOn ? '1' : '0';
    }
    return text + " " + std::to_string(c.GetSchemaType()) + " [" + c.GetDefaultNamespaceURI() + "] [" +
           c.GetInLineSchema() + "] [" + c.GetIndentChars() + "] " + std::to_string(c.GetMaxElementDepth()) +
           " " + std::to_string(c.GetMaxInflatedSize()) + " " + std::to_string(c.GetMaxInflationRatio()) +
           " " + std::to_string(c.GetMaxExpansion()) + " " + std::to_string(c.GetMaxDistinctNames()) + " " +
           std::to_string(c.GetNamespaceAliases().GetNamespaceCount()) + " " +
           std::to_string(c.GetProcessingInstructions().size());
}

TEST(SerializationContext, CopiesHaveEverySetting) {
    CSerializationContext source;
    EXPECT_EQ(TextOf(source), "0000000011 0 [] [] [\t] 1000 1073741824 250 8388608 250000 0 0");
    source.SetIgnoreUnknownAttributes(true);
    source.SetIgnoreUnknownElements(true);
    source.SetIgnoreMissingChoice(true);
    source.SetIgnoreInvalidCollectionCounts(true);
    source.SetIgnoreNamespaces(true);
    source.SetNoOptionalAttributeDefaultOutput(true);
    source.SetWriteDefaultElementValues(true);
    source.SetWriteTypeAttribute(false);
    source.SetStripCDATA(false);
    source.SetSchemaType(SchemaType_Namespaces);
    source.SetDefaultNamespaceURI("urn:default");
    source.SetInLineSchema("<schema/>");
    source.SetIndentChars("  ");
    source.SetMaxElementDepth(7);
    source.SetMaxInflatedSize(8);
    source.SetMaxInflationRatio(9);
    source.SetMaxExpansion(10);
    source.SetMaxDistinctNames(11);
    source.GetNamespaceAliases().Add("a", "urn:a");
    source.GetProcessingInstructions().push_back("<?pi?>");
    CSerializationContext copy(source);
    EXPECT_EQ(TextOf(copy), "1101111100 1 [urn:default] [<schema/>] [  ] 7 8 9 10 11 1 1");
    copy.SetIgnoreUnknownElements(false);
    copy.SetIgnoreMissingMandatoryElements(true);
    source = copy;
    EXPECT_EQ(TextOf(source), "1011111100 1 [urn:default] [<schema/>] [  ] 7 8 9 10 11 1 1");
}

TEST(SerializationContext, SchemaWithoutNamespacesIgnoresThem) {
    CSerializationContext context;
    context.SetSchemaType(SchemaType_NoNamespaces);
    EXPECT_TRUE(context.GetIgnoreNamespaces());
    EXPECT_TRUE(CSerializationContext(context).GetIgnoreNamespaces());
    context.SetSchemaType(SchemaType_Namespaces);
    EXPECT_FALSE(context.GetIgnoreNamespaces());
}

TEST(SerializationContext, UnknownAndMissingElementsCannotBothBeIgnored) {
    const std::string common =
        "The parser can only ignore additional elements, or ignore the fact that some required ones are "
        "missing, you can not ignore both\n";
    CSerializationContext context;
    context.SetIgnoreUnknownElements(true);
    EXPECT_EQ(
        ErrorOf<CKvInvalidStateException>([&] { context.SetIgnoreMissingMandatoryElements(true); }),
        common + "Set IgnoreUnknownElements to false before setting IgnoreMissingMandatoryElements to true");
    EXPECT_FALSE(context.GetIgnoreMissingMandatoryElements());
    context.SetIgnoreMissingMandatoryElements(false);

    context.SetIgnoreUnknownElements(false);
    context.SetIgnoreMissingMandatoryElements(true);
    EXPECT_EQ(
        ErrorOf<CKvInvalidStateException>([&] { context.SetIgnoreUnknownElements(true); }),
        common + "Set IgnoreMissingMandatoryElements to false before setting IgnoreUnknownElements to true");
    EXPECT_FALSE(context.GetIgnoreUnknownElements());
}

TEST(SerializationContext, IndentationIsWhitespaceOnly) {
    CSerializationContext context;
    for (const char* accepted : {"", " ", "  \t", "\t\t"}) {
        context.SetIndentChars(accepted);
        EXPECT_EQ(context.GetIndentChars(), accepted);
    }
    context.SetIndentChars(" \t");
    for (const char* refused : {" x", "\n", "x", "\xC2\xA0"}) {
        EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { context.SetIndentChars(refused); }),
                  R"(IndentChars can only contain Whitespace characters, i.e. \t or spaces)");
        EXPECT_EQ(context.GetIndentChars(), " \t");
    }
    context.SetIndentChars(nullptr);
    context.SetDefaultNamespaceURI(nullptr);
    EXPECT_EQ(context.GetIndentChars() + context.GetDefaultNamespaceURI(), "");
}

TEST(SerializationContext, SubContextsAreSharedOnceTheyExist) {
    CSerializationContext source;
    const CSerializationContext early(source);
    source.GetJsonContext().SetRootElementName("root");
    {
        CSerializationContext late;
        late.GetJsonContext().SetRootElementName("replaced");
        late = source;
        EXPECT_EQ(&late.GetJsonContext(), &source.GetJsonContext());
        late.GetJsonContext().GetAllowComments(false);
        late.GetJsonContext().SetEscapeStrings(true);
    }
    EXPECT_EQ(source.GetJsonContext().GetRootElementName(), "root");
    EXPECT_FALSE(source.GetJsonContext().GetAllowComments());
    EXPECT_TRUE(source.GetJsonContext().GetEscapeStrings());
    EXPECT_EQ(early.GetJsonContext().GetRootElementName(), "");

    CFastInfosetContext* settings = &source.GetFIContext();
    EXPECT_EQ(&CSerializationContext(source).GetFIContext(), settings);
}

TEST(SerializationContext, AdditionalRootAttributesAreOneCollection) {
    CSerializationContext context;
    const CSmartPtr<CAttributeCol> attributes = context.GetAdditionalRootAttributes();
    EXPECT_EQ(attributes.Get(), context.GetAdditionalRootAttributes().Get());
    EXPECT_EQ(attributes.Get(), context.FindAdditionalRootAttributes());
    attributes->Add("lang", "http://www.w3.org/XML/1998/namespace", "en");
    CSerializationContext copy(context);
    EXPECT_EQ(copy.GetAdditionalRootAttributes()->GetCount(), 1);
    copy.GetAdditionalRootAttributes()->Add("version", "", "1");
    EXPECT_EQ(attributes->GetCount(), 2);

    context = CSerializationContext();
    EXPECT_EQ(context.FindAdditionalRootAttributes(), nullptr);
    EXPECT_EQ(copy.GetAdditionalRootAttributes()->GetCount(), 2);
}

TEST(SerializationContext, SubContextsMayBeCreatedByAnyThread) {
    for (int round = 0; round < 50; ++round) {
        const CSerializationContext context;
        std::atomic<bool> start{false};
        std::vector<CJsonContext*> seen(4);
        std::vector<std::thread> threads;
        for (CJsonContext*& result : seen) {
            threads.emplace_back([&] {
                while (!start)
                    std::this_thread::yield();
                const CSerializationContext copy(context);
                result = &context.GetJsonContext();
            });
        }
        start = true;
        for (std::thread& thread : threads)
            thread.join();
        for (CJsonContext* result : seen)
            EXPECT_EQ(result, seen.front());
    }
}

}  // namespace
}  // namespace KvXmlLib16
