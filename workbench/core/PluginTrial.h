// SPDX-License-Identifier: Apache-2.0
// Loads a plug-in in a process of its own before this one does.
#pragma once

#include "host/Export.h"
#include "workbench/platform/ChildProgram.h"
#include "workbench/report/Failure.h"

#include <filesystem>
#include <memory>
#include <string>

namespace workbench {

/// How plug-ins are tried.
struct PluginTrialSettings {
    std::filesystem::path probe{};  ///< the program that loads them
    std::filesystem::path memory{}; ///< where libraries that have passed are remembered; empty: nowhere
    ChildLimits limits{};
};

/// The probe beside this program; the memory in the user's folder for caches, $XDG_CACHE_HOME/krod or
/// ~/.cache/krod; 10 s of time, 2 s of the processor and 2 GiB of memory. KROD_PROBE_SECONDS takes the
/// place of both times, for slow machines and instrumented builds.
[[nodiscard]] KROD_API PluginTrialSettings usualPluginTrial();

/// A trial for PluginManager::setTrial: broken native code must not take the host along. It is no defence
/// against a library that means harm.
class KROD_API PluginTrial {
public:
    explicit PluginTrial(PluginTrialSettings settings);

    /// Does nothing for a library that has passed before, unless its file, the probe or this host is another
    /// one since. Throws Failure(Fault::Plugin) for one that the probe refuses or does not survive. Where no
    /// trial can be made, a warning says so once for this object and its copies, and the library passes.
    void operator()(const std::string& path) const;

private:
    struct State;
    std::shared_ptr<State> state;
};

} // namespace workbench
