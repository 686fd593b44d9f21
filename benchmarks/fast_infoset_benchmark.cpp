/// Writing and reading of generated documents as Fast Infoset, beside the same with XML.
///
/// Every figure is CPU time of the thread. "x_floor" is the ratio to compact ToXmlStream, or to FromXmlStream
/// of formatted XML into the same objects, measured in turns; the release of the objects is not measured.
/// "size" is the length in parts of that XML's, "gzip" the same of the compressed forms. glibc is told to
/// keep freed memory, so both sides run in the same heap state. KVXML_BENCHMARK_MB sets the size of the XML
/// (default 20).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>

#include <string>
#include <utility>

#include "benchmarks/support/gpx_document.h"
#include "benchmarks/support/orders_document.h"
#include "benchmarks/support/paired_timing.h"
#include "examples/gpx/gpx_type.h"
#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"

namespace {

using benchmarks::TimeOf;
using namespace KvXmlLib16;

std::size_t Bytes() {
    const char* megabytes = std::getenv("KVXML_BENCHMARK_MB");
    return (megabytes == nullptr ? 20 : std::strtoul(megabytes, nullptr, 10)) * 1000 * 1000;
}

template <class Root>
const CXmlObjectBase& Object(std::string (*make)(std::size_t)) {
    static const CSmartPtr<Root> object = [make] {
        CSmartPtr<Root> root(new Root());
        root->FromXml(make(Bytes()).c_str());
        return root;
    }();
    return *object;
}

const CXmlObjectBase& GpxObject() {
    return Object<Gpx::CGpxType>([](std::size_t bytes) { return benchmarks::MakeGpxDocument(bytes); });
}

const CXmlObjectBase& OrdersObject() {
    return Object<Orders::COrdersType>(
        [](std::size_t bytes) { return benchmarks::MakeOrdersDocument(bytes); });
}

CBinaryData ToXml(const CXmlObjectBase& object, const CSerializationContext& context,
                  CompressionType compression = CompressionType_None) {
    return object.ToXmlStream(true, false, XmlEncoding_UTF8, EOLType_LF, context, compression);
}

void Write(benchmark::State& state, const CXmlObjectBase& (*get)(), void (*set)(CFastInfosetContext&)) {
    const CXmlObjectBase& object = get();
    CSerializationContext context;
    context.SetDefaultNamespaceURI(object.GetTargetNamespace().c_str());
    set(context.GetFIContext());
    const auto ratio = [&](CompressionType compression) {
        const std::size_t length =
            object.ToFastInfosetStream(FInfoDecl_None, context, compression).GetLength();
        return static_cast<double>(length) /
               static_cast<double>(ToXml(object, context, compression).GetLength());
    };
    state.counters["size"] = ratio(CompressionType_None);
    state.counters["gzip"] = ratio(CompressionType_GZip);
    const std::size_t xmlLength = ToXml(object, context).GetLength();
    benchmarks::RunPaired(
        state, xmlLength,
        [&] { return TimeOf([&] { benchmark::DoNotOptimize(ToXml(object, context).GetData()); }); },
        [&] {
            return TimeOf([&] {
                benchmark::DoNotOptimize(object.ToFastInfosetStream(FInfoDecl_None, context).GetData());
            });
        });
}

template <class Root>
void Read(benchmark::State& state, const CXmlObjectBase& (*get)(), void (*set)(CFastInfosetContext&)) {
    const CXmlObjectBase& object = get();
    CSerializationContext context;
    context.SetDefaultNamespaceURI(object.GetTargetNamespace().c_str());
    set(context.GetFIContext());
    const CBinaryData xml = object.ToXmlStream(true, true, XmlEncoding_UTF8, EOLType_LF, context);
    const CBinaryData binary = object.ToFastInfosetStream(FInfoDecl_None, context);
    const auto read = [&context](const CBinaryData& data) {
        const CSmartPtr<Root> root(new Root());
        return TimeOf([&] { root->FromXmlStream(data, context); });
    };
    benchmarks::RunPaired(
        state, xml.GetLength(), [&] { return read(xml); }, [&] { return read(binary); });
}

struct Settings {
    const char* name;
    void (*set)(CFastInfosetContext&);
};

constexpr Settings kSettings[] = {
    {"defaults", [](CFastInfosetContext&) {}},
    {"no_index", [](CFastInfosetContext& settings) { settings.SetMaxIndexedLength(0); }},
    {"all_indexed", [](CFastInfosetContext& settings) { settings.SetMaxTableEntries(1048576); }},
    {"alphabets", [](CFastInfosetContext& settings) { settings.SetUseRestrictedAlphabets(true); }},
    {"typed", [](CFastInfosetContext& settings) { settings.SetWriteTypedValues(true); }},
};

}  // namespace

int main(int argc, char** argv) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, -1);
    for (const auto& [name, get] : {std::pair("gpx", &GpxObject), std::pair("orders", &OrdersObject)}) {
        for (const Settings& settings : kSettings) {
            benchmark::RegisterBenchmark((std::string("write/") + name + '/' + settings.name).c_str(), &Write,
                                         get, settings.set)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (const Settings& settings : {kSettings[0], kSettings[4]}) {
        const auto add =
            [&](const char* document,
                void (*run)(benchmark::State&, const CXmlObjectBase& (*)(), void (*)(CFastInfosetContext&)),
                const CXmlObjectBase& (*get)()) {
                benchmark::RegisterBenchmark((std::string("read/") + document + '/' + settings.name).c_str(),
                                             run, get, settings.set)
                    ->UseManualTime()
                    ->Unit(benchmark::kMillisecond);
            };
        add("gpx", &Read<Gpx::CGpxType>, &GpxObject);
        add("orders", &Read<Orders::COrdersType>, &OrdersObject);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
