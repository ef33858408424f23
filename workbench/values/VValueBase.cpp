// SPDX-License-Identifier: Apache-2.0
#include "host/values/VValueBase.h"

namespace krod {

VValueBase::~VValueBase() = default;

template class TypedValue<int>;
template class TypedValue<double>;
template class TypedValue<bool>;
template class TypedValue<std::string>;
template class TypedValue<FlagList>;
template class TypedValue<FixedArray<double, 2>>;

} // namespace krod
