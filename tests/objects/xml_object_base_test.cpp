#include "kvxml/objects/xml_object_base.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "kvxml/kvxml.h"
#include "kvxml/types/internal/compression.h"
#include "tests/support/error_of.h"
#include "tests/support/fixture_all_kinds.h"

namespace KvXmlLib16 {
namespace {

/// Opens the operations that generated code has.
class Probe : public CXmlObjectBase {
public:
    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return std::string(); }
    std::string GetNamespace() const override { return std::string(); }

    using CXmlObjectBase::Choice_CollectionChanged;
    using CXmlObjectBase::Choice_Read_Collection;
    using CXmlObjectBase::Choice_SelectElement;
    using CXmlObjectBase::Choice_SetElementValid;
    using CXmlObjectBase::DoesElementNameMatch;
    using CXmlObjectBase::FireOnCollectionAddCompleteEvent;
    using CXmlObjectBase::FireOnCollectionAddEvent;
    using CXmlObjectBase::FireOnCollectionChangeEvent;
    using CXmlObjectBase::FireOnCollectionRemoveCompleteEvent;
    using CXmlObjectBase::FireOnCollectionRemoveEvent;
    using CXmlObjectBase::GetElementName;
    using CXmlObjectBase::IsNamespaceValid;
    using CXmlObjectBase::SetElementName;
    using CXmlObjectBase::TestNamespace;
    using CXmlObjectBase::Throw_IfElementNameDiffers;
    using CXmlObjectBase::Throw_IfPropertyIsNull;

    CSmartPtr<Probe> next;
    std::function<void(CXmlObjectBase*, MsgType, void*)> onEvent;
    int* destroyed = nullptr;

    Probe() = default;
    Probe(const Probe&) = default;
    ~Probe() override {
        if (destroyed != nullptr) ++*destroyed;
    }

protected:
    void OnEvent(CXmlObjectBase* source, MsgType type, void* data) override { onEvent(source, type, data); }
    void ToXml_Int(CXmlWriter*, bool, const char*, const CSerializationContext&, bool) const override {}
    CXmlElement* FromXml_Int(CXmlElement*, CXmlElement* cursor, const CSerializationContext&, bool) override {
        return cursor;
    }
};

CSmartPtr<Probe> Chain(int length) {
    CSmartPtr<Probe> head;
    for (int i = 0; i < length; ++i) {
        CSmartPtr<Probe> link(new Probe());
        link->next = std::move(head);
        head = std::move(link);
    }
    return head;
}

const fixture::Model& MeasureModel() {
    static const fixture::Model& model =
        fixture::Model::New("Measure").Text(ItemType_r8).Attribute("unit", ItemType_string);
    return model;
}
using Measure = fixture::Typed<MeasureModel>;

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class ObjectFileTest : public testing::Test {
protected:
    void SetUp() override {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        m_path = std::filesystem::path(testing::TempDir()) / (std::string("kvxml_") + test->name() + ".xml");
        std::filesystem::remove(m_path);
        fixture::Fill(*m_object);
    }
    void TearDown() override {
        std::filesystem::remove(m_path);
        AsyncFromXmlFile(false);
        AsyncToXmlFile(false);
    }
    void ReadAndCheck() {
        const auto read = fixture::Make<fixture::AllKinds>();
        read->FromXmlFile(m_path.c_str());
        fixture::Check(*read);
    }
    const char* Path() const { return m_path.c_str(); }

    std::filesystem::path m_path;
    CSmartPtr<fixture::AllKinds> m_object = fixture::Make<fixture::AllKinds>();
};

// --- life --------------------------------------------------------------------------------------------------

TEST(XmlObjectBaseTest, SmartPointersCountAndReleaseLast) {
    int destroyed = 0;
    CSmartPtr<Probe> first(new Probe());
    first->destroyed = &destroyed;
    const CSmartPtr<Probe>& alias = first;
    first = alias;
    first = first.Get();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(first->AddRef(), 2);
    EXPECT_EQ(first->Release(), 1);

    // The new object is kept alive by the old one only.
    first->next = new Probe();
    first->next->destroyed = &destroyed;
    first = first->next;
    EXPECT_EQ(destroyed, 1);

    CSmartPtr<CXmlObjectBase> base(first);
    CSmartPtr<CXmlObjectBase> moved(std::move(base));
    EXPECT_EQ(base.Get(), nullptr);
    EXPECT_EQ(first->AddRef(), 3);
    first->Release();
    CXmlObjectBase* const detached = moved.Detach();
    first = nullptr;
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(detached->Release(), 0);
    EXPECT_EQ(destroyed, 2);
    first.Reset(new Probe());
    first.Reset();
    EXPECT_EQ(first.Get(), nullptr);
}

TEST(XmlObjectBaseTest, CountsAcrossThreads) {
    int destroyed = 0;
    CSmartPtr<Probe> shared(new Probe());
    shared->destroyed = &destroyed;
    shared->SetElementName("shared");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([own = shared] {
            for (int i = 0; i < 20000; ++i) {
                const CSmartPtr<Probe> again(own);
                Probe named;
                named.SetElementName(i % 2 == 0 ? "even" : "odd");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared->AddRef(), 2);
    shared->Release();
    shared = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(XmlObjectBaseTest, LongChainsAreDestroyed) {
    int destroyed = 0;
    CSmartPtr<Probe> head = Chain(1000000);
    Probe* tail = head.Get();
    while (tail->next != nullptr)
        tail = tail->next.Get();
    tail->destroyed = &destroyed;
    head = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(XmlObjectBaseTest, StaticObjectsAreDestroyedAtExit) {
    const auto leave = [] {
        static CSmartPtr<Probe> kept;
        kept = Chain(1000);  // the thread's own state exists before the end
        kept = Chain(1000);
        struct NameAtExit {
            ~NameAtExit() { Probe().SetElementName("late"); }
        };
        static NameAtExit late;
        std::exit(0);
    };
    EXPECT_EXIT(leave(), testing::ExitedWithCode(0), "");
}

// --- helpers of generated code -----------------------------------------------------------------------------

TEST(XmlObjectBaseTest, ChoiceHelpers) {
    const std::string kNone = "(no error)";
    const auto taken = [](const std::string& name) {
        return "The Property " + name +
               " is already set. Only one element within this class bay be set at a time";
    };
    enum Helper { Valid, Select, Count };
    struct Row {
        const char* what;
        Helper helper;
        int argument;  // is valid; is an object, or null; number of items
        std::string current;
        std::string after;
        std::string error;
    };
    const Row rows[] = {
        {"the member that is chosen is valid", Valid, 1, "a", "a", kNone},
        {"it is valid beside another one", Valid, 1, "b", "b", taken("b")},
        {"it is valid and none is chosen", Valid, 1, "", "", taken("")},
        {"it is valid no more", Valid, 0, "a", "", kNone},
        {"another one is valid no more", Valid, 0, "b", "", kNone},
        {"the first object", Select, 1, "", "a", kNone},
        {"an object beside another member", Select, 1, "b", "b", taken("[b]")},
        {"null at first", Select, 0, "", "a", kNone},
        {"null instead of an object", Select, 0, "a", "", kNone},
        {"null beside another member", Select, 0, "b", "b", kNone},
        {"the first items", Count, 2, "", "a", kNone},
        {"fewer than none at first", Count, -1, "", "", kNone},
        {"items beside another member", Count, 1, "b", "b", taken("[b]")},
        {"more items", Count, 1, "a", "a", kNone},
        {"no items any more", Count, 0, "a", "", kNone},
        {"no items beside another member", Count, 0, "b", "b", kNone},
        {"fewer than none beside another member", Count, -1, "b", "b", taken("[b]")},
    };
    Probe probe;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        std::string current = row.current;
        EXPECT_EQ(ErrorOf<CKvInvalidStateException>([&] {
                      if (row.helper == Valid) probe.Choice_SetElementValid(row.argument != 0, "a", current);
                      if (row.helper == Select)
                          probe.Choice_SelectElement("a", row.argument != 0 ? &probe : nullptr, current);
                      if (row.helper == Count) probe.Choice_CollectionChanged("a", row.argument, current);
                  }),
                  row.error);
        EXPECT_EQ(current, row.after);
    }
}

TEST(XmlObjectBaseTest, ChoiceReadsACollectionOnce) {
    CXmlDocument document;
    document.LoadXml("<a xmlns='urn:i'><x/><x/><y/><x/></a>");
    CXmlElement* const parent = document.GetDocumentElement();
    CXmlElement* next = parent->GetFirstElement();
    const CSerializationContext context;
    Probe probe;
    const CSmartPtr<CXmlTypedCollection<fixture::Empty>> collection(
        new CXmlTypedCollection<fixture::Empty>("x", "urn:i", 0, 2));
    std::int32_t count = 0;
    probe.Choice_Read_Collection(collection.Get(), parent, next, count, context);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(collection->GetCount(), 2);
    EXPECT_EQ(next->GetLocalName(), "y");
    CXmlElement* const other = next;
    next = parent->GetFirstElement();
    probe.Choice_Read_Collection(collection.Get(), parent, next, count, context);
    EXPECT_EQ(collection->GetCount(), 2);  // it was read already
    count = 0;
    next = other;
    probe.Choice_Read_Collection(collection.Get(), parent, next, count, context);
    EXPECT_EQ(count, 0);  // nothing of it there
    EXPECT_EQ(next, other);
    next = other->GetNextSiblingElement();
    EXPECT_EQ(ErrorOf([&] { probe.Choice_Read_Collection(collection.Get(), parent, next, count, context); }),
              "The Maximum number of [x] elements allowed in this collection is 2");

    CSerializationContext ignoring;
    ignoring.SetIgnoreNamespaces(true);
    EXPECT_TRUE(probe.DoesElementNameMatch(context, other, "y", "urn:i"));
    EXPECT_FALSE(probe.DoesElementNameMatch(context, other, "Y", "urn:i"));
    EXPECT_FALSE(probe.DoesElementNameMatch(context, other, "y", nullptr));
    EXPECT_TRUE(probe.DoesElementNameMatch(ignoring, other, "y", nullptr));
    EXPECT_FALSE(probe.DoesElementNameMatch(ignoring, other, nullptr, "urn:i"));
    EXPECT_FALSE(probe.DoesElementNameMatch(context, nullptr, "y", "urn:i"));
}

TEST(XmlObjectBaseTest, PropertyChecks) {
    Probe probe;
    Probe value;
    value.SetElementName("is");
    probe.Throw_IfPropertyIsNull(&value, "P");
    EXPECT_THROW(probe.Throw_IfPropertyIsNull(nullptr, "P"), CKvInvalidParamException);
    EXPECT_EQ(ErrorOf([&] { probe.Throw_IfPropertyIsNull(nullptr, "P"); }),
              "The Property [P] is mandatory, it may node be NULL");
    probe.Throw_IfElementNameDiffers(nullptr, "x");
    probe.Throw_IfElementNameDiffers(&value, "is");
    EXPECT_THROW(probe.Throw_IfElementNameDiffers(&value, "Is"), CKvInvalidParamException);
    EXPECT_EQ(ErrorOf([&] { probe.Throw_IfElementNameDiffers(&value, "must"); }),
              "This property requires an element with the name must the element being set has the element "
              "name is");
}

TEST(XmlObjectBaseTest, NamespaceLists) {
    struct Row {
        const char* ns;
        const char* allowed;
        bool valid;
    };
    const Row rows[] = {
        {"urn:x", "##any", true},
        {"urn:t", "##other", false},
        {"", "##other", true},
        {"", "##local", true},
        {"urn:t", "##local", false},
        {"urn:t", "##targetNamespace", true},
        {"urn:x", "##targetNamespace", false},
        {"urn:x", "urn:x", true},
        {"", "urn:x", true},
        {"", "urn:x urn:y", true},
        {"urn:x", "urn:x urn:y", false},
        {"urn:y", "urn:x urn:y", false},
        {"urn:t", "##targetNamespace ##other", true},
        {"urn:t", "##other ##targetNamespace", false},
        {"", "##targetNamespace ##other", true},
        {"urn:x", "##any urn:y", true},
        {"urn:x", "", false},
        {"", "", true},
    };
    const Probe probe;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string("[") + row.ns + "] in [" + row.allowed + "]");
        EXPECT_EQ(probe.IsNamespaceValid(row.ns, row.allowed, "urn:t"), row.valid);
        EXPECT_EQ(ErrorOf([&] { probe.TestNamespace(row.ns, row.allowed, "urn:t"); }),
                  row.valid
                      ? std::string("(no error)")
                      : std::string("Invalid namespace [") + row.ns + "]. The namespace must be one of [" +
                            row.allowed + "] where the target namespace is [urn:t].");
    }
    EXPECT_THROW(probe.TestNamespace("urn:x", "##local", nullptr), CKvInvalidNamespaceException);
}

// --- entry points ------------------------------------------------------------------------------------------

TEST(XmlObjectBaseTest, EmptyAndBrokenInput) {
    struct Row {
        const char* what;
        std::function<void(CXmlObjectBase&)> read;
        const char* error;
    };
    const CBinaryData none;
    const unsigned char byte = ' ';
    const Row rows[] = {
        {"text", [](auto& o) { o.FromXml(""); }, "XML String is empty!"},
        {"null text", [](auto& o) { o.FromXml(static_cast<const char*>(nullptr)); }, "XML String is empty!"},
        {"wide text", [](auto& o) { o.FromXml(L""); }, "no element found at line 1"},
        {"bytes", [&](auto& o) { o.FromXmlStream(&byte, 0); }, "XML Stream is empty!"},
        {"buffer", [&](auto& o) { o.FromXmlStream(none); }, "XML Stream is empty!"},
        {"not closed", [](auto& o) { o.FromXml("<a>\n<b>"); }, "no element found at line 2"},
        {"no file", [](auto& o) { o.FromXmlFile("/nowhere/x.xml"); },
         "Failed to open the file [/nowhere/x.xml] Error [0x00000002]"},
        {"null file", [](auto& o) { o.FromXmlFile(nullptr); },
         "Failed to open the file [] Error [0x00000002]"},
        {"null element", [](auto& o) { o.FromXmlElement(static_cast<const CXmlElement*>(nullptr)); },
         "The element to read from may not be NULL"},
    };
    const auto object = fixture::Make<Measure>();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(ErrorOf([&] { row.read(*object); }), row.error);
    }
    object->FromXml("<Measure xmlns='urn:fixture'>1</Measure>");
    EXPECT_EQ(object->Dump(), "Measure{text=r8:1}");
}

TEST(XmlObjectBaseTest, WideText) {
    const auto measure = fixture::Make<Measure>();
    measure->FromXml(L"<Measure xmlns='urn:fixture' unit='\u00E4\u20AC\U0001F41F'>1</Measure>");
    EXPECT_EQ(measure->Dump(), "Measure{text=r8:1 unit=string:\xC3\xA4\xE2\x82\xAC\xF0\x9F\x90\x9F}");
}

TEST_F(ObjectFileTest, EveryWayInAndOut) {
    const auto& context = CSerializationContext::GetDefaultContext();
    for (const XmlEncoding encoding : {XmlEncoding_UTF8, XmlEncoding_UTF16, XmlEncoding_UTF16NoDeclaration}) {
        for (const CompressionType compression :
             {CompressionType_None, CompressionType_GZip, CompressionType_ZLib}) {
            SCOPED_TRACE(std::to_string(encoding) + "/" + std::to_string(compression));
            const CBinaryData data =
                m_object->ToXmlStream(true, true, encoding, EOLType_LF, context, compression);
            const auto read = fixture::Make<fixture::AllKinds>();
            read->FromXmlStream(data);
            fixture::Check(*read);
            for (const bool async : {false, true}) {
                if (compression == CompressionType_ZLib) continue;  // not for files
                AsyncToXmlFile(async);
                AsyncFromXmlFile(async && compression == CompressionType_None);
                m_object->ToXmlFile(Path(), true, true, encoding, EOLType_LF, context, compression);
                ReadAndCheck();
                const std::string bytes = ReadFile(m_path);
                if (compression == CompressionType_GZip) {
                    EXPECT_EQ(bytes.substr(0, 2), "\x1F\x8B");
                } else if (encoding == XmlEncoding_UTF8) {
                    EXPECT_EQ(bytes, m_object->ToXml());
                } else {
                    EXPECT_EQ(bytes.substr(0, 4), std::string("\xFF\xFE<\0", 4));
                    EXPECT_EQ(bytes.find(std::string("e\0n\0c\0o\0d\0i\0n\0g\0", 16)) != std::string::npos,
                              encoding == XmlEncoding_UTF16);
                }
            }
        }
    }
    EXPECT_EQ(ErrorOf([&] { m_object->ToXmlStream(true, true, XmlEncoding_None); }),
              "Unknown Encoding, select UTF-8 (contact our support team)");
}

TEST_F(ObjectFileTest, ZlibFilesAreRefusedBeforeTheFileIsTouched) {
    const auto& context = CSerializationContext::GetDefaultContext();
    constexpr auto kZLib = CompressionType_ZLib;
    const std::function<void()> writes[] = {
        [&] { m_object->ToXmlFile(Path(), true, true, XmlEncoding_UTF8, EOLType_LF, context, kZLib); },
        [&] { m_object->ToJsonFile(Path(), true, XmlEncoding_UTF8, EOLType_LF, context, kZLib); },
        [&] { m_object->ToFastInfosetFile(Path(), FInfoDecl_None, context, kZLib); },
    };
    for (const bool async : {false, true}) {
        AsyncToXmlFile(async);
        for (const auto& write : writes)
            EXPECT_EQ(ErrorOf(write), "ZLIB Compression only available for To Stream methods.");
    }
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

/// Number of files and the like that the process has open.
std::ptrdiff_t OpenHandles() {
    const std::filesystem::directory_iterator handles("/proc/self/fd");
    return std::distance(begin(handles), end(handles));
}

TEST_F(ObjectFileTest, FilesThatCanNotBeWritten) {
    struct Way {
        bool isAsync;
        XmlEncoding encoding;
        CompressionType compression;
    };
    const Way ways[] = {
        {false, XmlEncoding_UTF8, CompressionType_None}, {false, XmlEncoding_UTF8, CompressionType_GZip},
        {true, XmlEncoding_UTF16, CompressionType_GZip}, {true, XmlEncoding_UTF8, CompressionType_None},
        {true, XmlEncoding_UTF16, CompressionType_None},
    };
    struct Target {
        std::string name;
        const char* number;
    };
    const Target targets[] = {
        {"/nowhere/x.xml", "00000002"}, {testing::TempDir(), "00000015"}, {"/dev/full", "0000001C"}};
    const auto measure = fixture::Make<Measure>();
    // Compressed, a text must not grow.
    measure->Set("text", "1").Set("unit", std::string(500, 'x'));
    for (const Way& way : ways) {
        AsyncToXmlFile(way.isAsync);
        const auto write = [&](const char* name) {
            measure->ToXmlFile(name, true, true, way.encoding, EOLType_LF,
                               CSerializationContext::GetDefaultContext(), way.compression);
        };
        for (const Target& target : targets) {
            SCOPED_TRACE(target.name + " " + std::to_string(&way - ways));
            // Only what is written while the document is produced fails behind the opening.
            const bool isLate = target.name == "/dev/full" && way.isAsync &&
                                way.encoding == XmlEncoding_UTF8 && way.compression == CompressionType_None;
            const std::string error =
                isLate ? "Failed to write data to the file. Error [0x"
                       : "Failed to write data to the file [" + target.name + "] error [0x";
            const std::ptrdiff_t handles = OpenHandles();
            EXPECT_EQ(ErrorOf([&] { write(target.name.c_str()); }), error + target.number + "]");
            EXPECT_EQ(OpenHandles(), handles);
        }
        write(Path());
        EXPECT_EQ(ErrorOf([&] { measure->FromXmlFile(Path()); }), "(no error)");
    }
}

TEST_F(ObjectFileTest, HostileInputLeavesTheObjectUsable) {
    const std::string head = "<Measure xmlns='urn:fixture'>";
    std::string laughs = "<!DOCTYPE Measure [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 12; ++i) {
        laughs += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            laughs += "&e" + std::to_string(i - 1) + ';';
        laughs += "'>";
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "\n<Measure xmlns='urn:fixture'>";
    const auto gzip = [](const std::string& text) {
        CBinaryData data{std::string_view(text)};
        internal::Compress(data, CompressionType_GZip);
        return std::string(reinterpret_cast<const char*>(data.GetData()), data.GetLength());
    };
    const std::string whole = gzip(head + std::string(1000, ' ') + "1</Measure>");
    std::string damaged = whole;
    damaged[damaged.size() - 8] ^= 1;  // the checksum
    const std::string noXml = "not well-formed (invalid token) at line 1";
    struct Row {
        const char* what;
        std::string bytes;
        std::string error;
    };
    const Row rows[] = {
        {"cut off", head + "\n1", "no element found at line 2"},
        {"entities", laughs + "]>" + head + "&e11;</Measure>", "limit on input amplification factor"},
        {"deep", deep, "elements are nested deeper than the limit of 1000 at line 1002"},
        {"bomb", gzip(head + std::string(30000000, ' ') + "1</Measure>"),
         "The compressed data inflates to more than the limit of 1000000 bytes."},
        {"damaged gzip", damaged, noXml},
        {"cut gzip", whole.substr(0, whole.size() - 1), noXml},
        {"gzip of a fragment", gzip(head + std::string(1000, '\n')), "no element found at line 1001"},
    };
    CSerializationContext context;
    context.SetMaxInflatedSize(1000000);
    const auto object = fixture::Make<Measure>();
    for (const Row& row : rows) {
        const bool isCompressed = row.bytes[0] == '\x1F';
        std::ofstream(m_path, std::ios::binary) << row.bytes;
        const CBinaryData data{std::string_view(row.bytes)};
        struct Way {
            const char* name;
            std::function<void()> read;
            bool inflates;
        };
        const Way ways[] = {
            {"text", [&] { object->FromXml(row.bytes.c_str(), context); }, false},
            {"wide",
             [&] { object->FromXml(std::wstring(row.bytes.begin(), row.bytes.end()).c_str(), context); },
             false},
            {"buffer", [&] { object->FromXmlStream(data, context); }, true},
            {"file", [&] { object->FromXmlFile(Path(), context); }, true},
            {"chunks",
             [&] {
                 AsyncFromXmlFile(true);
                 object->FromXmlFile(Path(), context);
             },
             false},
        };
        for (const Way& way : ways) {
            SCOPED_TRACE(std::string(row.what) + " as " + way.name);
            const std::ptrdiff_t handles = OpenHandles();
            const std::string error = isCompressed && !way.inflates ? noXml : row.error;
            EXPECT_EQ(ErrorOf(way.read).substr(0, error.size()), error);
            AsyncFromXmlFile(false);
            EXPECT_EQ(OpenHandles(), handles);
            object->FromXml((head + "1</Measure>").c_str(), context);
            EXPECT_EQ(object->Dump(), "Measure{text=r8:1}");
        }
    }
}

TEST(XmlObjectBaseTest, DocumentElement) {
    CSerializationContext strict;
    CSerializationContext ignoring;
    ignoring.SetIgnoreNamespaces(true);
    CSerializationContext plain;
    plain.SetSchemaType(SchemaType_NoNamespaces);
    struct Row {
        const char* what;
        const char* xml;
        const char* ownName;
        const CSerializationContext& context;
        const char* error;
    };
    const char* const kNone = "(no error)";
    const Row rows[] = {
        {"right", "<Empty xmlns='urn:fixture'/>", "Empty", strict, kNone},
        {"case", "<f:empty xmlns:f='urn:fixture'/>", "Empty", strict,
         "Invalid Element [empty] found.\nPath: /f:empty"},
        {"wrong namespace", "<Empty xmlns='urn:other'/>", "Empty", strict,
         "Invalid Element [Empty] found.\nPath: /Empty"},
        {"own name", "<Mine xmlns='urn:fixture'/>", "Mine", strict, kNone},
        {"class name beside own", "<Empty xmlns='urn:fixture'/>", "Mine", strict, kNone},
        {"own name, wrong namespace", "<Mine/>", "Mine", strict,
         "Invalid Element [Mine] found.\nPath: /Mine"},
        {"namespaces ignored", "<Empty xmlns='urn:other'/>", "Empty", ignoring, kNone},
        {"namespaces ignored, wrong name", "<Other/>", "Empty", ignoring,
         "Invalid Element [Other] found.\nPath: /Other"},
        {"no namespaces in schema", "<Empty/>", "Empty", plain, kNone},
        {"prefix is part of the name", "<f:Empty/>", "Empty", plain,
         "Invalid Element [f:Empty] found.\nPath: /f:Empty"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const auto object = fixture::Make<fixture::Empty>();
        object->SetName(row.ownName);
        EXPECT_EQ(ErrorOf([&] { object->FromXml(row.xml, row.context); }), row.error);
    }
    EXPECT_THROW(fixture::Make<fixture::Empty>()->FromXml("<Other/>"), CKvValidationException);
    // The name of an element that is handed over is the caller's business, and is taken over.
    CXmlDocument document;
    document.LoadXml("<x:Box xmlns:x='urn:other'><Empty/></x:Box>");
    const auto empty = fixture::Make<fixture::Empty>();
    empty->FromXmlElement(document.GetDocumentElement()->GetFirstElement());
    empty->FromXmlElement(document.GetDocumentElement(), fixture::Ignoring("e"));
    EXPECT_EQ(empty->Name(), "Box");
}

}  // namespace
}  // namespace KvXmlLib16
