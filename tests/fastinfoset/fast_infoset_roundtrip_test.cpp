// What is written as Fast Infoset is read back as it was, under every setting.
#include <gtest/gtest.h>

#include <string>

#include "examples/gpx/gpx_type.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "tests/support/fixture_all_kinds.h"

namespace KvXmlLib16 {
namespace {

struct Setting {
    const char* name;
    void (*set)(CFastInfosetContext&);
};
const Setting kSettings[] = {
    {"defaults", [](CFastInfosetContext&) {}},
    {"nothing numbered", [](CFastInfosetContext& s) { s.SetMaxIndexedLength(0); }},
    {"small tables", [](CFastInfosetContext& s) { s.SetMaxTableEntries(2); }},
    {"typed", [](CFastInfosetContext& s) { s.SetWriteTypedValues(true); }},
    {"alphabets", [](CFastInfosetContext& s) { s.SetUseRestrictedAlphabets(true); }},
};

/// Every setting, with and without a declaration, plain and compressed.
template <class Check>
void WithEverySetting(const CXmlObjectBase& object, const char* ns, Check check) {
    for (const Setting& setting : kSettings) {
        SCOPED_TRACE(setting.name);
        CSerializationContext context;
        context.SetDefaultNamespaceURI(ns);
        setting.set(context.GetFIContext());
        check(object.ToFastInfosetStream(FInfoDecl_None, context), context);
        check(object.ToFastInfosetStream(FInfoDecl_Write, context, CompressionType_GZip), context);
    }
}

TEST(FastInfosetRoundTripTest, AllKinds) {
    const CSmartPtr<fixture::AllKinds> object(new fixture::AllKinds());
    fixture::Fill(*object);
    WithEverySetting(*object, fixture::kNamespace,
                     [](const CBinaryData& data, const CSerializationContext& context) {
                         const CSmartPtr<fixture::AllKinds> read(new fixture::AllKinds());
                         read->FromXmlStream(data, context);
                         fixture::Check(*read);
                     });
}

template <class T>
void ExpectDocument(const std::string& fileName, const char* ns) {
    SCOPED_TRACE(fileName);
    const CSmartPtr<T> object(new T());
    object->FromXmlFile(fileName.c_str());
    const CSmartPtr<CElement> element(new CElement());
    element->FromXmlFile(fileName.c_str());
    const auto check = [](const auto& original) {
        return [&original](const CBinaryData& data, const CSerializationContext& context) {
            using Root = std::remove_cv_t<std::remove_reference_t<decltype(*original)>>;
            const CSmartPtr<Root> read(new Root());
            read->FromXmlStream(data, context);
            EXPECT_EQ(read->ToXml(true, true, EOLType_LF, context),
                      original->ToXml(true, true, EOLType_LF, context));
        };
    };
    WithEverySetting(*object, ns, check(object));
    WithEverySetting(*element, ns, check(element));
}

TEST(FastInfosetRoundTripTest, Documents) {
    const std::string examples = KVXML_SOURCE_DIR "/examples/";
    ExpectDocument<Gpx::CGpxType>(examples + "gpx/sample.gpx", "http://www.topografix.com/GPX/1/1");
    ExpectDocument<Orders::COrdersType>(examples + "orders/sample.xml", "urn:example:orders");
}

}  // namespace
}  // namespace KvXmlLib16
