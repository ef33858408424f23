// SPDX-License-Identifier: Apache-2.0
// What the tile processors share.
#pragma once

#include "host/gl/GLImageTileProcessor.h"
#include "plugin/VSource.h"

#include <string>
#include <utility>

namespace plime::tile {

using krod::StrongPtr;

/// The one output of every tile module.
inline constexpr char OutputName[] = "ImageProcessor";

/// The program of a new shader processor: pictures pass unchanged until the module is updated.
inline constexpr char PassThrough[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                                      "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                                      "\tgl_FragColor = Color;\n}\n";

/// A shader processor: one text, replaced by its module's update. Each module nests a class of its own over
/// it, so that the five have types of their own.
class TextProcessor : public krod::GLImageTileProcessor {
public:
    /// [host · copies]
    explicit TextProcessor(std::string program) : text(std::move(program)) {}

    /// [host · copies] Replaces the text; the host sees it with the next tile.
    void store(std::string program) { text = std::move(program); }
    [[nodiscard]] std::string shaderCode() const override { return text; }

private:
    std::string text;
};

/// [host · gives] A new processor as the value of the output.
template <class Processor, class... Arguments>
[[nodiscard]] StrongPtr<krod::ImageTileProcessor> processor(Arguments&&... arguments) {
    return StrongPtr<krod::ImageTileProcessor>(new Processor(std::forward<Arguments>(arguments)...));
}

/// [host · shares] Stores the program that `compose` gives in the processor that an output holds. Where it holds
/// none, nothing is composed.
template <class Processor, class Compose>
void store(const StrongPtr<krod::ImageTileProcessor>& held, Compose compose) {
    if (auto* processor = dynamic_cast<Processor*>(held.get())) processor->store(compose());
}

} // namespace plime::tile
