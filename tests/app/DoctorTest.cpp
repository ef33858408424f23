// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

namespace {

using Json = nlohmann::ordered_json;

const Json* attempt(const Json& json, const std::string& path) {
    for (const Json& entry : json.at("plugins"))
        if (entry.at("path") == path) return &entry;
    return nullptr;
}

TEST(Plime_doctor, finds_that_everything_needed_works) {
    const Result result = run({"doctor", "--json", "--gpu", "software"});
    EXPECT_EQ(result.code, 0) << result.output << result.error;
    const Json json = Json::parse(result.output);
    EXPECT_EQ(json["host_interface"], "2022_Feb_15");
    EXPECT_TRUE(json["problems"].empty());
    EXPECT_TRUE(json["libraries"]["half_rounds_to_nearest"].get<bool>());
    EXPECT_GE(json["opengl"]["samples"].get<int>(), 1);
    EXPECT_FALSE(json["devices"].empty());
    const Json* const plugin = attempt(json, TOVAR_PLIME);
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(plugin->at("outcome"), "loaded");
    EXPECT_EQ(plugin->at("name"), "tovar_plime");
}

TEST(Plime_doctor, tells_why_a_plugin_is_not_loaded_and_ends_with_1) {
    const Result result = run({"doctor", "--json", "--plugin", "/nowhere/missing.so"});
    EXPECT_EQ(result.code, 1);
    const Json json = Json::parse(result.output);
    const Json* const plugin = attempt(json, "/nowhere/missing.so");
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(plugin->at("outcome"), "failed");
    EXPECT_EQ(plugin->at("origin"), "--plugin");
    EXPECT_TRUE(plugin->at("problem").get<std::string>().starts_with("/nowhere/missing.so: "));
    ASSERT_EQ(json["problems"].size(), 1U);
    EXPECT_EQ(json["problems"][0], plugin->at("problem"));
}

TEST(Plime_doctor, tells_what_is_passed_over) {
    const Json json = Json::parse(run({"doctor", "--json", "--plugin", TOVAR_PLIME}).output);
    int passedOver = 0;
    for (const Json& entry : json["plugins"]) passedOver += entry["outcome"] == "passed over" ? 1 : 0;
    EXPECT_EQ(passedOver, 1);
}

TEST(Plime_doctor, without_usable_opengl_says_so_and_ends_with_1) {
    const Result result = run(Call{{"doctor"}, {{"MESA_GL_VERSION_OVERRIDE", "2.1"}}});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.output.find("Not working\n"), std::string::npos) << result.output;
}

TEST(Plime_doctor, lists_shader_folders_of_the_command_line_first) {
    const Json json = Json::parse(run(Call{{"doctor", "--json", "--shader-dir", GOLDEN_FOLDER},
                                           {{"KROD_SHADER_PATH", "/nowhere/shaders"}}})
                                      .output);
    EXPECT_EQ(json["shader_folders"][0].dump(), R"({"path":")" GOLDEN_FOLDER R"(","exists":true})");
    EXPECT_EQ(json["shader_folders"][1].dump(), R"({"path":"/nowhere/shaders","exists":false})");
}

} // namespace
