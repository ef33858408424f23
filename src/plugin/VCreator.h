// SPDX-License-Identifier: Apache-2.0
// The creator of one module class.
#pragma once

#include "host/core/VActionNotifier.h"
#include "host/core/VCreatorBase.h"
#include "host/core/Vprintf.h"

#include <cstdio>
#include <string>

namespace krod {

/// Makes objects of `Module`. `Extra` is the type of the module's second input, or void.
template <class Module, class Extra>
class VCreator : public VCreatorBase {
public:
    /// [load · copies] `texts` are VCreatorProperties, or the full key of a creator without properties.
    template <class Texts>
    VCreator(const Texts& texts, int order, const StrongPtr<VCreationPreferences>& preferences, bool hidden,
             const char* key)
        : VCreatorBase(texts, order, preferences, hidden, key) {
        Vprintf(100, "VCreator::VCreator(%s,%d)\n", keyname().c_str(), order);
        std::fflush(stdout);
    }
    /// [load] Asks the host to delete every object made here; then the base withdraws the creator.
    ~VCreator() override { deleteAllInstances(typeid(Module)); }

    [[nodiscard]] StrongPtr<VObject> create(const std::string& requested,
                                            VCreationContext& context) override {
        Vprintf(100, "VCreator::create(%s)\n", requested.c_str());
        const std::string& objectName = requested.empty() ? name() : requested;
        StrongPtr<VObject> result = (new Module(objectName, preferences()))->self();
        Vprintf(100, "VCreator::create(%s) got derived object\n", requested.c_str());
        result->setCreator(WeakPtr<VCreatorBase>(this));
        result->enableRequestProcessing();
        VActionNotifier::VObjectCreation(result, context, *this);
        return result;
    }
};

} // namespace krod
