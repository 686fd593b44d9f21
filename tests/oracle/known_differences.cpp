#include "tests/oracle/known_differences.h"

#include <iterator>
#include <string_view>

namespace oracle {

namespace {

constexpr const char* kXerces = "Xerces-C";
constexpr const char* kLibxml = "libxml2";
enum class About { Schema, Document };
enum class Other { Accepts, Refuses };

struct Known {
    std::string_view judge;
    About about;
    Other other;
    std::string_view message;   ///< part of the message of the one that refuses
    std::string_view schema;    ///< part of the schema; empty: any
    std::string_view document;  ///< part of the document; empty: any
    const char* rule;
};

// Clauses are those of XML Schema 1.0, second edition.
constexpr Known kKnown[] = {
    // --- schemas ---
    {kLibxml, About::Schema, Other::Accepts, "(cos-nonambig)", "", "",
     "libxml2 finds only some ambiguous content models (Part 1, 3.8.6)"},
    {kLibxml, About::Schema, Other::Accepts, "(cos-element-consistent)", "", "",
     "libxml2 does not compare the types of elements of one name (Part 1, 3.8.6)"},
    {kLibxml, About::Schema, Other::Accepts, "is no restriction of that of the base", "", "",
     "libxml2 does not compare a restricted content with that of the base (Part 1, 3.9.6)"},
    {kLibxml, About::Schema, Other::Accepts, "(ct-props-correct.5)", "", "",
     "libxml2 lets a type have two attributes of the type ID (Part 1, 3.4.6)"},
    {kLibxml, About::Schema, Other::Accepts, "-valid-restriction)", "", "",
     "libxml2 compares not all facets with those of the base (Part 2, 4.3.2 to 4.3.10)"},
    {kLibxml, About::Schema, Other::Accepts, "(minExclusive-less-than-maxInclusive)", "", "",
     "libxml2 lets a new minExclusive reach the inherited maxInclusive (Part 2, 4.3.9.4)"},
    {kXerces, About::Schema, Other::Accepts, "(minExclusive-less-than-maxInclusive)", "", "",
     "Xerces-C lets a new minExclusive reach the inherited maxInclusive (Part 2, 4.3.9.4)"},
    {kXerces, About::Schema, Other::Accepts, "(length-minLength-maxLength)", "", "",
     "Xerces-C lets minLength or maxLength be new beside an inherited length (Part 2, 4.3.1.4)"},
    {kLibxml, About::Schema, Other::Accepts, "(length-minLength-maxLength)", "", "",
     "libxml2 lets minLength or maxLength be new beside an inherited length (Part 2, 4.3.1.4)"},
    {kLibxml, About::Schema, Other::Accepts, "(ag-props-correct.3)", "", "",
     "libxml2 lets an attribute group have two attributes of the type ID (Part 1, 3.6.6)"},
    {kXerces, About::Schema, Other::Accepts, "is no value of the type [IDREF]", "", "",
     "Xerces-C does not check default and fixed values of the type IDREF (Part 1, 3.2.6)"},
    {kXerces, About::Schema, Other::Refuses, "is already defined in base", "attributeGroup ref", "",
     "Xerces-C takes one declaration that comes by two ways for two (Part 1, 3.4.6: two distinct ones)"},
    {kLibxml, About::Schema, Other::Refuses, "Duplicate attribute use", "attributeGroup ref", "",
     "libxml2 takes one declaration that comes by two ways for two (Part 1, 3.4.6: two distinct ones)"},
    {kXerces, About::Schema, Other::Refuses, "does not match regular expression facet", "fixed=\"10\"", "",
     "Xerces-C matches the pattern of a list before blanks are collapsed (Part 2, 4.3.6)"},
    // --- content ---
    {kXerces, About::Document, Other::Refuses, "cannot be resolved", "processContents=\"strict\"",
     "xsi:type=\"xs:", "Xerces-C does not know xs:anyType in xsi:type (Part 1, 3.4.7)"},
    {kLibxml, About::Document, Other::Refuses, "demanded by the strict wildcard", "",
     "xsi:type=", "libxml2 wants a declaration where xsi:type is enough (Part 1, 3.10.1)"},
    {kXerces, About::Document, Other::Accepts, "(cvc-complex-type.2.4)", "<xs:choice></xs:choice>", "",
     "Xerces-C takes a choice of nothing for empty content; nothing satisfies it (Part 1, 3.8.4)"},
    {kXerces, About::Document, Other::Accepts, "(cvc-complex-type.2.4)",
     "<xs:choice maxOccurs=\"unbounded\"></xs:choice>", "",
     "Xerces-C takes a choice of nothing for empty content; nothing satisfies it (Part 1, 3.8.4)"},
    {kXerces, About::Document, Other::Refuses, "empty content is not valid", "></xs:sequence>", "",
     "Xerces-C forgets a branch of a choice that is an empty sequence (Part 1, 3.8.4)"},
    {kLibxml, About::Document, Other::Accepts, "(cvc-complex-type.2.4)", "<xs:choice", "",
     "libxml2 leaves a choice for another branch after one that may be absent and repeated (Part 1, 3.8.4)"},
    {kXerces, About::Document, Other::Refuses, "is nil and must be empty", "default=", "xsi:nil",
     "Xerces-C puts the default value into a nil element (Part 1, 3.3.4, clause 3.2)"},
    {kXerces, About::Document, Other::Refuses, "invalid for attribute", "", "xsi:nil=\"",
     "Xerces-C does not know the values 0 and 1 of xsi:nil (Part 1, 2.6.2)"},
    {kXerces, About::Document, Other::Accepts, "(cvc-elt.4.3)", "block=", "xsi:type",
     "Xerces-C does not heed a declaration's block when its type is simple (Part 1, 3.3.4, clause 4.3)"},
    {kXerces, About::Document, Other::Refuses, "does not derive from type", "<xs:union", "xsi:type",
     "Xerces-C does not follow restrictions of unions (Part 1, 3.14.6)"},
    {kXerces, About::Document, Other::Accepts, "(cvc-type.3.1.2)", "", "xsi:nil",
     "Xerces-C lets a nil element of a simple type have children (Part 1, 3.3.4, clause 3.2.1)"},
    // --- values ---
    {kXerces, About::Document, Other::Refuses, "", "", "24:00:00",
     "Xerces-C takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kLibxml, About::Document, Other::Refuses, "", "", "24:00:00",
     "libxml2 takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kXerces, About::Document, Other::Refuses, "", "24:00:00", "",
     "Xerces-C takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kLibxml, About::Document, Other::Refuses, "", "24:00:00", "",
     "libxml2 takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kLibxml, About::Document, Other::Accepts, "clusive-valid)", "24:00:00", "",
     "libxml2 takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kXerces, About::Document, Other::Accepts, "[24:00:00] does not satisfy", "", "24:00:00",
     "Xerces-C takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kLibxml, About::Document, Other::Accepts, "[24:00:00] does not satisfy", "", "24:00:00",
     "libxml2 takes 24:00:00 for another instant than 00:00:00 of the next day (Part 2, 3.2.7.1, 3.2.8.2)"},
    {kXerces, About::Document, Other::Accepts, "[NaN] does not satisfy the facet", "", "",
     "Xerces-C lets NaN lie within bounds, to which it has no order (Part 2, 3.2.4)"},
    {kLibxml, About::Document, Other::Accepts, "[NaN] does not satisfy the facet", "", "",
     "libxml2 lets NaN lie within bounds, to which it has no order (Part 2, 3.2.4)"},
    {kXerces, About::Document, Other::Refuses, "attribute cannot have empty value", "", "=\"\"",
     "Xerces-C refuses empty attributes of some types that have an empty value (Part 2, 3.2.17)"},
    {kXerces, About::Document, Other::Refuses, "\xF0\x9F\x98\x80", "", "",
     "open: kvxml takes the names of XML 1.0, fifth edition, which have characters beyond U+FFFF"},
    {kLibxml, About::Document, Other::Refuses, "\xF0\x9F\x98\x80", "", "",
     "open: kvxml takes the names of XML 1.0, fifth edition, which have characters beyond U+FFFF"},
    {kXerces, About::Document, Other::Refuses, "illegal year value", "", "18446744073709551616",
     "Xerces-C has a largest year (Part 2, 3.2.11: none)"},
    {kLibxml, About::Document, Other::Refuses, "'18446744073709551616' is not a valid value", "", "",
     "libxml2 has a largest year (Part 2, 3.2.11: none)"},
    {kLibxml, About::Document, Other::Accepts, "is no value of the type [base64Binary]", "", "",
     "libxml2 passes over some characters that base64Binary does not have (Part 2, 3.2.16)"},
    {kLibxml, About::Document, Other::Accepts, "[--02-30] is no value", "", "",
     "libxml2 takes --02-30 for a day (Part 2, 3.2.12)"},
    {kLibxml, About::Document, Other::Refuses, "something strange happened", "", "",
     "libxml2 gives up on some values that a union has (its message says so)"},
    // --- identity constraints ---
    {kLibxml, About::Document, Other::Accepts, "(cvc-id.", "", "",
     "libxml2 does not compare ID and IDREF (Part 1, 3.3.4)"},
    {kXerces, About::Document, Other::Accepts, "that has no simple content. (cvc-identity-constraint.3)", "",
     "", "Xerces-C lets a field select an element without a simple type (Part 1, 3.11.4, clause 3)"},
    {kLibxml, About::Document, Other::Accepts, "that has no simple content. (cvc-identity-constraint.3)",
     "<xs:any", "", "libxml2 lets a field select an element that is not judged (Part 1, 3.11.4, clause 3)"},
    {kXerces, About::Document, Other::Refuses, "identity constraint key for element", "<xs:keyref", "",
     "Xerces-C looks up references that have no value (Part 1, 3.11.4, clause 4.3)"},
    {kXerces, About::Document, Other::Accepts, "(cvc-identity-constraint", "xpath=\"@*\"",
     "xsi:", "Xerces-C does not see the attributes of the namespace xsi in fields (Part 1, 3.11.4)"},
    {kXerces, About::Document, Other::Accepts, "selects more than one node", "xpath=\"@*\"", "",
     "Xerces-C does not count the attributes that a field selects (Part 1, 3.11.4, clause 3)"},
    {kXerces, About::Document, Other::Accepts, "has no value here. (cvc-identity-constraint.4.2.1)",
     "<xs:any", "",
     "Xerces-C does not ask for key fields in elements that are not judged (Part 1, 3.11.4, clause 4.2.1)"},
    {kXerces, About::Document, Other::Accepts, "stands there twice", "", "",
     "Xerces-C compares the texts of some keys, not their values (Part 1, 3.11.4: equality of Part 2)"},
    {kLibxml, About::Document, Other::Accepts, "has no value here. (cvc-identity-constraint.4.2.1)",
     "<xs:any", "",
     "libxml2 does not ask for key fields in elements that are not judged (Part 1, 3.11.4, clause 4.2.1)"},
    {kLibxml, About::Document, Other::Accepts, "selects an element that may be nil", "", "",
     "libxml2 lets a key field be nillable (Part 1, 3.11.4, clause 4.2.3)"},
    {kLibxml, About::Document, Other::Accepts, "stands there twice", "<xs:union", "",
     "libxml2 takes equal values of two members of a union for different (Part 1, 3.11.4)"},
    {kXerces, About::Document, Other::Refuses, "declares duplicate identity constraint", "<xs:list", "",
     "Xerces-C takes a list of one item for the item (Part 2, 2.5.1.2: values of another space)"},
    {kLibxml, About::Document, Other::Refuses, "Duplicate key-sequence", "<xs:list", "",
     "libxml2 takes a list of one item for the item (Part 2, 2.5.1.2: values of another space)"},
};
static_assert(std::size(kKnown) <= kMostRules);

}  // namespace

int FindRule(const CDifference& difference) {
    for (const Known& known : kKnown) {
        if (known.judge != difference.judge || (known.about == About::Schema) != (difference.document == 0) ||
            (known.other == Other::Accepts) != difference.other.isValid)
            continue;
        const std::string& reason =
            difference.other.isValid ? difference.own.reason : difference.other.reason;
        if (reason.find(known.message) != std::string::npos &&
            difference.schemaText.find(known.schema) != std::string::npos &&
            difference.documentText.find(known.document) != std::string::npos)
            return static_cast<int>(&known - kKnown);
    }
    return -1;
}

const char* TextOfRule(std::size_t rule) {
    return rule < std::size(kKnown) ? kKnown[rule].rule : nullptr;
}

}  // namespace oracle
