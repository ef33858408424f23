// SPDX-License-Identifier: Apache-2.0
// What all slots share.
#pragma once

#include "host/core/VParameter.h"

#include <stdexcept>
#include <string>
#include <typeinfo>

namespace krod {

class VObject;

/// Raised by VSlotGlobals::assertionFail.
class KROD_API SlotAssertion : public std::logic_error {
public:
    /// [any · copies]
    explicit SlotAssertion(const std::string& slotName);
    ~SlotAssertion() override;
};

/// Registration of slots with their object.
class KROD_API VSlotGlobals {
public:
    /// [host · borrows] Reports a slot that was declared for no object. Throws SlotAssertion with the slot's
    /// name.
    [[noreturn]] static void assertionFail(const std::string& slotName);

    /// [host · shares] Registers a parameter of a type with its object, as an input when `input` is true,
    /// else as an output. Returns the registered parameter, or an empty reference when the object has another
    /// of that name. Throws SlotAssertion without an object, PointerException without a parameter and
    /// std::invalid_argument when the parameter is of another type.
    static StrongPtr<VParameter> addParameter(VObject* that, const std::string& name, int expertLevel,
                                              const StrongPtr<VParameter>& parameter,
                                              const std::type_info& type, bool input);
};

} // namespace krod
