// SPDX-License-Identifier: Apache-2.0
// plime render: a scene through displays into a picture.
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/SceneInput.h"
#include "apps/plime/pictures/OutputCheck.h"
#include "apps/plime/pictures/PictureRendering.h"
#include "apps/plime/terminal/Numbers.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>

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
  -d, --depth D       half, float, uint8 or uint16; else EXR and TIFF are half,
                      HDR is float, PNG uint16 and JPEG uint8
  --no-network        does not keep in the picture how it is made
  --clip              takes values that OUT cannot hold to the next that it can,
                      without a word
  --srgb              encodes the colours for viewing; a picture that is sRGB is
                      made linear first
  --clip-negative     makes values below 0 to 0 before --with
  --compression C, --quality N   as "plime process" takes them
  --size WxH          1280x720 unless asked otherwise
  --samples N         sets "samples" of each display that has no -p samples;
                      says where that changes nothing
  --camera EX,EY,EZ:TX,TY,TZ[:FOV]   eye, target, vertical angle in degrees;
                      else on +z, 30 degrees, as near as everything fits
  --up X,Y,Z          0,1,0 unless asked otherwise
  --background R,G,B[,A]   linear; 0,0,0,1 unless asked otherwise
  --set NAME=VALUE    sets a parameter of a generated scene, such as count of
                      demo:galaxy; "plime describe Scene/Galaxy" shows them
  --point-size N      of point lists, in pixels
  --tile N            draws in tiles of at most N pixels a side, 64 at least;
                      2048 unless asked otherwise
  --overlap N         draws N pixels around each tile, for displays that look at
                      their neighbours; 64 unless asked otherwise
  --resume            takes the tiles that an interrupted run of this command
                      has left in OUT.parts; without it all are drawn anew
  --save-network FILE   writes how the picture is made, for "plime run"
  --list-demos        lists the generated scenes

Points add up, and intensities far above 1 are kept: write .exr, or add --srgb.

Examples:
  plime render bunny.ply -o bunny.png --srgb
  plime render demo:galaxy --set count=5000 --display Display/CMYK -o galaxy.exr
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
        syntax.options.push_back({"--set", &settings});
        syntax.options.push_back({"--list-demos", &listDemos});
        syntax.options.push_back({"--resume", &resume});
        syntax.options.push_back({"--save-network", &network});
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
        for (const std::string& setting : settings) setOfScene(*scene, setting, limits);
        if (pointSize) setPointSize(*scene, limits);
        if (wish.srgb && scene->object().slots().input("linear")) scene->set("linear", "true", limits);
        const auto displays = makeDisplays(session, *scene, limits);
        warnOfIneffectiveSamples(session, displays);
        TileChain chain(session.catalogue(), modules.tiles, limits);
        requireSafe(session, *scene, displays, chain);
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
            connect(*display, source);
            module->hideUnset(pool);
            source = display;
            displays.push_back(std::move(module));
        }
        return displays;
    }

    static void connect(krod::MSDeferredObjectDisplay& display,
                        const krod::StrongPtr<krod::VGLRenderObject>& input) {
        try {
            display.setInput(input);
        } catch (const std::invalid_argument& refusal) {
            throw Failure(Fault::Usage, {"", refusal.what(), "", "", "", {}});
        }
    }

    [[nodiscard]] int sampleCount() const {
        return wholeNumber("--samples", *samples, 1, std::numeric_limits<int>::max());
    }

    /// Which file is shown says INPUT alone.
    void setOfScene(ModuleInstance& scene, const std::string& setting, Limits limits) const {
        const std::size_t sign = setting.find('=');
        if (sign == std::string::npos || sign == 0 || setting.starts_with("file="))
            throw Failure(Fault::Usage, {"--set",
                                         "is no setting of " + *input,
                                         "NAME=VALUE",
                                         '"' + setting + '"',
                                         "See \"plime describe " + scene.entry().key + '"',
                                         {}});
        scene.set(setting.substr(0, sign), setting.substr(sign + 1), limits);
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

    void requireSafe(Session& session, const ModuleInstance& scene, const Displays& displays,
                     const TileChain& chain) const {
        OutputCheck check("-o " + *wish.path, "Choose another name or folder");
        check.addPicture(*wish.path, *input);
        check.addInputs(scene);
        for (const auto& display : displays) check.addInputs(*display);
        for (const auto& module : chain.instances()) check.addInputs(*module);
        check.addInputs(session);
        if (network) check.addNetwork(*network);
        check.require();
    }

    void draw(Session& session, const ModuleInstance& scene, const Displays& displays,
              const TileChain& chain) const {
        NetworkOutput networks(session.report(), network, session.options().noClobber);
        Provenance provenance;
        RenderTask task{scene, *input, {}, chain, pool, view, wish, networks, resume};
        std::string last = provenance.add(scene);
        for (const auto& display : displays) {
            last = provenance.add(*display, last);
            task.displays.push_back(display.get());
        }
        provenance.show(last);
        for (const auto& module : chain.instances()) provenance.addProcessor(*module);
        OpenGLOnDemand openGL(session.options());
        renderToFile(session, openGL, task, provenance);
        networks.save(provenance.network());
        session.noteShaderFiles();
    }

    std::optional<std::string> input, samples, pointSize, network;
    std::vector<std::string> settings;
    OutputWish wish;
    ViewOptions view;
    ModuleChain modules;
    krod::VValuePool pool;
    bool listDemos = false, resume = false;
};

} // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace workbench
