// SPDX-License-Identifier: Apache-2.0
// plime-shader-worker: compiles a program and draws tiles with it, in place of the host. The program comes on
// standard input, a letter and a number or text go to standard output. It is started by the host, not by people.
#include "workbench/gl/Quad.h"
#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderGuard.h"
#include "workbench/gl/worker/ShaderTrial.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLImageTileProcessor.h"
#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <exception>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using namespace workbench;

/// A tile processor with foreign texts.
class FirstTile : public krod::GLImageTileProcessor {
public:
    explicit FirstTile(const ShaderTrial& trial) : trial(trial) {}

    [[nodiscard]] std::string shaderCode() const override { return trial.fragmentText; }

    void renderFrameTexture(krod::GLTexture2D& frame) override {
        krod::GLProgram program(trial.vertexText, trial.fragmentText, "vertex shader", "fragment shader");
        program.use();
        program.setUniformValuei("frame", 0, false);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, frame.name());
        drawFullScreenQuad(0);
    }

private:
    const ShaderTrial& trial;
};

std::vector<char> readRequest() {
    std::vector<char> bytes;
    char part[4096];
    for (ssize_t size = 0; (size = ::read(STDIN_FILENO, part, sizeof part)) > 0;)
        bytes.insert(bytes.end(), part, part + size);
    return bytes;
}

/// Handlers of sanitizers make exit codes of signals.
void takeSignalsAsTheyAre() {
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) std::signal(number, SIG_DFL);
}

/// A value of the tile at a place from 0 to 1: in even rows the place, in odd ones light up to the largest half.
half_float::half valueAt(float place, int row) {
    constexpr float LargestHalf = 65504;
    return half_float::half(row % 2 == 0 ? place : std::pow(LargestHalf, place));
}

/// Draws a tile with values from 0 to the largest, so that many paths of the program are taken. Returns the
/// seconds that a pixel took.
double drawTile(const ShaderTrial& trial, int side) {
    const int pixels = side * side;
    const krod::StrongPtr<krod::Chunk<krod::RGBAHalf>> store(
        new krod::Chunk<krod::RGBAHalf>(static_cast<std::size_t>(pixels)));
    for (int i = 0; i < pixels; ++i) {
        const int row = i / side;
        const float x = static_cast<float>(i % side) / static_cast<float>(side - 1);
        const float y = static_cast<float>(row) / static_cast<float>(side - 1);
        store->data()[i] = {valueAt(x, row), valueAt(y, row), valueAt(x * y, row), half_float::half(1.0F)};
    }
    krod::ImageTile tile(side, side, store);
    const krod::VValuePool pool;
    const auto begin = std::chrono::steady_clock::now();
    FirstTile(trial).process(krod::VRenderContext(pool), tile);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - begin;
    return spent.count() / pixels;
}

/// A small tile, and a larger one where that takes little time: the more places, the more is tried. The first
/// drawing does not count, since drivers compile in it.
double drawTiles(const ShaderTrial& trial) {
    constexpr int Small = 16, Large = 128;
    constexpr double LittleTime = 0.25;
    static_cast<void>(drawTile(trial, Small));
    const double secondsPerPixel = drawTile(trial, Small);
    return secondsPerPixel * Large * Large > LittleTime ? secondsPerPixel : drawTile(trial, Large);
}

[[noreturn]] void answer(TrialAnswer letter, const std::string& text = "") {
    const std::string all = static_cast<char>(letter) + text;
    const bool sent = ::write(STDOUT_FILENO, all.data(), all.size()) == static_cast<ssize_t>(all.size());
    ::_exit(sent ? 0 : 1); // no destructor of a driver may hold this up
}

} // namespace

int main() {
    try {
        const ShaderTrial trial = unpacked(readRequest());
        takeSignalsAsTheyAre();
        setShaderGuard({.checkTexts = false}); // the host has checked what it wants checked
        RenderSession session({.gpu = parseGpuChoice(trial.gpu), .strictGlsl = trial.strict});
        const double secondsPerPixel = drawTiles(trial);
        answer(TrialAnswer::Drawn, std::to_string(std::llround(1e9 * secondsPerPixel)));
    } catch (const Failure& failure) {
        answer(failure.fault() == Fault::Shader ? TrialAnswer::Refused : TrialAnswer::NoOpenGL,
               failure.what());
    } catch (const std::exception& error) {
        answer(TrialAnswer::NoOpenGL, error.what());
    }
}
