// SPDX-License-Identifier: Apache-2.0
// The texts of the tile modules on a driver, as they stand and with the shims of the workbench.
#include "GlFixture.h"

#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/report/Failure.h"

#include <optional>
#include <vector>

namespace workbench::test {
namespace {

using half_float::half;
using krod::RGBAHalf;

/// The reds of the tile that every module gets.
const std::vector<float> Before(4, 0.5F);

/// One updated module after the other, each on a tile of four pixels.
class TileModules : public GlTest {
protected:
    explicit TileModules(const SessionOptions& options = {}) : GlTest(options) {}

    /// The reds of the tile afterwards; `failure` tells why it could not be processed.
    std::vector<float> process(const std::string& key) {
        const auto module = plugin.make(key);
        // Nothing readable: every module has fallbacks that change a grey tile.
        support::ParameterPool values(*module);
        for (const auto& input : module->slots().inputs()) values.makeUnreadable(input.name);
        EXPECT_TRUE(support::update(*module, values));
        const RGBAHalf grey{half(0.5F), half(0.5F), half(0.5F), half(0.5F)};
        const krod::StrongPtr<krod::Chunk<RGBAHalf>> store(
            new krod::Chunk<RGBAHalf>(std::vector<RGBAHalf>(4, grey)));
        krod::ImageTile tile(2, 2, store);
        failure.reset();
        try {
            support::processorOf(*module)->process(krod::VRenderContext(pool), tile);
        } catch (const Failure& thrown) {
            failure = thrown;
        }
        std::vector<float> reds;
        for (std::size_t i = 0; i < store->elements(); ++i) reds.push_back(store->data()[i].r);
        return reds;
    }

    support::LoadedPlugin plugin;
    std::optional<Failure> failure;
};

class StrictTileModules : public TileModules {
protected:
    StrictTileModules() : TileModules({.strictGlsl = true}) {}

    void expectRefused(const std::string& key) {
        EXPECT_EQ(process(key), Before) << "the tile has changed";
        ASSERT_TRUE(failure) << key << " is taken";
        EXPECT_EQ(failure->fault(), Fault::Shader);
        EXPECT_EQ(static_cast<int>(failure->fault()), 6) << "the exit code of plime";
        EXPECT_EQ(failure->diagnostic().who, "* Tile Fragment Shader *");
    }
};

TEST_F(TileModules, Every_text_is_taken_with_the_shims) {
    for (const std::string name :
         {"ColorGammaCorrection", "HDRColoredToneMapping", "HDRToneMapping", "PixelBlur", "TileProgram"}) {
        EXPECT_NE(process("Hollywood/" + name), Before) << name << " leaves the tile";
        EXPECT_FALSE(failure) << name << ": " << failure->what();
    }
    EXPECT_TRUE(warnings.heard.empty()) << warnings.heard.front();
}

TEST_F(StrictTileModules, Texts_of_plain_arithmetic_are_taken_as_they_stand) {
    for (const std::string name : {"ColorGammaCorrection", "HDRColoredToneMapping", "HDRToneMapping"}) {
        EXPECT_NE(process("Hollywood/" + name), Before) << name << " leaves the tile";
        EXPECT_FALSE(failure) << name << ": " << failure->what();
    }
}

TEST_F(StrictTileModules, PixelBlur_L5_integersAndReals_needADialectThatConverts) {
    expectRefused("Hollywood/PixelBlur");
}

TEST_F(StrictTileModules, TileProgram_defaultProgram_needsAPowerOfAVector) {
    expectRefused("Hollywood/TileProgram");
}

} // namespace
} // namespace workbench::test
