// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/InputCreatorRegistry.h"

#include "host/memory/Typename.h"

#include <algorithm>
#include <mutex>
#include <typeindex>
#include <utility>

namespace workbench {

namespace {

struct Entry {
    std::type_index inputType; ///< of the library that registers, which withdraws the entry before it leaves
    krod::VInputCreatorBase* creator;
};

struct Registry {
    std::mutex mutex;
    InputCreatorRegistry::Policy policy;
    std::vector<Entry> entries;
};

/// Never destroyed: plug-ins withdraw their creators until the process ends.
Registry& registry() {
    static Registry& inputCreators = *new Registry;
    return inputCreators;
}

InputCreatorRegistry::Policy currentPolicy() {
    const std::lock_guard lock(registry().mutex);
    return registry().policy;
}

} // namespace

std::vector<krod::VInputCreatorBase*> InputCreatorRegistry::find(const std::type_info& inputType) {
    std::vector<krod::VInputCreatorBase*> found;
    const std::lock_guard lock(registry().mutex);
    for (const Entry& entry : registry().entries)
        if (entry.inputType == inputType) found.push_back(entry.creator);
    return found;
}

std::size_t InputCreatorRegistry::count() noexcept {
    const std::lock_guard lock(registry().mutex);
    return registry().entries.size();
}

void InputCreatorRegistry::setPolicy(Policy policy) {
    const std::lock_guard lock(registry().mutex);
    registry().policy = std::move(policy);
}

} // namespace workbench

namespace krod {

VInputCreatorBase::~VInputCreatorBase() = default;

bool registerVInput(const std::type_info& inputType, VInputCreatorBase& creator) {
    // Asked outside the lock, so that a policy may look into the registry.
    const auto policy = workbench::currentPolicy();
    if (policy && !policy(creator, typenameOf(inputType))) return false;
    auto& registry = workbench::registry();
    const std::lock_guard lock(registry.mutex);
    registry.entries.push_back({inputType, &creator});
    return true;
}

void unregisterVInput(const std::type_info& inputType, VInputCreatorBase& creator) noexcept {
    auto& registry = workbench::registry();
    const std::lock_guard lock(registry.mutex);
    std::erase_if(registry.entries, [&](const workbench::Entry& entry) {
        return entry.inputType == inputType && entry.creator == &creator;
    });
}

} // namespace krod
