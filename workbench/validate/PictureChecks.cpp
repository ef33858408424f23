// SPDX-License-Identifier: Apache-2.0
// Levels 5 and 7: drawing with OpenGL.
#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"
#include "workbench/validate/OpenGlCensus.h"

#include <epoxy/gl.h>

#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

#include <unistd.h>

namespace workbench::validate {
namespace {

namespace fs = std::filesystem;

/// Whether a module may refuse its work in this way: it waits for a file.
bool mayRefuse(const krod::VObject& object, const Failure& failure) {
    return waitsForText(object) && (failure.fault() == Fault::Usage || failure.fault() == Fault::Input);
}

/// Notes what `work` throws, and OpenGL errors that are pending afterwards. Whether it came to its end.
bool worksWell(Trial& trial, const std::string& who, const krod::VObject& object,
               const std::function<void()>& work) {
    bool done = false;
    try {
        work();
        done = true;
    } catch (const Failure& failure) {
        if (!mayRefuse(object, failure)) trial.fail(who + ": throws \"" + failure.what() + '"');
    } catch (const std::exception& error) {
        trial.fail(who + ": throws \"" + error.what() + '"');
    }
    for (const unsigned error : takePendingErrors())
        trial.fail(who + ": leaves the OpenGL error " + errorText(error) + " behind");
    return done;
}

/// Calls a function with each object that draws.
void forEachDrawing(const Guest& guest, const std::function<void(const Maker&, krod::VObject&)>& call) {
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        if (draws(*object)) call(maker, *object);
    }
}

/// Whether a value makes a module draw so many things that software takes minutes.
bool isManyThings(const krod::VValueBase& value) {
    const auto* const count = dynamic_cast<const krod::TypedValue<int>*>(&value);
    return count && count->value() > 1000;
}

/// A pool in which every parameter has one of its usual values, and the words for it.
krod::VValuePool drawnSetting(const krod::VObject& object, Trial& trial, std::string& text) {
    krod::VValuePool pool;
    for (const auto& input : object.slots().inputs()) {
        const auto values = usualValues(*input.parameter, trial);
        const Value& value = values[trial.draw(values.size())];
        if (isManyThings(*value)) continue;
        pool.set(*input.parameter, value);
        text += (text.empty() ? " with " : ", ") + settingText(*input.parameter, *value);
    }
    return pool;
}

/// A folder that goes with its owner.
class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "plime-validate-XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no folder for temporary files can be made");
        where = name;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(where, ignored);
    }
    [[nodiscard]] const fs::path& path() const { return where; }

private:
    fs::path where;
};

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
    constexpr std::array<std::pair<int, int>, 4> Sizes = {{{1, 1}, {1, 1024}, {1024, 1}, {7, 3}}};
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

void checkShaderFiles(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    const Folder folder;
    const Ears ears;
    const std::array<std::string, 4> contents = {"", "this is no shader", std::string(1U << 20U, ' '),
                                                 std::string("\0\xff{{{{", 6)};
    setShaderFolders({folder.path()});
    for (const std::string& content : contents)
        for (const Maker& maker : guest.makers()) {
            const auto& source = maker.creator->properties().source;
            for (const std::string& name : {maker.creator->name(), source.value_or("none")})
                if (name.find('/') == std::string::npos)
                    std::ofstream(folder.path() / (name + ".frag"), std::ios::binary) << content;
            const Object object = maker.make();
            if (!draws(*object)) continue;
            try {
                static_cast<void>(draw(*session, *object, {}, 8, 8));
            } catch (const Failure& failure) {
                trial.require(failure.fault() == Fault::Shader || mayRefuse(*object, failure),
                              maker.label + ": throws \"" + failure.what() +
                                  "\" with an unusable shader file");
            }
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

} // namespace workbench::validate
