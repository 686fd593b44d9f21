// Content models that no schema may have, and contents that are no restrictions of others.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "kvxml/schema/reader/schema_loader.h"

namespace KvXmlLib16 {
namespace {

/// Makes particles of "a{1,2},(b|H)*,@g,<##other>?": a small letter is a local element, a capital a reference
/// to a global one, @ one to a group, <> a wildcard; commas make a sequence, bars a choice, ampersands an
/// all-group.
class ModelWriter {
public:
    static std::string Write(const std::string& model) {
        ModelWriter writer(model);
        return writer.Group(true);
    }

private:
    explicit ModelWriter(const std::string& model) : m_model(model) {}

    char Peek() const { return m_at < m_model.size() ? m_model[m_at] : ')'; }

    /// To the closing bracket, with the occurrence after it.
    std::string Group(bool isWhole) {
        std::string content;
        char separator = ',';
        while (Peek() != ')') {
            content += Particle();
            if (Peek() == ',' || Peek() == '|' || Peek() == '&') separator = m_model[m_at++];
        }
        ++m_at;
        const std::string tag = separator == ',' ? "sequence" : separator == '|' ? "choice" : "all";
        return "<" + tag + (isWhole ? "" : Occurs()) + ">" + content + "</" + tag + ">";
    }

    std::string Particle() {
        const char c = m_model[m_at++];
        if (c == '(') return Group(false);
        if (c == '<') {
            const std::size_t end = m_model.find('>', m_at);
            const std::string names = m_model.substr(m_at, end - m_at);
            m_at = end + 1;
            return "<any namespace='" + names + "'" + Occurs() + "/>";
        }
        if (c == '@') {
            const std::string group(1, m_model[m_at++]);
            return "<group ref='t:" + group + "'" + Occurs() + "/>";
        }
        const std::string name(1, c);
        if (c >= 'A' && c <= 'Z') return "<element ref='t:" + name + "'" + Occurs() + "/>";
        return "<element name='" + name + "' type='string'" + Occurs() + "/>";
    }

    std::string Occurs() {
        const char c = Peek();
        if (c == '?' || c == '*' || c == '+') {
            ++m_at;
            return std::string(c == '+' ? "" : " minOccurs='0'") + (c == '?' ? "" : " maxOccurs='unbounded'");
        }
        if (c != '{') return "";
        const std::size_t end = m_model.find('}', m_at);
        const std::string range = m_model.substr(m_at + 1, end - m_at - 1);
        m_at = end + 1;
        const std::size_t comma = range.find(',');
        const std::string max = comma == std::string::npos ? range : range.substr(comma + 1);
        return " minOccurs='" + range.substr(0, comma) + "' maxOccurs='" + (max.empty() ? "unbounded" : max) +
               "'";
    }

    const std::string& m_model;
    std::size_t m_at = 0;
};

CFaultList Load(const std::string& content) {
    CSchemaLoader loader;
    loader.AddText(
        "<schema xmlns='http://www.w3.org/2001/XMLSchema' xmlns:t='urn:t' targetNamespace='urn:t'>\n" +
            content + "</schema>",
        "test.xsd");
    CFaultList faults;
    loader.Load(faults);
    return faults;
}

/// The constraints that are violated, one after another.
std::string FaultsIn(const std::string& content) {
    const CFaultList faults = Load(content);
    std::string result;
    for (const CFault& fault : faults.GetFaults())
        result += (result.empty() ? "" : " ") + fault.constraint;
    return result;
}

std::string Type(const std::string& name, const std::string& model) {
    return "<complexType name='" + name + "'>" + ModelWriter::Write(model) + "</complexType>\n";
}

std::string Restriction(const std::string& name, const std::string& base, const std::string& model) {
    return "<complexType name='" + name + "'><complexContent><restriction base='t:" + base + "'>" +
           ModelWriter::Write(model) + "</restriction></complexContent></complexType>\n";
}

/// H can be replaced by M and O, M by N; B by nothing, C only by D, which restricts it, not by E, which
/// extends it.
const char kDeclarations[] =
    "<element name='H' type='string'/><element name='M' type='string' substitutionGroup='t:H'/>"
    "<element name='N' type='string' substitutionGroup='t:M'/>"
    "<element name='O' type='string' substitutionGroup='t:H'/>"
    "<element name='B' type='string' block='substitution'/>"
    "<element name='X' type='string' substitutionGroup='t:B'/>"
    "<complexType name='c'><sequence minOccurs='0'><element name='a'/></sequence></complexType>"
    "<complexType name='d'><complexContent><restriction base='t:c'/></complexContent></complexType>"
    "<complexType name='e'><complexContent><extension base='t:c'><sequence><element name='b'/></sequence>"
    "</extension></complexContent></complexType>"
    "<element name='C' type='t:c' block='extension'/><element name='D' type='t:d' substitutionGroup='t:C'/>"
    "<element name='E' type='t:e' substitutionGroup='t:C'/>"
    "<group name='g'><sequence><element name='a' type='string'/><element name='b' type='string' "
    "minOccurs='0'/></sequence></group>\n";

TEST(ContentModels, UniqueParticleAttribution) {
    static const struct {
        const char* model;
        bool isUnique;
    } kRows[] = {
        {"a,b,a", true},
        {"a?,a", false},
        {"a?,b?,a", false},
        {"a?,b,a", true},
        {"a|b|a", false},
        {"(a,b)|(a,c)", false},
        {"a*,a", false},
        {"(a,b?)*", true},
        {"(a,b?)*,b", false},
        {"(a?,b)*,a", false},
        {"(a|b)*,c,a", true},
        // counts
        {"a{2},a", true},
        {"a{1,2},a", false},
        {"(a{1,2}){2}", true},
        {"(a{1,2}){2},a", false},
        {"(a{2}){2},a", true},
        {"(a{2,3}){2},a", false},
        {"(a,b?){2},b", false},
        {"(a,b){2},a", true},
        {"(a,b){2,3},a", false},
        // rounds may run into each other: aa,b and a,a,b
        {"((a{1,2},b?)|c){2},c", false},
        {"((a{2,3},b?)|c){2},c", true},
        {"((a{2,3},b?)|c){3},c", false},
        {"((a{2,3},b,d?)|c){3},c", true},
        {"(((a{2}){2,3},b?)|c){3},c", false},
        {"(((a{2,3}){2},b?)|c){3},c", false},
        {"((a{5,6},b?)|c){6},c", false},
        {"((a{5,6},b?)|c){5},c", true},
        {"(a?,(b?){3}){7},c,b", true},
        {"((x|(y,a?))+|(a,z))+", false},
        {"((a+|(y,a?)))+", false},
        // groups
        {"@g,@g", true},
        {"@g?,@g", false},
        {"(x,@g?)*,@g", false},
        {"@g,b", false},
        // wildcards
        {"<##any>,a", true},
        {"<##any>*,a", false},
        {"<##local>?,a", false},
        {"<##targetNamespace>?,a", true},
        {"<##other>?,a", true},
        {"<##other>?,H", true},
        {"<urn:x>|<urn:y>|<urn:z>|<##other>", false},
        {"<urn:x urn:y>|<urn:z urn:w>|<##local>|a", false},
        {"<urn:x urn:y>|<urn:z urn:x>", false},
        {"<urn:x>*,<urn:y>*,<##local>*,H", true},
        {"<##other>|<##any>", false},
        {"(<##any>?,<##any>?)", false},
        {"<##any>*", true},
        // substitution groups
        {"H|N", false},
        {"N|M", false},
        {"H?,<urn:t>", false},
        {"B|X", true},
        {"C|D", false},
        {"C|E", true},
        // all-groups
        {"a&b&c?", true},
        {"a&b?&a?", false},
        {"H&M", false},
    };
    for (const auto& row : kRows) {
        const std::string faults = FaultsIn(kDeclarations + Type("t", row.model));
        EXPECT_EQ(faults.substr(0, faults.find(' ')), row.isUnique ? "" : "cos-nonambig") << row.model;
    }
}

TEST(ContentModels, EachFaultOnceWithBothParticles) {
    const std::string group =
        "<group name='g'><sequence>\n <element name='a' minOccurs='0'/>\n <any/></sequence></group>\n";
    const std::string use = "<sequence><group ref='t:g'/></sequence>";
    const CFaultList faults =
        Load(group + "<complexType name='t'>" + use + "</complexType><complexType name='u'>" + use +
             "</complexType><complexType name='v'><complexContent><extension base='t:u'>"
             "<sequence><element name='b'/></sequence></extension></complexContent></complexType>");
    ASSERT_EQ(faults.GetCount(), 1u);
    EXPECT_EQ(ToText(faults.GetFaults().front()),
              "test.xsd:4:2: The wildcard [##any] and the element [a] of line 3, column 2 can take the same "
              "element. (cos-nonambig)");
    // A group that no type uses has no content model.
    EXPECT_EQ(FaultsIn(group), "");
}

TEST(ContentModels, ConsistentDeclarations) {
    const auto local = [](const char* type) {
        return std::string("<element name='a' type='") + type + "'/><element name='x'/>";
    };
    const auto type = [](const std::string& content) {
        return "<complexType name='t'><sequence>" + content + "</sequence></complexType>";
    };
    EXPECT_EQ(FaultsIn(type(local("string") + local("string"))), "");
    EXPECT_EQ(FaultsIn(type(local("string") + local("token"))), "cos-element-consistent");
    const std::string anonymous =
        "<element name='a'><simpleType><restriction base='string'/></simpleType></element>";
    EXPECT_EQ(FaultsIn(type(anonymous + "<element name='x'/>" + anonymous)), "cos-element-consistent");
    // By way of a group, which is at fault for all who use it; by a substitution group; by the base.
    EXPECT_EQ(FaultsIn("<group name='g'><sequence>" + local("string") + local("int") + "</sequence></group>" +
                       type("<group ref='t:g'/><group ref='t:g'/>")),
              "cos-element-consistent");
    const std::string members =
        "<element name='h' type='string'/><element name='m' type='token' substitutionGroup='t:h'/>";
    const auto qualified = [](const char* name) {
        return std::string("<element form='qualified' name='m' type='") + name + "'/>";
    };
    EXPECT_EQ(FaultsIn(members + type("<element ref='t:h'/>" + qualified("string"))),
              "cos-element-consistent");
    EXPECT_EQ(FaultsIn(members + type("<element ref='t:h'/>" + qualified("token"))), "");
    EXPECT_EQ(FaultsIn(type(local("string")) +
                       "<complexType name='u'><complexContent><extension base='t:t'><sequence>" +
                       local("int") + "</sequence></extension></complexContent></complexType>"),
              "cos-element-consistent");
}

TEST(ContentModels, AllGroups) {
    const std::string all = "<group name='g'><all><element name='a'/></all></group>";
    const auto type = [&](const std::string& content) {
        return all + "<complexType name='t'>" + content + "</complexType>";
    };
    const auto extension = [&](const std::string& content) {
        return type("<group ref='t:g'/>") + "<complexType name='u'><complexContent><extension base='t:t'>" +
               content + "</extension></complexContent></complexType>";
    };
    EXPECT_EQ(FaultsIn(type("<group ref='t:g' minOccurs='0'/>")), "");
    EXPECT_EQ(FaultsIn(type("<group ref='t:g' maxOccurs='2'/>")), "cos-all-limited.1.2");
    EXPECT_EQ(FaultsIn(type("<sequence><group ref='t:g'/></sequence>")), "cos-all-limited.1.2");
    EXPECT_EQ(FaultsIn(all + "<group name='h'><choice><group ref='t:g'/></choice></group>"),
              "cos-all-limited.1.2");
    EXPECT_EQ(FaultsIn(extension("")), "");
    EXPECT_EQ(FaultsIn(extension("<attribute name='x'/>")), "");
    EXPECT_EQ(FaultsIn(extension("<sequence><element name='b'/></sequence>")), "cos-all-limited.1.2");
    EXPECT_EQ(FaultsIn(all + "<complexType name='t'><sequence/></complexType><complexType name='u'>"
                             "<complexContent><extension base='t:t'><group ref='t:g'/></extension>"
                             "</complexContent></complexType>"),
              "");
}

TEST(ContentModels, RestrictionsOfParticles) {
    static const struct {
        const char* base;
        const char* restricted;
        const char* constraint;
    } kRows[] = {
        {"a", "a", ""},
        {"a?,b*,c", "b{2,4},c", ""},
        {"a?,b*,c", "b{2,4}", "rcase-Recurse.2"},
        {"a?,b*,c", "c,b", "rcase-Recurse.2"},
        {"a{1,3},b", "a{0,3},b", "rcase-NameAndTypeOK.2"},
        {"(a,b)*", "(a,b){2,5}", ""},
        {"x,(a,b){2,3}", "x,(a,b)*", "rcase-Recurse.1"},
        // pointless groups
        {"((a),(b,(c?)))", "a,b", ""},
        {"a,(b|(c|d))", "a,((b|c)|d)", ""},
        {"a,(b,c)?", "(a,(b,c)?)", ""},
        {"(a,b)?", "()", ""},
        // choices
        {"a|b|c", "a|c", ""},
        {"a|b|c", "c|a", "rcase-RecurseLax.2"},
        {"a|b|c", "b", ""},
        {"a|b{1,2}|c", "a|b?", "rcase-NameAndTypeOK.2"},
        {"(a|b)*", "(a|b){0,3}", ""},
        {"(a|b)*", "a,b,a", ""},
        {"(a|b){2}", "a,b", ""},
        {"(a|b){2}", "a,b,a", "rcase-MapAndSum.2"},
        {"(a|b){2}", "a,c", "rcase-MapAndSum.1"},
        {"x?,(a|b)", "a", ""},
        {"x?,(a|b)", "a|b", "cos-particle-restrict.2"},
        {"x?,(a|b)", "x?,(a|b)", ""},
        // all-groups
        {"a&b?&c", "a&c", ""},
        {"a&b?&c", "c,a", ""},
        {"a&b?&c", "c,b", "rcase-RecurseUnordered.2"},
        {"a&b?&c", "b&c", "rcase-Recurse.2"},
        {"a&b?&c", "c|a", "cos-particle-restrict.2"},
        // wildcards
        {"<##any>*", "a,(b|c)*,(d,e)", ""},
        {"<##other>*", "a", "rcase-NSCompat.1"},
        {"<##local>,x", "a?,x", "rcase-NSCompat.2"},
        {"<##targetNamespace>{1,4},x", "(H,B),x", "rcase-Recurse.2"},
        {"<##any>{1,4}", "a,b,(c|d)", ""},
        {"<##any>{1,4}", "a{2},b{2},c", "rcase-NSRecurseCheckCardinality.2"},
        {"<##local>{1,4}", "a,H", "rcase-NSRecurseCheckCardinality.1"},
        {"<##any>*", "<##other>{1,2}", ""},
        {"<##other>*", "<##any>*", "rcase-NSSubset.2"},
        {"<##other>", "<##other>?", "rcase-NSSubset.1"},
        {"a,b", "a,<##any>", "rcase-Recurse.2"},
        // substitution groups
        {"H*", "H", ""},
        {"H", "M", ""},
        {"H", "N", ""},
        {"H{2}", "M,N", ""},
        {"H", "N|O", ""},
        {"H", "M|X", "rcase-RecurseLax.2"},
        {"B", "X", "rcase-NameAndTypeOK.1"},
        {"x?,H", "x,M", ""},
        {"M", "H", "rcase-NameAndTypeOK.1"},
        {"<##local>?", "H", "rcase-NSCompat.1"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(FaultsIn(kDeclarations + Type("t", row.base) + Restriction("u", "t", row.restricted)),
                  row.constraint)
            << row.base << " to " << row.restricted;
    }
}

TEST(ContentModels, RestrictionsOfElements) {
    static const struct {
        const char* base;
        const char* restricted;
        const char* constraint;
    } kRows[] = {
        {"type='string' nillable='true'", "type='string'", ""},
        {"type='string'", "type='string' nillable='true'", "rcase-NameAndTypeOK.3.2.1"},
        {"type='string'", "type='string' fixed='x'", ""},
        {"type='decimal' fixed='1.0'", "type='integer' fixed='+1'", ""},
        {"type='string' fixed='1.0'", "type='string' fixed='1'", "rcase-NameAndTypeOK.3.2.2"},
        {"type='string' fixed='x'", "type='string'", "rcase-NameAndTypeOK.3.2.2"},
        {"type='string' block='extension'", "type='string' block='#all'", ""},
        {"type='string' block='extension'", "type='string'", "rcase-NameAndTypeOK.3.2.4"},
        {"type='integer'", "type='int'", ""},
        {"type='int'", "type='integer'", "rcase-NameAndTypeOK.3.2.5"},
        {"", "type='string'", ""},
        {"type='t:c'", "type='t:d'", ""},
        {"type='t:c'", "type='t:e'", "rcase-NameAndTypeOK.3.2.5"},
        {"type='t:n'", "type='int'", ""},
    };
    const std::string declarations =
        std::string(kDeclarations) +
        "<simpleType name='n'><union memberTypes='boolean integer'/></simpleType>";
    for (const auto& row : kRows) {
        const auto element = [](const char* attributes) {
            return std::string("<sequence><element name='a' ") + attributes + "/></sequence>";
        };
        EXPECT_EQ(FaultsIn(declarations + "<complexType name='t'>" + element(row.base) +
                           "</complexType><complexType name='u'><complexContent><restriction base='t:t'>" +
                           element(row.restricted) + "</restriction></complexContent></complexType>"),
                  row.constraint)
            << row.base << " to " << row.restricted;
    }
}

/// What would take minutes, or all memory, if it were unrolled, or looked at again for each use.
TEST(ContentModels, Growth) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        FaultsIn(Type("t", "(x{100,100000}){0,5000}") + Restriction("u", "t", "(x{200,90000}){0,4000}")), "");
    const auto doubled = [](int steps, const std::string& occurs) {
        std::string groups =
            "<group name='g0'><sequence><element name='a'" + occurs + "/></sequence></group>";
        for (int i = 1; i <= steps; ++i) {
            const std::string part = "<group ref='t:g" + std::to_string(i - 1) + "'/>";
            groups +=
                "<group name='g" + std::to_string(i) + "'><sequence>" + part + part + "</sequence></group>";
        }
        return groups + "<complexType name='t'><group ref='t:g" + std::to_string(steps) +
               "'/></complexType><complexType name='u'><complexContent><restriction base='t:t'>";
    };
    const std::string end = "</restriction></complexContent></complexType>";
    EXPECT_EQ(FaultsIn(doubled(18, "") + "<group ref='t:g18'/>" + end), "");
    EXPECT_EQ(FaultsIn(doubled(16, " minOccurs='0'") + "<group ref='t:g16'/>" + end), "cos-nonambig");
    EXPECT_EQ(
        FaultsIn(doubled(18, "") + "<sequence><group ref='t:g17'/><group ref='t:g17'/></sequence>" + end),
        "");  // too many to be compared: the constraint has no name
    EXPECT_EQ(Load(doubled(18, "") + "<sequence><group ref='t:g17'/><group ref='t:g17'/></sequence>" + end)
                  .GetCount(),
              1u);
    EXPECT_EQ(Load(doubled(900, " minOccurs='0'") + end).IsEmpty(), false);

    std::string elements;
    std::string chain;
    std::string references;
    for (int i = 0; i < 3000; ++i) {
        const std::string name = "e" + std::to_string(i);
        elements += "<element name='" + name + "' minOccurs='0' type='string'/>\n";
        chain += "<element name='" + name + "' type='string'" +
                 (i == 0 ? "" : " substitutionGroup='t:e" + std::to_string(i - 1) + "'") + "/>\n";
        references += "<element ref='t:" + name + "'/>\n";
    }
    std::string users;
    for (int i = 0; i < 1000; ++i) {
        users += "<complexType name='u" + std::to_string(i) +
                 "'><sequence maxOccurs='unbounded'><element name='x'/><group ref='t:g'/></sequence>"
                 "</complexType>\n";
    }
    EXPECT_EQ(FaultsIn("<group name='g'><sequence>" + elements + "</sequence></group>" + users), "");
    EXPECT_EQ(FaultsIn("<complexType name='t'><choice maxOccurs='unbounded'>" + elements +
                       "</choice></complexType><complexType name='u'><complexContent><restriction base='t:t'>"
                       "<sequence maxOccurs='7'>" +
                       elements + "</sequence>" + end),
              "");
    EXPECT_EQ(FaultsIn(chain + "<complexType name='t'><sequence>" + references +
                       "</sequence></complexType><complexType name='u'><complexContent>"
                       "<restriction base='t:t'><sequence>" +
                       references + "</sequence>" + end),
              "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

}  // namespace
}  // namespace KvXmlLib16
