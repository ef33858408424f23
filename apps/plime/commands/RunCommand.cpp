// SPDX-License-Identifier: Apache-2.0
// plime run: a saved network into its pictures.
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/NetworkModules.h"
#include "apps/plime/pictures/NetworkOutputs.h"
#include "apps/plime/pictures/OutputCheck.h"
#include "apps/plime/pictures/PictureProcessing.h"
#include "apps/plime/pictures/PictureRendering.h"
#include "apps/plime/terminal/Numbers.h"
#include "workbench/files/InputKind.h"
#include "workbench/files/Picture.h"
#include "workbench/files/PictureFormat.h"
#include "workbench/network/NetworkFile.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime run NETWORK [-o OUT] [--set OBJECT.PARAM=VALUE]…

Makes the pictures of a saved network: one for each of its views. Networks are
written by --save-network of "plime render" and "plime process", are kept in
the pictures that these write, and can be written by hand: docs/network.md.
NETWORK is such a file (.json), or a picture that keeps one.
The picture is the same, byte for byte, as long as files, plug-ins and driver
are, and the format is that of the first time.

  -o, --output OUT    the picture to write; {view} in it stands for the name of
                      the view, and must be there where the network has several.
                      Without -o it is NETWORK_VIEW.exr in the current folder
  --set OBJECT.PARAM=VALUE   sets a parameter, with all that share its value;
                      VALUE can be @FILE, as with -p
  --set VIEW.picture=FILE    makes a view of another picture: a saved look for
                      many
  --unchecked         accepts values outside of their limits
  -d, --depth D       half, float, uint8 or uint16; else as the network says
  --srgb              encodes the colours for viewing, also where the network
                      does not say so; see "plime help process"
  --no-network        does not keep in the picture how it is made
  --clip-negative     makes values below 0 to 0 before tile processors
  --compression C, --quality N   as "plime process" takes them
  --size WxH, --camera …, --up …, --background …
                      instead of what the network says of its drawn views, as
                      "plime render" takes them
  --clip              as "plime render" takes it
  --tile N, --overlap N   tiles, as "plime render" and "plime process" take them
  --resume            takes the tiles that an interrupted run has left

Names of files in the network lead from the folder that it lies in, those behind
--set from the current one.

Examples:
  plime render demo:galaxy --display Display/Blurred -o galaxy.exr \
        --save-network galaxy.json
  plime run galaxy.json -o wider.exr --set blurred.width=20
  plime run galaxy.exr -o again.exr
  plime run look.json -o b_tm.exr --set main.picture=b.exr
)";

/// A network's own file, or the one that a picture keeps. Throws as readNetwork, and Failure(Input) for a picture
/// without one.
Network networkOf(const std::string& path) {
    try {
        return readNetwork(path);
    } catch (const Failure&) {
        if (kindOf(path) != InputKind::Picture) throw;
    }
    const auto picture = PictureReader::open(path);
    if (const Metadatum* const kept = picture->description().find(NetworkName))
        return networkFromText(kept->text, path);
    throw Failure(
        Fault::Input,
        {path, "is a picture that keeps no network", "a network, or a picture made by plime", "", "", {}});
}

class RunCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "run"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "make the pictures of a saved network";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        Syntax syntax{{}, {{"NETWORK", &path}}, nullptr, {}};
        wish.addTo(syntax);
        view.addTo(syntax);
        syntax.options.push_back({"--set", &settings});
        syntax.options.push_back({"--unchecked", &unchecked});
        syntax.options.push_back({"--resume", &resume});
        return syntax;
    }

    int run(Session& session) override {
        clipsNegative = wish.clipNegative;
        const WriteOptions asked = wish.writeOptions(session.options());
        Network network = networkOf(path);
        const auto folder = std::filesystem::path(path).parent_path();
        changePaths(network, [&](const std::string& file) { return (folder / file).string(); });
        setPictures(network);
        const std::vector<std::string> outputs = outputsOf(network, path, wish.path);
        for (const NetworkView& each : network.views) requirePossible(each, path);
        requireUsefulOptions(network);
        const Limits limits = unchecked ? Limits::Unchecked : Limits::Checked;
        NetworkModules modules(session.catalogue(), network, path, limits);
        modules.set(settings, limits);
        network = modules.network();
        requireSafe(session, modules, network, outputs);
        OpenGLOnDemand openGL(session.options());
        NetworkOutput networks(session.report(), outputs.size());
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            wishFor(outputs[i], network.views[i], asked, session.report());
            try {
                make(session, openGL, modules, partFor(network, network.views[i]), networks);
            } catch (const Failure& failure) {
                if (failure.fault() != Fault::Interrupted || outputs.size() == 1) throw;
                throw interruptedAfter(i, outputs.size(), failure);
            }
            session.report().detail(outputs[i] + " is written.");
        }
        session.noteShaderFiles();
        return 0;
    }

private:
    /// Takes "VIEW.picture=FILE" out of the settings. Tiles were those of the picture that was there before.
    void setPictures(Network& network) {
        std::erase_if(settings, [&](const std::string& setting) {
            for (NetworkView& each : network.views) {
                const std::string start = each.name + ".picture=";
                if (each.picture.empty() || network.object(each.name) || !setting.starts_with(start))
                    continue;
                each.picture = setting.substr(start.size());
                each.tiles.reset();
                return true;
            }
            return false;
        });
    }

    void requireSafe(Session& session, const NetworkModules& modules, const Network& network,
                     const std::vector<std::string>& outputs) const {
        OutputCheck check(wish.path ? "-o " + *wish.path : "",
                          "Choose another folder or name, like -o out/{view}.exr");
        check.addInput(path);
        check.addInputs(session);
        for (const auto& [name, module] : modules.all()) check.addInputs(*module);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            check.addInput(network.views[i].picture);
            check.addPicture(outputs[i], "the view " + network.views[i].name);
        }
        check.require();
    }

    /// Options that say how to draw need something to draw.
    void requireUsefulOptions(const Network& network) const {
        const bool draws =
            std::ranges::any_of(network.views, [](const auto& each) { return !each.shows.empty(); });
        if (draws) return;
        for (const auto& [option, given] : {std::pair{"--size", view.size.has_value()},
                                            {"--camera", view.camera.has_value()},
                                            {"--up", view.up.has_value()},
                                            {"--background", view.background.has_value()}})
            if (given)
                throw Failure(Fault::Usage,
                              {option, "has no meaning here: " + path + " draws nothing", "", "", "", {}});
    }

    /// What is not typed comes from the view. A depth that the format does not hold was meant for another one.
    void wishFor(const std::string& output, const NetworkView& shown, const WriteOptions& asked,
                 Report& report) {
        wish.path = output;
        wish.depth.reset();
        wish.srgb = asked.srgb || shown.srgb;
        wish.clipNegative = clipsNegative || shown.clipNegative;
        const std::optional<PixelDepth> depth = asked.depth ? asked.depth : shown.depth;
        const auto& held = outputFormat(output).depths;
        if (!depth) return;
        wish.depth = depthName(*depth);
        if (asked.depth || std::ranges::find(held, *depth) != held.end()) return;
        report.warning(
            {output, "cannot have the depth " + *wish.depth + " of the view " + shown.name, "", "", "", {}});
        wish.depth.reset();
    }

    /// Makes the picture of a network's only view.
    void make(Session& session, OpenGLOnDemand& openGL, const NetworkModules& modules, Network part,
              NetworkOutput& networks) {
        const NetworkView shown = part.views.front();
        TileChain chain(modules.processorsOf(shown));
        chain.prepare();
        Provenance provenance(std::move(part));
        if (shown.shows.empty()) {
            PictureProcessing processing(session, openGL, chain, wish, tilingOf(shown), provenance, networks,
                                         resume);
            processing.process({shown.picture, *wish.path});
            return;
        }
        const ShownObject object = modules.shownBy(shown);
        krod::VValuePool pool;
        object.scene->hideUnset(pool);
        for (const ModuleInstance* display : object.displays) display->hideUnset(pool);
        view.saved = shown;
        const auto file = object.scene->object().slots().input("file");
        const std::string input = file ? file->value().text() : shown.name;
        renderToFile(session, openGL,
                     {*object.scene, input, object.displays, chain, pool, view, wish, networks, resume},
                     provenance);
    }

    [[nodiscard]] TilingWish tilingOf(const NetworkView& shown) const {
        TilingWish tiling = tilingFrom(view.tile, view.overlap);
        if (!shown.tiles) return tiling;
        tiling.exact = {shown.tiles->width, shown.tiles->height,
                        tiling.overlap.value_or(shown.tiles->overlap)};
        return tiling;
    }

    std::string path;
    OutputWish wish;
    ViewOptions view;
    std::vector<std::string> settings;
    bool unchecked = false, resume = false;
    bool clipsNegative = false; ///< asked for, whatever the network says
};

} // namespace

std::unique_ptr<Command> makeRunCommand() { return std::make_unique<RunCommand>(); }

} // namespace workbench
