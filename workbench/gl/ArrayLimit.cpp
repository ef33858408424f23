// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ArrayLimit.h"

#include "workbench/report/Failure.h"

#include "host/core/VCreatorBase.h"

#include <array>

namespace workbench {
namespace {

/// The greatest value whose arrays have at most MostElements elements, for each parameter that makes arrays.
struct GreatestValue {
    std::string_view key, parameter;
    int greatest;
};

constexpr int MostElements = 2048;

constexpr std::array<GreatestValue, 3> GreatestValues = {{
    {"Display/Blurred", "width", MostElements}, // one tap per whole unit of width
    {"Display/PixelContours", "width", 22},     // a square of (2 width + 1)² neighbours
    {"Display/ProximityHDR", "width", 22},      // the same square
}};

/// From here on a real number is no whole one any more, and modules fall back to their shortest array.
constexpr double BeyondWhole = 2147483648.0;

} // namespace

std::optional<std::string> exceededArrayLimit(std::string_view key, std::string_view parameter,
                                              const krod::VValueBase& value) {
    for (const GreatestValue& limit : GreatestValues) {
        if (limit.key != key || limit.parameter != parameter) continue;
        if (const auto* whole = dynamic_cast<const krod::TypedValue<int>*>(&value))
            if (whole->value() > limit.greatest)
                return "at most " + krod::VValueTrait<int>::Text(limit.greatest);
        if (const auto* real = dynamic_cast<const krod::TypedValue<double>*>(&value))
            if (real->value() >= limit.greatest + 1 && real->value() < BeyondWhole)
                return "less than " + krod::VValueTrait<double>::Text(limit.greatest + 1);
    }
    return std::nullopt;
}

std::string tooLongArrays(std::string_view parameter) {
    return "parameter \"" + std::string(parameter) + "\" would make arrays of more than " +
           std::to_string(MostElements) + " elements";
}

void requireShortArrays(const krod::VObject& module, const krod::VValuePool& pool) {
    const auto creator = module.creator();
    if (!creator) return;
    const std::string key = creator->keyname();
    for (const auto& [name, level, parameter] : module.slots().inputs()) {
        const auto value = parameter->getLocalValue(pool).value;
        if (!value) continue;
        if (const auto right = exceededArrayLimit(key, name, *value))
            throw Failure(Fault::Usage, {key, tooLongArrays(name), *right, value->text(), "", {}});
    }
}

} // namespace workbench
