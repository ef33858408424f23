// SPDX-License-Identifier: Apache-2.0
// Hollywood/HDRToneMapping - compresses intensities from [0, infinity) into [0, 1). (catalogue row 10)
//     I(x) = (x / (x + a))^b of each channel, a = 10^offset, b = 10^exponent
// Kept on purpose:
//   [T1] order value 0, where the other tile processors have -1000 or 2000
//   [T2] the text declares a vector "offset" that nothing uses
//   [T3] alpha is mapped like the colours
//   [T4] the powers of ten are exp(v ln 10); 10.000000000000002 for 1
//   [T5] the help text is the same at every level, and not that of the display which maps the same way
#include "PowerOfTen.h"
#include "tile/TileFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"

namespace plime::HDRToneMapping {
namespace {

using namespace krod;

constexpr char Body[] = "uniform sampler2D frame;\nvoid main (void)\n{\n"
                        "vec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
                        "vec4 offset = vec4(a,a,a,a);\n" // [T2]
                        "\tgl_FragColor.r = pow(Color.r/( Color.r + a ), b);\n"
                        "\tgl_FragColor.g = pow(Color.g/( Color.g + a ), b);\n"
                        "\tgl_FragColor.b = pow(Color.b/( Color.b + a ), b);\n"
                        "\tgl_FragColor.a = pow(Color.a/( Color.a + a ), b);\n}\n"; // [T3]

/// Decimal logarithms of the constants.
struct Settings {
    double offset = 0.0, exponent = 0.0;
};

std::string prefix(const Settings& s) {
    const auto text = [](double v) { return VValueTrait<double>::Text(powerOfTen(v)); }; // [T4]
    return "const float a = " + text(s.offset) + ";\nconst float b = " + text(s.exponent) + ";\n";
}

class TileShader : public VObject, public VSource<StrongPtr<krod::ImageTileProcessor>> {
public:
    class ImageTileProcessor : public tile::TextProcessor {
    public:
        using TextProcessor::TextProcessor;
    };

    TileShader(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<ImageTileProcessor>(tile::PassThrough));
        for (TypedSlot<double>* slot : {&offset, &exponent}) {
            slot->setLimits({.min = -1.0, .max = 1.0});
        }
    }

    bool update(VRequest& request, double) override {
        Settings s;
        offset.read(request.context(), s.offset);
        exponent.read(request.context(), s.exponent);
        tile::store<ImageTileProcessor>(outputValue(), [&] { return prefix(s) + Body; });
        return true;
    }

    std::string help(int) const override { // [T5]
        return "Perform simple <A HREF=\"https://en.wikipedia.org/wiki/Tone_mapping\">tone mapping</A> of "
               "the form "
               "<BR><center> <I>I(x) = [ x/(x+&beta;) ] <SUP>exponent</SUP></I></center><BR>"
               "where <I>x</I> is the pixel intensity and <I>&beta;</I> an offset parameter. "
               "This mapping allows to reduce intensity excess values [0,&infty;] to the range [0,1]. "
               "Intensity excess values can happen when doing accumulation-mode rendering of point sets, for "
               "instance. "
               "Nonlinear tone-mapping allows to see all image areas which would otherwise be over-exposed.";
    }

private:
    TypedSlot<double> offset{this, "offset", 0.0, 0};
    TypedSlot<double> exponent{this, "exponent", 0.0, 0};
};

KROD_ROW(10)
CreatorRegistration<TileShader, void>
    creator({.category = "Hollywood",
             .name = "HDRToneMapping",
             .help = "Maps excess intensity values larger into [0.0,1.0] range.",
             .description = "Reduce High Intensity Colors."},
            0 /* [T1] */);
KROD_ROW(10)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<double>> source(creator);

} // namespace
} // namespace plime::HDRToneMapping
