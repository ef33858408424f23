// SPDX-License-Identifier: Apache-2.0
// Two modules that change the contrast of each channel with a power law.
//
// Hollywood/GammaCorrection - c^1.5 of red, green and blue, on the tile's half pixels. (catalogue row 7)
// Kept on purpose:
//   [G1] the creator has the name form: no descriptions
//   [G2] its line on standard output comes before the size test, so an empty tile prints it too
//   [G3] alpha is left as it is
//
// Hollywood/ColorGammaCorrection - c^(10^v) of each channel by shader, v one per channel. (catalogue row 6)
// Kept on purpose:
//   [C1] an unreadable parameter counts as 1.0, an exponent of 10, though all start at 0.0
//   [C2] 10^v is exp(v ln 10), which gives 10.000000000000002 for 1
//   [C3] alpha is corrected like the colours
#include "PowerOfTen.h"
#include "tile/HalfTable.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

#include <cstdio>

// Within one file the order of definition is the order of registration: row 7 stands above row 6.

namespace plime::GammaCorrection {
namespace {

using namespace krod;
using half_float::half;

constinit tile::HalfTable powers{}; // c^1.5, as the half library's own pow gives it

class GammaCorrection : public VObject, public VSource<StrongPtr<ImageTileProcessor>> {
public:
    class MyImageTileProcessor : public ImageTileProcessor {
    public:
        void process(const VRenderContext&, ImageTile& tile) override {
            auto* pixels = dynamic_cast<Chunk<RGBAHalf>*>(tile.store().get());
            if (!pixels) return;
            std::puts("GammaCorrection....process..."); // [G2]
            if (pixels->bytes() < sizeof(RGBAHalf)) return;
            powers.prepare([](half c) { return pow(c, half(1.5f)); }); // 0x3E00
            powers.apply(pixels->data(), pixels->elements());          // [G3]
        }
    };

    GammaCorrection(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<MyImageTileProcessor>());
    }
};

KROD_ROW(7)
CreatorRegistration<GammaCorrection, void> creator("Hollywood/GammaCorrection", -1000); // [G1]
KROD_ROW(7)
const SourceRegistration<GammaCorrection, StrongPtr<ImageTileProcessor>, SlotTypes<>> source(creator);

} // namespace
} // namespace plime::GammaCorrection

namespace plime::ColorGammaCorrection {
namespace {

using namespace krod;

constexpr char Body[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                        "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                        "\tgl_FragColor.r = pow(Color.r, Gr);\n"
                        "\tgl_FragColor.g = pow(Color.g, Gg);\n"
                        "\tgl_FragColor.b = pow(Color.b, Gb);\n"
                        "\tgl_FragColor.a = pow(Color.a, Ga);\n}\n"; // [C3]

/// Decimal logarithms of the exponents; what stands here holds where a parameter cannot be read. [C1]
struct Settings {
    double red = 1.0, green = 1.0, blue = 1.0, alpha = 1.0;
};

std::string prefix(const Settings& s) {
    const auto text = [](double v) { return VValueTrait<double>::Text(powerOfTen(v)); }; // [C2]
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

KROD_ROW(6)
CreatorRegistration<TileShader, void> creator({.category = "Hollywood",
                                               .name = "ColorGammaCorrection",
                                               .help = "Allows to adjust the color of each color channel.",
                                               .description = "Adjust pixel contrast."},
                                              -1000);
KROD_ROW(6)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<double>> source(creator);

} // namespace
} // namespace plime::ColorGammaCorrection
