// SPDX-License-Identifier: Apache-2.0
// When limits are attached, as the ages of values tell: of displays with the slot, of tile modules after the output.
#include "tests/support/LoadedPlugin.h"

#include <gtest/gtest.h>

namespace {

using namespace krod;

Ageable::Age ageOfLimit(const VObject& object, const std::string& parameter, const std::string& key) {
    const auto limit = support::parameterOf(object, parameter).property(key);
    if (!limit) throw std::runtime_error(parameter + " has no " + key);
    return limit->age();
}

Ageable::Age ageOfValue(const VObject& object, const std::string& parameter) {
    return support::parameterOf(object, parameter).value().age();
}

TEST(Limits, ofADisplay_areAttachedBeforeTheNextSlotIsMade) {
    const support::LoadedPlugin plugin;
    const auto blurred = plugin.make("Display/Blurred");
    EXPECT_LT(ageOfLimit(*blurred, "samples", "max"), ageOfValue(*blurred, "InputVisibility"));
    EXPECT_LT(ageOfValue(*blurred, "width"), ageOfLimit(*blurred, "width", "min"));
    EXPECT_LT(ageOfLimit(*blurred, "width", "min"), ageOfLimit(*blurred, "width", "max"));
    EXPECT_LT(ageOfLimit(*blurred, "width", "max"), ageOfValue(*blurred, "exponent"));
    EXPECT_LT(ageOfLimit(*blurred, "exponent", "max"), ageOfValue(*blurred, "options"));
}

TEST(Limits, ofATileModule_areAttachedAfterItsOutput) {
    const support::LoadedPlugin plugin;
    for (const std::string key : {"Hollywood/ColorGammaCorrection", "Hollywood/HDRColoredToneMapping",
                                  "Hollywood/HDRToneMapping", "Hollywood/PixelBlur"}) {
        const auto module = plugin.make(key);
        const auto output = module->slots().output("ImageProcessor")->value().age();
        for (const auto& input : module->slots().inputs()) {
            EXPECT_LT(input.parameter->value().age(), output) << key << " " << input.name;
            EXPECT_GT(ageOfLimit(*module, input.name, "max"), output) << key << " " << input.name;
            if (!input.parameter->property("min")) continue;
            EXPECT_GT(ageOfLimit(*module, input.name, "min"), output) << key << " " << input.name;
        }
    }
}

} // namespace
