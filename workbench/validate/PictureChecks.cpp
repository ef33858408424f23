// SPDX-License-Identifier: Apache-2.0
// Levels 5 and 7: drawing with OpenGL.
#include "workbench/gl/PendingErrors.h"
#include "workbench/platform/EglContext.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/OpenGlCensus.h"

#include <epoxy/gl.h>

#include <array>
#include <chrono>
#include <cstring>
#include <exception>
#include <fstream>
#include <utility>

#include <unistd.h>

namespace workbench::validate {
namespace {

constexpr std::size_t MostGrowth = 8U << 20U;             // bytes of many frames
constexpr auto LongestDrawing = std::chrono::seconds(30); // for modules that need much time

/// What the process has in memory.
std::size_t residentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0, resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace

void checkPrograms(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        try {
            if (draws(*object)) static_cast<void>(draw(*session, *object, {}, 4, 4));
            update(*object);
            if (processorOf(*object)) static_cast<void>(process(*object, Pixels(16), 4, 4));
        } catch (const Failure& failure) {
            if (failure.fault() == Fault::Shader) trial.fail(failure.what());
        } catch (const std::exception&) {
            continue; // the checks that draw tell
        }
    }
}

void checkPictures(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    const Ears ears;
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        Pixels first, second;
        const bool done = worksWell(trial, maker.label, object, [&] {
            first = draw(*session, object);
            second = draw(*session, object);
        });
        trial.require(!done || sameBits(first, second),
                      maker.label + ": draws another picture the second time");
        for (int i = 0; i < 3; ++i) {
            std::string setting;
            const krod::VValuePool pool = drawnSetting(object, trial, setting);
            worksWell(trial, maker.label + setting, object,
                      [&] { static_cast<void>(draw(*session, object, pool, 16, 16)); });
        }
    });
    for (const std::string& warning : ears.warnings)
        trial.require(warning.find("OpenGL error") == std::string::npos, warning);
}

void checkOpenGlState(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        const OpenGlState before = openGlState();
        worksWell(trial, maker.label, object, [&] { static_cast<void>(draw(*session, object)); });
        for (const auto& [what, value] : openGlState())
            trial.require(value == before.at(what),
                          maker.label + ": changes " + what + " for whoever comes next");
    });
}

void checkSamples(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        const auto samples = std::as_const(object).slots().input("samples");
        if (!samples) return;
        for (const int count : {-1, 0, 1, 2, 3, 4, 5, 8, 16, 17}) {
            krod::VValuePool pool;
            pool.set(*samples, krod::makeValue(count));
            worksWell(trial, maker.label + " with " + std::to_string(count) + " samples", object,
                      [&] { static_cast<void>(draw(*session, object, pool, 8, 8)); });
        }
    });
}

void checkSizes(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    constexpr std::array<std::pair<int, int>, 4> Sizes = {{{1, 1}, {1, 4096}, {4096, 1}, {7, 3}}};
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        for (const auto& [width, height] : Sizes) {
            const std::string who =
                maker.label + " at " + std::to_string(width) + 'x' + std::to_string(height);
            const auto count = static_cast<std::size_t>(width * height);
            worksWell(trial, who, *object, [&, w = width, h = height] {
                if (draws(*object)) static_cast<void>(draw(*session, *object, {}, w, h));
                if (processorOf(*object)) static_cast<void>(process(*object, drawPixels(trial, count), w, h));
            });
        }
    }
}

void checkPendingErrors(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    const Ears ears;
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        worksWell(trial, maker.label + ", after an error of somebody else", *object, [&] {
            glEnable(0xFFFF);
            if (draws(*object)) static_cast<void>(draw(*session, *object, {}, 8, 8));
            if (processorOf(*object)) static_cast<void>(process(*object, Pixels(16), 4, 4));
            static_cast<void>(takePendingErrors());
        });
    }
}

void checkOpenGlObjects(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        const auto frames = [&](int count) {
            return worksWell(trial, maker.label, object, [&] {
                for (int i = 0; i < count; ++i) static_cast<void>(draw(*session, object, {}, 8, 8));
            });
        };
        if (!frames(2)) return; // what is kept from frame to frame is there now
        const auto before = openGlObjects();
        frames(100);
        for (const auto& [what, count] : openGlObjects())
            trial.require(count <= before.at(what), maker.label + ": leaves " +
                                                        std::to_string(count - before.at(what)) + ' ' + what +
                                                        " behind in 100 frames");
    });
}

void checkDebugMessages(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    if (!session->properties().debug) throw Skipped{"this driver tells nothing of errors by itself"};
    std::vector<std::string> errors;
    glEnable(GL_DEBUG_OUTPUT);
    glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
    glDebugMessageCallback(
        [](GLenum, GLenum type, GLuint, GLenum, GLsizei length, const GLchar* text, const void* list) {
            if (type != GL_DEBUG_TYPE_ERROR) return;
            auto& all = *static_cast<std::vector<std::string>*>(const_cast<void*>(list));
            all.emplace_back(text, length < 0 ? std::strlen(text) : static_cast<std::size_t>(length));
        },
        &errors);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        worksWell(trial, maker.label, *object, [&] { static_cast<void>(drawOrProcess(*session, *object)); });
        for (const std::string& error : errors) trial.fail(maker.label + ": makes OpenGL complain: " + error);
        errors.clear();
    }
    glDebugMessageCallback(nullptr, nullptr);
}

void checkFrameMemory(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    int count = 1000; // of the first module; the others have fewer
    const auto end = std::chrono::steady_clock::now() + LongestDrawing;
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        const auto frames = [&](int number) {
            return worksWell(trial, maker.label, object, [&] {
                for (int i = 0; i < number && (i == 0 || std::chrono::steady_clock::now() < end); ++i)
                    static_cast<void>(draw(*session, object, {}, 8, 8));
            });
        };
        if (!frames(20)) return;
        const std::size_t before = residentBytes();
        frames(count);
        const std::size_t now = residentBytes();
        trial.require(now <= before + MostGrowth, maker.label + ": takes " +
                                                      std::to_string((now - before) >> 20U) + " MiB in " +
                                                      std::to_string(count) + " frames");
        count = 100;
    });
}

} // namespace workbench::validate
