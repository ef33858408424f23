// SPDX-License-Identifier: Apache-2.0
#include "host/core/VSlotGlobals.h"

#include "host/core/VObject.h"
#include "host/memory/MemoryException.h"

namespace krod {

SlotAssertion::SlotAssertion(const std::string& slotName)
    : std::logic_error("Slot \"" + slotName + "\" was declared for no object.") {}

SlotAssertion::~SlotAssertion() = default;

void VSlotGlobals::assertionFail(const std::string& slotName) { throw SlotAssertion(slotName); }

StrongPtr<VParameter> VSlotGlobals::addParameter(VObject* that, const std::string& name, int expertLevel,
                                                 const StrongPtr<VParameter>& parameter,
                                                 const std::type_info& type, bool input) {
    if (!that) assertionFail(name);
    checkPointer(parameter, "VSlotGlobals::addParameter(parameter)");
    if (parameter->value().type() != type)
        throw std::invalid_argument("Slot \"" + name + "\" is of type " + typenameOf(type) +
                                    ", but its parameter is of type " + parameter->typeName() + '.');
    const bool added =
        input ? that->slots().addInput(name, expertLevel, parameter) : that->slots().addOutput(parameter);
    return added ? parameter : StrongPtr<VParameter>();
}

} // namespace krod
