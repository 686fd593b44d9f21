/// Reading of a JSON document (generated orders as JSON text) beside peers that read the same text.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to nlohmann::json::parse into its DOM,
/// measured in turns. glibc is told to keep freed memory, so both sides run in the same heap state.
/// KVXML_BENCHMARK_MB sets the size of the XML document (default 20), KVXML_BENCHMARK_JSON names a file to be
/// read instead, then only into the tree.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <rapidjson/document.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "benchmarks/support/orders_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "kvxml/types/binary_data.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

const char* JsonFile() {
    return std::getenv("KVXML_BENCHMARK_JSON");
}

const std::string& Json() {
    static const std::string json = [] {
        if (JsonFile() != nullptr) {
            std::ifstream file(JsonFile(), std::ios::binary);
            return std::string(std::istreambuf_iterator<char>(file), {});
        }
        const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
        const std::size_t size = megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10);
        const CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
        orders->FromXml(benchmarks::MakeOrdersDocument(size * 1000 * 1000).c_str());
        CSerializationContext context;
        context.SetDefaultNamespaceURI(Orders::kNamespace);
        context.GetJsonContext().SetEscapeStrings(true);
        return orders->ToJson(false, EOLType_LF, context);
    }();
    return json;
}

/// Has nothing to bind, so that the tree alone is measured.
class CNothing final : public CXmlObjectBase {
public:
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return std::string(); }
    std::string GetNamespace() const override { return std::string(); }

protected:
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement*, CXmlElement* cursor, const CSerializationContext&, bool) override {
        return cursor;
    }
};

double Nlohmann() {
    nlohmann::json document;  // its release is not measured, as that of the objects is not
    return TimeOf([&] { document = nlohmann::json::parse(Json()); });
}

void ReadNlohmann(benchmark::State& state) {
    RunPaired(state, Json().size(), Nlohmann, Nlohmann);
}

void ReadRapidJson(benchmark::State& state) {
    RunPaired(state, Json().size(), Nlohmann, [] {
        rapidjson::Document document;
        return TimeOf([&] {
            document.Parse(Json().data(), Json().size());
            benchmark::DoNotOptimize(document.IsObject());
        });
    });
}

void ReadTree(benchmark::State& state) {
    RunPaired(state, Json().size(), Nlohmann, [] {
        return TimeOf([] {
            CNothing nothing;
            nothing.FromJson(Json().c_str());
        });
    });
}

void ReadObjects(benchmark::State& state) {
    RunPaired(state, Json().size(), Nlohmann, [] {
        CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
        return TimeOf([&] { orders->FromJson(Json().c_str()); });
    });
}

void ReadXmlText(benchmark::State& state) {
    RunPaired(state, Json().size(), Nlohmann, [] {
        return TimeOf([] { benchmark::DoNotOptimize(CXmlDocument().LoadJson(Json().c_str()).GetLength()); });
    });
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
    Register("Read/nlohmann DOM (floor)", ReadNlohmann);
    Register("Read/FromJson, tree alone", ReadTree);
    if (JsonFile() == nullptr) Register("Read/FromJson", ReadObjects);
    Register("Read/LoadJson, XML text", ReadXmlText);
    Register("Read/RapidJSON DOM (peer)", ReadRapidJson);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
