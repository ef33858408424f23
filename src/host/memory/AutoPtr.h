// SPDX-License-Identifier: Apache-2.0
// The automatic-ownership holder.
#pragma once

#include <memory>

namespace krod {

/// Owns one object that is not reference counted, and deletes it with itself.
template <class T>
using AutoPtr = std::unique_ptr<T>;

} // namespace krod
