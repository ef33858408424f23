// SPDX-License-Identifier: Apache-2.0
// All creators, in the order of their registration.
#pragma once

#include "host/core/VCreatorBase.h"
#include "workbench/memory/LibraryScope.h"

#include <string_view>
#include <vector>

namespace workbench {

/// One registered creator.
struct CreatorEntry {
    krod::VCreatorBase* creator; ///< lives as long as it is registered
    LibraryId library;           ///< who registered it
};

/// The creator registry. Keys may occur more than once ("Display/Depth"): every entry is kept.
class KROD_API CreatorRegistry {
public:
    /// All entries in the order of registration.
    [[nodiscard]] static std::vector<CreatorEntry> entries();
    /// The entries of one key, "Display/Depth", or of one key and source, "Display/Depth@DisplayDepth".
    [[nodiscard]] static std::vector<CreatorEntry> find(std::string_view keyAndSource);
    /// Registers and withdraws; called by krod::VCreatorBase.
    static void add(krod::VCreatorBase& creator);
    static void remove(krod::VCreatorBase& creator) noexcept;
};

} // namespace workbench
