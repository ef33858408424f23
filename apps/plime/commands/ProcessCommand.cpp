// SPDX-License-Identifier: Apache-2.0
// plime process: tile processors over a picture.
#include "apps/plime/commands/Commands.h"
#include "apps/plime/pictures/OutputCheck.h"
#include "apps/plime/pictures/PictureProcessing.h"
#include "apps/plime/terminal/Interruption.h"

#include <new>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime process IN… -o OUT --with KEY [-p NAME=VALUE]… [--with …]…

Runs tile processors over pictures, in the order of their --with. Modules see
values as they are stored, as halves: 11 bits, up to 65504; what that changes is
told. Nothing is clipped between modules. Colors are multiplied by alpha or
divided by it only where IN and OUT mean alpha differently (EXR multiplies, PNG
does not, TIFF says which) and the modules leave it alone.
Reads and writes EXR, PNG, TIFF, JPEG and HDR; the name of OUT says which.
OUT is never a file that the command reads.

  --with KEY        a tile processor; "plime list" shows them under Hollywood
  -p NAME=VALUE     sets a parameter of the --with before it; code=@FILE reads
                    the value from a file
  --unset NAME      makes a parameter unreadable: the module falls back
  --unchecked       accepts values outside of their limits
  -o, --output OUT  the picture to write: .exr .png .tif .tiff .jpg .jpeg .hdr;
                    {stem} and {ext} in it stand for the name of IN without its
                    extension, and for the extension; its folder must exist
  -d, --depth D     half, float, uint8 or uint16; else EXR is half, HDR float,
                    and other formats have the depth of IN where they hold it:
                    of 8 bits comes an 8-bit PNG, of more a 16-bit one
  --no-network      does not keep in the picture how it is made
  --clip            takes values that OUT cannot hold to the next that it can,
                    without a word
  --srgb            encodes the colours for viewing; a picture that is sRGB, by
                    its own word or because it has 8 bits, is made linear first
  --clip-negative   makes values below 0 to 0 before the modules, of which powers
                    make NaN
  --compression C   EXR: none, rle, zips, zip, piz, pxr24, b44, b44a, dwaa, dwab;
                    TIFF: none, lzw, zip, packbits; else that of IN, or zip where
                    that loses
  --quality N       of JPEG, dwaa and dwab, 1 to 100; 95 unless asked otherwise
  --tile N          lets shader processors take a picture of up to N pixels a
                    side as one tile, 64 at least; 4096 unless asked otherwise,
                    and as many as driver and memory allow where a shader works
                    with the place in the tile
  --overlap N       what a tile sees of its neighbours, in pixels; 64 unless
                    asked otherwise, less with small tiles
  --resume          takes the tiles that an interrupted run of this command has
                    left in OUT.parts; without it all are made anew
  --save-network FILE   writes how the picture is made, for "plime run"; with
                    one IN only

Modules that work without a shader take pictures of any size, strip by strip.
For shaders, a picture larger than one tile is cut into equal tiles of at most
2048 pixels a side. A shader that works with the place in the tile does
something else then, and a warning says so. Hollywood/PixelBlur measures in
shares of a tile; its sharpness s needs an overlap of 0.01/s of the tile, with
less the borders of tiles can be seen.

With several pictures, OUT must lead each to a file of its own. One that fails
does not stop the others: its error is told at once, which ones failed again at
the end, and the exit code is 1. A shader that does not compile stops all at
once.

Examples:
  plime process sky.exr -o darker.exr --with Hollywood/GammaCorrection
  plime process sky.exr -o warmer.png --srgb \
        --with Hollywood/ColorGammaCorrection -p red=-0.3 -p blue=0.1
  plime process *.exr -o out/{stem}_tm.png --with Hollywood/HDRToneMapping
)";

constexpr std::uint64_t Whole = 1000; // pieces that one of many pictures counts in the progress

/// Whether work on other pictures would fail alike, or is not wanted any more.
bool stopsAll(Fault fault, bool sameFormat) {
    switch (fault) {
    case Fault::Usage:
        return sameFormat;
    case Fault::Plugin:
    case Fault::Shader:
    case Fault::OpenGL:
    case Fault::Interrupted:
        return true;
    default:
        return false;
    }
}

/// One line that names the picture.
Diagnostic failureOf(const PictureJob& job, Diagnostic message) {
    message.details.clear();
    if (!message.who.starts_with(job.input) && !message.who.starts_with(job.output))
        message.who = job.input + (message.who.empty() ? "" : ", " + message.who);
    return message;
}

class ProcessCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "process"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "run tile processors over pictures";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        Syntax syntax{{}, {{"IN", &inputs}}, &modules, {.tiles = true}};
        wish.addTo(syntax);
        syntax.options.push_back({"--tile", &tile});
        syntax.options.push_back({"--overlap", &overlap});
        syntax.options.push_back({"--resume", &resume});
        syntax.options.push_back({"--save-network", &network});
        return syntax;
    }

    int run(Session& session) override {
        const OutputPattern pattern(wish.path.value_or(""));
        if (!pattern.hasExtension()) static_cast<void>(wish.requirePath());
        static_cast<void>(wish.writeOptions(session.options()));
        const TilingWish tiling = tilingFrom(tile, overlap);
        if (modules.tiles.empty())
            throw Failure(Fault::Usage, {"process",
                                         "has nothing to do",
                                         "--with KEY, a tile processor",
                                         "",
                                         "\"plime list\" shows them under Hollywood",
                                         {}});
        if (network && inputs.size() > 1)
            throw Failure(Fault::Usage, {"--save-network",
                                         "keeps how one picture is made",
                                         "one IN",
                                         std::to_string(inputs.size()),
                                         "Every picture keeps its own; see \"plime info OUT --network\"",
                                         {}});
        const std::vector<PictureJob> jobs = planOutputs(inputs, pattern);
        if (jobs.size() > 1) requireFolders(jobs);
        TileChain chain(session.catalogue(), modules.tiles,
                        modules.unchecked ? Limits::Unchecked : Limits::Checked);
        requireSafe(session, jobs, chain, pattern);
        chain.prepare();
        Provenance provenance;
        for (const auto& module : chain.instances()) provenance.addProcessor(*module);
        OpenGLOnDemand openGL(session.options());
        NetworkOutput networks = networksOf(session, jobs);
        PictureProcessing processing(session, openGL, chain, wish, tiling, provenance, networks, resume);
        if (jobs.size() == 1) {
            networks.save(processing.process(jobs.front()));
        } else {
            processAll(session, processing, jobs, !pattern.hasExtension());
        }
        return 0;
    }

private:
    [[nodiscard]] NetworkOutput networksOf(Session& session, const std::vector<PictureJob>& jobs) const {
        if (!network) return {session.report(), jobs.size()};
        return {session.report(), network, session.options().noClobber};
    }

    void requireSafe(Session& session, const std::vector<PictureJob>& jobs, const TileChain& chain,
                     const OutputPattern& pattern) const {
        OutputCheck check("-o " + pattern.name(),
                          pattern.hasStem() ? "Choose another folder or name, like -o out/{stem}_2.{ext}"
                                            : "Give every picture a name of its own, like -o out/{stem}.exr");
        for (const PictureJob& job : jobs) {
            check.addInput(job.input);
            check.addPicture(job.output, job.input);
        }
        for (const auto& module : chain.instances()) check.addInputs(*module);
        check.addInputs(session);
        if (network) check.addNetwork(*network);
        check.require();
    }

    /// Throws Failure(Partial) when some of the pictures failed.
    static void processAll(Session& session, PictureProcessing& processing,
                           const std::vector<PictureJob>& jobs, bool sameFormat) {
        compileOnce(processing);
        Progress line(std::to_string(jobs.size()) + " pictures", jobs.size() * Whole, "pictures", Whole,
                      session.options().quiet);
        std::vector<std::string> failed;
        const auto tell = [&](const PictureJob& job, const Diagnostic& message) {
            failed.push_back(job.input);
            line.clear();
            session.report().error(failureOf(job, message));
        };
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            const ProgressPart part{line, i * Whole, Whole};
            try {
                throwIfInterrupted();
                processing.process(jobs[i], &part);
            } catch (const Failure& failure) {
                if (failure.fault() == Fault::Interrupted)
                    throw interruptedAfter(i - failed.size(), jobs.size(), failure);
                if (stopsAll(failure.fault(), sameFormat)) throw;
                tell(jobs[i], failure.diagnostic());
            } catch (const std::bad_alloc&) {
                tell(jobs[i], {"", "not enough memory", "", "", "", {}});
            } catch (const std::exception& error) {
                tell(jobs[i], {"", error.what(), "", "", "", {}});
            }
        }
        line.clear();
        session.report().detail(writtenText(jobs.size() - failed.size(), jobs.size()) + '.');
        if (!failed.empty())
            throw Failure(Fault::Partial, {"",
                                           std::to_string(failed.size()) + " of " +
                                               std::to_string(jobs.size()) + " pictures failed",
                                           "", "", "", failed});
    }

    /// Before any picture is touched.
    static void compileOnce(PictureProcessing& processing) {
        try {
            processing.compile();
        } catch (const Failure& failure) {
            if (failure.fault() != Fault::Shader) throw;
            Diagnostic message = failure.diagnostic();
            message.advice = "It would fail for every picture, so none is begun";
            throw Failure(failure.fault(), message);
        }
    }

    std::vector<std::string> inputs;
    OutputWish wish;
    std::optional<std::string> tile, overlap, network;
    ModuleChain modules;
    bool resume = false;
};

} // namespace

std::unique_ptr<Command> makeProcessCommand() { return std::make_unique<ProcessCommand>(); }

} // namespace workbench
