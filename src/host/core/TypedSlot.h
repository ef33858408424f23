// SPDX-License-Identifier: Apache-2.0
// Typed slots: how modules, and the host's own bases of modules, declare their parameters.
#pragma once

#include "host/core/TypeRegistration.h"
#include "host/core/VObject.h"
#include "host/core/VSlotGlobals.h"
#include "host/core/VValuePool.h"
#include "host/memory/MemoryException.h"

#include <cstdio>
#include <optional>
#include <string>

namespace krod {

/// What user interfaces offer of a parameter. A limit that is left out is not set; nothing clamps to those
/// that are.
template <class T>
struct Limits {
    std::optional<T> min = {}, max = {};
};

/// One parameter of a module, declared as a member. The order of the members is the order in which the host
/// lists them.
template <class T>
class TypedSlot {
public:
    /// Makes free-standing parameters of the slot's type.
    class SlotCreator : public TypedSlotCreator {
    public:
        [[nodiscard]] StrongPtr<VParameter> create(const std::string& name) const override {
            return StrongPtr<VParameter>(new VParameter(makeValue(T{}), name, {}));
        }
    };
    using Registration = SlotRegistration<T, SlotCreator>;

    /// [host · copies] Declares an input parameter of the object. Level 0 is an everyday setting. Throws
    /// SlotAssertion without an object, PointerException when the object has a parameter of that name.
    TypedSlot(VObject* that, const std::string& name, const T& initialValue, int expertLevel,
              const Limits<T>& limits = {}) {
        if (!that) VSlotGlobals::assertionFail(name);
        const StrongPtr<VParameter> made(new VParameter(makeValue(initialValue), name, {}));
        made->setCreator(that);
        parameter = VSlotGlobals::addParameter(that, name, expertLevel, made, typeid(T), true);
        checkPointer(parameter,
                     "TypedSlot(VObject*that, const string&name, const T&initialValue, int expertLevel");
        parameter->clearState(VParameter::ValueSet);
        setLimits(limits);
    }
    TypedSlot(const TypedSlot&) = delete;
    TypedSlot& operator=(const TypedSlot&) = delete;
    /// [host] Looks whether the type's creators were registered, and says so when not.
    ~TypedSlot() {
        if (Registration::wasRegistered())
            ++TypedSlotCreator::InternalTypeCreatorAccessory;
        else
            std::puts("Typeslot has a problem, its creators were not registered!?");
    }

    /// [host · shares] Attaches the limits as the properties "min" and "max". Displays do so with the slot,
    /// tile modules after their output.
    void setLimits(const Limits<T>& limits) {
        if (limits.min) parameter->setProperty("min", makeValue(*limits.min), nullptr);
        if (limits.max) parameter->setProperty("max", makeValue(*limits.max), nullptr);
    }

    /// [host · copies] Gives the current value in a pool, the initial one where none was set. Where the
    /// parameter is not readable the argument keeps what it holds, the module's fallback, and the answer is
    /// false.
    bool read(const VValuePool& pool, T& value) const {
        const VParameter::LocalValue local = parameter->getLocalValue(pool);
        const auto* typed = dynamic_cast<const TypedValue<T>*>(local.value.get());
        if (!typed) return false;
        value = typed->value();
        return true;
    }

private:
    StrongPtr<VParameter> parameter;
};

} // namespace krod
