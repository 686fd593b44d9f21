#include "kvxml/objects/xml_collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kvxml/kvxml.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_model.h"

namespace KvXmlLib16 {
namespace {

const fixture::Model& NodeModel() {
    static const fixture::Model& model = fixture::Model::New("Node").Attribute("name", ItemType_string);
    return model;
}
using Node = fixture::Typed<NodeModel>;

CSmartPtr<Node> Named(const std::string& name) {
    const CSmartPtr<Node> node(new Node());
    node->Set("name", name);
    return node;
}
std::string NameOf(Node& node) {
    return node["name"].IsValid() ? node["name"].ToString("") : "?";
}

/// Opens the operations that typed collections wrap.
class Collection final : public CXmlTypedCollection<Node> {
public:
    Collection(int minOccurs, int maxOccurs) : CXmlTypedCollection("Item", "urn:i", minOccurs, maxOccurs) {}
    Collection(const Collection&) = default;
    Collection& operator=(const Collection&) = default;
    using CXmlCollection::AppendItem;
    using CXmlCollection::GetNodeForItem;
    using CXmlCollection::RemoveNode;

    /// The names of the items, one letter each; checked from both ends.
    std::string Text() const {
        std::string text;
        for (Node* item : *this)
            text += NameOf(*item);
        std::string backwards;
        for (int i = GetCount() - 1; i >= 0; --i)
            backwards += NameOf(*Item(i));
        EXPECT_EQ(std::string(backwards.rbegin(), backwards.rend()), text);
        return text;
    }
};

void Fill(Collection& collection, const std::string& names) {
    for (const char name : names)
        collection.Add(Named(std::string(1, name)));
}

/// Writes events down, and does what a test wants at each.
class Listener final : public IEventSink {
public:
    void OnEvent(CXmlObjectBase* source, MsgType type, void* data) override {
        std::string text = std::to_string(type);
        if (type == MsgType_Add || type == MsgType_AddComplete) {
            text += NameOf(*static_cast<Node*>(static_cast<CXmlObjectBase*>(data)));
        } else if (data != nullptr) {
            text += std::to_string(*static_cast<const std::int32_t*>(data));
        }
        events += (events.empty() ? "" : " ") + text + ":" +
                  std::to_string(static_cast<CXmlCollectionBase*>(source)->GetCount());
        if (action) action(type);
    }
    CXmlObjectBase* GetBase() override { return nullptr; }

    std::string events;  // type, item or index, count at that moment
    std::function<void(MsgType)> action;
};

TEST(XmlCollectionTest, PlacesOfItems) {
    Collection c(0, -1);
    Fill(c, "bd");
    const auto b = c.Item(0);
    const auto d = c.Item(1);
    c.Prepend(Named("a"));
    c.AddAfter(b.Get(), Named("c"));
    c.AddAfter(d.Get(), Named("e"));
    c.AddAfter(nullptr, Named("A"));
    c.AddBefore(d.Get(), Named("D"));
    c.AddBefore(c.Item(0).Get(), Named("_"));
    c.AddAt(0, Named("0"));
    c.AddAt(c.GetCount(), Named("z"));
    c.AddAt(3, Named("3"));
    EXPECT_EQ(c.Text(), "0_A3abcDdez");
    EXPECT_EQ(c.GetNodeForItem(d.Get())->item.Get(), d.Get());
    c.RemoveNode(c.GetNodeForItem(b.Get()));
    c.Remove(0);
    c.Remove(c.GetCount() - 1);
    c.Remove(2);
    EXPECT_EQ(c.Text(), "_AacDde");
    EXPECT_EQ(NameOf(*b), "b");

    Collection copy(c);
    Collection assigned(1, 1);
    Fill(assigned, "xy");
    assigned = c;
    c.Clear();
    EXPECT_EQ(c.Text(), "");
    EXPECT_EQ(copy.Text(), "_AacDde");
    EXPECT_EQ(assigned.Text(), "_AacDde");
    EXPECT_EQ(assigned.GetMaxOccurs(), -1);
    Fill(c, "again");
    EXPECT_EQ(c.Text(), "again");
}

TEST(XmlCollectionTest, BadPlaces) {
    const std::string missing = "The object was not found in the collection";
    for (const char* names : {"", "abc"}) {
        Collection c(0, -1);
        Fill(c, names);
        const int count = c.GetCount();
        const auto stranger = Named("s");
        for (const int index : {-1, count + 1})
            EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { c.AddAt(index, stranger); }),
                      "Index out of range");
        for (const int index : {-1, count}) {
            const std::string range =
                "Index " + std::to_string(index) + " is out of range, use 0 - " + std::to_string(count - 1);
            EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { c.Remove(index); }), range);
            EXPECT_EQ(ErrorOf([&] { c.Item(index); }), range);
        }
        EXPECT_EQ(ErrorOf<CKvInvalidParamException>([&] { c.AddAfter(stranger.Get(), Named("x")); }),
                  missing);
        EXPECT_EQ(ErrorOf([&] { c.AddBefore(nullptr, Named("x")); }), missing);
        EXPECT_EQ(ErrorOf([&] { c.GetNodeForItem(stranger.Get()); }), missing);
        EXPECT_EQ(ErrorOf([&] { c.Add(nullptr); }), "An item of a collection may not be NULL");
        EXPECT_EQ(c.Text(), names);
    }
}

TEST(XmlCollectionTest, Counts) {
    CSerializationContext ignoring;
    ignoring.SetIgnoreInvalidCollectionCounts(true);
    Collection c(2, 3);
    const std::string errors[] = {"The Minimum number of [Item] elements allowed in this collection is 2",
                                  "(no error)", "(no error)",
                                  "The Maximum number of [Item] elements allowed in this collection is 3"};
    for (const std::string& error : errors) {
        Fill(c, "x");
        EXPECT_EQ(ErrorOf<CKvValidationException>([&] { c.ValidateCount({}); }), error);
        EXPECT_EQ(c.IsValidCount({}), error == "(no error)");
        c.ValidateCount(ignoring);
        EXPECT_TRUE(c.IsValidCount(ignoring));
    }
    EXPECT_EQ(c.GetNamespace(), "");
    EXPECT_EQ(
        ErrorOf([&] { c.GetTargetNamespace(); }),
        "CXmlCollectionBase::GetTargetNamespace Should not be used from within a Collection (program logic "
        "error)");
}

TEST(XmlCollectionTest, StandardContainerOperations) {
    CSmartPtr<Collection> c(new Collection(0, -1));
    static_assert(std::is_same_v<Collection::value_type, Node*>);
    EXPECT_TRUE(c->empty());
    EXPECT_EQ(ErrorOf([&] { c->front(); }), "Index 0 is out of range, use 0 - -1");
    EXPECT_EQ(ErrorOf([&] { c->back(); }), "Index 0 is out of range, use 0 - -1");
    c->push_back(Named("a"));
    const std::vector<CSmartPtr<Node>> more = {Named("b"), Named("c")};
    std::copy(more.begin(), more.end(), std::back_inserter(*c));
    EXPECT_EQ(c->size(), 3U);
    EXPECT_EQ(NameOf(*c->front()) + NameOf(*c->back()) + NameOf(*(*c)[1]), "acb");
    EXPECT_EQ(c[2], c->back()) << "of the collection that a smart pointer holds";
    EXPECT_EQ(c->front()->Name(), "Item");
    EXPECT_EQ(ErrorOf([&] { c[3]; }), "Index 3 is out of range, use 0 - 2");
    EXPECT_EQ(ErrorOf([&] { c[std::size_t{1} << 32]; }), "Index 2147483647 is out of range, use 0 - 2");
    EXPECT_EQ(std::distance(c->cbegin(), c->cend()), 3);

    // The collections of untyped content check what they are given, however that is.
    CElementCol own("", "", 0, -1, "##targetNamespace", "urn:t");
    EXPECT_NE(ErrorOf([&] { own.push_back(new CElement("e", "urn:o")); }), "(no error)");
    CAttributeCol attributes("##targetNamespace", "urn:t");
    EXPECT_NE(ErrorOf([&] { attributes.push_back(new CAttribute("a", "urn:o", "")); }), "(no error)");
}

TEST(XmlCollectionTest, Moving) {
    using Nodes = CXmlTypedCollection<Node>;
    Listener listener;
    Nodes source("Item", "urn:i", 0, -1);
    const auto item = Named("a");
    source.Add(item);
    source.AddEventListener(&listener);
    Nodes moved(std::move(source));
    EXPECT_EQ(moved.front(), item.Get());
    EXPECT_EQ(item->AddRef(), 3) << "not shared, but taken";
    item->Release();
    EXPECT_TRUE(source.empty());
    EXPECT_EQ(listener.events, "");
    moved.Add(Named("b"));
    EXPECT_EQ(listener.events, "1b:1 2b:2 0:2");
    listener.events.clear();
    source.Add(Named("c"));
    EXPECT_EQ(listener.events, "");
    EXPECT_EQ(source.front()->Name(), "Item");

    moved = std::move(source);
    EXPECT_EQ(moved.size(), 1U);
    EXPECT_EQ(NameOf(*moved.front()), "c");
    EXPECT_EQ(item->AddRef(), 2) << "what was there is let go";
    item->Release();
    Nodes& self = moved;
    moved = std::move(self);
    EXPECT_EQ(moved.size(), 1U);
    // References stay with the object that they are to.
    const CSmartPtr<Nodes> shared(new Nodes("Item", "urn:i", 0, -1));
    const Nodes unshared(std::move(*shared));
    EXPECT_EQ(unshared.AddRef(), 1);
}

TEST(XmlCollectionTest, ItemsAreSharedAndNamed) {
    Collection c(0, -1);
    const auto item = Named("a");
    c.Add(item);
    EXPECT_EQ(item->AddRef(), 3);
    item->Release();
    EXPECT_EQ(item->Name(), "Item");
    c.Add(item);  // twice the same
    EXPECT_EQ(c.Text(), "aa");
    c.Clear();
    EXPECT_EQ(item->AddRef(), 2);
    item->Release();
    EXPECT_EQ(c.CreateNew()->Name(), "Item");
}

TEST(XmlCollectionTest, Events) {
    Collection c(0, -1);
    Listener first;
    Listener second;
    c.AddEventListener(&first);
    Fill(c, "ac");
    c.AddAt(1, Named("b"));
    EXPECT_EQ(first.events, "1a:0 2a:1 0:1 1c:1 2c:2 0:2 1b:2 2b:3 0:3");
    first.events.clear();
    c.AddEventListener(&second);
    std::string order;
    first.action = [&](auto) { order += "1"; };
    second.action = [&](auto) { order += "2"; };
    c.Remove(1);
    EXPECT_EQ(first.events, "31:3 41:2 0:2");
    EXPECT_EQ(second.events, first.events);
    EXPECT_EQ(order, "121212");
    first.events.clear();
    c.Clear();
    EXPECT_EQ(first.events, "30:2 40:1 0:1 30:1 40:0 0:0");

    // Registered twice, removed once.
    c.RemoveEventListener(&second);
    c.RemoveEventListener(&second);
    c.AddEventListener(&first);
    first.events.clear();
    c.CreateNew();
    c.RemoveEventListener(&first);
    EXPECT_EQ(first.events, "1?:0 1?:0 2?:1 2?:1 0:1 0:1");
    c.RemoveEventListener(&first);
    first.events.clear();
    Fill(c, "x");
    EXPECT_EQ(first.events, "");
}

TEST(XmlCollectionTest, ListenersThatThrow) {
    Collection c(0, -1);
    Fill(c, "abc");
    Listener listener;
    c.AddEventListener(&listener);
    const auto refuse = [&](IEventSink::MsgType refused) {
        listener.action = [refused](IEventSink::MsgType type) {
            if (type == refused) throw CKvException("refused");
        };
    };
    refuse(IEventSink::MsgType_Add);
    EXPECT_EQ(ErrorOf([&] { c.Add(Named("x")); }), "refused");
    EXPECT_EQ(ErrorOf([&] { c.AddAt(1, Named("x")); }), "refused");
    refuse(IEventSink::MsgType_Remove);
    EXPECT_EQ(ErrorOf([&] { c.Remove(1); }), "refused");
    EXPECT_EQ(ErrorOf([&] { c.Clear(); }), "refused");
    EXPECT_EQ(c.Text(), "abc");
    EXPECT_EQ(c.GetCount(), 3);
    // Refused afterwards, it is done.
    refuse(IEventSink::MsgType_RemoveComplete);
    EXPECT_EQ(ErrorOf([&] { c.Remove(1); }), "refused");
    EXPECT_EQ(c.Text(), "ac");
    refuse(IEventSink::MsgType_AddComplete);
    EXPECT_EQ(ErrorOf([&] { c.AddAt(1, Named("x")); }), "refused");
    EXPECT_EQ(c.Text(), "axc");
}

TEST(XmlCollectionTest, ListenersThatChangeTheCollection) {
    struct Case {
        const char* what;
        IEventSink::MsgType at;
        std::function<void(Collection&)> reaction;
        std::function<void(Collection&)> action;
        const char* result;
    };
    const auto clear = [](Collection& c) { c.Clear(); };
    const auto removeSecond = [](Collection& c) { c.Remove(1); };
    const auto addY = [](Collection& c) { c.Add(Named("y")); };
    const auto insert = [](Collection& c) { c.AddAt(1, Named("x")); };
    const Case cases[] = {
        {"clear while appending", IEventSink::MsgType_Add, clear, [](Collection& c) { c.Add(Named("x")); },
         "x"},
        {"clear while inserting", IEventSink::MsgType_Add, clear, insert, "x"},
        {"the place is removed", IEventSink::MsgType_Add, removeSecond, insert, "acx"},
        {"the place is replaced", IEventSink::MsgType_Add,
         [](Collection& c) {
             c.Remove(1);
             c.AddAt(1, Named("B"));
         },
         insert, "aBcx"},
        {"another is removed", IEventSink::MsgType_Add, [](Collection& c) { c.Remove(0); }, insert, "xbc"},
        {"add while inserting", IEventSink::MsgType_Add, addY, insert, "axbcy"},
        {"the same is removed", IEventSink::MsgType_Remove, removeSecond, removeSecond, "ac"},
        {"another is removed while removing", IEventSink::MsgType_Remove, [](Collection& c) { c.Remove(0); },
         removeSecond, "c"},
        {"clear while removing", IEventSink::MsgType_Remove, clear, removeSecond, ""},
        {"replaced while removing", IEventSink::MsgType_Remove,
         [](Collection& c) {
             c.Remove(1);
             c.AddAt(1, Named("B"));
         },
         removeSecond, "aBc"},
        {"add while clearing", IEventSink::MsgType_RemoveComplete, addY, clear, "y"},
        {"remove after adding", IEventSink::MsgType_AddComplete, clear, insert, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Collection collection(0, -1);
        Fill(collection, "abc");
        Listener listener;
        bool reacted = false;
        listener.action = [&](IEventSink::MsgType type) {
            if (type != c.at || reacted) return;
            reacted = true;
            c.reaction(collection);
        };
        collection.AddEventListener(&listener);
        c.action(collection);
        EXPECT_EQ(collection.Text(), c.result);
        EXPECT_EQ(static_cast<std::size_t>(collection.GetCount()), std::string(c.result).size());
    }
    // A listener that puts back what is removed does not keep Clear from ending, nor one that takes itself
    // off.
    Collection collection(0, -1);
    Fill(collection, "abc");
    Listener listener;
    listener.action = [&](IEventSink::MsgType type) {
        if (type == IEventSink::MsgType_RemoveComplete) collection.Add(Named("y"));
    };
    collection.AddEventListener(&listener);
    collection.Clear();
    EXPECT_EQ(collection.Text(), "yyy");
    Listener leaving;
    leaving.action = [&](IEventSink::MsgType) { collection.RemoveEventListener(&leaving); };
    collection.AddEventListener(&leaving);
    Fill(collection, "z");
    EXPECT_EQ(leaving.events, "1z:3");
}

TEST(XmlCollectionTest, ListenersThatRemoveListeners) {
    struct Case {
        const char* removed;  // by the first, at the add event: some of the three
        const char* told;     // the add event to
    };
    for (const Case& c : {Case{"1", "123"}, Case{"2", "13"}, Case{"12", "13"}, Case{"123", "1"}}) {
        SCOPED_TRACE(c.removed);
        Collection collection(0, -1);
        Listener listeners[3];
        for (Listener& listener : listeners)
            collection.AddEventListener(&listener);
        Listener late;
        listeners[0].action = [&](IEventSink::MsgType type) {
            if (type != IEventSink::MsgType_Add) return;
            for (const char* one = c.removed; *one != '\0'; ++one)
                collection.RemoveEventListener(&listeners[*one - '1']);
            collection.AddEventListener(&late);
        };
        collection.Add(Named("x"));
        std::string told;
        for (int i = 0; i < 3; ++i)
            if (listeners[i].events.find("1x:0") == 0) told += static_cast<char>('1' + i);
        EXPECT_EQ(told, c.told);
        EXPECT_EQ(late.events, "1x:0 2x:1 0:1");
        // Whoever was removed is told nothing more.
        EXPECT_EQ(listeners[1].events == "1x:0 2x:1 0:1",
                  std::string(c.removed).find('2') == std::string::npos);
    }
}

TEST(XmlCollectionTest, ManyItems) {
    constexpr int kCount = 100000;
    Collection c(0, -1);
    for (int i = 0; i < kCount; ++i)
        c.CreateNew()->SetName(std::to_string(i).c_str());
    // From either end and in both directions every step is one step.
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(c.Item(i)->Name(), std::to_string(i));
    for (int i = kCount - 1; i >= 0; --i)
        ASSERT_EQ(c.Item(i)->Name(), std::to_string(i));
    int index = 0;
    for (auto it = c.begin(); it != c.end(); it++)
        ASSERT_EQ(it->Name(), std::to_string(index++));
    for (int i = kCount / 2; i < kCount / 2 + 1000; ++i)
        c.Remove(kCount / 2);
    EXPECT_EQ(c.Item(kCount / 2)->Name(), std::to_string(kCount / 2 + 1000));
    while (c.GetCount() > 0)
        c.Remove(0);
    EXPECT_EQ(c.begin(), c.end());
}

TEST(XmlCollectionTest, ReadsAndWritesTheRunOfItsItems) {
    CXmlDocument document;
    document.LoadXml("<a xmlns='urn:i'><Item name='1'/><Item name='2'/><Other/><Item name='3'/></a>");
    Collection c(0, -1);
    c.FromXmlElement(document.GetDocumentElement());
    EXPECT_EQ(c.Text(), "12");
    c.FromXmlElement(document.GetDocumentElement());  // what is there stays
    EXPECT_EQ(c.Text(), "1212");
    const auto inNoNamespace = []() -> CSmartPtr<CXmlCollectionBase> {
        return new fixture::TypedList<Node>("Item", "", 0, -1);
    };
    const CSmartPtr<fixture::Object> holder(
        new fixture::Object(fixture::Model::New("Holder").AnyCol("Item", inNoNamespace)));
    holder->Add("Item").Set("name", "1");
    EXPECT_EQ(holder->ToXml(false, false),
              "<AA:Holder xmlns:AA=\"urn:fixture\"><Item name=\"1\"/></AA:Holder>");
    CAttributeCol attributes("##other", "urn:t");
    EXPECT_EQ(ErrorOf([&] { attributes.Add("n", "urn:t", "v"); }), "Invalid Namespace [urn:t].");
    EXPECT_EQ(ErrorOf([&] { attributes.Add("", "urn:x", "v"); }), "Attribute Name must have a value");
    attributes.Add("n", "urn:x", "v");
    EXPECT_EQ(attributes.Find("n", "urn:x")->GetValue(), "v");
    EXPECT_EQ(attributes.Find("n", "urn:y"), nullptr);
    EXPECT_EQ(attributes.GetCount(), 1);
}

}  // namespace
}  // namespace KvXmlLib16
