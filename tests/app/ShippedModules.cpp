// SPDX-License-Identifier: Apache-2.0
#include "tests/app/ShippedModules.h"

#include "apps/plime/modules/PluginSetup.h"

#include <gtest/gtest.h>

namespace workbench {

const Catalogue& shippedModules() {
    static PluginManager manager;
    static const Catalogue modules = [] {
        for (const PluginAttempt& attempt : loadPlugins(manager, {{TOVAR_PLIME, WORKBENCH_OBJECTS}, "", {}}))
            EXPECT_EQ(attempt.outcome, PluginAttempt::Outcome::Loaded) << attempt.path;
        return Catalogue::registered([](LibraryId library) { return manager.find(library); });
    }();
    return modules;
}

std::vector<CatalogueEntry> postProcessingModules() {
    std::vector<CatalogueEntry> entries;
    for (const CatalogueEntry& entry : shippedModules().entries())
        if (entry.plugin == "tovar_plime") entries.push_back(entry);
    EXPECT_EQ(entries.size(), 15U);
    return entries;
}

} // namespace workbench
