// SPDX-License-Identifier: Apache-2.0
#include "host/core/VSlotContainer.h"

#include "host/memory/MemoryException.h"
#include "host/values/VValueCreator.h"

#include <algorithm>

namespace krod {

namespace {

template <class Slots>
StrongPtr<VParameter> parameterNamed(const Slots& slots, std::string_view name) noexcept {
    const auto found =
        std::ranges::find(slots, name, [](const auto& slot) { return std::string_view(slot.name); });
    return found == slots.end() ? StrongPtr<VParameter>() : found->parameter;
}

} // namespace

bool VSlotContainer::addInput(const std::string& name, int expertLevel,
                              const StrongPtr<VParameter>& parameter) {
    checkPointer(parameter, "VSlotContainer::addInput(parameter)");
    if (input(name)) return false;
    inputList.push_back({name, expertLevel, parameter});
    return true;
}

void VSlotContainer::addSink(const std::string& name, const std::string& typeName) {
    if (std::ranges::find(sinkList, name, &Sink::name) == sinkList.end())
        sinkList.push_back({name, typeName});
}

bool VSlotContainer::addOutput(const StrongPtr<VParameter>& parameter) {
    checkPointer(parameter, "VSlotContainer::addOutput(parameter)");
    if (output(parameter->name())) return false;
    outputList.push_back({parameter->name(), parameter});
    return true;
}

StrongPtr<VParameter> VSlotContainer::input(std::string_view name) const noexcept {
    return parameterNamed(inputList, name);
}

StrongPtr<VParameter> VSlotContainer::output(std::string_view name) const noexcept {
    return parameterNamed(outputList, name);
}

AcceptInfoList VSlotContainer::getAcceptInfoList(const std::type_info& type) const {
    AcceptInfoList accepted;
    for (const Output& output : outputList)
        if (output.parameter->value().type() == type)
            accepted.push_back({output.name, output.parameter->typeName(), 0});
    return accepted;
}

void VSlotContainer::clearOutputs() noexcept {
    for (const Output& output : outputList) {
        const VValueCreator* const creator = VValueCreator::find(output.parameter->typeName());
        if (!creator) continue;
        *output.parameter->own = {creator->create(), false}; // connected parameters let go of it, too
    }
}

} // namespace krod
