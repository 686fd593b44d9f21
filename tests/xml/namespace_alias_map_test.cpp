#include "kvxml/xml/namespace_alias_map.h"

#include <gtest/gtest.h>

#include <string>

#include "kvxml/runtime/exceptions.h"

namespace KvXmlLib16 {
namespace {

std::string Listing(const CNamespaceAliasMap& map) {
    std::string result;
    for (const auto& [uri, alias] : map)
        result += alias + "=" + uri + ";";
    return result;
}

TEST(NamespaceAliasMap, EntriesAreKeptByUriInByteOrder) {
    CNamespaceAliasMap map;
    map.Add("b", "urn:x");
    map.Add("u", "urn:\xC3\xA9");
    map.Add("a", "urn:a");
    map.Add("c", "urn:Z");
    map.Add("other", "urn:x");
    EXPECT_EQ(Listing(map), "c=urn:Z;a=urn:a;other=urn:x;u=urn:\xC3\xA9;");
    EXPECT_EQ(map.GetNamespaceCount(), 4);

    const char* const uris[] = {"urn:Z", "urn:a", "urn:x", "urn:\xC3\xA9"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(map.GetNamespaceAt(i), uris[i]);
    EXPECT_EQ(map.GetNamespaceAt(-5), "urn:Z");
    EXPECT_EQ(map.GetNamespaceAt(4), "");
    EXPECT_EQ(CNamespaceAliasMap().GetNamespaceAt(0), "");
}

TEST(NamespaceAliasMap, AskingForAnUnknownUriEntersIt) {
    CNamespaceAliasMap map;
    map.Add("a", "urn:a");
    EXPECT_EQ(map.GetAliasFromNamespace("urn:a"), "a");
    EXPECT_FALSE(map.DoesNamespaceExist("urn:unknown"));
    EXPECT_FALSE(map.DoesAliasExist(""));
    EXPECT_EQ(map.GetAliasFromNamespace("urn:unknown"), "");
    EXPECT_EQ(map.GetNamespaceCount(), 2);
    EXPECT_TRUE(map.DoesNamespaceExist("urn:unknown"));
    EXPECT_TRUE(map.DoesAliasExist(""));
}

TEST(NamespaceAliasMap, AliasesAreFoundExactlyAndInUriOrder) {
    CNamespaceAliasMap map;
    map.Add("p", "urn:2");
    map.Add("p", "urn:1");
    EXPECT_EQ(map.GetNamespaceFromAlias("p"), "urn:1");
    map.RemoveNamespace("urn:1");
    map.RemoveNamespace("urn:absent");
    EXPECT_EQ(map.GetNamespaceFromAlias("p"), "urn:2");
    EXPECT_FALSE(map.DoesAliasExist("P"));
    EXPECT_FALSE(map.DoesAliasExist("pp"));
    try {
        map.GetNamespaceFromAlias("P");
        FAIL();
    } catch (const CKvException& e) {
        EXPECT_EQ(e.GetMessage(), "Namespace alias [P] not found");
    }
    EXPECT_THROW(map.GetNamespaceFromAlias(nullptr), CKvException);
}

TEST(NamespaceAliasMap, CopiesAreIndependent) {
    CNamespaceAliasMap map;
    map.Add("a", "urn:a");
    CNamespaceAliasMap copy(map);
    copy.Add("b", "urn:b");
    CNamespaceAliasMap assigned;
    assigned.Add("c", "urn:c");
    assigned = map;
    map.Add(nullptr, nullptr);
    EXPECT_EQ(Listing(map), "=;a=urn:a;");
    EXPECT_EQ(Listing(copy), "a=urn:a;b=urn:b;");
    EXPECT_EQ(Listing(assigned), "a=urn:a;");
}

}  // namespace
}  // namespace KvXmlLib16
