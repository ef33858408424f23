// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using Json = nlohmann::ordered_json;

std::string golden(const std::string& name) {
    std::ifstream file(std::string(GOLDEN_FOLDER "/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Other plug-ins may lie in the same folder.
Json ofTovarPlime(const Json& list) {
    Json own = Json::array();
    for (const Json& entry : list)
        if (entry.at("plugin") == "tovar_plime") own.push_back(entry);
    return own;
}

TEST(Plime_list, as_json_equals_the_catalogue_letter_for_letter_and_in_order) {
    const Result result = run({"list", "--json"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.error, "");
    Json list = ofTovarPlime(Json::parse(result.output));
    for (Json& entry : list) {
        const std::filesystem::path path = entry["path"].get<std::string>();
        EXPECT_TRUE(path.is_absolute()) << path;
        EXPECT_TRUE(std::filesystem::equivalent(path, TOVAR_PLIME)) << path;
        entry["path"] = path.filename().string();
    }
    EXPECT_EQ(list.dump(2) + '\n', golden("list.json"));
}

TEST(Plime_list, shows_every_key_and_tells_the_two_depth_displays_apart) {
    const Result result = run({"list"});
    EXPECT_EQ(result.code, 0);
    for (const Json& entry : Json::parse(golden("list.json")))
        EXPECT_NE(result.output.find("  " + entry["key"].get<std::string>()), std::string::npos) << entry;
    EXPECT_NE(result.output.find("  Display/Depth@DisplayDepth "), std::string::npos);
    EXPECT_NE(result.output.find("  Display/Depth@HDRObjectDisplay "), std::string::npos);
    EXPECT_EQ(result.output.find("todo"), std::string::npos);
    EXPECT_EQ(result.output.find("…"), std::string::npos) << "nothing is cut where no terminal is";
}

TEST(Plime_list, has_a_sentence_of_the_host_for_modules_without_words) {
    const std::string output = run({"list"}).output;
    const std::size_t row = output.find("\n  Display/CMYK ") + 1;
    EXPECT_TRUE(
        output.substr(row, output.find('\n', row) - row)
            .ends_with("  Shows how much cyan, magenta and yellow ink each place would take, as red, green "
                       "and blue [host]"))
        << output;
    EXPECT_EQ(output.find("Blur object in image space. [host]"), std::string::npos);
    for (std::size_t at = 0, end; (end = output.find('\n', at)) != std::string::npos; at = end + 1) {
        const std::string line = output.substr(at, end - at);
        EXPECT_TRUE(!line.starts_with("  ") || line.find(' ', 2) != std::string::npos) << line;
    }
}

TEST(Plime_list, has_nothing_twice_when_a_plugin_is_named_that_lies_in_the_default_folder) {
    const Result once = run({"list", "--json"});
    const Result named = run({"list", "--json", "--plugin", TOVAR_PLIME});
    EXPECT_EQ(named.code, 0);
    EXPECT_EQ(ofTovarPlime(Json::parse(named.output)), ofTovarPlime(Json::parse(once.output)));
}

TEST(Plime_list, ends_with_5_when_a_plugin_that_was_asked_for_does_not_load) {
    const Result result = run({"list", "--plugin", "/nowhere/missing.so"});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("plime: error: /nowhere/missing.so: ")) << result.error;
}

TEST(Plime_list, ends_with_5_when_a_folder_that_was_asked_for_holds_no_plugin) {
    const Result result = run({"list", "--plugin", GOLDEN_FOLDER});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(result.error,
              "plime: error: " GOLDEN_FOLDER ": holds no plug-in — expected files *.so, got none.\n");
}

TEST(Plime_list, warns_of_a_plugin_of_the_environment_that_does_not_load_unless_quiet) {
    const std::map<std::string, std::string> environment = {{"KROD_PLUGIN_PATH", GOLDEN_FOLDER "/list.json"}};
    const Result result = run(Call{{"list"}, environment});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.error.starts_with("plime: warning: " GOLDEN_FOLDER "/list.json: ")) << result.error;
    EXPECT_EQ(run(Call{{"list", "-q"}, environment}).error, "");
}

} // namespace
