// SPDX-License-Identifier: Apache-2.0
// Level 8: many lives, and hard deaths.
#include "workbench/core/ObjectRegistry.h"
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/OpenGlCensus.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <utility>

#include <malloc.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t MostGrowth = 1U << 20U; // bytes in 1,000 lives
constexpr int Lives = 1000, BusyLives = 200;
constexpr auto LongestDrawing = std::chrono::seconds(30); // for modules that need much time

std::vector<Object> oneOfEach(const Guest& guest) {
    std::vector<Object> objects;
    for (const Maker& maker : guest.makers()) objects.push_back(maker.make());
    return objects;
}

/// One life; with work it makes an object of each kind and asks for its texts.
bool live(Trial& trial, bool work) {
    Guest guest(trial);
    if (work)
        for (const Object& object : oneOfEach(guest))
            if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
    const bool gone = guest.unload().state == PluginStatus::State::Unloaded;
    delete &guest.manager();
    return gone;
}

std::size_t linesOf(const char* path) {
    std::ifstream file(path);
    std::size_t count = 0;
    for (std::string line; std::getline(file, line);) ++count;
    return count;
}

std::size_t openFiles() {
    const fs::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// A copy of the plug-in, deleted with its owner.
class Copy {
public:
    explicit Copy(const fs::path& original)
        : file(fs::temp_directory_path() / ("plime-validate-" + std::to_string(::getpid()) + ".so")) {
        fs::copy_file(original, file);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;
    ~Copy() {
        std::error_code ignored;
        fs::remove(file, ignored);
    }
    [[nodiscard]] std::string path() const { return file.string(); }

private:
    fs::path file;
};

void requireWorking(Trial& trial, const Guest& guest, const std::string& circumstance) {
    trial.require(!guest.makers().empty(), "has lost its creators " + circumstance);
    for (const Object& object : oneOfEach(guest))
        if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
}

} // namespace

void checkReloadOften(Trial& trial) {
    for (int i = 0; i < 20; ++i) live(trial, true);
    const std::size_t memory = ::mallinfo2().uordblks, files = openFiles(),
                      mappings = linesOf("/proc/self/maps");
    for (int i = 0; i < Lives; ++i)
        if (!trial.require(live(trial, i % (Lives / BusyLives) == 0),
                           "stays in memory after life " + std::to_string(i)))
            return;
    const std::size_t now = ::mallinfo2().uordblks;
    trial.require(now <= memory + MostGrowth, "loses " + std::to_string((now - memory) / Lives) +
                                                  " bytes each time it is loaded and unloaded");
    trial.require(openFiles() <= files, "leaves files open when it is unloaded");
    trial.require(linesOf("/proc/self/maps") <= mappings + 8,
                  "leaves mappings of memory behind when it is unloaded");
}

void checkReloadDrawing(Trial& trial) {
    const auto session = openSession(trial);
    const auto liveDrawing = [&] {
        Guest guest(trial);
        forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
            worksWell(trial, maker.label, object,
                      [&] { static_cast<void>(draw(*session, object, {}, 8, 8)); });
        });
        guest.unload();
        delete &guest.manager();
    };
    for (int i = 0; i < 5; ++i) liveDrawing();
    const auto before = openGlObjects();
    const auto end = std::chrono::steady_clock::now() + LongestDrawing;
    int lives = 0;
    while (lives++ < BusyLives && !trial.hasFailed() && std::chrono::steady_clock::now() < end) liveDrawing();
    for (const auto& [what, count] : openGlObjects())
        trial.require(count <= before.at(what),
                      "leaves " + std::to_string(count - before.at(what)) + ' ' + what +
                          " behind when it is loaded, draws and is unloaded again and again");
}

void checkHeldException(Trial& trial) {
    Guest guest(trial);
    auto& held =
        *new std::vector<std::exception_ptr>; // a broken one would not survive its destruction, either
    for (const Object& object : oneOfEach(guest))
        for (const auto& input : std::as_const(*object).slots().inputs())
            for (const Value& value : hostileValues(*input.parameter)) {
                krod::VValuePool pool;
                pool.set(*input.parameter, value);
                try {
                    update(*object, pool);
                    static_cast<void>(shaderTexts(*object, pool));
                } catch (...) {
                    held.push_back(std::current_exception());
                }
            }
    guest.unload();
    for (std::exception_ptr& one : held) {
        try {
            std::rethrow_exception(std::exchange(one, nullptr));
        } catch (const std::exception& error) {
            trial.require(*error.what() != '\0', "throws an exception that says nothing");
        }
    }
}

void checkLivingObjects(Trial& trial) {
    Guest guest(trial);
    auto& objects = *new std::vector<Object>; // never destroyed: what is left in it has lost its code
    for (int round = 0; round < 3; ++round)
        for (Object& object : oneOfEach(guest)) objects.push_back(std::move(object));
    for (std::size_t i = 0; i + 1 < objects.size(); ++i)
        if (auto* display = dynamic_cast<krod::MSDeferredObjectDisplay*>(objects[i].get()))
            if (const auto next = krod::castStrong<krod::VGLRenderObject>(objects[i + 1]))
                display->setInput(next);
    const PluginStatus& status = guest.unload();
    trial.require(status.state == PluginStatus::State::Unloaded,
                  "stays in memory when objects of it are alive");
    trial.require(std::ranges::none_of(objects, [](const Object& object) { return bool(object); }),
                  "leaves objects alive whose code is gone");
    trial.require(ObjectRegistry::count() == 0, "leaves objects in the host's list");
}

void checkHeldProcessor(Trial& trial) {
    Guest guest(trial);
    krod::StrongPtr<krod::ImageTileProcessor> held;
    for (const Object& object : oneOfEach(guest))
        if (!held) held = processorOf(*object);
    if (held) {
        try {
            guest.unload();
            return trial.fail("is unloaded while a processor of it is held");
        } catch (const Failure&) {
            requireWorking(trial, guest, "after it could not be unloaded");
        }
        held.reset();
    }
    trial.require(guest.unload().state == PluginStatus::State::Unloaded,
                  "cannot be unloaded after its last processor is gone");
}

void checkCopy(Trial& trial) {
    const Copy copy(trial.plugin());
    for (const bool firstGoesFirst : {true, false}) {
        Guest first(trial), second(copy.path());
        const auto kept = oneOfEach(firstGoesFirst ? second : first);
        requireWorking(trial, first, "beside a copy of itself");
        (firstGoesFirst ? first : second).unload();
        requireWorking(trial, firstGoesFirst ? second : first, "after a copy of it was unloaded");
        trial.require(std::ranges::all_of(kept, [](const Object& object) { return bool(object); }),
                      "deletes the objects of a copy of itself when it is unloaded");
        (firstGoesFirst ? second : first).unload();
    }
}

} // namespace workbench::validate
