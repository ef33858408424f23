// SPDX-License-Identifier: Apache-2.0
#include "host/memory/StrongPtr.h"
#include "host/memory/Typename.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <typeindex>

namespace krod {

template <class T, std::size_t N>
class NamedArray {};

class Shade {};

} // namespace krod

namespace notkrod {

class Shade {};

} // namespace notkrod

const std::type_info& typeOfFirstTileShader();
const std::type_info& typeOfSecondTileShader();

using krod::Typename;
using krod::typenameOf;

TEST(Typename, FundamentalTypes_namedAsWritten) {
    EXPECT_EQ(Typename<int>(), "int");
    EXPECT_EQ(Typename<bool>(), "bool");
    EXPECT_EQ(Typename<unsigned int>(), "unsigned int");
    EXPECT_EQ(Typename<unsigned long long>(), "unsigned long long");
}

TEST(Typename, TextString_inAnyPlace_isString) {
    EXPECT_EQ(Typename<std::string>(), "string");
    EXPECT_EQ((Typename<krod::NamedArray<std::string, 3>>()), "NamedArray<string,3>");
}

TEST(Typename, Templates_loseBlanksNamespaceAndSuffixes) {
    EXPECT_EQ((Typename<krod::NamedArray<double, 2>>()), "NamedArray<double,2>");
    EXPECT_EQ(Typename<krod::StrongPtr<krod::StrongPtr<krod::Shade>>>(), "StrongPtr<StrongPtr<Shade>>");
    EXPECT_EQ((Typename<krod::NamedArray<const krod::Shade*, 10>>()), "NamedArray<Shade const*,10>");
}

TEST(Typename, OtherNamespaces_areKept) {
    EXPECT_EQ(Typename<notkrod::Shade>(), "notkrod::Shade");
    EXPECT_EQ(Typename<krod::StrongPtr<notkrod::Shade>>(), "StrongPtr<notkrod::Shade>");
}

TEST(Typename, SameNamedClasses_ofTwoUnits_shareTheNameButNotTheType) {
    const std::type_info& first = typeOfFirstTileShader();
    const std::type_info& second = typeOfSecondTileShader();
    EXPECT_EQ(typenameOf(first), "TileShader");
    EXPECT_EQ(typenameOf(second), "TileShader");
    EXPECT_NE(&first, &second);
#ifndef __clang__ // which does not mark the names of unit-local classes, so that libstdc++ takes both for one
    const std::map<std::type_index, int> byType{{first, 1}, {second, 2}};
    EXPECT_EQ(byType.size(), 2u);
    EXPECT_EQ(byType.at(first), 1);
    EXPECT_EQ(byType.at(second), 2);
#endif
}
