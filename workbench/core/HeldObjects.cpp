// SPDX-License-Identifier: Apache-2.0
#include "workbench/core/HeldObjects.h"

#include "workbench/memory/LivingObjects.h"

#include <algorithm>

namespace workbench {
namespace {

/// An object of the library that is neither a creator nor a module, with the references that outputs have.
struct Candidate {
    LivingObject living;
    std::int64_t heldByOutputs = 0;
};

std::int64_t references(const krod::ReferenceBase& object) {
    return object.referenceCount().strongReferences();
}

/// Adds what the value of an output holds. A copy of the value holds exactly what the value holds, so that
/// the counts tell it whatever the value's type is. Says whether it holds anything.
bool addReferencesOf(const krod::VValueBase& value, std::vector<Candidate>& candidates) {
    const auto copy = value.clone();
    bool any = false;
    for (Candidate& candidate : candidates) {
        const std::int64_t more = references(*candidate.living.object) - candidate.living.strongReferences;
        candidate.heldByOutputs += more;
        any = any || more > 0;
    }
    return any;
}

bool isAmong(const std::vector<krod::StrongPtr<krod::VObject>>& modules, const krod::VObject& object) {
    return std::any_of(modules.begin(), modules.end(),
                       [&object](const auto& module) { return module.get() == &object; });
}

} // namespace

std::map<std::string, std::size_t>
heldObjects(const std::function<bool(const void* virtualTable)>& isOfLibrary,
            const std::vector<krod::StrongPtr<krod::VObject>>& modules) {
    std::vector<Candidate> candidates;
    for (LivingObject& living : livingObjects(isOfLibrary)) {
        const auto* module = dynamic_cast<const krod::VObject*>(living.object);
        if (living.inStaticStorage || (module != nullptr && isAmong(modules, *module))) continue;
        candidates.push_back({std::move(living)});
    }

    std::map<std::string, std::size_t> held;
    for (const auto& module : modules)
        for (const auto& output : module->slots().outputs()) {
            const krod::VValueBase& value = output.parameter->value();
            const bool onlyByParameter = references(value) == 1;
            if (addReferencesOf(value, candidates) && !onlyByParameter)
                ++held[krod::typenameOf(typeid(value))];
        }
    for (const Candidate& candidate : candidates)
        if (candidate.living.strongReferences > candidate.heldByOutputs) ++held[candidate.living.typeName];
    return held;
}

} // namespace workbench
