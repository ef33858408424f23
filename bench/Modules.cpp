// SPDX-License-Identifier: Apache-2.0
#include "Modules.h"

#include "workbench/core/CreatorRegistry.h"

#include "host/core/VCreatorBase.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace bench {

using namespace krod;

Modules::Modules() {
    manager.load(TOVAR_PLIME);
    manager.load(WORKBENCH_OBJECTS);
}

StrongPtr<VObject> Modules::makeObject(const std::string& key, const std::vector<Setting>& settings) {
    const auto found = workbench::CreatorRegistry::find(key);
    if (found.empty()) throw std::runtime_error(key + ": no such module");
    VCreationContext context;
    auto made = found.front().creator->create("", context);
    for (const Setting& setting : settings) set(*made, setting);
    return made;
}

void set(VObject& object, const Setting& setting) {
    const auto parameter = object.slots().input(setting.name);
    if (!parameter || !parameter->setValueFromText(setting.value))
        throw std::runtime_error(object.name() + ": cannot set " + setting.name + " to " + setting.value);
}

StrongPtr<ImageTileProcessor> processorOf(VObject& module) {
    const VValuePool pool;
    VRequest request(pool);
    module.update(request, 0);
    using Value = TypedValue<StrongPtr<ImageTileProcessor>>;
    const auto output = module.slots().output("ImageProcessor");
    const auto* value = output ? dynamic_cast<const Value*>(&output->value()) : nullptr;
    if (!value || !value->value()) throw std::runtime_error(module.name() + " gives no tile processor");
    return value->value();
}

QuietOutput::QuietOutput() : real((std::fflush(stdout), dup(1))) {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, 1);
    close(nowhere);
}

QuietOutput::~QuietOutput() {
    std::fflush(stdout);
    dup2(real, 1);
    close(real);
}

} // namespace bench
