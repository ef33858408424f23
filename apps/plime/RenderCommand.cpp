// SPDX-License-Identifier: Apache-2.0
// plime render: a scene through displays into a picture.
#include "apps/plime/Interruption.h"
#include "apps/plime/Numbers.h"
#include "apps/plime/PictureOutput.h"
#include "apps/plime/Progress.h"
#include "apps/plime/Provenance.h"
#include "apps/plime/SceneInput.h"
#include "apps/plime/Session.h"
#include "apps/plime/TilePass.h"
#include "apps/plime/ViewOptions.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/platform/EglContext.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help =
    R"(Usage: plime render INPUT -o OUT [--display KEY[@SOURCE] [-p NAME=VALUE]…]…
                    [--with KEY [-p NAME=VALUE]…]…
       plime render --list-demos

Draws INPUT off-screen, puts it through displays, the first one nearest to the
object, and runs tile processors over the finished picture. INPUT is a model
(PLY, OBJ, STL, glTF, 3DS …), a list of points (PLY, XYZ, CSV), a picture, which
is shown on a plane, or a generated scene, demo:NAME.

  --display KEY       a display; "plime list" shows them. Several make a chain
  --with KEY          a tile processor for the finished picture
  -p NAME=VALUE       sets a parameter of the --display or --with before it
  --unset NAME        makes a parameter unreadable: the module falls back
  --unchecked         accepts values outside of their limits
  -o, --output OUT    the picture to write: .exr .png .tif .tiff .jpg .jpeg .hdr
  -d, --depth D       half, float, uint8 or uint16
  --srgb              encodes the colours for viewing
  --size WxH          1280x720 unless asked otherwise
  --samples N         sets "samples" of each display that has no -p samples
  --camera EX,EY,EZ:TX,TY,TZ[:FOV]   eye, target, vertical angle in degrees;
                      else on +z, 30 degrees, as near as everything fits
  --up X,Y,Z          0,1,0 unless asked otherwise
  --background R,G,B[,A]   linear; 0,0,0,1 unless asked otherwise
  --point-size N      of point lists, in pixels
  --tile N            draws in tiles of at most N pixels a side
  --overlap N         draws N pixels around each tile for displays that look at
                      their neighbours
  --list-demos        lists the generated scenes

Points add up, and intensities far above 1 are kept: write .exr, or add --srgb.

Examples:
  plime render bunny.ply -o bunny.png --srgb
  plime render demo:galaxy --display Display/CMYK -o galaxy.exr
  plime render model.glb --display Display/CMYK -o cmyk.png --size 1920x1080
)";

class RenderCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "render"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "draw a scene through displays";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        Syntax syntax{{}, {{"INPUT", &input}}, &modules, {.displays = true, .tiles = true}};
        wish.addTo(syntax);
        view.addTo(syntax);
        syntax.options.push_back({"--samples", &samples});
        syntax.options.push_back({"--point-size", &pointSize});
        syntax.options.push_back({"--list-demos", &listDemos});
        return syntax;
    }

    int run(Session& session) override {
        if (listDemos) {
            session.streams().write(demoList(session.catalogue()));
            return 0;
        }
        if (!input)
            throw Failure(Fault::Usage,
                          {"render", "has nothing to draw", "INPUT", "", "Try demo:galaxy", {}});
        static_cast<void>(wish.requirePath());
        const Limits limits = modules.unchecked ? Limits::Unchecked : Limits::Checked;
        const auto scene = makeSceneInput(session.catalogue(), *input);
        if (pointSize) scene->set("size", *pointSize, limits);
        const auto displays = makeDisplays(session, *scene, limits);
        TileChain chain(session.catalogue(), modules.tiles, limits);
        chain.prepare();
        draw(session, *scene, displays, chain);
        return 0;
    }

private:
    using Displays = std::vector<std::unique_ptr<ModuleInstance>>;

    /// The displays, each connected to the one before it, the first to the scene.
    [[nodiscard]] Displays makeDisplays(Session& session, const ModuleInstance& scene, Limits limits) {
        Displays displays;
        auto source = krod::castStrong<krod::VGLRenderObject>(scene.reference());
        for (const ModuleRequest& request : modules.displays) {
            auto module =
                std::make_unique<ModuleInstance>(session.catalogue().one(request.key), request, limits);
            const auto display = krod::castStrong<krod::MSDeferredObjectDisplay>(module->reference());
            if (!display)
                throw Failure(Fault::Usage, {module->entry().key,
                                             "is no display",
                                             "a module of the category Display",
                                             "",
                                             "Tile processors go behind --with",
                                             {}});
            if (samples) setSamples(session, *module, *display, request, limits);
            display->setInput(source);
            module->hideUnset(pool);
            source = display;
            displays.push_back(std::move(module));
        }
        return displays;
    }

    /// --samples for one display that has no -p samples of its own; said where it changes nothing.
    void setSamples(Session& session, ModuleInstance& module, krod::MSDeferredObjectDisplay& display,
                    const ModuleRequest& request, Limits limits) const {
        const bool has = display.slots().input("samples").get() != nullptr;
        const auto own = std::ranges::find(request.settings, "samples", &ParameterSetting::name);
        if (has && own == request.settings.end()) module.set("samples", *samples, limits);
        if (own != request.settings.end()) return;
        krod::VGLRenderContext context(pool, 1, 1);
        const int asked = display.createRenderer(context)->requestedSamples();
        if (asked != wholeNumber("--samples", *samples, -2147483647, 2147483647))
            session.report().warning(
                {module.entry().key,
                 "--samples has no effect on it, it always asks for " + std::to_string(asked) + " samples",
                 "",
                 "",
                 "",
                 {}});
    }

    void draw(Session& session, const ModuleInstance& scene, const Displays& displays,
              const TileChain& chain) const {
        const ModuleInstance& top = displays.empty() ? scene : *displays.back();
        auto& object = dynamic_cast<krod::RenderAble&>(top.object());
        const FrameSetup setup = view.frameOf(object.bounds());
        RenderSession rendering({.gpu = session.options().gpu, .strictGlsl = session.options().strictGlsl});
        session.report().note("Drawing on " + rendering.driver() + ".");
        if (chain.drawsWithOpenGL())
            requireOneTile("the picture", setup.width, setup.height, LargestSide,
                           rendering.properties().maxTextureSize);

        PictureOutput output(wish, session.options(), describe(scene, displays, chain, setup));
        auto pixels = drawTiles(session, rendering, object, setup);
        if (!chain.empty()) processRows(chain, pixels, setup.width, setup.height);
        output.write(0, setup.height, pixels.data());
        output.finish(session.report());
        for (const ShaderFile& file : usedShaderFiles())
            session.report().note(file.name + " was taken from " + file.path.string() + ".");
    }

    [[nodiscard]] std::vector<krod::RGBAHalf> drawTiles(Session& session, RenderSession& rendering,
                                                        krod::RenderAble& object,
                                                        const FrameSetup& setup) const {
        const auto tiles = planTiles(setup.width, setup.height, setup.tiles);
        if (tiles.size() == 1) return renderPicture(rendering, object, pool, setup);
        session.report().note("Drawing in " + std::to_string(tiles.size()) + " tiles.");
        Progress progress(*wish.path, tiles.size(), "tiles", 1, session.options().quiet);
        const auto width = static_cast<std::size_t>(setup.width);
        std::vector<krod::RGBAHalf> pixels(width * static_cast<std::size_t>(setup.height));
        for (std::size_t done = 0; done < tiles.size(); ++done) {
            throwIfInterrupted();
            const PictureTile& tile = tiles[done];
            const auto part = renderTile(rendering, object, pool, setup, tile);
            for (int row = 0; row < tile.height; ++row)
                std::copy_n(part.data() + static_cast<std::ptrdiff_t>(row) * tile.width, tile.width,
                            pixels.data() + static_cast<std::ptrdiff_t>(tile.y + row) * setup.width + tile.x);
            progress.show(done + 1);
        }
        return pixels;
    }

    [[nodiscard]] PictureDescription describe(const ModuleInstance& scene, const Displays& displays,
                                              const TileChain& chain, const FrameSetup& setup) const {
        Provenance provenance;
        std::string last = provenance.add(scene, "");
        for (const auto& display : displays) last = provenance.add(*display, last);
        for (const auto& module : chain.instances()) last = provenance.add(*module, last);
        provenance.setView(setup);
        PictureDescription description;
        description.width = setup.width;
        description.height = setup.height;
        description.hasAlpha = true;
        description.setText(NetworkName, provenance.text());
        return description;
    }

    std::optional<std::string> input, samples, pointSize;
    OutputWish wish;
    ViewOptions view;
    ModuleChain modules;
    krod::VValuePool pool;
    bool listDemos = false;
};

} // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace workbench
