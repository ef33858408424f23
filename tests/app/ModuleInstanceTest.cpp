// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModuleInstance.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace workbench {
namespace {

class Module_instance : public testing::Test {
protected:
    FakeCreator creator{"Fake", "One", "Source"};
    ModuleInstance module{registeredModules().one("Fake/One")};

    [[nodiscard]] std::string valueOf(const std::string& name) const {
        return module.object().slots().input(name)->value().text();
    }
    std::string setting(const std::string& name, const std::string& text, Limits limits = Limits::Checked) {
        return failureOf([&] { module.set(name, text, limits); });
    }
};

TEST_F(Module_instance, takes_values_within_limits_and_both_limits_themselves) {
    for (const char* const text : {"0", "5", "3"}) {
        EXPECT_EQ(setting("width", text), "");
        EXPECT_EQ(valueOf("width"), text);
    }
    EXPECT_EQ(setting("gain", "20"), "");
    EXPECT_EQ(valueOf("gain"), "20.0");
}

TEST_F(Module_instance, refuses_a_value_outside_its_limits_and_keeps_the_old_one) {
    EXPECT_EQ(setting("width", "6"),
              "2 Fake/One: parameter \"width\" is outside its limits — expected 0 to 5, "
              "got 6. Set it nevertheless with --unchecked.");
    EXPECT_EQ(setting("samples", "17"),
              "2 Fake/One: parameter \"samples\" is outside its limits — expected at most 16, got 17. "
              "Set it nevertheless with --unchecked.");
    EXPECT_NE(setting("gain", "2.9"), "");
    EXPECT_NE(setting("p", "0.5 1.5"), "");
    EXPECT_NE(setting("p", "-0.5 0.5"), "");
    EXPECT_EQ(valueOf("width"), "0");
    EXPECT_EQ(valueOf("p"), "0.5 0.5");
}

TEST_F(Module_instance, takes_a_value_outside_its_limits_unchecked_and_never_clamps) {
    EXPECT_EQ(setting("width", "1000000", Limits::Unchecked), "");
    EXPECT_EQ(valueOf("width"), "1000000");
}

TEST_F(Module_instance, always_takes_the_initial_value_even_below_its_minimum) {
    EXPECT_EQ(setting("gain", "5"), "");
    EXPECT_EQ(setting("gain", "1"), "");
    EXPECT_EQ(valueOf("gain"), "1.0");
}

TEST_F(Module_instance, suggests_the_parameter_that_is_meant) {
    EXPECT_EQ(setting("sample", "3"), "2 Fake/One: has no parameter \"sample\". Did you mean \"samples\"?");
    EXPECT_EQ(setting("brightness", "3"), "2 Fake/One: has no parameter \"brightness\". "
                                          "It has samples, gain, width, options, code, p.");
}

TEST_F(Module_instance, refuses_a_text_that_is_no_value) {
    const std::string failure = setting("samples", "many");
    EXPECT_TRUE(failure.starts_with("2 Fake/One: parameter \"samples\" cannot take this value — expected "))
        << failure;
    EXPECT_TRUE(failure.ends_with(", got \"many\".")) << failure;
    EXPECT_NE(setting("gain", "nan", Limits::Unchecked), "");
    EXPECT_EQ(valueOf("samples"), "8");
}

TEST_F(Module_instance, replaces_a_flag_list_as_a_whole) {
    EXPECT_EQ(setting("options", "+glow"), "");
    EXPECT_EQ(valueOf("options"), "+glow");
    EXPECT_EQ(setting("options", ""), "");
    EXPECT_EQ(valueOf("options"), "");
    EXPECT_EQ(setting("options", "-halo +glow"), "");
    EXPECT_EQ(valueOf("options"), "-halo +glow");
}

TEST_F(Module_instance, refuses_unknown_and_unsigned_flags_and_names_the_known_ones) {
    EXPECT_EQ(setting("options", "glow"),
              "2 Fake/One: parameter \"options\" has a flag without sign — expected "
              "+glow or -glow, +halo or -halo, got \"glow\".");
    EXPECT_EQ(
        setting("options", "+glow +halos"),
        "2 Fake/One: parameter \"options\" has an unknown flag — expected +glow or -glow, +halo or -halo, "
        "got \"+halos\". Did you mean \"halo\"?");
    EXPECT_NE(setting("options", "+rays", Limits::Unchecked), "");
    EXPECT_EQ(valueOf("options"), "-glow -halo");
}

TEST_F(Module_instance, reads_a_text_from_a_file_byte_for_byte) {
    const std::filesystem::path path = testing::TempDir() + "plime-module-instance.frag";
    std::ofstream(path, std::ios::binary) << "void main()\r\n{ }\n";
    EXPECT_EQ(setting("code", '@' + path.string()), "");
    EXPECT_EQ(valueOf("code"), "void main()\r\n{ }\n");
    std::filesystem::remove(path);
    EXPECT_EQ(setting("code", '@' + path.string()),
              "3 " + path.string() +
                  ": cannot be read — expected a text file of at most 16 MiB, "
                  "got No such file or directory.");
}

TEST_F(Module_instance, refuses_files_without_a_name_and_those_that_hold_no_text) {
    EXPECT_EQ(setting("code", "@"), "2 Fake/One: parameter \"code\" is to be read from a file without a name "
                                    "— expected @FILE, got \"@\".");
    const std::filesystem::path path = testing::TempDir() + "plime-module-instance.bin";
    std::ofstream(path, std::ios::binary)
        .write("\x7f"
               "ELF\0\x1b[2J",
               9);
    EXPECT_EQ(setting("code", '@' + path.string()), "2 Fake/One: parameter \"code\" cannot take this value — "
                                                    "expected a text without a NUL character, got "
                                                    "\"\\x7fELF\\x00\\x1b[2J\".");
    std::filesystem::remove(path);
    EXPECT_EQ(valueOf("code"), "void main() {}");
}

TEST_F(Module_instance, takes_a_text_that_looks_like_a_file_as_it_is) {
    module.setText("code", "@/etc/hostname", Limits::Checked);
    EXPECT_EQ(valueOf("code"), "@/etc/hostname");
}

TEST_F(Module_instance, makes_unset_parameters_unreadable_in_a_pool) {
    module.unset("gain");
    krod::VValuePool pool;
    module.hideUnset(pool);
    EXPECT_FALSE(module.object().slots().input("gain")->getLocalValue(pool).value);
    EXPECT_TRUE(module.object().slots().input("width")->getLocalValue(pool).value);
    EXPECT_NE(failureOf([&] { module.unset("gian"); }), "");
}

TEST_F(Module_instance, does_what_a_request_says_and_the_later_setting_holds) {
    const ModuleRequest request{"Fake/One", {{"width", "2"}, {"samples", "4"}, {"width", "3"}}, {"code"}};
    const ModuleInstance made(registeredModules().one("Fake/One"), request, Limits::Checked);
    EXPECT_EQ(made.object().slots().input("width")->value().text(), "3");
    EXPECT_EQ(made.object().slots().input("samples")->value().text(), "4");
}

TEST(Array_limit, holds_unchecked_for_modules_whose_shader_texts_grow_with_a_parameter) {
    const FakeCreator creator("Display", "PixelContours", "Source");
    ModuleInstance module(registeredModules().one("Display/PixelContours"));
    EXPECT_EQ(
        failureOf([&] { module.set("width", "23", Limits::Checked); }),
        "2 Display/PixelContours: parameter \"width\" is outside its limits — expected 0 to 5, got 23.");
    EXPECT_EQ(failureOf([&] { module.set("width", "22", Limits::Unchecked); }), "");
    EXPECT_EQ(failureOf([&] { module.set("width", "23", Limits::Unchecked); }),
              "2 Display/PixelContours: parameter \"width\" would make arrays of more than 2048 elements — "
              "expected at most 22, got 23.");
}

TEST(Module_description, has_parameters_in_their_order_outputs_and_the_texts_of_the_module) {
    FakeCreator creator("Fake", "One", "Source");
    creator.detailedHelp = "Long <B>words</B>.";
    const Json json = toJson(ModuleInstance(registeredModules().one("Fake/One")));
    ASSERT_EQ(json["parameters"].size(), 6U);
    EXPECT_EQ(json["parameters"][0].dump(),
              R"({"name":"samples","type":"int","value":"8","min":null,"max":"16","expert":2})");
    EXPECT_EQ(
        json["parameters"][5].dump(),
        R"({"name":"p","type":"FixedArray<double,2>","value":"0.5 0.5","min":"0.0 0.0","max":"1.0 1.0",)"
        R"("expert":0})");
    EXPECT_EQ(json["parameters"][3]["type"], "FlagList");
    EXPECT_EQ(json["parameters"][4]["type"], "string");
    EXPECT_EQ(json["inputs"].dump(), "[]");
    EXPECT_EQ(json["outputs"].dump(), R"([{"name":"level","type":"double"}])");
    EXPECT_EQ(json["description"].dump(), R"({"short":null,"detailed":"Long <B>words</B>."})");
}

TEST(Module_description, falls_back_to_the_texts_of_the_creator) {
    const FakeCreator creator("Fake", "One", "Source"), bare("Fake/Bare");
    EXPECT_EQ(toJson(ModuleInstance(registeredModules().one("Fake/One")))["description"].dump(),
              R"({"short":null,"detailed":"Helps."})");
    EXPECT_EQ(toJson(ModuleInstance(registeredModules().one("Fake/Bare")))["description"].dump(),
              R"({"short":null,"detailed":null})");
}

} // namespace
} // namespace workbench
