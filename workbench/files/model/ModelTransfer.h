// SPDX-License-Identifier: Apache-2.0
// A model on its way from the importing process to this one.
#pragma once

#include "workbench/files/codec/ModelCodec.h"

#include <string>
#include <variant>

namespace workbench {

/// The result of an import: the model, or why there is none: in the importer's words, or for want of memory.
using ImportResult = std::variant<Model, std::string, MemoryNeeded>;

/// Writes a result into the file behind `descriptor`; false when it does not fit there.
[[nodiscard]] bool sendResult(const ImportResult& result, int descriptor);

/// Reads it from the file's start. Sizes and indices are checked; anything wrong is std::runtime_error, since
/// the importing process may have gone astray.
[[nodiscard]] ImportResult receiveResult(int descriptor);

} // namespace workbench
