// SPDX-License-Identifier: Apache-2.0
// plime render: a scene through displays into a picture.
#include "apps/plime/FileStamp.h"
#include "apps/plime/Help.h"
#include "apps/plime/Numbers.h"
#include "apps/plime/PictureDrawing.h"
#include "apps/plime/PictureOutput.h"
#include "apps/plime/Provenance.h"
#include "apps/plime/SceneInput.h"
#include "apps/plime/Session.h"
#include "apps/plime/TileJournal.h"
#include "apps/plime/TilePass.h"
#include "apps/plime/ViewOptions.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/platform/EglContext.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>
#include <limits>
#include <set>

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
  -p NAME=VALUE       sets a parameter of the --display or --with before it;
                      code=@FILE reads the value from a file
  --unset NAME        makes a parameter unreadable: the module falls back
  --unchecked         accepts values outside of their limits
  -o, --output OUT    the picture to write: .exr .png .tif .tiff .jpg .jpeg .hdr
  -d, --depth D       half, float, uint8 or uint16
  --srgb              encodes the colours for viewing
  --size WxH          1280x720 unless asked otherwise
  --samples N         sets "samples" of each display that has no -p samples;
                      says where that changes nothing
  --camera EX,EY,EZ:TX,TY,TZ[:FOV]   eye, target, vertical angle in degrees;
                      else on +z, 30 degrees, as near as everything fits
  --up X,Y,Z          0,1,0 unless asked otherwise
  --background R,G,B[,A]   linear; 0,0,0,1 unless asked otherwise
  --point-size N      of point lists, in pixels
  --tile N            draws in tiles of at most N pixels a side, 2048 unless
                      asked otherwise
  --overlap N         draws N pixels around each tile, for displays that look at
                      their neighbours; 64 unless asked otherwise
  --resume            takes the tiles that an interrupted run of this command
                      has left in OUT.parts; without it all are drawn anew
  --list-demos        lists the generated scenes

Points add up, and intensities far above 1 are kept: write .exr, or add --srgb.

Examples:
  plime render bunny.ply -o bunny.png --srgb
  plime render demo:galaxy --display Display/CMYK -o galaxy.exr
  plime render model.glb --display Display/CMYK -o cmyk.png --size 1920x1080
  plime render model.glb -o poster.exr --size 16384x16384 --resume
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
        syntax.options.push_back({"--resume", &resume});
        return syntax;
    }

    int run(Session& session) override {
        if (listDemos) {
            session.streams().write(demoList(session.catalogue()));
            return 0;
        }
        if (!input || input->empty())
            throw Failure(Fault::Usage,
                          {"render", "has nothing to draw", "INPUT", "", "Try demo:galaxy", {}});
        static_cast<void>(wish.requirePath());
        const Limits limits = modules.unchecked ? Limits::Unchecked : Limits::Checked;
        if (samples) static_cast<void>(sampleCount());
        const auto scene = makeSceneInput(session.catalogue(), *input);
        if (pointSize) setPointSize(*scene, limits);
        const auto displays = makeDisplays(session, *scene, limits);
        warnOfIneffectiveSamples(session, displays);
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
            if (samples && !hasOwnSamples(request) && display->slots().input("samples"))
                module->set("samples", *samples, limits);
            display->setInput(source);
            module->hideUnset(pool);
            source = display;
            displays.push_back(std::move(module));
        }
        return displays;
    }

    [[nodiscard]] int sampleCount() const {
        return wholeNumber("--samples", *samples, 1, std::numeric_limits<int>::max());
    }

    void setPointSize(ModuleInstance& scene, Limits limits) const {
        if (!scene.object().slots().input("size"))
            throw Failure(Fault::Usage, {"--point-size",
                                         "has no meaning here: " + *input + " is not drawn in points",
                                         "",
                                         "",
                                         "",
                                         {}});
        scene.set("size", *pointSize, limits);
    }

    static bool hasOwnSamples(const ModuleRequest& request) {
        return std::ranges::find(request.settings, "samples", &ParameterSetting::name) !=
               request.settings.end();
    }

    /// Says once per module, or once for a picture without displays, where --samples changes nothing.
    void warnOfIneffectiveSamples(Session& session, const Displays& displays) const {
        if (!samples) return;
        if (displays.empty())
            session.report().warning({"--samples", "has no effect without a --display", "", "", "", {}});
        std::set<std::string> told;
        for (std::size_t i = 0; i < displays.size(); ++i) {
            if (hasOwnSamples(modules.displays[i])) continue;
            krod::VGLRenderContext context(pool, 1, 1);
            auto& display = dynamic_cast<krod::MSDeferredObjectDisplay&>(displays[i]->object());
            const int asked = display.createRenderer(context)->requestedSamples();
            const std::string& key = displays[i]->entry().key;
            if (asked == sampleCount() || !told.insert(key).second) continue;
            const std::string text =
                "--samples has no effect on it, it always asks for " + std::to_string(asked) + " samples";
            session.report().warning({key, text, "", "", "", {}});
        }
    }

    void draw(Session& session, const ModuleInstance& scene, const Displays& displays,
              const TileChain& chain) const {
        const ModuleInstance& top = displays.empty() ? scene : *displays.back();
        auto& object = dynamic_cast<krod::RenderAble&>(top.object());
        const krod::BoundingSphere bounds = object.bounds();
        warnOfNothingToDraw(session.report(), scene, *input, bounds);
        const FrameSetup setup = view.frameOf(bounds);
        const auto tiles = planTiles(setup.width, setup.height, setup.tiles);
        const auto heldRows = static_cast<std::uint64_t>(chain.empty() ? tiles.front().height : setup.height);
        requireMemory(*wish.path, heldRows * static_cast<std::uint64_t>(setup.width),
                      session.options().memory);
        RenderSession rendering({.gpu = session.options().gpu, .strictGlsl = session.options().strictGlsl});
        session.report().note("Drawing on " + rendering.driver() + ".");
        if (tiles.size() > 1) session.report().note("Drawing in " + std::to_string(tiles.size()) + " tiles.");
        if (chain.drawsWithOpenGL())
            requireOneTile("the picture", setup.width, setup.height, rendering.properties().maxTextureSize);

        const PictureDescription description = describe(scene, displays, chain, setup);
        PictureOutput output(wish, session.options(), description);
        PictureDrawing drawing{rendering, object, pool, setup, chain, *wish.path, session.options().quiet};
        if (tiles.size() == 1) {
            drawPicture(drawing, output);
            output.finish(session.report());
        } else {
            drawKeepingTiles(session.report(), drawing, output,
                             jobText(session, rendering, scene, displays, description));
        }
        session.noteShaderFiles();
    }

    /// Everything that decides the pixels of the tiles, as a text. Files that the input itself refers to, such
    /// as the textures of a model, are not in it.
    [[nodiscard]] std::string jobText(const Session& session, const RenderSession& rendering,
                                      const ModuleInstance& scene, const Displays& displays,
                                      const PictureDescription& description) const {
        std::string text = versionText() + description.find(NetworkName)->text + '\n' + rendering.driver() +
                           (session.options().strictGlsl ? " strict\n" : "\n") +
                           shaderFileStamps(session.shaderFolders());
        if (const auto file = scene.object().slots().input("file")) text += fileStamp(file->value().text());
        const auto addPlugin = [&](const CatalogueEntry& entry) {
            text += entry.plugin.value_or("") + '\n' + (entry.path ? fileStamp(*entry.path) : "");
        };
        addPlugin(scene.entry());
        for (const auto& display : displays) addPlugin(display->entry());
        for (const ModuleRequest& request : modules.displays) {
            text += request.key;
            for (const std::string& name : request.unset) text += " without " + name;
            text += '\n';
        }
        return text;
    }

    /// Draws the picture and keeps finished tiles until it is complete. A failure says how to go on, if there
    /// is anything to take.
    void drawKeepingTiles(Report& report, PictureDrawing& drawing, PictureOutput& output,
                          const std::string& job) const {
        TileJournal journal(*wish.path, job, resume);
        drawing.journal = &journal;
        const std::string parts = journal.folder().string();
        if (journal.foundAnotherJob())
            report.warning({parts,
                            "its tiles are of another drawing: input, parameters, view, driver or program "
                            "have changed; all tiles are drawn anew",
                            "",
                            "",
                            "",
                            {}});
        try {
            drawPicture(drawing, output);
            output.finish(report);
        } catch (const Failure& failure) {
            if (!journal.holdsTiles()) throw;
            Diagnostic message = failure.diagnostic();
            message.details.push_back("Finished tiles are kept in " + parts +
                                      "; continue with the same command and --resume");
            throw Failure(failure.fault(), message);
        }
        journal.remove();
        const auto all = planTiles(drawing.setup.width, drawing.setup.height, drawing.setup.tiles).size();
        if (resume)
            report.note(std::to_string(journal.takenCount()) + " of " + std::to_string(all) +
                        " tiles taken from " + parts + '.');
    }

    [[nodiscard]] PictureDescription describe(const ModuleInstance& scene, const Displays& displays,
                                              const TileChain& chain, const FrameSetup& setup) const {
        Provenance provenance;
        std::string last = provenance.add(scene, "");
        for (const auto& display : displays) last = provenance.add(*display, last);
        for (const auto& module : chain.instances()) last = provenance.add(*module, last);
        provenance.setView(setup);
        if (!chain.empty()) provenance.setTiles(setup.width, setup.height);
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
    bool listDemos = false, resume = false;
};

} // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace workbench
