#include "kvxml/types/variant.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_classes.h"

namespace KvXmlLib16 {
namespace {

constexpr auto kNone = CWhitespaceUtils::WhitespaceRule_None;
constexpr auto kCollapse = CWhitespaceUtils::WhitespaceRule_Collapse;

/// One kind: its name, a text that is its own form, and one that is no value of it (null: every text is one).
struct Kind {
    ItemType type;
    const char* name;
    std::string text;
    const char* bad;
    /// The text form of what the typed getter returns, given back through the typed setter.
    std::function<void(KvVariant&, const KvVariant&)> pass;
};

// The typed setter with what the typed getter returns.
#define KVXML_PASS(Name) [](KvVariant& to, const KvVariant& from) { to.Set##Name(from.Get##Name()); }

const std::vector<Kind>& Kinds() {
    static const std::vector<Kind> kinds = {
        {ItemType_hexBinary, "hexBinary", "00FF7A", "0", KVXML_PASS(HexBinary)},
        {ItemType_base64Binary, "base64Binary", "SGVsbG8=", nullptr, KVXML_PASS(Base64Binary)},
        {ItemType_i1, "i1", "-128", "128", KVXML_PASS(I1)},
        {ItemType_i2, "i2", "-32768", "32768", KVXML_PASS(I2)},
        {ItemType_i4, "i4", "-2147483648", "x", KVXML_PASS(I4)},
        {ItemType_i8, "i8", "-9223372036854775808", "x", KVXML_PASS(I8)},
        {ItemType_ui1, "ui1", "255", "256", KVXML_PASS(UI1)},
        {ItemType_ui2, "ui2", "65535", "65536", KVXML_PASS(UI2)},
        {ItemType_ui4, "ui4", "4294967295", "x", KVXML_PASS(UI4)},
        {ItemType_ui8, "ui8", "18446744073709551615", "x", KVXML_PASS(UI8)},
        {ItemType_r4, "r4", "-1.5", "x", KVXML_PASS(R4)},
        {ItemType_r8, "r8", "0.1", "x", KVXML_PASS(R8)},
        {ItemType_duration, "duration", "P1Y2M3DT4H5M6S", "1Y", KVXML_PASS(Duration)},
        {ItemType_yearMonth, "yearMonth", "2024-02", "x", KVXML_PASS(YearMonth)},
        {ItemType_monthDay, "monthDay", "--12-31", "x", KVXML_PASS(MonthDay)},
        {ItemType_year, "year", "1999", "x", KVXML_PASS(Year)},
        {ItemType_month, "month", "--07", "x", KVXML_PASS(Month)},
        {ItemType_day, "day", "---09", "x", KVXML_PASS(Day)},
        {ItemType_date, "date", "2024-02-29", "2024-02-30", KVXML_PASS(Date)},
        {ItemType_datetime, "datetime", "2024-02-29T23:59:58Z", "x", KVXML_PASS(DateTime)},
        {ItemType_time, "time", "01:02:03", "x", KVXML_PASS(Time)},
        {ItemType_char, "char", "x", "xy", KVXML_PASS(Char)},
        {ItemType_string, "string", std::string("a long string that needs memory of its own\0tail", 47),
         nullptr, KVXML_PASS(String)},
        {ItemType_boolean, "boolean", "true", "maybe", KVXML_PASS(Boolean)},
        {ItemType_decimal, "decimal", "123456789012345678901234567890.125", "1x", KVXML_PASS(Decimal)},
        {ItemType_integer, "integer", "-123456789012345678901234567890", "x", KVXML_PASS(Integer)},
    };
    return kinds;
}

KvVariant Make(const Kind& kind) {
    KvVariant value;
    value.FromString(kind.text, kind.type, kNone);
    return value;
}

void Expect(const KvVariant& value, const Kind& kind) {
    EXPECT_TRUE(value.IsValid());
    EXPECT_FALSE(value.IsNil());
    EXPECT_EQ(value.GetTypeAsEnum(), kind.type);
    EXPECT_EQ(value.GetType(), kind.name);
    EXPECT_EQ(value.ToString(nullptr), kind.text);
    std::string scratch = "old";
    EXPECT_EQ(value.ToText(scratch, ""), kind.text);
}

TEST(VariantTest, EveryKind) {
    ASSERT_EQ(Kinds().size(), 26U);
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(kind.name);
        KvVariant value = Make(kind);
        Expect(value, kind);
        KvVariant passed;
        kind.pass(passed, value);
        Expect(passed, kind);

        KvVariant copy(value);
        KvVariant assigned = Make(Kinds()[22]);
        assigned = value;
        assigned = *&assigned;
        Expect(copy, kind);
        Expect(assigned, kind);
        KvVariant moved(std::move(copy));
        EXPECT_FALSE(copy.IsValid());
        assigned = std::move(moved);
        EXPECT_FALSE(moved.IsValid());
        Expect(assigned, kind);
        Expect(value, kind);

        value.SetNil();
        EXPECT_TRUE(value.IsNil() && value.IsValid());
        EXPECT_EQ(value.GetTypeAsEnum(), kind.type);
        EXPECT_EQ(value.ToString(""), "");
        KvVariant nil(value);
        EXPECT_TRUE(nil.IsNil());
        EXPECT_EQ(nil.GetTypeAsEnum(), kind.type);
        kind.pass(nil, assigned);
        Expect(nil, kind);
        assigned.Clear();
        EXPECT_FALSE(assigned.IsValid());
        EXPECT_EQ(assigned.GetTypeAsEnum(), ItemType_Unknown);
        assigned.SetInvalid();
    }
    // Every kind in the place of every other.
    for (const Kind& from : Kinds()) {
        for (const Kind& to : Kinds()) {
            KvVariant value = Make(from);
            value = Make(to);
            Expect(value, to);
        }
    }
}

TEST(VariantTest, NoValue) {
    KvVariant value;
    EXPECT_FALSE(value.IsValid());
    EXPECT_FALSE(value.IsNil());
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 0");
    EXPECT_EQ(ErrorOf([&] { value.ToString(""); }), "Invalid Type 0 to convert to string");
    const KvVariant copy(value);
    EXPECT_FALSE(copy.IsValid());
    value.SetNil();
    EXPECT_TRUE(value.IsValid());
    EXPECT_TRUE(value.IsNil());
    EXPECT_EQ(value.GetTypeAsEnum(), ItemType_Unknown);
    value.SetI4(5);
    EXPECT_FALSE(value.IsNil());
    value.SetNil();
    EXPECT_EQ(value.GetType(), "i4");
    value.Clear();
    EXPECT_FALSE(value.IsNil());
}

TEST(VariantTest, AFailedParseKeepsTheValue) {
    for (const Kind& kind : Kinds()) {
        if (kind.bad == nullptr) continue;
        SCOPED_TRACE(kind.name);
        for (const std::size_t before : {std::size_t{4}, std::size_t{22}, std::size_t{24}}) {
            KvVariant value = Make(Kinds()[before]);
            EXPECT_THROW(value.FromString(kind.bad, kind.type, kNone), CKvException);
            Expect(value, Kinds()[before]);
        }
    }
    KvVariant value;
    value.SetI4(7);
    for (const int type : {-1, 0, 27, 28, 29}) {
        EXPECT_EQ(ErrorOf([&] { value.FromString("1", static_cast<ItemType>(type), kNone); }),
                  "Invalid Type " + std::to_string(type) + " to convert to string");
    }
    EXPECT_EQ(ErrorOf([&] { value.FromString("x", ItemType_i4, kNone); }),
              "The value [x] can not be converted to a i4");
    EXPECT_EQ(value.GetI4(), 7);
    // From its own text.
    value.SetString(" 12 ");
    value.FromString(value.StringValue(), ItemType_string, kCollapse);
    EXPECT_EQ(value.GetString(), "12");
    value.FromString(value.StringValue(), ItemType_integer, kCollapse);
    EXPECT_EQ(value.ToString(""), "12");
}

TEST(VariantTest, HostileTextIsRefusedByEveryKind) {
    using namespace std::string_literals;
    const std::string texts[] = {
        "1\0"s,
        "\0"s + "1",
        "\x80",
        "\xFF\xFE",
        "\u0661",
        "\uFF11",
        "1,5",
        "1E9999999999x",
        "P1E999Y",
        "%s%n",
        "1\u00A0",
        std::string(1000001, '-'),
        std::string(1000000, '1') + "x",
        std::string(1000000, ' ') + "x",
    };
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(kind.name);
        KvVariant value;
        EXPECT_EQ(ErrorOf([&] {
                      value.FromString(kind.text, kind.type,
                                       static_cast<CWhitespaceUtils::WhitespaceRule>(4));
                  }),
                  "Unknown WhitespaceRule");
        // Every text is a string, and bad base64 is empty.
        if (kind.type == ItemType_string || kind.type == ItemType_base64Binary) continue;
        for (const std::string& text : texts) {
            const bool isOneByte = CWhitespaceUtils::Collapse(text).size() == 1;
            if (kind.type == ItemType_char && isOneByte) continue;
            if (kind.type == ItemType_integer && text.front() == '-') continue;  // signs alone are 0
            EXPECT_THROW(value.FromString(text, kind.type, kCollapse), CKvException) << text.substr(0, 20);
        }
        EXPECT_FALSE(value.IsValid());
    }
    KvVariant value;
    value.FromString("1E999999999", ItemType_r8, kNone);
    EXPECT_EQ(value.GetR8(), std::numeric_limits<double>::infinity());
    EXPECT_THROW(value.FromString("1E999999999", ItemType_decimal, kNone), CKvException);
    EXPECT_THROW(value.FromString("1E999999999", ItemType_i8, kNone), CKvException);
}

TEST(VariantTest, Formats) {
    KvVariant value;
    value.SetR8(2.5);
    EXPECT_EQ(value.ToString("%.3f"), "2.500");
    EXPECT_EQ(value.ToString(nullptr), "2.5");
    value.SetR4(2.5F);
    EXPECT_EQ(value.ToString("%.1e"), "2.5e+00");
    value.FromString("12.345", ItemType_decimal, kNone);
    EXPECT_EQ(value.ToString("2"), "12.35");
    value.SetI4(5);
    EXPECT_EQ(value.ToString("%.3f"), "5");  // has no formats
}

TEST(VariantTest, BorrowedStrings) {
    std::string text = "a string that is too long for a small buffer";
    KvVariant value;
    value.SetStringReference(text);
    EXPECT_EQ(value.GetTypeAsEnum(), ItemType_string);
    EXPECT_EQ(&value.StringValue(), &text);
    std::string scratch;
    EXPECT_EQ(value.ToText(scratch, "").data(), text.data());
    KvVariant copy(value);
    EXPECT_NE(&copy.StringValue(), &text);
    KvVariant moved(std::move(value));
    EXPECT_EQ(&moved.StringValue(), &text);
    EXPECT_FALSE(value.IsValid());
    EXPECT_EQ(moved.TakeString(), text);
    EXPECT_EQ(text, "a string that is too long for a small buffer");
    moved.SetString("own");
    EXPECT_EQ(moved.GetString(), "own");
    moved.SetStringReference(text);
    moved = copy;
    text = "changed";
    EXPECT_EQ(moved.GetString(), "a string that is too long for a small buffer");
    EXPECT_EQ(copy.TakeString(), "a string that is too long for a small buffer");
    moved.SetStringReference(text);
    moved.SetNil();
    EXPECT_EQ(moved.GetType(), "string");
    moved.SetStringReference(text);
    moved.SetI4(1);
    EXPECT_EQ(moved.ToString(""), "1");
}

TEST(VariantTest, ReferencesAreCounted) {
    const auto object = fixture::Make<fixture::Empty>();
    const auto references = [&object] {
        object->AddRef();
        return object->Release();
    };
    KvVariant value;
    value.SetXmlObject(object.Get());
    EXPECT_EQ(references(), 2);
    EXPECT_EQ(value.GetTypeAsEnum(), ItemType_XmlObject);
    EXPECT_EQ(value.GetXmlObject().Get(), object.Get());
    EXPECT_EQ(value.PeekXmlCollection(), nullptr);
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 27");
    EXPECT_EQ(ErrorOf([&] { value.ToString(""); }), "Invalid Type 27 to convert to string");
    {
        KvVariant copy(value);
        EXPECT_EQ(references(), 3);
        KvVariant moved(std::move(copy));
        EXPECT_EQ(references(), 3);
        EXPECT_EQ(copy.PeekXmlObject(), nullptr);
        copy = moved;
        EXPECT_EQ(references(), 4);
        copy.SetXmlObject(object.Get());
        EXPECT_EQ(references(), 4);
        moved.SetNil();
        EXPECT_EQ(references(), 3);
        EXPECT_EQ(moved.PeekXmlObject(), nullptr);
        EXPECT_EQ(moved.GetTypeAsEnum(), ItemType_XmlObject);
    }
    EXPECT_EQ(references(), 2);
    value.SetString("other");
    EXPECT_EQ(references(), 1);

    const CSmartPtr<CAttributeCol> collection(new CAttributeCol());
    value.SetXmlCollection(collection.Get());
    EXPECT_EQ(value.GetXmlCollection().Get(), collection.Get());
    EXPECT_EQ(value.PeekXmlObject(), nullptr);
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 28");
    EXPECT_EQ(collection->AddRef(), 3);
    EXPECT_EQ(collection->Release(), 2);
    value.Clear();
    EXPECT_EQ(collection->AddRef(), 2);
    collection->Release();
    value.SetXmlObject(nullptr);
    EXPECT_TRUE(value.IsValid());
    EXPECT_EQ(value.GetXmlObject().Get(), nullptr);
    const KvVariant copy(value);
    EXPECT_EQ(copy.PeekXmlObject(), nullptr);
}

TEST(VariantTest, ValuesAreMovedOut) {
    KvVariant value = Make(Kinds()[22]);
    EXPECT_EQ(value.TakeString(), Kinds()[22].text);
    EXPECT_EQ(value.GetTypeAsEnum(), ItemType_string);
    value = Make(Kinds()[24]);
    EXPECT_EQ(value.TakeDecimal().ToString(), Kinds()[24].text);
    value = Make(Kinds()[25]);
    EXPECT_EQ(CConversions::integerToString(value.TakeInteger()), Kinds()[25].text);
    value = Make(Kinds()[0]);
    EXPECT_EQ(value.TakeBinary().GetLength(), 3U);
    value.SetI4(1);
    EXPECT_EQ(value.GetI4(), 1);
}

}  // namespace
}  // namespace KvXmlLib16
