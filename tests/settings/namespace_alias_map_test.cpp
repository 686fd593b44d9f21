#include "kvxml/settings/namespace_alias_map.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/error_of.h"

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

    EXPECT_EQ(map.GetNamespaceAt(3), "urn:\xC3\xA9");
    EXPECT_EQ(map.GetNamespaceAt(-5), "urn:Z");
    EXPECT_EQ(map.GetNamespaceAt(4), "");
}

TEST(NamespaceAliasMap, AskingForAnUnknownUriEntersIt) {
    CNamespaceAliasMap map;
    map.Add("a", "urn:a");
    EXPECT_EQ(map.GetAliasFromNamespace("urn:a"), "a");
    EXPECT_FALSE(map.DoesNamespaceExist("urn:unknown"));
    EXPECT_EQ(map.GetAliasFromNamespace("urn:unknown"), "");
    EXPECT_EQ(map.GetNamespaceCount(), 2);
    EXPECT_TRUE(map.DoesNamespaceExist("urn:unknown"));
    CNamespaceAliasMap copy(map);
    copy.Add("b", "urn:a");
    EXPECT_EQ(map.GetAliasFromNamespace("urn:a"), "a");
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
    EXPECT_EQ(ErrorOf([&] { map.GetNamespaceFromAlias("P"); }), "Namespace alias [P] not found");
    EXPECT_THROW(map.GetNamespaceFromAlias(nullptr), CKvException);
}

TEST(NamespaceAliasMap, XmlIsKnownWithoutAnEntry) {
    const char* const uri = "http://www.w3.org/XML/1998/namespace";
    CNamespaceAliasMap map;
    EXPECT_TRUE(map.DoesAliasExist("xml"));
    EXPECT_TRUE(map.DoesNamespaceExist(uri));
    map.Add("x", uri);
    map.Add("xml", "urn:x");
    EXPECT_EQ(map.GetAliasFromNamespace(uri), "xml");
    EXPECT_EQ(map.GetNamespaceFromAlias("xml"), uri);
    map.Clear();
    EXPECT_EQ(map.GetAliasFromNamespace(uri), "xml");
    EXPECT_EQ(map.GetNamespaceCount(), 0);
}

}  // namespace
}  // namespace KvXmlLib16
