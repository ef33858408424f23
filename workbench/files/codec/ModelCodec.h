// SPDX-License-Identifier: Apache-2.0
// What the codec library for models offers.
#pragma once

#include "workbench/files/Model.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

/// Thrown for an import that needs more memory than there is.
struct MemoryNeeded {
    std::uint64_t bytes; ///< that suffice, as far as that is known
};

/// The one object of the codec library, which its C function `krodModelCodec` returns. It lives for ever.
class ModelCodec {
public:
    /// Imports a model in this process; throws std::exception with the importer's own words. Where the memory ends,
    /// or the model would take more than half of `memory`, throws MemoryNeeded.
    [[nodiscard]] virtual Model import(const std::filesystem::path& path, std::uint64_t memory) const = 0;

    /// The extensions of all formats that it reads, without the point.
    [[nodiscard]] virtual std::vector<std::string> extensions() const = 0;

protected:
    ~ModelCodec() = default;
};

} // namespace workbench
