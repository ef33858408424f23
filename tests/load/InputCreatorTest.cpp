// SPDX-License-Identifier: Apache-2.0
// A host that does not want the plug-in's input creators.
#include "Scene.h"

#include "workbench/core/ActionListener.h"
#include "workbench/core/InputCreatorRegistry.h"

#include "host/memory/Typename.h"

#include <gtest/gtest.h>

namespace {

/// Refuses one input creator, the n-th to ask, or all of them with n = 0; collects the warnings.
class Refusing : public workbench::ActionListener {
public:
    explicit Refusing(int n) {
        workbench::setActionListener(this);
        workbench::InputCreatorRegistry::setPolicy(
            [this, n](const krod::VInputCreatorBase& creator, const std::string& inputType) {
                if (n != 0 && ++asked != n) return true;
                const std::string text = "Could not register " + krod::typenameOf(typeid(creator)) +
                                         " as input creator for type " + inputType + "!";
                refused.push_back(text);
                return false;
            });
    }
    Refusing(const Refusing&) = delete;
    Refusing& operator=(const Refusing&) = delete;
    ~Refusing() override {
        workbench::setActionListener(nullptr);
        workbench::InputCreatorRegistry::setPolicy({});
    }

    void warning(const std::string& text) override { warnings.push_back(text); }

    std::vector<std::string> refused, warnings;

private:
    int asked = 0;
};

void expectWarnings(int n, std::size_t count) {
    Refusing host(n);
    workbench::PluginManager manager;
    scene::OutputRecord output;
    const auto library = manager.load(TOVAR_PLIME);
    const std::string text = output.text();

    ASSERT_EQ(host.refused.size(), count);
    std::string expected;
    for (const std::string& refused : host.refused) {
        EXPECT_TRUE(
            refused.starts_with("Could not register VInputCreator<StrongPtr<ImageTileProcessor>,VCreator<"))
            << refused;
        EXPECT_TRUE(refused.ends_with(",void>> as input creator for type StrongPtr<ImageTileProcessor>!"))
            << refused;
        expected += "WARNING: " + refused + '\n';
    }
    EXPECT_EQ(text, expected);
    EXPECT_EQ(host.warnings, host.refused);
    EXPECT_EQ(scene::creatorCount(library), 15U);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 7U - count);
    manager.unload(library);
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 0U);
}

} // namespace

TEST(InputCreators, Each_single_refusal_gives_one_line_and_one_warning_and_nothing_else) {
    for (int n = 1; n <= 7; ++n) {
        SCOPED_TRACE(n);
        expectWarnings(n, 1);
    }
}

TEST(InputCreators, All_refused_give_seven_lines_and_seven_warnings) { expectWarnings(0, 7); }

TEST(InputCreators, Accepted_ones_give_no_word) {
    workbench::PluginManager manager;
    scene::OutputRecord output;
    manager.load(TOVAR_PLIME);
    EXPECT_EQ(output.text(), "");
}
