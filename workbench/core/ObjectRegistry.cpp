// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/ObjectRegistry.h"

#include <mutex>
#include <new>

namespace workbench {

namespace {

struct Registry {
    std::mutex mutex;
    std::vector<krod::WeakPtr<krod::VObject>> objects;
};

/// Never destroyed: objects may outlive every static object. Made without memory, since a library that is
/// unloaded asks before any object may have been made.
Registry& registry() noexcept {
    alignas(Registry) static unsigned char place[sizeof(Registry)];
    static Registry& living = *new (place) Registry;
    return living;
}

} // namespace

std::vector<krod::WeakPtr<krod::VObject>> ObjectRegistry::objects() {
    const std::lock_guard lock(registry().mutex);
    return registry().objects;
}

std::size_t ObjectRegistry::count() noexcept {
    const std::lock_guard lock(registry().mutex);
    return registry().objects.size();
}

krod::WeakPtr<krod::VObject> ObjectRegistry::object(std::size_t place) noexcept {
    const std::lock_guard lock(registry().mutex);
    return place < registry().objects.size() ? registry().objects[place] : krod::WeakPtr<krod::VObject>();
}

void ObjectRegistry::enter(krod::VObject& object) {
    const std::lock_guard lock(registry().mutex);
    registry().objects.emplace_back(&object);
}

void ObjectRegistry::leave(krod::VObject& object) noexcept {
    const krod::WeakPtr<krod::VObject> leaving(&object);
    const std::lock_guard lock(registry().mutex);
    std::erase(registry().objects, leaving);
}

} // namespace workbench
