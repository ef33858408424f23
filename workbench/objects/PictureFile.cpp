// SPDX-License-Identifier: Apache-2.0
// Scene/Picture - shows a picture on a plane that looks towards +z.     (row 3)
//     height 2, width 2 x aspect, middle at the origin; values and alpha as they are stored
#include "workbench/files/FileContent.h"
#include "workbench/files/Picture.h"
#include "workbench/objects/Kept.h"

#include "host/gl/GLProgram.h"
#include "host/gl/GLTexture2D.h"
#include "host/gl/VGLRenderObject.h"
#include "plugin/Registration.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cmath>

namespace workbench::objects::PictureFile {
namespace {

using namespace krod;

constexpr char VertexText[] = R"(#version 120
centroid varying vec2 place;
void main() {
    place = gl_MultiTexCoord0.xy;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
)";

constexpr char FragmentText[] = R"(#version 120
uniform sampler2D picture;
centroid varying vec2 place;
void main() {
    gl_FragColor = texture2D(picture, place);
}
)";

/// Side of the pieces in which a picture is drawn: every driver takes textures of this size, and one at a
/// time is in its memory.
constexpr int PieceSide = 4096;

struct Settings {
    std::string file;
    bool linear = false;
    friend bool operator==(const Settings&, const Settings&) = default;
};

Picture load(const Settings& settings) {
    Picture picture = readNamed("Scene/Picture", settings.file,
                                [&](const auto& file) { return readPicture(file, settings.linear); });
    if (picture.loss.overflows > 0)
        VActionNotifier::Warning(settings.file + ": " + std::to_string(picture.loss.overflows) +
                                 " values are too large for a half, and became 65504");
    return picture;
}

double aspect(const PictureDescription& about) { return static_cast<double>(about.width) / about.height; }

/// A piece of a picture, in pixels from the top left corner.
struct Piece {
    int x, y, width, height;
};

/// Fills the bound texture, top row at t = 0, and makes its smaller versions, so that a large picture does
/// not sparkle in a small view.
void upload(const Picture& picture, const Piece& piece) {
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, alignof(double));
    glPixelStorei(GL_UNPACK_ROW_LENGTH, picture.description.width);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, piece.x);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, piece.y);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, piece.width, piece.height, GL_RGBA, GL_HALF_FLOAT,
                    picture.pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<int>(std::log2(PieceSide)));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glGenerateMipmap(GL_TEXTURE_2D);
}

void drawPiece(const Picture& picture, const Piece& piece) {
    const GLTexture2D texture(piece.width, piece.height);
    glBindTexture(GL_TEXTURE_2D, texture.name());
    upload(picture, piece);
    const double pixel = 2.0 / picture.description.height, side = aspect(picture.description);
    const double left = piece.x * pixel - side, right = left + piece.width * pixel;
    const double top = 1 - piece.y * pixel, bottom = top - piece.height * pixel;
    glBegin(GL_QUADS);
    glTexCoord2d(0, 1), glVertex2d(left, bottom);
    glTexCoord2d(1, 1), glVertex2d(right, bottom);
    glTexCoord2d(1, 0), glVertex2d(right, top);
    glTexCoord2d(0, 0), glVertex2d(left, top);
    glEnd();
}

class PictureObject : public VGLRenderObject, public FileContent {
public:
    PictureObject(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : VGLRenderObject(name, 0, preferences) {}

    void draw(VGLRenderContext& context) override {
        const Picture& shown = picture(context.valuePool());
        const int width = shown.description.width, height = shown.description.height;
        GLProgram program(VertexText, FragmentText, "picture vertex shader", "picture fragment shader");
        program.use();
        program.setUniformValuei("picture", 0, program.reportsMissingUniforms());
        glActiveTexture(GL_TEXTURE0);
        glDisable(GL_BLEND);
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        for (int y = 0; y < height; y += PieceSide)
            for (int x = 0; x < width; x += PieceSide)
                drawPiece(shown, {x, y, std::min(PieceSide, width - x), std::min(PieceSide, height - y)});
    }
    [[nodiscard]] BoundingSphere bounds() const override {
        const Picture& shown = picture(VValuePool());
        return {0, 0, 0, shown.pixels.empty() ? -1 : std::hypot(1, aspect(shown.description))};
    }

    [[nodiscard]] ContentFacts facts() const override {
        const Picture& shown = picture(VValuePool());
        ContentFacts facts;
        facts.bytes = shown.pixels.size() * sizeof(shown.pixels.front());
        if (shown.pixels.empty()) return facts;
        const glm::dvec3 corner(aspect(shown.description), 1, 0);
        facts.box = ContentBox{-corner, corner};
        facts.isPlane = true;
        return facts;
    }

private:
    const Picture& picture(const VValuePool& pool) const {
        Settings settings;
        file.read(pool, settings.file);
        linear.read(pool, settings.linear);
        return kept.get(settings, load);
    }

    TypedSlot<std::string> file{this, "file", "", 0};
    TypedSlot<bool> linear{this, "linear", false, 1};
    mutable Kept<Settings, Picture> kept;
};

KROD_ROW(3)
CreatorRegistration<PictureObject, void> creator(
    {.category = "Scene",
     .source = "PictureFile",
     .name = "Picture",
     .group = "File",
     .help = "<p>Shows a picture on a plane that looks towards +z, 2 high and as wide as the picture "
             "asks for, without light, values and alpha as they are stored.</p>"
             "<ul><li><b>file</b>: the picture: EXR, PNG, TIFF, JPEG, HDR and others. It is read when "
             "it is first needed and when another one is named.</li>"
             "<li><b>linear</b>: makes the colors of a picture that is sRGB linear.</li></ul>",
     .description = "A picture from a file, on a plane."},
    0);
KROD_ROW(3)
const SlotTypes<std::string, bool> slotTypes;

} // namespace
} // namespace workbench::objects::PictureFile
