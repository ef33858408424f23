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

/// What to know of the file.
std::vector<std::string> notesOf(const PointSet& points) {
    const auto listed = [](const std::vector<std::string>& names) {
        std::string text;
        for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
        return text;
    };
    std::vector<std::string> notes;
    if (!points.unusedColumns.empty())
        notes.push_back("columns that are not used: " + listed(points.unusedColumns) + "; used are " +
                        listed(points.columns));
    if (points.hasEightBitColours) notes.emplace_back("colours are from 0 to 255 and are divided by 255");
    return notes;
}

/// Points of a file, and what to know of them.
struct Content {
    PointDrawing drawing;
    std::vector<std::string> notes;
};

Content load(const Settings& settings) {
    PointSet points =
        readNamed("Scene/Points", settings.file, [](const auto& file) { return readPoints(file); });
    if (points.droppedPoints > 0)
        warnOfLeftOut(settings.file, std::to_string(points.droppedPoints) + " of " +
                                         std::to_string(points.positions.size() + points.droppedPoints) +
                                         " points");
    std::vector<std::string> notes = notesOf(points);
    return {PointDrawing(std::move(points)), std::move(notes)};
}

class PointObject : public VGLRenderObject, public FileContent {
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
        content(context.valuePool()).drawing.draw(pixels, factor);
    }
    [[nodiscard]] BoundingSphere bounds() const override { return content(VValuePool()).drawing.bounds(); }
    [[nodiscard]] ContentFacts facts() const override {
        const Content& read = content(VValuePool());
        ContentFacts facts = read.drawing.facts();
        facts.notes = read.notes;
        return facts;
    }

private:
    const Content& content(const VValuePool& pool) const {
        Settings settings;
        file.read(pool, settings.file);
        return kept.get(settings, load);
    }

    TypedSlot<std::string> file{this, "file", "", 0};
    TypedSlot<double> size{this, "size", 1.0, 0};
    TypedSlot<double> intensity{this, "intensity", 1.0, 0};
    mutable Kept<Settings, Content> kept;
};

KROD_ROW(2)
CreatorRegistration<PointObject, void> creator(
    {.category = "Scene",
     .source = "PointFile",
     .name = "Points",
     .group = "File",
     .help = "<p>Shows the points of a file. Where points meet their light adds up, also far above 1; "
             "they hide nothing, and write no depth.</p>"
             "<ul><li><b>file</b>: the points: PLY, XYZ, CSV or text, also packed by gzip. It is read when "
             "it is first "
             "needed and when another one is named.</li>"
             "<li><b>size</b>: width of a point in pixels, from 1 to 64.</li>"
             "<li><b>intensity</b>: factor of all colours, from 0.</li></ul>",
     .description = "Points from a file, adding up."},
    0);
KROD_ROW(2)
const SlotTypes<std::string, double> slotTypes;

} // namespace
} // namespace workbench::objects::PointFile
