// SPDX-License-Identifier: Apache-2.0
// Level 9: memory runs out.
#include "workbench/core/ObjectRegistry.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/FailingMemory.h"

#include <exception>
#include <functional>
#include <new>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

constexpr int NotReached = 3, Loaded = 0, Refused = 4;
constexpr long MostAllocations = 20000;

/// Loads the plug-in in yet another child while the n-th request for memory fails; how the child ended.
int loadWithFailure(const Trial& trial, long n) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, 2);
        int code = Loaded;
        try {
            const FailingMemory failing(n);
            const Guest guest(trial);
            code = FailingMemory::hasFailed() ? Loaded : NotReached;
        } catch (const std::exception&) {
            code = Refused;
        }
        ::_exit(code);
    }
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0) continue;
    return status;
}

/// What of `work` is left when the n-th request for memory fails in it, for every n.
/// Counts the requests of all code, or of that in `askers`.
void exhaust(Trial& trial, const std::string& who, const std::function<void()>& work,
             const std::vector<AddressRange>* askers = nullptr) {
    const std::size_t objects = ObjectRegistry::count();
    for (long n = 1; n < MostAllocations; ++n) {
        bool reached = false;
        std::string thrown;
        {
            const FailingMemory failing = askers ? FailingMemory(n, *askers) : FailingMemory(n);
            try {
                work();
            } catch (const std::bad_alloc&) {
                thrown.clear();
            } catch (const std::exception& error) {
                thrown = error.what();
            }
            reached = FailingMemory::hasFailed();
        }
        if (!thrown.empty())
            return trial.fail(who + ": throws \"" + thrown +
                              "\" and not std::bad_alloc when memory runs out");
        if (!trial.require(ObjectRegistry::count() == objects,
                           who + ": leaves an object behind when memory runs out"))
            return;
        if (!reached) return;
    }
}

/// Where the plug-in and the libraries of the host lie. The driver, in the same process, does not expect that
/// an exception comes out of a request for memory.
std::vector<AddressRange> codeOfPluginAndHost(const Trial& trial) {
    std::vector<AddressRange> ranges = mappingsOf(trial.plugin().string());
    const auto add = [&](const void* code) {
        Dl_info info{};
        if (::dladdr(code, &info) == 0) return;
        for (const AddressRange& range : mappingsOf(info.dli_fname)) ranges.push_back(range);
    };
    add(reinterpret_cast<const void*>(&renderPicture));             // krod_gl
    add(reinterpret_cast<const void*>(&ObjectRegistry::count));     // krod_core
    add(reinterpret_cast<const void*>(&krod::VValueCreator::find)); // krod_values
    return ranges;
}

} // namespace

void checkAllocationInLoad(Trial& trial) {
    for (long n = 1; n < MostAllocations; ++n) {
        const int status = loadWithFailure(trial, n);
        if (WIFEXITED(status) && WEXITSTATUS(status) == NotReached) return;
        const bool inOrder = WIFEXITED(status)
                                 ? WEXITSTATUS(status) == Loaded || WEXITSTATUS(status) == Refused
                                 : WTERMSIG(status) == SIGABRT;
        if (!trial.require(inOrder,
                           "breaks down when allocation " + std::to_string(n) + " of its loading fails"))
            return;
    }
}

void checkAllocationInWork(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        exhaust(trial, maker.label + ", created", [&] { static_cast<void>(maker.make("name")); });
        const Object object = maker.make();
        if (waitsForText(*object)) continue;
        exhaust(trial, maker.label + ", updated", [&] { static_cast<void>(shaderTexts(*object)); });
        static_cast<void>(shaderTexts(*object)); // it works again
    }
}

void checkAllocationInDrawing(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    const auto askers = codeOfPluginAndHost(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        Pixels before;
        for (int i = 0; i < 3; ++i) before = drawOrProcess(*session, *object); // the driver is ready now
        exhaust(
            trial, maker.label + ", drawn", [&] { static_cast<void>(drawOrProcess(*session, *object)); },
            &askers);
        worksWell(trial, maker.label + ", after memory ran out", *object, [&] {
            trial.require(sameBits(drawOrProcess(*session, *object), before),
                          maker.label + ": draws another picture after memory ran out");
        });
    }
}

} // namespace workbench::validate
