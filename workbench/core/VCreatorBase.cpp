// SPDX-License-Identifier: Apache-2.0
#include "host/core/VCreatorBase.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"

namespace krod {

namespace {

/// The record of the name form: the full key stands in the name, and there is no category.
VCreatorProperties nameOnly(const std::string& keyname) {
    VCreatorProperties properties;
    properties.name = keyname;
    return properties;
}

} // namespace

VCreationContext::~VCreationContext() = default;

VCreationPreferences::~VCreationPreferences() = default;

VCreatorBase::VCreatorBase(const VCreatorProperties& properties, int order,
                           const StrongPtr<VCreationPreferences>& preferences, bool hidden,
                           const char* /*key*/)
    : record(properties),
      own(properties.name.value_or("")),
      rank(order),
      wishes(preferences),
      concealed(hidden) {
    keepInStaticStorage();
    workbench::CreatorRegistry::add(*this);
}

VCreatorBase::VCreatorBase(const std::string& keyname, int order,
                           const StrongPtr<VCreationPreferences>& preferences, bool hidden, const char* key)
    : VCreatorBase(nameOnly(keyname), order, preferences, hidden, key) {}

VCreatorBase::~VCreatorBase() { workbench::CreatorRegistry::remove(*this); }

void VCreatorBase::deleteAllInstances(const std::type_info& type) noexcept {
    using workbench::ObjectRegistry;
    for (std::size_t place = 0; place < ObjectRegistry::count();) {
        // The reference is kept over the deletion: the count cannot come to zero, and so not delete once
        // more.
        const StrongPtr<VObject> object = ObjectRegistry::object(place).lock();
        VObject* const instance = object.get();
        if (!instance || instance->creator().get() != this || typeid(*instance) != type) {
            ++place;
            continue;
        }
        const std::size_t before = ObjectRegistry::count();
        delete instance;
        // The next one has moved up; where others went along, which may have stood before it, from the start.
        if (ObjectRegistry::count() + 1 != before) place = 0;
    }
}

} // namespace krod
