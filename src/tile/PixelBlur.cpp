// SPDX-License-Identifier: Apache-2.0
// Hollywood/PixelBlur - blurs with a square grid of Gaussian weights. (catalogue row 12)
#include "Announced.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::PixelBlur {
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
        width.setLimits({.min = 1, .max = 20});
        brightness.setLimits({.max = 3.0});
        sharpness.setLimits({.max = 10.0});
    }

    bool update(VRequest&, double) override { announcedOnly("Hollywood/PixelBlur", "process pictures"); }

private:
    TypedSlot<int> width{this, "width", 3, 0};
    TypedSlot<double> brightness{this, "brightness", 1.5, 0};
    TypedSlot<double> sharpness{this, "sharpness", 1.5, 0};
};

KROD_ROW(12)
const SourceRegistration<TileShader, StrongPtr<krod::ImageTileProcessor>, SlotTypes<int, double>>
    registration({.category = "Hollywood",
                  .name = "PixelBlur",
                  .help = "Blurs pixels during image rendering.",
                  .description = "Blurs pixels."},
                 -1000);

} // namespace
} // namespace plime::PixelBlur
