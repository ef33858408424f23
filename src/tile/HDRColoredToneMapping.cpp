// SPDX-License-Identifier: Apache-2.0
// Hollywood/HDRColoredToneMapping - compresses intensities into [0, 1), one strength per channel. (catalogue row 8)
// Kept on purpose:
//   [C1] "adustable" and "indepently" are spelt so
#include "Announced.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::HDRColoredToneMapping {
namespace {

using namespace krod;

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

    bool update(VRequest&, double) override {
        announcedOnly("Hollywood/HDRColoredToneMapping", "process pictures");
    }

private:
    TypedSlot<double> red{this, "red", 0.0, 0};
    TypedSlot<double> green{this, "green", 0.0, 0};
    TypedSlot<double> blue{this, "blue", 0.0, 0};
    TypedSlot<double> alpha{this, "alpha", 0.0, 0};
};

KROD_ROW(8)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<double>> registration(
    {.category = "Hollywood",
     .name = "HDRColoredToneMapping",
     .help = "Maps excess intensity values larger into [0.0,1.0] range. The contrast (gamma value) can be "
             "specified indepently for each RGBA channel." /* sic [C1] */,
     .description = "Reduce High Intensity Colors, adustable gamma per color channel."},
    -1000);

} // namespace
} // namespace plime::HDRColoredToneMapping
