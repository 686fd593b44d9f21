#include "benchmarks/support/orders_document.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <random>

namespace benchmarks {

namespace {

constexpr const char* kWords[] = {
    "the",         "of",        "and",      "to",       "in",        "for",       "with",      "on",
    "by",          "from",      "at",       "as",       "is",        "are",       "was",       "be",
    "or",          "not",       "this",     "that",     "which",     "when",      "where",     "each",
    "every",       "other",     "some",     "more",     "most",      "less",      "before",    "after",
    "during",      "while",     "between",  "under",    "over",      "about",     "against",   "into",
    "through",     "without",   "within",   "across",   "delivery",  "package",   "customer",  "warehouse",
    "invoice",     "quantity",  "product",  "pallet",   "carrier",   "address",   "window",    "morning",
    "evening",     "afternoon", "weekday",  "weekend",  "holiday",   "signature", "neighbour", "reception",
    "desk",        "entrance",  "floor",    "building", "courtyard", "gate",      "office",    "storage",
    "temperature", "fragile",   "bottle",   "glass",    "ceramic",   "textile",   "cotton",    "leather",
    "wooden",      "metal",     "plastic",  "paper",    "cardboard", "wrapped",   "sealed",    "labelled",
    "counted",     "weighed",   "checked",  "returned", "replaced",  "refunded",  "delayed",   "confirmed",
    "cancelled",   "ordered",   "received", "shipped",  "market",    "season",    "quarter",   "annual",
    "monthly",     "report",    "figure",   "table",    "margin",    "discount",  "rate",      "balance",
    "account",     "credit",    "transfer", "payment",  "reminder",  "agreement", "contract",  "supplier",
    "factory",     "assembly",  "machine",  "engine",   "battery",   "cable",     "adapter",   "sensor",
    "display",     "keyboard",  "garden",   "kitchen",  "bathroom",  "bedroom",   "furniture", "cushion",
    "curtain",     "carpet",    "lamp",     "candle",   "river",     "mountain",  "valley",    "forest",
    "harbour",     "bridge",    "station",  "tower",    "castle",    "museum",    "library",   "history",
    "language",    "letter",    "chapter",  "author",   "reader",    "picture",   "colour",    "light",
    "shadow",      "winter",    "spring",   "summer",   "autumn",    "weather",   "rain",      "snow",
    "wind",        "cloud",     "early",    "late",     "often",     "quickly",   "slowly",    "gently",
    "carefully",   "almost",    "nearly",   "rather",   "quite",     "very",      "exactly",   "simply",
    "small",       "large",     "heavy",    "narrow",   "wide",      "short",     "tall",      "bright",
    "dark",        "quiet",     "modern",   "ancient"};
constexpr const char* kAccented[] = {
    "café",        "façade",   "naïve",  "Straße", "Größe",  "Übergabe",  "Änderung", "Küche",  "señor",
    "mañana",      "jalapeño", "crème",  "brûlée", "déjà",   "élève",     "garçon",   "forêt",  "århus",
    "smörgåsbord", "blåbær",   "żółty",  "źródło", "příliš", "žluťoučký", "čaj",      "ørsted", "İstanbul",
    "Ελλάδα",      "θάλασσα",  "Москва", "заказ",  "東京",   "注文",      "서울"};
constexpr const char* kFirstNames[] = {
    "Anna",  "Jürgen", "Zoë",    "Łukasz", "Siobhán", "Marie", "Henrik",  "Chloé", "Piotr", "Inês",
    "Mateo", "Noor",   "Elif",   "Kwame",  "Yuki",    "Søren", "Beatriz", "Tomáš", "Ivana", "Oscar",
    "Greta", "Liam",   "Amélie", "Björn",  "Nadia",   "Farid", "Helena",  "Ruth",  "Óscar", "Vera"};
constexpr const char* kLastNames[] = {
    "Müller",  "Schäfer", "Nowak",     "Dvořák",    "O'Brien",  "García",    "Lefèvre", "Jørgensen",
    "Rossi",   "Silva",   "Kowalczyk", "Andersson", "Mensah",   "Yılmaz",    "Tanaka",  "Fischer",
    "Popescu", "Novák",   "Hughes",    "Moreau",    "Ferreira", "Lindqvist", "Becker",  "Ødegård",
    "Marino",  "Petrov",  "Haddad",    "Walsh",     "Costa",    "Weiß"};
constexpr const char* kFirms[] = {"&amp; Sons", "&amp; Söhne GmbH",          "&amp; Cie", "Ltd.", "S.A.",
                                  "Handels AG", "&amp; Partners &lt;EU&gt;", "Sp. z o.o."};
constexpr const char* kStreets[] = {
    "Hauptstraße",    "Rue de la Paix",  "High Street",  "Calle Mayor",          "Via Roma",  "Königsallee",
    "Długa",          "Östra Hamngatan", "Nørrebrogade", "Avenida da Liberdade", "Mill Lane", "Lindenweg",
    "Place d'Italie", "Kärntner Straße", "Na Příkopě",   "Strada Lungă"};
struct City {
    const char* name;
    const char* country;
};
constexpr City kCities[] = {{"Berlin", "DE"},    {"München", "DE"},   {"Köln", "DE"},   {"Paris", "FR"},
                            {"Besançon", "FR"},  {"London", "GB"},    {"Málaga", "ES"}, {"A Coruña", "ES"},
                            {"Roma", "IT"},      {"Łódź", "PL"},      {"Kraków", "PL"}, {"Göteborg", "SE"},
                            {"København", "DK"}, {"Lisboa", "PT"},    {"Wien", "AT"},   {"Zürich", "CH"},
                            {"Plzeň", "CZ"},     {"Timișoara", "RO"}, {"Dublin", "IE"}, {"İzmir", "TR"}};
constexpr const char* kTags[] = {"fragile",         "heavy",      "new",          "sale",
                                 "b-stock",         "returnable", "oversize",     "cold chain",
                                 "hazmat: class 3", "eco",        "import",       "bulk",
                                 "sample",          "R&amp;D",    "size &lt; XL", "été",
                                 "größe M",         "clearance",  "limited",      "refurbished"};
constexpr const char* kStatuses[] = {"new",       "paid",      "packed",   "shipped",
                                     "delivered", "delivered", "returned", "cancelled"};
constexpr const char* kPriorities[] = {"low", "normal", "high", "urgent"};
constexpr const char* kOffsets[] = {"Z", "Z", "+01:00", "+02:00", "-05:00", ""};

class Generator {
public:
    explicit Generator(std::uint32_t seed) : m_random(seed) {}

    /// The text of the next order; good until the next call.
    const std::string& NextOrder() {
        m_text.clear();
        Format("  <order id=\"%u\" status=\"%s\"", ++m_id, Pick(kStatuses));
        if (Chance(35)) Format(" priority=\"%s\"", Pick(kPriorities));
        m_text += ">\n";
        const std::string name = std::string(Pick(kFirstNames)) + " " + Pick(kLastNames);
        const City& city = kCities[Below(std::size(kCities))];
        Customer(name, city);
        Dates();
        if (Chance(40)) Note();
        Payment(name, city);
        Items();
        m_text += "  </order>\n";
        return m_text;
    }

private:
    template <class... Arguments>
    void Format(const char* format, Arguments... arguments) {
        char line[512];
        const int length = std::snprintf(line, sizeof line, format, arguments...);
        m_text.append(line, static_cast<std::size_t>(length));
    }
    unsigned Below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }
    unsigned Between(unsigned least, unsigned most) { return least + Below(most - least + 1); }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    template <std::size_t count>
    const char* Pick(const char* const (&texts)[count]) {
        return texts[Below(count)];
    }
    std::string Random(const char* from, std::size_t length) {
        const std::string_view characters(from);
        std::string text(length, ' ');
        for (char& c : text)
            c = characters[Below(characters.size())];
        return text;
    }
    std::string Digits(std::size_t length) { return Random("0123456789", length); }

    void Customer(const std::string& name, const City& city) {
        const bool isFirm = Chance(30);
        Format("    <customer>\n      <name>%s%s%s</name>\n", name.c_str(), isFirm ? " " : "",
               isFirm ? Pick(kFirms) : "");
        Format("      <email>%s.%u@%s.example</email>\n      <address>\n", Pick(kWords), Between(1, 9999),
               Pick(kWords));
        Format("        <street>%s %u</street>\n        <city>%s</city>\n", Pick(kStreets), Between(1, 240),
               city.name);
        Format("        <zip>%s</zip>\n        <country>%s</country>\n      </address>\n", Digits(5).c_str(),
               city.country);
        if (Chance(30)) Format("      <vatNumber>%s%s</vatNumber>\n", city.country, Digits(9).c_str());
        m_text += "    </customer>\n";
    }

    void Dates() {
        const unsigned year = Between(2019, 2026);
        const unsigned month = Between(1, 12);
        Format("    <orderDate>%04u-%02u-%02uT%02u:%02u:%02u", year, month, Between(1, 28), Below(24),
               Below(60), Below(60));
        if (Chance(40)) Format(".%03u", Between(1, 999));
        Format("%s</orderDate>\n", Pick(kOffsets));
        if (Chance(50)) {
            Format("    <requiredBy>%04u-%02u-%02u</requiredBy>\n", year, month, Between(1, 28));
        }
    }

    void Note() {
        m_text += "    <note>";
        const unsigned sentences = Between(1, 3);
        for (unsigned i = 0; i < sentences; ++i) {
            if (i > 0) m_text += ' ';
            Sentence();
        }
        m_text += "</note>\n";
    }

    void Sentence() {
        const unsigned words = Between(6, 18);
        const unsigned special = Between(1, words - 1);
        const unsigned kind = Below(100);
        for (unsigned i = 0; i < words; ++i) {
            if (i > 0) m_text += ' ';
            if (i != special || kind >= 35) {
                m_text += Pick(kWords);
            } else if (kind < 10) {
                m_text += "&amp;";
            } else if (kind < 16) {
                Format("&lt; %u kg", Between(2, 90));
            } else {
                m_text += Pick(kAccented);
            }
        }
        m_text += '.';
    }

    void Payment(const std::string& holder, const City& city) {
        m_text += "    <payment>\n";
        const unsigned kind = Below(100);
        if (kind < 55) {
            Format("      <card>\n        <holder>%s</holder>\n        <number>%s</number>\n", holder.c_str(),
                   Digits(16).c_str());
            Format("        <expires>%04u-%02u</expires>\n      </card>\n", Between(2026, 2031),
                   Between(1, 12));
        } else if (kind < 90) {
            Format("      <iban>%s%s</iban>\n", city.country, Digits(20).c_str());
        } else {
            m_text += "      <cash/>\n";
        }
        m_text += "    </payment>\n";
    }

    void Items() {
        m_text += "    <items>\n";
        std::uint64_t total = 0;
        const unsigned items = Between(1, 9);
        for (unsigned i = 0; i < items; ++i)
            total += Item();
        Format("    </items>\n    <total>%llu.%02u</total>\n", static_cast<unsigned long long>(total / 100),
               static_cast<unsigned>(total % 100));
    }

    /// Returns the price of the item in hundredths.
    std::uint64_t Item() {
        Format("      <item>\n        <sku>%s-%s", Random("ABCDEFGHJKLMNPRSTUVWXYZ", 3).c_str(),
               Digits(Between(4, 6)).c_str());
        if (Chance(40)) Format("-%s", Random("ABCDEFGHJKLMNPRSTUVWXYZ0123456789", 2).c_str());
        const unsigned quantity = Between(1, 40);
        const unsigned price = Between(49, 199999);
        Format("</sku>\n        <quantity>%u</quantity>\n        <unitPrice>%u.%02u</unitPrice>\n", quantity,
               price / 100, price % 100);
        const double fraction = static_cast<double>(m_random()) / 4294967296.0;
        switch (Below(3)) {
            case 0:
                Format("        <weight>%.5g</weight>\n", 0.01 + fraction * 40);
                break;
            case 1:
                Format("        <weight>%.3g</weight>\n", 0.1 + fraction * 9);
                break;
            default:
                Format("        <weight>%.17g</weight>\n", 0.001 + fraction * 2);
                break;
        }
        Format("        <gift>%s</gift>\n", Chance(15) ? "true" : "false");
        static constexpr unsigned kTagCounts[] = {0, 0, 1, 1, 2, 3, 5};
        const unsigned tags = kTagCounts[Below(std::size(kTagCounts))];
        const unsigned first = Below(std::size(kTags));
        for (unsigned i = 0; i < tags; ++i)
            Format("        <tags>%s</tags>\n", kTags[(first + i) % std::size(kTags)]);
        m_text += "      </item>\n";
        return std::uint64_t{quantity} * price;
    }

    std::mt19937 m_random;
    std::string m_text;
    unsigned m_id = 0;
};

}  // namespace

void WriteOrdersDocument(std::size_t bytes, std::uint32_t seed,
                         const std::function<void(std::string_view)>& sink) {
    static constexpr std::string_view kEnd = "</orders>\n";
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orders xmlns=\"urn:example:orders\">\n";
    std::size_t size = text.size() + kEnd.size();
    Generator generator(seed);
    for (bool isFirst = true;; isFirst = false) {
        const std::string& order = generator.NextOrder();
        size += order.size();
        if (!isFirst && size > bytes) break;
        text += order;
        if (text.size() > 1U << 20) {
            sink(text);
            text.clear();
        }
    }
    text += kEnd;
    sink(text);
}

std::string MakeOrdersDocument(std::size_t bytes, std::uint32_t seed) {
    std::string document;
    document.reserve(bytes + 4096);
    WriteOrdersDocument(bytes, seed, [&](std::string_view piece) { document += piece; });
    return document;
}

}  // namespace benchmarks
