// What is written as JSON is read back as it was, and is JSON for others too.
#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "examples/gpx/gpx_type.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace KvXmlLib16 {
namespace {

constexpr const char* kXsi = "http://www.w3.org/2001/XMLSchema-instance";

CSerializationContext Context(const char* defaultNamespace, JsonRoundTrip mode = JsonRoundTrip_Full) {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(defaultNamespace);
    context.GetNamespaceAliases().Add("xsi", kXsi);
    context.GetJsonContext().SetSupportRoundtrip(mode);
    context.GetJsonContext().SetEscapeStrings(true);
    return context;
}

/// Reads what `source` writes, in every layout, and expects the same XML from what was read.
template <class T>
void ExpectSame(const CXmlObjectBase& source, const CSerializationContext& context) {
    const std::string xml = source.ToXml(true, true, EOLType_LF, context);
    for (const bool formatted : {false, true}) {
        const std::string json = source.ToJson(formatted, EOLType_LF, context);
        EXPECT_TRUE(nlohmann::json::accept(json)) << json;
        const CSmartPtr<T> read(new T());
        read->FromJson(json.c_str(), context);
        EXPECT_EQ(read->ToXml(true, true, EOLType_LF, context), xml);
        EXPECT_EQ(read->ToJson(formatted, EOLType_LF, context), json);
    }
}

TEST(JsonRoundTripTest, AllKinds) {
    CSerializationContext context = Context(fixture::kNamespace);
    context.GetNamespaceAliases().Add("a", fixture::kAttributeNamespace);
    context.GetNamespaceAliases().Add("o", "urn:o");
    const CSmartPtr<fixture::AllKinds> object(new fixture::AllKinds());
    fixture::Fill(*object, fixture::Nils::Unset);
    const CSmartPtr<fixture::AllKinds> read(new fixture::AllKinds());
    read->FromJson(object->ToJson(true, EOLType_LF, context).c_str(), context);
    fixture::Check(*read, fixture::Nils::Unset);
    ExpectSame<fixture::AllKinds>(*object, context);
}

template <class T>
void ExpectDocument(const std::string& fileName, const char* ns) {
    SCOPED_TRACE(fileName);
    const CSmartPtr<T> object(new T());
    object->FromXmlFile(fileName.c_str());
    const CSmartPtr<CElement> element(new CElement());
    element->FromXmlFile(fileName.c_str());
    const CSerializationContext full = Context(ns);
    ExpectSame<T>(*object, full);
    ExpectSame<CElement>(*element, full);
    // The class and the untyped element are the same to whoever reads them.
    const CSmartPtr<T> typed(new T());
    typed->FromJson(element->ToJson().c_str());
    EXPECT_EQ(typed->ToXml(true, true, EOLType_LF, full), object->ToXml(true, true, EOLType_LF, full));
}

TEST(JsonRoundTripTest, Documents) {
    const std::string examples = KVXML_SOURCE_DIR "/examples/";
    ExpectDocument<Gpx::CGpxType>(examples + "gpx/sample.gpx", "http://www.topografix.com/GPX/1/1");
    ExpectDocument<Orders::COrdersType>(examples + "orders/sample.xml", "urn:example:orders");
}

TEST(JsonRoundTripTest, ModesWithoutNamespacesKeepWhatTheyCan) {
    const CSmartPtr<Orders::COrdersType> object(new Orders::COrdersType());
    object->FromXmlFile(KVXML_SOURCE_DIR "/examples/orders/sample.xml");
    ExpectSame<Orders::COrdersType>(*object, Context("urn:example:orders", JsonRoundTrip_NoNamespaces));
    // Attributes come back as elements, which the class does not have.
    const CSerializationContext none = Context("urn:example:orders", JsonRoundTrip_None);
    EXPECT_THROW(object->FromJson(object->ToJson(true, EOLType_LF, none).c_str(), none), CKvException);
}

// --- null --------------------------------------------------------------------------------------------------

const fixture::Model& NoteModel() {
    static const fixture::Model& model =
        fixture::Model::New("Note").Prim("Line", fixture::kMnd, ItemType_string);
    return model;
}
using Note = fixture::TypedNillable<NoteModel>;

const fixture::Model& NilsModel() {
    static const fixture::Model& model = fixture::Model::New("Nils")
                                             .Prim("Number", fixture::kOpt, ItemType_i4, "", "7")
                                             .Enum("Color", fixture::kOpt)
                                             .Cls<Note>("Note", fixture::kOpt)
                                             .Cls<Note>("Must", fixture::kMnd)
                                             .ClsCol<Note>("Notes", 0, -1)
                                             .PrimCol<Ci4Col>("Numbers", 0, -1);
    return model;
}
using Nils = fixture::Typed<NilsModel>;

TEST(JsonRoundTripTest, NullIsNilWhereAMemberMayBe) {
    const CSerializationContext context = Context(fixture::kNamespace, JsonRoundTrip_NoNamespaces);
    const auto read = fixture::Make<Nils>();
    read->FromJson(
        R"({"Nils":{"Number":null,"Color":null,"Note":null,"Must":null,"Notes":[null,{"Line":"x"}],)"
        R"("Numbers":null}})",
        context);
    EXPECT_EQ(read->Dump(),
              "Nils{Number=nil Color=nil Note=Note(nil){} Must=Must/Note(nil){} "
              "Notes=[Notes/Note(nil){} Notes/Note{Line=string:x}]}");
    ExpectSame<Nils>(*read, context);
    read->FromJson(R"({"Nils":{"Number":"","Must":{"Line":null},"Notes":null}})", context);
    EXPECT_EQ(read->Dump(), "Nils{Number=i4:7 Must=Must/Note{Line=string:}}");
    EXPECT_EQ(ErrorOf([&] {
                  read->FromJson(R"({"Nils":{"Must":null,"Numbers":[1,null]}})", context);
              }).find("Failed to set the property value [Numbers].\nPath: /Nils/Numbers[2]"),
              0U);
}

TEST(JsonRoundTripTest, NullIsAbsentWhereAMemberIsOptional) {
    const CSerializationContext context = Context("urn:example:orders", JsonRoundTrip_NoNamespaces);
    const std::string start = R"({"order":{"@id":1,"@status":"new",)";
    const std::string customer =
        R"("customer":{"name":"n","email":"e","address":{"street":"s","city":"c","zip":"z","country":"d"})";
    const std::string items =
        R"("items":{"item":{"sku":"ABC-1234","quantity":1,"unitPrice":1,"weight":1,"gift":true)";
    const std::string date = R"(,"orderDate":"2024-01-01T00:00:00",)";
    const auto orders = [&](const std::string& json) {
        const CSmartPtr<Orders::COrdersType> object(new Orders::COrdersType());
        object->FromJson(("{\"orders\":" + json + "}").c_str(), context);
        return object->ToJson(false, EOLType_LF, context);
    };
    const std::string plain =
        orders(start + customer + "}" + date + R"("payment":{"iban":"i"},)" + items + R"(}},"total":1}})");
    EXPECT_EQ(plain.find("null"), plain.npos);
    EXPECT_NE(plain.find(R"("payment": {"iban": "i"})"), plain.npos);
    EXPECT_EQ(orders(R"({"order":null})"), orders("{}"));
    struct Row {
        const char* what;
        std::string json;
    };
    const Row rows[] = {
        {"attribute", R"({"order":{"@id":1,"@status":"new","@priority":null,)" + customer + "}" + date +
                          R"("payment":{"iban":"i"},)" + items + R"(}},"total":1}})"},
        {"values", start + customer + R"(,"vatNumber":null})" + date +
                       R"("requiredBy":null,"note":null,"payment":{"iban":"i"},)" + items +
                       R"(}},"total":1}})"},
        {"values out of order at the end", start + customer + "}" + date + R"("payment":{"iban":"i"},)" +
                                               items + R"(}},"total":1,"note":null,"requiredBy":null}})"},
        {"members of a choice", start + customer + "}" + date +
                                    R"("payment":{"card":null,"iban":"i","cash":null},)" + items +
                                    R"(}},"total":1}})"},
        {"collection", start + customer + "}" + date + R"("payment":{"iban":"i"},)" + items +
                           R"(,"tags":null}},"total":1}})"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(orders(row.json), plain);
    }
    // What is mandatory is there, though empty.
    EXPECT_NE(ErrorOf([&] {
                  orders(start + R"("customer":null}})");
              }).find("Failed to find the required child element [name].\nPath: /orders/order/customer"),
              std::string::npos);
    EXPECT_NE(ErrorOf([&] {
                  orders(R"({"order":{"@id":null}})");
              }).find("Failed to find the required Attribute [id]."),
              std::string::npos);
}

TEST(JsonRoundTripTest, AContextMayBeSharedByThreads) {
    const CSerializationContext context = Context("urn:example:orders", JsonRoundTrip_NoNamespaces);
    const CSmartPtr<Orders::COrdersType> object(new Orders::COrdersType());
    object->FromXmlFile(KVXML_SOURCE_DIR "/examples/orders/sample.xml");
    const std::string json = object->ToJson(false, EOLType_LF, context);
    std::atomic<int> same{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 10; ++round) {
                const CSmartPtr<Orders::COrdersType> read(new Orders::COrdersType());
                try {
                    read->FromJson(json.c_str(), context);
                    same += read->ToJson(false, EOLType_LF, context) == json ? 1 : 0;
                } catch (const CKvException&) {
                    continue;  // counted by what is missing
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(same, 20);
    EXPECT_FALSE(context.GetIgnoreNamespaces());
}

}  // namespace
}  // namespace KvXmlLib16
