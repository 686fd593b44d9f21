#include "kvxml/objects/primitive_collections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_classes.h"

namespace KvXmlLib16 {
namespace {

using fixture::kNamespace;

/// A class with one repeated member, whose collection the test makes.
class List final : public fixture::Bound<List> {
public:
    explicit List(CXmlCollectionBase* collection) : items(*this, collection) {
        CleanTables();  // records note the bounds of the first collection they see
        SetElementName("List");
        Init();
    }
    static void MakeTables(fixture::Tables& t) {
        t.info = new fixture::CParentElementInfo(fixture::XmlElementGroupType_Sequence,
                                                 fixture::XmlElementType_Element, "List", kNamespace, true,
                                                 false, -1, ItemType_Unknown, nullptr, false);
        t.elements = {new fixture::CElementInfoSeqPrimCol("item", kNamespace, 0)};
    }

    /// Reads a list of these items; attributes and the like are part of an item: "<item>1</item><item/>".
    std::string ReadingError(const std::string& content) {
        const std::string document = std::string("<List xmlns='") + kNamespace +
                                     "' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>" + content +
                                     "</List>";
        return ErrorOf([&] { FromXml(document.c_str()); });
    }
    /// The texts of the written items, each followed by "|".
    std::string Texts() const {
        CXmlDocument document;
        document.LoadXml(ToXml().c_str());
        std::string texts;
        for (auto* item = document.GetDocumentElement()->GetFirstElement(); item != nullptr;
             item = item->GetNextSiblingElement())
            texts += item->GetText() + "|";
        return texts;
    }

private:
    class Items final : public fixture::Property {
    public:
        Items(fixture::Class& owner, CXmlCollectionBase* collection)
            : Property(owner), m_collection(collection) {}
        void Access(bool read, KvVariant& value) override {
            if (read) value.SetXmlCollection(m_collection.Get());
        }
        void Reset() override { m_collection->Clear(); }

    private:
        CSmartPtr<CXmlCollectionBase> m_collection;
    };
    Items items;
};

std::string Item(const std::string& text) {
    return "<item>" + text + "</item>";
}

// --- all kinds ---------------------------------------------------------------------------------------------

using MakeCollection = CXmlTypeCollection* (*)(const char* pattern);

template <class Collection>
CXmlTypeCollection* Make(const char* pattern) {
    return new Collection("item", kNamespace, 0, 3, pattern);
}

struct KindCase {
    const char* kind;
    MakeCollection make;
    const char* text;     // as read, without the blanks around
    const char* written;  // null: as read
    const char* other;    // another value
};

const KindCase kKindCases[] = {
    {"i1", Make<Ci1Col>, "-128", nullptr, "127"},
    {"i2", Make<Ci2Col>, "+32767", "32767", "-32768"},
    {"i4", Make<Ci4Col>, "007", "7", "-2147483648"},
    {"i8", Make<Ci8Col>, "-9223372036854775808", nullptr, "1"},
    {"ui1", Make<Cui1Col>, "255", nullptr, "0"},
    {"ui2", Make<Cui2Col>, "65535", nullptr, "0"},
    {"ui4", Make<Cui4Col>, "4294967295", nullptr, "0"},
    {"ui8", Make<Cui8Col>, "18446744073709551615", nullptr, "0"},
    {"r4", Make<Cr4Col>, "1.50", "1.5", "INF"},
    {"r8", Make<Cr8Col>, "1e-1", "0.1", "NaN"},
    {"boolean", Make<CbooleanCol>, "1", "true", "false"},
    {"string", Make<CstringCol>, "a  b", nullptr, ""},
    {"year", Make<CyearCol>, "1999", nullptr, "2024"},
    {"month", Make<CmonthCol>, "--07", nullptr, "--12"},
    {"day", Make<CdayCol>, "---09", nullptr, "---31"},
    {"decimal", Make<CdecimalCol>, "123456789012345678901234567890.10", "123456789012345678901234567890.1",
     "-1"},
    {"integer", Make<CintegerCol>, "123456789012345678901234567890", nullptr, "-1"},
    {"duration", Make<CdurationCol>, "P1Y2M3DT4H5M6S", nullptr, "PT1S"},
    {"hexBinary", Make<ChexBinaryCol>, "00ff", "00FF", "7A"},
    {"base64Binary", Make<Cbase64BinaryCol>, "SGVsbG8=", nullptr, "AA=="},
    {"date", Make<CdateCol>, "2024-02-29", nullptr, "2024-03-01"},
    {"datetime", Make<CdatetimeCol>, "2024-02-29T23:59:58Z", nullptr, "2024-03-01T00:00:00"},
    {"time", Make<CtimeCol>, "01:02:03", nullptr, "23:59:59"},
    {"yearMonth", Make<CyearMonthCol>, "2024-02", nullptr, "2024-03"},
    {"monthDay", Make<CmonthDayCol>, "--12-31", nullptr, "--01-01"},
};

/// A pattern that only `text` matches.
std::string PatternOf(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (c == '.' || c == '+' || c == '-') pattern += '\\';
        pattern += c;
    }
    return pattern;
}

TEST(PrimitiveCollections, EveryKindReadsAndWrites) {
    for (const KindCase& c : kKindCases) {
        SCOPED_TRACE(c.kind);
        const std::string blank = std::string(c.kind) == "string" ? "" : " \n ";
        const std::string written = c.written != nullptr ? c.written : c.text;
        // The text is matched as it was read, not as it would be written.
        const CSmartPtr<List> list(new List(c.make(PatternOf(c.text).c_str())));
        EXPECT_EQ(list->ReadingError(Item(blank + c.text + blank) + Item(c.text)), "(no error)");
        EXPECT_EQ(list->Texts(), written + "|" + written + "|");
        EXPECT_EQ(list->ReadingError(""), "(no error)");
        const std::string error = list->ReadingError(Item(c.text) + Item(c.other));
        EXPECT_NE(error.find(std::string("Invalid Value for item [") + c.other + "]."), std::string::npos)
            << error;
    }
}

TEST(PrimitiveCollections, FacetsInTheOrderOfTheConstructor) {
    constexpr auto kRule = CWhitespaceUtils::WhitespaceRule_Replace;
    const char* const ns = kNamespace;
    struct Case {
        const char* facet;
        CXmlTypeCollection* collection;
        const char* good;
        const char* bad;
    };
    // clang-format off
    const Case cases[] = {
        {"minLength", new CstringCol("item", ns, 0, -1, "", 2), "ab", "a"},
        {"maxLength", new ChexBinaryCol("item", ns, 0, -1, "", -1, 2), "0000", "000000"},
        {"minInclusive", new Ci1Col("item", ns, 0, -1, "", -1, -1, "5"), "5", "4"},
        {"maxInclusive", new CdateCol("item", ns, 0, -1, "", -1, -1, "", "2024-01-31"), "2024-01-31", "2024-02-01"},
        {"minExclusive", new Cr8Col("item", ns, 0, -1, "", -1, -1, "", "", "0"), "1", "0"},
        {"maxExclusive", new CdurationCol("item", ns, 0, -1, "", -1, -1, "", "", "", "P1D"), "PT1H", "P1D"},
        {"length", new CstringCol("item", ns, 0, -1, "", -1, -1, "", "", "", "", 2), "ab", "abc"},
        {"totalDigits", new CintegerCol("item", ns, 0, -1, "", -1, -1, "", "", "", "", -1, 2), "99", "100"},
        {"fractionDigits", new CdecimalCol("item", ns, 0, -1, "", -1, -1, "", "", "", "", -1, -1, 1), "0.1", "0.11"},
        {"enumeration", new CstringCol("item", ns, 0, -1, "", -1, -1, "", "", "", "", -1, -1, -1, kRule, "a b\nc"),
         "a\tb", "a"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.facet);
        CSmartPtr<List> list(new List(c.collection));
        EXPECT_EQ(list->ReadingError(Item(c.good)), "(no error)");
        const std::string error = list->ReadingError(Item(c.bad));
        EXPECT_NE(error.find(c.facet), std::string::npos) << error;
    }
}

// --- lists of values ---------------------------------------------------------------------------------------

/// Writes events down, and does what a test wants at each.
class Listener final : public IEventSink {
public:
    void OnEvent(CXmlObjectBase* source, MsgType type, void* data) override {
        std::string text = std::to_string(type);
        if (type == MsgType_Add || type == MsgType_AddComplete) {
            text += "v" + std::to_string(*static_cast<const std::int32_t*>(data));
        } else if (data != nullptr) {
            text += "@" + std::to_string(*static_cast<const std::int32_t*>(data));
        }
        const int count = static_cast<CXmlCollectionBase*>(source)->GetCount();
        events += (events.empty() ? "" : " ") + text + ":" + std::to_string(count);
        if (action) action(type);
    }
    CXmlObjectBase* GetBase() override { return nullptr; }

    std::string events;  // type, item or index, count at that moment
    std::function<void(MsgType)> action;
};

template <class Collection>
std::string Join(const Collection& values) {
    std::string text;
    for (const auto value : values)
        text += std::to_string(value);
    return text;
}

template <class Collection>
class ValueLists : public testing::Test {};
using ValueListTypes = testing::Types<Ci1Col, Ci4Col, Cr8Col, CbooleanCol>;
TYPED_TEST_SUITE(ValueLists, ValueListTypes);

TYPED_TEST(ValueLists, PlacesIteratorsAndCopies) {
    using T = typename TypeParam::value_type;
    TypeParam c("n", "", 0, -1);
    for (int round = 0; round < 2; ++round) {
        const int count = c.GetCount();
        for (const int index : {-1, count + 1})
            EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { c.AddAt(index, T(1)); }), "Index out of range");
        for (const int index : {-1, count}) {
            const std::string range =
                "Index " + std::to_string(index) + " is out of range, use 0 - " + std::to_string(count - 1);
            EXPECT_EQ(ErrorOf([&] { c.Remove(index); }), range);
            EXPECT_EQ(ErrorOf([&] { c.Item(index); }), range);
        }
        c.Add(T(1));
        c.AddAt(0, T(0));
        c.AddAt(c.GetCount(), T(0));
    }
    std::vector<T> values(c.begin(), c.end());
    EXPECT_EQ(values, (std::vector<T>{0, 0, 1, 0, 1, 0}));

    TypeParam copy(c);
    TypeParam assigned("other", "", 0, 1);
    assigned.Add(T(1));
    assigned = c;
    c.Clear();
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), values.begin(), values.end()));
    EXPECT_TRUE(std::equal(assigned.begin(), assigned.end(), values.begin(), values.end()));
}

TEST(PrimitiveCollections, StorageKeepsOrderWhateverIsDone) {
    CstringCol c("n", "", 0, -1);
    std::vector<std::string> model;
    std::minstd_rand random(7);
    for (int i = 0; i < 6000; ++i) {
        const bool grows = i / 600 % 2 == 0;
        const auto at = static_cast<int>(random() % 3 == 0 ? 0 : random() % (model.size() + 1));
        if (random() % 4 != 0 ? grows : !grows) {
            const std::string value = "a value too long to be kept in place " + std::to_string(i);
            c.AddAt(at, value);
            model.insert(model.begin() + at, value);
        } else if (at < static_cast<int>(model.size())) {
            c.Remove(at);
            model.erase(model.begin() + at);
        }
    }
    ASSERT_TRUE(std::equal(c.begin(), c.end(), model.begin(), model.end()));
    // A value of the collection itself.
    c.Add(*c.begin());
    EXPECT_EQ(c.Item(c.GetCount() - 1), model.front());
}

TEST(PrimitiveCollections, StandardContainerOperations) {
    CbooleanCol flags("f", "", 0, -1);
    EXPECT_EQ(ErrorOf([&] { flags.back(); }), "Index 0 is out of range, use 0 - -1");
    flags.push_back(true);
    flags.push_back(false);
    EXPECT_EQ(flags.size(), 2U);
    EXPECT_TRUE(flags.front() && flags[0] && !flags.back());
    EXPECT_EQ(ErrorOf([&] { flags[2]; }), "Index 2 is out of range, use 0 - 1");
    Ci4Col numbers("n", "", 0, -1, nullptr, -1, -1, nullptr, "500");
    EXPECT_THROW(numbers.push_back(501), CKvInvalidValueException);
    const std::vector<std::int32_t> some = {3, 1, 2};
    std::copy(some.begin(), some.end(), std::back_inserter(numbers));
    const Ci4Col& constant = numbers;
    EXPECT_EQ(std::vector<std::int32_t>(constant.cbegin(), constant.cend()), some);
    CdateCol dates("d", "", 0, -1);
    EXPECT_NE(ErrorOf([&] { dates.push_back(CDateTime(CDateTime::dt_time)); }), "(no error)");

    Ci4Col moved(std::move(numbers));
    EXPECT_EQ(moved.size(), 3U);
    EXPECT_TRUE(numbers.empty());
    EXPECT_THROW(numbers.push_back(501), CKvInvalidValueException) << "the facets are in both";
    numbers.push_back(7);
    moved = std::move(numbers);
    EXPECT_EQ(moved.size(), 1U);
    EXPECT_EQ(moved.back(), 7);
}

TEST(PrimitiveCollections, Events) {
    Ci4Col c("n", "", 0, -1, nullptr, -1, -1, "0", "9");
    Listener listener;
    c.AddEventListener(&listener);
    c.Add(1);
    c.AddAt(0, 2);
    c.Remove(1);
    EXPECT_EQ(listener.events, "1v1:0 2v1:1 0:1 1v2:1 2v2:2 0:2 3@1:2 4@1:1 0:1");
    // What is refused was announced.
    listener.events.clear();
    EXPECT_THROW(c.Add(10), CKvInvalidValueException);
    EXPECT_THROW(c.AddAt(5, 3), CKvInvalidParamException);
    EXPECT_THROW(c.Remove(1), CKvInvalidParamException);
    EXPECT_EQ(listener.events, "1v10:1 1v3:1 3@1:1");
    EXPECT_EQ(Join(c), "2");
    c.Add(3);
    c.Add(4);
    listener.events.clear();
    c.Clear();
    EXPECT_EQ(listener.events, "3@0:3 4@0:2 0:2 3@0:2 4@0:1 0:1 3@0:1 4@0:0 0:0");

    c.Add(5);
    listener.action = [](IEventSink::MsgType type) {
        if (type == IEventSink::MsgType_Remove) throw CKvException("refused");
    };
    EXPECT_EQ(ErrorOf([&] { c.Clear(); }), "refused");
    EXPECT_EQ(Join(c), "5");

    // A listener that empties the list in the middle of a change.
    for (const bool adds : {true, false}) {
        Ci4Col list("n", "", 0, -1);
        for (const int value : {1, 2, 3})
            list.Add(value);
        Listener emptying;
        bool isDone = false;
        emptying.action = [&](IEventSink::MsgType) {
            if (isDone) return;
            isDone = true;
            list.Clear();
        };
        list.AddEventListener(&emptying);
        if (adds)
            list.AddAt(2, 7);
        else
            list.Remove(2);
        EXPECT_EQ(Join(list), adds ? "7" : "");
    }
}

// --- dates -------------------------------------------------------------------------------------------------

TEST(PrimitiveCollections, DatesMustBeOfTheKind) {
    using C = CConversions;
    constexpr auto kRule = CWhitespaceUtils::WhitespaceRule_None;
    const CDateTime dates[] = {C::dateFromString("2024-02-29", kRule),
                               C::datetimeFromString("2024-02-29T23:59:58Z", kRule),
                               C::timeFromString("01:02:03", kRule), C::yearMonthFromString("2024-02", kRule),
                               C::monthDayFromString("--12-31", kRule)};
    const char* const names[] = {"dt_date", "dt_dateTime", "dt_time", "dt_gYearMonth", "dt_gMonthDay"};
    CdatetimeBaseCol* const collections[] = {
        new CdateCol("item", kNamespace, 0, -1), new CdatetimeCol("item", kNamespace, 0, -1),
        new CtimeCol("item", kNamespace, 0, -1), new CyearMonthCol("item", kNamespace, 0, -1),
        new CmonthDayCol("item", kNamespace, 0, -1)};
    for (std::size_t i = 0; i < std::size(collections); ++i) {
        CdatetimeBaseCol& c = *collections[i];
        const CSmartPtr<List> list(new List(&c));
        const std::string refusal = std::string("Dates added to this collection must be of type ") + names[i];
        for (std::size_t k = 0; k < std::size(dates); ++k) {
            const std::string expected = i == k ? "(no error)" : refusal;
            EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { c.Add(dates[k]); }), expected) << k;
            EXPECT_EQ(ErrorOf([&] { static_cast<CPrimitiveCollection<CDateTime>&>(c).Add(dates[k]); }),
                      expected);
        }
        // By the functions that read the kind, a text of another form fails with the message of the kind.
        const std::string error = list->ReadingError(Item(i == 3 ? "2024-02-29" : "2024-02"));
        EXPECT_NE(error.find(i == 1 || i == 2 ? "Invalid XSD" : refusal), std::string::npos) << error;
    }
}

/// Counts what passes through the operations that derived collections may replace.
class CountingDates final : public CdateCol {
public:
    using CdateCol::CdateCol;
    void AddAt(int index, CDateTime value) override {
        ++adds;
        if (value.GetYear() == 1900) throw CKvException("too old");
        CdateCol::AddAt(index, value);
    }
    int adds = 0;

protected:
    std::string ItemToString(const CDateTime& value) const override { return "on " + value.ToString("s"); }
};

TEST(PrimitiveCollections, DerivedDateCollections) {
    auto* const dates = new CountingDates("item", kNamespace, 0, -1, "0*2024-01-01|1900-01-01|2024-01-0[12]");
    const CSmartPtr<List> list(new List(dates));
    EXPECT_EQ(list->ReadingError(Item("2024-01-01") + Item("1900-01-01")).find("Failed to set"), 0u);
    // Nothing of the text that was refused is left over.
    dates->Add(CDateTime(2024, 1, 2));
    EXPECT_EQ(dates->adds, 3);
    EXPECT_EQ(list->Texts(), "on 2024-01-01|on 2024-01-02|");
}

// --- enumerations ------------------------------------------------------------------------------------------

TEST(PrimitiveCollections, Enumerations) {
    auto* const colors =
        new CXmlEnumCollection("item", kNamespace, 0, 2, fixture::ColorToString, fixture::ColorFromString);
    const CSmartPtr<List> list(new List(colors));
    EXPECT_EQ(list->ReadingError(Item("blue") + Item("red")), "(no error)");
    EXPECT_EQ(Join(*colors), "20");
    EXPECT_EQ(list->Texts(), "blue|red|");
    EXPECT_EQ(CXmlEnumCollection(*colors).Item(0), fixture::Color_blue);
    EXPECT_EQ(list->ReadingError(Item("blue") + Item("pink")),
              "Failed to set the property value [item].\nPath: /List/item[2]\nNo such color [pink]");
}

}  // namespace
}  // namespace KvXmlLib16
