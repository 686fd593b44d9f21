// Deep copies and comparison of objects by their properties.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "examples/orders/order_type.h"
#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace KvXmlLib16 {
namespace {

using fixture::AllKinds;
using fixture::Object;

const fixture::Model& NodeModel();
using Node = fixture::Typed<NodeModel>;
const fixture::Model& NodeModel() {
    static fixture::Model* model = nullptr;
    if (model == nullptr) {
        model = &fixture::Model::New("Node");
        model->Attribute("name", ItemType_string)
            .Prim("Number", fixture::kOpt, ItemType_r8)
            .Cls<Node>("Next", fixture::kOpt)
            .ClsCol<Node>("Item", 0, -1);
    }
    return *model;
}

/// In the place of a Node, but not what the records of a Node's members make.
class OtherNode final : public Node {};

CSmartPtr<AllKinds> Filled() {
    CSmartPtr<AllKinds> object(new AllKinds());
    fixture::Fill(*object);
    return object;
}

template <class T>
T& As(CXmlCollectionBase& collection) {
    return dynamic_cast<T&>(collection);
}

TEST(ObjectCopyTest, EveryKindOfMember) {
    const auto object = Filled();
    const CSmartPtr<AllKinds> copy = Clone(*object);
    fixture::Check(*copy);
    EXPECT_TRUE(*copy == *object);
    EXPECT_FALSE(*copy != *object);
    EXPECT_EQ(copy->ToXml(), object->ToXml());
    EXPECT_EQ(copy->AddRef(), 2);
    copy->Release();

    // Each of these makes a difference, and none is seen in the original.
    const std::vector<void (*)(AllKinds&)> changes = {
        [](AllKinds& o) { o.Set("id", "-8"); },
        [](AllKinds& o) { o["size"].Clear(); },
        [](AllKinds& o) { o.At("Sequence")["NilPrim"].Clear(); },
        [](AllKinds& o) { o.At("Sequence").Set("EnumOpt", "1"); },
        [](AllKinds& o) { o.At("Sequence").At("ClsMnd").Set("text", "3"); },
        [](AllKinds& o) { o.At("Sequence")["ClsOpt"].Clear(); },
        [](AllKinds& o) { o.At("Sequence").Create<fixture::Square>("AbsClsMnd").Set("Side", "1"); },
        [](AllKinds& o) { o.At("Sequence").At("AbsClsMnd").SetName("AbsClsMnd"); },
        [](AllKinds& o) { dynamic_cast<INillable&>(o.At("Memo", 1)).SetNil(false); },
        [](AllKinds& o) { As<Ci4Col>(o.At("Sequence").Collection("PrimCol")).Remove(2); },
        [](AllKinds& o) { As<Ci4Col>(o.At("Sequence").Collection("PrimCol")).AddAt(0, 3); },
        [](AllKinds& o) { As<CXmlEnumCollection>(o.At("Sequence").Collection("EnumCol")).Remove(0); },
        [](AllKinds& o) { o.Collection("Choice").Remove(0); },
        [](AllKinds& o) { o.At("Tree").At("Branch", 0).Set("name", "x"); },
        [](AllKinds& o) { o.At("Tree").At("Next").At("Branch", 0).Set("name", "x"); },
        [](AllKinds& o) { As<CAttributeCol>(o.At("Tree").Collection("others")).Set("code", "urn:o", "2"); },
        [](AllKinds& o) { As<CElementCol>(o.Collection("Rest"))[0]->SetValue("x"); },
        [](AllKinds& o) { As<CElementCol>(o.Collection("Rest"))[0]->SetAttribute("own", "urn:o", "x"); },
        [](AllKinds& o) { As<CElementCol>(o.Collection("Rest"))[0]->GetElements()->back()->SetName("x"); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        const auto changed = Clone(*object);
        changes[i](*changed);
        EXPECT_FALSE(*changed == *object);
        EXPECT_FALSE(*object == *changed);
        EXPECT_TRUE(*copy == *object);
        changed->CopyFrom(*object);
        fixture::Check(*changed);
    }
}

TEST(ObjectCopyTest, EveryKindOfValue) {
    for (const fixture::ScalarText& scalar : fixture::kScalars) {
        SCOPED_TRACE(scalar.name);
        const std::string name = scalar.name;
        const CSmartPtr<fixture::Values> values(new fixture::Values());
        values->Set(name, scalar.text).Set("a" + name, scalar.text);
        if (scalar.type != ItemType_char) values->AddValues(name + "List", {scalar.text});
        const auto copy = Clone(*values);
        EXPECT_EQ(copy->Dump(), values->Dump());
        EXPECT_TRUE(*copy == *values);
        (*copy)["a" + name].Clear();
        EXPECT_FALSE(*copy == *values);
        if (scalar.type == ItemType_char) continue;
        copy->CopyFrom(*values);
        copy->Collection(name + "List").Clear();
        EXPECT_FALSE(*copy == *values);
    }
}

TEST(ObjectCopyTest, WhatMakesNoDifference) {
    const CSmartPtr<Node> a(new Node());
    const CSmartPtr<Node> b(new Node());
    a->Collection("Item");  // made, but empty
    (*a)["Number"].SetR8(std::numeric_limits<double>::quiet_NaN());
    (*b)["Number"].SetR8(std::numeric_limits<double>::quiet_NaN());
    b->SetName("Other");
    EXPECT_TRUE(*a == *b);
    a->Create("Next");
    EXPECT_FALSE(*a == *b);
    b->Create("Next").SetName("");
    EXPECT_FALSE(*a == *b) << "would be written under another name";
    const OtherNode other;
    EXPECT_FALSE(*a == static_cast<const Node&>(other));

    CElement first;
    CElement second;
    first.FromXml("<p:a xmlns:p='urn:a' x='1' y='2'/>");
    second.FromXml("<a y='2' xmlns='urn:a' x='1'/>");
    EXPECT_TRUE(first == second);
    second.SetAttribute("x", nullptr, "2");
    EXPECT_FALSE(first == second);
}

TEST(ObjectCopyTest, IntoObjectsThatArePartsOfOthers) {
    const CSmartPtr<Node> root(new Node());
    root->Create("Next").Set("name", "child").Create("Next").Set("name", "grandchild");
    const CSmartPtr<Node> sibling(new Node());
    sibling->Set("name", "sibling");
    sibling->AddRef();
    root->At("Next").CopyFrom(*sibling);
    EXPECT_EQ(root->Dump(), "Node{Next=Next/Node{name=string:sibling}}") << "the name is the member's";
    EXPECT_EQ(sibling->Release(), 1);

    root->At("Next").Create("Next").Set("name", "grandchild");
    root->CopyFrom(root->At("Next"));
    EXPECT_EQ(root->Dump(), "Node{name=string:sibling Next=Next/Node{name=string:grandchild}}");
    root->CopyFrom(*root);
    EXPECT_EQ(root->Dump(), "Node{name=string:sibling Next=Next/Node{name=string:grandchild}}");

    // A new order has a date that the setter refuses, and no customer.
    const CSmartPtr<Orders::COrderType> order(new Orders::COrderType());
    order->SetNote("note");
    const auto copy = Clone(*order);
    EXPECT_EQ(copy->GetNote(), "note");
    EXPECT_TRUE(*copy == *order);
}

TEST(ObjectCopyTest, ListenersSeeWholeItems) {
    struct Listener final : IEventSink {
        void OnEvent(CXmlObjectBase*, MsgType type, void* data) override {
            if (type == MsgType_Add)
                events += dynamic_cast<Object&>(*static_cast<CXmlObjectBase*>(data)).Dump() + ";";
        }
        CXmlObjectBase* GetBase() override { return nullptr; }
        std::string events;
    } listener;
    fixture::TypedList<Node> source("Item", "", 0, -1);
    source.AddNew().Set("name", "1").Add("Item").Set("name", "2");
    source.AddNew().Set("name", "3");
    fixture::TypedList<Node> target("Other", "", 0, 5);
    target.AddEventListener(&listener);
    target.CopyFrom(source);
    EXPECT_EQ(listener.events,
              "Item/Node{name=string:1 Item=[Item/Node{name=string:2}]};Item/Node{name=string:3};");
    EXPECT_EQ(target.GetMaxOccurs(), 5);
    EXPECT_TRUE(target == source);

    listener.events.clear();
    const auto copy = Clone(target);
    copy->AddNew();
    EXPECT_EQ(listener.events, "") << "a clone has no listeners";
    EXPECT_EQ(copy->AddRef(), 2);
    copy->Release();
    EXPECT_NE(copy->front(), target.front());
    EXPECT_FALSE(*copy == target);
}

TEST(ObjectCopyTest, ValuesThatOnlyTheirTextLetIn) {
    const CSmartPtr<Ci4Col> values(new Ci4Col("v", "", 0, -1, "0[0-9]"));
    CElement run("run", "");
    run.AddElement("v", "", "07");
    CXmlDocument document;
    document.LoadXml(run.ToXml());
    values->FromXmlElement(document.GetDocumentElement());
    ASSERT_EQ(values->size(), 1U);
    EXPECT_THROW(values->Add(7), CKvException);
    EXPECT_TRUE(*Clone(*values) == *values);
}

TEST(ObjectCopyTest, WhatCanNotBeCopied) {
    const CSmartPtr<Node> node(new Node());
    const OtherNode other;
    EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { node->CopyFrom(other); }),
              "Only objects of the same class can be copied into one another.");
    node->Hold("Next", new OtherNode());
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { Clone(*node); }),
              "The member [Next] holds an object of a class that it does not make.");
    node->Hold("Next", new Node());
    fixture::TypedList<Node>& items = As<fixture::TypedList<Node>>(node->Collection("Item"));
    items.Add(new OtherNode());
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { Clone(*node); }),
              "The member [Item] holds an object of a class that it does not make.");
    items.Clear();

    node->Hold("Next", node.Get());
    const CSmartPtr<Node> twin(new Node());
    twin->Hold("Next", twin.Get());
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { Clone(*node); }),
              "An object that contains itself can not be copied.");
    EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] { node->Equals(*twin); }),
              "An object that contains itself can not be compared.");
    (*node)["Next"].Clear();
    (*twin)["Next"].Clear();
}

TEST(ObjectCopyTest, DeepAndWideObjects) {
    constexpr int kMany = 20000;
    const CSmartPtr<Node> chain(new Node());
    CElement element("e");
    Node* last = chain.Get();
    CSmartPtr<CElement> lastElement;
    for (int i = 0; i < kMany; ++i) {
        last = dynamic_cast<Node*>(&last->Create("Next"));
        lastElement = lastElement == nullptr ? element.AddElement("e") : lastElement->AddElement("e");
    }
    As<fixture::TypedList<Node>>(chain->Collection("Item")).AddNew().Hold("Next", last);  // a part of both
    const auto copy = Clone(*chain);
    EXPECT_TRUE(*copy == *chain);
    last->Set("name", "last");
    EXPECT_FALSE(*copy == *chain);
    const auto elementCopy = Clone(element);
    EXPECT_TRUE(*elementCopy == element);
    lastElement->SetValue("last");
    EXPECT_FALSE(*elementCopy == element);
}

TEST(ObjectCopyTest, ElementsMove) {
    const auto make = [](const char* value) {
        CElement element("made");
        element.AddElement("child", nullptr, value);
        return element;
    };
    CElement element = make("1");
    EXPECT_EQ(element.ToXml(false, false), "<made><child>1</child></made>");
    const CElementCol* const children = element.FindElements();
    CElement other(std::move(element));
    EXPECT_EQ(other.FindElements(), children) << "not copied";
    EXPECT_EQ(element.FindElements(), nullptr);
    other = make("2");
    EXPECT_EQ(other.ToXml(false, false), "<made><child>2</child></made>");
    EXPECT_EQ(other.AddRef(), 1);
}

}  // namespace
}  // namespace KvXmlLib16
