// SPDX-License-Identifier: Apache-2.0
// What the tests of shader texts of tile modules share.
#pragma once

#include "tests/support/Goldens.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "tests/support/StandardOutput.h"

#include "host/gl/GLImageTileProcessor.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace text {

/// The program of a processor whose module has not been updated yet; "TileProgram" has another.
inline constexpr char PassThrough[] =
    "uniform sampler2D frame;\nvoid main (void)\n{\n"
    "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n\tgl_FragColor = Color;\n}\n";

/// A test of one shader module, which lives as long as the test.
class TileText : public testing::Test {
protected:
    /// The module's name without its category, which is the name of its golden folder too.
    explicit TileText(const std::string& name) : name(name), module(plugin.make("Hollywood/" + name)) {}

    /// What the processor in the output hands to the host now.
    std::string code() {
        const auto processor = krod::castStrong<krod::GLImageTileProcessor>(support::processorOf(*module));
        if (!processor) throw std::runtime_error("the output holds no shader processor");
        return processor->shaderCode();
    }
    /// The text after an update, which has to succeed.
    std::string updated(const krod::VValuePool& values = {}) {
        EXPECT_TRUE(support::update(*module, values));
        return code();
    }
    /// Compares with a golden of the module, "defaults.frag".
    testing::AssertionResult matches(const std::string& golden, const std::string& text) {
        return support::Goldens(GOLDEN_FOLDER, ACTUAL_FOLDER).match(name + "/" + golden, text);
    }
    /// The property "min" or "max" of a parameter as text; empty without one.
    std::string limit(const std::string& parameter, const std::string& key) {
        const auto property = support::parameterOf(*module, parameter).property(key);
        return property ? property->text() : "";
    }

    /// Two updates with the same values give the same bytes, in the processor that was there before.
    void expectEqualUpdates(const krod::VValuePool& values) {
        const auto processor = support::processorOf(*module);
        const krod::VParameter& output = *module->slots().output("ImageProcessor");
        const auto age = output.value().age();
        const std::string before = code(), first = updated(values);
        EXPECT_NE(first, before);
        EXPECT_EQ(updated(values), first);
        EXPECT_EQ(support::processorOf(*module), processor);
        EXPECT_EQ(output.value().age(), age);
    }

    /// An update without a processor in the output succeeds without a word, and leaves the old processor.
    void expectSilenceWithoutOutput() {
        const auto processor = krod::castStrong<krod::GLImageTileProcessor>(support::processorOf(*module));
        const std::string before = processor->shaderCode();
        module->slots().clearOutputs();
        const support::Warnings warnings;
        bool succeeded = false;
        EXPECT_EQ(support::outputOf([&] { succeeded = support::update(*module); }), "");
        EXPECT_TRUE(succeeded);
        EXPECT_TRUE(warnings.texts.empty());
        EXPECT_FALSE(support::processorOf(*module));
        EXPECT_EQ(processor->shaderCode(), before);
    }

    const std::string name;
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module;
    support::ParameterPool pool{*module};
};

/// Expects that a text holds another.
inline void expectHas(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << "\"" << part << "\" is not in\n" << text;
}

} // namespace text
