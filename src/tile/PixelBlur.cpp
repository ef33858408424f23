// SPDX-License-Identifier: Apache-2.0
// Hollywood/PixelBlur - blurs with a square grid of Gaussian weights. (catalogue row 12)
//     sum over i, j = 0 ... n of brightness exp(-r^2) / n^2 frame(t + o / (50 sharpness)),
//     o = ((i, j) - n/2) / n, r = |o|, n = width
// Kept on purpose:
//   [L1] the fallbacks are 5, 1.0 and 1.0, not the initial 3, 1.5 and 1.5
//   [L2] "brightness" and "sharpness" have a maximum and no minimum, and no limit holds here
//   [L3] the names of the constants are padded with blanks, and the body begins with a line break
//   [L4] (n + 1)^2 samples are divided by n^2 and the weights are not normalised: the gain is the user's to set
//   [L5] integers and reals are mixed, which needs a dialect that converts
//   [L6] the grid is measured in shares of the tile, not in pixels
//   [L7] "width" 0 and "sharpness" 0 divide by zero
//   [L8] alpha is blurred like the colours
#include "tile/TileFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"

namespace plime::PixelBlur {
namespace {

using namespace krod;

constexpr char Body[] =
    "\nuniform sampler2D frame;\nvoid main (void)\n{\n" // [L3]
    "vec4 Color = vec4(0.0, 0.0, 0.0, 0.0);\n"
    "float FW = float(FilterWidth);\n"
    "\tfor(int i=0; i<=FilterWidth; i++)\n"
    "\tfor(int j=0; j<=FilterWidth; j++)\n"
    "\t{\n"
    "\tvec2 offset = vec2( float(i-FilterWidth*0.5)/FW, float(j-FilterWidth*0.5)/FW );\n" // [L5]
    "\tfloat r2 = dot(offset, offset);\n"
    "\tfloat weight = FilterBrightness*exp(-r2)/(FW*FW);\n" // [L4] [L7]
    "\t\toffset /= FilterSharpness*50.0;\n"                 // [L6]
    "\t\tColor += weight*texture2D(frame, gl_TexCoord[0].xy + offset);\n"
    "\t}\n"
    "\tgl_FragColor = Color;\n}\n"; // [L8]

struct Settings {
    int width = 5; // [L1]
    double brightness = 1.0;
    double sharpness = 1.0;
};

std::string prefix(const Settings& s) { // [L3]
    return "const int FilterWidth        = " + VValueTrait<int>::Text(s.width) +
           ";\nconst float FilterBrightness = " + VValueTrait<double>::Text(s.brightness) +
           ";\nconst float FilterSharpness  = " + VValueTrait<double>::Text(s.sharpness) + ";\n";
}

class TileShader : public VObject, public VSource<StrongPtr<krod::ImageTileProcessor>> {
public:
    class ImageTileProcessor : public tile::TextProcessor {
    public:
        using TextProcessor::TextProcessor;
    };

    TileShader(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<ImageTileProcessor>(tile::PassThrough));
        width.setLimits({.min = 1, .max = 20});
        brightness.setLimits({.max = 3.0}); // [L2]
        sharpness.setLimits({.max = 10.0});
    }

    bool update(VRequest& request, double) override {
        Settings s;
        width.read(request.context(), s.width);
        brightness.read(request.context(), s.brightness);
        sharpness.read(request.context(), s.sharpness);
        tile::store<ImageTileProcessor>(outputValue(), [&] { return prefix(s) + Body; });
        return true;
    }

private:
    TypedSlot<int> width{this, "width", 3, 0};
    TypedSlot<double> brightness{this, "brightness", 1.5, 0};
    TypedSlot<double> sharpness{this, "sharpness", 1.5, 0};
};

KROD_ROW(12)
CreatorRegistration<TileShader, void> creator({.category = "Hollywood",
                                               .name = "PixelBlur",
                                               .help = "Blurs pixels during image rendering.",
                                               .description = "Blurs pixels."},
                                              -1000);
KROD_ROW(12)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<int, double>>
    source(creator);

} // namespace
} // namespace plime::PixelBlur
