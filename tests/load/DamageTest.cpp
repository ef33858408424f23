// SPDX-License-Identifier: Apache-2.0
// Damaged copies of the plug-in, and memory that runs out while it is loaded: the host always lives, and says
// one sentence or loads it. The host is trial_tool.
#include "Scene.h"

#include "tests/platform/TemporaryFolder.h"
#include "workbench/platform/ChildProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;

/// What the tool says of one library.
std::string lineOf(const workbench::ChildLimits& limits, const std::string& library) {
    workbench::Pipe lines;
    workbench::ChildProgram tool(TRIAL_TOOL, {PLUGIN_PROBE, library}, {-1, lines.write.get()}, limits);
    lines.write.close();
    constexpr std::size_t Most = std::size_t{1} << 20;
    const std::string text = tool.read(lines.read.get(), Most).value_or("");
    const auto ending = tool.wait();
    EXPECT_EQ(ending.text(), "exited with code 0") << text;
    EXPECT_TRUE(text.ends_with("\nalive\n")) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
    return text.substr(0, text.find('\n'));
}

/// Where that happens in reasonable time if it happens at all.
workbench::ChildLimits patience() { return {.time = std::chrono::minutes(2)}; }

void expectLoadedOrRefused(const std::string& library) {
    const std::string line = lineOf(patience(), library);
    EXPECT_TRUE(line == "loaded" || line.starts_with(library + ": ")) << line;
}

class Damage : public testing::Test {
protected:
    /// Copies number first to last - 1, each with one bit turned around.
    void expectSurvived(unsigned first, unsigned last) {
        for (unsigned seed = first; seed < last; ++seed) {
            std::mt19937 random(seed);
            std::vector<char> copy = whole;
            const std::size_t at = random() % copy.size();
            copy[at] = static_cast<char>(copy[at] ^ (1 << (random() % 8)));
            SCOPED_TRACE("copy " + std::to_string(seed) + ", byte " + std::to_string(at));
            expectLoadedOrRefused(folder.file("copy.so", copy));
        }
    }

    const TemporaryFolder folder;
    const std::vector<char> whole = contentOf(TOVAR_PLIME);
};

class DeepDamage : public Damage {};

constexpr unsigned Copies = 400, QuickCopies = 60;

} // namespace

TEST_F(Damage, A_whole_copy_is_loaded) {
    EXPECT_EQ(lineOf(patience(), folder.file("copy.so", whole)), "loaded");
}

TEST_F(Damage, A_copy_with_one_bit_turned_around_takes_no_host_along) { expectSurvived(0, QuickCopies); }

TEST_F(DeepDamage, Copies_with_one_bit_turned_around_take_no_host_along) {
    expectSurvived(QuickCopies, Copies);
}

TEST_F(Damage, Every_truncation_is_refused_without_a_trial) {
    constexpr std::size_t Parts = 200;
    workbench::PluginManager manager;
    manager.setTrial([](const std::string&) { FAIL() << "is tried"; });
    for (std::size_t part = 0; part < Parts; ++part) {
        const auto length = static_cast<std::ptrdiff_t>(whole.size() * part / Parts);
        const std::string copy = folder.file("copy.so", {whole.begin(), whole.begin() + length});
        EXPECT_EQ(scene::refusal([&] { manager.load(copy); }).who, copy) << length;
    }
}

#ifdef FAILING_ALLOCATION
namespace {

/// Memory that runs out in the process that loads the plug-in.
class Exhaustion : public testing::Test {
protected:
    Exhaustion() {
        ::setenv("LD_PRELOAD", FAILING_ALLOCATION, 1);
        ::setenv("FAILING_MARK", mark.c_str(), 1);
    }
    ~Exhaustion() override {
        for (const char* name : {"LD_PRELOAD", "FAILING_MARK", "FAILING_ALLOCATION"}) ::unsetenv(name);
    }

    /// Whether there was such a request.
    bool survives(long n) {
        fs::remove(mark);
        ::setenv("FAILING_ALLOCATION", std::to_string(n).c_str(), 1);
        const std::string line = lineOf(patience(), TOVAR_PLIME);
        EXPECT_TRUE(line == "loaded" || line.starts_with(TOVAR_PLIME ": ")) << n << ": " << line;
        if (line.find(": is not loaded, because it runs out of memory while it is loaded. ") !=
            std::string::npos)
            ++named;
        return fs::exists(mark);
    }

    const TemporaryFolder folder;
    const fs::path mark = folder.path("reached");
    int named = 0; ///< sentences that say what it was
};

constexpr long MostRequests = 20000;

} // namespace

TEST_F(Exhaustion, Any_failed_request_for_memory_takes_no_host_along) {
    long n = 1;
    while (n < MostRequests && survives(n)) ++n;
    EXPECT_LT(n, MostRequests);
    RecordProperty("requests", static_cast<int>(n - 1));
    EXPECT_GT(named, n / 2);
}
#endif
