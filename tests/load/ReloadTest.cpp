// SPDX-License-Identifier: Apache-2.0
// A plug-in that comes and goes leaves nothing behind.
#include "Scene.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/memory/LivingObjects.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr int Cycles = 1000;
constexpr int WarmUp = 50;
constexpr long GrowthLimit = 1 << 20; // bytes over all cycles

// A sanitizer keeps what is freed, to recognise late use.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool MemoryIsOwn = false;
#elif defined(__has_feature)
constexpr bool MemoryIsOwn = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool MemoryIsOwn = true;
#endif

/// Everything that a loaded plug-in adds to.
struct Inventory {
    std::size_t creators = workbench::CreatorRegistry::entries().size();
    std::size_t inputCreators = workbench::InputCreatorRegistry::count();
    std::size_t modules = workbench::ObjectRegistry::count();
    std::size_t objects = workbench::livingObjectCount();
    long files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    friend bool operator==(const Inventory&, const Inventory&) = default;
};

/// The memory in use, in bytes.
long residentBytes() {
    std::ifstream stream("/proc/self/statm");
    std::string whole, resident;
    stream >> whole >> resident;
    long pages = 0;
    std::from_chars(resident.data(), resident.data() + resident.size(), pages);
    return pages * ::sysconf(_SC_PAGESIZE);
}

long occurrences(const scene::TraceRecord& trace, const std::string& start) {
    return std::count_if(trace.lines.begin(), trace.lines.end(),
                         [&start](const std::string& line) { return line.starts_with(start); });
}

/// One life of the plug-in, with one object of a display and one of a tile module.
void cycle(workbench::PluginManager& manager) {
    const scene::TraceRecord trace;
    const auto library = manager.load(TOVAR_PLIME);
    const auto display = scene::make("Display/CMYK");
    const auto tile = scene::make("Hollywood/PixelBlur");
    manager.unload(library);
    ASSERT_FALSE(display);
    ASSERT_FALSE(tile);
    ASSERT_EQ(manager.find(library)->state, workbench::PluginStatus::State::Unloaded);
    ASSERT_FALSE(manager.find(library)->reason);
    ASSERT_FALSE(scene::isInMemory(TOVAR_PLIME));
    ASSERT_EQ(occurrences(trace, "VInitialization::initPlugin(0,"), 1);
    ASSERT_EQ(occurrences(trace, "VInitialization::initPlugin(1,"), 1);
}

} // namespace

TEST(Reload, A_thousand_lives_leave_no_trace) {
    workbench::PluginManager manager;
    for (int i = 0; i < WarmUp; ++i) ASSERT_NO_FATAL_FAILURE(cycle(manager));
    const Inventory before;
    const long bytes = residentBytes();
    for (int i = 0; i < Cycles; ++i) {
        ASSERT_NO_FATAL_FAILURE(cycle(manager));
        ASSERT_EQ(Inventory(), before) << "after cycle " << i;
    }
    const long growth = residentBytes() - bytes;
    RecordProperty("growth in bytes", std::to_string(growth));
    EXPECT_TRUE(!MemoryIsOwn || growth < GrowthLimit) << growth;
    EXPECT_EQ(manager.status().size(), 1U);
}

TEST(Reload, A_library_that_stays_in_memory_is_named_pinned_and_not_loaded_again) {
    const std::string path = BROKEN_FOLDER "/pinned.so";
    workbench::PluginManager manager;
    const auto library = manager.load(path);
    manager.unload(library);
    const workbench::PluginStatus* status = manager.find(library);
    ASSERT_TRUE(status);
    EXPECT_EQ(status->state, workbench::PluginStatus::State::Pinned);
    ASSERT_TRUE(status->reason);
    EXPECT_EQ(status->reason->sentence(),
              path + ": was unloaded, but is still in memory: it is linked with -z nodelete.");
    EXPECT_EQ(scene::refusal([&] { manager.load(path); }).sentence(),
              path + ": cannot be loaded again: it was unloaded, but is still in memory. "
                     "Start the program again.");
}

TEST(Reload, A_creator_that_is_left_behind_is_removed_and_disturbs_nobody) {
    workbench::PluginManager manager;
    const auto leaky = manager.load(BROKEN_FOLDER "/leaky.so");
    EXPECT_EQ(scene::creatorCount(leaky), 1U);
    manager.unload(leaky);
    EXPECT_EQ(manager.find(leaky)->state, workbench::PluginStatus::State::Unloaded);
    ASSERT_TRUE(manager.find(leaky)->reason);
    EXPECT_EQ(manager.find(leaky)->reason->sentence(),
              BROKEN_FOLDER "/leaky.so: was unloaded, but 1 of its creators had not been withdrawn.");
    EXPECT_EQ(scene::creatorCount(leaky), 0U);
    ASSERT_NO_FATAL_FAILURE(cycle(manager));
}
