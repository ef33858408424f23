// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ParameterPool.h"

#include "tests/support/LoadedPlugin.h"

#include <stdexcept>

namespace support {

ParameterPool& ParameterPool::set(const std::string& name, const std::string& text) {
    const krod::VParameter& parameter = parameterOf(object, name);
    const auto value = parameter.value().clone();
    const krod::TextResult result = value->setFromText(text);
    if (!result) throw std::runtime_error(name + ": expected " + result.expected + ", got " + text);
    pool.set(parameter, value);
    return *this;
}

ParameterPool& ParameterPool::setValue(const std::string& name,
                                       const krod::StrongPtr<krod::VValueBase>& value) {
    const krod::VParameter& parameter = parameterOf(object, name);
    if (value->type() != parameter.value().type())
        throw std::runtime_error(name + ": expected " + parameter.typeName() + ", got " + value->typeName());
    pool.set(parameter, value);
    return *this;
}

ParameterPool& ParameterPool::makeUnreadable(const std::string& name) {
    pool.makeUnreadable(parameterOf(object, name));
    return *this;
}

} // namespace support
