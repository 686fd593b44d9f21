#include "kvxml/runtime/serialization_context.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/fastinfoset/fast_infoset_context.h"
#include "kvxml/json/json_context.h"
#include "kvxml/metadata/attribute_col.h"
#include "kvxml/runtime/exceptions.h"
#include "kvxml/runtime/smart_ptr.h"

namespace KvXmlLib16 {
namespace {

struct Switch {
    const char* name;
    bool (CSerializationContext::*get)() const noexcept;
    void (*set)(CSerializationContext&, bool);
    bool byDefault;
};

#define SWITCH(name, byDefault)                                                                      \
    Switch {                                                                                         \
#name, &CSerializationContext::Get##name,                                                    \
            [](CSerializationContext & context, bool value) { context.Set##name(value); }, byDefault \
    }

const Switch kSwitches[] = {
    SWITCH(IgnoreUnknownAttributes, false),
    SWITCH(IgnoreUnknownElements, false),
    SWITCH(IgnoreMissingMandatoryElements, false),
    SWITCH(IgnoreMissingChoice, false),
    SWITCH(IgnoreInvalidCollectionCounts, false),
    SWITCH(IgnoreNamespaces, false),
    SWITCH(NoOptionalAttributeDefaultOutput, false),
    SWITCH(WriteDefaultElementValues, false),
    SWITCH(WriteTypeAttribute, true),
    SWITCH(StripCDATA, true),
};

TEST(SerializationContext, SwitchesAreIndependentAndCopied) {
    for (const Switch& changed : kSwitches) {
        SCOPED_TRACE(changed.name);
        CSerializationContext context;
        changed.set(context, !changed.byDefault);
        const CSerializationContext copy(context);
        CSerializationContext assigned;
        assigned = context;
        for (const Switch& other : kSwitches) {
            const bool expected = other.byDefault != (&other == &changed);
            EXPECT_EQ((context.*other.get)(), expected) << other.name;
            EXPECT_EQ((copy.*other.get)(), expected) << other.name;
            EXPECT_EQ((assigned.*other.get)(), expected) << other.name;
        }
        changed.set(context, changed.byDefault);
        EXPECT_EQ((context.*changed.get)(), changed.byDefault);
    }
}

TEST(SerializationContext, DefaultsOfTheOtherSettings) {
    const CSerializationContext context;
    EXPECT_EQ(context.GetSchemaType(), SchemaType_Default);
    EXPECT_EQ(context.GetDefaultNamespaceURI(), "");
    EXPECT_EQ(context.GetInLineSchema(), "");
    EXPECT_EQ(context.GetIndentChars(), "\t");
    EXPECT_EQ(context.GetNamespaceAliases().GetNamespaceCount(), 0);
    EXPECT_TRUE(context.GetProcessingInstructions().empty());
    EXPECT_EQ(context.FindAdditionalRootAttributes(), nullptr);
    EXPECT_EQ(context.GetMaxElementDepth(), 1000U);
    EXPECT_EQ(context.GetMaxInflatedSize(), 0U);

    const CJsonContext& json = context.GetJsonContext();
    EXPECT_EQ(json.GetSupportRoundtrip(), 2);
    EXPECT_EQ(json.GetRootElementName(), "");
    EXPECT_TRUE(json.GetAllowComments());
    EXPECT_FALSE(json.GetEscapeStrings());
    EXPECT_EQ(&CSerializationContext::GetDefaultContext(), &CSerializationContext::GetDefaultContext());
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
    try {
        context.SetIgnoreMissingMandatoryElements(true);
        FAIL();
    } catch (const CKvInvalidStateException& e) {
        EXPECT_EQ(e.GetMessage(), common +
                                      "Set IgnoreUnknownElements to false before setting "
                                      "IgnoreMissingMandatoryElements to true");
    }
    EXPECT_FALSE(context.GetIgnoreMissingMandatoryElements());
    context.SetIgnoreMissingMandatoryElements(false);

    context.SetIgnoreUnknownElements(false);
    context.SetIgnoreMissingMandatoryElements(true);
    try {
        context.SetIgnoreUnknownElements(true);
        FAIL();
    } catch (const CKvInvalidStateException& e) {
        EXPECT_EQ(e.GetMessage(), common +
                                      "Set IgnoreMissingMandatoryElements to false before setting "
                                      "IgnoreUnknownElements to true");
    }
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
        try {
            context.SetIndentChars(refused);
            ADD_FAILURE() << refused;
        } catch (const CKvInvalidParamException& e) {
            EXPECT_EQ(e.GetMessage(),
                      R"(IndentChars can only contain Whitespace characters, i.e. \t or spaces)");
        }
        EXPECT_EQ(context.GetIndentChars(), " \t");
    }
    context.SetIndentChars(nullptr);
    EXPECT_EQ(context.GetIndentChars(), "");
}

TEST(SerializationContext, CopiesOwnTheirTextsAndLists) {
    CSerializationContext source;
    source.SetDefaultNamespaceURI("urn:default");
    source.SetInLineSchema("<schema/>");
    source.SetIndentChars("  ");
    source.SetMaxElementDepth(7);
    source.SetMaxInflatedSize(1U << 20);
    source.GetNamespaceAliases().Add("a", "urn:a");
    source.GetProcessingInstructions().push_back("<?pi?>");

    CSerializationContext copy;
    copy.GetNamespaceAliases().Add("old", "urn:old");
    copy = source;
    CSerializationContext& self = copy;
    copy = self;
    source = CSerializationContext();

    EXPECT_EQ(copy.GetDefaultNamespaceURI(), "urn:default");
    EXPECT_EQ(copy.GetInLineSchema(), "<schema/>");
    EXPECT_EQ(copy.GetIndentChars(), "  ");
    EXPECT_EQ(copy.GetMaxElementDepth(), 7U);
    EXPECT_EQ(copy.GetMaxInflatedSize(), 1U << 20);
    EXPECT_EQ(copy.GetNamespaceAliases().GetNamespaceCount(), 1);
    EXPECT_TRUE(copy.GetNamespaceAliases().DoesAliasExist("a"));
    EXPECT_EQ(copy.GetProcessingInstructions(), std::vector<std::string>{"<?pi?>"});
    EXPECT_EQ(source.GetProcessingInstructions().size(), 0U);

    copy.SetDefaultNamespaceURI(nullptr);
    EXPECT_EQ(copy.GetDefaultNamespaceURI(), "");
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
