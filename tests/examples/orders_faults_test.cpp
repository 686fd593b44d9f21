// Each kind of rule of the orders schema broken once: the fault is refused with its path. Beside it, what is
// accepted and in which form it is written. The schema itself is asked about every document where xmllint is
// installed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "examples/orders/class_factory.h"
#include "examples/orders/orders_type.h"
#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"

namespace {

using namespace KvXmlLib16;
using Orders::COrdersType;

std::string Sample() {
    std::ifstream file(KVXML_SOURCE_DIR "/examples/orders/sample.xml", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// The sample with `from` replaced: the first one behind the first `after`. A null `to` removes the whole
/// first element of the name `from`.
std::string Edited(const char* after, const char* from, const char* to) {
    std::string text = Sample();
    if (to == nullptr) {
        const std::string name = from;
        const std::size_t begin = text.find("<" + name + ">", text.find(after));
        const std::string end = "</" + name + ">";
        return text.erase(begin, text.find(end, begin) + end.size() - begin);
    }
    const std::size_t at = text.find(from, text.find(after));
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, std::string_view(from).size(), to);
}

/// The document as it is written back, in the layout of the sample.
std::string Rewritten(const std::string& document) {
    const CSmartPtr<COrdersType> orders(new COrdersType());
    orders->FromXml(document.c_str());
    CSerializationContext context;
    context.SetDefaultNamespaceURI(Orders::kNamespace);
    return orders->ToXml(true, true, EOLType_LF, context);
}

/// The verdict of the schema by xmllint; agrees with whatever is expected where that is not installed.
class SchemaJudge {
public:
    SchemaJudge() : m_available(std::system("xmllint --version >/dev/null 2>&1") == 0) {}
    ~SchemaJudge() { std::filesystem::remove(m_file); }
    bool Accepts(const std::string& document, bool expected) const {
        if (!m_available) return expected;
        std::ofstream(m_file, std::ios::binary) << document;
        const std::string command = "xmllint --nonet --noout --schema '" KVXML_SOURCE_DIR
                                    "/examples/orders/orders.xsd' '" +
                                    m_file + "' >/dev/null 2>&1";
        return std::system(command.c_str()) == 0;
    }

private:
    bool m_available;
    std::string m_file = testing::TempDir() + "kvxml_orders_" +
                         testing::UnitTest::GetInstance()->current_test_info()->name() + ".xml";
};

#define XSI "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""

// --- refused ---------------------------------------------------------------------------------------------

struct Fault {
    const char* name;
    const char* after;
    const char* from;
    const char* to;
    const char* path;
    std::string message;
    std::string reason = {};
};

std::string Missing(const std::string& element) {
    return "Failed to find the required child element [" + element + "].";
}

Fault Missing(const char* element, const char* path) {
    return {element, "", element, nullptr, path, Missing(element)};
}

std::string Remains(const std::string& parent, const std::string& element) {
    return "Failed read all the elements held within the element [" + parent + "]. The unexpected element [" +
           element + "] remains un processed";
}

std::string Value(const std::string& member) {
    return "Failed to set the property value [" + member + "].";
}

std::string NoNumber(const std::string& text, const std::string& type) {
    return "The value [" + text + "] can not be converted to a " + type;
}

std::string NoDecimal(const std::string& text, int position) {
    return "The string representing a Decimal, contained an invalid char at position " +
           std::to_string(position) + " [" + text + "].";
}

std::string NoPattern(const std::string& text) {
    return "Invalid Value for sku [" + text +
           "]. It violates the facet pattern [[A-Z]{3}-[0-9]{4,6}(-[A-Z0-9]{2})?].";
}

void ExpectRefused(const Fault& fault, bool isValid, const SchemaJudge& schema) {
    SCOPED_TRACE(fault.name);
    const std::string document = Edited(fault.after, fault.from, fault.to);
    const std::string expected =
        fault.message + "\nPath: " + fault.path + (fault.reason.empty() ? "" : "\n" + fault.reason);
    EXPECT_EQ(ErrorOf([&] { Rewritten(document); }), expected);
    EXPECT_EQ(schema.Accepts(document, isValid), isValid);
}

TEST(OrdersFaults, EachKindOfRuleBrokenOnceIsRefusedWithItsPath) {
    const std::string unexpectedAttribute = "Unexpected Attribute found.";
    const std::string nil = "Invalid use of 'nil' attribute in non-nillable element.";
    const std::string failed = "Failed to process the element.";
    const char* const customer = "/orders/order[1]/customer";
    const char* const address = "/orders/order[1]/customer/address";
    const char* const card = "/orders/order[1]/payment/card";
    const char* const item = "/orders/order[1]/items/item[1]";
    const char* const payment = "/orders/order[2]/payment";
    const char* const id = "/orders/order[1]/@id";
    const char* const date = "/orders/order[2]/orderDate";
    const char* const quantity = "/orders/order[1]/items/item[1]/quantity";
    const char* const sku = "/orders/order[1]/items/item[1]/sku";
    const char* const boolean = "]. Valid values are 'true', 'false', '1', or '0'";
    const std::string noBoolean = "A Boolean Value read from an XML document was invalid [";
    const Fault faults[] = {
        // the document element
        {"another namespace", "", "urn:example:orders", "urn:example:other", "/orders",
         "Invalid Element [orders] found."},
        {"attribute on the root", "", "orders\">", "orders\" a=\"1\">", "/orders/@a", unexpectedAttribute},
        {"unknown element in the root", "", "\t<order ", "<invoice/>\t<order ", "/orders",
         Remains("orders", "invoice")},
        // attributes
        {"id missing", "", " id=\"1\"", "", "/orders/order[1]", failed,
         "Failed to find the required Attribute [id]."},
        {"id with more behind it", "", "\"1\"", "\"1 or 2\"", id, Value("id"), NoNumber("1 or 2", "ui4")},
        {"id beyond 32 bits", "", "4294967295", "4294967296", "/orders/order[3]/@id", Value("id"),
         "The value [4294967296] is to large to fit in a ui4"},
        {"status behind a blank", "", "paid", " paid", "/orders/order[1]/@status", Value("status"),
         "Invalid Value for StatusType [ paid]."},
        {"priority empty", "", "urgent", "", "/orders/order[1]/@priority", Value("priority"),
         "Invalid Value for PriorityType []."},
        {"unknown attribute", "", "id=\"2\"", "id=\"2\" date=\"today\"", "/orders/order[2]/@date",
         unexpectedAttribute},
        {"attribute in a namespace", "", "id=\"2\"", "xmlns:o=\"urn:o\" o:id=\"2\" id=\"2\"",
         "/orders/order[2]/o:@id", unexpectedAttribute},
        {"attribute on an empty class", "", "<cash/>", "<cash a=\"1\"/>", "/orders/order[3]/payment/cash/@a",
         unexpectedAttribute},
        {"nil value", "", "<zip>", "<zip " XSI " xsi:nil=\"true\">", "/orders/order[1]/customer/address/zip",
         nil},
        // mandatory elements
        Missing("customer", "/orders/order[1]"),
        Missing("items", "/orders/order[1]"),
        Missing("name", customer),
        Missing("street", address),
        Missing("number", card),
        Missing("sku", item),
        Missing("gift", item),
        // order and repetition
        {"members in another order", "", "<sku>ABC-1234</sku>\n\t\t\t\t<quantity>2</quantity>",
         "<quantity>2</quantity><sku>ABC-1234</sku>", item, Missing("sku")},
        {"optional member too early", "", "<orderDate>2026-03-01T12", "<note/><orderDate>2026-03-01T12",
         "/orders/order[3]", Missing("orderDate")},
        {"optional member twice", "", "</note>", "</note><note>again</note>", "/orders/order[1]",
         Missing("payment")},
        {"unknown element at the end", "", "</total>", "</total><rebate>1</rebate>", "/orders/order[1]",
         Remains("order", "rebate")},
        {"element in another namespace", "", "<email>", "<email xmlns=\"urn:example:other\">", customer,
         Missing("email")},
        {"element in a value", "", "<zip>30100", "<zip><b/>30100", "/orders/order[1]/customer/address/zip",
         Remains("zip", "b")},
        {"element in an empty class", "", "<cash/>", "<cash><coins/></cash>", "/orders/order[3]/payment/cash",
         Remains("cash", "coins")},
        // choice
        {"two of the choice", "", "</iban>", "</iban><cash/>", payment, Remains("payment", "cash")},
        {"none of the choice", "", "<iban>GB33BUKB20201555555555</iban>", "<cheque/>", payment,
         Remains("payment", "cheque")},
        // counts
        {"no item", "<cash/>", "item", nullptr, "/orders/order[3]/items", failed,
         "The Minimum number of [item] elements allowed in this collection is 1"},
        {"six tags", "", "<tags>bulk", "<tags>more</tags><tags>bulk", "/orders/order[2]/items/item", failed,
         "The Maximum number of [tags] elements allowed in this collection is 5"},
        // values
        {"dateTime without a time", "", "2026-03-01T08:00:00Z", "2026-03-01", date, Value("orderDate"),
         "Invalid XSD DateTime [2026-03-01]."},
        {"dateTime on February 30", "", "2026-03-01T08:00:00Z", "2026-02-30T08:00:00Z", date,
         Value("orderDate"), "Invalid Day [30] (1 <= day <= days in month"},
        {"dateTime at 25 hours", "", "2026-03-01T08:00:00Z", "2026-03-01T25:00:00Z", date, Value("orderDate"),
         "Invalid XSD Time [25:00:00Z] expected hh:mm:ss[.ff]"},
        {"date written otherwise", "", "2026-03-02", "02.03.2026", "/orders/order[1]/requiredBy",
         Value("requiredBy"), "Invalid XSD Date [02.03.2026] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
        {"gYearMonth in month 0", "", "2029-11", "2029-00", "/orders/order[1]/payment/card/expires",
         Value("expires"), "Invalid Month [0] (1 <= month <= 12)"},
        {"int beyond 32 bits", "", "<quantity>2", "<quantity>2147483648", quantity, Value("quantity"),
         "The value [2147483648] is to large to fit in a i4"},
        {"int empty", "", "<quantity>2", "<quantity>", quantity, Value("quantity"), NoNumber("", "i4")},
        {"decimal with a comma", "", "19.99", "19,99", "/orders/order[1]/items/item[1]/unitPrice",
         Value("unitPrice"), NoDecimal("19,99", 2)},
        {"decimal empty", "", "1239.98", "", "/orders/order[1]/total", Value("total"), NoDecimal("", 0)},
        {"double with a unit", "", "0.25", "0.25kg", "/orders/order[1]/items/item[1]/weight", Value("weight"),
         NoNumber("0.25kg", "r8")},
        {"boolean yes", "", "<gift>true", "<gift>yes", "/orders/order[1]/items/item[1]/gift", Value("gift"),
         noBoolean + "yes" + boolean},
        // facets
        {"pattern: too many", "", "ABC-1234", "ABC-1234567", sku, Value("sku"), NoPattern("ABC-1234567")},
        {"pattern: line feed behind it", "", "ABC-1234", "ABC-1234\n", sku, Value("sku"),
         NoPattern("ABC-1234\n")},
    };
    const SchemaJudge schema;
    for (const Fault& fault : faults)
        ExpectRefused(fault, false, schema);
}

// --- accepted ----------------------------------------------------------------------------------------------

struct Accepted {
    const char* from;
    const char* to;
    const char* written;  // in the place of `from`
};

void ExpectWritten(const Accepted& row, bool isValid, const SchemaJudge& schema) {
    SCOPED_TRACE(row.to);
    const std::string document = Edited("", row.from, row.to);
    const std::string expected = Edited("", row.from, row.written);
    std::string written;
    EXPECT_EQ(ErrorOf([&] { written = Rewritten(document); }), "(no error)");
    EXPECT_EQ(written, expected);
    EXPECT_EQ(schema.Accepts(document, isValid), isValid);
}

TEST(OrdersFaults, ValidVariantsAreWrittenInOneForm) {
    const Accepted rows[] = {
        {"<orders xmlns", "<!DOCTYPE orders><!-- a --><orders xmlns", "<orders xmlns"},
        {"orders\">", "orders\" " XSI " xsi:schemaLocation=\"a b\">", "orders\">"},
        {"<total>1239.98</total>", "<o:total xmlns:o='urn:example:orders'> +01239.980\r\n</o:total>",
         "<total>1239.98</total>"},
        {"id=\"1\" status=\"paid\"", "status='paid'\n\tid='1'", "id=\"1\" status=\"paid\""},
        {"status=\"new\"", "priority=\"normal\" status=\"new\"", "status=\"new\" priority=\"normal\""},
        {"<cash/>", "<cash></cash>", "<cash/>"},
        {"<gift>true", "<gift> 1 ", "<gift>true"},
        {"<tags>bulk", "<tags><![CDATA[bulk]]>", "<tags>bulk"},
        {"<tags>bulk</tags>", "<tags></tags>", "<tags/>"},
        {"Kwame Mensah", " Kwame\t&#77;ensah ", " Kwame\tMensah "},
        {"<weight>12.5", "<weight>1.25E1", "<weight>12.5"},
        {"<weight>12.5", "<weight>NaN", "<weight>NaN"},
        {"<unitPrice>0.05", "<unitPrice>.0500", "<unitPrice>0.05"},
        {"2026-03-02", "2026-03-02+01:00", "2026-03-02+01:00"},
    };
    const SchemaJudge schema;
    EXPECT_EQ(Rewritten(Sample()), Sample());
    EXPECT_TRUE(schema.Accepts(Sample(), true));
    for (const Accepted& row : rows)
        ExpectWritten(row, true, schema);
    EXPECT_EQ(Rewritten("<orders xmlns='urn:example:orders'/>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orders xmlns=\"urn:example:orders\"/>\n");
}

TEST(OrdersFaults, LenienciesThatTheSchemaDoesNotKnow) {
    const Accepted rows[] = {
        // text where only elements belong is dropped
        {"<payment>", "loose<payment>", "<payment>"},
        {"<cash/>", "<cash>coins</cash>", "<cash/>"},
        // a choice whose members are all optional may be empty
        {"<payment>\n\t\t\t<cash/>\n\t\t</payment>", "<payment> </payment>", "<payment/>"},
        // xsi:type where nothing can stand in, xsi:nil="false" where nothing can be nil
        {"<address>", "<address " XSI " xsi:type=\"CardType\">", "<address>"},
        {"<zip>", "<zip " XSI " xsi:nil=\"false\">", "<zip>"},
        // forms of values
        {"\"4294967295\"", "\"-1\"", "\"4294967295\""},
        {"<gift>true", "<gift>TRUE", "<gift>true"},
        {"<unitPrice>1200", "<unitPrice>12E2", "<unitPrice>1200"},
        {"<weight>12.5", "<weight>0xC.8", "<weight>12.5"},
        {"<weight>12.5", "<weight>infinity", "<weight>INF"},
        {"<weight>12.5", "<weight>nan", "<weight>NaN"},
        {"2029-11", "2029-11-01", "2029-11-01"},
        {"2026-03-02", "2026-03", "2026-03"},
        {"08:00:00Z", "08:00:00+15:00", "08:00:00+15:00"},
    };
    const SchemaJudge schema;
    for (const Accepted& row : rows)
        ExpectWritten(row, false, schema);
}

TEST(OrdersFaults, ValidDocumentsThatAreRefused) {
    const Fault rows[] = {
        {"year of five digits", "", "2026-03-01T08", "12026-03-01T08", "/orders/order[2]/orderDate",
         Value("orderDate"), "Invalid XSD Date [12026-03-01] expected CCYY-MM-DD[Z|[+|-]hh:mm]"},
        {"xsi:type on a value", "", "<zip>",
         "<zip " XSI " xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" xsi:type=\"xs:string\">",
         "/orders/order[1]/customer/address/zip/xsi:@type", "Unexpected Attribute found."},
    };
    const SchemaJudge schema;
    for (const Fault& row : rows)
        ExpectRefused(row, true, schema);
}

}  // namespace
