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
    for (const WeakPtr<VObject>& known : workbench::ObjectRegistry::objects()) {
        // The reference is kept over the deletion: the count cannot come to zero, and so not delete once
        // more.
        const StrongPtr<VObject> object = known.lock();
        if (!object || object->creator().get() != this) continue;
        VObject* const instance = object.get();
        if (typeid(*instance) == type) delete instance;
    }
}

} // namespace krod
