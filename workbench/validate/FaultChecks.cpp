// SPDX-License-Identifier: Apache-2.0
// Level 9: what surrounds the plug-in fails.
#include "workbench/core/ObjectRegistry.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

constexpr int HighDescriptor = 256;

[[noreturn]] void throwTheHosts() { throw std::runtime_error("the host throws"); }

/// What of the listener throws.
enum class Hearing { Creation, Warning };

/// Hears creations and warnings, and throws at one of them.
class ThrowingListener : public ActionListener {
public:
    explicit ThrowingListener(Hearing what) : what(what), before(setActionListener(this)) {}
    ThrowingListener(const ThrowingListener&) = delete;
    ThrowingListener& operator=(const ThrowingListener&) = delete;
    ~ThrowingListener() override { setActionListener(before); }
    void created(const krod::StrongPtr<krod::VObject>&, krod::VCreationContext&,
                 krod::VCreatorBase&) override {
        if (what == Hearing::Creation) throwTheHosts();
    }
    void warning(const std::string&) override {
        if (what == Hearing::Warning) throwTheHosts();
    }

private:
    Hearing what;
    ActionListener* before;
};

class ThrowingInput : public krod::VGLRenderObject {
public:
    ThrowingInput() : VGLRenderObject("throwing", 0, {}) {}
    void draw(krod::VGLRenderContext&) override { throwTheHosts(); }
    [[nodiscard]] krod::BoundingSphere bounds() const override {
        if (boundsThrow) throwTheHosts();
        return {0, 0, 0, 1};
    }
    bool boundsThrow = false;
};

bool throwsTheHosts(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::runtime_error& error) {
        return error.what() == std::string("the host throws");
    }
    return false;
}

void throwAtCreation(Trial& trial, const Guest& guest) {
    const ThrowingListener listener(Hearing::Creation);
    for (const Maker& maker : guest.makers()) {
        trial.require(throwsTheHosts([&] { static_cast<void>(maker.make()); }),
                      maker.label + ": swallows what the host throws when it hears of a new object");
        trial.require(ObjectRegistry::count() == 0,
                      maker.label + ": leaves an object behind when the host throws at its creation");
    }
}

/// A session warns once of more samples than there are.
void throwAtWarning(Trial& trial, const Maker& maker, krod::VObject& object) {
    const auto samples = std::as_const(object).slots().input("samples");
    if (!samples || !draws(object)) return;
    krod::VValuePool pool;
    pool.set(*samples, krod::makeValue(1000));
    const auto work = [&] {
        const auto session = openSession(trial);
        static_cast<void>(draw(*session, object, pool, 4, 4));
    };
    {
        const Ears ears;
        work();
        if (ears.warnings.empty()) return;
    }
    const ThrowingListener listener(Hearing::Warning);
    trial.require(throwsTheHosts(work),
                  maker.label + ": swallows what the host throws when it hears a warning");
}

/// A thousand signals each second, each of which interrupts what the process waits for.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) {}; // without SA_RESTART
        ::sigaction(SIGALRM, &action, nullptr);
        set(1000);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() { set(0); }

private:
    static void set(suseconds_t period) {
        const itimerval timer{{0, period}, {0, period}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

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

void checkThrowingHost(Trial& trial) {
    const Guest guest(trial);
    throwAtCreation(trial, guest);
    const auto session = openSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        throwAtWarning(trial, maker, *object);
        session->makeCurrent();
        auto* const display = dynamic_cast<krod::MSDeferredObjectDisplay*>(object.get());
        if (!display) continue;
        auto* const input = new ThrowingInput;
        display->setInput(krod::StrongPtr<krod::VGLRenderObject>(input));
        trial.require(throwsTheHosts([&] { static_cast<void>(draw(*session, *object, {}, 4, 4)); }),
                      maker.label + ": swallows what its input throws when it is drawn");
        input->boundsThrow = true;
        trial.require(throwsTheHosts([&] { static_cast<void>(display->bounds()); }),
                      maker.label + ": swallows what its input throws when it is asked where it is");
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

void checkInterruptions(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        const Pixels quiet = drawOrProcess(*session, *object, {}, 32, 32);
        const Interruptions storm;
        for (int i = 0; i < 20; ++i)
            worksWell(trial, maker.label + ", with a thousand signals each second", *object, [&] {
                trial.require(sameBits(drawOrProcess(*session, *object, {}, 32, 32), quiet),
                              maker.label + ": draws another picture with a thousand signals each second");
            });
    }
    const Interruptions storm;
    for (int i = 0; i < 5; ++i) liveOnce(trial);
}

void checkDescriptors(Trial& trial) {
    const Guest guest(trial);
    const auto work = [&] {
        for (const Maker& maker : guest.makers()) {
            const Object object = maker.make();
            if (!waitsForText(*object)) static_cast<void>(shaderTexts(*object));
        }
    };
    for (int file = 0; file >= 0 && file < HighDescriptor;) file = ::open("/dev/null", O_RDONLY);
    work(); // a file that is opened now gets a number beyond a byte
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);
    work();
}

} // namespace workbench::validate
