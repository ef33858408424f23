// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/Module.h"

#include <cmath>
#include <limits>

namespace workbench::validate {
namespace {

using krod::FlagList;
using krod::makeValue;
using krod::TypedValue;
using Pair = krod::FixedArray<double, 2>;

constexpr double Reach = 4; // around an initial value without limits

template <class T>
const T* valueOf(const krod::VValueBase& value) {
    const auto* typed = dynamic_cast<const TypedValue<T>*>(&value);
    return typed ? &typed->value() : nullptr;
}

template <class T>
T limitOf(const krod::VParameter& parameter, const char* key, T otherwise) {
    const Value value = parameter.property(key);
    const T* const limit = value ? valueOf<T>(*value) : nullptr;
    return limit ? *limit : otherwise;
}

/// A value from which the module may pick anything between the limits.
Value drawn(const krod::VParameter& parameter, Trial& trial) {
    const krod::VValueBase& initial = parameter.value();
    if (const int* value = valueOf<int>(initial)) {
        const int least = limitOf(parameter, "min", *value - 4), most = limitOf(parameter, "max", *value + 4);
        if (most < least) return initial.clone(); // the check "parameters" tells
        return makeValue(least + static_cast<int>(trial.draw(static_cast<std::size_t>(most - least + 1))));
    }
    if (const double* value = valueOf<double>(initial))
        return makeValue(trial.drawBetween(limitOf(parameter, "min", *value - Reach),
                                           limitOf(parameter, "max", *value + Reach)));
    if (valueOf<bool>(initial)) return makeValue(trial.draw(2) == 1);
    if (valueOf<Pair>(initial)) { // not as two arguments, whose order is the compiler's
        const double second = trial.drawBetween(0, 1), first = trial.drawBetween(0, 1);
        return makeValue(Pair(first, second));
    }
    if (const FlagList* flags = valueOf<FlagList>(initial)) {
        std::string text;
        for (const FlagList::Flag& flag : flags->flags())
            text += (text.empty() ? "" : " ") + std::string(trial.draw(2) == 1 ? "+" : "-") + flag.name;
        return makeValue(FlagList(text, ' '));
    }
    return initial.clone();
}

/// The whole number next to a limit, or the last one of its side where there is no limit. A host refuses what
/// lies far beyond a limit: the sizes of arrays in shader texts follow from such numbers.
int beyond(const krod::VParameter& parameter, const char* key, int step) {
    using Whole = std::numeric_limits<int>;
    if (parameter.property(key)) return limitOf(parameter, key, 0) + step;
    return step > 0 ? Whole::max() : Whole::min();
}

} // namespace

std::vector<Value> usualValues(const krod::VParameter& parameter, Trial& trial) {
    std::vector<Value> values = {parameter.value().clone()};
    for (const char* limit : {"min", "max"})
        if (const Value value = parameter.property(limit)) values.push_back(value);
    if (!valueOf<std::string>(parameter.value()))
        for (int i = 0; i < 3; ++i) values.push_back(drawn(parameter, trial));
    return values;
}

std::vector<Value> hostileValues(const krod::VParameter& parameter) {
    using Reals = std::numeric_limits<double>;
    const std::string longText(1U << 20U, 'a');
    const std::vector<double> reals = {
        Reals::quiet_NaN(), Reals::infinity(), -Reals::infinity(), Reals::denorm_min(), -0.0, 1e300, -1e300};
    const krod::VValueBase& initial = parameter.value();
    std::vector<Value> values;
    if (valueOf<int>(initial))
        for (const int value : {beyond(parameter, "min", -1), 0, beyond(parameter, "max", 1)})
            values.push_back(makeValue(value));
    if (valueOf<double>(initial))
        for (const double value : reals) values.push_back(makeValue(value));
    if (valueOf<Pair>(initial))
        for (const double value : reals) values.push_back(makeValue(Pair(value, -value)));
    if (valueOf<FlagList>(initial))
        for (const std::string& text : {std::string(), std::string("   "), std::string("+"), std::string("-"),
                                        std::string("+1 -1 +1"), std::string("+nobody"), '+' + longText})
            values.push_back(makeValue(FlagList(text, ' ')));
    if (valueOf<std::string>(initial))
        for (const std::string& text : {std::string(), std::string("%n%s%s"), std::string("\xff\xfe\0x", 4),
                                        std::string("#version 999\n"), longText})
            values.push_back(makeValue(text));
    return values;
}

std::string settingText(const krod::VParameter& parameter, const krod::VValueBase& value) {
    std::string text = value.text();
    if (text.size() > 40) text = text.substr(0, 40) + "…";
    return parameter.name() + " = \"" + text + '"';
}

} // namespace workbench::validate
