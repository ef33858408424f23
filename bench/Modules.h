// SPDX-License-Identifier: Apache-2.0
// Both plug-ins, and objects made of them.
#pragma once

#include "workbench/core/PluginManager.h"

#include "host/core/VObject.h"
#include "host/rendering/ImageTileProcessor.h"

#include <string>
#include <vector>

namespace bench {

/// A parameter to set, as text.
struct Setting {
    std::string name, value;
};

/// Loads the plug-in and the workbench's own objects for its lifetime. Objects made here have to go before it.
class Modules {
public:
    Modules();

    /// An object of the first creator of a key, "Display/CMYK" or "Display/Depth@DisplayDepth", with parameters set;
    /// an empty reference when it is of another class. Throws std::runtime_error for an unknown key, name or value.
    template <class Class = krod::VObject>
    [[nodiscard]] krod::StrongPtr<Class> make(const std::string& key,
                                              const std::vector<Setting>& settings = {}) {
        return krod::castStrong<Class>(makeObject(key, settings));
    }

private:
    [[nodiscard]] static krod::StrongPtr<krod::VObject> makeObject(const std::string& key,
                                                                   const std::vector<Setting>& settings);

    workbench::PluginManager manager;
};

/// Sets a parameter's own value. Throws std::runtime_error for an unknown name and a text that does not parse.
void set(krod::VObject& object, const Setting& setting);

/// The tile processor of a module, brought up to date. Throws std::runtime_error when the module has none.
[[nodiscard]] krod::StrongPtr<krod::ImageTileProcessor> processorOf(krod::VObject& module);

/// What modules print on standard output goes nowhere while this lives.
class QuietOutput {
public:
    QuietOutput();
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
    ~QuietOutput();

private:
    int real;
};

} // namespace bench
