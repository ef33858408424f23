// SPDX-License-Identifier: Apache-2.0
// Hollywood/ArcTangens - compresses colour intensities with the arc tangent, on the tile's half pixels.
// (catalogue row 1)
//     c -> 2/pi atan(c) of red, green and blue
// Kept on purpose:
//   [A1] the creator has the name form: no descriptions
//   [A2] the arc tangent is rounded to half before it is scaled: 1 comes to just below 0.5
//   [A3] 2/pi is a long double, its product is rounded to float and then to half
//   [A4] alpha is left as it is
//   [A5] the line on standard output comes with every tile of half pixels, an empty one too
#include "tile/HalfTable.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

#include <cstdio>

namespace plime::ArcTangens {
namespace {

using namespace krod;
using half_float::half;

constexpr long double TwoOverPi = 0.6366197723675814L; // [A3]

constinit tile::HalfTable angles{}; // 2/pi atan(c), as the half library's own atan gives it

half compressed(half c) {
    const float t = atan(c); // [A2]
    return half(static_cast<float>(t * TwoOverPi));
}

class ArcTangens : public VObject, public VSource<StrongPtr<ImageTileProcessor>> {
public:
    class MyImageTileProcessor : public ImageTileProcessor {
    public:
        void process(const VRenderContext&, ImageTile& tile) override {
            auto* pixels = dynamic_cast<Chunk<RGBAHalf>*>(tile.store().get());
            if (!pixels) return;
            std::puts("ArcTangens....process..."); // [A5]
            angles.prepare(compressed);
            angles.apply(pixels->data(), pixels->elements()); // [A4]
        }
    };

    ArcTangens(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<MyImageTileProcessor>());
    }
};

KROD_ROW(1)
CreatorRegistration<ArcTangens, void> creator("Hollywood/ArcTangens", -1000); // [A1]
KROD_ROW(1)
const SourceRegistration<ArcTangens, StrongPtr<ImageTileProcessor>, SlotTypes<>> source(creator);

} // namespace
} // namespace plime::ArcTangens
