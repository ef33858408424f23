// SPDX-License-Identifier: Apache-2.0
#include "host/core/VParameter.h"

#include "host/core/VObject.h"
#include "host/core/VValuePool.h"
#include "host/core/Vprintf.h"
#include "host/memory/MemoryException.h"

#include <stdexcept>

namespace krod {

VPropertyNotifier::~VPropertyNotifier() = default;

VParameter::VParameter(StrongPtr<VValueBase> value, std::string name,
                       StrongPtr<VCreationPreferences> preferences)
    : own(new Own{std::move(value)}), text(std::move(name)), preferences(std::move(preferences)) {
    checkPointer(own->value, "VParameter::VParameter(value)");
}

VParameter::~VParameter() = default;

void VParameter::setCreator(VObject* owner) noexcept { object = WeakPtr<VObject>(owner); }

StrongPtr<VObject> VParameter::creator() const noexcept { return object.lock(); }

void VParameter::setProperty(const std::string& key, const StrongPtr<VValueBase>& value,
                             VPropertyNotifier* notifier) {
    checkPointer(value, "VParameter::setProperty(value)");
    if (value->type() != own->value->type())
        throw std::invalid_argument("Property \"" + key + "\" of parameter \"" + text +
                                    "\" must be of type " + typeName() + ", but the value is of type " +
                                    value->typeName() + '.');
    properties[key] = value;
    if (notifier) notifier->propertyChanged(key);
}

StrongPtr<VValueBase> VParameter::property(const std::string& key) const noexcept {
    const auto found = properties.find(key);
    return found == properties.end() ? StrongPtr<VValueBase>() : found->second;
}

VParameter::LocalValue VParameter::getLocalValue(const VValuePool& pool) const noexcept {
    const auto found = pool.local.find(this);
    if (found == pool.local.end()) return {own->value, own->set};
    return {found->second, bool(found->second)};
}

TextResult VParameter::setValueFromText(std::string_view newText) {
    // Whoever holds the old value keeps it as it was.
    const StrongPtr<VValueBase> read = own->value->clone();
    TextResult result = read->setFromText(newText);
    if (result) setValue(read);
    return result;
}

bool VParameter::setValue(const StrongPtr<VValueBase>& value) {
    if (!value || value->type() != own->value->type()) return false;
    *own = {value, true};
    return true;
}

bool VParameter::setGlobalValue(const VValueBase& variable) {
    if (variable.type() != own->value->type()) return false;
    Vprintf(50, "VParameter::setGlobalValue() got variable with %s\n", variable.text().c_str());
    return setValue(variable.clone());
}

bool VParameter::shareValue(VParameter& other) {
    if (other.own->value->type() != own->value->type()) return false;
    own = other.own;
    return true;
}

void VParameter::unshareValue() { own.reset(new Own{own->value->clone(), own->set}); }

} // namespace krod
