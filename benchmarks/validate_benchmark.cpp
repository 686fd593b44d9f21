/// Validation of a generated document of orders against its schema, beside expat alone and beside libxml2's
/// streaming validation of the same bytes; and what a set of schema documents takes to load.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to expat with namespaces and empty
/// handlers, one final call, measured in turns. KVXML_BENCHMARK_MB sets the size of the document (default
/// 20). KVXML_BENCHMARK_UBL names the folder of UBL 2.1 that has maindoc/UBL-Invoice-2.1.xsd; without it the
/// loading of that schema is left out.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlschemas.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/support/orders_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "kvxml/schema/schema.h"
#include "kvxml/xml/xml_reader.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

constexpr const char* kSchemaFile = KVXML_SOURCE_DIR "/examples/orders/orders.xsd";

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "validate_benchmark: %s\n", what);
    std::exit(1);
}

const std::string& Xml() {
    static const std::string xml = [] {
        const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
        const std::size_t size = megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10);
        return benchmarks::MakeOrdersDocument(size * 1000 * 1000);
    }();
    return xml;
}

const std::string& XmlFile() {
    static const std::string name = [] {
        const char* folder = std::getenv("TMPDIR");
        std::string made = std::string(folder == nullptr ? "/tmp" : folder) + "/kvxml_benchmark_XXXXXX";
        const int handle = mkstemp(made.data());
        if (handle < 0 || write(handle, Xml().data(), Xml().size()) != static_cast<ssize_t>(Xml().size()))
            Fail("the document cannot be written");
        close(handle);
        return made;
    }();
    return name;
}

std::shared_ptr<const CSchemaSet> Load(const std::string& file) {
    CSchemaLoader loader;
    loader.AddFile(file);
    return loader.Load();
}

const std::shared_ptr<const CSchemaSet>& Schema() {
    static const std::shared_ptr<const CSchemaSet> schema = Load(kSchemaFile);
    return schema;
}

double Expat() {
    return TimeOf([] {
        XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        if (XML_Parse(parser, Xml().data(), static_cast<int>(Xml().size()), 1) != XML_STATUS_OK)
            Fail("expat refuses the document");
        XML_ParserFree(parser);
    });
}

void ParseExpat(benchmark::State& state) {
    RunPaired(state, Xml().size(), Expat, Expat);
}

/// Reading without looking at anything.
void ReadEvents(benchmark::State& state) {
    RunPaired(state, Xml().size(), Expat, [] {
        return TimeOf([] {
            CXmlReader reader;
            reader.OpenText(Xml());
            while (reader.Read())
                benchmark::DoNotOptimize(reader.GetEvent());
        });
    });
}

void ValidateBuffer(benchmark::State& state) {
    CSchemaValidator validator(Schema());
    RunPaired(state, Xml().size(), Expat, [&] {
        return TimeOf([&] {
            if (!validator.ValidateBuffer(Xml().data(), Xml().size()).IsValid())
                Fail("the document is invalid");
        });
    });
}

void ValidateFile(benchmark::State& state) {
    CSchemaValidator validator(Schema());
    RunPaired(state, Xml().size(), Expat, [&] {
        return TimeOf([&] {
            if (!validator.ValidateFile(XmlFile().c_str()).IsValid()) Fail("the document is invalid");
        });
    });
}

/// The schema is compiled before, as ours is.
void ValidateLibxml2(benchmark::State& state) {
    xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(kSchemaFile);
    xmlSchemaPtr schema = xmlSchemaParse(parser);
    xmlSchemaFreeParserCtxt(parser);
    if (schema == nullptr) Fail("libxml2 refuses the schema");
    RunPaired(state, Xml().size(), Expat, [&] {
        return TimeOf([&] {
            xmlTextReaderPtr reader =
                xmlReaderForMemory(Xml().data(), static_cast<int>(Xml().size()), "", nullptr, XML_PARSE_HUGE);
            xmlTextReaderSetSchema(reader, schema);
            int status = 1;
            while (status == 1)
                status = xmlTextReaderRead(reader);
            if (status != 0 || xmlTextReaderIsValid(reader) != 1) Fail("libxml2 refuses the document");
            xmlFreeTextReader(reader);
        });
    });
    xmlSchemaFree(schema);
}

/// What reading into objects takes, with and without a check by the schema.
template <bool kIsChecked>
void ReadObjects(benchmark::State& state) {
    CSerializationContext context;
    if (kIsChecked) context.SetDocumentCheck(MakeDocumentCheck(Schema()));
    RunPaired(state, Xml().size(), Expat, [&] {
        const CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
        return TimeOf([&] { orders->FromXml(Xml(), context); });
    });
}

/// One validator for each of a thousand documents of one order, as a server has it. `x_one`: beside one
/// validator for all.
void ValidateSmall(benchmark::State& state) {
    const std::string xml = benchmarks::MakeOrdersDocument(1);
    const auto judge = [&](CSchemaValidator& validator) {
        if (!validator.ValidateBuffer(xml.data(), xml.size()).IsValid()) Fail("the document is invalid");
    };
    const auto all = [&] {
        CSchemaValidator validator(Schema());
        return TimeOf([&] {
            for (int i = 0; i < 1000; ++i)
                judge(validator);
        });
    };
    RunPaired(state, xml.size() * 1000, all, [&] {
        return TimeOf([&] {
            for (int i = 0; i < 1000; ++i) {
                CSchemaValidator validator(Schema());
                judge(validator);
            }
        });
    });
}

void LoadOrders(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(Load(kSchemaFile));
}

void LoadInvoice(benchmark::State& state) {
    const std::string file = std::string(std::getenv("KVXML_BENCHMARK_UBL")) + "/maindoc/UBL-Invoice-2.1.xsd";
    for (auto _ : state)
        benchmark::DoNotOptimize(Load(file));
}

void Register(const char* name, void (*function)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, function)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    Register("Validate/expat alone (floor)", ParseExpat);
    Register("Validate/CXmlReader alone", ReadEvents);
    Register("Validate/ValidateBuffer", ValidateBuffer);
    Register("Validate/ValidateFile", ValidateFile);
    Register("Validate/libxml2, streaming (peer)", ValidateLibxml2);
    Register("Validate/a thousand small documents", ValidateSmall);
    Register("Read/FromXml", ReadObjects<false>);
    Register("Read/FromXml, checked by the schema", ReadObjects<true>);
    benchmark::RegisterBenchmark("Load/orders", LoadOrders)->Unit(benchmark::kMillisecond);
    if (std::getenv("KVXML_BENCHMARK_UBL") != nullptr) {
        benchmark::RegisterBenchmark("Load/UBL 2.1 Invoice", LoadInvoice)->Unit(benchmark::kMillisecond);
    } else {
        std::fprintf(stderr, "KVXML_BENCHMARK_UBL is not set: loading of UBL 2.1 is left out\n");
    }
    benchmark::RunSpecifiedBenchmarks();
    unlink(XmlFile().c_str());
    return 0;
}
