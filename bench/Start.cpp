// SPDX-License-Identifier: Apache-2.0
// What stands before the first picture: the command line, the plug-in, its modules, the first frame.
#include "Report.h"
#include "Runs.h"
#include "Stage.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/gl/RenderSession.h"

#include "host/core/VCreatorBase.h"

#include <cstdlib>
#include <functional>
#include <stdexcept>

namespace {

using namespace bench;

constexpr int Runs = 21, Loads = 11;

/// Seconds of some runs.
std::vector<double> repeated(int times, const std::function<double()>& run) {
    std::vector<double> seconds;
    for (int i = 0; i < times; ++i) seconds.push_back(run());
    return seconds;
}

void printRow(const std::string& what, const std::vector<double>& seconds) {
    std::vector<double> milliseconds;
    for (const double each : seconds) milliseconds.push_back(each * 1e3);
    row({what, spread(milliseconds)});
}

/// Throws when the program fails, so that a missing one is not measured.
void runWell(const std::vector<std::string>& words) {
    if (const Run done = run(words); !done.isDone())
        throw std::runtime_error(words.front() + " ended with " + std::to_string(done.code));
}

/// The plug-in is loaded first, so the first creator is one of its own.
double createAll() {
    const auto creators = workbench::CreatorRegistry::entries();
    std::vector<krod::StrongPtr<krod::VObject>> objects;
    return secondsOf([&] {
        for (const auto& entry : creators) {
            if (entry.library != creators.front().library) continue;
            krod::VCreationContext context;
            objects.push_back(entry.creator->create("", context));
        }
    });
}

double firstFrame(bool second) {
    const workbench::RenderSession session;
    Modules modules;
    Stage stage(modules, "Display/CMYK", {}, {}, 1280, 720);
    const double seconds = secondsOf([&] { stage.draw(); });
    return second ? secondsOf([&] { stage.draw(); }) : seconds;
}

} // namespace

int main() {
    setenv("MESA_SHADER_CACHE_DISABLE", "true", 1); // or the first frame is compiled in the first run only
    const std::vector<std::string> list{PLIME, "list"}, version{"oiiotool", "--version"};
    runWell(list);
    Pairs pairs;
    const bool isThere = run(version).isDone();
    if (isThere)
        for (int i = 0; i < Runs; ++i) pairs.measure([&] { runWell(list); }, [&] { runWell(version); });
    table("What a start takes, milliseconds:", {"what", "time"});
    printRow("`plime list`, the whole run",
             isThere ? pairs.first : repeated(Runs, [&] { return run(list).seconds; }));
    if (isThere) printRow("`oiiotool --version`, the whole run", pairs.second);
    printRow("loading the plug-in and the workbench's own modules",
             repeated(Loads, [] { return secondsOf([] { const Modules modules; }); }));
    printRow("making one object of each of the fifteen modules", repeated(Loads, [] {
                 const Modules modules;
                 return createAll();
             }));
    printRow("opening OpenGL",
             repeated(Loads, [] { return secondsOf([] { const workbench::RenderSession session; }); }));
    printRow("the first frame of CMYK, `demo:columns` at 1280x720, compiled",
             repeated(Loads, [] { return firstFrame(false); }));
    printRow("the second frame", repeated(Loads, [] { return firstFrame(true); }));
    if (isThere)
        wanted("`plime list` against `oiiotool --version`", {Limit::Side::AtMost, 0.25}, pairs.ratios);
    return 0;
}
