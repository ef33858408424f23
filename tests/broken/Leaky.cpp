// SPDX-License-Identifier: Apache-2.0
// A plug-in that never withdraws its creator.
#include "plugin/ApiKey.h"
#include "plugin/VCreator.h"

namespace {

using namespace krod;

class Module : public VObject {
public:
    Module(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {}
};

const auto& creator = *new VCreator<Module, void>(std::string("Broken/Leaky"), 0,
                                                  StrongPtr<VCreationPreferences>(), false, ApiKey);

} // namespace
