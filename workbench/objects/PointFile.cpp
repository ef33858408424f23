// SPDX-License-Identifier: Apache-2.0
// Scene/Points - shows the points of a file; where they meet their light adds up.     (row 2)
//     pixel = background + intensity x sum of the points' colours
#include "workbench/objects/Kept.h"
#include "workbench/objects/PointDrawing.h"

#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

namespace workbench::objects::PointFile {
namespace {

using namespace krod;

struct Settings {
    std::string file;
    friend bool operator==(const Settings&, const Settings&) = default;
};

PointDrawing load(const Settings& settings) {
    PointSet points =
        readNamed("Scene/Points", settings.file, [](const auto& file) { return readPoints(file); });
    if (points.droppedPoints > 0)
        warnOfLeftOut(settings.file, std::to_string(points.droppedPoints) + " of " +
                                         std::to_string(points.positions.size() + points.droppedPoints) +
                                         " points");
    return PointDrawing(std::move(points));
}

class PointObject : public VGLRenderObject {
public:
    PointObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {
        size.setLimits({.min = 1.0, .max = 64.0});
        intensity.setLimits({.min = 0.0});
    }

    void draw(VGLRenderContext& context) override {
        double pixels = 1, factor = 1;
        size.read(context.valuePool(), pixels);
        intensity.read(context.valuePool(), factor);
        drawing(context.valuePool()).draw(pixels, factor);
    }
    [[nodiscard]] BoundingSphere bounds() const override { return drawing(VValuePool()).bounds(); }

private:
    const PointDrawing& drawing(const VValuePool& pool) const {
        Settings settings;
        file.read(pool, settings.file);
        return kept.get(settings, load);
    }

    TypedSlot<std::string> file{this, "file", "", 0};
    TypedSlot<double> size{this, "size", 1.0, 0};
    TypedSlot<double> intensity{this, "intensity", 1.0, 0};
    mutable Kept<Settings, PointDrawing> kept;
};

KROD_ROW(2)
CreatorRegistration<PointObject, void> creator(
    {.category = "Scene",
     .source = "PointFile",
     .name = "Points",
     .group = "File",
     .help = "<p>Shows the points of a file. Where points meet their light adds up, also far above 1; "
             "they hide nothing, and write no depth.</p>"
             "<ul><li><b>file</b>: the points: PLY, XYZ, CSV or text. It is read when it is first "
             "needed and when another one is named.</li>"
             "<li><b>size</b>: width of a point in pixels, from 1 to 64.</li>"
             "<li><b>intensity</b>: factor of all colours, from 0.</li></ul>",
     .description = "Points from a file, adding up."},
    0);
KROD_ROW(2)
const SlotTypes<std::string, double> slotTypes;

} // namespace
} // namespace workbench::objects::PointFile
