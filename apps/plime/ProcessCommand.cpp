// SPDX-License-Identifier: Apache-2.0
// plime process: tile processors over a picture.
#include "apps/plime/Interruption.h"
#include "apps/plime/Numbers.h"
#include "apps/plime/PictureOutput.h"
#include "apps/plime/Progress.h"
#include "apps/plime/Provenance.h"
#include "apps/plime/Session.h"
#include "apps/plime/TilePass.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/platform/EglContext.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime process IN -o OUT --with KEY [-p NAME=VALUE]… [--with …]…

Runs tile processors over a picture, in the order of their --with. Values stay as
they are stored: nothing is clipped between modules, alpha is never multiplied.
Reads and writes EXR, PNG, TIFF, JPEG and HDR; the name of OUT says which.

  --with KEY        a tile processor; "plime list" shows them under Hollywood
  -p NAME=VALUE     sets a parameter of the --with before it; code=@FILE reads
                    the value from a file
  --unset NAME      makes a parameter unreadable: the module falls back
  --unchecked       accepts values outside of their limits
  -o, --output OUT  the picture to write: .exr .png .tif .tiff .jpg .jpeg .hdr
  -d, --depth D     half, float, uint8 or uint16; else EXR is half, HDR float,
                    and other formats have the depth of IN
  --srgb            encodes the colours for viewing
  --tile N          lets shader processors take a picture of up to N pixels a
                    side as one tile; 4096 unless asked otherwise

Modules that work without a shader take pictures of any size, strip by strip.

Examples:
  plime process sky.exr -o darker.exr --with Hollywood/GammaCorrection
  plime process sky.exr -o warmer.png --srgb \
        --with Hollywood/ColorGammaCorrection -p red=-0.3 -p blue=0.1
)";

class ProcessCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "process"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "run tile processors over a picture";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        Syntax syntax{{}, {{"IN", &input}}, &modules, {.tiles = true}};
        wish.addTo(syntax);
        syntax.options.push_back({"--tile", &tile});
        return syntax;
    }

    int run(Session& session) override {
        static_cast<void>(wish.requirePath());
        if (tile) side = wholeNumber("--tile", *tile, 16, LargestSide);
        if (modules.tiles.empty())
            throw Failure(Fault::Usage, {"process",
                                         "has nothing to do",
                                         "--with KEY, a tile processor",
                                         "",
                                         "\"plime list\" shows them under Hollywood",
                                         {}});
        TileChain chain(session.catalogue(), modules.tiles,
                        modules.unchecked ? Limits::Unchecked : Limits::Checked);
        chain.prepare();
        const auto reader = PictureReader::open(input);
        if (chain.drawsWithOpenGL())
            processWhole(session, chain, *reader);
        else
            processStrips(session, chain, *reader);
        if (reader->overflowCount() > 0)
            session.report().warning({input,
                                      std::to_string(reader->overflowCount()) +
                                          " values are too large for a half and became infinite",
                                      "",
                                      "",
                                      "",
                                      {}});
        return 0;
    }

private:
    /// The description of the output: the input's, with how it was made.
    [[nodiscard]] PictureDescription outputDescription(const TileChain& chain, const PictureReader& reader,
                                                       int tileHeight) const {
        Provenance provenance;
        std::string last = provenance.addPicture(input);
        for (const auto& module : chain.instances()) last = provenance.add(*module, last);
        provenance.setTiles(reader.description().width, tileHeight);
        PictureDescription description = reader.description();
        description.isGrey = false; // channels are processed one by one and may come apart
        description.setText(NetworkName, provenance.text());
        return description;
    }

    void processWhole(Session& session, const TileChain& chain, PictureReader& reader) const {
        RenderSession rendering({.gpu = session.options().gpu, .strictGlsl = session.options().strictGlsl});
        const int width = reader.description().width, height = reader.description().height;
        requireOneTile(input, width, height, side, rendering.properties().maxTextureSize);
        const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        requireMemory(input, count, session.options().memory);
        std::vector<krod::RGBAHalf> pixels(count);
        ExtraRows extra;
        reader.readRows(0, height, pixels.data(), &extra);
        session.report().note("The picture is one tile of " + std::to_string(width) + "x" +
                              std::to_string(height) + " pixels on " + rendering.driver() + ".");
        PictureOutput output(wish, session.options(), outputDescription(chain, reader, height));
        processRows(chain, pixels, width, height);
        output.write(0, height, pixels.data(), &extra);
        output.finish(session.report());
    }

    void processStrips(Session& session, const TileChain& chain, PictureReader& reader) const {
        const int width = reader.description().width, height = reader.description().height;
        const int rows = std::min(StripRows, height);
        session.report().note("Working in strips of " + std::to_string(rows) + " rows.");
        PictureOutput output(wish, session.options(), outputDescription(chain, reader, rows));
        const auto pixelsOf = [&](int count) {
            return static_cast<std::size_t>(width) * static_cast<std::size_t>(count);
        };
        Progress progress(input, pixelsOf(height), "Mpixel", 1e6, session.options().quiet);
        std::vector<krod::RGBAHalf> pixels;
        ExtraRows extra;
        for (int first = 0; first < height; first += rows) {
            throwIfInterrupted();
            const int count = std::min(rows, height - first);
            pixels.resize(pixelsOf(count));
            reader.readRows(first, count, pixels.data(), &extra);
            processRows(chain, pixels, width, count);
            output.write(first, count, pixels.data(), &extra);
            progress.show(pixelsOf(first + count));
        }
        output.finish(session.report());
    }

    std::string input;
    OutputWish wish;
    std::optional<std::string> tile;
    std::optional<int> side; ///< of --tile
    ModuleChain modules;
};

} // namespace

std::unique_ptr<Command> makeProcessCommand() { return std::make_unique<ProcessCommand>(); }

} // namespace workbench
