// SPDX-License-Identifier: Apache-2.0
// What can be done with any module: set it, update it, read its shader texts, let it draw and process.
#pragma once

#include "host/core/VObject.h"
#include "host/core/VValuePool.h"
#include "host/gl/MSDeferredObjectDisplay.h"
#include "host/rendering/ImageTileProcessor.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/validate/Trial.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace workbench::validate {

using Object = krod::StrongPtr<krod::VObject>;
using Value = krod::StrongPtr<krod::VValueBase>;
using Pixels = std::vector<krod::RGBAHalf>;

/// The values that people would give the parameter: the initial one, the limits, three drawn within them.
/// Without limits values are drawn around the initial one; a text has its initial value only.
[[nodiscard]] std::vector<Value> usualValues(const krod::VParameter& parameter, Trial& trial);
/// The values that only programs and broken files give: infinities, numbers just beyond the limits or far out
/// where there are none, odd lists of flags, long texts.
[[nodiscard]] std::vector<Value> hostileValues(const krod::VParameter& parameter);
/// "name = text", for messages; a long text is cut.
[[nodiscard]] std::string settingText(const krod::VParameter& parameter, const krod::VValueBase& value);

/// Brings the object up to date with the pool; what it reports.
bool update(krod::VObject& object, const krod::VValuePool& pool = {});
/// Whether a module can honestly refuse to work yet: it has an empty text parameter, such as the name of a
/// file.
[[nodiscard]] bool waitsForText(const krod::VObject& object);
/// The processor in the first output that holds one, or an empty reference.
[[nodiscard]] krod::StrongPtr<krod::ImageTileProcessor> processorOf(const krod::VObject& object);
/// The shader texts of a module after an update, with its parameters read in the pool; none for modules
/// without shaders. Needs no OpenGL. Throws what the module throws.
[[nodiscard]] std::vector<std::string> shaderTexts(krod::VObject& object, const krod::VValuePool& pool = {});

/// A session on the device of the trial. Throws Skipped where there is no OpenGL.
[[nodiscard]] std::unique_ptr<RenderSession> openSession(const Trial& trial);
/// Whether the object draws: a display, or a source of something to display.
[[nodiscard]] bool draws(const krod::VObject& object);
/// One small picture of the object, over a simple scene if it is a display. Throws what it throws.
[[nodiscard]] Pixels draw(RenderSession& session, krod::VObject& object, const krod::VValuePool& pool = {},
                          int width = 64, int height = 64);
/// Gives a display a simple scene as its input; does nothing for other objects.
void connectScene(krod::VObject& object);

/// Lets the object's processor work on a copy of the pixels, as a tile of that size. Throws what it throws.
[[nodiscard]] Pixels process(krod::VObject& object, Pixels pixels, int width, int height,
                             const krod::VValuePool& pool = {});
/// Pixels from 0 to 4 with alpha from 0 to 1, drawn by the trial.
[[nodiscard]] Pixels drawPixels(Trial& trial, std::size_t count);
/// Whether two lists of pixels have the same bits.
[[nodiscard]] bool sameBits(const Pixels& a, const Pixels& b);

} // namespace workbench::validate
