#include "kvxml/objects/variant.h"

#include <gtest/gtest.h>

#include <functional>
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
        {ItemType_i1, "i1", "-128", "128", KVXML_PASS(I1)},
        {ItemType_ui8, "ui8", "18446744073709551615", "x", KVXML_PASS(UI8)},
        {ItemType_r4, "r4", "-1.5", "x", KVXML_PASS(R4)},
        {ItemType_r8, "r8", "0.1", "x", KVXML_PASS(R8)},
        {ItemType_duration, "duration", "P1Y2M3DT4H5M6S", "1Y", KVXML_PASS(Duration)},
        {ItemType_month, "month", "--07", "x", KVXML_PASS(Month)},
        {ItemType_datetime, "datetime", "2024-02-29T23:59:58Z", "x", KVXML_PASS(DateTime)},
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
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(kind.name);
        KvVariant value = Make(kind);
        Expect(value, kind);
        KvVariant passed;
        kind.pass(passed, value);
        Expect(passed, kind);

        const KvVariant copy(value);
        KvVariant moved(std::move(value));
        EXPECT_FALSE(value.IsValid());
        Expect(moved, kind);
        value = copy;
        value = *&value;
        Expect(value, kind);

        value.SetNil();
        EXPECT_TRUE(value.IsNil() && value.IsValid());
        std::string scratch;
        EXPECT_EQ(value.ToText(scratch, ""), "");
        EXPECT_EQ(value.GetTypeAsEnum(), kind.type);
        KvVariant nil(value);
        EXPECT_EQ(nil.GetTypeAsEnum(), kind.type);
        kind.pass(nil, copy);
        Expect(nil, kind);
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
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 0");
    EXPECT_EQ(ErrorOf([&] { value.ToString(""); }), "Invalid Type 0 to convert to string");
    value.SetNil();
    EXPECT_TRUE(value.IsNil());
    std::string scratch;
    EXPECT_EQ(ErrorOf([&] { value.ToText(scratch, ""); }), "Invalid Type 0 to convert to string");
    EXPECT_EQ(value.GetTypeAsEnum(), ItemType_Unknown);
    value.Clear();
    EXPECT_FALSE(value.IsNil() || value.IsValid());
}

TEST(VariantTest, UnsetDatesAreNotForOutput) {
    std::string scratch;
    KvVariant value;
    void (KvVariant::*const setters[])(const CDateTime&) = {&KvVariant::SetDateTime, &KvVariant::SetDate,
                                                            &KvVariant::SetTime, &KvVariant::SetYearMonth,
                                                            &KvVariant::SetMonthDay};
    for (const auto set : setters) {
        (value.*set)(CDateTime());
        EXPECT_EQ(ErrorOf<CKvInvalidValueException>([&] { value.ToText(scratch, ""); }),
                  "The date is not set");
        EXPECT_EQ(value.ToString(nullptr), "Error: Date Not Set");
    }
    value.SetTime(CDateTime(CDateTime::dt_time));
    EXPECT_EQ(value.ToText(scratch, ""), "00:00:00");
}

#ifndef NDEBUG
TEST(VariantDeathTest, GettersOfAnotherKind) {
    KvVariant value;
    value.SetI4(1);
    EXPECT_DEATH(value.GetI8(), "");
    EXPECT_DEATH(value.GetString(), "");
    EXPECT_DEATH(value.TakeDecimal(), "");
    value.SetNil();
    EXPECT_DEATH(value.GetI4(), "");
    value.SetDate(CDateTime(2024, 2, 29));
    EXPECT_DEATH(value.GetDateTime(), "");
    EXPECT_DEATH(value.BinaryValue(), "");
}
#endif

TEST(VariantTest, FormatsOfRecordsMustBeFormats) {
    const auto buildAll = [](ItemType type, const char* format) {
        const CPrimitiveRestrictions none;
        KvXmlLib16Data::CElementInfoSeqPrimMnd("a", "", 0, false, type, format, kNone, none, "");
        KvXmlLib16Data::CAttributeInfoPrimitive("a", "", 0, false, type, format, kNone, none, "");
        KvXmlLib16Data::CParentElementInfo(KvXmlLib16Data::XmlElementGroupType_Sequence,
                                           KvXmlLib16Data::XmlElementType_Element, "a", "", false, false, 0,
                                           type, format, false);
    };
    for (const auto& [type, format] : std::vector<std::pair<ItemType, const char*>>{
             {ItemType_r8, "%d"}, {ItemType_r4, "%s"}, {ItemType_decimal, "%.2f"}, {ItemType_decimal, "x"}})
        EXPECT_THROW(buildAll(type, format), CKvInvalidParamException) << format;
    for (const auto& [type, format] : std::vector<std::pair<ItemType, const char*>>{
             {ItemType_r8, "%.2f"}, {ItemType_decimal, " +2"}, {ItemType_i4, "%s"}, {ItemType_r4, nullptr}})
        EXPECT_NO_THROW(buildAll(type, format));
}

TEST(VariantTest, Texts) {
    for (const Kind& kind : Kinds()) {
        if (kind.bad == nullptr) continue;
        SCOPED_TRACE(kind.name);
        for (const std::size_t before : {4U, 9U}) {
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
    EXPECT_EQ(value.GetI4(), 7);
    value.SetR4(2.5F);
    EXPECT_EQ(value.ToString("%.1e"), "2.5e+00");
    // From its own text.
    value.SetString(" 12 ");
    value.FromString(value.StringValue(), ItemType_string, kCollapse);
    EXPECT_EQ(value.GetString(), "12");
    value.FromString(value.StringValue(), ItemType_integer, kCollapse);
    EXPECT_EQ(value.ToString(""), "12");
}

TEST(VariantTest, BorrowedStrings) {
    std::string text = "a string that is too long for a small buffer";
    KvVariant value;
    value.SetStringReference(text);
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
    moved.SetStringReference(text);
    moved = copy;
    text = "changed";
    EXPECT_EQ(moved.GetString(), "a string that is too long for a small buffer");
    EXPECT_EQ(copy.TakeString(), "a string that is too long for a small buffer");
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
    EXPECT_EQ(value.GetXmlObject().Get(), object.Get());
    EXPECT_EQ(value.PeekXmlCollection(), nullptr);
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 27");
    EXPECT_EQ(ErrorOf([&] { value.ToString(""); }), "Invalid Type 27 to convert to string");
    {
        KvVariant copy(value);
        EXPECT_EQ(references(), 3);
        KvVariant moved(std::move(copy));
        EXPECT_EQ(references(), 3);
        copy = moved;
        copy.SetXmlObject(object.Get());
        EXPECT_EQ(references(), 4);
        moved.SetNil();
        EXPECT_EQ(references(), 3);
        EXPECT_EQ(moved.GetTypeAsEnum(), ItemType_XmlObject);
    }
    EXPECT_EQ(references(), 2);
    value.SetString("other");
    EXPECT_EQ(references(), 1);
    // A reference is somebody else's until the variant is told to own it, and copies own what they have.
    value.SetXmlObjectReference(object.Get());
    EXPECT_EQ(references(), 1);
    EXPECT_EQ(value.PeekXmlObject(), object.Get());
    {
        const KvVariant copy(value);
        EXPECT_EQ(references(), 2);
        KvVariant moved(std::move(value));
        EXPECT_EQ(references(), 2);
        moved.Own();
        moved.Own();
        EXPECT_EQ(references(), 3);
    }
    EXPECT_EQ(references(), 1);
    std::string text = "text";
    value.SetStringReference(text);
    value.Own();
    text = "changed";
    EXPECT_EQ(value.StringValue(), "text");

    const CSmartPtr<CAttributeCol> collection(new CAttributeCol());
    value.SetXmlCollection(collection.Get());
    EXPECT_EQ(value.GetXmlCollection().Get(), collection.Get());
    EXPECT_EQ(value.PeekXmlObject(), nullptr);
    EXPECT_EQ(ErrorOf([&] { value.GetType(); }), "Invalid Type 28");
    value.Clear();
    EXPECT_EQ(collection->AddRef(), 2);
    collection->Release();
    value.SetXmlObject(nullptr);
    EXPECT_EQ(value.GetXmlObject().Get(), nullptr);
}

TEST(VariantTest, ValuesAreMovedOut) {
    KvVariant value = Make(Kinds()[9]);
    EXPECT_EQ(value.TakeString(), Kinds()[9].text);
    value = Make(Kinds()[11]);
    EXPECT_EQ(value.TakeDecimal().ToString(), Kinds()[11].text);
    value = Make(Kinds()[12]);
    EXPECT_EQ(CConversions::integerToString(value.TakeInteger()), Kinds()[12].text);
    value = Make(Kinds()[0]);
    EXPECT_EQ(value.TakeBinary().GetLength(), 3U);
}

}  // namespace
}  // namespace KvXmlLib16
