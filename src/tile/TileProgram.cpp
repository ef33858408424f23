// SPDX-License-Identifier: Apache-2.0
// Hollywood/TileProgram - runs a fragment shader that the user types. (catalogue row 15)
// Kept on purpose:
//   [U1] pi is cut to six decimals
//   [U2] a new processor has the default program, not the pass-through of the others
//   [U3] the user's text is stored byte for byte, an empty one too, and not looked at
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::TileProgram {
namespace {

using namespace krod;

constexpr char DefaultProgram[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                                  "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                                  "\tgl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);\n}\n"; // [U1]

class TileShader : public VObject, public VSource<StrongPtr<krod::ImageTileProcessor>> {
public:
    class ImageTileProcessor : public tile::TextProcessor {
    public:
        using TextProcessor::TextProcessor;
    };

    TileShader(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<ImageTileProcessor>(DefaultProgram)); // [U2]
    }

    bool update(VRequest& request, double) override {
        std::string program = DefaultProgram;
        code.read(request.context(), program);
        tile::store<ImageTileProcessor>(outputValue(), [&] { return std::move(program); }); // [U3]
        return true;
    }

private:
    TypedSlot<std::string> code{this, "code", DefaultProgram, 0};
};

KROD_ROW(15)
CreatorRegistration<TileShader, void>
    creator({.category = "Hollywood",
             .name = "TileProgram",
             .help = "Allows to execute a fragment shader program modifying the colors of each pixel. The "
                     "fragment shader "
                     "code in <A HREF=\"https://www.khronos.org/opengl/wiki/OpenGL_Shading_Language\">GLSL "
                     "language</A> "
                     "can be modified interactively.",
             .description = "Modify pixels using some shader code."},
            2000);
KROD_ROW(15)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<std::string>>
    source(creator);

} // namespace
} // namespace plime::TileProgram
