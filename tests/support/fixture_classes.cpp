#include "tests/support/fixture_classes.h"

namespace fixture {

const std::vector<ScalarText> kScalars = {
    {ItemType_hexBinary, "HexBinary", "00FF7A"},
    {ItemType_base64Binary, "Base64Binary", "SGVsbG8="},
    {ItemType_i1, "I1", "-128"},
    {ItemType_i2, "I2", "-32768"},
    {ItemType_i4, "I4", "-2147483648"},
    {ItemType_i8, "I8", "-9223372036854775808"},
    {ItemType_ui1, "UI1", "255"},
    {ItemType_ui2, "UI2", "65535"},
    {ItemType_ui4, "UI4", "4294967295"},
    {ItemType_ui8, "UI8", "18446744073709551615"},
    {ItemType_r4, "R4", "-1.5"},
    {ItemType_r8, "R8", "0.1"},
    {ItemType_duration, "Duration", "P1Y2M3DT4H5M6S"},
    {ItemType_yearMonth, "YearMonth", "2024-02"},
    {ItemType_monthDay, "MonthDay", "--12-31"},
    {ItemType_year, "Year", "1999"},
    {ItemType_month, "Month", "--07"},
    {ItemType_day, "Day", "---09"},
    {ItemType_date, "Date", "2024-02-29"},
    {ItemType_datetime, "DateTime", "2024-02-29T23:59:58Z"},
    {ItemType_time, "Time", "01:02:03"},
    {ItemType_char, "Char", "x"},
    {ItemType_string, "String", "a <b> & \"c\""},
    {ItemType_boolean, "Boolean", "true"},
    {ItemType_decimal, "Decimal", "123456789012345678901234567890.125"},
    {ItemType_integer, "Integer", "-123456789012345678901234567890"},
};

Property::Property(Class& owner) {
    owner.m_properties.push_back(this);
}

const char* ColorToString(int value) {
    constexpr const char* kNames[] = {"red", "green", "blue"};
    if (value < 0) throw CKvInvalidValueException(FormatString("No such color [%d]", value));
    return value < 3 ? kNames[value] : nullptr;
}

int ColorFromString(const char* text) {
    for (int i = Color_red; i <= Color_blue; ++i) {
        if (std::string_view(text) == ColorToString(i)) return i;
    }
    throw CKvInvalidValueException(FormatString("No such color [%s]", text));
}

Empty::Empty() {
    SetElementName("Empty");
    Init();
}
void Empty::MakeTables(Tables& tables) {
    tables.info = new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "Empty",
                                         kNamespace, true, false, -1, ItemType_Unknown, "", false);
}

}  // namespace fixture
