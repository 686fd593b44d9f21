/// Writing of a generated document of orders as JSON, beside ToXml of the same objects and peers that write
/// the same document from their own trees.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to what nlohmann::json takes to dump the
/// same document, compact or formatted, measured in turns. glibc is told to keep freed memory, so both sides
/// run in the same heap state. KVXML_BENCHMARK_MB sets the size of the XML (default 20).
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "benchmarks/support/orders_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"

namespace {

using benchmarks::RunPaired;
using benchmarks::TimeOf;
using namespace KvXmlLib16;

const CSmartPtr<Orders::COrdersType>& Object() {
    static const CSmartPtr<Orders::COrdersType> object = [] {
        const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
        const std::size_t size = megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10);
        CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
        orders->FromXml(benchmarks::MakeOrdersDocument(size * 1000 * 1000).c_str());
        return orders;
    }();
    return object;
}

CSerializationContext Context(bool escaped) {
    CSerializationContext context;
    context.SetDefaultNamespaceURI("urn:example:orders");
    context.GetJsonContext().SetEscapeStrings(escaped);
    return context;
}

std::string Json(bool formatted, bool escaped = true) {
    return Object()->ToJson(formatted, EOLType_LF, Context(escaped));
}

template <class Action>
void RunBesideDump(benchmark::State& state, bool formatted, std::size_t bytes, Action action) {
    static const nlohmann::json document = nlohmann::json::parse(Json(false));
    const auto dump = [formatted] {
        return TimeOf([formatted] {
            const std::string text = document.dump(formatted ? 1 : -1, '\t');
            benchmark::DoNotOptimize(text.data());
        });
    };
    RunPaired(state, bytes, dump, [&] { return TimeOf(action); });
}

void WriteToJson(benchmark::State& state, bool formatted, bool escaped) {
    const CSerializationContext context = Context(escaped);
    RunBesideDump(state, formatted, Json(formatted, escaped).size(), [&] {
        const std::string text = Object()->ToJson(formatted, EOLType_LF, context);
        benchmark::DoNotOptimize(text.data());
    });
}

void WriteToXml(benchmark::State& state, bool formatted) {
    const CSerializationContext context = Context(false);
    const auto write = [&] { return Object()->ToXml(true, formatted, EOLType_LF, context); };
    RunBesideDump(state, formatted, write().size(), [&] {
        const std::string text = write();
        benchmark::DoNotOptimize(text.data());
    });
}

template <class Writer>
void WriteRapidJson(benchmark::State& state, bool formatted) {
    static rapidjson::Document document;
    // Without the flag numbers are binary values, whose formatting is no part of what others do here.
    if (document.IsNull()) document.Parse<rapidjson::kParseNumbersAsStringsFlag>(Json(false).c_str());
    const auto write = [](rapidjson::StringBuffer& buffer) {
        Writer writer(buffer);
        document.Accept(writer);
    };
    rapidjson::StringBuffer sized;
    write(sized);
    RunBesideDump(state, formatted, sized.GetSize(), [&] {
        rapidjson::StringBuffer buffer;
        write(buffer);
        benchmark::DoNotOptimize(buffer.GetString());
    });
}

#define KVXML_JSON_BENCHMARK(name, ...)                                              \
    benchmark::RegisterBenchmark(name, [](benchmark::State& state) { __VA_ARGS__; }) \
        ->UseManualTime()                                                            \
        ->Unit(benchmark::kMillisecond)

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2147483647);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    KVXML_JSON_BENCHMARK("Write/ToJson formatted", WriteToJson(state, true, false));
    KVXML_JSON_BENCHMARK("Write/ToJson formatted escaped", WriteToJson(state, true, true));
    KVXML_JSON_BENCHMARK("Write/ToXml formatted", WriteToXml(state, true));
    using Buffer = rapidjson::StringBuffer;
    KVXML_JSON_BENCHMARK("Write/RapidJSON formatted (peer)",
                         WriteRapidJson<rapidjson::PrettyWriter<Buffer>>(state, true));
    KVXML_JSON_BENCHMARK("Write/ToJson compact", WriteToJson(state, false, false));
    KVXML_JSON_BENCHMARK("Write/ToJson compact escaped", WriteToJson(state, false, true));
    KVXML_JSON_BENCHMARK("Write/ToXml compact", WriteToXml(state, false));
    KVXML_JSON_BENCHMARK("Write/RapidJSON compact (peer)",
                         WriteRapidJson<rapidjson::Writer<Buffer>>(state, false));
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
