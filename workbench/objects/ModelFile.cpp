// SPDX-License-Identifier: Apache-2.0
// Scene/Model - shows the triangles of a model file under a light that shines from the eye.     (row 1)
//     colour = vertex colour x material colour x |cos(normal, line of sight)|
#include "workbench/objects/Kept.h"
#include "workbench/objects/MeshDrawing.h"

#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

namespace workbench::objects::ModelFile {
namespace {

using namespace krod;

struct Settings {
    std::string file;
    friend bool operator==(const Settings&, const Settings&) = default;
};

MeshDrawing load(const Settings& settings) {
    Model model = readNamed("Scene/Model", settings.file, [](const auto& file) { return readModel(file); });
    if (model.droppedVertices > 0)
        warnOfLeftOut(settings.file, std::to_string(model.droppedVertices) + " vertices",
                      " with their triangles");
    if (model.leftOutTextures > 0)
        VActionNotifier::Warning(settings.file + ": " + countText(model.leftOutTextures, "texture") +
                                 " left out; only the colours of materials and vertices are drawn");
    return MeshDrawing(std::move(model));
}

class ModelObject : public VGLRenderObject, public FileContent {
public:
    ModelObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {}

    void draw(VGLRenderContext& context) override { drawing(context.valuePool()).draw(); }
    [[nodiscard]] BoundingSphere bounds() const override { return drawing(VValuePool()).bounds(); }
    [[nodiscard]] ContentFacts facts() const override { return drawing(VValuePool()).facts(); }

private:
    const MeshDrawing& drawing(const VValuePool& pool) const {
        Settings settings;
        file.read(pool, settings.file);
        return kept.get(settings, load);
    }

    TypedSlot<std::string> file{this, "file", "", 0};
    mutable Kept<Settings, MeshDrawing> kept;
};

KROD_ROW(1)
CreatorRegistration<ModelObject, void> creator(
    {.category = "Scene",
     .source = "ModelFile",
     .name = "Model",
     .group = "File",
     .help = "<p>Shows the triangles of a model file. A light shines from the eye on both sides of every "
             "triangle; the colours of vertices are multiplied with those of materials.</p>"
             "<ul><li><b>file</b>: the model: OBJ, PLY, STL, glTF and others. It is read when it is "
             "first needed and when another one is named.</li></ul>",
     .description = "A model from a file."},
    0);
KROD_ROW(1)
const SlotTypes<std::string> slotTypes;

} // namespace
} // namespace workbench::objects::ModelFile
