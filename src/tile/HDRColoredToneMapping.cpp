// SPDX-License-Identifier: Apache-2.0
// Hollywood/HDRColoredToneMapping - compresses intensities from [0, infinity) into [0, 1), one strength per
// channel. (catalogue row 8)
//     c / (c + G) of each channel, G = 10^v, v one per channel
// Kept on purpose:
//   [M1] "adustable" and "indepently" are spelt so
//   [M2] an unreadable parameter counts as 1.0, though all start at 0.0
//   [M3] the texts speak of a gamma; the constant is where a channel comes to one half
//   [M4] alpha is mapped like the colours: an opaque picture comes out partly transparent
#include "PowerOfTen.h"
#include "tile/TileFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"

namespace plime::HDRColoredToneMapping {
namespace {

using namespace krod;

constexpr char Body[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                        "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                        "\tgl_FragColor.r = Color.r/( Color.r + Gr );\n" // [M3]
                        "\tgl_FragColor.g = Color.g/( Color.g + Gg );\n"
                        "\tgl_FragColor.b = Color.b/( Color.b + Gb );\n"
                        "\tgl_FragColor.a = Color.a/( Color.a + Ga );\n}\n"; // [M4]

/// Decimal logarithms of the intensities that come to one half. [M2]
struct Settings {
    double red = 1.0, green = 1.0, blue = 1.0, alpha = 1.0;
};

std::string prefix(const Settings& s) {
    const auto text = [](double v) { return VValueTrait<double>::Text(powerOfTen(v)); };
    return "const float Gr = " + text(s.red) + ";\nconst float Gg = " + text(s.green) +
           ";\nconst float Gb = " + text(s.blue) + ";\nconst float Ga = " + text(s.alpha) + ";\n";
}

class TileShader : public VObject, public VSource<StrongPtr<krod::ImageTileProcessor>> {
public:
    class ImageTileProcessor : public tile::TextProcessor {
    public:
        using TextProcessor::TextProcessor;
    };

    TileShader(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<ImageTileProcessor>(tile::PassThrough));
        for (TypedSlot<double>* channel : {&red, &green, &blue, &alpha}) {
            channel->setLimits({.min = -1.0, .max = 1.0});
        }
    }

    bool update(VRequest& request, double) override {
        Settings s;
        red.read(request.context(), s.red);
        green.read(request.context(), s.green);
        blue.read(request.context(), s.blue);
        alpha.read(request.context(), s.alpha);
        tile::store<ImageTileProcessor>(outputValue(), [&] { return prefix(s) + Body; });
        return true;
    }

private:
    TypedSlot<double> red{this, "red", 0.0, 0};
    TypedSlot<double> green{this, "green", 0.0, 0};
    TypedSlot<double> blue{this, "blue", 0.0, 0};
    TypedSlot<double> alpha{this, "alpha", 0.0, 0};
};

KROD_ROW(8)
CreatorRegistration<TileShader, void> creator(
    {.category = "Hollywood",
     .name = "HDRColoredToneMapping",
     .help = "Maps excess intensity values larger into [0.0,1.0] range. The contrast (gamma value) can be "
             "specified indepently for each RGBA channel." /* sic [M1] */,
     .description = "Reduce High Intensity Colors, adustable gamma per color channel."},
    -1000);
KROD_ROW(8)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<double>> source(creator);

} // namespace
} // namespace plime::HDRColoredToneMapping
