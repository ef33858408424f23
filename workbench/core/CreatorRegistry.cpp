// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/CreatorRegistry.h"

#include <algorithm>
#include <mutex>

namespace workbench {

namespace {

struct Registry {
    std::mutex mutex;
    std::vector<CreatorEntry> entries;
};

/// Never destroyed: plug-ins withdraw their creators until the process ends.
Registry& registry() {
    static Registry& creators = *new Registry;
    return creators;
}

} // namespace

std::vector<CreatorEntry> CreatorRegistry::entries() {
    const std::lock_guard lock(registry().mutex);
    return registry().entries;
}

std::vector<CreatorEntry> CreatorRegistry::find(std::string_view keyAndSource) {
    std::vector<CreatorEntry> found = entries();
    std::erase_if(found, [&](const CreatorEntry& entry) {
        const std::string key = entry.creator->keyname();
        return keyAndSource != key &&
               keyAndSource != key + '@' + entry.creator->properties().source.value_or("");
    });
    return found;
}

void CreatorRegistry::add(krod::VCreatorBase& creator) {
    const std::lock_guard lock(registry().mutex);
    registry().entries.push_back({&creator, LibraryScope::current()});
}

void CreatorRegistry::remove(krod::VCreatorBase& creator) noexcept {
    const std::lock_guard lock(registry().mutex);
    std::erase_if(registry().entries, [&](const CreatorEntry& entry) { return entry.creator == &creator; });
}

} // namespace workbench
