// SPDX-License-Identifier: Apache-2.0
// Level 2: loading, the handshake, unloading.
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/core/PluginEntry.h"
#include "workbench/memory/LivingObjects.h"
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Validator.h"

#include "host/core/VInitialization.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace workbench::validate {
namespace {

constexpr std::string_view Key = "KROD_API_VERSION";
constexpr std::string_view CreatorLine = "VCreator::VCreator(";
constexpr std::string_view HookLine = "VInitialization::initPlugin(";

/// Gives one verdict and counts how often it is asked, and for what.
class FixedVerdict : public krod::VInitialization {
public:
    explicit FixedVerdict(int verdict) : VInitialization(hostDate()), verdict(verdict) {}
    int IsCompatible(const char* key) override {
        ++asked;
        if (!key || Key != key) wrongKey = key ? key : "none";
        return verdict;
    }

    int asked = 0;
    std::string wrongKey;

private:
    int verdict;
};

/// What the host has of plug-ins.
struct Registered {
    std::size_t creators = CreatorRegistry::entries().size();
    std::size_t inputCreators = InputCreatorRegistry::count();
    std::size_t objects = livingObjectCount();
    friend bool operator==(const Registered&, const Registered&) = default;
    [[nodiscard]] std::string text() const {
        return std::to_string(creators) + " creators, " + std::to_string(inputCreators) +
               " input creators and " + std::to_string(objects) + " objects";
    }
};

std::string hookText(int reason, const Trial& trial) {
    return std::string(HookLine) + std::to_string(reason) + ',' + PluginEntry::read(trial.plugin()).name +
           ',' + std::string(Key) + ")\n";
}

std::vector<std::string> hooksIn(const std::vector<std::string>& lines) {
    std::vector<std::string> hooks;
    std::ranges::copy_if(lines, std::back_inserter(hooks),
                         [](const std::string& line) { return line.starts_with(HookLine); });
    return hooks;
}

/// Demands that the load hook has called the host once, in these words.
void requireOneHook(Trial& trial, const std::vector<std::string>& hooks, int reason) {
    const std::string expected = hookText(reason, trial);
    const std::string what = reason == 0 ? "its loading" : "its unloading";
    if (hooks.empty()) return trial.fail("does not report " + what + " to the host");
    if (hooks.size() > 1)
        return trial.fail("reports " + what + " " + std::to_string(hooks.size()) + " times");
    trial.require(hooks.front() == expected, "reports " + what + " as " +
                                                 hooks.front().substr(0, hooks.front().size() - 1) +
                                                 " and not as " + expected.substr(0, expected.size() - 1));
}

std::vector<std::string> loadTrace(const Trial& trial) {
    const TraceRecord trace;
    Guest guest(trial);
    std::vector<std::string> lines = trace.lines;
    guest.unload();
    return lines;
}

} // namespace

void checkLoad(Trial& trial) {
    const std::clock_t before = std::clock();
    const Guest guest(trial);
    const double seconds = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    trial.require(seconds <= 2, "needs more than 2 seconds of work to be loaded");
    if (seconds > 0.1) trial.warn("needs more than a tenth of a second of work to be loaded");
    trial.require(!guest.makers().empty(), "registers no creator");
}

void checkAttach(Trial& trial) {
    const TraceRecord trace;
    const Guest guest(trial);
    requireOneHook(trial, hooksIn(trace.lines), 0);
    const auto hook =
        std::ranges::find_if(trace.lines, [](const auto& l) { return l.starts_with(HookLine); });
    const auto late =
        std::find_if(hook, trace.lines.end(), [](const auto& l) { return l.starts_with(CreatorLine); });
    trial.require(late == trace.lines.end(), "reports its loading before all of its creators are registered");
}

void checkVerdict(Trial& trial) {
    const SharedLibrary library(trial.plugin());
    const auto entry =
        library.function<int(krod::VInitialization*)>(PluginEntry::read(trial.plugin()).symbol);
    for (const int verdict : {1, 0, -1, INT_MAX, INT_MIN}) {
        FixedVerdict host(verdict);
        const int answer = entry(&host);
        trial.require(answer == verdict, "answers " + std::to_string(answer) +
                                             " when the host's verdict is " + std::to_string(verdict));
        trial.require(host.asked == 1,
                      "asks the host " + std::to_string(host.asked) + " times for its verdict");
        trial.require(host.wrongKey.empty(),
                      "asks the host with the key " + host.wrongKey + " instead of " + std::string(Key));
    }
}

void checkQuietEntry(Trial& trial) {
    const SharedLibrary library(trial.plugin());
    const auto entry =
        library.function<int(krod::VInitialization*)>(PluginEntry::read(trial.plugin()).symbol);
    const Registered before;
    const TraceRecord trace;
    OutputRecord output;
    FixedVerdict host(1);
    for (int i = 0; i < 1000; ++i) entry(&host);
    trial.require(output.text().empty(), "prints something when its entry is called");
    trial.require(trace.lines.empty(), "traces something when its entry is called");
    trial.require(Registered() == before, "registers something when its entry is called");
}

void checkRefusal(Trial& trial) {
    const Registered before;
    for (const int verdict : {0, -1, INT_MIN}) {
        PluginManager manager;
        manager.setHandshake([&](const std::string&) { return std::make_unique<FixedVerdict>(verdict); });
        try {
            manager.load(trial.plugin().string());
            trial.fail("is loaded although the host's verdict is " + std::to_string(verdict));
        } catch (const Failure& failure) {
            trial.require(failure.diagnostic().details.empty(),
                          "stays in memory after the host has refused it");
        }
        const Registered after;
        trial.require(after == before, "leaves " + after.text() + " in the host when it is refused, of " +
                                           before.text() + " before");
    }
}

void checkUnload(Trial& trial) {
    Guest guest(trial);
    const PluginStatus& status = guest.unload();
    if (status.state != PluginStatus::State::Unloaded)
        trial.fail(status.reason ? status.reason->what : "is still in memory after it was unloaded");
}

void checkDetach(Trial& trial) {
    Guest guest(trial);
    const std::size_t all = CreatorRegistry::entries().size(), inputs = InputCreatorRegistry::count();
    bool early = true;
    const TraceRecord trace([&](std::string_view line) {
        if (line.starts_with(HookLine))
            early =
                early && CreatorRegistry::entries().size() == all && InputCreatorRegistry::count() == inputs;
    });
    guest.unload();
    requireOneHook(trial, hooksIn(trace.lines), 1);
    trial.require(early, "reports its unloading after it has withdrawn creators");
}

void checkWithdrawal(Trial& trial) {
    const Registered before;
    Guest guest(trial);
    const PluginStatus& status = guest.unload();
    if (status.reason) return trial.fail(status.reason->what);
    const Registered after;
    trial.require(after == before,
                  "leaves " + after.text() + " in the host, of " + before.text() + " before it was loaded");
}

void checkReload(Trial& trial) {
    const auto first = loadTrace(trial), second = loadTrace(trial);
    trial.require(first == second, "registers something else when it is loaded a second time");
}

void checkExit(Trial& trial) {
    // Everything here outlives the plug-in's destructors, which run inside of exit().
    struct Watcher {
        Trial& trial;
        std::size_t creators;
        int detached;
    };
    static Watcher watcher{trial, 0, 0};
    std::atexit([] {
        watcher.trial.require(watcher.detached == 1, "reports its unloading " +
                                                         std::to_string(watcher.detached) +
                                                         " times when the process exits");
        watcher.trial.require(CreatorRegistry::entries().empty(),
                              "leaves creators behind when the process exits");
        handOver(watcher.trial.outcome());
    });
    const Guest guest(trial);
    auto& objects = *new std::vector<krod::StrongPtr<krod::VObject>>; // alive at the end
    for (const Maker& maker : guest.makers()) objects.push_back(maker.make());
    watcher.creators = CreatorRegistry::entries().size();
    new TraceRecord([](std::string_view line) {
        if (!line.starts_with(HookLine)) return;
        ++watcher.detached;
        watcher.trial.require(CreatorRegistry::entries().size() == watcher.creators,
                              "withdraws creators before it reports its unloading when the process exits");
    });
    std::exit(0);
}

} // namespace workbench::validate
