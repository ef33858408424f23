// SPDX-License-Identifier: Apache-2.0
// Hollywood/ArcTangens - compresses colour intensities with the arc tangent. (catalogue row 1)
// Kept on purpose:
//   [A1] the creator has the name form: no descriptions
#include "Announced.h"
#include "tile/TileFrame.h"

#include "plugin/Registration.h"

namespace plime::ArcTangens {
namespace {

using namespace krod;

class ArcTangens : public VObject, public VSource<StrongPtr<ImageTileProcessor>> {
public:
    class MyImageTileProcessor : public ImageTileProcessor {
    public:
        void process(const VRenderContext&, ImageTile&) override {
            announcedOnly("Hollywood/ArcTangens", "process pictures");
        }
    };

    ArcTangens(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {
        makeOutput(this, tile::OutputName, tile::processor<MyImageTileProcessor>());
    }
};

KROD_ROW(1)
const SourceRegistration<ArcTangens, StrongPtr<ImageTileProcessor>, SlotTypes<>>
    registration("Hollywood/ArcTangens", -1000); // [A1]

} // namespace
} // namespace plime::ArcTangens
