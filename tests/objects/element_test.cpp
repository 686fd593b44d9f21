#include "kvxml/objects/element.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "kvxml/objects/xml_tree_writer.h"
#include "kvxml/xml/xml_document.h"
#include "kvxml/xml/xml_element.h"
#include "kvxml/xml/xml_text_writer.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"
#include "tests/support/xml_tree_dump.h"

namespace KvXmlLib16 {
namespace {

std::string WriteTree(const std::string& xml, bool formatted = false,
                      const CSerializationContext& context = CSerializationContext()) {
    CXmlDocument document(context);
    document.LoadXml(xml.c_str());
    CTextStream stream(XmlEncoding_UTF8);
    CXmlTextWriter writer(&stream);
    writer.SetFormatted(formatted);
    writer.BeginOutput();
    WriteXmlTree(*document.GetDocumentElement(), writer, context);
    writer.EndDocument();
    return stream.TakeText();
}

std::string WriteObject(const std::string& xml, bool formatted = false,
                        const CSerializationContext& context = CSerializationContext()) {
    CElement element;
    element.FromXml(xml.c_str(), context);
    return element.ToXml(false, formatted, EOLType_LF, context);
}

// --- round trips -------------------------------------------------------------------------------------------

constexpr const char* kXsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

struct RoundTrip {
    const char* name;
    std::string in;
    std::string out;  // empty: as the input
};

const RoundTrip kRoundTrips[] = {
    {"texts and attributes", "<a x=\"1\" y=\"&lt;&quot;&#xA;&amp;\">t &amp; u</a>", ""},
    {"blanks are the only text", "<a> <b>  </b>\n</a>", "<a><b>  </b></a>"},
    {"text comes first", "<a>x<b/>y<c>z</c> </a>", "<a>xy <b/><c>z</c></a>"},
    {"blanks preserved", "<a xml:space=\"preserve\"> <b> <c/></b><d xml:space=\"default\"> <e/></d></a>",
     "<a xml:space=\"preserve\"> <b> <c/></b><d xml:space=\"default\"><e/></d></a>"},
    {"prefixes", "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:2\" q:x=\"1\"><q:b/><p:c p:y=\"2\"/></p:a>", ""},
    {"prefixes declared inside", "<a><p:b xmlns:p=\"urn:1\" p:x=\"\"/></a>",
     "<a xmlns:p=\"urn:1\"><p:b p:x=\"\"/></a>"},
    {"default namespace", "<a xmlns=\"urn:1\" xmlns:p=\"urn:2\" p:x=\"\"><b/><p:c/></a>", ""},
    {"no namespace inside a default one", "<a xmlns=\"urn:1\"><b xmlns=\"\" c=\"\"><d/><e/></b><f/></a>", ""},
    {"default namespace inside none", "<a><b xmlns=\"urn:1\"><c/></b><d/></a>", ""},
    {"a prefix for two namespaces", "<p:a xmlns:p=\"urn:1\"><p:b xmlns:p=\"urn:2\"><p:c/></p:b></p:a>",
     "<a xmlns=\"urn:1\" xmlns:p=\"urn:2\"><p:b><p:c/></p:b></a>"},
    {"two prefixes for a namespace", "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:1\"><q:b>q:x</q:b></p:a>",
     "<p:a xmlns:p=\"urn:1\" xmlns:q=\"urn:1\"><p:b>q:x</p:b></p:a>"},
    {"namespaces that need escaping",
     "<p:a xmlns:p=\"a&amp;b&quot;\"><c xmlns=\"&lt;\" p:x=\"\"><d/></c></p:a>",
     "<p:a xmlns=\"&lt;\" xmlns:p=\"a&amp;b&quot;\"><c p:x=\"\"><d/></c></p:a>"},
    {"xml:lang", "<a xml:lang=\"de\" xml:base=\"b\"/>", ""},
    {"instance attributes",
     std::string("<a xmlns=\"urn:1\"") + kXsi +
         " xsi:schemaLocation=\"u v\" xsi:noNamespaceSchemaLocation=\"w\"><b xsi:nil=\"true\"/></a>",
     ""},
    {"types", std::string("<a") + kXsi + " xmlns:t=\"urn:t\" xsi:type=\"t:T\"><b xsi:type=\" U \"/></a>", ""},
    {"type in the default namespace", std::string("<a xmlns=\"urn:1\"") + kXsi + " xsi:type=\"T\"/>", ""},
    {"type with an unknown prefix", std::string("<a") + kXsi + " xsi:type=\"q:T\"/>", ""},
    {"type by a second prefix",
     std::string("<a") + kXsi + " xmlns:t=\"urn:t\" xmlns:s=\"urn:t\" xsi:type=\"t:T\"/>",
     std::string("<a") + kXsi + " xmlns:s=\"urn:t\" xsi:type=\"s:T\" xmlns:t=\"urn:t\"/>"},
};

TEST(ElementTest, RoundTrips) {
    for (const RoundTrip& row : kRoundTrips) {
        SCOPED_TRACE(row.name);
        const std::string& expected = row.out.empty() ? row.in : row.out;
        EXPECT_EQ(WriteObject(row.in), expected);
        EXPECT_EQ(WriteTree(row.in), expected);
        EXPECT_EQ(WriteObject(expected), expected);
        // Formatting changes no text, so it can be repeated.
        const std::string formatted = WriteObject(row.in, true);
        EXPECT_EQ(WriteTree(row.in, true), formatted);
        EXPECT_EQ(WriteObject(formatted), expected);
        EXPECT_EQ(WriteObject(formatted, true), formatted);
    }
}

// --- namespaces -------------------------------------------------------------------------------------------

TEST(ElementTest, NamespacesThatWereNeverSet) {
    CElement root("a");
    root.SetPrefix("p");
    root.AddElement("inherits")->AddElement("x");
    root.AddElement("none", "")->AddElement("x");
    root.AddElement("own", "urn:own")->SetPrefix("o");
    EXPECT_EQ(root.ToXml(false, false),
              "<a><inherits><x/></inherits><none><x/></none><o:own xmlns:o=\"urn:own\"/></a>");
    CSerializationContext context;
    context.SetDefaultNamespaceURI("urn:d");
    EXPECT_EQ(root.ToXml(false, false, EOLType_LF, context),
              "<a xmlns=\"urn:d\"><inherits><x/></inherits><none xmlns=\"\"><x/></none>"
              "<o:own xmlns:o=\"urn:own\"/></a>");
    root.SetNamespace("urn:1");
    EXPECT_EQ(root.ToXml(false, false),
              "<p:a xmlns:p=\"urn:1\"><p:inherits><p:x/></p:inherits><none><x/></none>"
              "<o:own xmlns:o=\"urn:own\"/></p:a>");
    root.SetNamespace("");
    EXPECT_TRUE(root.HasNamespace());
    EXPECT_EQ(root.ToXml(false, false, EOLType_LF, context).substr(0, 3), "<a>");
}

TEST(ElementTest, ContextOfTheRoot) {
    CSerializationContext context;
    context.GetNamespaceAliases().Add("z", "urn:1");
    context.GetNamespaceAliases().Add("q", "urn:z");
    context.GetProcessingInstructions().push_back("<?x y?>");
    context.SetInLineSchema("<s/>");
    context.GetAdditionalRootAttributes()->Add("x", "", "context");
    context.GetAdditionalRootAttributes()->Add("y", "urn:z", "context");
    const char* xml = "<p:a xmlns:p='urn:1' xmlns:q='urn:2' x='own'><q:b/></p:a>";
    const std::string expected =
        "<?x y?>\n\n<z:a xmlns:z=\"urn:1\" xmlns:q=\"urn:z\" q:y=\"context\" x=\"own\" xmlns:p=\"urn:1\">"
        "<s/><AA:b xmlns:AA=\"urn:2\"/></z:a>";
    EXPECT_EQ(WriteObject(xml, false, context), expected);
    EXPECT_EQ(WriteTree(xml, false, context), expected);
    CSerializationContext raw;
    raw.SetSchemaType(SchemaType_NoNamespaces);
    const std::string prefixed = "<p:a xmlns:p=\"urn:1\" p:x=\"\"><p:b/></p:a>";
    EXPECT_EQ(WriteObject(prefixed, false, raw), prefixed);
    EXPECT_EQ(WriteTree(prefixed, false, raw), prefixed);
}

TEST(ElementTest, Restrictions) {
    struct Case {
        const char* name;
        const char* ns;
        const char* restriction;
        const char* target;
        const char* accepted;  // of the children a, p:a, q:a, p:b
        int run;               // of accepted children at the start
    };
    const Case cases[] = {
        {"", "", "##any", "", "1111", 4},        {"a", "", "##any", "", "1110", 3},
        {"", "", "##other", "urn:p", "1010", 1}, {"", "", "##targetNamespace", "urn:p", "0101", 0},
        {"", "", "##local", "urn:p", "1000", 1}, {"", "urn:p", "", "", "0101", 0},
        {"a", "urn:q", "", "", "0010", 0},
    };
    CXmlDocument document;
    document.LoadXml("<r xmlns:p='urn:p' xmlns:q='urn:q'><a/><p:a/><q:a/><p:b/></r>");
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.name) + "|" + c.ns + "|" + c.restriction);
        CElementCol collection(c.name, c.ns, 0, -1, c.restriction, c.target);
        std::string accepted;
        for (auto* at = document.GetDocumentElement()->GetFirstElement(); at != nullptr;
             at = at->GetNextSiblingElement()) {
            const bool accepts = collection.Accepts(CSerializationContext(), *at);
            accepted += accepts ? '1' : '0';
            if (*c.name != '\0') continue;
            EXPECT_EQ(ErrorOf([&] { collection.Add("x", at->GetNamespaceURI().c_str(), ""); }),
                      accepts ? "(no error)" : "Invalid Namespace [" + at->GetNamespaceURI() + "].");
        }
        EXPECT_EQ(accepted, c.accepted);
        collection.Clear();
        collection.FromXmlElement(document.GetDocumentElement());
        EXPECT_EQ(collection.GetCount(), c.run);
    }
    CElementCol typed("a", "urn:q", 0, -1, "");
    CSerializationContext ignoring;
    ignoring.SetIgnoreNamespaces(true);
    EXPECT_TRUE(typed.Accepts(ignoring, *document.GetDocumentElement()->GetFirstElement()));
    // What was moved to another namespace afterwards is found when it is written.
    const fixture::Model& model = fixture::Model::New("r").UntpdCol("any", 0, -1, "##local");
    const CSmartPtr<fixture::Object> object(new fixture::Object(model));
    auto& local = dynamic_cast<CElementCol&>(object->Collection("any"));
    local.Add("x", "", "")->SetNamespace("urn:elsewhere");
    EXPECT_EQ(ErrorOf([&] { object->ToXml(); }),
              "Failed to convert the element [r] to XML\nPath: /r/x\nInvalid Namespace [urn:elsewhere].");
    // Where an element without a namespace of its own would be written counts too.
    CElementCol other("", "urn:t", 0, -1, "##other", "urn:t");
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { other.Add("x", nullptr, ""); }),
              "A Namespace has not been set for this Collection");
    EXPECT_EQ(ErrorOf<CKvInvalidNamespaceException>([] { CAttributeCol(""); }),
              "Namespace Restriction must have a value");
    for (const char* restriction : {"##other", "##targetNamespace ##local"}) {
        const char* const error = "Target Namespace must have a value";
        EXPECT_EQ(ErrorOf<CKvInvalidNamespaceException>([&] { CAttributeCol(restriction, nullptr); }), error);
        EXPECT_EQ(ErrorOf([&] { CElementCol("", "", 0, -1, restriction, nullptr); }), error);
    }
    const CSmartPtr<CAttribute> attribute(new CAttribute("n", "urn:t", ""));
    EXPECT_EQ(ErrorOf<CKvInvalidNamespaceException>([&] { CAttributeCol("##local").Add(attribute); }),
              "Invalid Attribute [n]. The attributes namespace is Inappropriate.");
}

// --- names and attributes ---------------------------------------------------------------------------------

TEST(ElementTest, NamesThatXmlRefuses) {
    EXPECT_EQ(ErrorOf<CKvInvalidNamespaceException>([] { CElement element(""); }),
              "Element Name must have a value");
    for (const char* name : {"1", "-a", "a b", "a<", "a\xC3\x97", "\xCC\x80", "a\xFF", "a\x01"}) {
        SCOPED_TRACE(name);
        const std::string error = std::string("[") + name + "] is not a valid XML name.";
        EXPECT_EQ(ErrorOf([&] { CElement element(name); }), error);
        EXPECT_EQ(ErrorOf([&] { CAttribute attribute(name, "", ""); }), error);
        EXPECT_EQ(ErrorOf([&] { CElement("a").SetPrefix(name); }), error);
    }
    for (const char* name : {"a", "_", "a-.1", "\xC3\xA9t\xC3\xA9", "\xF0\x90\x80\x80"})
        EXPECT_EQ(ErrorOf([&] { CElement element(name); }), "(no error)");
    // A colon is part of a name only where namespaces are not looked at.
    EXPECT_EQ(ErrorOf([] { CElement("p:a").ToXml(); }), "[p:a] is not a valid XML name.");
    EXPECT_EQ(ErrorOf([] { CElement().ToXml(); }), "[] is not a valid XML name.");
    CElement element("a");
    for (const char* name : {"xmlns", "xmlns:p"}) {
        element.SetAttribute(name, "", "urn:x");
        EXPECT_EQ(ErrorOf([&] { element.ToXml(); }), std::string("[") + name + "] is not a valid XML name.");
        EXPECT_TRUE(element.RemoveAttribute(name));
    }
    for (const int count : {2, 40}) {
        for (int i = 1; i < count; ++i)
            element.GetAttributes()->Add(("n" + std::to_string(i)).c_str(), "", "");
        element.GetAttributes()->Add("n1", "", "");
        EXPECT_EQ(ErrorOf([&] { element.ToXml(); }), "The attribute [n1] occurs more than once.");
        element.GetAttributes()->Clear();
    }
    EXPECT_EQ(ErrorOf([] { CElement("a", "http://www.w3.org/2000/xmlns/").ToXml(); }),
              "The namespace [http://www.w3.org/2000/xmlns/] can not be declared.");
}

TEST(ElementTest, AttributesAndTheirIterators) {
    CElement element("a");
    EXPECT_EQ(element.FindAttributes(), nullptr);
    element.SetAttribute("x", nullptr, "1");
    element.SetAttribute("x", "urn:1", "2");
    element.SetAttribute("x", "", "3");
    EXPECT_EQ(element.GetAttribute("x") + element.GetAttribute("x", "urn:1") + element.GetAttribute("y"),
              "32");
    EXPECT_FALSE(element.HasAttribute("x", "urn:2") || element.RemoveAttribute("y"));
    const char* xsi = "http://www.w3.org/2001/XMLSchema-instance";
    element.GetAttributes()->Add("type", xsi, "")->SetTypeValue("urn:1", "T");
    EXPECT_EQ(
        element.ToXml(false, false),
        std::string("<a x=\"3\" xmlns:AA=\"urn:1\" AA:x=\"2\" xmlns:AB=\"") + xsi + "\" AB:type=\"AA:T\"/>");
    const CAttributeCol& attributes = *element.FindAttributes();
    const auto last = std::prev(attributes.end());
    EXPECT_EQ((*last)->GetValue() + (*std::prev(last))->GetValue(), "T2");
    EXPECT_EQ(std::distance(attributes.begin(), last), 2);
}

// --- life -------------------------------------------------------------------------------------------------

class Listener : public CElement {
public:
    std::string log;

protected:
    void OnEvent(CXmlObjectBase* source, MsgType type, void* data) override {
        log += static_cast<char>('0' + type);
        if (type == MsgType_Add) {
            auto* const item = static_cast<CElement*>(static_cast<CXmlObjectBase*>(data));
            log += item->GetName() + std::to_string(item->GetElements()->GetCount());
        } else if (type == MsgType_AddComplete && removes) {
            static_cast<CElementCol*>(source)->CXmlCollection::Remove(0);
        }
    }

public:
    bool removes = false;
};

TEST(ElementTest, ReadTwiceWithListeners) {
    CElement element;
    element.FromXml("<a x='1'>text<b/></a>");
    Listener listener;
    const CSmartPtr<CElementCol> children = element.GetElements();
    children->AddEventListener(&listener);
    element.FromXml("<c><d><e/><f/></d></c>");
    EXPECT_EQ(listener.log, "3401d220");  // the old child goes, the new one comes complete
    EXPECT_EQ(element.ToXml(false, false), "<c><d><e/><f/></d></c>");
    EXPECT_EQ(element.GetElements(), children);
    listener.removes = true;
    element.FromXml("<c><d><e/></d><g/></c>");
    EXPECT_EQ(element.ToXml(false, false), "<c/>");
    children->RemoveEventListener(&listener);
    EXPECT_EQ(ErrorOf([&] { element.FromXml("<c"); }).empty(), false);
    EXPECT_EQ(element.GetName(), "c");
}

TEST(ElementTest, OtherObjects) {
    CElement root;
    root.FromXml("<x:Measure xmlns:x='urn:fixture' unit='kg'>1.5</x:Measure>");
    const fixture::Model& model =
        fixture::Model::New("Measure").Text(ItemType_r8, "%.3f").Attribute("unit", ItemType_string);
    const CSmartPtr<fixture::Object> measure(new fixture::Object(model));
    measure->FromXmlElement(&root);
    CElement back;
    back.FromObject(*measure);
    EXPECT_EQ(back.GetName() + back.GetNamespace() + back.GetAttribute("unit") + back.GetValue(),
              "Measureurn:fixturekg1.500");
    back.FromObject(back);
    EXPECT_EQ(back.GetValue(), "1.500");
    EXPECT_EQ(ErrorOf([&] { measure->FromXmlElement(static_cast<const CElement*>(nullptr)); }),
              "The element to read from may not be NULL");
    CElement copy;
    copy.FromXmlElement(&back);
    EXPECT_EQ(copy.ToXml(), back.ToXml());
    CElement list;
    list.FromXml("<a xmlns='urn:a'><b/><b xmlns=''/></a>");
    EXPECT_EQ(list.FindElement("b", "")->GetNamespace(), "");
    EXPECT_EQ(list.FindElement("b", "urn:a").Get(), *list.GetElements()->begin());
    EXPECT_EQ(list.FindElement("c", "urn:a"), nullptr);
}

// --- sizes ------------------------------------------------------------------------------------------------

TEST(ElementTest, DeepDocuments) {
    constexpr int kDepth = 100000;
    std::string xml;
    for (int i = 0; i < kDepth; ++i)
        xml += "<a>";
    xml.replace(xml.size() - 1, 1, "/>");
    for (int i = 1; i < kDepth; ++i)
        xml += "</a>";
    CSerializationContext context;
    EXPECT_NE(ErrorOf([&] { WriteObject(xml, false, context); }), "(no error)");
    context.SetMaxElementDepth(kDepth);
    EXPECT_EQ(WriteObject(xml, false, context), xml);
    EXPECT_EQ(WriteTree(xml, false, context), xml);
    CElement loop("a");
    loop.AddRef();  // it is shared with its own collection
    loop.GetElements()->Add(CSmartPtr<CElement>(&loop));
    EXPECT_EQ(ErrorOf([&] { loop.ToXml(false, false); }),
              "The elements are nested deeper than the limit of 1000.");
    loop.GetElements()->Clear();
}

/// Documents whose namespaces are meant to make scopes large; the time they take must not be quadratic.
TEST(ElementTest, ManyNamespaces) {
    constexpr int kCount = 10000;
    std::string declarations;
    std::string attributes;
    std::string children;
    std::string nested;
    for (int i = 0; i < kCount; ++i) {
        const std::string n = std::to_string(i);
        declarations += " xmlns:p" + n + "=\"urn:" + n + "\"";
        attributes += " p" + n + ":a=\"\"";
        children += "<b xmlns=\"urn:d" + n + "\"/>";
        if (i < 900) nested += "<c" + n + ":c xmlns:c" + n + "=\"urn:c" + n + "\" c" + n + ":x=\"\">";
    }
    std::string end;
    for (int i = 899; i >= 0; --i)
        end += "</c" + std::to_string(i) + ":c>";
    const std::string xml =
        "<r" + declarations + "><s" + attributes + ">" + children + "</s>" + nested + children + end + "</r>";
    const std::string first = WriteObject(xml);
    EXPECT_EQ(WriteTree(xml), first);
    CXmlDocument before;
    CXmlDocument after;
    before.LoadXml(xml.c_str());
    after.LoadXml(first.c_str());
    EXPECT_EQ(testsupport::Dump(after.GetDocumentElement()), testsupport::Dump(before.GetDocumentElement()));
}

}  // namespace
}  // namespace KvXmlLib16
