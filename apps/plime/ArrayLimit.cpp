// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/ArrayLimit.h"

#include <array>

namespace workbench {
namespace {

/// The greatest value whose arrays have at most 2,048 elements, for each parameter that makes arrays.
struct Limit {
    std::string_view key, parameter;
    int greatest;
};

constexpr std::array<Limit, 3> Limits = {{
    {"Display/Blurred", "width", 2048},     // one tap per unit of width
    {"Display/PixelContours", "width", 22}, // a square of (2 width + 1)² neighbours
    {"Display/ProximityHDR", "width", 22},  // the same square
}};

} // namespace

std::optional<std::string> exceededArrayLimit(std::string_view key, std::string_view parameter,
                                              const krod::VValueBase& value) {
    for (const Limit& limit : Limits) {
        if (limit.key != key || limit.parameter != parameter) continue;
        if (const auto* whole = dynamic_cast<const krod::TypedValue<int>*>(&value))
            if (whole->value() > limit.greatest) return krod::VValueTrait<int>::Text(limit.greatest);
        if (const auto* real = dynamic_cast<const krod::TypedValue<double>*>(&value))
            if (real->value() > limit.greatest) return krod::VValueTrait<double>::Text(limit.greatest);
    }
    return std::nullopt;
}

} // namespace workbench
