/// Reads a document of orders, prints what is in it and writes it back on request.
///
///     orders-tool sample.xml -o copy.xml --compact
///
/// Ends with 0 on success, 1 when the document or a file is refused, 2 on wrong usage.
#include <CLI/CLI.hpp>
#include <array>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>

#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"
#include "examples/support/document_tool.h"
#include "kvxml/kvxml.h"

namespace {

using namespace KvXmlLib16;

struct Options {
    std::string input;
    std::string output;
    std::string format = "xml";
    bool compact = false;
};

struct Summary {
    std::int64_t orders = 0;
    std::int64_t urgent = 0;
    std::int64_t items = 0;
    std::int64_t pieces = 0;
    std::int64_t tags = 0;
    std::int64_t byCard = 0;
    std::int64_t byIban = 0;
    std::int64_t inCash = 0;
    std::array<std::int64_t, Orders::EStatusType_cancelled + 1> byStatus{};
    CDecimal total;
    std::optional<CDateTime> first, last;
};

void AddItems(const Orders::CItemsType& items, Summary& summary) {
    for (Orders::CItemType* item : *items.GetItem()) {
        ++summary.items;
        summary.pieces += item->GetQuantity();
        summary.tags += item->GetTags()->GetCount();
    }
}

Summary Summarize(Orders::COrdersType& orders) {
    Summary summary;
    for (const Orders::COrderType* order : *orders.GetOrder()) {
        ++summary.orders;
        if (order->GetPriority() == Orders::EPriorityType_urgent) ++summary.urgent;
        ++summary.byStatus.at(static_cast<std::size_t>(order->GetStatus()));
        const auto payment = order->GetPayment();
        if (payment->IsValidCard()) ++summary.byCard;
        if (payment->IsValidIban()) ++summary.byIban;
        if (payment->IsValidCash()) ++summary.inCash;
        const CDateTime date = order->GetOrderDate();
        if (!summary.first || date < *summary.first) summary.first = date;
        if (!summary.last || date > *summary.last) summary.last = date;
        AddItems(*order->GetItems(), summary);
        summary.total += order->GetTotal();
    }
    return summary;
}

void Print(const Summary& summary) {
    std::cout << "orders:   " << summary.orders << " (urgent: " << summary.urgent << ")\n";
    for (std::size_t status = 0; status < summary.byStatus.size(); ++status) {
        if (summary.byStatus[status] == 0) continue;
        std::cout << "          " << Orders::EStatusTypeToString(static_cast<int>(status)) << ": "
                  << summary.byStatus[status] << '\n';
    }
    std::cout << "payment:  card " << summary.byCard << ", iban " << summary.byIban << ", cash "
              << summary.inCash << '\n'
              << "items:    " << summary.items << " (" << summary.pieces << " pieces, " << summary.tags
              << " tags)\n"
              << "total:    " << summary.total.ToString(2) << '\n';
    if (summary.first) {
        std::cout << "first:    " << summary.first->ToString() << '\n'
                  << "last:     " << summary.last->ToString() << '\n';
    }
    std::cout << std::flush;
}

int Run(const Options& options) {
    CSerializationContext context;
    context.SetDefaultNamespaceURI(Orders::kNamespace);
    context.GetJsonContext().SetEscapeStrings(true);
    const CSmartPtr<Orders::COrdersType> orders(new Orders::COrdersType());
    Summary summary;
    examples::DocumentSteps steps;
    steps.read = [&] {
        examples::ReadDocument(*orders, options.input, context);
        summary = Summarize(*orders);
    };
    steps.write = [&](const std::string& fileName) {
        if (options.format == "json") {
            orders->ToJsonFile(fileName.c_str(), !options.compact, XmlEncoding_UTF8, EOLType_LF, context);
        } else if (options.format == "fi") {
            orders->ToFastInfosetFile(fileName.c_str(), FInfoDecl_None, context);
        } else {
            orders->ToXmlFile(fileName.c_str(), true, !options.compact, XmlEncoding_UTF8, EOLType_LF,
                              context);
        }
    };
    steps.print = [&] { Print(summary); };
    return examples::RunDocumentTool("orders-tool", options.input, options.output, steps);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Reads a document of orders, prints a summary and writes it back on request.",
                 "orders-tool");
    app.add_option("INPUT", options.input, "Orders as XML or JSON, plain or compressed with gzip or zlib")
        ->required();
    auto* output = app.add_option("-o,--output", options.output, "Write the document to this file");
    app.add_option("--to", options.format, "Format of the output")
        ->check(CLI::IsMember({"xml", "json", "fi"}))
        ->capture_default_str()
        ->needs(output);
    app.add_flag("--compact", options.compact, "Write without line breaks and indentation")->needs(output);
    if (const auto status = examples::ParseArguments(app, argc, argv)) return *status;
    return Run(options);
}
