// Every element record against every short run of elements under every way of ignoring faults. What is
// expected comes from the rules of reading and writing, told once more by `Rules` below.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"

namespace fixture {
namespace {

constexpr int kSingle = -2;  // instead of the bounds of a collection
constexpr const char* kXsi = "http://www.w3.org/2001/XMLSchema-instance";

/// Any: a collection by the record that knows nothing of its items, which are those of AbsCls.
enum class Content { Prim, Enum, Cls, AbsCls, Untpd, Any };
constexpr Content kContents[] = {Content::Prim,   Content::Enum,  Content::Cls,
                                 Content::AbsCls, Content::Untpd, Content::Any};
constexpr const char* kContentNames[] = {"Prim", "Enum", "Cls", "AbsCls", "Untpd", ""};

/// How the class under test meets the document: as its root, or as a member without a tag of the root.
enum class Place { Root, MandatoryMember, OptionalMember };

/// A class with the member M of the kind under test, alone or between the optional members L and R.
struct Row {
    XmlElementGroupType group;
    Content content;
    RecordCardinality cardinality;  // of a single member
    int minOccurs = kSingle;        // of a collection
    int maxOccurs = kSingle;
    bool hasNeighbours;
    Place place;
    std::string ignore;    // e: unknown elements, m: missing mandatory, c: counts, h: choices, n: namespaces
    std::string elements;  // L M R, X: unknown, m: M of another namespace, N: M that is nil, S: substitutes M

    bool IsCol() const { return minOccurs != kSingle; }
    bool Ignores(char what) const { return ignore.find(what) != std::string::npos; }
    std::string Text() const {
        return std::string(group == 0   ? "Seq"
                           : group == 1 ? "Choice"
                                        : "All") +
               kContentNames[static_cast<int>(content)] +
               (IsCol()               ? "Col " + std::to_string(minOccurs) + ".." + std::to_string(maxOccurs)
                : cardinality == kMnd ? "Mnd"
                                      : "Opt") +
               (hasNeighbours ? " between L and R" : "") +
               (place == Place::Root              ? ""
                : place == Place::MandatoryMember ? ", mandatory without tag"
                                                  : ", optional without tag") +
               ", ignoring [" + ignore + "], elements [" + elements + "]";
    }
    std::string TextOf(std::size_t at) const {
        if (content == Content::Enum && elements[at] != 'L' && elements[at] != 'R')
            return ColorToString(static_cast<int>(at % 3));
        return std::to_string(at);
    }
    std::string Root() const { return place == Place::Root ? "Box" : "Holder"; }
    std::string Document() const {
        std::string xml = "<" + Root() + " xmlns='urn:fixture'>";
        for (std::size_t at = 0; at < elements.size(); ++at) {
            const char kind = elements[at];
            if (kind == 'N') {
                xml += std::string("<M xmlns:xsi='") + kXsi + "' xsi:nil='true'/>";
            } else {
                const std::string tag(1, kind == 'm' ? 'M' : kind);
                xml += "<" + tag + (kind == 'm' ? " xmlns='urn:o'>" : ">") + TextOf(at) + "</" + tag + ">";
            }
        }
        return xml + "</" + Root() + ">";
    }
};

// --- what is expected --------------------------------------------------------------------------------------

struct Failure {
    bool isValidation;  // else a failure that had a path and went on as CKvException
    std::string message;
};

class Rules {
public:
    explicit Rules(const Row& row) : m_row(row) {
        const bool mandatory = row.cardinality == kMnd;
        m_box.group = row.group;
        if (row.hasNeighbours) m_box.members.push_back({"L"});
        m_box.members.push_back({"M", mandatory, row.minOccurs, row.maxOccurs});
        if (row.hasNeighbours) m_box.members.push_back({"R"});
        if (row.place == Place::Root) return;
        m_box.hasTag = false;
        m_holder.members.push_back({"Box", row.place == Place::MandatoryMember});
        m_holder.members.back().isBox = true;
        if (!row.hasNeighbours) m_holder.members.push_back({"R"});
    }

    /// The XML that is written after reading, or the failure.
    std::string Outcome(std::string& exception) {
        try {
            std::size_t at = 0;
            Class& root = m_row.place == Place::Root ? m_box : m_holder;
            Read(root, at, false);
            const std::string content = Write(root, m_row.Root());
            exception.clear();
            const std::string start = "<" + m_row.Root() + " xmlns=\"urn:fixture\"";
            return content.empty() ? start + "/>" : start + ">" + content + "</" + m_row.Root() + ">";
        } catch (const Failure& failure) {
            exception = failure.isValidation ? "CKvValidationException" : "CKvException";
            return failure.message;
        }
    }

private:
    struct Member {
        std::string name;
        bool isMandatory = false;
        int minOccurs = kSingle;
        int maxOccurs = kSingle;
        bool isBox = false;
        std::vector<std::size_t> taken = {};
        bool isSet = false;  // of a box

        bool IsCol() const { return minOccurs != kSingle; }
    };
    struct Class {
        XmlElementGroupType group = XmlElementGroupType_Sequence;
        bool hasTag = true;
        std::vector<Member> members;
    };

    bool Ignores(char what) const { return m_row.Ignores(what); }
    std::size_t End() const { return m_row.elements.size(); }
    std::string Path(std::size_t at) const {
        const auto tag = [&](std::size_t i) {
            const char kind = m_row.elements[i];
            return kind == 'm' || kind == 'N' ? 'M' : kind;
        };
        int same = 0;
        int before = 0;
        for (std::size_t i = 0; i < End(); ++i) {
            if (tag(i) != tag(at)) continue;
            ++same;
            if (i <= at) ++before;
        }
        return "/" + m_row.Root() + "/" + tag(at) + (same > 1 ? "[" + std::to_string(before) + "]" : "");
    }
    [[noreturn]] void FailAt(const std::string& message, const std::string& path) const {
        throw Failure{false, message + "\nPath: " + path};
    }
    /// A failure without a path gets that of the element that is read.
    [[noreturn]] void Fail(const std::string& message) const {
        throw Failure{true, "Failed to process the element.\nPath: /" + m_row.Root() + "\n" + message};
    }
    std::string CountError(const Member& member) const {
        const int count = static_cast<int>(member.taken.size());
        const std::string of = " number of [" + member.name + "] elements allowed in this collection is ";
        if (count > member.maxOccurs && member.maxOccurs != -1)
            return "The Maximum" + of + std::to_string(member.maxOccurs);
        return count < member.minOccurs ? "The Minimum" + of + std::to_string(member.minOccurs) : "";
    }
    bool IsCountGood(const Member& member) const { return Ignores('c') || CountError(member).empty(); }

    /// Takes the element if it is the member's.
    bool TakeOne(const Class& owner, Member& member, std::size_t& at) {
        if (at == End()) return false;
        const char kind = m_row.elements[at];
        const bool isM = member.name == "M";
        const bool isAbstract = m_row.content == Content::AbsCls || m_row.content == Content::Any;
        const bool isNamed =
            isM ? kind == 'M' || kind == 'N' || (kind == 'm' && Ignores('n')) : kind == member.name[0];
        const bool isSubstitute = isM && isAbstract && kind == 'S';
        if (!isNamed && !isSubstitute) return false;
        if (isM && isAbstract && kind == 'm') {  // unknown to the factory
            if (owner.hasTag || member.IsCol())
                FailAt("Failed to find a suitable substitution element for [M].", Path(at));
            return false;
        }
        const bool isNillable = member.IsCol() ? false : member.isMandatory ? false : true;
        const bool isSimple = m_row.content == Content::Prim || m_row.content == Content::Enum;
        if (kind == 'N' && m_row.content != Content::Untpd && !(isSimple && isNillable))
            FailAt("Invalid use of 'nil' attribute in non-nillable element.", Path(at));
        if (!member.IsCol()) member.taken.clear();  // a property holds what was read last
        member.taken.push_back(at++);
        return true;
    }
    bool Take(const Class& owner, Member& member, std::size_t& at) {
        if (!member.isBox) return TakeOne(owner, member, at);
        // A member without tag reads what it can; when it is not there, all stays as it was.
        const std::size_t first = at;
        Class attempt = m_box;
        for (Member& part : attempt.members)
            part.taken.clear();
        if (!Read(attempt, at, !member.isMandatory)) {
            at = first;
            return false;
        }
        if (at == first && (!member.isMandatory || member.isSet)) return !member.isMandatory ? false : true;
        m_box = attempt;
        member.isSet = true;
        return true;
    }

    bool ReadCol(const Class& owner, Member& member, std::size_t& at) {
        while (TakeOne(owner, member, at)) {
        }
        if (!IsCountGood(member) && owner.hasTag) Fail(CountError(member));
        return IsCountGood(member);
    }
    bool ReadSeqMember(const Class& owner, Member& member, std::size_t& at) {
        if (member.IsCol()) return ReadCol(owner, member, at);
        if (Take(owner, member, at) || !member.isMandatory) return true;
        if (owner.hasTag && Ignores('m')) return true;
        while (Ignores('e') && at < End()) {
            ++at;
            if (Take(owner, member, at)) return true;
        }
        if (!owner.hasTag) return false;
        FailAt("Failed to find the required child element [" + member.name + "].", "/" + m_row.Root());
    }
    /// Of a choice or an all-group: whether the member's element was there.
    bool ReadOffered(const Class& owner, Member& member, std::size_t& at) {
        const std::size_t first = at;
        if (!member.IsCol()) return Take(owner, member, at);
        const bool isAnything = at < End() && TakeOne(owner, member, at);
        if (isAnything && ReadCol(owner, member, at)) return true;
        at = first;
        return false;
    }

    bool MayChoiceBeEmpty(const Class& box) const {
        for (const Member& member : box.members)
            if (member.IsCol() ? member.minOccurs == 0 : !member.isMandatory) return true;
        return Ignores('h');
    }
    void CheckRest(const Class& owner, std::size_t at) const {
        if (!owner.hasTag || at == End() || Ignores('e')) return;
        FailAt("Failed read all the elements held within the element [" + m_row.Root() +
                   "]. The unexpected element [" +
                   (m_row.elements[at] == 'm' || m_row.elements[at] == 'N' ? 'M' : m_row.elements[at]) +
                   "] remains un processed",
               "/" + m_row.Root());
    }

    /// Reads an object from the elements at `at`; false when a class without tag is not there.
    bool Read(Class& object, std::size_t& at, bool suppressChoiceError) {
        const std::size_t first = at;
        const auto isNotThere = [&] {
            at = first;
            return false;
        };
        std::vector<Member>& members = object.members;
        if (object.group == XmlElementGroupType_Sequence) {
            for (std::size_t start = 0;; start = members.size() - 1) {
                for (std::size_t i = start; i < members.size(); ++i) {
                    while (!ReadSeqMember(object, members[i], at)) {
                        if (!Ignores('e') || at == End()) return isNotThere();
                        ++at;
                    }
                }
                CheckRest(object, at);
                if (!object.hasTag || at == End() || ++at == End()) return true;
            }
        }
        if (object.group == XmlElementGroupType_Choice) {
            bool chosen = false;
            for (;;) {
                for (Member& member : members)
                    if (!chosen) chosen = ReadOffered(object, member, at);
                if (chosen || !object.hasTag || !Ignores('e') || at == End() || ++at == End()) break;
            }
            if (!chosen && !suppressChoiceError && !MayChoiceBeEmpty(object)) {
                if (!object.hasTag) return isNotThere();
                FailAt("No child elements within the element [" + m_row.Root() +
                           "] were populated. The element represents a choice, so one and only one element "
                           "should be populated. The element contained no sutable child elements",
                       "/" + m_row.Root());
            }
        } else {
            std::vector<bool> found(members.size());
            for (bool isMoved = true; isMoved;) {
                isMoved = false;
                for (std::size_t i = 0; i < members.size(); ++i) {
                    if (found[i] || !ReadOffered(object, members[i], at)) continue;
                    found[i] = isMoved = true;
                }
            }
            for (std::size_t i = 0; i < members.size(); ++i) {
                const Member& member = members[i];
                const bool isMissing =
                    member.IsCol() ? !IsCountGood(member) : !found[i] && member.isMandatory && !Ignores('m');
                if (!isMissing) continue;
                if (!object.hasTag) return isNotThere();
                Fail(member.IsCol() ? CountError(member)
                                    : "Failed to find the mandatory element [" + member.name + "].");
            }
        }
        CheckRest(object, at);
        return true;
    }

    std::string ElementXml(std::size_t at) const {
        const char kind = m_row.elements[at];
        const bool isKept = m_row.content == Content::Untpd;
        const std::string prefix = isKept ? "xsi" : "AA";
        if (kind == 'N') return "<M xmlns:" + prefix + "=\"" + kXsi + "\" " + prefix + ":nil=\"true\"/>";
        const std::string tag(1, kind == 'm' ? 'M' : kind);
        const std::string ns = kind == 'm' && isKept ? " xmlns=\"urn:o\"" : "";
        return "<" + tag + ns + ">" + m_row.TextOf(at) + "</" + tag + ">";
    }
    std::string Write(const Class& object, const std::string& name) const {
        const auto fail = [&](const std::string& message) {
            const std::string path = name == m_row.Root() ? "\nPath: /" + name : "";
            throw Failure{true,
                          "Failed to convert the element [" + name + "] to XML" + path + "\n" + message};
        };
        std::string xml;
        for (const Member& member : object.members) {
            std::string text;
            bool isThere = !member.taken.empty();
            for (const std::size_t at : member.taken)
                text += ElementXml(at);
            if (member.isBox && (member.isMandatory || member.isSet)) {
                isThere = true;
                try {
                    text = Write(m_box, "Box");
                } catch (const Failure& inner) {
                    fail(inner.message);
                }
            }
            if (member.IsCol() && object.group != XmlElementGroupType_Choice && !IsCountGood(member))
                fail(CountError(member));
            if (!isThere && member.isMandatory && m_row.content == Content::Cls) {
                text = "<M/>";  // the object was there from the start
            } else if (!isThere && member.isMandatory) {
                fail("The Property [" + member.name + "] is mandatory, it may not be NULL");
            }
            xml += text;
            if (object.group == XmlElementGroupType_Choice && isThere) return xml;
        }
        if (object.group == XmlElementGroupType_Choice && !MayChoiceBeEmpty(object)) {
            fail(
                "This element is a choice, and as such must have at one (and only one) valid item, "
                "currently there are none set");
        }
        return xml;
    }

    const Row& m_row;
    Class m_box;
    Class m_holder;
};

// --- the classes -------------------------------------------------------------------------------------------

const Model& ItemModel() {
    static const Model& model = Model::New("M").Text(ItemType_string);
    return model;
}
using Item = Typed<ItemModel>;
const Model& SubstituteModel() {
    static const Model& model = Model::New("S").Text(ItemType_string);
    return model;
}
using Substitute = Typed<SubstituteModel>;

CSmartPtr<CXmlObjectBase> MakeItem(CXmlElement* element) {
    if (element->GetNamespaceURI() != kNamespace) return nullptr;
    if (element->GetLocalName() == "S") return new Substitute();
    return element->GetLocalName() == "M" ? new Item() : nullptr;
}

void AddMember(Model& model, const Row& row) {
    if (!row.IsCol()) {
        switch (row.content) {
            case Content::Prim:
                model.Prim("M", row.cardinality, ItemType_string);
                break;
            case Content::Enum:
                model.Enum("M", row.cardinality);
                break;
            case Content::Cls:
                model.Cls<Item>("M", row.cardinality);
                break;
            case Content::AbsCls:
                model.AbsCls("M", row.cardinality, MakeItem);
                break;
            default:
                model.Untpd("M", row.cardinality);
        }
        return;
    }
    const int minOccurs = row.minOccurs;
    const int maxOccurs = row.maxOccurs;
    switch (row.content) {
        case Content::Prim:
            model.PrimCol<CstringCol>("M", minOccurs, maxOccurs);
            break;
        case Content::Enum:
            model.EnumCol("M", minOccurs, maxOccurs);
            break;
        case Content::Cls:
            model.ClsCol<Item>("M", minOccurs, maxOccurs);
            break;
        case Content::AbsCls:
            model.AbsClsCol<Object>("M", minOccurs, maxOccurs, MakeItem);
            break;
        case Content::Untpd:
            model.UntpdCol("M", minOccurs, maxOccurs);
            break;
        case Content::Any:
            model.AnyCol("M", [=]() -> CSmartPtr<CXmlCollectionBase> {
                return new TypedList<Object>("M", kNamespace, minOccurs, maxOccurs, MakeItem);
            });
    }
}

/// The class under test, for factories, which have no other way to know it.
const Model* g_boxModel = nullptr;
const Model& BoxModel() {
    return *g_boxModel;
}
using Box = Typed<BoxModel>;

const Model& RootModel(const Row& row) {
    const bool isRoot = row.place == Place::Root;
    Model& box = Model::New("Box", row.group, isRoot ? XmlElementType_Element : XmlElementType_PseudoElement);
    if (row.hasNeighbours) box.Prim("L", kOpt, ItemType_string);
    AddMember(box, row);
    if (row.hasNeighbours) box.Prim("R", kOpt, ItemType_string);
    g_boxModel = &box;
    if (isRoot) return box;
    Model& holder = Model::New("Holder").Cls<Box>("Box", row.place == Place::MandatoryMember ? kMnd : kOpt);
    if (!row.hasNeighbours) holder.Prim("R", kOpt, ItemType_string);
    return holder;
}

/// The tree of the row's document; rows that have the same share it, as many classes may read one tree.
const CXmlElement* Tree(const Row& row) {
    static std::map<std::string, std::unique_ptr<CXmlDocument>> trees;
    std::unique_ptr<CXmlDocument>& tree =
        trees[row.Root() + (row.content == Content::Enum ? "enum" : "") + row.elements];
    if (tree == nullptr) {
        tree = std::make_unique<CXmlDocument>();
        tree->LoadXml(row.Document().c_str());
    }
    return tree->GetDocumentElement();
}

std::string Outcome(const Row& row, const Model& model, std::string& exception) {
    const CSerializationContext context = Ignoring(row.ignore);
    exception.clear();
    try {
        const CSmartPtr<Object> object(new Object(model));
        object->FromXmlElement(Tree(row), context);
        return object->ToXml(false, false, EOLType_LF, context);
    } catch (const CKvException& e) {
        exception = typeid(e) == typeid(CKvException)             ? "CKvException"
                    : typeid(e) == typeid(CKvValidationException) ? "CKvValidationException"
                                                                  : typeid(e).name();
        return e.GetFullMessage();
    }
}

// --- the matrix --------------------------------------------------------------------------------------------

/// All runs of up to three elements of the usual kinds, and of up to two of all kinds.
std::vector<std::string> Runs() {
    std::vector<std::string> runs = {""};
    for (std::size_t from = 0, length = 1; length <= 3; ++length) {
        const std::size_t to = runs.size();
        for (; from < to; ++from) {
            for (const char kind : std::string(length < 3 ? "LMRXmNS" : "LMRX")) {
                const bool isUsual = runs[from].find_first_of("mNS") == std::string::npos;
                if (length < 3 || isUsual) runs.push_back(runs[from] + kind);
            }
        }
    }
    runs.insert(runs.end(), {"MMMX", "XMMM", "LMXMR", "MXXM", "MNX", "RXLXM"});
    return runs;
}

class RecordMatrixTest : public testing::TestWithParam<XmlElementGroupType> {};

TEST_P(RecordMatrixTest, EveryRecord) {
    struct Cardinality {
        RecordCardinality cardinality;
        int minOccurs;
        int maxOccurs;
    };
    const Cardinality cardinalities[] = {
        {kMnd, kSingle, kSingle}, {kOpt, kSingle, kSingle}, {kOpt, 0, -1}, {kOpt, 1, 2}};
    const std::vector<std::string> runs = Runs();
    int failures = 0;
    int rows = 0;
    for (const Content content : kContents) {
        for (const Cardinality& c : cardinalities) {
            const bool isCol = c.minOccurs != kSingle;
            if (!isCol && c.cardinality == kMnd && GetParam() == XmlElementGroupType_Choice) continue;
            if (!isCol && content == Content::Any) continue;
            for (const bool hasNeighbours : {false, true}) {
                for (const Place place : {Place::Root, Place::MandatoryMember, Place::OptionalMember}) {
                    Row row{GetParam(),  content,     c.cardinality,
                            c.minOccurs, c.maxOccurs, hasNeighbours,
                            place,       "",          ""};
                    const Model& model = RootModel(row);
                    for (const char* ignore :
                         {"", "e", "m", "c", "h", "n", "ec", "eh", "mc", "mchn", "echn"}) {
                        for (const std::string& run : runs) {
                            // Without neighbours, L is as unknown as X.
                            if (!hasNeighbours && run.find('L') != std::string::npos) continue;
                            row.ignore = ignore;
                            row.elements = run;
                            std::string expectedType;
                            const std::string expected = Rules(row).Outcome(expectedType);
                            std::string type;
                            const std::string outcome = Outcome(row, model, type);
                            ++rows;
                            if (outcome == expected && type == expectedType) continue;
                            ADD_FAILURE() << row.Text() << "\n  expected: " << expectedType << " " << expected
                                          << "\n  outcome:  " << type << " " << outcome;
                            if (++failures == 20) FAIL() << "and maybe more";
                        }
                    }
                }
            }
        }
    }
    RecordProperty("rows", rows);
}

INSTANTIATE_TEST_SUITE_P(Groups, RecordMatrixTest,
                         testing::Values(XmlElementGroupType_Sequence, XmlElementGroupType_Choice,
                                         XmlElementGroupType_All));

}  // namespace
}  // namespace fixture
