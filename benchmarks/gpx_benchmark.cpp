/// Reading and writing of a generated document of GPX: records with attributes and short values.
#include "benchmarks/support/document_benchmarks.h"
#include "benchmarks/support/gpx_document.h"
#include "examples/gpx/class_factory.h"
#include "examples/gpx/gpx_type.h"

namespace {

struct GpxDocument {
    using Root = Gpx::CGpxType;
    static constexpr const char* kNamespace = Gpx::kNamespace;
    static std::string Make(std::size_t bytes) { return benchmarks::MakeGpxDocument(bytes); }
};

}  // namespace

int main(int argc, char** argv) {
    return benchmarks::DocumentBenchmarks<GpxDocument>::Run(argc, argv);
}
