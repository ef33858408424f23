// SPDX-License-Identifier: Apache-2.0
// From the INPUT of a command line to an object that can be drawn.
#pragma once

#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/terminal/Report.h"

#include "host/rendering/BoundingSphere.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// What the names of demos begin with.
inline constexpr std::string_view DemoPrefix = "demo:";

/// The object of "demo:NAME", or of a file of points, a model or a picture, with the file's name set. Throws
/// Failure(Usage) for an unknown demo, Failure(Input) for a file that cannot be read, Failure(Plugin) where
/// the module for it is not loaded.
[[nodiscard]] std::unique_ptr<ModuleInstance> makeSceneInput(const Catalogue& catalogue,
                                                             const std::string& input);

/// Warns of an input without extent: nothing of it can be seen. Points need none.
void warnOfNothingToDraw(Report& report, const ModuleInstance& scene, const std::string& input,
                         const krod::BoundingSphere& bounds);

/// Notes what is good to know of the file that is drawn.
void noteContent(Report& report, const ModuleInstance& scene, const std::string& input);

/// One line per demo: "demo:NAME  what it shows".
[[nodiscard]] std::string demoList(const Catalogue& catalogue);

} // namespace workbench
