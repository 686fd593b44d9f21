// The class that docs/generated-code.md works through.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

// [example]
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include "kvxml/kvxml.h"

namespace Stations {

using namespace KvXmlLib16;
using namespace KvXmlLib16Data;

/// <station id="7"><name>Harbour</name><level>12</level><level>-3</level></station>, with an id from 1 to
/// 999, an optional name and any number of levels up to 500.
class CStation : public CXmlGeneratedClass {
public:
    CStation() {
        Init();
        SetElementName("station");
    }
    CStation(const CStation&) = delete;
    CStation& operator=(const CStation&) = delete;

    CXmlObjectBase* GetBase() override { return this; }
    std::string GetTargetNamespace() const override { return kNamespace; }
    std::string GetNamespace() const override { return kNamespace; }

    std::int32_t GetId() const { return m_id; }
    void SetId(std::int32_t value) { m_id = value; }

    std::string GetName() const { return m_name.Get(); }
    void SetName(std::string value) { m_name.Set(std::move(value)); }
    bool IsValidName() const { return m_name.IsSet(); }
    void UnsetName() { m_name.Reset(); }

    CSmartPtr<Ci4Col> GetLevel() {
        if (m_level == nullptr)
            m_level = new Ci4Col("level", kNamespace, 0, -1, nullptr, -1, -1, nullptr, "500");
        return m_level;
    }

    static void FreeMetaData() {
        const std::lock_guard<CKVCriticalSection> lock(m_csInit);
        m_hasMetaData.store(false, std::memory_order_relaxed);
        CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
    }

protected:
    void AccessProperty(int propertyIndex, bool read, KvVariant& value) override {
        switch (propertyIndex) {
            case Property_id:
                if (read) {
                    value.SetI4(m_id);
                } else {
                    SetId(value.GetI4());
                }
                break;
            case Property_name:
                if (read) {
                    if (m_name.IsSet()) value.SetStringReference(*m_name);
                } else {
                    SetName(value.TakeString());
                }
                break;
            case Property_level:
                if (!read) {
                    GetLevel();
                } else if (m_level != nullptr) {
                    value.SetXmlCollectionReference(m_level.Get());
                }
                break;
            default:
                break;
        }
    }
    CParentElementInfo* GetClassInfo() const override {
        if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
        return m_classInfo;
    }
    CElementInfo** GetClassElementInfo() const override {
        if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
        return m_elementInfo;
    }
    CAttributeInfo** GetClassAttributeInfo() const override {
        if (!m_hasMetaData.load(std::memory_order_acquire)) BuildMetaData();
        return m_attributeInfo;
    }
    void Init() override {
        m_id = 0;
        m_name.Reset();
        m_level = nullptr;
    }

private:
    enum Property { Property_id, Property_name, Property_level };
    static constexpr const char* kNamespace = "urn:example:stations";

    static void BuildMetaData() {
        const std::lock_guard<CKVCriticalSection> lock(m_csInit);
        if (m_hasMetaData.load(std::memory_order_relaxed)) return;
        const CPrimitiveRestrictions idType(nullptr, -1, -1, "1", "999", nullptr, nullptr, -1, -1, -1,
                                            CWhitespaceUtils::WhitespaceRule_Collapse, nullptr);
        try {
            m_classInfo =
                new CParentElementInfo(XmlElementGroupType_Sequence, XmlElementType_Element, "station",
                                       kNamespace, true, false, -1, ItemType_Unknown, nullptr, false);
            m_attributeInfo = m_attributeRecords;
            m_attributeRecords[0] =
                new CAttributeInfoPrimitive("id", "", Property_id, false, ItemType_i4, nullptr,
                                            CWhitespaceUtils::WhitespaceRule_Collapse, idType, nullptr);
            m_elementInfo = m_elementRecords;
            m_elementRecords[0] = new CElementInfoSeqPrimOpt(
                "name", kNamespace, Property_name, false, ItemType_string, nullptr,
                CWhitespaceUtils::WhitespaceRule_Preserve, CPrimitiveRestrictions(), nullptr);
            m_elementRecords[1] = new CElementInfoSeqPrimCol("level", kNamespace, Property_level);
        } catch (...) {
            CleanMetaData(m_classInfo, m_elementInfo, m_attributeInfo);
            throw;
        }
        m_hasMetaData.store(true, std::memory_order_release);
    }

    inline static std::atomic<bool> m_hasMetaData{false};
    inline static CParentElementInfo* m_classInfo = nullptr;
    inline static CElementInfo** m_elementInfo = nullptr;
    inline static CAttributeInfo** m_attributeInfo = nullptr;
    inline static CElementInfo* m_elementRecords[3] = {};  // one more than records: the null at the end
    inline static CAttributeInfo* m_attributeRecords[2] = {};

    std::int32_t m_id;
    COptionalValue<std::string> m_name;
    CSmartPtr<Ci4Col> m_level;
};

}  // namespace Stations
// [example]

namespace {

using KvXmlLib16::CKvException;
using KvXmlLib16::CSmartPtr;
using Stations::CStation;

std::string ReadAll(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

TEST(GeneratedCodeDoc, ShowsTheClassAsItIsCompiledHere) {
    const std::string root = KVXML_SOURCE_DIR "/";
    const std::string source = ReadAll(root + "tests/examples/generated_code_doc_test.cpp");
    const std::string marker = "// [example]\n";
    const std::size_t begin = source.find(marker) + marker.size();
    const std::string example = source.substr(begin, source.find(marker, begin) - begin);
    ASSERT_FALSE(example.empty());
    EXPECT_NE(ReadAll(root + "docs/generated-code.md").find("```cpp\n" + example + "```\n"),
              std::string::npos)
        << "the code in docs/generated-code.md differs from the compiled class";
}

TEST(GeneratedCodeDoc, ReadsWritesAndChecks) {
    const CSmartPtr<CStation> station(new CStation());
    station->FromXml(
        "<station xmlns='urn:example:stations' id='7'><name>Harbour</name><level>12</level><level>-3</level>"
        "</station>");
    EXPECT_EQ(station->GetId(), 7);
    EXPECT_EQ(station->GetName(), "Harbour");
    EXPECT_EQ(std::vector<int>(station->GetLevel()->begin(), station->GetLevel()->end()),
              (std::vector<int>{12, -3}));
    EXPECT_THROW(station->GetLevel()->Add(501), CKvException);
    const std::string text = station->ToXml();

    const CSmartPtr<CStation> again(new CStation());
    again->FromXml(text.c_str());
    EXPECT_EQ(again->ToXml(), text);

    again->FromXml("<station xmlns='urn:example:stations' id='8'/>");
    EXPECT_FALSE(again->IsValidName()) << "left over from the document before";
    EXPECT_EQ(again->GetLevel()->GetCount(), 0) << "left over from the document before";
    EXPECT_THROW(again->FromXml("<station xmlns='urn:example:stations' id='1000'/>"), CKvException);
    again->SetId(0);
    EXPECT_THROW(again->ToXml(), CKvException);
}

TEST(GeneratedCodeDoc, TablesAreBuiltByWhoComesFirstAndAgainAfterTheyWereFreed) {
    for (int round = 0; round < 20; ++round) {
        CStation::FreeMetaData();
        CStation::FreeMetaData();
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                const CSmartPtr<CStation> station(new CStation());
                station->FromXml("<station xmlns='urn:example:stations' id='1'/>");
                EXPECT_EQ(station->GetId(), 1);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
}

}  // namespace
