// SPDX-License-Identifier: Apache-2.0
#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Catalogue_entry, of_a_creator_with_properties_has_its_texts_and_null_for_what_is_not_set) {
    const FakeCreator creator("Fake", "One", "OneSource");
    EXPECT_EQ(toJson(registeredModules().one("Fake/One")).dump(),
              R"({"key":"Fake/One","category":"Fake","name":"One","short":null,"help":"Helps.","group":null,)"
              R"("source":"OneSource","order":7,"plugin":null,"path":null})");
}

TEST(Catalogue_entry, of_a_creator_with_a_full_name_has_no_category) {
    const FakeCreator creator("Fake/Whole");
    EXPECT_EQ(toJson(registeredModules().one("Fake/Whole")).dump(),
              R"({"key":"Fake/Whole","category":null,"name":"Fake/Whole","short":null,"help":null,)"
              R"("group":null,"source":null,"order":-1000,"plugin":null,"path":null})");
}

TEST(Catalogue_entry, knows_name_and_path_of_its_plugin) {
    const FakeCreator creator("Fake/Whole");
    PluginStatus status;
    status.name = "some_plugin";
    status.path = "/somewhere/some_plugin.so";
    const Catalogue catalogue = Catalogue::registered([&](LibraryId) { return &status; });
    EXPECT_EQ(catalogue.one("Fake/Whole").plugin, "some_plugin");
    EXPECT_EQ(catalogue.one("Fake/Whole").path, "/somewhere/some_plugin.so");
}

TEST(Catalogue_entries, stand_in_the_order_of_registration) {
    const FakeCreator second("Fake", "Z", "1"), first("Fake", "A", "2");
    const Catalogue catalogue = registeredModules();
    ASSERT_EQ(catalogue.entries().size(), 2U);
    EXPECT_EQ(catalogue.entries()[0].key, "Fake/Z");
    EXPECT_EQ(catalogue.entries()[1].key, "Fake/A");
}

TEST(Catalogue_find, of_a_shared_key_gives_both_and_with_the_source_one) {
    const FakeCreator one("Fake", "Twin", "Left"), other("Fake", "Twin", "Right");
    const Catalogue catalogue = registeredModules();
    EXPECT_EQ(catalogue.find("Fake/Twin").size(), 2U);
    ASSERT_EQ(catalogue.find("Fake/Twin@Right").size(), 1U);
    EXPECT_EQ(catalogue.find("Fake/Twin@Right")[0].source, "Right");
    EXPECT_EQ(catalogue.shortReference(catalogue.entries()[0]), "Fake/Twin@Left");
}

TEST(Catalogue_one, of_a_shared_key_names_both) {
    const FakeCreator one("Fake", "Twin", "Left"), other("Fake", "Twin", "Right");
    EXPECT_EQ(failureOf([] { static_cast<void>(registeredModules().one("Fake/Twin")); }),
              "2 Fake/Twin: is the key of several modules — expected Fake/Twin@Left or Fake/Twin@Right, "
              "got the bare key.");
}

TEST(Catalogue_one, of_an_unknown_key_suggests_the_nearest) {
    const FakeCreator creator("Fake", "Contours", "Source");
    for (const char* const typed : {"Fake/Contour", "fake/contours", "contours", "Contuors"})
        EXPECT_EQ(failureOf([&] { static_cast<void>(registeredModules().one(typed)); }),
                  std::string("2 ") + typed +
                      ": is not the key of a module. Did you mean \"Fake/Contours\"?");
}

TEST(Catalogue_one, of_an_unknown_source_names_the_known_ones) {
    const FakeCreator creator("Fake", "One", "Source");
    EXPECT_EQ(failureOf([] { static_cast<void>(registeredModules().one("Fake/One@Other")); }),
              "2 Fake/One@Other: is not the source of a module — expected Fake/One@Source.");
}

TEST(Catalogue_one, without_any_module_sends_to_the_doctor) {
    EXPECT_EQ(failureOf([] { static_cast<void>(registeredModules().one("Fake/One")); }),
              "2 Fake/One: is not the key of a module. No plug-in is loaded; see \"plime doctor\".");
}

} // namespace
} // namespace workbench
