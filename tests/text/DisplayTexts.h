// SPDX-License-Identifier: Apache-2.0
// What the tests of the displays' texts share: one display, a folder for shader files, what is warned of.
#pragma once

#include "tests/support/Goldens.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/gl/ShaderFiles.h"

#include "host/memory/Typename.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <typeinfo>

/// Whether a text has this part in it.
inline testing::AssertionResult contains(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "missing: " << part << "\nin:\n" << text;
}

/// Tests of the texts of one display.
class DisplayTexts : public testing::Test {
protected:
    /// `key` names the creator, "Display/Blurred"; `file` the body's, below src/display/body, and the file's
    /// that may replace it. It is empty for a display without either.
    explicit DisplayTexts(const std::string& key, const std::string& file = {})
        : overrideFile(folder / file),
          body(file.empty() ? "" : support::readFile(bodies / file)),
          display(plugin.make<krod::MSDeferredObjectDisplay>(key)) {
        std::filesystem::remove_all(folder);
        workbench::setShaderFolders({folder});
    }
    ~DisplayTexts() override {
        workbench::setShaderFolders({});
        std::filesystem::remove_all(folder);
    }

    /// The one program of a frame.
    workbench::ProgramTexts texts(const krod::VValuePool& values = {}) {
        const auto programs = workbench::captureShader(*display, values);
        EXPECT_EQ(programs.size(), 1U);
        return programs.at(0);
    }
    std::string fragment(const krod::VValuePool& values = {}) { return texts(values).fragmentText; }

    /// What stands between the version line and the built-in body. Throws std::runtime_error when the text
    /// does not begin and end with these.
    std::string prefix(const krod::VValuePool& values = {}) {
        const std::string text = fragment(values);
        if (!text.starts_with(VersionLine) || !text.ends_with(body))
            throw std::runtime_error("no version line, or another body:\n" + text);
        return text.substr(VersionLine.size(), text.size() - VersionLine.size() - body.size());
    }

    /// A parameter as it is declared: "1.0, min 3.0, max 20.0, level 0".
    std::string slot(const std::string& name) {
        for (const auto& input : display->slots().inputs()) {
            if (input.name != name) continue;
            std::string text = input.parameter->value().text();
            for (const char* limit : {"min", "max"})
                if (const auto value = input.parameter->property(limit))
                    text += std::string(", ") + limit + ' ' + value->text();
            return text + ", level " + krod::VValueTrait<int>::Text(input.expertLevel);
        }
        return "not declared";
    }

    /// The renderer of a frame: how many samples it asks for, and the host's name of its class.
    int requestedSamples(const krod::VValuePool& values = {}) {
        return rendererOf(values)->requestedSamples();
    }
    std::string rendererName() {
        const auto renderer = rendererOf({});
        const auto& object = *renderer;
        return krod::typenameOf(typeid(object));
    }

    void overrideBody(const std::string& bytes) { support::writeFile(overrideFile, bytes); }

    static inline const std::string VersionLine = "#version 150\n";

    const support::Goldens golden{GOLDEN_FOLDER, ACTUAL_FOLDER};
    const std::filesystem::path bodies = BODY_FOLDER;
    const std::filesystem::path folder =
        std::filesystem::path(ACTUAL_FOLDER).parent_path() / "shaders" / testName();
    const std::filesystem::path overrideFile;
    const std::string body;
    support::Warnings warnings;
    support::LoadedPlugin plugin;
    const krod::StrongPtr<krod::MSDeferredObjectDisplay> display;
    support::ParameterPool pool{*display};

private:
    krod::StrongPtr<krod::MSDeferredRenderObject::MultiSampleDeferredRenderer>
    rendererOf(const krod::VValuePool& values) {
        krod::VGLRenderContext context(values, 1, 1);
        return display->createRenderer(context);
    }
    /// A folder for each test, so that tests can run at the same time.
    static std::filesystem::path testName() {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        return std::filesystem::path(test.test_suite_name()) / test.name();
    }
};
