// SPDX-License-Identifier: Apache-2.0
#include "tests/app/FakeModules.h"

#include <utility>

namespace workbench {
namespace {

using Pair = krod::FixedArray<double, 2>;

template <class T>
krod::StrongPtr<krod::VParameter> makeParameter(const std::string& name, T value) {
    return krod::StrongPtr<krod::VParameter>(
        new krod::VParameter(krod::makeValue<T>(std::move(value)), name, {}));
}

template <class T>
krod::VParameter& add(FakeModule& module, const std::string& name, T value, int level = 0) {
    const auto parameter = makeParameter<T>(name, std::move(value));
    module.slots().addInput(name, level, parameter);
    return *parameter;
}

template <class T>
void limit(krod::VParameter& parameter, const std::string& key, T value) {
    parameter.setProperty(key, krod::makeValue<T>(value), nullptr);
}

krod::VCreatorProperties textsOf(const std::string& category, const std::string& name,
                                 const std::string& source) {
    krod::VCreatorProperties texts;
    krod::VCreatorCategory(category).assign(texts);
    krod::VCreatorSource(source).assign(texts);
    krod::VCreatorName(name).assign(texts);
    krod::VCreatorHelp("Helps.").assign(texts);
    return texts;
}

} // namespace

FakeModule::FakeModule(const std::string& name, std::string detailed)
    : VObject(name), detailed(std::move(detailed)) {
    limit(add(*this, "samples", 8, 2), "max", 16);
    krod::VParameter& gain = add(*this, "gain", 1.0);
    limit(gain, "min", 3.0);
    limit(gain, "max", 20.0);
    krod::VParameter& width = add(*this, "width", 0);
    limit(width, "min", 0);
    limit(width, "max", 5);
    add(*this, "options", krod::FlagList("-glow -halo", ' '));
    add(*this, "code", std::string("void main() {}"));
    krod::VParameter& p = add(*this, "p", Pair(0.5, 0.5));
    limit(p, "min", Pair(0.0, 0.0));
    limit(p, "max", Pair(1.0, 1.0));
    slots().addOutput(makeParameter("level", 0.0));
}

std::string FakeModule::help(int level) const { return level == Detailed ? detailed : ""; }

FakeCreator::FakeCreator(const std::string& category, const std::string& name, const std::string& source)
    : VCreatorBase(textsOf(category, name, source), 7, {}, false, "KROD_API_VERSION") {}

FakeCreator::FakeCreator(const std::string& fullName)
    : VCreatorBase(fullName, -1000, {}, false, "KROD_API_VERSION") {}

krod::StrongPtr<krod::VObject> FakeCreator::create(const std::string& name, krod::VCreationContext&) {
    return krod::StrongPtr<krod::VObject>(new FakeModule(name, detailedHelp));
}

Catalogue registeredModules() {
    return Catalogue::registered([](LibraryId) -> const PluginStatus* { return nullptr; });
}

} // namespace workbench
