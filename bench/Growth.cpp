// SPDX-License-Identifier: Apache-2.0
// How the time of a frame grows: with pixels, samples, taps, triangles, points and the length of a chain of displays.
// Each curve is measured over and over from its first to its last point, so that a change of the machine's speed meets
// all points alike; a straight line is laid through the medians.
#include "Files.h"
#include "MeshFiles.h"
#include "Plot.h"
#include "Report.h"
#include "Stage.h"

#include "workbench/gl/RenderSession.h"

#include <cmath>
#include <functional>
#include <memory>

namespace {

using namespace bench;

constexpr int Rounds = 7, Width = 1280, Height = 720;

/// One point: where it lies, and the frame that is measured there.
struct Station {
    double x;
    std::function<void()> draw;
};

struct Curve {
    std::string file, title, across;
    int digits; ///< of x in the table
};

class Report {
public:
    explicit Report(std::string folder) : folder(std::move(folder)) {}

    /// `make` gives the frame at a place; what it owns lives as long as the curve is measured.
    void measure(const Curve& curve, const std::vector<double>& places,
                 const std::function<std::function<void()>(double)>& make) {
        std::vector<Station> stations;
        for (const double x : places) stations.push_back({x, make(x)});
        std::vector<std::vector<double>> times(stations.size());
        for (const Station& station : stations) station.draw(); // compiles, reads and fills caches
        for (int round = 0; round < Rounds; ++round)
            for (std::size_t i = 0; i < stations.size(); ++i)
                times[i].push_back(secondsOf(stations[i].draw) * 1e3);
        print(curve, stations, times);
    }

private:
    void print(const Curve& curve, const std::vector<Station>& stations,
               const std::vector<std::vector<double>>& times) const {
        Plot plot{curve.title, curve.across, "frame, ms", {}, {}};
        table(curve.title + ":", {curve.across, "frame, ms"});
        for (std::size_t i = 0; i < stations.size(); ++i) {
            row({fixed(stations[i].x, curve.digits), spread(times[i])});
            plot.points.push_back({stations[i].x, median(times[i])});
        }
        plot.line = lineThrough(plot.points);
        note("Line: " + fixed(plot.line.offset, 2) + " ms + " + fixed(plot.line.slope, 3) + " ms x " +
             curve.across + ", R² = " + fixed(plot.line.share, 4) + ".");
        if (folder.empty()) return;
        plot.write(folder + '/' + curve.file + ".svg");
        note("![" + curve.title + "](performance/" + curve.file + ".svg)");
    }

    std::string folder;
};

/// The frame of a stage, which the frame owns.
std::function<void()> frameOf(std::shared_ptr<Stage> stage) {
    return [stage = std::move(stage)] { stage->draw(); };
}

void overPixels(Report& report, Modules& modules, const char* file, const DisplayCase& about) {
    report.measure({file, "Pixels, " + about.label, "megapixels", 2}, {0.15, 0.3, 0.6, 0.9, 1.4, 2.1},
                   [&](double x) {
                       const int height = static_cast<int>(std::lround(std::sqrt(x * 1e6 * 9 / 16)));
                       return frameOf(std::make_shared<Stage>(modules, about.key, about.settings, Setting{},
                                                              height * 16 / 9, height));
                   });
}

void overSamples(Report& report, Modules& modules, const DisplayCase& about) {
    report.measure({"samples", "Samples that the text reads, " + about.label, "samples", 0}, {1, 2, 3, 4},
                   [&](double x) {
                       const auto stage = std::make_shared<Stage>(modules, about.key, about.settings,
                                                                  Setting{}, Width, Height);
                       stage->draw();
                       const auto bare = std::make_shared<BareFrame>(about, *stage->display, *stage->scene,
                                                                     stage->destination, stage->pool);
                       return [stage, bare, x] {
                           bare->drawScene();
                           BareFrame::setSamples(bare->programName(), static_cast<int>(x));
                           bare->drawQuad(bare->programName());
                       };
                   });
}

void overTaps(Report& report, Modules& modules) {
    report.measure({"taps", "Taps, Blurred", "taps", 0}, {3, 5, 8, 11, 14, 17, 20}, [&](double x) {
        const std::vector<Setting> settings{{"width", fixed(x, 0)}};
        return frameOf(
            std::make_shared<Stage>(modules, "Display/Blurred", settings, Setting{}, Width, Height));
    });
}

void overTriangles(Report& report, Modules& modules, const Folder& folder) {
    report.measure({"triangles", "Triangles, CMYK", "thousand triangles", 0}, {10, 70, 200, 400, 700, 1000},
                   [&](double x) {
                       const std::string file = folder.file(fixed(x, 0) + ".ply");
                       writeRing(file, static_cast<std::uint32_t>(x * 1000));
                       return frameOf(std::make_shared<Stage>(modules, "Display/CMYK", std::vector<Setting>{},
                                                              Setting{"file", file}, Width, Height));
                   });
}

void overPoints(Report& report, Modules& modules, const Folder& folder) {
    report.measure(
        {"points", "Points, CMYK", "thousand points", 0}, {10, 100, 250, 500, 750, 1000}, [&](double x) {
            const std::string file = folder.file(fixed(x, 0) + "-points.ply");
            writePoints(file, static_cast<std::uint32_t>(x * 1000));
            return frameOf(std::make_shared<Stage>(modules, "Display/CMYK", std::vector<Setting>{},
                                                   Setting{"file", file}, Width, Height, "Scene/Points"));
        });
}

void overChains(Report& report, Modules& modules) {
    report.measure({"chain", "Length of a chain of CurveAdjust", "displays", 0}, {1, 2, 3, 4, 5},
                   [&](double x) {
                       const auto stage = std::make_shared<Stage>(
                           modules, "Display/CurveAdjust", std::vector<Setting>{}, Setting{}, Width, Height);
                       for (int i = 1; i < static_cast<int>(x); ++i) stage->add("Display/CurveAdjust");
                       return frameOf(stage);
                   });
}

} // namespace

/// bench_growth [FOLDER]: writes a plot of each curve into the folder.
int main(int argc, char** argv) {
    const workbench::RenderSession session;
    Modules modules;
    const Folder folder;
    Report report(argc > 1 ? argv[1] : "");
    const DisplayCase& cmyk = displayCases().front();
    const DisplayCase blurred{
        .label = "Blurred, 20 taps", .key = "Display/Blurred", .settings = {{"width", "20"}}};
    overPixels(report, modules, "pixels", cmyk);
    overPixels(report, modules, "pixels-blurred", blurred);
    overSamples(report, modules, blurred);
    overTaps(report, modules);
    overTriangles(report, modules, folder);
    overPoints(report, modules, folder);
    overChains(report, modules);
    return 0;
}
