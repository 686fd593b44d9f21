#include "tests/oracle/random_schema.h"

#include <tuple>
#include <utility>

namespace oracle {

namespace {

using Facets = CBuiltIn::Facets;

/// A particle of a content model that is being made up.
struct Particle {
    enum class Kind { Element, Reference, Wildcard, GroupReference, Sequence, Choice, All };
    Kind kind = Kind::Sequence;
    std::string name;
    std::string type;  // of an element; attributes of a wildcard
    std::string more;  // attributes of an element
    std::size_t min = 1;
    std::size_t max = 1;  // kUnbounded
    std::vector<Particle> children;
};
constexpr std::size_t kUnbounded = 1000000;

struct ComplexType {
    std::string name;
    Particle content;
    std::vector<std::string> attributes;  // as they are written
    bool isMixed = false;
};

std::string Quoted(std::string_view text) {
    std::string quoted;
    for (const char c : text)
        quoted += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '"' ? "&quot;" : std::string(1, c);
    return "\"" + quoted + "\"";
}

class CMaker {
public:
    explicit CMaker(CRandom& random) : m_random(random), m_hasTarget(random.Chance(75)) {}

    std::string Make() {
        for (std::size_t i = 0, count = 2 + m_random.Below(4); i < count; ++i)
            AddSimpleType();
        AddGlobals();
        for (std::size_t i = 0, count = 2 + m_random.Below(3); i < count; ++i)
            AddComplexType();
        AddRoot();
        std::string text = "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\"";
        if (m_hasTarget)
            text += " targetNamespace=\"" + std::string(kTarget) + "\" xmlns:t=\"" + kTarget + "\"";
        if (m_random.Chance(60)) text += " elementFormDefault=\"qualified\"";
        if (m_random.Chance(15)) text += " attributeFormDefault=\"qualified\"";
        if (m_random.Chance(5))
            text += m_random.Chance(50) ? " blockDefault=\"#all\"" : " finalDefault=\"list\"";
        return text + ">\n" + m_text + "</xs:schema>\n";
    }

private:
    std::string Ref(const std::string& name) const { return (m_hasTarget ? "t:" : "") + name; }
    std::string NewName(const char* kind) { return kind + std::to_string(++m_names); }

    // --- simple types ---

    std::string AnyBuiltIn() { return std::string("xs:") + m_random.Of(BuiltIns()).name; }
    /// Mostly a type whose values are no lists.
    std::string AnyItem() {
        if (!m_items.empty() && m_random.Chance(50)) return Ref(m_random.Of(m_items));
        const std::string name = AnyBuiltIn();
        return name.back() == 'S' && m_random.Chance(95) ? "xs:int" : name;
    }
    /// One of the types that know the text "10", which values that a schema gives have.
    std::string AnyTen() {
        static const std::vector<const char*> kTypes = {
            "int", "string", "decimal", "token", "unsignedByte", "NMTOKEN", "double", "hexBinary", "anyURI"};
        return m_random.Chance(95) ? std::string("xs:") + m_random.Of(kTypes) : AnySimple();
    }
    std::string AnySimple() {
        return m_simple.empty() || m_random.Chance(50) ? AnyBuiltIn() : Ref(m_random.Of(m_simple));
    }

    std::string Facet(const char* name, const std::string& value) {
        return std::string("<xs:") + name + " value=" + Quoted(value) +
               (m_random.Chance(3) && std::string(name) != "pattern" ? " fixed=\"true\"/>" : "/>");
    }
    std::string LengthFacets() {
        const std::size_t low = m_random.Below(5);
        switch (m_random.Below(4)) {
            case 0:
                return Facet("length", std::to_string(low + 1));
            case 1:
                return Facet("minLength", std::to_string(low));
            case 2:
                return Facet("maxLength", std::to_string(low + 2));
            default:
                return Facet("minLength", std::to_string(low)) + Facet("maxLength", std::to_string(low + 3));
        }
    }
    std::string FacetsFor(const CBuiltIn& type) {
        static const std::vector<const char*> kPatterns = {
            "[a-z]+",         "\\i\\c*",          ".*\\d.*",          "(a|b|ab)*c?",
            "[^0-9\\s]{2,5}", "\\p{L}+|\\d{1,3}", "-?\\d+(\\.\\d*)?", "[a-z-[aeiou]]*",
            "(\\+|-)?\\w*",   ".{0,4}",           "P.*|\\d{4}.*",     "\\S(\\s\\S)*"};
        std::string facets;
        if (type.facets != Facets::None && m_random.Chance(20))
            facets += Facet("pattern", m_random.Of(kPatterns));
        if (m_random.Chance(20) && std::string(type.name) != "boolean") {
            for (std::size_t i = 0, count = 1 + m_random.Below(4); i < count; ++i) {
                // A union's or list's own texts are no business of these.
                const char* const text = type.samples[m_random.Below(type.samples.size() - 2)];
                facets += "<xs:enumeration value=" + Quoted(text) + "/>";
            }
            return facets;
        }
        if (type.facets == Facets::Length && m_random.Chance(60)) facets += LengthFacets();
        if (type.facets == Facets::Digits && m_random.Chance(30))
            facets += Facet("totalDigits", std::to_string(1 + m_random.Below(5)));
        if (type.facets == Facets::Digits && std::string(type.name) == "decimal" && m_random.Chance(30))
            facets += Facet("fractionDigits", std::to_string(m_random.Below(3)));
        if ((type.facets == Facets::Order || type.facets == Facets::Digits) && m_random.Chance(50)) {
            static const std::vector<const char*> kBounds = {"minInclusive", "maxInclusive", "minExclusive",
                                                             "maxExclusive"};
            facets += Facet(m_random.Of(kBounds), type.samples[m_random.Below(type.samples.size() - 2)]);
        }
        return facets;
    }

    /// The content of a simpleType element.
    std::string SimpleVariety() {
        const std::size_t which = m_random.Below(10);
        if (which == 0) return "<xs:list itemType=\"" + AnyItem() + "\"/>";
        if (which == 1) {
            std::string members;
            for (std::size_t i = 0, count = 1 + m_random.Below(3); i < count; ++i)
                members += (i == 0 ? "" : " ") + AnySimple();
            return "<xs:union memberTypes=\"" + members + "\"/>";
        }
        if (which == 2) {
            return "<xs:restriction><xs:simpleType><xs:list itemType=\"" + AnyItem() +
                   "\"/></xs:simpleType>" + LengthFacets() + "</xs:restriction>";
        }
        const CBuiltIn& type = m_random.Of(BuiltIns());
        if (which == 3 && !m_simple.empty())
            return "<xs:restriction base=\"" + Ref(m_random.Of(m_simple)) + "\">" +
                   (m_random.Chance(70) ? "" : FacetsFor(type)) + "</xs:restriction>";
        return "<xs:restriction base=\"xs:" + std::string(type.name) + "\">" + FacetsFor(type) +
               "</xs:restriction>";
    }

    void AddSimpleType() {
        const std::string name = NewName("S");
        const std::string variety = SimpleVariety();
        m_text += "<xs:simpleType name=\"" + name + "\">" + variety + "</xs:simpleType>\n";
        m_simple.push_back(name);
        if (variety.find("xs:list") == std::string::npos && variety.find("S") == std::string::npos)
            m_items.push_back(name);
    }

    // --- content ---

    std::string AnyType() {
        return !m_complex.empty() && m_random.Chance(35) ? Ref(m_random.Of(m_complex).name) : AnySimple();
    }

    void Occurs(Particle& particle) {
        static const std::vector<std::pair<std::size_t, std::size_t>> kBounds = {
            {1, 1},          {1, 1}, {1, 1}, {0, 1}, {0, 1},         {0, kUnbounded},
            {1, kUnbounded}, {2, 3}, {0, 4}, {3, 3}, {2, kUnbounded}};
        std::tie(particle.min, particle.max) = m_random.Of(kBounds);
    }

    Particle MakeElement() {
        Particle element;
        element.kind = Particle::Kind::Element;
        // A name that is used again in a content model is to have the same type, which it mostly has not.
        element.name = m_random.Chance(6) ? "e1" : NewName("e");
        element.type = AnyType();
        if (m_random.Chance(12)) element.more += " nillable=\"true\"";
        if (m_random.Chance(6)) {
            element.type = AnyTen();
            element.more += m_random.Chance(50) ? " fixed=\"10\"" : " default=\"10\"";
        }
        if (m_random.Chance(3)) element.more += " block=\"extension\"";
        return element;
    }

    Particle MakeWildcard() {
        static const std::vector<const char*> kNamespaces = {
            "##other", "##other", "##other", "##other", "##other", "urn:x",         "urn:x",
            "urn:x",   "urn:x",   "urn:x",   "##local", "##any",   "urn:x ##local", "##targetNamespace"};
        static const std::vector<const char*> kProcess = {"lax", "skip", "strict", "lax"};
        Particle any;
        any.kind = Particle::Kind::Wildcard;
        any.type = std::string(" namespace=\"") + m_random.Of(kNamespaces) + "\" processContents=\"" +
                   m_random.Of(kProcess) + "\"";
        return any;
    }

    Particle MakeParticle(std::size_t depth) {
        const std::size_t which = m_random.Below(100);
        Particle particle;
        if (which < 55 || depth > 3) {
            particle = MakeElement();
        } else if (which < 62) {
            particle = MakeWildcard();
        } else if (which < 70 && !m_globals.empty()) {
            particle.kind = Particle::Kind::Reference;
            particle.name = m_random.Of(m_globals);
        } else if (which < 75 && !m_groups.empty()) {
            particle.kind = Particle::Kind::GroupReference;
            particle.name = m_random.Of(m_groups);
        } else {
            return MakeGroup(depth + 1);
        }
        Occurs(particle);
        return particle;
    }

    Particle MakeGroup(std::size_t depth) {
        Particle group;
        group.kind = m_random.Chance(60) ? Particle::Kind::Sequence : Particle::Kind::Choice;
        for (std::size_t i = 0, count = m_random.Below(4) + (m_random.Chance(98) ? 1 : 0); i < count; ++i)
            group.children.push_back(MakeParticle(depth));
        if (m_random.Chance(40)) Occurs(group);
        return group;
    }

    Particle MakeContent() {
        if (!m_random.Chance(15)) return MakeGroup(0);
        Particle all;
        all.kind = Particle::Kind::All;
        all.min = m_random.Below(2);
        for (std::size_t i = 0, count = 1 + m_random.Below(4); i < count; ++i) {
            all.children.push_back(MakeElement());
            all.children.back().min = m_random.Below(2);
        }
        return all;
    }

    /// A content that is mostly a valid restriction of `base`.
    Particle Restricted(const Particle& base) {
        Particle particle = base;
        if (m_random.Chance(25) && particle.max > particle.min && particle.max > 1)
            particle.max = particle.max == kUnbounded ? particle.min + 2 : particle.max - 1;
        if (m_random.Chance(25) && particle.min < particle.max) ++particle.min;
        if (particle.kind == Particle::Kind::Element && m_random.Chance(4)) particle.type = AnySimple();
        if (particle.kind == Particle::Kind::Wildcard && m_random.Chance(20)) particle = MakeElement();
        if (particle.kind == Particle::Kind::Choice && particle.children.size() > 1 && m_random.Chance(30))
            particle.children.erase(particle.children.begin() +
                                    static_cast<std::ptrdiff_t>(m_random.Below(particle.children.size())));
        const bool isChoice = particle.kind == Particle::Kind::Choice;
        for (std::size_t i = 0; i < particle.children.size();) {
            if (!isChoice && particle.children[i].min == 0 && m_random.Chance(25)) {
                particle.children.erase(particle.children.begin() + static_cast<std::ptrdiff_t>(i));
            } else {
                particle.children[i] = Restricted(particle.children[i]);
                ++i;
            }
        }
        return particle;
    }

    std::string Write(const Particle& particle) {
        static const char* const kTags[] = {"element",  "element", "any", "group",
                                            "sequence", "choice",  "all"};
        const std::string tag = kTags[static_cast<std::size_t>(particle.kind)];
        std::string text = "<xs:" + tag;
        if (particle.kind == Particle::Kind::Element)
            text += " name=\"" + particle.name + "\" type=\"" + particle.type + "\"" + particle.more;
        if (particle.kind == Particle::Kind::Reference || particle.kind == Particle::Kind::GroupReference)
            text += " ref=\"" + Ref(particle.name) + "\"";
        if (particle.kind == Particle::Kind::Wildcard) text += particle.type;
        if (particle.min != 1) text += " minOccurs=\"" + std::to_string(particle.min) + "\"";
        if (particle.max == kUnbounded) text += " maxOccurs=\"unbounded\"";
        if (particle.max != kUnbounded && particle.max != 1)
            text += " maxOccurs=\"" + std::to_string(particle.max) + "\"";
        text += ">";
        for (const Particle& child : particle.children)
            text += Write(child);
        return text + "</xs:" + tag + ">";
    }

    std::vector<std::string> MakeAttributes() {
        std::vector<std::string> attributes;
        for (std::size_t i = m_random.Below(4); i > 0; --i) {
            const std::string start = "<xs:attribute name=\"" + NewName("a") + "\" type=\"";
            if (m_random.Chance(10)) {
                attributes.push_back(start + AnyTen() + (m_random.Chance(50) ? "\" fixed" : "\" default") +
                                     "=\"10\"/>");
            } else {
                attributes.push_back(start + AnySimple() +
                                     (m_random.Chance(30) ? "\" use=\"required\"/>" : "\"/>"));
            }
        }
        return attributes;
    }
    std::string Write(const std::vector<std::string>& attributes) {
        std::string text;
        for (const std::string& attribute : attributes)
            text += attribute;
        if (m_random.Chance(8)) text += "<xs:attributeGroup ref=\"" + Ref("G") + "\"/>";
        if (m_random.Chance(8)) text += "<xs:anyAttribute" + MakeWildcard().type + "/>";
        return text;
    }

    void AddComplexType() {
        ComplexType type;
        type.name = NewName("C");
        type.isMixed = m_random.Chance(15);
        const std::size_t which = m_random.Below(10);
        std::string text;
        if (which < 2) {
            text = "<xs:simpleContent><xs:extension base=\"" + AnySimple() + "\">" + Write(MakeAttributes()) +
                   "</xs:extension></xs:simpleContent>";
            type.isMixed = false;
        } else if (which < 5 && !m_derivable.empty()) {
            const ComplexType base = m_random.Of(m_derivable);
            const bool isExtension = m_random.Chance(50);
            type.isMixed = base.isMixed;
            type.content = isExtension ? MakeContent() : Restricted(base.content);
            type.attributes = isExtension ? MakeAttributes() : std::vector<std::string>();
            const std::string how = isExtension ? "extension" : "restriction";
            text = "<xs:complexContent><xs:" + how + " base=\"" + Ref(base.name) + "\">" +
                   Write(type.content) + Write(type.attributes) + "</xs:" + how + "></xs:complexContent>";
            if (!isExtension) m_derivable.push_back(type);
        } else {
            type.content = MakeContent();
            type.attributes = MakeAttributes();
            text = Write(type.content) + Write(type.attributes);
            m_derivable.push_back(type);
        }
        std::string more = type.isMixed ? " mixed=\"true\"" : "";
        if (m_random.Chance(4)) more += " abstract=\"true\"";
        if (m_random.Chance(3)) more += " final=\"extension\"";
        m_text += "<xs:complexType name=\"" + type.name + "\"" + more + ">" + text + "</xs:complexType>\n";
        m_complex.push_back(type);
    }

    // --- what is global ---

    void AddGlobals() {
        m_text += "<xs:attributeGroup name=\"G\">";
        for (const std::string& attribute : MakeAttributes())
            m_text += attribute;
        m_text += "</xs:attributeGroup>\n";
        const std::string head = NewName("h");
        m_globals.push_back(head);
        m_text += "<xs:element name=\"" + head + "\" type=\"xs:decimal\"" +
                  (m_random.Chance(30) ? " abstract=\"true\"/>\n" : "/>\n");
        static const std::vector<const char*> kMemberTypes = {"xs:decimal", "xs:int", "xs:decimal",
                                                              "xs:byte"};
        for (std::size_t i = 0, count = m_random.Below(4); i < count; ++i) {
            const std::string name = NewName("h");
            m_text += "<xs:element name=\"" + name + "\" substitutionGroup=\"" +
                      Ref(m_random.Chance(80) ? head : m_random.Of(m_globals)) + "\"" +
                      (m_random.Chance(60) ? std::string()
                                           : std::string(" type=\"") + m_random.Of(kMemberTypes) + "\"") +
                      "/>\n";
            m_globals.push_back(name);
        }
        if (m_random.Chance(60)) {
            const std::string name = NewName("G");
            Particle group = MakeGroup(1);
            group.min = group.max = 1;
            m_text += "<xs:group name=\"" + name + "\">" + Write(group) + "</xs:group>\n";
            m_groups.push_back(name);
        }
    }

    void AddRoot() {
        Particle content = MakeGroup(0);
        std::string constraints;
        if (m_random.Chance(50)) {
            Particle row = MakeElement();
            row.name = "row";
            row.more.clear();
            row.min = 0;
            row.max = kUnbounded;
            row.type =
                m_random.Chance(50) || m_complex.empty() ? AnySimple() : Ref(m_random.Of(m_complex).name);
            Particle list;
            list.children = {content, row};
            content = list;
            static const std::vector<const char*> kFields = {".", "@*", "*", "row", "@a1"};
            const char* const field = m_random.Of(kFields);
            const std::string body =
                "<xs:selector xpath=\"*\"/><xs:field xpath=\"" + std::string(field) + "\"/>";
            const std::string kind = m_random.Chance(50) ? "key" : "unique";
            constraints = "<xs:" + kind + " name=\"K\">" + body + "</xs:" + kind + ">";
            if (m_random.Chance(50)) {
                constraints += "<xs:keyref name=\"R\" refer=\"" + Ref("K") + "\"><xs:selector xpath=\"" +
                               (m_random.Chance(50) ? ".//*" : "*") + "\"/>" + "<xs:field xpath=\"" +
                               m_random.Of(kFields) + "\"/></xs:keyref>";
            }
        }
        m_text += "<xs:element name=\"root\"><xs:complexType>" + Write(content) + Write(MakeAttributes()) +
                  "</xs:complexType>" + constraints + "</xs:element>\n";
    }

    CRandom& m_random;
    bool m_hasTarget;
    std::size_t m_names = 0;
    std::string m_text;
    std::vector<std::string> m_simple;
    std::vector<std::string> m_items;  // those that are surely no lists
    std::vector<ComplexType> m_complex;
    std::vector<ComplexType> m_derivable;  // those with a content that is known
    std::vector<std::string> m_globals;
    std::vector<std::string> m_groups;
};

}  // namespace

const std::vector<CBuiltIn>& BuiltIns() {
    static const std::vector<CBuiltIn> kTypes = {
        {"string",
         Facets::Length,
         {"", "a", "ab c", " lead", "x\ty", "10", "caf\xC3\xA9", "a  b", "\xF0\x9F\x98\x80"}},
        {"normalizedString", Facets::Length, {"a", " a  b ", "abc", "10", "x\ty", ""}},
        {"token", Facets::Length, {"a", " a  b ", "abc", "10", "", "x y z"}},
        {"language", Facets::Length, {"en", "de-CH", "x-klingon", "en-a-bbb", "10", "toolongtag", "en_US"}},
        {"NMTOKEN", Facets::Length, {"a", "-1", "a.b:c", "10", "a b", ""}},
        {"NMTOKENS", Facets::Length, {"a", "a b", " 1  2 3 ", "10", "a,b", ""}},
        {"Name", Facets::Length, {"a", ":b", "a.1", "_x", "1a", "-a"}},
        {"NCName", Facets::Length, {"a", "abc", "_x-1", "caf\xC3\xA9", "a:b", "10"}},
        {"boolean", Facets::None, {"true", "false", "1", "0", " true ", "TRUE", "10"}},
        {"decimal",
         Facets::Digits,
         {"0", "1", "-1", "10", "1.50", "+7.", ".5", "123456.789", "00012", "1e3", "", "--1"}},
        {"integer",
         Facets::Digits,
         {"0", "10", "-0", "+5", "007", "12345678901234567890", "-99999", "1.0", "x"}},
        {"nonNegativeInteger", Facets::Digits, {"0", "10", "-0", "5", "18446744073709551616", "-1", "1.0"}},
        {"negativeInteger", Facets::Digits, {"-1", "-10", "-007", "0", "1"}},
        {"long",
         Facets::Digits,
         {"0", "10", "9223372036854775807", "-9223372036854775808", "9223372036854775808", "a"}},
        {"unsignedLong", Facets::Digits, {"0", "10", "18446744073709551615", "18446744073709551616", "-1"}},
        {"int", Facets::Digits, {"0", "10", "2147483647", "-2147483648", "2147483648", "1 2"}},
        {"unsignedByte", Facets::Digits, {"0", "10", "255", "7", "256", "-1"}},
        {"byte", Facets::Digits, {"0", "10", "127", "-128", "128", "0x1"}},
        {"float",
         Facets::Order,
         {"0", "1.5", "-1E3", "10", "INF", "-INF", "1e-50", "3.4e38", "NaN", "inf", "1e"}},
        {"double", Facets::Order, {"0", "1.5", "-1E3", "10", "INF", "-INF", "1e300", ".1", "+INF", "0x1p3"}},
        {"duration",
         Facets::Order,
         {"P1Y", "P1M", "P30D", "P31D", "PT1H", "-P1DT2H", "PT0.5S", "P12M", "PT36H", "P", "PT", "1Y"}},
        {"dateTime",
         Facets::Order,
         {"2000-01-01T00:00:00", "1999-12-31T24:00:00", "2000-01-01T00:00:00Z", "2000-01-01T05:00:00+05:00",
          "2000-02-29T12:00:00.50", "-0044-03-15T00:00:00", "12000-01-01T00:00:00", "2001-02-29T00:00:00",
          "2000-01-01"}},
        {"date",
         Facets::Order,
         {"2000-01-01", "2000-02-29", "1999-12-31Z", "2000-01-01+14:00", "2000-01-01-05:00", "-0001-01-01",
          "2001-02-29", "2000-1-1", "2000-13-01"}},
        {"time",
         Facets::Order,
         {"00:00:00", "23:59:59.999", "12:00:00Z", "12:00:00-05:00", "24:00:00", "24:00:01", "1:00:00"}},
        {"gYearMonth",
         Facets::Order,
         {"2000-01", "1999-12Z", "2000-02+01:00", "-0005-05", "2000-13", "00-01"}},
        {"gYear", Facets::Order, {"2000", "1999Z", "10000", "-0005", "0000", "99"}},
        {"gMonthDay", Facets::Order, {"--01-01", "--02-29", "--12-31Z", "--02-30", "01-01"}},
        {"gDay", Facets::Order, {"---01", "---31", "---15Z", "---32", "--01"}},
        {"gMonth", Facets::Order, {"--01", "--12", "--06Z", "--13", "01"}},
        {"hexBinary", Facets::Length, {"", "0a", "0AFF", "10", "abcdef", "a", "0g"}},
        {"base64Binary", Facets::Length, {"", "YQ==", "YWI=", "YWJj", "YW Jj", "YQ=", "!!!!"}},
        {"anyURI", Facets::Length, {"http://a/b", "a", "urn:x:y", "a b", "../x#y", "a#b", "?q"}},
        {"QName", Facets::None, {"a", "t:b", "xs:int", "zz:a", "1a"}},
        {"ID", Facets::Length, {"i1", "i2", "i3", "i4", "1", "a b"}},
        {"IDREF", Facets::Length, {"i1", "i2", "i3", "i9", "1"}},
        {"IDREFS", Facets::Length, {"i1", "i2 i1", "i3  i3", "i9", ""}},
    };
    return kTypes;
}

const char* RandomText(CRandom& random) {
    return random.Of(random.Of(BuiltIns()).samples);
}

const char* RandomText(CRandom& random, std::string_view builtIn) {
    for (const CBuiltIn& type : BuiltIns()) {
        if (type.name == builtIn) return random.Of(type.samples);
    }
    return RandomText(random);
}

std::string RandomSchema(CRandom& random) {
    return CMaker(random).Make();
}

}  // namespace oracle
