// SPDX-License-Identifier: Apache-2.0
// The neighbourhood displays read the same taps of sample 0 again for each sample. Does the driver's compiler take that
// out of the loop? The quad alone, with 1 and 4 samples to read, and through a text in which it is taken out by hand.
#include "Report.h"
#include "Stage.h"

#include "workbench/gl/RenderSession.h"
#include "workbench/gl/ShaderCapture.h"

#include <array>
#include <cstring>
#include <stdexcept>

namespace {

using namespace bench;

constexpr int Width = 1280, Height = 720;

/// The text with the neighbourhood read once; the loop adds what was read.
std::string readOnce(std::string text) {
    const std::string call = "Color += getColor(P);", first = "vec4\tColor = getColor(P);";
    const auto begin = text.find(first), again = text.find(call);
    if (begin == std::string::npos || again == std::string::npos)
        throw std::runtime_error("the text of the display is another one than this benchmark knows");
    text.replace(again, call.size(), "Color += Once;");
    text.replace(begin, first.size(), "vec4\tOnce = getColor(P);\nvec4\tColor = Once;");
    return text;
}

/// Gives every uniform of one program its value in another one.
void copyUniforms(unsigned from, unsigned to) {
    int count = 0;
    glGetProgramiv(from, GL_ACTIVE_UNIFORMS, &count);
    glUseProgram(to);
    for (int i = 0; i < count; ++i) {
        std::array<char, 256> name{};
        int elements = 0, whole = 0;
        float real = 0;
        GLenum type = 0;
        glGetActiveUniform(from, static_cast<unsigned>(i), name.size(), nullptr, &elements, &type,
                           name.data());
        const int place = glGetUniformLocation(from, name.data()),
                  there = glGetUniformLocation(to, name.data());
        if (place < 0 || there < 0) continue; // OpenGL's own matrices
        if (type == GL_FLOAT)
            glGetUniformfv(from, place, &real), glUniform1f(there, real);
        else
            glGetUniformiv(from, place, &whole), glUniform1i(there, whole);
    }
    glUseProgram(0);
}

std::vector<krod::RGBAHalf> pixelsOf(const Destination& destination) {
    std::vector<krod::RGBAHalf> pixels(std::size_t{Width} * Height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, destination.target.framebuffer);
    glReadPixels(0, 0, Width, Height, GL_RGBA, GL_HALF_FLOAT, pixels.data());
    return pixels;
}

bool isSame(const std::vector<krod::RGBAHalf>& a, const std::vector<krod::RGBAHalf>& b) {
    return std::memcmp(static_cast<const void*>(a.data()), b.data(), a.size() * sizeof a[0]) == 0;
}

void measure(Modules& modules, workbench::RenderSession& session, const DisplayCase& about) {
    Stage stage(modules, about.key, about.settings, {}, Width, Height);
    stage.draw();
    BareFrame bare(about, *stage.display, *stage.scene, stage.destination, stage.pool);
    auto texts = workbench::captureShader(*stage.display, stage.pool).front();
    texts.fragmentText = readOnce(texts.fragmentText);
    const auto once = session.programs().find(texts);
    const unsigned own = bare.programName(), hoisted = once->name.get();
    copyUniforms(own, hoisted);
    const auto seconds = [&](unsigned program, int samples) {
        BareFrame::setSamples(program, samples);
        stage.destination.begin();
        return secondsOf([&] { bare.drawQuad(program); });
    };
    bare.drawScene();
    seconds(hoisted, 4);
    const auto byHand = pixelsOf(stage.destination);
    seconds(own, 4);
    const bool same = isSame(byHand, pixelsOf(stage.destination));
    std::vector<double> one, four, read, growth, gain;
    for (int round = 0; round < (about.isSlow() ? 5 : 11); ++round) {
        const bool turned = round % 2 == 1;
        if (turned) read.push_back(seconds(hoisted, 4));
        one.push_back(seconds(own, 1));
        four.push_back(seconds(own, 4));
        if (!turned) read.push_back(seconds(hoisted, 4));
        growth.push_back(four.back() / one.back());
        gain.push_back(read.back() / four.back());
    }
    row({about.label, fixed(median(one) * 1e3, 1), fixed(median(four) * 1e3, 1), spread(growth),
         fixed(median(read) * 1e3, 1), spread(gain), same ? "the same" : "**another**"});
}

} // namespace

int main() {
    workbench::RenderSession session;
    Modules modules;
    table("The quad at 1280x720, milliseconds:",
          {"display", "1 sample", "4 samples", "4 against 1", "4 samples, read once by hand",
           "by hand against the text", "picture"});
    for (const DisplayCase& about : displayCases())
        if (about.label.find("taps") != std::string::npos || about.label.find("width") != std::string::npos)
            measure(modules, session, about);
    return 0;
}
