#include "tests/support/fixture_all_kinds.h"

#include <gtest/gtest.h>

namespace fixture {

namespace {

class Factory final : public CClassfactoryBase {
public:
    using CClassfactoryBase::GetElementType;
    using CClassfactoryBase::GetElementTypeNamespaceUri;
};

// --- the classes -------------------------------------------------------------------------------------------

const Model& LeafModel() {
    static const Model& model =
        Model::New("Leaf").Text(ItemType_r8).Attribute("unit", ItemType_string).EnumAttribute("paint");
    return model;
}
using Leaf = Typed<LeafModel>;

const Model& MemoModel() {
    static const Model& model =
        Model::New("Memo").Attribute("id", ItemType_i4, false).Prim("Line", kMnd, ItemType_string);
    return model;
}
using Memo = TypedNillable<MemoModel>;

const Model& TreeModel();
using Tree = Typed<TreeModel>;
const Model& TreeModel() {
    static Model* model = nullptr;
    if (model == nullptr) {
        model = &Model::New("Tree");  // is there before its members ask for it
        model->Attribute("name", ItemType_string)
            .AnyAttribute("others", "##other")
            .Cls<Tree>("Next", kOpt)
            .ClsCol<Tree>("Branch", 0, -1);
    }
    return *model;
}

// Without tags of their own.
const Model& PairModel() {
    static const Model& model = Model::New("Pair", XmlElementGroupType_Sequence, XmlElementType_PseudoElement)
                                    .Attribute("mark", ItemType_string)
                                    .Prim("First", kMnd, ItemType_string)
                                    .Prim("Second", kOpt, ItemType_i4);
    return model;
}
const Model& EitherModel() {
    static const Model& model = Model::New("Either", XmlElementGroupType_Choice, XmlElementType_PseudoElement)
                                    .Attribute("side", ItemType_string)
                                    .Prim("Left", kOpt, ItemType_i4)
                                    .Cls<Leaf>("Right", kOpt);
    return model;
}
const Model& EntryModel() {
    static const Model& model =
        Model::New("Entry", XmlElementGroupType_Sequence, XmlElementType_PseudoElement)
            .Attribute("set", ItemType_string)
            .Prim("Key", kMnd, ItemType_string)
            .Prim("Value", kOpt, ItemType_date);
    return model;
}

Model& AddEveryMember(Model& model) {
    if (model.Group() != XmlElementGroupType_Choice) {
        model.Prim("PrimMnd", kMnd, ItemType_string)
            .Enum("EnumMnd", kMnd)
            .Cls<Leaf>("ClsMnd", kMnd)
            .AbsCls("AbsClsMnd", kMnd, MakeShape)
            .Untpd("UntpdMnd", kMnd);
    }
    return model.Prim("PrimOpt", kOpt, ItemType_i4)
        .Prim("NilPrim", kOpt, ItemType_date)
        .Enum("EnumOpt", kOpt)
        .Enum("NilEnum", kOpt)
        .Cls<Leaf>("ClsOpt", kOpt)
        .Cls<Memo>("NilCls", kOpt)
        .AbsCls("AbsClsOpt", kOpt, MakeShape)
        .Untpd("UntpdOpt", kOpt)
        .PrimCol<Ci4Col>("PrimCol", 0, -1)
        .EnumCol("EnumCol", 0, 3)
        .ClsCol<Leaf>("ClsCol", 0, 2)
        .AbsClsCol<Object>("AbsClsCol", 0, -1, MakeShape)
        .UntpdCol("UntpdCol", 0, -1)
        .AnyCol("AnyCol", []() -> CSmartPtr<CXmlCollectionBase> {
            return new TypedList<Leaf>("AnyCol", kNamespace, 0, -1);
        });
}

template <XmlElementGroupType group>
const Model& GroupModel() {
    static const Model& model = AddEveryMember(Model::New(group == XmlElementGroupType_Sequence ? "Sequence"
                                                          : group == XmlElementGroupType_Choice ? "Choice"
                                                                                                : "All",
                                                          group));
    return model;
}
template <XmlElementGroupType group>
using Group = Typed<GroupModel<group>>;
using Sequence = Group<XmlElementGroupType_Sequence>;
using Choice = Group<XmlElementGroupType_Choice>;
using All = Group<XmlElementGroupType_All>;

/// A collection of the kind; the library has none of characters.
template <class C>
CSmartPtr<CXmlCollectionBase> NewCollection(const char* name) {
    return new C(name, kNamespace, 0, -1);
}
using MakeNamed = CSmartPtr<CXmlCollectionBase> (*)(const char* name);
MakeNamed CollectionOf(ItemType type) {
    switch (type) {
#define KVXML_COLLECTION(kind) \
    case ItemType_##kind:      \
        return NewCollection<C##kind##Col>;
        KVXML_COLLECTION(hexBinary)
        KVXML_COLLECTION(base64Binary)
        KVXML_COLLECTION(i1)
        KVXML_COLLECTION(i2)
        KVXML_COLLECTION(i4)
        KVXML_COLLECTION(i8)
        KVXML_COLLECTION(ui1)
        KVXML_COLLECTION(ui2)
        KVXML_COLLECTION(ui4)
        KVXML_COLLECTION(ui8)
        KVXML_COLLECTION(r4)
        KVXML_COLLECTION(r8)
        KVXML_COLLECTION(duration)
        KVXML_COLLECTION(yearMonth)
        KVXML_COLLECTION(monthDay)
        KVXML_COLLECTION(year)
        KVXML_COLLECTION(month)
        KVXML_COLLECTION(day)
        KVXML_COLLECTION(date)
        KVXML_COLLECTION(datetime)
        KVXML_COLLECTION(time)
        KVXML_COLLECTION(string)
        KVXML_COLLECTION(boolean)
        KVXML_COLLECTION(decimal)
        KVXML_COLLECTION(integer)
#undef KVXML_COLLECTION
        default:
            return nullptr;
    }
}

// --- content -----------------------------------------------------------------------------------------------

void FillUntyped(CElement& element) {
    element.SetAttribute("plain", nullptr, "<1>");
    element.SetAttribute("own", "urn:o", "2");
    element.AddElement("Inner", kNamespace, "text");
    element.AddElement("Inner", "urn:o", "other");
}

struct Filling {
    const char* name;
    void (*fill)(Object& object, const char* name);
};
const Filling kFillings[] = {
    {"PrimMnd", [](Object& o, const char* n) { o.Set(n, "a <b> & \"c\" \xC3\xA4\xF0\x9F\x8D\x9F"); }},
    {"EnumMnd", [](Object& o, const char* n) { o.Set(n, "2"); }},
    {"ClsMnd", [](Object& o, const char* n) { o.At(n).Set("text", "2.5").Set("unit", "m"); }},
    {"AbsClsMnd", [](Object& o, const char* n) { o.Create<Circle>(n).Set("Radius", "1"); }},
    {"UntpdMnd",
     [](Object& o, const char* n) {
         const CSmartPtr<CElement> element(new CElement(n, kNamespace));
         FillUntyped(*element);
         o[n].SetXmlObject(element.Get());
     }},
    {"PrimOpt", [](Object& o, const char* n) { o.Set(n, "-7"); }},
    {"NilPrim", [](Object& o, const char* n) { o[n].SetNil(); }},
    {"EnumOpt", [](Object& o, const char* n) { o.Set(n, "0"); }},
    {"NilEnum", [](Object& o, const char* n) { o[n].SetNil(); }},
    {"ClsOpt", [](Object& o, const char* n) { o.Create(n).Set("text", "-1").Set("paint", "1"); }},
    {"NilCls",
     [](Object& o, const char* n) { dynamic_cast<Memo&>(o.Create(n).Set("id", "3")).SetNil(true); }},
    {"AbsClsOpt",
     [](Object& o, const char* n) {
         Object& square = o.Create<Square>(n);
         square.Set("Side", "3");
         square.SetName(n);  // goes by the member's name, so its type is written
     }},
    {"UntpdOpt",
     [](Object& o, const char* n) {
         o[n].SetXmlObject(CSmartPtr<CElement>(new CElement(n, kNamespace, "u")).Get());
     }},
    {"PrimCol",
     [](Object& o, const char* n) {
         o.AddValues(n, {"1", "-2", "3"});
     }},
    {"EnumCol",
     [](Object& o, const char* n) {
         o.AddValues(n, {"red", "blue", "red"});
     }},
    {"ClsCol",
     [](Object& o, const char* n) {
         o.Add(n).Set("text", "1");
         o.Add(n).Set("text", "2").Set("unit", "");
     }},
    {"AbsClsCol",
     [](Object& o, const char* n) {
         o.Add<Circle>(n).Set("Radius", "5").SetName(n);
         o.Add<Square>(n).Set("Side", "4");
         o.Add<Circle>(n).Set("Radius", "6");
     }},
    {"UntpdCol",
     [](Object& o, const char* n) {
         auto& elements = dynamic_cast<CElementCol&>(o.Collection(n));
         FillUntyped(*elements.Add(n, kNamespace, ""));
         elements.Add(n, kNamespace, "second");
     }},
    {"AnyCol",
     [](Object& o, const char* n) {
         o.Add(n).Set("text", "8");
         o.Add(n).Set("text", "9");
     }},
};

bool IsFilled(const Filling& filling, const Model& model, Nils nils) {
    const bool isNil = std::string_view(filling.name).substr(0, 3) == "Nil";
    return model.Has(filling.name) && (nils == Nils::Filled || !isNil);
}

void FillMembers(Object& object, Nils nils) {
    for (const Filling& filling : kFillings) {
        if (IsFilled(filling, object.GetModel(), nils)) filling.fill(object, filling.name);
    }
}

}  // namespace

const Model& ValuesModel() {
    static const Model& model = []() -> const Model& {
        static std::vector<std::string> names;  // of the attributes and the collections
        names.reserve(kScalars.size() * 2);
        Model& values = Model::New("Values");
        for (const ScalarText& scalar : kScalars) {
            const char* name = names.emplace_back(std::string(scalar.name) + "List").c_str();
            values.Attribute(names.emplace_back(std::string("a") + scalar.name).c_str(), scalar.type);
            values.Prim(scalar.name, kOpt, scalar.type);
            if (const MakeNamed make = CollectionOf(scalar.type))
                values.PrimCol(name, [=] { return make(name); });
        }
        return values;
    }();
    return model;
}

const Model& CircleModel() {
    static const Model& model = Model::New("Circle").Derived().Prim("Radius", kMnd, ItemType_r8);
    return model;
}
const Model& SquareModel() {
    static const Model& model = Model::New("Square").Derived().Prim("Side", kMnd, ItemType_r8);
    return model;
}

CSmartPtr<CXmlObjectBase> MakeShape(CXmlElement* element) {
    const std::string type = Factory::GetElementType(element);
    const std::string ns =
        type.empty() ? element->GetNamespaceURI() : Factory::GetElementTypeNamespaceUri(element);
    const std::string name = type.empty() ? element->GetLocalName() : type;
    if (ns != kNamespace && !(ns.empty() && !type.empty())) return nullptr;
    if (name == "Circle") return new Circle();
    return name == "Square" ? new Square() : nullptr;
}

const Model& AllKindsModel() {
    static const Model& model = Model::New("AllKinds")
                                    .Attribute("id", ItemType_i4, false)
                                    .EnumAttribute("paint", false)
                                    .Attribute("size", ItemType_i4, true, "10")
                                    .Cls<Sequence>("Sequence", kMnd)
                                    .Cls<All>("All", kMnd)
                                    .ClsCol<Choice>("Choice", 1, -1)
                                    .Cls<Values>("Values", kOpt)
                                    .ClsCol<Memo>("Memo", 0, -1)
                                    .Cls<Tree>("Tree", kOpt)
                                    .Cls<Typed<PairModel>>("Pair", kOpt)
                                    .Cls<Typed<EitherModel>>("Either", kMnd)
                                    .ClsCol<Typed<EntryModel>>("Entry", 0, -1)
                                    .UntpdCol("Rest", 0, -1, "##other");
    return model;
}

void Fill(AllKinds& object, Nils nils) {
    object.Set("id", "-7").Set("paint", "2").Set("size", "12");
    FillMembers(object.At("Sequence"), nils);
    FillMembers(object.At("All"), nils);
    for (const Filling& filling : kFillings) {
        if (IsFilled(filling, GroupModel<XmlElementGroupType_Choice>(), nils))
            filling.fill(object.Add("Choice"), filling.name);
    }
    Object& values = object.Create("Values");
    for (const ScalarText& scalar : kScalars) {
        const std::string name = scalar.name;
        values.Set(name, scalar.text).Set("a" + name, scalar.text);
        if (CollectionOf(scalar.type) != nullptr) values.AddValues(name + "List", {scalar.text, scalar.text});
    }
    object.Add("Memo").Set("id", "1").Set("Line", "one");
    if (nils == Nils::Filled) dynamic_cast<Memo&>(object.Add("Memo").Set("id", "2")).SetNil(true);
    Object& tree = object.Create("Tree").Set("name", "root");
    auto& others = dynamic_cast<CAttributeCol&>(tree.Collection("others"));
    others.Add("lang", "urn:fixture:attributes", "a<\"b\"\n&c");
    others.Add("code", "urn:o", "1");
    tree.Create("Next").Set("name", "next").Add("Branch").Set("name", "leaf");
    tree.Add("Branch").Create("Next");
    tree.Add("Branch");
    object.Create("Pair").Set("mark", "P").Set("First", "one").Set("Second", "2");
    object.At("Either").Set("side", "E").Create("Right").Set("text", "0.5");
    object.Add("Entry").Set("set", "S").Set("Key", "k1").Set("Value", "2024-02-29");
    object.Add("Entry").Set("set", "S").Set("Key", "k2");
    auto& rest = dynamic_cast<CElementCol&>(object.Collection("Rest"));
    FillUntyped(*rest.Add("Foreign", "urn:o", "f"));
    rest.Add("Sequence", "urn:p", "");
}

void Check(const AllKinds& object, Nils nils) {
    const CSmartPtr<AllKinds> filled(new AllKinds());
    Fill(*filled, nils);
    // Of one line each, so that a difference is easy to see.
    const auto lines = [](std::string text) {
        for (std::size_t at = 0; (at = text.find(' ', at)) != std::string::npos;)
            text[at] = '\n';
        return text;
    };
    EXPECT_EQ(lines(object.Dump()), lines(filled->Dump()));
}

}  // namespace fixture
