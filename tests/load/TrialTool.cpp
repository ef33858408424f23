// SPDX-License-Identifier: Apache-2.0
// Loads libraries one after the other as any host does, with a trial before each, and unloads them again:
//   trial_tool PROBE LIBRARY...
// Standard output has one line for each: "loaded", or why not.
#include "workbench/core/PluginManager.h"
#include "workbench/core/PluginTrial.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    workbench::PluginTrialSettings settings = workbench::usualPluginTrial();
    settings.probe = argv[1];
    settings.memory.clear();
    workbench::PluginManager manager;
    manager.setTrial(workbench::PluginTrial(settings));
    for (int i = 2; i < argc; ++i) {
        try {
            manager.unload(manager.load(argv[i]));
            std::puts("loaded");
        } catch (const workbench::Failure& failure) {
            std::puts(failure.what());
        }
    }
    std::puts("alive");
}
