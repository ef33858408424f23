// SPDX-License-Identifier: Apache-2.0
#include "tests/support/LoadedPlugin.h"

#include "workbench/core/CreatorRegistry.h"

namespace support {

LoadedPlugin::LoadedPlugin() { manager.load(TOVAR_PLIME); }

krod::StrongPtr<krod::VObject> LoadedPlugin::makeObject(const std::string& key) const {
    const auto found = workbench::CreatorRegistry::find(key);
    if (found.size() != 1) throw std::runtime_error("not exactly one creator: " + key);
    krod::VCreationContext context;
    return found.front().creator->create("", context);
}

krod::VParameter& parameterOf(const krod::VObject& object, const std::string& name) {
    const auto parameter = object.slots().input(name);
    if (!parameter) throw std::runtime_error(object.name() + " has no parameter " + name);
    return *parameter;
}

void setParameter(const krod::VObject& object, const std::string& name, const std::string& text) {
    const krod::TextResult result = parameterOf(object, name).setValueFromText(text);
    if (!result) throw std::runtime_error(name + ": expected " + result.expected + ", got " + text);
}

bool update(krod::VObject& object, const krod::VValuePool& pool) {
    krod::VRequest request(pool);
    return object.update(request, 0);
}

krod::StrongPtr<krod::ImageTileProcessor> processorOf(const krod::VObject& object) {
    const auto output = object.slots().output("ImageProcessor");
    if (!output) return {};
    using Value = krod::TypedValue<krod::StrongPtr<krod::ImageTileProcessor>>;
    const auto* value = dynamic_cast<const Value*>(&output->value());
    return value ? value->value() : krod::StrongPtr<krod::ImageTileProcessor>();
}

} // namespace support
