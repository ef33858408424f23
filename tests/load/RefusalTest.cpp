// SPDX-License-Identifier: Apache-2.0
// Libraries that are not loaded, and the sentence why not.
#include "Scene.h"

#include "tests/platform/TemporaryFolder.h"
#include "workbench/core/CreatorRegistry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

namespace {

using State = workbench::PluginStatus::State;

class Refusal : public testing::Test {
protected:
    /// Expects that a library is refused with that text after its path, and that none of its code has run.
    void expectRefused(const std::string& path, const std::string& sentence) {
        scene::OutputRecord output;
        const auto message = scene::refusal([&] { manager.load(path); });
        EXPECT_EQ(message.sentence(), path + ": " + sentence);
        EXPECT_EQ(output.text(), "");
        const auto& last = manager.status().back();
        EXPECT_EQ(last.path, path);
        EXPECT_EQ(last.state, State::Refused);
        EXPECT_EQ(last.library, 0);
        ASSERT_TRUE(last.reason);
        EXPECT_EQ(last.reason->sentence(), message.sentence());
        EXPECT_TRUE(workbench::CreatorRegistry::entries().empty());
    }
    void expectZoo(const std::string& file, const std::string& sentence) {
        expectRefused(BROKEN_FOLDER "/" + file, sentence);
    }

    const TemporaryFolder folder;
    workbench::PluginManager manager;
};

/// Refusals while the plug-in is loaded.
class SecondFile : public testing::Test {
protected:
    SecondFile() {
        std::filesystem::copy_file(TOVAR_PLIME, first);
        library = manager.load(first);
    }

    const TemporaryFolder folder;
    const std::string first = folder.path("first.so");
    workbench::PluginManager manager;
    workbench::LibraryId library = 0;
};

} // namespace

TEST_F(Refusal, Names_what_is_no_library) {
    expectZoo("text.so",
              "is not a library — expected a file that starts with the ELF mark, got other content.");
    expectRefused(folder.path("missing.so"), "cannot be read — got No such file or directory.");
    const std::string pipe = folder.path("pipe.so"), directory = folder.path("folder.so");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    expectRefused(pipe, "is not a library — expected a regular file, got a pipe.");
    std::filesystem::create_directory(directory);
    expectRefused(directory, "is not a library — expected a regular file, got a folder.");
}

TEST_F(Refusal, Names_a_truncated_library) {
    const auto message = scene::refusal([this] { manager.load(BROKEN_FOLDER "/truncated.so"); });
    EXPECT_EQ(message.what.substr(0, 23), "ends too early for its ") << message.sentence();
    EXPECT_EQ(message.got, "3000 bytes");
    EXPECT_EQ(message.advice, "Build or copy the library again");
}

TEST_F(Refusal, Names_a_missing_entry_and_near_misses) {
    const std::string expected =
        "is not a plug-in — expected exactly one symbol KROD_API_<date>__<name>, got ";
    expectZoo("no_entry.so", expected + "none.");
    expectZoo("wrong_name.so", expected + "\"KROD_API_2022_Feb_15_wrong_name\". Correct the entry's name.");
    expectZoo("wrong_linkage.so", expected +
                                      "\"KROD_API_2022_Feb_15__wrong_linkage(krod::VInitialization*)\". "
                                      "Declare the entry with C linkage (extern \"C\").");
}

TEST_F(Refusal, Names_both_of_two_entries) {
    expectZoo("two_entries.so",
              "is not one plug-in — expected exactly one symbol KROD_API_<date>__<name>, got "
              "\"KROD_API_2022_Feb_15__one\" and \"KROD_API_2022_Feb_15__two\". "
              "Build one library for each entry.");
}

TEST_F(Refusal, Names_both_dates_of_another_interface) {
    expectZoo("other_date.so", "has the interface 2021_Jan_01, but this host expects 2022_Feb_15. "
                               "Build the plug-in again with the headers of this host.");
    EXPECT_EQ(manager.status().back().name, "other_date");
    EXPECT_EQ(manager.status().back().date, "2021_Jan_01");
}

TEST_F(Refusal, Names_an_undefined_symbol_readably) {
    expectZoo("undefined_symbol.so",
              "cannot be loaded — expected every symbol to be defined by this host or by the library's "
              "dependencies, got the undefined symbol \"krod::newerThanThisHost(double)\". "
              "Build the plug-in again with the headers of this host.");
}

TEST_F(Refusal, An_empty_path_is_no_file) {
    EXPECT_EQ(scene::refusal([this] { manager.load(""); }).sentence(),
              "plug-in: cannot be loaded without the path of a file.");
}

TEST_F(Refusal, A_bare_name_is_taken_from_the_current_folder_and_never_searched_for) {
    // The loader would find this one, since it is loaded already.
    EXPECT_EQ(scene::refusal([this] { manager.load("libkrod_core.so"); }).sentence(),
              (std::filesystem::current_path() / "libkrod_core.so").string() +
                  ": cannot be read — got No such file or directory.");

    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(TOVAR_PLIME).parent_path());
    const auto library = manager.load(std::filesystem::path(TOVAR_PLIME).filename());
    std::filesystem::current_path(before);
    EXPECT_EQ(manager.find(library)->path, TOVAR_PLIME);
}

TEST_F(Refusal, Is_forgotten_when_the_file_has_been_mended) {
    const std::string path = folder.file("mended.so", {'n', 'o'});
    EXPECT_THROW(manager.load(path), workbench::Failure);
    std::filesystem::copy_file(TOVAR_PLIME, path, std::filesystem::copy_options::overwrite_existing);
    const auto library = manager.load(path);
    ASSERT_EQ(manager.status().size(), 1U);
    EXPECT_EQ(manager.status()[0].library, library);
    EXPECT_EQ(manager.status()[0].state, State::Loaded);
    EXPECT_FALSE(manager.status()[0].reason);
}

TEST_F(Refusal, A_plugin_without_creators_is_loaded_with_a_note) {
    const std::string path = BROKEN_FOLDER "/pinned.so";
    const auto* status = manager.find(manager.load(path));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->state, State::Loaded);
    EXPECT_EQ(status->creators, 0U);
    ASSERT_TRUE(status->reason);
    EXPECT_EQ(status->reason->sentence(), path + ": is loaded, but registers no creator.");
}

TEST_F(Refusal, A_folder_is_loaded_in_the_order_of_names_without_stopping) {
    std::filesystem::copy_file(TOVAR_PLIME, folder.path("b.so"));
    std::filesystem::copy_file(LOAD_SAMPLE, folder.path("c.so"));
    const std::string bad = folder.file("a.so", {'n', 'o'}), other = folder.file("d.txt", {'n', 'o'});
    manager.loadFolder(folder.path("."));
    ASSERT_EQ(manager.status().size(), 3U);
    EXPECT_EQ(manager.status()[0].path, bad);
    EXPECT_EQ(manager.status()[0].state, State::Refused);
    EXPECT_EQ(manager.status()[1].name, "tovar_plime");
    EXPECT_EQ(manager.status()[1].state, State::Loaded);
    EXPECT_EQ(manager.status()[2].name, "load_sample");
    EXPECT_EQ(manager.status()[2].state, State::Loaded);
}

TEST_F(Refusal, A_missing_folder_is_named) {
    const std::string path = folder.path("missing");
    EXPECT_EQ(scene::refusal([&] { manager.loadFolder(path); }).sentence(),
              path + ": cannot be read: No such file or directory.");
}

TEST_F(SecondFile, A_link_to_the_loaded_file_is_counted) {
    const std::string symbolic = folder.path("symbolic.so"), hard = folder.path("hard.so");
    std::filesystem::create_symlink(first, symbolic);
    std::filesystem::create_hard_link(first, hard);
    EXPECT_EQ(manager.load(symbolic), library);
    EXPECT_EQ(manager.load(hard), library);
    EXPECT_EQ(scene::creatorCount(library), 15U);
    EXPECT_EQ(manager.status().size(), 1U);
    manager.unload(library);
    manager.unload(library);
    EXPECT_EQ(scene::creatorCount(library), 15U);
    manager.unload(library);
    EXPECT_EQ(scene::creatorCount(library), 0U);
}

TEST_F(SecondFile, A_copy_under_another_name_is_refused_until_the_first_is_gone) {
    const std::string copy = folder.path("copy.so");
    std::filesystem::copy_file(first, copy);
    EXPECT_EQ(scene::refusal([&] { manager.load(copy); }).sentence(),
              copy + ": is not loaded, because the plug-in \"tovar_plime\" is already loaded from " + first +
                  ". Unload that one first.");
    EXPECT_EQ(scene::creatorCount(library), 15U);
    manager.unload(library);
    EXPECT_EQ(scene::creatorCount(manager.load(copy)), 15U);
}

TEST_F(SecondFile, A_file_that_was_replaced_is_refused_while_the_old_one_works) {
    const std::string next = folder.path("next.so");
    std::filesystem::copy_file(first, next);
    std::filesystem::rename(next, first);
    EXPECT_EQ(scene::refusal([this] { manager.load(first); }).sentence(),
              first + ": is another file than the one that is loaded from this path. "
                      "Unload the plug-in first.");
    EXPECT_TRUE(scene::make("Display/CMYK"));
    EXPECT_EQ(manager.find(library)->state, State::Loaded);
    manager.unload(library);
    EXPECT_EQ(scene::creatorCount(manager.load(first)), 15U);
}
