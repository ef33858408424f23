// SPDX-License-Identifier: Apache-2.0
// The plug-in as it ships, loaded for a test.
#pragma once

#include "host/core/VObject.h"
#include "host/rendering/ImageTileProcessor.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/PluginManager.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// Loads the plug-in for its own lifetime. Objects made here have to go before it.
class LoadedPlugin {
public:
    LoadedPlugin();

    /// An object of the only creator with that key, "Display/CMYK", as its class of the contract. Throws
    /// std::runtime_error when there is no such creator, or its objects are of another class.
    template <class Class = krod::VObject>
    [[nodiscard]] krod::StrongPtr<Class> make(const std::string& key) const {
        const auto made = krod::castStrong<Class>(makeObject(key));
        if (!made) throw std::runtime_error(key + " makes objects of another class");
        return made;
    }

private:
    [[nodiscard]] krod::StrongPtr<krod::VObject> makeObject(const std::string& key) const;

    workbench::PluginManager manager;
};

/// The parameter of that name. Throws std::runtime_error when the object has none.
[[nodiscard]] krod::VParameter& parameterOf(const krod::VObject& object, const std::string& name);
/// Sets the parameter's own value. Throws std::runtime_error when the text does not parse.
void setParameter(const krod::VObject& object, const std::string& name, const std::string& text);

/// Brings the object up to date with the pool; whether it reports success.
[[nodiscard]] bool update(krod::VObject& object, const krod::VValuePool& pool = {});

/// The processor in the output "ImageProcessor", or an empty reference.
[[nodiscard]] krod::StrongPtr<krod::ImageTileProcessor> processorOf(const krod::VObject& object);

/// Collects the warnings of plug-in and host for its own lifetime.
class Warnings : public workbench::ActionListener {
public:
    Warnings() : before(workbench::setActionListener(this)) {}
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;
    ~Warnings() override { workbench::setActionListener(before); }

    void warning(const std::string& text) override { texts.push_back(text); }

    std::vector<std::string> texts;

private:
    workbench::ActionListener* before;
};

} // namespace support
