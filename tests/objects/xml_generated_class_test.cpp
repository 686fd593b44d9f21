#include "kvxml/objects/xml_generated_class.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace fixture {
namespace {

constexpr const char* kNoError = "(no error)";
constexpr const char* kXsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

const Model& MeasureModel() {
    static const Model& model =
        Model::New("Measure").Text(ItemType_r8, "%.3f").Attribute("unit", ItemType_string);
    return model;
}
using Measure = Typed<MeasureModel>;

const Model& NoteModel() {
    static const Model& model =
        Model::New("Note").Attribute("id", ItemType_string).Prim("Text", kMnd, ItemType_string);
    return model;
}
using Note = TypedNillable<NoteModel>;

const Model& NodeModel();
using Node = Typed<NodeModel>;
const Model& NodeModel() {
    static Model* model = nullptr;
    if (model == nullptr) {
        model = &Model::New("Node");  // is there before its members ask for it
        model->Attribute("name", ItemType_string).Cls<Node>("Next", kOpt).ClsCol<Node>("Node", 0, -1);
    }
    return *model;
}

std::string Remains(const std::string& parent, const std::string& path) {
    return "Failed read all the elements held within the element [" + parent +
           "]. The unexpected element [X] remains un processed\nPath: " + path;
}

// --- reading -----------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, Attributes) {
    const std::string unexpected = "Unexpected Attribute found.\nPath: /Measure/";
    const std::string one = ">1.000";
    const std::string metres = " unit=\"m\">1.000";
    ExpectOutcomes(
        MeasureModel(),
        {
            {" unit='m'", "1", "", metres},
            {" unit='m' x='1'", "1", "", unexpected + "@x"},
            {" x='1' unit='m'", "1", "a", metres},
            {" xmlns:o='urn:o' o:unit='m'", "1", "", unexpected + "o:@unit"},
            {" xmlns:o='urn:o' o:unit='m'", "1", "n", metres},
            {" Unit='m'", "1", "", unexpected + "@Unit"},
            {" xsi:type='x' xsi:schemaLocation='a b' xsi:noNamespaceSchemaLocation='c'", "1", "", one},
            {" xsi:other='x'", "1", "", unexpected + "xsi:@other"},
            {" type='x'", "1", "", unexpected + "@type"},
        });
    // More than fit into one machine word, all required.
    Model& many = Model::New("Many");
    static std::vector<std::string> names;
    for (int i = 0; i < 70; ++i)
        names.push_back("a" + std::to_string(i));
    std::string all;
    for (const std::string& name : names) {
        many.Attribute(name.c_str(), ItemType_i4, false);
        all += " " + name + "=\"1\"";
    }
    const std::string missing =
        "Failed to process the element.\nPath: /Many\nFailed to find the required Attribute ";
    ExpectOutcomes(many, {
                             {all, "", "", all + "/>"},
                             {all.substr(all.find(" a1=")), "", "", missing + "[a0]."},
                             {all.substr(0, all.find(" a69=")), "", "", missing + "[a69]."},
                         });
}

TEST(XmlGeneratedClassTest, NilOfClasses) {
    const auto outcome = [](const char* attributes, const char* content) {
        const CSmartPtr<Note> note(new Note());
        const std::string xml =
            std::string("<Note xmlns='urn:fixture' ") + kXsi + " " + attributes + ">" + content + "</Note>";
        const std::string error = ErrorOf([&] { note->FromXml(xml.c_str()); });
        return error == kNoError ? note->Dump() : error;
    };
    struct Case {
        const char* attributes;
        const char* content;
        const char* outcome;
    };
    const Case cases[] = {
        {"xsi:nil='TRUE'", "", "Note(nil){}"},
        {"xsi:nil=' 1 '", "", "Note(nil){}"},
        {"xsi:nil='true' id='7'", "<Other/>", "Note(nil){id=string:7}"},  // content is passed over
        {"xsi:nil='true' x=''", "", "Unexpected Attribute found.\nPath: /Note/@x"},
        {"xsi:nil='False'", "<Text>t</Text>", "Note{Text=string:t}"},
        {"xsi:nil='0'", "", "Failed to find the required child element [Text].\nPath: /Note"},
        {"xsi:nil='yes'", "", "Unexpected Value [yes] for 'nil' Attribute found.\nPath: /Note/xsi:@nil"},
        {"nil='true'", "<Text>t</Text>", "Unexpected Attribute found.\nPath: /Note/@nil"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.attributes);
        EXPECT_EQ(outcome(c.attributes, c.content), c.outcome);
    }
    for (const char* value : {"true", "false", "what"}) {
        EXPECT_EQ(Outcome(MeasureModel(), std::string(" xsi:nil='") + value + "'", "1"),
                  "Invalid use of 'nil' attribute in non-nillable element.\nPath: /Measure");
    }
}

TEST(XmlGeneratedClassTest, SimpleContentAndNone) {
    ExpectOutcomes(MeasureModel(), {
                                       {"", "-INF", "", ">-INF"},
                                       {"", "abc", "",
                                        "Failed to process the element.\nPath: /Measure\n"
                                        "The value [abc] can not be converted to a r8"},
                                       {"", "1<X/>", "", Remains("Measure", "/Measure")},
                                       {"", "1<X/>2", "e", ">12.000"},
                                   });
    ExpectOutcomes(Model::New("Empty"), {
                                            {"", "text", "", "/>"},
                                            {"", "<X/>", "", Remains("Empty", "/Empty")},
                                            {"", "<X/><Y><Z/></Y>", "e", "/>"},
                                        });
    const Model& kept = Model::New("Raw").Text(ItemType_i4, "", true);
    ExpectOutcomes(kept, {{"", " no &lt;number> ", "", "> no &lt;number&gt; "}, {"", "", "", "/>"}});
    CSerializationContext context = Ignoring("");
    context.SetStripCDATA(false);
    const CSmartPtr<Object> raw(new Object(kept));
    const char* const xml = "<Raw xmlns=\"urn:fixture\"><![CDATA[a<b]]></Raw>";
    raw->FromXml(xml, context);
    EXPECT_EQ(raw->Dump(), "Raw{text=string:<![CDATA[a<b]]>}");
    EXPECT_EQ(raw->ToXml(false, false, EOLType_LF, context), xml);
}

TEST(XmlGeneratedClassTest, ReadingReplacesTheContent) {
    const auto node = Make<Node>();
    node->Set("name", "a").Create("Next").Set("name", "b");
    node->Add("Node");
    const CSmartPtr<Object> child(&node->At("Next"));
    node->FromXml("<Node xmlns='urn:fixture'/>");
    EXPECT_EQ(node->Dump(), "Node{}");
    EXPECT_EQ(child->Dump(), "Next/Node{name=string:b}");  // whoever shares an old child keeps it

    EXPECT_NE(ErrorOf([&] { node->FromXml("<Node xmlns='urn:fixture' name='c'><Next/><Next/></Node>"); }),
              kNoError);
    node->FromXml("<Node xmlns='urn:fixture'><Node name='d'/></Node>");
    EXPECT_EQ(node->Dump(), "Node{Node=[Node{name=string:d}]}");

    const auto nil = Make<Note>();
    nil->SetNil(true);
    nil->FromXml("<Note xmlns='urn:fixture'><Text>t</Text></Note>");
    EXPECT_FALSE(nil->IsNil());
}

/// Counts the calls of Init, beside the one that the constructor makes.
template <bool newIsAsInit>
class Counting final : public Object {
public:
    static const Model& TheModel() {
        static const Model& model = Model::New("Counting").Prim("P", kOpt, ItemType_string);
        return model;
    }
    Counting() : Object(TheModel()) {
        if (newIsAsInit) GetClassInfo()->DeclareNewIsAsInit();
    }
    static inline int inits = 0;

protected:
    void Init() override {
        ++inits;
        Object::Init();
    }
};

TEST(XmlGeneratedClassTest, InitRunsUnlessNewObjectsAreAsItLeavesThem) {
    const auto initsOf = [](const Model& model, const int& inits, const char* content) {
        const int before = inits;
        EXPECT_EQ(Outcome(model, "", content), std::string(">") + content);
        return inits - before;
    };
    using Plain = Counting<false>;
    using Declared = Counting<true>;
    const char* const two = "<I><P>1</P></I><I><P>2</P></I>";
    const char* const one = "<I><P>1</P></I>";
    EXPECT_EQ(initsOf(Model::New("Box").ClsCol<Plain>("I", 0, -1), Plain::inits, two), 2);
    EXPECT_EQ(initsOf(Model::New("Box").Cls<Plain>("I", kOpt), Plain::inits, one), 1);
    EXPECT_EQ(initsOf(Model::New("Box").ClsCol<Declared>("I", 0, -1), Declared::inits, two), 0);
    EXPECT_EQ(initsOf(Model::New("Box").Cls<Declared>("I", kOpt), Declared::inits, one), 0);
    const CSmartPtr<Declared> used(new Declared());  // by whomever: what is read now may not be the first
    used->FromXml("<Counting xmlns='urn:fixture'><P>1</P></Counting>");
    used->FromXml("<Counting xmlns='urn:fixture'/>");
    EXPECT_EQ(used->Dump(), "Counting{}");
}

// --- writing -----------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, FailuresOfWriting) {
    const Model& model = Model::New("Box")
                             .Attribute("id", ItemType_i4, false)
                             .EnumAttribute("level", false)
                             .Cls<Measure>("Length", kMnd)
                             .ClsCol<Measure>("Point", 1, 2);
    struct Case {
        std::function<void(Object&)> spoil;
        std::string path;
        std::string message;
    };
    const std::string attributes = "Failed to convert attributes to XML\n";
    const std::string minimum = "The Minimum number of [Point] elements allowed in this collection is 1";
    const Case cases[] = {
        {[](Object&) {}, "", ""},
        {[](Object& o) { o["id"].Clear(); }, "/Box",
         attributes + "The Property [id] is mandatory, it may not be NULL"},
        {[](Object& o) { o["level"].Clear(); }, "/Box",
         attributes + "The Property [level] is mandatory, it may not be NULL"},
        {[](Object& o) { o.Set("level", "-1"); }, "/Box/@level", attributes + "No such color [-1]"},
        {[](Object& o) { o["Length"].Clear(); }, "/Box",
         "The Property [Length] is mandatory, it may not be NULL"},
        {[](Object& o) { o.Add("Point")["text"].Clear(); }, "/Box/Point[2]",
         "Failed to convert the element [Point] to XML\nInvalid Type 0 to convert to string"},
        {[](Object& o) { o["Point"].Clear(); }, "/Box", minimum},
        {[](Object& o) { o.Collection("Point").Clear(); }, "/Box", minimum},
        {[](Object& o) { o.Add("Point"), o.Add("Point"); }, "/Box",
         "The Maximum number of [Point] elements allowed in this collection is 2"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        const CSmartPtr<Object> object(new Object(model));
        object->Set("id", "1").Set("level", "0").At("Length").Set("text", "1");
        object->Add("Point").Set("text", "1");
        c.spoil(*object);
        EXPECT_EQ(ErrorOf<CKvValidationException>([&] { object->ToXml(); }),
                  c.message.empty()
                      ? kNoError
                      : "Failed to convert the element [Box] to XML\nPath: " + c.path + "\n" + c.message);
    }
    const CSmartPtr<Object> odd(new Object(Model::New("Odd", static_cast<XmlElementGroupType>(7))));
    EXPECT_EQ(ErrorOf([&] { odd->ToXml(); }),
              "Failed to convert the element [Odd] to XML\nPath: /Odd\nUnknown XML Group Type");
    EXPECT_EQ(ErrorOf([&] { odd->FromXml("<Odd xmlns='urn:fixture'/>"); }),
              "Failed to process the element.\nPath: /Odd\nUnknown Group Type");
}

const Model& PartModel() {
    static const Model& model = Model::New("Part", XmlElementGroupType_Choice, XmlElementType_PseudoElement)
                                    .Enum("Price", kOpt)
                                    .Prim("Title", kOpt, ItemType_string)
                                    .EnumCol("Color", 0, -1);
    return model;
}
const Model& BookModel() {
    static const Model& model = Model::New("Book")
                                    .EnumAttribute("level")
                                    .Enum("Price", kOpt)
                                    .ClsCol<Typed<PartModel>>("Part", 0, -1)
                                    .UntpdCol("any", 0, -1, "##other");
    return model;
}
using Book = Typed<BookModel>;

TEST(XmlGeneratedClassTest, PathsOfFailuresOfWriting) {
    struct Case {
        const char* path;
        std::function<void(Object&)> spoil;  // the second of three books
    };
    const char* const kBad = "-1";  // no color
    const Case cases[] = {
        {"/Library/Book[2]/Price", [&](Object& o) { o.Set("Price", kBad); }},
        {"/Library/Book[2]/@level", [&](Object& o) { o.Set("level", kBad); }},
        // The parts have no tag, so what is in them are children of the book.
        {"/Library/Book[2]/Price[3]",
         [&](Object& o) {
             o.Set("Price", "0").Add("Part").Set("Price", "1");
             o.Add("Part").Set("Title", "t");
             o.Add("Part").Set("Price", kBad);
         }},
        {"/Library/Book[2]/Color[3]",
         [&](Object& o) {
             o.Add("Part").AddValues("Color", {"red"});
             Object& part = o.Add("Part").AddValues("Color", {"red"});
             dynamic_cast<CXmlEnumCollection&>(part.Collection("Color")).Add(-1);
         }},
        {"/Library/Book[2]/u[1]/v/w[2]",
         [](Object& o) {
             auto& any = dynamic_cast<CElementCol&>(o.Collection("any"));
             const CSmartPtr<CElement> v = any.Add("u", "urn:u", "")->AddElement("v");
             any.Add("u", "urn:u", "");
             v->AddElement("w");
             v->AddElement("w")->SetAttribute("xmlns", "", "");
         }},
    };
    const Model& model = Model::New("Library").ClsCol<Book>("Book", 0, -1);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const CSmartPtr<Object> library(new Object(model));
        library->Add("Book");
        c.spoil(library->Add("Book"));
        library->Add("Book");
        const std::function<void()> ways[] = {[&] { library->ToXml(); }, [&] { library->ToJson(); },
                                              [&] { library->ToFastInfosetStream(); }};
        for (const auto& write : ways) {
            try {
                write();
                ADD_FAILURE() << "nothing was thrown";
            } catch (const CKvValidationException& e) {
                EXPECT_EQ(e.GetPath(), c.path) << e.GetFullMessage();
            }
        }
    }
}

TEST(XmlGeneratedClassTest, SettingsOfTheRootElement) {
    const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
    struct Case {
        const char* what;
        std::function<void(CSerializationContext&)> set;
        std::string start;
    };
    const Case cases[] = {
        {"other default namespace", [](auto& c) { c.SetDefaultNamespaceURI("urn:o"); },
         "<AA:Node xmlns:AA=\"urn:fixture\" xmlns=\"urn:o\" name=\"n\">"},
        {"aliases",
         [](auto& c) {
             c.GetNamespaceAliases().Add("f", "urn:fixture");
             c.GetNamespaceAliases().Add("b", "urn:b");
         },
         "<f:Node xmlns:b=\"urn:b\" xmlns:f=\"urn:fixture\" name=\"n\">"},
        {"processing instructions",
         [](auto& c) {
             c.GetProcessingInstructions() = {"<?a 1?>", "<?b 2?>"};
         },
         "<?a 1?>\n\n<?b 2?>\n\n<AA:Node xmlns:AA=\"urn:fixture\" name=\"n\">"},
        {"additional attributes",
         [&](auto& c) {
             c.GetNamespaceAliases().Add("xsi", xsi.c_str());
             c.GetAdditionalRootAttributes()->Add("schemaLocation", xsi.c_str(), "urn:fixture f.xsd");
             c.GetAdditionalRootAttributes()->Add("plain", "", "a&b");
             c.GetAdditionalRootAttributes()->Add("own", "urn:own", "1");
         },
         "<AA:Node xmlns:AA=\"urn:fixture\" xmlns:xsi=\"" + xsi +
             "\" xsi:schemaLocation=\"urn:fixture f.xsd\" plain=\"a&amp;b\" xmlns:AB=\"urn:own\" "
             "AB:own=\"1\" "
             "name=\"n\">"},
        {"additional attributes that the class has",
         [](auto& c) {
             c.GetAdditionalRootAttributes()->Add("name", "", "other");
             c.GetAdditionalRootAttributes()->Add("name", "urn:own", "1");
         },
         "<AA:Node xmlns:AA=\"urn:fixture\" xmlns:AB=\"urn:own\" AB:name=\"1\" name=\"n\">"},
        {"namespaces with markup",
         [](auto& c) {
             c.GetNamespaceAliases().Add("f", "urn:fixture");
             c.GetNamespaceAliases().Add("b", "b?<&\"");
             c.SetDefaultNamespaceURI("d?&");
         },
         "<f:Node xmlns=\"d?&amp;\" xmlns:b=\"b?&lt;&amp;&quot;\" xmlns:f=\"urn:fixture\" name=\"n\">"},
        {"a namespace whose alias was asked for",
         [](auto& c) { c.GetNamespaceAliases().GetAliasFromNamespace("urn:asked"); },
         "<AB:Node xmlns:AB=\"urn:fixture\" xmlns:AA=\"urn:asked\" name=\"n\">"},
        {"in-line schema", [](auto& c) { c.SetInLineSchema("raw='text'"); },
         "<AA:Node xmlns:AA=\"urn:fixture\" name=\"n\" \nraw='text'\n>"},
        {"in-line schema that is an element", [](auto& c) { c.SetInLineSchema("\n<s:schema xmlns:s='s'/>"); },
         "<AA:Node xmlns:AA=\"urn:fixture\" name=\"n\">\n<s:schema xmlns:s='s'/>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto node = Make<Node>();
        node->Set("name", "n").Add("Node");
        CSerializationContext context;
        c.set(context);
        const std::string xml = node->ToXml(false, false, EOLType_LF, context);
        const std::string start = xml.substr(0, c.start.size());
        EXPECT_EQ(start, c.start);
        // Only the root element has them.
        const std::string tag = c.start.substr(0, c.start.find("Node") + 4);
        const std::string name = tag.substr(tag.rfind('<') + 1);
        EXPECT_EQ(xml.substr(start.size()), "<" + name + "/></" + name + ">");
    }
}

TEST(XmlGeneratedClassTest, TypeAttribute) {
    const Model& derived = Model::New("Extended").Derived();
    const CSmartPtr<Object> extended(new Object(derived));
    CSerializationContext context = Ignoring("");
    const auto written = [&] { return extended->ToXml(false, false, EOLType_LF, context); };
    EXPECT_EQ(written(), "<Extended xmlns=\"urn:fixture\"/>");
    extended->SetName("Other");
    const std::string typed = written();
    EXPECT_EQ(typed,
              "<Other xmlns=\"urn:fixture\" xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
              "AA:type=\"Extended\"/>");
    context.SetWriteTypeAttribute(false);
    EXPECT_EQ(written(), "<Other xmlns=\"urn:fixture\"/>");
    extended->FromXml(typed.c_str());
    EXPECT_EQ(extended->Name(), "Other");
    const CSmartPtr<Object> plain(new Object(Model::New("Plain")));  // without base classes
    plain->SetName("Other");
    EXPECT_EQ(plain->ToXml(false, false, EOLType_LF, context), "<Other xmlns=\"urn:fixture\"/>");
}

TEST(XmlGeneratedClassTest, Depth) {
    const auto nested = [](int depth) {
        std::string xml = "<Node xmlns=\"urn:fixture\">";
        for (int i = 1; i < depth - 1; ++i)
            xml += "<Next>";
        xml += "<Next/>";
        for (int i = 1; i < depth - 1; ++i)
            xml += "</Next>";
        return xml + "</Node>";
    };
    CSerializationContext context = Ignoring("");
    const auto node = Make<Node>();
    node->FromXml(nested(1000).c_str(), context);
    EXPECT_EQ(node->ToXml(false, false, EOLType_LF, context), nested(1000));
    EXPECT_EQ(ErrorOf([&] { node->FromXml(nested(1001).c_str(), context); }),
              "elements are nested deeper than the limit of 1000 at line 1");
    context.SetMaxElementDepth(1001);
    node->FromXml(nested(1001).c_str(), context);
    EXPECT_EQ(node->ToXml(false, false, EOLType_LF, context), nested(1001));
    context.SetMaxElementDepth(2);
    EXPECT_EQ(ErrorOf([&] { node->ToXml(false, false, EOLType_LF, context); }),
              "Failed to convert the element [Node] to XML\nPath: /Node/Next/Next\n"
              "Failed to convert the element [Next] to XML\nFailed to convert the element [Next] to XML\nThe "
              "elements are nested deeper than the limit of 2.");
    // An object inside itself never ends.
    node->FromXml(nested(1).c_str());
    node->Hold("Next", node.Get());
    EXPECT_NE(ErrorOf([&] { node->ToXml(); }).find("deeper than the limit of 1000."), std::string::npos);
    (*node)["Next"].Clear();
}

// --- threads -----------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, FirstUseOfTheRecordsByManyThreads) {
    const CPrimitiveRestrictions facets(nullptr, -1, -1, "1", "2", nullptr, nullptr, -1, -1, -1,
                                        CWhitespaceUtils::WhitespaceRule_None, nullptr);
    const Model& model = Model::New("Box")
                             .Attribute("id", ItemType_i4, false)
                             .Prim("Title", kMnd, ItemType_decimal, "", nullptr, facets)
                             .AbsCls("Shape", kOpt, MakeShape)
                             .ClsCol<Node>("Node", 1, 2)
                             .UntpdCol("Rest", 0, -1, "##other");
    const std::string xml =
        "<Box xmlns=\"urn:fixture\" id=\"1\"><Title>1.5</Title><Circle><Radius>2</Radius></Circle>"
        "<Node name=\"n\"><Next/></Node><o:Foreign xmlns:o=\"urn:o\"/></Box>";
    std::atomic<int> waiting{4};
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string& result : results) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            for (int i = 0; i < 20; ++i) {
                const CSmartPtr<Object> object(new Object(model));
                object->FromXml(xml.c_str());
                result = object->ToXml(false, false, EOLType_LF, Ignoring(""));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& result : results)
        EXPECT_EQ(result, xml);
}

class Factory : public CClassfactoryBase {
public:
    using CClassfactoryBase::GetElementType;
    using CClassfactoryBase::GetElementTypeNamespaceUri;
};

TEST(ClassfactoryBaseTest, TypeOfAnElement) {
    struct Case {
        const char* attribute;
        const char* type;
        const char* ns;
    };
    const Case cases[] = {
        {"", "", ""},
        {"type='p:T'", "", ""},
        {"xsi:type='T'", "T", "urn:d"},
        {"xsi:type='&#xA; p:T&#x9; '", "T", "urn:p"},
        {"xsi:type=' '", "", ""},
        {"xsi:type='p:T'", "T", "urn:p"},
        {"xsi:type='q:T'", "T", ""},
        {"xsi:type='p:T:U'", "T:U", "urn:p"},
        {"xsi:type=':T'", "T", "urn:d"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.attribute);
        CXmlDocument document;
        document.LoadXml(
            (std::string("<a xmlns='urn:d' xmlns:p='urn:p' ") + kXsi + " " + c.attribute + "/>").c_str());
        EXPECT_EQ(Factory::GetElementType(document.GetDocumentElement()), c.type);
        EXPECT_EQ(Factory::GetElementTypeNamespaceUri(document.GetDocumentElement()), c.ns);
    }
}

}  // namespace
}  // namespace fixture
