// SPDX-License-Identifier: Apache-2.0
// What the codec library for models offers.
#pragma once

#include "workbench/files/Model.h"

namespace workbench {

/// The one object of the codec library, which its C function `krodModelCodec` returns. It lives for ever.
class ModelCodec {
public:
    /// Imports a model in this process, without any limit; throws std::exception with the importer's own
    /// words.
    [[nodiscard]] virtual Model import(const std::filesystem::path& path) const = 0;

protected:
    ~ModelCodec() = default;
};

} // namespace workbench
