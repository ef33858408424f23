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
    : own(std::move(value)), text(std::move(name)), preferences(std::move(preferences)) {
    checkPointer(own, "VParameter::VParameter(value)");
}

VParameter::~VParameter() = default;

void VParameter::setCreator(VObject* owner) noexcept { object = WeakPtr<VObject>(owner); }

StrongPtr<VObject> VParameter::creator() const noexcept { return object.lock(); }

void VParameter::setProperty(const std::string& key, const StrongPtr<VValueBase>& value,
                             VPropertyNotifier* notifier) {
    checkPointer(value, "VParameter::setProperty(value)");
    if (value->type() != own->type())
        throw std::invalid_argument("Property \"" + key + "\" of parameter \"" + text +
                                    "\" must be of type " + own->typeName() + ", but the value is of type " +
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
    if (found == pool.local.end()) return {own, (bits & ValueSet) != 0};
    return {found->second, bool(found->second)};
}

TextResult VParameter::setValueFromText(std::string_view newText) {
    // Whoever holds the old value keeps it as it was.
    StrongPtr<VValueBase> read = own->clone();
    TextResult result = read->setFromText(newText);
    if (result) setValue(read);
    return result;
}

bool VParameter::setValue(const StrongPtr<VValueBase>& value) {
    if (!value || value->type() != own->type()) return false;
    own = value;
    setState(ValueSet);
    return true;
}

bool VParameter::setGlobalValue(const VValueBase& variable) {
    if (variable.type() != own->type()) return false;
    Vprintf(50, "VParameter::setGlobalValue() got variable with %s\n", variable.text().c_str());
    return setValue(variable.clone());
}

} // namespace krod
