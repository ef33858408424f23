// SPDX-License-Identifier: Apache-2.0
// Level 9: what surrounds the plug-in fails.
#include "workbench/core/ObjectRegistry.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/FailingMemory.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <new>

#include <fcntl.h>
#include <sys/resource.h>
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
void exhaust(Trial& trial, const std::string& who, const std::function<void()>& work) {
    const std::size_t objects = ObjectRegistry::count();
    for (long n = 1; n < MostAllocations; ++n) {
        bool reached = false;
        std::string thrown;
        {
            const FailingMemory failing(n);
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

/// Listens to creations and throws.
class ThrowingListener : public ActionListener {
public:
    ThrowingListener() : before(setActionListener(this)) {}
    ThrowingListener(const ThrowingListener&) = delete;
    ThrowingListener& operator=(const ThrowingListener&) = delete;
    ~ThrowingListener() override { setActionListener(before); }
    void created(const krod::StrongPtr<krod::VObject>&, krod::VCreationContext&,
                 krod::VCreatorBase&) override {
        throw std::runtime_error("the host throws");
    }

private:
    ActionListener* before;
};

class ThrowingInput : public krod::VGLRenderObject {
public:
    ThrowingInput() : VGLRenderObject("throwing", 0, {}) {}
    void draw(krod::VGLRenderContext&) override { throw std::runtime_error("the host throws"); }
    [[nodiscard]] krod::BoundingSphere bounds() const override { return {0, 0, 0, 1}; }
};

bool throwsTheHosts(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::runtime_error& error) {
        return error.what() == std::string("the host throws");
    }
    return false;
}

/// Everything that prints: a whole life with objects and a tile.
void liveOnce(Trial& trial) {
    Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
    }
    guest.unload();
    std::fflush(stdout);
    std::clearerr(stdout);
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

void checkThrowingHost(Trial& trial) {
    const Guest guest(trial);
    {
        const ThrowingListener listener;
        for (const Maker& maker : guest.makers()) {
            trial.require(throwsTheHosts([&] { static_cast<void>(maker.make()); }),
                          maker.label + ": swallows what the host throws when it hears of a new object");
            trial.require(ObjectRegistry::count() == 0,
                          maker.label + ": leaves an object behind when the host throws at its creation");
        }
    }
    const auto session = openSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        auto* const display = dynamic_cast<krod::MSDeferredObjectDisplay*>(object.get());
        if (!display) continue;
        display->setInput(krod::StrongPtr<krod::VGLRenderObject>(new ThrowingInput));
        trial.require(throwsTheHosts([&] { static_cast<void>(draw(*session, *object, {}, 4, 4)); }),
                      maker.label + ": swallows what its input throws");
    }
}

void checkClosedOutput(Trial& trial) {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe can be made");
    ::close(pipe[0]);
    ::dup2(pipe[1], 1); // nobody reads
    liveOnce(trial);
    const int full = ::open("/dev/full", O_WRONLY);
    ::dup2(full, 1);
    liveOnce(trial);
    ::close(1);
    liveOnce(trial);
    trial.require(::fcntl(1, F_GETFD) < 0, "opens standard output again");
}

void checkDescriptors(Trial& trial) {
    const Guest guest(trial);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
    }
}

} // namespace workbench::validate
