// SPDX-License-Identifier: Apache-2.0
// A display that does not accept an object is not connected to it: on the command line and in a network.
#include "tests/app/Program.h"
#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

/// A network of a knot, a display, and the choosy one, which shows `input`.
std::string networkOf(const std::string& input) {
    return R"({"version": 1, "objects": [
{"name": "knot", "creator": "Scene/Knot"},
{"name": "soft", "creator": "Display/Blurred", "input": "knot"},
{"name": "picky", "creator": "Display/Choosy", "input": ")" +
           input + R"("}],
"views": [{"name": "view", "shows": "picky", "size": [16, 16]}]})";
}

Result runNetwork(const std::string& input) {
    const TemporaryFolder folder;
    const std::string text = networkOf(input);
    const std::string network = folder.file("net.json", {text.begin(), text.end()});
    return run({"run", network, "-o", folder.path("a.exr").string(), "--plugin", CHOOSY_PLUGIN});
}

Result render(const std::vector<std::string>& displays) {
    const TemporaryFolder folder;
    const std::string output = folder.path("a.exr").string();
    std::vector<std::string> call = {"render", "demo:knot", "-o",       output,
                                     "--size", "16x16",     "--plugin", CHOOSY_PLUGIN};
    for (const std::string& display : displays) call.insert(call.end(), {"--display", display});
    const Result result = run(call);
    EXPECT_EQ(std::filesystem::exists(output), result.code == 0);
    return result;
}

} // namespace

TEST(Plime_choosy_display, is_not_connected_to_what_it_does_not_accept) {
    const Result result = render({"Display/Choosy"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error,
              "plime: error: Choosy: Knot cannot be its input, since the display does not accept it.\n");
}

TEST(Plime_choosy_display, of_a_network_is_refused_with_its_line) {
    const Result result = runNetwork("knot");
    EXPECT_EQ(result.code, 8);
    EXPECT_NE(result.error.find(
                  "line 4: picky takes an object that the display does not accept — got knot, Scene/Knot."),
              std::string::npos)
        << result.error;
}

TEST(Plime_choosy_display, is_connected_to_what_it_accepts) {
    EXPECT_EQ(render({"Display/Blurred", "Display/Choosy"}).code, 0);
    EXPECT_EQ(runNetwork("soft").code, 0);
}
