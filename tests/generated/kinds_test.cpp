// Classes generated from data/kinds.xsd: every construct is read, written and refused as the schema says.
#include <gtest/gtest.h>

#include <string>

#include "kinds.h"
#include "kvxml/kvxml.h"

namespace {

using namespace KvXmlLib16;
using namespace Kinds;

std::string Root(const std::string& content, const std::string& attributes = "") {
    return "<kinds xmlns=\"urn:kinds\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"" +
           (attributes.empty() ? "" : " " + attributes) +
           (content.empty() ? "/>" : ">" + content + "</kinds>");
}

CSerializationContext PlainContext() {
    CSerializationContext context;
    context.SetDefaultNamespaceURI("urn:kinds");
    context.SetWriteDefaultElementValues(true);
    context.GetNamespaceAliases().Add("xsi", "http://www.w3.org/2001/XMLSchema-instance");
    return context;
}

std::string Write(const CTableClass& object) {
    return object.ToXml(false, false, EOLType_LF, PlainContext());
}

struct Accepted {
    const char* what;
    std::string content;
    std::string attributes = {};
};

TEST(GeneratedKinds, WritesWhatItReads) {
    const Accepted cases[] = {
        {"nothing", ""},
        {"two patterns", "<class>ABC</class>"},
        {"list with a bound", "<sizes>1 -2 3</sizes>"},
        {"empty list", "<sizes/>"},
        {"union", "<either>7</either><either>red</either><either>dark-green</either>"},
        {"enumeration with an empty text", "<colour>red</colour><colour/>"},
        {"text that a pattern forms", "<account>001234</account>"},
        {"simple content", "<price currency=\"EUR\">12.5</price>"},
        {"recursion", "<tree><leaf>a</leaf><tree><leaf>b</leaf></tree><tree/></tree>"},
        {"substitutes",
         "<circle><name>c</name><radius>1.5</radius></circle><square tilted=\"false\"><name>s</name>"
         "<side>2</side></square>"},
        {"branch of a choice", "<card>c</card>"},
        {"branch of several", "<iban>i</iban><bank>b</bank>"},
        {"order of a repeated choice", "<p>1</p><q>2</q><q>3</q><p>4</p>"},
        {"repeated group", "<x>1</x><y>2</y><x>3</x><x>5</x><y>6</y>"},
        {"name that stands twice", "<last><a>1</a><c>2</c><a>3</a></last>"},
        {"wildcards", "<n:other xmlns:n=\"urn:n\"><n:deep a=\"1\">t</n:deep></n:other>"},
        {"attributes", "", "colour=\"red\" fixed=\"1\" list=\"a b\""},
    };
    for (const Accepted& one : cases) {
        SCOPED_TRACE(one.what);
        const std::string xml = Root(one.content, one.attributes);
        const CSmartPtr<CKinds> object(new CKinds());
        try {
            object->FromXml(xml);
            const CSmartPtr<CKinds> again(new CKinds());
            again->FromXml(Write(*object));
            EXPECT_TRUE(*again == *object);
            const CSmartPtr<CKinds> copy(new CKinds());
            copy->CopyFrom(*object);
            EXPECT_EQ(Write(*copy), Write(*object));
            EXPECT_EQ(Write(*object), xml);
        } catch (const CKvException& e) {
            ADD_FAILURE() << e.GetFullMessage();
        }
    }
}

struct Refused {
    std::string content;
    const char* message;  // part of it
    std::string attributes = {};
};

TEST(GeneratedKinds, RefusesWhatTheSchemaRefuses) {
    const Refused cases[] = {
        {"<class>ABCD</class>", "class"},
        {"<class>ab</class>", "class"},
        {"<sizes>1 2 3 4</sizes>", "sizes"},
        {"<sizes>1 x</sizes>", "sizes"},
        {"<either>blue</either>", "either"},
        {"<colour>blue</colour>", "colour"},
        {"<colour>red</colour><colour>red</colour><colour>red</colour>", "colour"},
        {"<account>1234</account>", "account"},
        {"<price>12.5</price>", "currency"},
        {"<price currency='EUR'>x</price>", "price"},
        {"<shape><name>n</name></shape>", "shape"},
        {"<circle><name>n</name></circle>", "radius"},
        {"<card>c</card><iban>i</iban>", "iban"},
        {"<bank>b</bank>", "bank"},
        {"<x>1</x><x>1</x><x>1</x><x>1</x>", "x"},
        {"<y>1</y>", "y"},
        {"<tree><leaf/><leaf/><leaf/></tree>", "leaf"},
        {"<b>1</b><a>1</a>", "a"},
        {"<last><a>1</a><c>2</c></last>", "a"},
        {"<unknown/>", "unknown"},
        {"text", "kinds"},
        {"", "colour", "colour='blue'"},
        {"", "fixed", "fixed='2'"},
        {"", "list", "list=''"},
        {"", "unknown", "unknown='1'"},
    };
    for (const Refused& one : cases) {
        SCOPED_TRACE(one.content + one.attributes);
        try {
            const CSmartPtr<CKinds> object(new CKinds());
            object->FromXml(Root(one.content, one.attributes));
            ADD_FAILURE() << "accepted";
        } catch (const CKvException& e) {
            EXPECT_NE(e.GetFullMessage().find(one.message), std::string::npos) << e.GetFullMessage();
        }
    }
}

TEST(GeneratedKinds, HasAccessorsThatAgree) {
    CSmartPtr<CKinds> object(new CKinds());
    EXPECT_EQ(object->GetColourAttribute(), EColour::DarkGreen);  // the default
    EXPECT_FALSE(object->HasColourAttribute());
    EXPECT_THROW(object->GetPrice(), CKvInvalidStateException);
    object->MakePrice().SetCurrency("EUR");
    object->GetPrice().SetValue(CDecimal("2.50"));
    object->SetCard("c");
    object->SetIban("i");  // the other branch
    EXPECT_FALSE(object->HasCard());
    object->GetChoice().Add().SetQ(4);
    object->GetSizes().Add(3);
    object->GetColour().Add(EColour::Plus1);
    const CSmartPtr<CCircleType> circle(new CCircleType());
    circle->SetName("round");
    circle->SetRadius(CDecimal(1));
    object->GetShape().Add(circle);
    object->SetNilNil2();
    EXPECT_EQ(
        Write(*object),
        Root("<nil xsi:nil=\"true\"/><sizes>3</sizes><colour>+1</colour><price currency=\"EUR\">2.5</price>"
             "<circle><name>round</name><radius>1</radius></circle><iban>i</iban><q>4</q>"));
    const CKinds& seen = *object;
    for (const CShapeType& shape : seen.GetShape()) {
        const CCircleType* const found = As<CCircleType>(shape);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->GetRadius(), CDecimal(1));
        EXPECT_EQ(As<CSquareType>(shape), nullptr);
    }
    EXPECT_STREQ(ToText(EColour::Plus1), "+1");
    EColour colour{};
    EXPECT_TRUE(FromText("red", colour));
    EXPECT_EQ(colour, EColour::Red);
    EXPECT_FALSE(FromText("blue", colour));
}

TEST(GeneratedKinds, TakesTypesFromTheDocument) {
    CSmartPtr<CKinds> object(new CKinds());
    const std::string strict =
        "<person xsi:type=\"strictPerson\" id=\"1\"><first>f</first><last>ABC</last><mail>m</mail></person>";
    object->FromXml(Root(strict));
    EXPECT_NE(As<CStrictPerson>(object->GetPerson()), nullptr);
    EXPECT_NE(Write(*object).find("xsi:type=\"strictPerson\""), std::string::npos) << Write(*object);
    for (const char* const bad :
         {"<person xsi:type=\"strictPerson\" "
          "id=\"1\"><first>f</first><last>abc</last><mail>m</mail></person>",
          "<person xsi:type=\"strictPerson\"><first>f</first><last>ABC</last><mail>m</mail></person>",
          "<person xsi:type=\"tree\"/>", "<price currency=\"EUR\" xsi:type=\"wholeAmount\">1.5</price>"})
        EXPECT_THROW(object->FromXml(Root(bad)), CKvException) << bad;
    EXPECT_NE(NewRoot("urn:kinds", "circle"), nullptr);
    EXPECT_EQ(NewRoot("urn:kinds", "shape"), nullptr);
}

}  // namespace
