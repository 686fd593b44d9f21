#include "kvxml/runtime/xml_generated_class.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"
#include "tests/support/fixture_classes.h"

namespace fixture {
namespace {

constexpr const char* kNoError = "(no error)";
constexpr const char* kXsi = "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

/// A mandatory, an optional and a mandatory value, then one or two objects.
class Quartet final : public Bound<Quartet> {
public:
    Quartet() {
        SetElementName("Quartet");
        Init();
    }
    static void MakeTables(Tables& t) {
        t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Quartet",
                                        kNamespace, true, false, -1, ItemType_Unknown, "", false);
        const auto rule = CWhitespaceUtils::WhitespaceRule_None;
        t.elements = {
            new CElementInfoSeqPrimMnd("A", kNamespace, 0, false, ItemType_string, "", rule, {}, nullptr),
            new CElementInfoSeqPrimOpt("B", kNamespace, 1, false, ItemType_string, "", rule, {}, nullptr),
            new CElementInfoSeqPrimMnd("C", kNamespace, 2, false, ItemType_string, "", rule, {}, nullptr),
            new CElementInfoSeqClsCol("D", kNamespace, 3, XmlElementType_Element),
        };
    }
    std::string Text() const {
        return a.Text() + " " + b.Text() + " " + c.Text() + " " + std::to_string(d.Count());
    }

    Value a{*this};
    Value b{*this};
    Value c{*this};
    Children<Empty> d{*this, "D", 1, 2};
};

/// A mandatory member without a tag, then an optional value.
class Wrapper final : public Bound<Wrapper> {
public:
    Wrapper() {
        SetElementName("Wrapper");
        Init();
    }
    static void MakeTables(Tables& t) {
        t.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Wrapper",
                                        kNamespace, false, false, -1, ItemType_Unknown, "", false);
        t.elements = {
            new CElementInfoSeqClsMnd("Part", kNamespace, 0, XmlElementType_PseudoElement, nullptr, 0),
            new CElementInfoSeqPrimOpt("Z", kNamespace, 1, false, ItemType_string, "",
                                       CWhitespaceUtils::WhitespaceRule_None, {}, nullptr),
        };
    }

    Child<Part> part{*this, "Part", true};
    Value z{*this};
};

/// More attributes than fit into one machine word, all required.
class ManyAttributes final : public Bound<ManyAttributes> {
public:
    static constexpr int kCount = 70;

    ManyAttributes() {
        SetElementName("ManyAttributes");
        for (int i = 0; i < kCount; ++i)
            m_values.push_back(std::make_unique<Value>(*this));
        Init();
    }
    static void MakeTables(Tables& t) {
        t.info =
            new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "ManyAttributes",
                                   kNamespace, true, false, -1, ItemType_Unknown, "", false);
        for (int i = 0; i < kCount; ++i) {
            t.attributes.push_back(
                new CAttributeInfoPrimitive(("a" + std::to_string(i)).c_str(), "", i, false, ItemType_i4, "",
                                            CWhitespaceUtils::WhitespaceRule_Collapse, {}, nullptr));
        }
    }
    static std::string Document(int from, int to) {
        std::string xml = "<ManyAttributes xmlns=\"urn:fixture\"";
        for (int i = from; i < to; ++i)
            xml += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
        return xml + "/>";
    }

private:
    std::vector<std::unique_ptr<Value>> m_values;
};

/// Its group kind is none that there is.
class OddGroup final : public Bound<OddGroup> {
public:
    OddGroup() { SetElementName("OddGroup"); }
    static void MakeTables(Tables& t) {
        t.info =
            new CParentElementInfo(static_cast<XmlElementGroupType>(7), XmlElementType_Element, "OddGroup",
                                   kNamespace, false, false, -1, ItemType_Unknown, "", false);
    }
};

/// What `T` writes after reading `xml`, or the full message of the failure.
template <class T>
std::string Outcome(const std::string& xml, const std::string& ignore = "") {
    const CSerializationContext context = Ignoring(ignore);
    const auto object = Make<T>();
    std::string written;
    const std::string error = ErrorOf([&] {
        object->FromXml(xml.c_str(), context);
        written = object->ToXml(false, false, EOLType_LF, context);
    });
    return error == kNoError ? written : error;
}

struct Row {
    const char* what;
    std::string xml;
    const char* ignore;
    std::string outcome;
};

template <class T>
void ExpectOutcomes(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Outcome<T>(row.xml, row.ignore), row.outcome);
    }
}

// --- attributes --------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, Attributes) {
    const std::string fixtureNs = " xmlns=\"urn:fixture\"";
    const std::string one = "<Measure xmlns=\"urn:fixture\">1.000</Measure>";
    const std::string metres = "<Measure xmlns=\"urn:fixture\" unit=\"m\">1.000</Measure>";
    const auto measure = [&](const std::string& attributes) {
        return "<Measure" + fixtureNs + " " + attributes + ">1</Measure>";
    };
    ExpectOutcomes<Measure>({
        {"none", measure(""), "", one},
        {"known", measure("unit='m'"), "", metres},
        {"unknown", measure("unit='m' x='1'"), "", "Unexpected Attribute found.\nPath: /Measure/@x"},
        {"unknown, ignored", measure("x='1' unit='m'"), "a", metres},
        {"other namespace", measure("xmlns:o='urn:o' o:unit='m'"), "",
         "Unexpected Attribute found.\nPath: /Measure/o:@unit"},
        {"other namespace, ignored", measure("xmlns:o='urn:o' o:unit='m'"), "n", metres},
        {"case", measure("Unit='m'"), "", "Unexpected Attribute found.\nPath: /Measure/@Unit"},
        {"about the document",
         measure(std::string(kXsi) +
                 " xsi:type='x' xsi:schemaLocation='a b' xsi:noNamespaceSchemaLocation='c'"),
         "", one},
        {"other of that namespace", measure(std::string(kXsi) + " xsi:other='x'"), "",
         "Unexpected Attribute found.\nPath: /Measure/xsi:@other"},
        {"type without namespace", measure("type='x'"), "",
         "Unexpected Attribute found.\nPath: /Measure/@type"},
    });
    ExpectOutcomes<ManyAttributes>({
        {"all", ManyAttributes::Document(0, 70), "", ManyAttributes::Document(0, 70)},
        {"first missing", ManyAttributes::Document(1, 70), "",
         "Failed to process the element.\nPath: /ManyAttributes\n"
         "Failed to find the required Attribute [a0]."},
        {"last missing", ManyAttributes::Document(0, 69), "",
         "Failed to process the element.\nPath: /ManyAttributes\n"
         "Failed to find the required Attribute [a69]."},
    });
}

TEST(XmlGeneratedClassTest, NilOfClasses) {
    const auto note = [](const std::string& attributes, const std::string& content) {
        return std::string("<Note xmlns='urn:fixture' ") + kXsi + " " + attributes + ">" + content +
               "</Note>";
    };
    const std::string nil =
        "<Note xmlns=\"urn:fixture\" xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "AA:nil=\"true\"/>";
    const std::string full = "<Note xmlns=\"urn:fixture\"><Text>t</Text></Note>";
    ExpectOutcomes<Note>({
        {"true", note("xsi:nil='true'", ""), "", nil},
        {"capitals", note("xsi:nil='TRUE'", ""), "", nil},
        {"1", note("xsi:nil='1'", ""), "", nil},
        {"content of nil is passed over", note("xsi:nil='true'", "<Other/>"), "", nil},
        {"attributes of nil are read", note("xsi:nil='true' id='7'", ""), "",
         "<Note xmlns=\"urn:fixture\" id=\"7\" xmlns:AA=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "AA:nil=\"true\"/>"},
        {"unknown attribute of nil", note("xsi:nil='true' x=''", ""), "",
         "Unexpected Attribute found.\nPath: /Note/@x"},
        {"false", note("xsi:nil='False'", "<Text>t</Text>"), "", full},
        {"0", note("xsi:nil='0'", "<Text>t</Text>"), "", full},
        {"not nil, no content", note("xsi:nil='0'", ""), "",
         "Failed to find the required child element [Text].\nPath: /Note"},
        {"yes", note("xsi:nil='yes'", ""), "",
         "Unexpected Value [yes] for 'nil' Attribute found.\nPath: /Note/xsi:@nil"},
        {"no namespace", note("nil='true'", "<Text>t</Text>"), "",
         "Unexpected Attribute found.\nPath: /Note/@nil"},
    });
    const std::string notNillable = "Invalid use of 'nil' attribute in non-nillable element.\nPath: /Empty";
    for (const char* value : {"true", "false", "0", "what"}) {
        EXPECT_EQ(
            Outcome<Empty>(std::string("<Empty xmlns='urn:fixture' ") + kXsi + " xsi:nil='" + value + "'/>"),
            notNillable);
    }
}

// --- sequences ---------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, LastMemberAfterUnknownElements) {
    const auto note = [](const std::string& content) {
        return "<Note xmlns=\"urn:fixture\">" + content + "</Note>";
    };
    const std::string text = "<Text>t</Text>";
    ExpectOutcomes<Note>({
        {"one", note(text + "<X/>"), "e", note(text)},
        // The last member is offered what follows the first unknown element, and is mandatory.
        {"two", note(text + "<X/><Y/>"), "e",
         "Failed to find the required child element [Text].\nPath: /Note"},
        {"again", note(text + "<X/><Text>u</Text>"), "e", note("<Text>u</Text>")},
    });
    ExpectOutcomes<Empty>({
        {"no members", "<Empty xmlns='urn:fixture'>text</Empty>", "", "<Empty xmlns=\"urn:fixture\"/>"},
        {"no members, a child", "<Empty xmlns='urn:fixture'><X/></Empty>", "",
         "Failed read all the elements held within the element [Empty]. The unexpected element [X] remains "
         "un "
         "processed\nPath: /Empty"},
        {"no members, children ignored", "<Empty xmlns='urn:fixture'><X/><Y><Z/></Y></Empty>", "e",
         "<Empty xmlns=\"urn:fixture\"/>"},
    });
}

TEST(XmlGeneratedClassTest, OneTreeReadInDifferentWays) {
    CXmlDocument document;
    document.LoadXml("<q:Quartet xmlns:q='urn:fixture'><A>1</A><q:A>4</q:A><C/><q:C/><D/><q:D/></q:Quartet>");
    const CXmlElement* root = document.GetDocumentElement();
    const auto read = [&](const char* ignore) {
        const auto object = Make<Quartet>();
        const std::string error = ErrorOf([&] { object->FromXmlElement(root, Ignoring(ignore)); });
        return error == kNoError ? object->Text() : error;
    };
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(read(""), "Failed to find the required child element [A].\nPath: /q:Quartet");
        EXPECT_EQ(read("ec"), "4 (none)  1");
        EXPECT_EQ(read("nc"), "Failed to find the required child element [C].\nPath: /q:Quartet");
        EXPECT_EQ(read("nec"), "1 (none)  2");
    }
    EXPECT_TRUE(Make<Quartet>()->Claims(Ignoring("n"), root->GetFirstElement()));
    EXPECT_FALSE(Make<Quartet>()->Claims(Ignoring(""), root->GetFirstElement()));
    EXPECT_TRUE(Make<Quartet>()->Claims(Ignoring(""), root->GetFirstElement()->GetNextSiblingElement()));
    EXPECT_FALSE(Make<Quartet>()->Claims(Ignoring(""), root));
    EXPECT_FALSE(Make<Quartet>()->Claims(Ignoring(""), nullptr));
    EXPECT_EQ(Make<Quartet>()->ElementRecords(), 4);
    EXPECT_EQ(Make<Empty>()->ElementRecords(), 0);
}

TEST(XmlGeneratedClassTest, SimpleContent) {
    ExpectOutcomes<Measure>({
        {"format", "<Measure xmlns='urn:fixture'>2.5</Measure>", "",
         "<Measure xmlns=\"urn:fixture\">2.500</Measure>"},
        {"infinite", "<Measure xmlns='urn:fixture'>-INF</Measure>", "",
         "<Measure xmlns=\"urn:fixture\">-INF</Measure>"},
        {"no number", "<Measure xmlns='urn:fixture'>abc</Measure>", "",
         "Failed to process the element.\nPath: /Measure\nThe value [abc] can not be converted to a r8"},
        {"a child", "<Measure xmlns='urn:fixture'>1<X/></Measure>", "",
         "Failed read all the elements held within the element [Measure]. The unexpected element [X] remains "
         "un "
         "processed\nPath: /Measure"},
        {"a child, ignored", "<Measure xmlns='urn:fixture'>1<X/>2</Measure>", "e",
         "<Measure xmlns=\"urn:fixture\">12.000</Measure>"},
    });
    ExpectOutcomes<RawText>({
        {"kept as text", "<RawText xmlns='urn:fixture'> no &lt;number> </RawText>", "",
         "<RawText xmlns=\"urn:fixture\"> no &lt;number&gt; </RawText>"},
        {"empty", "<RawText xmlns='urn:fixture'></RawText>", "", "<RawText xmlns=\"urn:fixture\"/>"},
    });
    CSerializationContext context;
    context.SetStripCDATA(false);
    const auto text = Make<RawText>();
    text->FromXml("<RawText xmlns='urn:fixture'><![CDATA[a<b]]></RawText>", context);
    EXPECT_EQ(text->value.Text(), "<![CDATA[a<b]]>");
    EXPECT_EQ(text->ToXml(false, false), "<AA:RawText xmlns:AA=\"urn:fixture\"><![CDATA[a<b]]></AA:RawText>");
}

TEST(XmlGeneratedClassTest, MembersWithoutTag) {
    const auto wrapper = [](const std::string& rest) { return "<Wrapper xmlns=\"urn:fixture\"" + rest; };
    const std::string first = "<First>f</First>";
    ExpectOutcomes<Wrapper>({
        {"elements", wrapper(">" + first + "<Z>z</Z></Wrapper>"), "",
         wrapper(">" + first + "<Z>z</Z></Wrapper>")},
        {"attribute", wrapper(" mark=\"m\">" + first + "</Wrapper>"), "",
         wrapper(" mark=\"m\">" + first + "</Wrapper>")},
        {"all", wrapper(" mark=\"m\">" + first + "<Second>2</Second></Wrapper>"), "",
         wrapper(" mark=\"m\">" + first + "<Second>2</Second></Wrapper>")},
        {"wrong second", wrapper(">" + first + "<Second>s</Second></Wrapper>"), "",
         "Failed to set the property value [Second].\nPath: /Wrapper/Second\n"
         "The value [s] can not be converted to a i4"},
        {"left over", wrapper(">" + first + "<X/></Wrapper>"), "",
         "Failed read all the elements held within the element [Wrapper]. The unexpected element [X] remains "
         "un "
         "processed\nPath: /Wrapper"},
        {"unknown before, ignored", wrapper("><X/>" + first + "<Z>z</Z></Wrapper>"), "e",
         wrapper(">" + first + "<Z>z</Z></Wrapper>")},
    });
    // An optional member of which nothing is there is not made.
    const auto kinds = Make<Kinds>();
    kinds->FromXml(kSmallKindsXml);
    EXPECT_EQ(kinds->part.object, nullptr);
}

// --- objects -----------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, RoundTrip) {
    const auto kinds = Make<Kinds>();
    Fill(*kinds);
    EXPECT_EQ(kinds->ToXml(false), kKindsXml);
    const auto read = Make<Kinds>();
    read->FromXml(kKindsXml);
    Check(*read);
    EXPECT_EQ(read->ToXml(false), kKindsXml);

    const auto all = Make<AllKinds>();
    Fill(*all);
    const auto allRead = Make<AllKinds>();
    std::string xml = all->ToXml();
    for (const bool isFormatted : {true, false, false}) {  // into one object
        ASSERT_EQ(ErrorOf([&] { allRead->FromXml(xml.c_str()); }), kNoError);
        Check(*allRead);
        xml = allRead->ToXml(true, isFormatted);
    }
}

TEST(XmlGeneratedClassTest, ReadingReplacesTheContent) {
    const auto used = Make<Kinds>();
    Fill(*used);
    const CSmartPtr<Note> note = used->note.object;
    used->FromXml(kSmallKindsXml);
    const auto fresh = Make<Kinds>();
    fresh->FromXml(kSmallKindsXml);
    EXPECT_EQ(used->ToXml(), fresh->ToXml());
    EXPECT_EQ(used->note.object, nullptr);
    EXPECT_EQ(used->size.Text(), "10");
    EXPECT_EQ(note->id.Text(), "n1");  // whoever shares an old child keeps it

    EXPECT_NE(
        ErrorOf([&] { used->FromXml("<Kinds xmlns='urn:fixture' id='1' level='red'><Title/></Kinds>"); }),
        kNoError);
    used->FromXml(kKindsXml);
    Check(*used);

    const auto nil = Make<Note>();
    nil->SetNil(true);
    nil->FromXml("<Note xmlns='urn:fixture'><Text>t</Text></Note>");
    EXPECT_FALSE(nil->IsNil());
}

TEST(XmlGeneratedClassTest, InnermostPathWins) {
    struct Case {
        std::string from;
        std::string to;
        std::string message;
        const char* path;
    };
    const Case cases[] = {
        {"-2.000", "two",
         "Failed to process the element.\nPath: /AA:Kinds/AA:Point[2]\nThe value [two] can not be converted "
         "to a r8",
         "/AA:Kinds/AA:Point[2]"},
        {">42<", ">4.2<",
         "Failed to set the property value [Count].\nPath: /AA:Kinds/AA:Count\n"
         "The value [4.2] can not be converted to a i4",
         "/AA:Kinds/AA:Count"},
        {"<AA:Node/>", "<AA:Node><AA:Next/><AA:Next/></AA:Node>",
         "Failed read all the elements held within the element [Node]. The unexpected element [Next] remains "
         "un "
         "processed\nPath: /AA:Kinds/AA:Node[1]/AA:Node/AA:Node",
         "/AA:Kinds/AA:Node[1]/AA:Node/AA:Node"},
        {"level=\"blue\"", "level=\"pink\"",
         "Failed to set the property value [level].\nPath: /AA:Kinds/@level\nNo such color [pink]",
         "/AA:Kinds/@level"},
        {" level=\"blue\"", "",
         "Failed to process the element.\nPath: /AA:Kinds\nFailed to find the required Attribute [level].",
         "/AA:Kinds"},
        {"<AA:Shade>red", "<AA:Shade>Red",
         "Failed to set the property value [Shade].\nPath: /AA:Kinds/AA:Shade\nNo such color [Red]",
         "/AA:Kinds/AA:Shade"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.to);
        std::string xml = kKindsXml;
        xml.replace(xml.find(c.from), c.from.size(), c.to);
        try {
            Make<Kinds>()->FromXml(xml.c_str());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const CKvException& e) {
            EXPECT_EQ(e.GetFullMessage(), c.message);
            EXPECT_EQ(e.GetPath(), c.path);
        }
    }
    // A failure that has a path already goes on as the root of the family.
    try {
        Make<Note>()->FromXml("<Note xmlns='urn:fixture'/>");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const CKvException& e) {
        EXPECT_EQ(typeid(e), typeid(CKvException));
    }
    EXPECT_THROW(Make<Measure>()->FromXml("<Measure xmlns='urn:fixture'>x</Measure>"),
                 CKvValidationException);
}

TEST(XmlGeneratedClassTest, FailuresOfWriting) {
    struct Case {
        const char* what;
        std::function<void(Kinds&)> spoil;
        const char* message;
    };
    const Case cases[] = {
        {"required attribute", [](Kinds& k) { k.id.variant.Clear(); },
         "Failed to convert the element [Kinds] to XML\nFailed to convert attributes to XML\n"
         "The Property [id] is mandatory, it may not be NULL"},
        {"required enumeration", [](Kinds& k) { k.level.variant.Clear(); },
         "Failed to convert the element [Kinds] to XML\nFailed to convert attributes to XML\n"
         "The Property [level] is mandatory, it may not be NULL"},
        {"mandatory value", [](Kinds& k) { k.title.variant.Clear(); },
         "Failed to convert the element [Kinds] to XML\nThe Property [Title] is mandatory, it may not be "
         "NULL"},
        {"mandatory enumeration", [](Kinds& k) { k.color.variant.Clear(); },
         "Failed to convert the element [Kinds] to XML\nThe Property [Color] is mandatory, it may not be "
         "NULL"},
        {"mandatory object", [](Kinds& k) { k.length.object = nullptr; },
         "Failed to convert the element [Kinds] to XML\nThe Property [Length] is mandatory, it may not be "
         "NULL"},
        {"child of child", [](Kinds& k) { k.points.Get().Item(1)->value.variant.Clear(); },
         "Failed to convert the element [Kinds] to XML\nFailed to convert the element [Point] to XML\n"
         "Invalid Type 0 to convert to string"},
        {"items never asked for", [](Kinds& k) { k.points.Reset(); },
         "Failed to convert the element [Kinds] to XML\n"
         "The Minimum number of [Point] elements allowed in this collection is 1"},
        {"few items", [](Kinds& k) { k.points.Get().Clear(); },
         "Failed to convert the element [Kinds] to XML\n"
         "The Minimum number of [Point] elements allowed in this collection is 1"},
        {"many items",
         [](Kinds& k) {
             for (int i = 0; i < 2; ++i)
                 k.points.Get().CreateNew()->value.variant.SetR8(0);
         },
         "Failed to convert the element [Kinds] to XML\n"
         "The Maximum number of [Point] elements allowed in this collection is 3"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto kinds = Make<Kinds>();
        Fill(*kinds);
        c.spoil(*kinds);
        EXPECT_EQ(ErrorOf([&] { kinds->ToXml(); }), c.message);
        EXPECT_THROW(kinds->ToXml(), CKvValidationException);
    }
    const auto kinds = Make<Kinds>();
    Fill(*kinds);
    kinds->points.Get().Clear();
    EXPECT_EQ(kinds->ToXml(false, false, EOLType_LF, Ignoring("c")).find("<Point>"), std::string::npos);

    const auto odd = Make<OddGroup>();
    EXPECT_EQ(ErrorOf([&] { odd->ToXml(); }),
              "Failed to convert the element [OddGroup] to XML\nUnknown XML Group Type");
    EXPECT_EQ(ErrorOf([&] { odd->FromXml("<OddGroup xmlns='urn:fixture'/>"); }),
              "Failed to process the element.\nPath: /OddGroup\nUnknown Group Type");
}

TEST(XmlGeneratedClassTest, SettingsOfTheRootElement) {
    const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
    struct Case {
        const char* what;
        std::function<void(CSerializationContext&)> set;
        std::string start;
    };
    const Case cases[] = {
        {"nothing", [](auto&) {}, "<AA:Node xmlns:AA=\"urn:fixture\" name=\"n\">"},
        {"default namespace", [](auto& c) { c.SetDefaultNamespaceURI("urn:fixture"); },
         "<Node xmlns=\"urn:fixture\" name=\"n\">"},
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
        {"in-line schema", [](auto& c) { c.SetInLineSchema("raw='text'"); },
         "<AA:Node xmlns:AA=\"urn:fixture\" name=\"n\" \nraw='text'\n>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto node = Make<Node>();
        node->name.variant.SetString("n");
        node->nodes.Get().CreateNew();
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
    const std::string plain = "<AA:Other xmlns:AA=\"urn:fixture\"/>";
    const std::string typed =
        "<AA:Other xmlns:AA=\"urn:fixture\" xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "AB:type=\"AA:Extended\"/>";
    const auto extended = Make<Extended>();
    EXPECT_EQ(extended->ToXml(false, false), "<AA:Extended xmlns:AA=\"urn:fixture\"/>");
    extended->SetName("Other");
    EXPECT_EQ(extended->ToXml(false, false), typed);
    CSerializationContext context;
    context.SetWriteTypeAttribute(false);
    EXPECT_EQ(extended->ToXml(false, false, EOLType_LF, context), plain);
    extended->FromXml(typed.c_str());
    EXPECT_EQ(extended->Name(), "Other");
    const auto empty = Make<Empty>();  // without base classes
    empty->SetName("Other");
    EXPECT_EQ(empty->ToXml(false, false), plain);
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
    EXPECT_EQ(Outcome<Node>(nested(1000)), nested(1000));
    EXPECT_NE(Outcome<Node>(nested(1001)).find("1000"), std::string::npos);
    EXPECT_NE(Outcome<Node>(nested(1001)).find(" line 1"), std::string::npos);

    const auto node = Make<Node>();
    context.SetMaxElementDepth(1001);
    node->FromXml(nested(1001).c_str(), context);
    EXPECT_EQ(node->ToXml(false, false, EOLType_LF, context), nested(1001));
    context.SetMaxElementDepth(2);
    EXPECT_EQ(
        ErrorOf([&] { node->ToXml(false, false, EOLType_LF, context); }),
        "Failed to convert the element [Node] to XML\nFailed to convert the element [Next] to XML\n"
        "Failed to convert the element [Next] to XML\nThe elements are nested deeper than the limit of 2.");
    // An object inside itself never ends.
    node->FromXml(nested(1).c_str());
    node->next.object = node;
    EXPECT_NE(ErrorOf([&] { node->ToXml(); }).find("deeper than the limit of 1000."), std::string::npos);
    node->next.object = nullptr;
}

// --- metadata ----------------------------------------------------------------------------------------------

TEST(XmlGeneratedClassTest, TablesAreFreedAndBuiltAgain) {
    EXPECT_EQ(Outcome<Measure>("<Measure xmlns='urn:fixture'>1</Measure>"),
              "<Measure xmlns=\"urn:fixture\">1.000</Measure>");
    const int builds = Measure::TableBuilds();
    Measure::CleanTables();
    Measure::CleanTables();
    EXPECT_EQ(Measure::TableBuilds(), builds);
    EXPECT_EQ(Outcome<Measure>("<Measure xmlns='urn:fixture'>2</Measure>"),
              "<Measure xmlns=\"urn:fixture\">2.000</Measure>");
    EXPECT_EQ(Measure::TableBuilds(), builds + 1);
}

TEST(XmlGeneratedClassTest, FirstUseByManyThreads) {
    Kinds::CleanTables();
    Measure::CleanTables();
    Node::CleanTables();
    const int builds = Kinds::TableBuilds() + Measure::TableBuilds() + Node::TableBuilds();
    std::atomic<int> waiting{4};
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < results.size(); ++t) {
        threads.emplace_back([&, t] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            for (int i = 0; i < 20; ++i) {
                const auto kinds = Make<Kinds>();
                kinds->FromXml(kKindsXml);
                results[t] = kinds->ToXml(false);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& result : results)
        EXPECT_EQ(result, kKindsXml);
    EXPECT_EQ(Kinds::TableBuilds() + Measure::TableBuilds() + Node::TableBuilds(), builds + 3);
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
        {"xsi:type='T'", "T", ""},
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
