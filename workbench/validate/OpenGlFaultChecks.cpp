// SPDX-License-Identifier: Apache-2.0
// Levels 7 and 9: OpenGL itself goes wrong.
#include "workbench/gl/PendingErrors.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/FailingOpenGl.h"
#include "workbench/validate/OpenGlCensus.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <map>
#include <set>

namespace workbench::validate {
namespace {

/// Of the calls that need no memory this many are drawn for each module.
constexpr std::size_t DrawnCalls = 10;

/// How a module draws in a new session where nothing goes wrong.
struct Sound {
    Pixels picture;
    std::vector<OpenGlCall> calls;
    std::map<std::string, std::size_t> objects; ///< after a second picture
};

Sound drawSound(const Trial& trial, krod::VObject& object) {
    const auto session = openSession(trial);
    Sound sound;
    {
        const FailingOpenGl nothing(OpenGlFault::None);
        sound.picture = drawOrProcess(*session, object);
        sound.calls = nothing.calls();
    }
    static_cast<void>(drawOrProcess(*session, object));
    sound.objects = openGlObjects();
    return sound;
}

bool hasWarned(const Ears& ears) {
    return std::ranges::any_of(ears.warnings, [](const std::string& warning) {
        return warning.find("OpenGL error") != std::string::npos;
    });
}

/// Draws while OpenGL goes wrong. Whether that is honest: it throws, warns, or gives the right picture
/// although.
bool isHonest(RenderSession& session, krod::VObject& object, const Sound& sound, OpenGlFault fault,
              std::size_t call = 0) {
    const Ears ears;
    const FailingOpenGl failing(fault, call);
    try {
        return sameBits(drawOrProcess(session, object), sound.picture) || hasWarned(ears);
    } catch (const std::exception& error) {
        return *error.what() != '\0';
    }
}

/// The calls that are to fail: all of the plug-in's own, one of each kind that needs memory, and some others.
std::vector<std::size_t> selection(const std::vector<OpenGlCall>& calls, Trial& trial) {
    std::set<std::size_t> chosen;
    std::set<std::string_view> seen;
    for (std::size_t i = 0; i < calls.size(); ++i)
        if (calls[i].ofPlugin || (calls[i].needsMemory && seen.insert(calls[i].name).second))
            chosen.insert(i);
    for (std::size_t i = 0; i < DrawnCalls && !calls.empty(); ++i) chosen.insert(trial.draw(calls.size()));
    return {chosen.begin(), chosen.end()};
}

std::string circumstance(const Sound& sound, std::size_t call, const char* error) {
    return std::string(" when OpenGL call ") + std::to_string(call) + ", " +
           std::string(sound.calls[call].name) + ", reports " + error;
}

/// Calls a function with each module that draws or processes by OpenGL, and how it does that undisturbed.
void forEachSound(Trial& trial,
                  const std::function<void(const std::string&, krod::VObject&, const Sound&)>& call) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    watchOpenGl(trial.plugin().string());
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        const Sound sound = drawSound(trial, *object);
        if (!sound.calls.empty()) call(maker.label, *object, sound);
    }
}

/// One call runs out of memory; afterwards everything is as it was, and the module draws as before.
void runOutOfMemory(Trial& trial, const std::string& who, krod::VObject& object, const Sound& sound,
                    std::size_t call) {
    const std::string when = circumstance(sound, call, "GL_OUT_OF_MEMORY");
    const auto session = openSession(trial);
    const OpenGlState before = openGlState();
    trial.require(isHonest(*session, object, sound, OpenGlFault::OutOfMemory, call),
                  who + ": draws another picture without a word" + when);
    static_cast<void>(takePendingErrors());
    for (const auto& [what, value] : openGlState())
        trial.require(value == before.at(what), who + ": leaves " + what + " changed" + when);
    Pixels picture;
    if (worksWell(trial, who + ", afterwards" + when, object,
                  [&] { picture = drawOrProcess(*session, object); }))
        trial.require(sameBits(picture, sound.picture), who + ": draws another picture afterwards" + when);
    for (const auto& [what, count] : openGlObjects())
        trial.require(count <= sound.objects.at(what), who + ": leaves " + what + " behind" + when);
}

} // namespace

void checkRefusedPrograms(Trial& trial) {
    forEachSound(trial, [&](const std::string& who, krod::VObject& object, const Sound& sound) {
        for (const OpenGlFault fault : {OpenGlFault::CompileRefused, OpenGlFault::LinkRefused}) {
            const auto session = openSession(trial);
            static_cast<void>(isHonest(*session, object, sound, fault));
            for (const unsigned error : takePendingErrors())
                trial.fail(who + ": leaves the OpenGL error " + errorText(error) +
                           " behind when its program is refused");
        }
        const auto session = openSession(trial);
        worksWell(trial, who + ", after its program was refused,", object, [&] {
            trial.require(sameBits(drawOrProcess(*session, object), sound.picture),
                          who + ": draws another picture after its program was refused");
        });
    });
}

void checkFailingOpenGl(Trial& trial) {
    forEachSound(trial, [&](const std::string& who, krod::VObject& object, const Sound& sound) {
        for (const std::size_t call : selection(sound.calls, trial))
            runOutOfMemory(trial, who, object, sound, call);
    });
}

void checkLostContext(Trial& trial) {
    forEachSound(trial, [&](const std::string& who, krod::VObject& object, const Sound& sound) {
        for (const std::size_t call : selection(sound.calls, trial)) {
            const std::string when = circumstance(sound, call, "GL_CONTEXT_LOST");
            {
                const auto session = openSession(trial);
                trial.require(isHonest(*session, object, sound, OpenGlFault::ContextLost, call),
                              who + ": draws another picture without a word" + when);
            }
            const auto session = openSession(trial);
            worksWell(trial, who + ", in a new context,", object, [&] {
                trial.require(sameBits(drawOrProcess(*session, object), sound.picture),
                              who + ": draws another picture in a new context" + when);
            });
        }
    });
}

} // namespace workbench::validate
