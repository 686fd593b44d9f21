// What is written as JSON is read back as it was, and is JSON for others too.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "examples/gpx/gpx_type.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
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

TEST(JsonRoundTripTest, ValuesWithoutNamespaces) {
    const CSmartPtr<fixture::AllKinds> object(new fixture::AllKinds());
    fixture::Fill(*object, fixture::Nils::Unset);
    const auto& values = object->At("Values");
    for (const auto mode : {JsonRoundTrip_NoNamespaces, JsonRoundTrip_Full})
        ExpectSame<fixture::Values>(values, Context(fixture::kNamespace, mode));
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

}  // namespace
}  // namespace KvXmlLib16
