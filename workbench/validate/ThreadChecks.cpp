// SPDX-License-Identifier: Apache-2.0
// Level 8: other threads, and another process.
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"

#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

constexpr int Threads = 4, LivesAtOnce = 100, LivesInTurn = 25;
constexpr unsigned MostSeconds = 20; // of a forked process

void workWithAll(const std::vector<Object>& objects) {
    for (const Object& object : objects)
        if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
}

std::vector<Object> oneOfEach(const Guest& guest) {
    std::vector<Object> objects;
    for (const Maker& maker : guest.makers()) objects.push_back(maker.make());
    return objects;
}

/// Runs the work in as many threads at once. What they throw becomes a fault.
void inThreads(Trial& trial, const std::function<void(std::mutex& turn)>& work) {
    std::mutex turn, notes;
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i)
        threads.emplace_back([&] {
            try {
                work(turn);
            } catch (const std::exception& error) {
                const std::lock_guard lock(notes);
                trial.fail(std::string("throws \"") + error.what() + "\" in a thread of its own");
            }
        });
    for (std::thread& thread : threads) thread.join();
}

void requireNothingLeft(Trial& trial, const std::string& circumstance) {
    trial.require(CreatorRegistry::entries().empty() && InputCreatorRegistry::count() == 0,
                  "leaves creators behind " + circumstance);
}

/// A second process with the plug-in in it works, and unloads it. Its exit code is 0 when all went well.
[[noreturn]] void liveOn(Guest& guest, std::vector<Object>& objects) {
    ::alarm(MostSeconds);
    int code = 1;
    try {
        workWithAll(objects);
        workWithAll(oneOfEach(guest));
        objects.clear();
        code = guest.unload().state == PluginStatus::State::Unloaded ? 0 : 1;
    } catch (const std::exception&) {
        code = 2;
    }
    ::_exit(code);
}

} // namespace

void checkThreads(Trial& trial) {
    inThreads(trial, [&](std::mutex&) { // the loader of the system sees to it that they do not meet
        for (int i = 0; i < LivesAtOnce; ++i)
            if (void* const library = ::dlopen(trial.plugin().c_str(), RTLD_NOW | RTLD_LOCAL))
                ::dlclose(library);
    });
    requireNothingLeft(trial, "when four threads load and unload it");
    inThreads(trial,
              [&](std::mutex& turn) { // the host does it in one thread at a time, but not always the same
                  for (int i = 0; i < LivesInTurn; ++i) {
                      const std::lock_guard lock(turn);
                      Guest guest(trial);
                      workWithAll(oneOfEach(guest));
                      guest.unload();
                      delete &guest.manager();
                  }
              });
    requireNothingLeft(trial, "when four threads load and unload it in turn");
    Guest guest(trial);
    std::vector<Object> objects = oneOfEach(guest);
    std::thread([&] { workWithAll(objects); }).join();
    std::thread([&] { objects.clear(); }).join();
    guest.unload();
    requireNothingLeft(trial, "when another thread has worked with it");
}

void checkFork(Trial& trial) {
    Guest guest(trial);
    auto objects = oneOfEach(guest);
    workWithAll(objects);
    const pid_t other = ::fork();
    if (other == 0) liveOn(guest, objects);
    int status = 0;
    while (other > 0 && ::waitpid(other, &status, 0) < 0) continue;
    trial.require(!WIFSIGNALED(status), "breaks down in a process that is forked after it was loaded");
    trial.require(status == 0 || WIFSIGNALED(status),
                  "does not work in a process that is forked after it was loaded");
    workWithAll(objects);
    objects.clear();
    trial.require(guest.unload().state == PluginStatus::State::Unloaded,
                  "cannot be unloaded after a process was forked");
}

} // namespace workbench::validate
