// SPDX-License-Identifier: Apache-2.0
#include "host/core/VCreatorProperties.h"

namespace krod {

VCreatorPropertyBase::VCreatorPropertyBase(Field field, std::string text)
    : field(field), text(std::move(text)) {}

VCreatorPropertyBase::~VCreatorPropertyBase() = default;

void VCreatorPropertyBase::assign(VCreatorProperties& properties) const { properties.*field = text; }

std::string VCreatorPropertyBase::keyname(const VCreatorProperties& properties,
                                          const std::string& separator) {
    const std::string name = properties.name.value_or("");
    return properties.category ? *properties.category + separator + name : name;
}

} // namespace krod
