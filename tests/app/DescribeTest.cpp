// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <fstream>

namespace {

using Json = nlohmann::ordered_json;

TEST(Plime_describe, as_json_has_the_catalogue_entry_and_what_can_be_set_and_connected) {
    const Result result = run({"describe", "Display/CMYK", "--json"});
    ASSERT_EQ(result.code, 0) << result.error;
    const Json json = Json::parse(result.output);
    std::vector<std::string> keys;
    for (const auto& item : json.items()) keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"key", "category", "name", "short", "help", "group", "source",
                                              "order", "plugin", "path", "parameters", "inputs", "outputs",
                                              "description"}));
    EXPECT_EQ(json["parameters"][0].dump(),
              R"({"name":"samples","type":"int","value":"8","min":null,"max":"16","expert":0})");
    EXPECT_EQ(json["parameters"][1]["name"], "InputVisibility");
    EXPECT_EQ(json["parameters"][1]["expert"], 10);
    EXPECT_EQ(json["description"].dump(), R"({"short":"todo","detailed":"todo"})");
    EXPECT_FALSE(json["inputs"].empty());
    EXPECT_TRUE(json["outputs"].empty());
}

TEST(Plime_describe, of_every_module_agrees_with_its_parameter_table) {
    std::ifstream file(GOLDEN_FOLDER "/parameters.json");
    const Json tables = Json::parse(file);
    EXPECT_EQ(tables.size(), 15U);
    for (const auto& [key, table] : tables.items()) {
        const Result result = run({"describe", key, "--json"});
        ASSERT_EQ(result.code, 0) << key << ": " << result.error;
        const Json described = Json::parse(result.output);
        EXPECT_EQ(described["parameters"].dump(2), table["parameters"].dump(2)) << key;
        EXPECT_EQ(described["outputs"].dump(2), table["outputs"].dump(2)) << key;
    }
}

TEST(Plime_describe, of_a_tile_processor_has_its_output) {
    const Json json = Json::parse(run({"describe", "Hollywood/PixelBlur", "--json"}).output);
    ASSERT_EQ(json["outputs"].size(), 1U);
    EXPECT_EQ(json["outputs"][0]["type"], "StrongPtr<ImageTileProcessor>");
    EXPECT_TRUE(json["inputs"].empty());
}

TEST(Plime_describe, of_a_shared_key_gives_an_array_and_with_the_source_an_object) {
    const Json both = Json::parse(run({"describe", "Display/Depth", "--json"}).output);
    ASSERT_TRUE(both.is_array());
    ASSERT_EQ(both.size(), 2U);
    EXPECT_EQ(both[0]["source"], "HDRObjectDisplay");
    EXPECT_EQ(both[1]["source"], "DisplayDepth");
    EXPECT_EQ(Json::parse(run({"describe", "Display/Depth@DisplayDepth", "--json"}).output), both[1]);
}

TEST(Plime_describe, and_help_say_what_every_parameter_means_and_name_the_page) {
    std::ifstream file(GOLDEN_FOLDER "/parameters.json");
    const Json tables = Json::parse(file);
    for (const auto& [key, table] : tables.items()) {
        const std::string described = run({"describe", key}).output, helped = run({"help", key}).output;
        for (const Json& parameter : table["parameters"]) {
            const std::string row = "\n  " + parameter["name"].get<std::string>() + "  ";
            const std::size_t meanings = described.find("Meaning, as docs/modules/");
            ASSERT_NE(meanings, std::string::npos) << key;
            EXPECT_NE(described.find(row, meanings), std::string::npos) << key << row;
            EXPECT_NE(helped.find(row), std::string::npos) << key << row;
        }
        EXPECT_NE(helped.find("docs/modules/"), std::string::npos) << key;
        EXPECT_EQ(helped.find("has no text about itself"), std::string::npos) << key;
        EXPECT_EQ(helped.find('&'), std::string::npos) << key << " shows an entity";
    }
    EXPECT_NE(run({"help", "Display/HSVAdjust"}).output.find("degrees by which the colour wheel is turned"),
              std::string::npos);
}

TEST(Plime_help, knows_subjects) {
    for (const std::string subject : {"environment", "networks", "points", "shaders"}) {
        const Result result = run({"help", subject});
        EXPECT_EQ(result.code, 0) << result.error;
        EXPECT_GT(result.output.size(), 500U) << subject;
        EXPECT_NE(run({"help"}).output.find(subject), std::string::npos);
    }
    EXPECT_NE(run({"help", "networkz"}).error.find("Did you mean \"networks\"?"), std::string::npos);
}

// What the page says of the files' names, against what the modules ask for.
TEST(Plime_help, names_the_shader_files_that_displays_take) {
    const std::string page = run({"help", "shaders"}).output;
    std::ifstream file(GOLDEN_FOLDER "/parameters.json");
    const Json tables = Json::parse(file);
    for (const auto& [key, table] : tables.items()) {
        const Result body = run({"shader", key, "--body", "-v"});
        if (body.code != 0) continue;
        const std::size_t at = body.error.find("by a file ") + 10;
        const std::string name = body.error.substr(at, body.error.find(' ', at) - at);
        EXPECT_NE(page.find("\n     " + key + ' '), std::string::npos) << key;
        EXPECT_NE(page.find(name, page.find("\n     " + key + ' ')), std::string::npos) << key << ' ' << name;
        EXPECT_TRUE(run({"shader", key}).output.ends_with(body.output)) << key;
        EXPECT_NE(body.output.find("main"), std::string::npos) << key;
    }
    EXPECT_EQ(run({"shader", "Display/CMYK", "--body"}).code, 0);
    EXPECT_EQ(run({"shader", "Hollywood/TileProgram", "--body"}).code, 2);
}

TEST(Plime_describe, shows_people_a_table) {
    const Result result = run({"describe", "Display/Blurred"});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.output.find("Blur object in image space."), std::string::npos);
    EXPECT_NE(result.output.find("width            double    1.0    3.0 to 20.0\n"), std::string::npos)
        << result.output;
}

TEST(Plime_describe, of_an_unknown_key_suggests_one) {
    const Result result = run({"describe", "Display/CMKY"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error,
              "plime: error: Display/CMKY: is not the key of a module. Did you mean \"Display/CMYK\"?\n");
}

TEST(Plime_help, of_a_module_turns_html_into_text) {
    const Result result = run({"help", "Hollywood/TileProgram"});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.output.find("GLSL language"), std::string::npos);
    EXPECT_NE(result.output.find("(https://www.khronos.org/opengl/wiki/OpenGL_Shading_Language)"),
              std::string::npos);
    EXPECT_EQ(result.output.find('<'), std::string::npos);
}

} // namespace
