// SPDX-License-Identifier: Apache-2.0
// A library is loaded by a process of its own first, and only what survives it comes into this one.
#include "Scene.h"

#include "tests/platform/TemporaryFolder.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/PluginTrial.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using namespace workbench;

class Trial : public testing::Test {
protected:
    /// Loads a library of the zoo into this process, which does not survive it unless the trial works.
    void expectRefused(const std::string& name, const std::string& why, const std::string& got = "") {
        const std::string path = BROKEN_FOLDER "/" + name + ".so";
        manager.setTrial(PluginTrial(settings));
        EXPECT_EQ(scene::refusal([&] { manager.load(path); }).sentence(),
                  path + ": is not loaded, because " + why + (got.empty() ? "" : " — got " + got) +
                      ". \"plime validate " + path + "\" finds the cause.");
        EXPECT_FALSE(scene::isInMemory(path));
        EXPECT_EQ(manager.status().back().state, PluginStatus::State::Refused);
        EXPECT_TRUE(CreatorRegistry::entries().empty());
    }
    void expectDies(const std::string& name, const std::string& how) {
        expectRefused(name, "a process that loaded it on trial " + how);
    }

    PluginTrialSettings settings{.probe = PLUGIN_PROBE};
    PluginManager manager;
};

} // namespace

TEST_F(Trial, A_good_library_is_loaded) {
    manager.setTrial(PluginTrial(settings));
    EXPECT_EQ(scene::creatorCount(manager.load(TOVAR_PLIME)), 15U);
}

TEST_F(Trial, A_library_that_ends_the_process_is_refused) {
    expectDies("aborts", "was ended by signal 6 (SIGABRT)");
    expectDies("crashes", "was ended by signal 11 (SIGSEGV)");
    // Without a trial these would look like the end of a test that has passed: they are not the first.
    expectDies("exits", "exited with code 0");
    expectDies("endsAtOnce", "exited with code 0");
}

TEST_F(Trial, A_library_that_ends_the_process_when_it_goes_is_refused) {
    expectDies("crashes_unloading", "was ended by signal 11 (SIGSEGV) when it unloaded it");
}

TEST_F(Trial, An_exception_of_a_static_initialiser_is_named) {
    expectRefused("throws", "it throws an exception while it is loaded", "\"no luck today\"");
    expectRefused("throwsNumber", "it throws an exception while it is loaded",
                  "\"an object that is no std::exception\"");
}

TEST_F(Trial, A_library_without_end_is_refused_in_time) {
    settings.limits = {.time = std::chrono::milliseconds(300)};
    expectDies("waits", "took longer than 300 ms");
    settings.limits = {.time = std::chrono::minutes(2), .processorTime = std::chrono::seconds(1)};
    expectDies("works", "took longer than 1 s of processor time");
}

#ifdef FAILING_ALLOCATION // memory is not limited in instrumented builds
TEST_F(Trial, A_library_that_takes_all_memory_is_refused) {
    settings.limits.memory = usualPluginTrial().limits.memory;
    expectRefused("takesMemory", "it runs out of memory while it is loaded");
}
#endif

TEST_F(Trial, A_refusal_in_good_order_is_told_in_its_own_words) {
    const std::string path = BROKEN_FOLDER "/undefined_symbol.so";
    const Diagnostic here = scene::refusal([&] { manager.load(path); });
    manager.setTrial(PluginTrial(settings));
    const Diagnostic there = scene::refusal([&] { manager.load(path); });
    EXPECT_EQ(there.sentence(), here.sentence());
    EXPECT_EQ(there.details, here.details);
    EXPECT_EQ(there.details.size(), 1U);
}

TEST_F(Trial, What_is_no_library_is_refused_without_a_trial) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe.so"), empty = folder.file("empty.so", {});
    const std::string directory = folder.path("folder.so");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    fs::create_directory(directory);
    manager.setTrial([](const std::string& path) { FAIL() << path << " is tried"; });
    for (const std::string& path :
         {pipe, empty, directory, std::string("/dev/zero"), std::string(BROKEN_FOLDER "/text.so")})
        EXPECT_EQ(scene::refusal([&] { manager.load(path); }).who, path);
}

TEST_F(Trial, Environment_gives_the_time) {
    ::setenv("KROD_PROBE_SECONDS", "60", 1);
    EXPECT_EQ(usualPluginTrial().limits.time, std::chrono::seconds(60));
    EXPECT_EQ(usualPluginTrial().limits.processorTime, std::chrono::seconds(60));
    for (const char* const nonsense : {"", "0", "-1", "x", "99999999999999999999"}) {
        ::setenv("KROD_PROBE_SECONDS", nonsense, 1);
        EXPECT_EQ(usualPluginTrial().limits.time, std::chrono::seconds(10)) << nonsense;
        EXPECT_EQ(usualPluginTrial().limits.processorTime, std::chrono::seconds(2)) << nonsense;
    }
    ::unsetenv("KROD_PROBE_SECONDS");
}

namespace {

/// With a probe that is a shell script and counts how often it is asked.
class Memory : public Trial, public ActionListener {
protected:
    Memory() {
        settings.memory = folder.path("cache") / "krod" / "trials";
        setProbe("printf slu >&3");
    }
    ~Memory() override { setActionListener(before); }

    void warning(const std::string& text) override { warnings.push_back(text); }

    void setProbe(const std::string& line) {
        const fs::path script = folder.path("probe");
        std::ofstream(script) << "#!/bin/sh\necho x >> " << folder.path("starts") << '\n' << line << '\n';
        fs::permissions(script, fs::perms::owner_all);
        settings.probe = script;
    }

    /// How often the probe is asked by a program that starts now and tries that library.
    std::size_t startsFor(const fs::path& path) {
        fs::remove(folder.path("starts"));
        const PluginTrial trial(settings);
        trial(path);
        return contentOf(folder.path("starts")).size() / 2;
    }
    void overwrite(const std::string& content) const {
        fs::remove_all(settings.memory);
        fs::create_directories(settings.memory.parent_path());
        std::ofstream(settings.memory, std::ios::binary) << content;
    }
    [[nodiscard]] std::string content() const {
        const auto bytes = contentOf(settings.memory);
        return {bytes.begin(), bytes.end()};
    }

    const TemporaryFolder folder;
    const fs::path library = folder.file("library.so", {'x'});
    std::vector<std::string> warnings;
    ActionListener* const before = setActionListener(this);
};

} // namespace

TEST_F(Memory, What_has_passed_is_not_tried_again) {
    const fs::path other = folder.file("other.so", {'x'});
    EXPECT_EQ(startsFor(library), 1U);
    EXPECT_EQ(startsFor(library), 0U);
    EXPECT_EQ(startsFor(other), 1U);
    EXPECT_EQ(startsFor(library), 0U);
    EXPECT_EQ(startsFor(other), 0U);
    struct stat status {};
    ASSERT_EQ(::stat(settings.memory.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(std::distance(fs::directory_iterator(settings.memory.parent_path()), {}), 1);
}

TEST_F(Memory, A_changed_library_is_tried_again) {
    EXPECT_EQ(startsFor(library), 1U);
    fs::last_write_time(library, fs::last_write_time(library) + std::chrono::nanoseconds(1));
    EXPECT_EQ(startsFor(library), 1U);
    fs::rename(folder.file("next.so", {'x'}), library);
    EXPECT_EQ(startsFor(library), 1U);
    EXPECT_EQ(startsFor(library), 0U);
    fs::permissions(library, fs::perms::owner_read); // another time of its status
    EXPECT_EQ(startsFor(library), 1U);
}

TEST_F(Memory, A_changed_probe_tries_all_again) {
    EXPECT_EQ(startsFor(library), 1U);
    setProbe("printf slu >&3; exit 0");
    EXPECT_EQ(startsFor(library), 1U);
    EXPECT_EQ(startsFor(library), 0U);
}

TEST_F(Memory, What_has_not_passed_is_tried_again) {
    for (const char* const line : {"printf s >&3", "printf sl >&3", "printf srno >&3", "printf sm >&3"}) {
        setProbe(line);
        EXPECT_THROW(startsFor(library), Failure) << line;
        EXPECT_THROW(startsFor(library), Failure) << line;
        EXPECT_EQ(contentOf(folder.path("starts")).size() / 2, 1U);
        EXPECT_FALSE(fs::exists(settings.memory));
    }
}

TEST_F(Memory, A_damaged_file_only_costs_time) {
    EXPECT_EQ(startsFor(library), 1U);
    const std::string good = content();
    for (std::size_t length = 0; length < good.size(); ++length) {
        overwrite(good.substr(0, length));
        EXPECT_EQ(startsFor(library), 1U) << length;
        EXPECT_EQ(content(), good);
    }
    for (const std::string& bad : {"x" + good, good + good.substr(5), good + '\n', std::string(1 << 21, '1'),
                                   "krod plug-in trials 2" + good.substr(good.find('\n'))}) {
        overwrite(bad);
        EXPECT_EQ(startsFor(library), 1U) << bad.substr(0, 200);
        EXPECT_EQ(content(), good);
    }
    EXPECT_TRUE(warnings.empty());
}

TEST_F(Memory, A_file_that_others_can_write_is_not_believed) {
    EXPECT_EQ(startsFor(library), 1U);
    for (const fs::perms others : {fs::perms::group_write, fs::perms::others_write}) {
        fs::permissions(settings.memory, others, fs::perm_options::add);
        EXPECT_EQ(startsFor(library), 1U);
        EXPECT_EQ(startsFor(library), 0U) << "it was written anew";
    }
    fs::rename(settings.memory, folder.path("elsewhere"));
    fs::create_symlink(folder.path("elsewhere"), settings.memory);
    EXPECT_EQ(startsFor(library), 1U) << "it is a link";
}

TEST_F(Memory, A_file_that_cannot_be_written_only_costs_time) {
    overwrite("");
    settings.memory /= "below/a/file";
    EXPECT_EQ(startsFor(library), 1U);
    EXPECT_EQ(startsFor(library), 1U);
    settings.memory = folder.path("cache");
    EXPECT_EQ(startsFor(library), 1U) << "it is a folder";
    settings.memory.clear();
    EXPECT_EQ(startsFor(library), 1U) << "there is none";
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path(".")), {}), 4) << "something is left behind";
}

TEST_F(Memory, A_hundred_libraries_are_remembered) {
    for (int i = 0; i <= 100; ++i)
        EXPECT_EQ(startsFor(folder.file("library" + std::to_string(i) + ".so", {'x'})), 1U);
    EXPECT_EQ(startsFor(folder.path("library1.so")), 0U);
    EXPECT_EQ(startsFor(folder.path("library100.so")), 0U);
    EXPECT_EQ(startsFor(folder.path("library0.so")), 1U);
}

TEST_F(Memory, A_path_with_a_line_end_is_tried_every_time) {
    const fs::path odd = folder.file("one\ntwo.so", {'x'});
    EXPECT_EQ(startsFor(odd), 1U);
    EXPECT_EQ(startsFor(odd), 1U);
}

TEST_F(Memory, The_text_of_an_exception_is_one_line_of_some_length) {
    setProbe("printf 'sxone\\ntwo\\033[0m%01000d' 0 >&3; kill -ABRT $$");
    EXPECT_EQ(scene::refusal([this] { startsFor(library); }).got,
              "\"one?two?[0m" + std::string(189, '0') + "...\"");
}

TEST_F(Memory, A_probe_that_does_not_work_is_told_once_and_passes) {
    setProbe("exit 127");
    const PluginTrial trial(settings);
    trial(library);
    trial(library);
    settings.probe = folder.path("missing");
    PluginTrial{settings}(library);
    ASSERT_EQ(warnings.size(), 2U);
    const std::string start =
        "plug-ins are loaded without a trial, because the plug-in probe does not work: ";
    EXPECT_EQ(warnings[0], start + "it exited with code 127");
    EXPECT_EQ(warnings[1], start + settings.probe.string() + ": No such file or directory");
    EXPECT_FALSE(fs::exists(settings.memory));
}
