// SPDX-License-Identifier: Apache-2.0
// One tile of 4096x4096 through each shader processor: how the time parts into upload, drawing and read-back.
#include "Median.h"
#include "Modules.h"
#include "Report.h"

#include "workbench/gl/RenderSession.h"

#include "host/gl/GLImageTileProcessor.h"

#include <epoxy/gl.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace {

using namespace krod;
using namespace bench;
using Clock = std::chrono::steady_clock;

constexpr int Side = 4096, Rounds = 7;

double secondsBetween(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double>(b - a).count();
}

/// Runs the shader of a module and notes the time before and after it is drawn. OpenGL works behind the caller's
/// back, so it is asked to finish at both points.
class TimedProcessor : public GLImageTileProcessor {
public:
    explicit TimedProcessor(std::string text) : text(std::move(text)) {}

    void renderFrameTexture(GLTexture2D& frame) override {
        glFinish();
        uploaded = Clock::now();
        GLImageTileProcessor::renderFrameTexture(frame);
        glFinish();
        drawn = Clock::now();
    }
    [[nodiscard]] std::string shaderCode() const override { return text; }

    Clock::time_point uploaded, drawn;

private:
    std::string text;
};

struct TileCase {
    const char* key;
    std::vector<Setting> settings;
};

const std::array Cases{TileCase{"Hollywood/HDRToneMapping", {{"exponent", "0.3"}}},
                       TileCase{"Hollywood/HDRColoredToneMapping", {}},
                       TileCase{"Hollywood/ColorGammaCorrection", {{"red", "0.3"}}},
                       TileCase{"Hollywood/PixelBlur", {}}, TileCase{"Hollywood/TileProgram", {}}};

StrongPtr<Chunk<RGBAHalf>> picture() {
    StrongPtr<Chunk<RGBAHalf>> pixels(new Chunk<RGBAHalf>(std::size_t{Side} * Side));
    const half_float::half one(1.0f);
    for (std::size_t i = 0; i < pixels->elements(); ++i) {
        const half_float::half value(static_cast<float>(i * 7 % 4096) / 256);
        pixels->data()[i] = {value, value, value, one};
    }
    return pixels;
}

void measure(Modules& modules, const TileCase& about) {
    const auto module = modules.make(about.key, about.settings);
    const auto processor = castStrong<GLImageTileProcessor>(processorOf(*module));
    if (!processor) throw std::runtime_error(std::string(about.key) + " is no shader processor");
    TimedProcessor timed(processor->shaderCode());
    const VValuePool pool;
    const VRenderContext context(pool);
    const auto pixels = picture();
    ImageTile tile(Side, Side, pixels);
    timed.process(context, tile); // compiles, and makes texture and target
    std::vector<double> upload, draw, readBack, whole;
    for (int round = 0; round < Rounds; ++round) {
        const auto start = Clock::now();
        timed.process(context, tile);
        const auto end = Clock::now();
        upload.push_back(secondsBetween(start, timed.uploaded));
        draw.push_back(secondsBetween(timed.uploaded, timed.drawn));
        readBack.push_back(secondsBetween(timed.drawn, end));
        whole.push_back(secondsBetween(start, end));
    }
    const double sum = median(upload) + median(draw) + median(readBack);
    const auto cell = [&](const std::vector<double>& seconds) {
        return fixed(median(seconds) * 1e3, 0) + " ms, " + fixed(100 * median(seconds) / sum, 0) + " %";
    };
    row({'`' + std::string(about.key) + '`', cell(upload), cell(draw), cell(readBack),
         fixed(median(whole) * 1e3, 0) + " ms"});
}

} // namespace

int main() {
    const workbench::RenderSession session;
    Modules modules;
    table("One tile of 4096x4096 half RGBA:", {"module", "upload", "drawing", "read-back", "sum"});
    for (const TileCase& about : Cases) measure(modules, about);
    return 0;
}
