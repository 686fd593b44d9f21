#include "kvxml/base/exceptions.h"

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <type_traits>

namespace KvXmlLib16 {
namespace {

static_assert(std::is_base_of_v<std::exception, CKvException>);
static_assert(std::is_base_of_v<CKvValidationException, CKvInvalidValueException>);
static_assert(std::is_base_of_v<CKvValidationException, CKvInvalidNamespaceException>);

TEST(Exceptions, PathIsAppendedToTheMessageUnlessEmpty) {
    const CKvException plain("broken");
    EXPECT_EQ(plain.GetMessage(), "broken");
    EXPECT_EQ(plain.GetPath(), "");

    EXPECT_EQ(CKvException("broken", "").GetMessage(), "broken");
    const CKvException located("broken", "/gpx/trk[1]");
    EXPECT_EQ(located.GetMessage(), "broken\nPath: /gpx/trk[1]");
    EXPECT_EQ(located.GetPath(), "/gpx/trk[1]");
    EXPECT_EQ(located.GetInnerException(), nullptr);

    const CKvValidationException withInner("outer", "/a", plain);
    EXPECT_EQ(withInner.GetMessage(), "outer\nPath: /a");
    EXPECT_EQ(withInner.GetFullMessage(), "outer\nPath: /a\nbroken");
}

TEST(Exceptions, CopiesOwnTheirInnerChain) {
    auto source = std::make_unique<CKvException>(
        "outer", "/a", CKvInvalidParamException("middle", CKvOverFlowException("innermost")));
    const CKvException copy(*source);
    EXPECT_NE(copy.GetInnerException(), source->GetInnerException());
    source.reset();
    EXPECT_EQ(copy.GetPath(), "/a");
    EXPECT_EQ(copy.GetFullMessage(), "outer\nPath: /a\nmiddle\ninnermost");
    const CKvException* middle = copy.GetInnerException();
    EXPECT_NE(dynamic_cast<const CKvInvalidParamException*>(middle), nullptr);
    EXPECT_NE(dynamic_cast<const CKvOverFlowException*>(middle->GetInnerException()), nullptr);
}

TEST(Exceptions, AssignmentKeepsThePathOfTheTarget) {
    const CKvException source("new", "/source", CKvException("cause"));
    CKvException target("old", "/target", CKvException("former cause"));
    target = source;
    EXPECT_EQ(target.GetFullMessage(), "new\nPath: /source\ncause");
    EXPECT_EQ(target.GetPath(), "/target");
    EXPECT_NE(target.GetInnerException(), source.GetInnerException());

    target = CKvException("moved", "/moved");
    CKvException& self = target;
    target = self;
    EXPECT_EQ(target.GetFullMessage(), "moved\nPath: /moved");
    EXPECT_EQ(target.GetPath(), "/target");

    CKvInvalidNamespaceException derived("old", "/derived");
    derived = CKvInvalidNamespaceException("new", "/other");
    EXPECT_EQ(derived.GetMessage(), "new\nPath: /other");
    EXPECT_EQ(derived.GetPath(), "/derived");
}

TEST(Exceptions, WhatIsTheFullMessage) {
    const auto what = [](const std::exception& e) { return e.what(); };
    CKvException plain("plain", "/a");
    EXPECT_EQ(what(plain), std::string("plain\nPath: /a"));
    CKvException outer("outer", plain);
    const char* const first = what(outer);
    EXPECT_EQ(first, std::string("outer\nplain\nPath: /a"));
    EXPECT_EQ(what(outer), first) << "made once";

    const CKvException copy(outer);
    EXPECT_NE(what(copy), first);
    const CKvException moved(std::move(outer));
    EXPECT_EQ(what(moved), std::string("outer\nplain\nPath: /a"));
    plain = moved;
    EXPECT_EQ(what(plain), std::string("outer\nplain\nPath: /a"));
    plain = CKvException("new", CKvException("cause"));
    EXPECT_EQ(what(plain), std::string("new\ncause")) << "left from before the assignment";
    try {
        throw CKvInvalidParamException("thrown", copy);
    } catch (const std::exception& e) {
        EXPECT_EQ(e.what(), std::string("thrown\nouter\nplain\nPath: /a"));
    }
}

template <class T>
class ConvertedException : public testing::Test {};

using Subclasses =
    testing::Types<CKvValidationException, CKvInvalidNamespaceException, CKvInvalidValueException,
                   CKvInvalidStateException, CKvInvalidParamException, CKvOverFlowException>;
TYPED_TEST_SUITE(ConvertedException, Subclasses);

TYPED_TEST(ConvertedException, TakesOverEverythingButTheType) {
    const CKvException source("message", "/path", CKvOverFlowException("cause"));
    const TypeParam converted(source);
    EXPECT_EQ(converted.GetMessage(), "message\nPath: /path");
    EXPECT_EQ(converted.GetPath(), "/path");
    EXPECT_NE(dynamic_cast<const CKvOverFlowException*>(converted.GetInnerException()), nullptr);
    EXPECT_NE(converted.GetInnerException(), source.GetInnerException());

    // As an inner exception it keeps its own type, through a copy as well.
    const CKvException wrapping("outer", static_cast<const CKvException&>(converted));
    const CKvException copy = wrapping;
    EXPECT_NE(dynamic_cast<const TypeParam*>(copy.GetInnerException()), nullptr);

    EXPECT_EQ(TypeParam().GetFullMessage(), "");
}

}  // namespace
}  // namespace KvXmlLib16
