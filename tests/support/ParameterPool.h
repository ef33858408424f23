// SPDX-License-Identifier: Apache-2.0
// A value pool that is filled by parameter name.
#pragma once

#include "host/core/VObject.h"
#include "host/core/VValuePool.h"

#include <string>

namespace support {

/// The context in which one object is asked. The object has to outlive it.
class ParameterPool {
public:
    explicit ParameterPool(const krod::VObject& object) : object(object) {}

    /// Gives a parameter a value in this pool only. Throws std::runtime_error for an unknown name or a text
    /// that does not parse.
    ParameterPool& set(const std::string& name, const std::string& text);
    /// Gives a parameter a value that may have no text form, such as NaN. Throws std::runtime_error for an
    /// unknown name or a value of another type.
    ParameterPool& setValue(const std::string& name, const krod::StrongPtr<krod::VValueBase>& value);
    /// Makes a parameter unreadable here. Throws std::runtime_error for an unknown name.
    ParameterPool& makeUnreadable(const std::string& name);

    operator const krod::VValuePool&() const noexcept { return pool; }

private:
    const krod::VObject& object;
    krod::VValuePool pool;
};

} // namespace support
