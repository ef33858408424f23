// SPDX-License-Identifier: Apache-2.0
// What a module gives out.
#pragma once

#include "host/core/VObject.h"
#include "host/memory/MemoryException.h"

#include <string>

namespace krod {

/// A module with one output of type T.
template <class T>
class VSource {
protected:
    VSource() = default;
    ~VSource() = default;

    /// [host · copies] Wraps the value, stamped with the current age, in an output parameter of that name,
    /// makes the object its source and registers it in the object's slot container. Once, after the object's
    /// own parameters.
    void makeOutput(VObject* that, const std::string& name, const T& value) {
        output = StrongPtr<VParameter>(new VParameter(makeValue(value), name, {}));
        output->setCreator(that);
        checkPointer(that->slots().addOutput(output),
                     "VSource(VObject*that, const string&name, const T&value");
    }

    /// [host · copies] What the output holds; an empty T where the host has taken it away.
    [[nodiscard]] T outputValue() const {
        const auto* typed = dynamic_cast<const TypedValue<T>*>(&output->value());
        return typed ? typed->value() : T{};
    }

private:
    StrongPtr<VParameter> output;
};

} // namespace krod
