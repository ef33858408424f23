// SPDX-License-Identifier: Apache-2.0
// The plug-ins as they ship, loaded for the tests of one program.
#pragma once

#include "apps/plime/modules/Catalogue.h"

namespace workbench {

/// What the post-processing modules and the workbench's own modules register; they stay loaded.
[[nodiscard]] const Catalogue& shippedModules();

/// The fifteen post-processing modules among them.
[[nodiscard]] std::vector<CatalogueEntry> postProcessingModules();

} // namespace workbench
