// SPDX-License-Identifier: Apache-2.0
// Hollywood/HDRToneMapping - compresses intensities into [0, 1). (catalogue row 10)
// Kept on purpose:
//   [T1] order value 0, where the other tile processors have -1000 or 2000
#include "Announced.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::HDRToneMapping {
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
        for (TypedSlot<double>* slot : {&offset, &exponent}) {
            slot->setLimits({.min = -1.0, .max = 1.0});
        }
    }

    bool update(VRequest&, double) override { announcedOnly("Hollywood/HDRToneMapping", "process pictures"); }

private:
    TypedSlot<double> offset{this, "offset", 0.0, 0};
    TypedSlot<double> exponent{this, "exponent", 0.0, 0};
};

KROD_ROW(10)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<double>>
    registration({.category = "Hollywood",
                  .name = "HDRToneMapping",
                  .help = "Maps excess intensity values larger into [0.0,1.0] range.",
                  .description = "Reduce High Intensity Colors."},
                 0 /* [T1] */);

} // namespace
} // namespace plime::HDRToneMapping
