// SPDX-License-Identifier: Apache-2.0
// Many damaged models of each format: each ends in a sound model or in one line, also where the child that
// imports it dies, and this process reads on.
#include "Damage.h"
#include "ModelOutcome.h"
#include "ModelSamples.h"

using namespace workbench;

namespace {

struct Campaign {
    std::string format;
    DamageAmount amount;
};

constexpr DamageAmount Short{5, 5}, Long{150, 150};
constexpr ModelLimits Limits{std::chrono::milliseconds(1500), {std::uint64_t{256} << 20, 0}};

class ModelCampaign : public FilesTest, public testing::WithParamInterface<Campaign> {};

TEST_P(ModelCampaign, Model_thatIsDamaged_endsInAModelOrInOneLine) {
    const std::string& format = GetParam().format;
    const DamageAmount amount = GetParam().amount;
    const auto outcome = [&](const std::string& bytes) {
        return outcomeOfModel(write("damaged." + modelExtension(format), bytes), Limits);
    };
    const std::string good = modelBytes(format);
    ASSERT_EQ(outcome(good), "read");
    constexpr std::size_t Head = 256;
    Outcomes outcomes = outcomesOfDamage(good, Head, amount, outcome);
    const std::string record = recordOf(format, outcomes);
    EXPECT_LT(outcomes["read"], amount.heads + amount.windows) << record;
    EXPECT_EQ(outcome(good), "read") << "after all of them";
}

std::vector<Campaign> campaigns(DamageAmount amount) {
    std::vector<Campaign> all;
    for (const auto& format : modelFormats()) all.push_back({format, amount});
    return all;
}

std::string nameOf(const testing::TestParamInfo<Campaign>& info) { return info.param.format; }

INSTANTIATE_TEST_SUITE_P(Short, ModelCampaign, testing::ValuesIn(campaigns(Short)), nameOf);
INSTANTIATE_TEST_SUITE_P(Deep, ModelCampaign, testing::ValuesIn(campaigns(Long)), nameOf);

} // namespace
