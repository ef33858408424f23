// SPDX-License-Identifier: Apache-2.0
// What ships passes.
#include "tests/validate/Validation.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

void expectClean(const Validation& validation) {
    EXPECT_EQ(validation.code, 0) << validation.error;
    ASSERT_TRUE(validation.report.is_object());
    EXPECT_EQ(validation.with({"fail", "crash", "timeout", "skip"}), Names()) << validation.findings();
}

const std::string Expected = EXPECTATIONS "/tovar_plime.expect.json";

} // namespace

TEST(Validate, Plugin_passes_level_5_as_expected) {
    expectClean(validation(TOVAR_PLIME, {"--expect", Expected}));
}

TEST(Validate, Workbench_objects_pass_level_5) { expectClean(validation(WORKBENCH_OBJECTS)); }

TEST(DeepValidate, Plugin_passes_level_9_as_expected) {
    expectClean(validation(TOVAR_PLIME, {"--level", "9", "--expect", Expected}));
}

TEST(DeepValidate, Workbench_objects_pass_level_9) {
    expectClean(validation(WORKBENCH_OBJECTS, {"--level", "9"}));
}

TEST(DeepValidate, Plugin_draws_500_networks_alike_on_two_drivers) {
    expectClean(validation(TOVAR_PLIME, {"--reproduce", "drivers:1", "--expect", Expected}));
}

TEST(DeepValidate, Plugin_survives_a_minute_of_drawn_operations) {
    expectClean(validation(TOVAR_PLIME, {"--reproduce", "soak:1"}, {{"KROD_VALIDATE_SOAK", "60"}}));
}
