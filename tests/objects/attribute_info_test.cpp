#include "kvxml/objects/attribute_info.h"

#include <gtest/gtest.h>

#include <string>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"

namespace fixture {
namespace {

TEST(AttributeInfoTest, OptionalDefaultsOnOutput) {
    const Model& model = Model::New("Box")
                             .Attribute("size", ItemType_i4, true, "10")
                             .EnumAttribute("paint", true, "green")
                             .Attribute("lang", ItemType_string, true, nullptr, {}, kAttributeNamespace);
    const std::string lang = " xmlns:AA=\"urn:fixture:attributes\" AA:lang=\"\"";
    struct Case {
        const char* what;
        const char* size;  // null: not set
        const char* paint;
        const char* lang;
        std::string all;
        std::string withoutDefaults;
    };
    const Case cases[] = {
        {"unset", nullptr, nullptr, nullptr, "", ""},
        {"default", "10", nullptr, nullptr, " size=\"10\"", ""},
        {"other", "100", nullptr, nullptr, " size=\"100\"", " size=\"100\""},
        {"default enumeration", nullptr, "1", nullptr, " paint=\"green\"", ""},
        {"other enumeration", "10", "0", nullptr, " size=\"10\" paint=\"red\"", " paint=\"red\""},
        {"enumeration without text", nullptr, "99", nullptr, " paint=\"\"", " paint=\"\""},
        {"empty without default", nullptr, nullptr, "", lang, lang},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const CSmartPtr<Object> object(new Object(model));
        (*object)["size"].Clear();
        if (c.size != nullptr) object->Set("size", c.size);
        if (c.paint != nullptr) object->Set("paint", c.paint);
        if (c.lang != nullptr) (*object)["lang"].SetString(c.lang);
        CSerializationContext context = Ignoring("");
        const std::string start = "<Box xmlns=\"urn:fixture\"";
        EXPECT_EQ(object->ToXml(false, false, EOLType_LF, context), start + c.all + "/>");
        context.SetNoOptionalAttributeDefaultOutput(true);
        EXPECT_EQ(object->ToXml(false, false, EOLType_LF, context), start + c.withoutDefaults + "/>");
    }
    // An attribute that is there overrides the default, one that is not leaves it.
    ExpectOutcomes(model, {{"", "", "", " size=\"10\"/>"}, {" size='12'", "", "", " size=\"12\"/>"}});
}

/// One of its properties can not be accessed, and it makes no collection.
class Refusing final : public Object {
public:
    using Object::Object;
    int refused = -1;

protected:
    void AccessProperty(int index, bool read, KvVariant&) override {
        if (index == refused) throw CKvInvalidStateException(read ? "no reading" : "no setting");
    }
};

TEST(AttributeInfoTest, PropertiesThatRefuse) {
    const Model& empty = Model::New("Empty");
    static const Model* emptyModel = &empty;
    const Model& model =
        Model::New("Refusing")
            .Attribute("p", ItemType_string)
            .EnumAttribute("e")
            .Prim("P", kOpt, ItemType_string)
            .Enum("E", kOpt)
            .AbsCls("C", kOpt,
                    [](CXmlElement*) -> CSmartPtr<CXmlObjectBase> { return new Object(*emptyModel); })
            .AnyCol("L", nullptr);
    const std::string start =
        "<Refusing xmlns='urn:fixture' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
    struct Case {
        int index;
        const char* name;
        const char* rest;
        const char* path;
    };
    const Case cases[] = {
        {0, "p", " p='1'/>", "/Refusing/@p"},
        {1, "e", " e='red'/>", "/Refusing/@e"},
        {2, "P", "><P>1</P></Refusing>", "/Refusing/P"},
        {2, "P", "><P xsi:nil='true'/></Refusing>", "/Refusing/P"},
        {3, "E", "><E>red</E></Refusing>", "/Refusing/E"},
    };
    const CSmartPtr<Refusing> object(new Refusing(model));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        object->refused = c.index;
        EXPECT_EQ(ErrorOf([&] { object->FromXml((start + c.rest).c_str()); }),
                  std::string("Failed to set the property value [") + c.name + "].\nPath: " + c.path +
                      "\nno setting");
    }
    for (int index = 0; index < 6; ++index) {
        object->refused = index;
        EXPECT_EQ(ErrorOf([&] { object->ToXml(); }),
                  std::string("Failed to convert the element [Refusing] to XML\nPath: /Refusing\n") +
                      (index < 2 ? "Failed to convert attributes to XML\n" : "") +
                      "Failed to get the property value for [" + "pePECL"[index] + "].\nno reading");
    }
    object->refused = -1;
    EXPECT_EQ(
        ErrorOf([&] { object->FromXml((start + "><L/></Refusing>").c_str()); }),
        "Failed to process the element.\nPath: /Refusing\nThe Property [L] is mandatory, it may not be NULL");
}

TEST(AttributeInfoTest, Wildcards) {
    const Model& model = Model::New("Wild").Attribute("id", ItemType_string).AnyAttribute("any", "##other");
    CXmlDocument document;
    document.LoadXml(
        "<r xmlns='urn:fixture' xmlns:f='urn:fixture' xmlns:p='urn:p'>"
        "<Wild p:x='1' id='2' p:id='3' y='&lt;'/><Wild id='4' p:x='5'/><Wild/><Wild f:x=''/></r>");
    const CSmartPtr<Object> wild(new Object(model));  // one object, and names that were seen before
    const char* expected[] = {
        "<Wild xmlns=\"urn:fixture\" id=\"2\" xmlns:p=\"urn:p\" p:x=\"1\" p:id=\"3\" y=\"&lt;\"/>",
        "<Wild xmlns=\"urn:fixture\" id=\"4\" xmlns:p=\"urn:p\" p:x=\"5\"/>",
        "<Wild xmlns=\"urn:fixture\"/>"};
    const CXmlElement* element = document.GetDocumentElement()->GetFirstElement();
    for (const char* xml : expected) {
        wild->FromXmlElement(element);
        EXPECT_EQ(wild->ToXml(false, false, EOLType_LF, Ignoring("")), xml);
        element = element->GetNextSiblingElement();
    }
    EXPECT_EQ(ErrorOf([&] { wild->FromXmlElement(element); }),
              "Unexpected Attribute found.\nPath: /r/Wild[4]/@x");
    const CSmartPtr<CAttributeCol> twice(new CAttributeCol());
    twice->Add("x", "", "1");
    twice->Add("x", "", "2");
    (*wild)["any"].SetXmlCollection(twice.Get());
    const auto expectError = [&](const char* part) {
        EXPECT_NE(ErrorOf([&] { wild->ToXml(); }).find(part), std::string::npos) << part;
    };
    expectError("The attribute [x] occurs more than once.");
    const CSmartPtr<CAttributeCol> moved(new CAttributeCol("##other", "urn:t"));
    moved->Add("x", "urn:x", "1")->SetNamespace("urn:t");
    (*wild)["any"].SetXmlCollection(moved.Get());
    expectError("Invalid Attribute [x]. The attributes namespace is Inappropriate.");
    (*wild)["any"].SetXmlCollection(new CElementCol("", "", 0, -1));
    expectError("Serialization Data Error : The collection should be a CAttributeCol, it was not!");
}

}  // namespace
}  // namespace fixture
