// SPDX-License-Identifier: Apache-2.0
// Parameters of all six value types and texts that are none of their values.
#include "host/core/VParameter.h"

#include "TestModules.h"
#include "host/core/TypedSlotCreator.h"

#include <gtest/gtest.h>

#include <vector>

using namespace krod;
using namespace std::string_literals;

namespace {

/// A type, a value that is taken, its text form, and texts that are refused.
struct Case {
    const std::type_info& type;
    std::string good, form;
    std::vector<std::string> broken;
};

const std::vector<std::string> NoFiniteNumbers = {
    "",     " ",     "x",    "nan", "NaN",      "-nan", "inf", "-inf",  "INF", "1e999", "0,5",
    "1.0f", "0x1p3", "1\0"s, "1 2", "infinity", "--1",  "1e",  "1.2.3", ".",   "１"};

std::vector<Case> cases() {
    std::vector<std::string> noPairs = {"", "1", "1 ", "1 2 3", "1;2", "0,5 0,5", "1 2\0"s};
    for (const std::string& text : NoFiniteNumbers)
        if (text != "1 2" && text != "0,5") noPairs.push_back("1 " + text);
    return {{typeid(int),
             " -7 ",
             "-7",
             {"", "7.0", "1e3", "2147483648", "-2147483649", "nan", "inf", "0x7", "7 8", "7\0"s, "1.234"}},
            {typeid(double), "2", "2.0", NoFiniteNumbers},
            {typeid(bool), "yes", "true", {"", "2", "TRUE", "true false", "nan", "-1", "true\0"s}},
            {typeid(std::string), "a\nb", "a\nb", {"\0"s, "a\0b"s}},
            {typeid(FlagList), "+a -b", "+a -b", {"a", "+", "-", "+a -", "+a b", "+a +a", "-a +a", "+ a"}},
            {typeid(FixedArray<double, 2>), "1, 2", "1.0 2.0", noPairs}};
}

} // namespace

TEST(BrokenText, OfEveryType_isReportedAndLeavesTheValue) {
    for (const Case& each : cases()) {
        const TypedSlotCreator* const creator = TypedSlotCreator::find(each.type);
        ASSERT_NE(creator, nullptr);
        const auto parameter = creator->create("p");
        ASSERT_TRUE(parameter->setValueFromText(each.good)) << parameter->typeName();
        parameter->clearState(VParameter::ValueSet);
        const auto age = parameter->value().age();
        for (const std::string& text : each.broken) {
            const TextResult result = parameter->setValueFromText(text);
            EXPECT_FALSE(result) << parameter->typeName() << " takes \"" << text << '"';
            EXPECT_FALSE(result.expected.empty()) << parameter->typeName() << " does not say what it expects";
            EXPECT_EQ(parameter->value().text(), each.form) << text;
            EXPECT_EQ(parameter->value().age(), age) << text;
            EXPECT_EQ(parameter->state() & VParameter::ValueSet, 0u) << text;
        }
    }
}

TEST(GlobalValue, OfEveryType_isTakenAndTracedInItsTextForm) {
    for (const Case& each : cases()) {
        const auto parameter = TypedSlotCreator::find(each.type)->create("p");
        const auto variable = TypedSlotCreator::find(each.type)->create("variable");
        ASSERT_TRUE(variable->setValueFromText(each.good));
        const TraceRecord record(50);
        EXPECT_TRUE(parameter->setGlobalValue(variable->value()));
        EXPECT_EQ(record.text, "VParameter::setGlobalValue() got variable with " + each.form + '\n');
        EXPECT_EQ(parameter->value().text(), each.form);
        for (const Case& other : cases()) {
            if (other.type == each.type) continue;
            const auto wrong = TypedSlotCreator::find(other.type)->create("wrong");
            EXPECT_FALSE(parameter->setGlobalValue(wrong->value())) << other.form;
        }
        EXPECT_EQ(parameter->value().text(), each.form);
    }
}

TEST(GlobalValue, WithPercentSigns_isTracedAsItIs) {
    const StrongPtr<VParameter> code(new VParameter(makeValue(std::string()), "code", nullptr));
    const TraceRecord record(50);
    EXPECT_TRUE(code->setGlobalValue(*makeValue("%n%s%s%x"s)));
    EXPECT_EQ(record.text, "VParameter::setGlobalValue() got variable with %n%s%s%x\n");
}
