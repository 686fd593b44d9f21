/// Reading and writing of a generated document of orders: business data, many short elements and texts.
#include "benchmarks/support/document_benchmarks.h"
#include "benchmarks/support/orders_document.h"
#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"

namespace {

struct OrdersDocument {
    using Root = Orders::COrdersType;
    static constexpr const char* kNamespace = Orders::kNamespace;
    static std::string Make(std::size_t bytes) { return benchmarks::MakeOrdersDocument(bytes); }
};

}  // namespace

int main(int argc, char** argv) {
    return benchmarks::DocumentBenchmarks<OrdersDocument>::Run(argc, argv);
}
