// SPDX-License-Identifier: Apache-2.0
// Frames of displays against frames of VTK with the render pass that comes closest: the same model, size and driver, each
// program in turn. VTK draws in a process of its own, which waits while a display is drawn, and measures itself.
#include "bench/Files.h"
#include "bench/MeshFiles.h"
#include "bench/Report.h"
#include "bench/Stage.h"
#include "bench/peers/Peer.h"

#include "workbench/gl/RenderSession.h"

#include <array>
#include <cstring>

namespace {

using namespace bench;

struct Comparison {
    const char* label;
    const char* key; ///< of the display; empty: the object alone
    std::vector<Setting> settings;
    const char* pass; ///< of VTK, as the peer calls it
    const char* passLabel;
    const char* samples; ///< of VTK, as the peer calls them
};

/// Software draws four samples into every multisample target. VTK's passes draw the model into ordinary textures, whatever
/// samples the window has; edges are smooth there with its pass for supersampling before them.
const std::vector<Comparison>& comparisons() {
    static const std::vector<Comparison> all{
        {"the object alone", "", {}, "none", "none", "0"},
        {"Blurred, 3 taps", "Display/Blurred", {{"width", "3"}}, "blur", "vtkGaussianBlurPass", "super"},
        {"Depth, tone-mapped",
         "Display/Depth@HDRObjectDisplay",
         {{"exponent", "0.3"}},
         "tone",
         "vtkToneMappingPass",
         "super"},
        {"CurveAdjust", "Display/CurveAdjust", {{"p", "0.4 0.7"}}, "tone", "vtkToneMappingPass", "super"},
        {"PixelContours, width 1",
         "Display/PixelContours",
         {{"width", "1"}, {"strength", "0.5"}},
         "contour",
         "vtkSobelGradientMagnitudePass",
         "super"},
        {"CMYK", "Display/CMYK", {}, "none", "none", "4"}};
    return all;
}

struct Model {
    const char* label;
    std::string file;
    int rounds;
};
using Models = std::array<Model, 2>;

/// The ratios of frames.
std::vector<double> measure(Modules& modules, const Comparison& about, const Model& model, int width,
                            int height, const std::string& samples) {
    Stage stage(modules, about.key, about.settings, {"file", model.file}, width, height);
    Peer vtk({"/usr/bin/python3", VTK_PEER, model.file, std::to_string(width), std::to_string(height),
              samples, about.pass});
    for (int i = 0; i < 3; ++i) stage.draw();
    std::vector<double> ours, theirs, ratios;
    const auto drawOurs = [&] { ours.push_back(secondsOf([&] { stage.draw(); })); };
    for (int round = 0; round < model.rounds; ++round) {
        if (round % 2 == 0) drawOurs();
        theirs.push_back(vtk.ask());
        if (round % 2 == 1) drawOurs();
        ratios.push_back(ours.back() / theirs.back());
    }
    row({about.label, about.passLabel, samples, model.label,
         std::to_string(width) + 'x' + std::to_string(height), fixed(median(ours) * 1e3, 1),
         fixed(median(theirs) * 1e3, 1), spread(ratios)});
    return ratios;
}

/// Over models and sizes; and once against VTK's pass with edges as they come, for information, as everything is that
/// has no matching pass.
void compare(Modules& modules, const Comparison& about, const Models& models) {
    for (const Model& model : models) {
        std::vector<double> worst;
        for (const auto& [width, height] : {std::pair{1280, 720}, {1920, 1080}}) {
            const auto ratios = measure(modules, about, model, width, height, about.samples);
            if (median(ratios) > median(worst)) worst = ratios;
        }
        if (std::strcmp(about.pass, "none") == 0) continue;
        wanted(std::string("frame of ") + about.label + ", " + model.label + ", against VTK with pass " +
                   about.passLabel + " and samples " + about.samples + ", the worse size",
               {Limit::Side::AtMost, 0.8}, worst);
    }
    if (std::strcmp(about.samples, "super") == 0)
        static_cast<void>(measure(modules, about, models[0], 1280, 720, "0"));
}

std::string greetingOf(const std::string& model) {
    return Peer({"/usr/bin/python3", VTK_PEER, model, "64", "64", "4", "none"}).greeting();
}

} // namespace

/// bench_displays [PART]: only comparisons whose label contains the part. Needs an X server for VTK.
int main(int argc, char** argv) {
    const Folder folder;
    const Models models{{{"70,000 triangles", folder.file("few.ply"), 11},
                         {"1,000,000 triangles", folder.file("many.ply"), 5}}};
    writeRing(models[0].file, 70'000);
    writeRing(models[1].file, 1'000'000);
    const workbench::RenderSession session;
    Modules modules;
    note("Displays: " + session.driver() + ". The other side: " + greetingOf(models[0].file).substr(6) + '.');
    table("Frames, milliseconds:", {"display", "VTK's pass", "its samples", "model", "size", "display, ms",
                                    "VTK, ms", "display / VTK"});
    for (const Comparison& about : comparisons())
        if (argc < 2 || std::strstr(about.label, argv[1])) compare(modules, about, models);
    return 0;
}
