// SPDX-License-Identifier: Apache-2.0
// Hollywood/TileProgram - runs a fragment shader that the user types. (catalogue row 15)
// Kept on purpose:
//   [G1] pi is cut to six decimals
#include "Announced.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::TileProgram {
namespace {

using namespace krod;

constexpr char DefaultProgram[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                                  "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                                  "\tgl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);\n}\n"; // [G1]

class TileShader : public VObject, public VSource<StrongPtr<krod::ImageTileProcessor>> {
public:
    class ImageTileProcessor : public tile::TextProcessor {
    public:
        using TextProcessor::TextProcessor;
    };

    TileShader(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<ImageTileProcessor>(DefaultProgram));
    }

    bool update(VRequest&, double) override { announcedOnly("Hollywood/TileProgram", "process pictures"); }

private:
    TypedSlot<std::string> code{this, "code", DefaultProgram, 0};
};

KROD_ROW(15)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<std::string>>
    registration(
        {.category = "Hollywood",
         .name = "TileProgram",
         .help = "Allows to execute a fragment shader program modifying the colors of each pixel. The "
                 "fragment shader "
                 "code in <A HREF=\"https://www.khronos.org/opengl/wiki/OpenGL_Shading_Language\">GLSL "
                 "language</A> "
                 "can be modified interactively.",
         .description = "Modify pixels using some shader code."},
        2000);

} // namespace
} // namespace plime::TileProgram
