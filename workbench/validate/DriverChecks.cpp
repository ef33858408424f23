// SPDX-License-Identifier: Apache-2.0
// Levels 7 and 10: another driver than the usual one.
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"
#include "workbench/validate/Expectation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <new>
#include <span>
#include <stdexcept>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace workbench::validate {
namespace {

constexpr int Networks = 500, Side = 16;
constexpr std::size_t Area = std::size_t{Side} * Side;
constexpr double MostDifferent = 0.5;             // of the pixels; edges lie where the driver puts them
constexpr std::size_t MostDifferentNetworks = 25; // wide neighbourhoods see edges everywhere

/// A session on Mesa's simplest driver: one sample for each pixel, GLSL 3.30. The process has used no OpenGL
/// yet.
std::unique_ptr<RenderSession> openSimpleSession(const Trial& trial) {
    ::setenv("GALLIUM_DRIVER", "softpipe", 1);
    Subject subject{trial.plugin(), {}, {}};
    subject.gpu.kind = GpuChoice::Kind::Software;
    auto session = openSession(Trial(std::move(subject), 0));
    if (session->driver().find("softpipe") == std::string::npos)
        throw Skipped{"the second driver, softpipe, is not there"};
    return session;
}

std::unique_ptr<RenderSession> openUsualSession(const Trial& trial) {
    Subject subject{trial.plugin(), {}, {}};
    subject.gpu.kind = GpuChoice::Kind::Software;
    return openSession(Trial(std::move(subject), 0));
}

/// Places for the pictures of all networks, which a forked process can fill.
class SharedPictures {
public:
    SharedPictures()
        : place(static_cast<krod::RGBAHalf*>(
              ::mmap(nullptr, Bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (place == MAP_FAILED) throw std::bad_alloc();
    }
    SharedPictures(const SharedPictures&) = delete;
    SharedPictures& operator=(const SharedPictures&) = delete;
    ~SharedPictures() { ::munmap(place, Bytes); }

    [[nodiscard]] std::span<krod::RGBAHalf> picture(int number) const {
        return {place + static_cast<std::size_t>(number) * Area, Area};
    }

private:
    static constexpr std::size_t Bytes = Networks * Area * sizeof(krod::RGBAHalf);
    krod::RGBAHalf* place;
};

/// A drawn network: up to three displays behind each other over a simple scene, each with drawn values.
class Network {
public:
    Network(const std::vector<Maker>& displays, Trial& trial) {
        const std::size_t length = 1 + trial.draw(3);
        for (std::size_t i = 0; i < length; ++i) {
            const Maker& maker = displays[trial.draw(displays.size())];
            const Object object = maker.make();
            std::string setting;
            for (const auto& input : std::as_const(*object).slots().inputs()) {
                const auto values = usualValues(*input.parameter, trial);
                const Value& value = values[trial.draw(values.size())];
                input.parameter->setValue(value);
                setting += (setting.empty() ? " with " : ", ") + settingText(*input.parameter, *value);
            }
            if (auto* display = dynamic_cast<krod::MSDeferredObjectDisplay*>(object.get()); display && last)
                display->setInput(krod::castStrong<krod::VGLRenderObject>(last));
            last = object;
            text += (text.empty() ? "" : " → ") + maker.label + setting;
        }
    }
    /// The picture, or one without pixels when the network refuses to work.
    Pixels draw(RenderSession& session) {
        try {
            return validate::draw(session, *last, {}, Side, Side);
        } catch (const std::exception&) {
            return {};
        }
    }
    std::string text;

private:
    Object last;
};

void drawAll(const std::vector<Maker>& displays, RenderSession& session, Trial dice,
             const SharedPictures& pictures) {
    for (int i = 0; i < Networks; ++i) {
        const Pixels picture = Network(displays, dice).draw(session);
        std::ranges::copy(picture, pictures.picture(i).begin());
    }
}

bool isNear(double a, double b) {
    if (!std::isfinite(a) || !std::isfinite(b)) return std::isfinite(a) == std::isfinite(b);
    return std::abs(a - b) <= std::max(2.0 / 255, std::abs(b) / 512);
}

double differentShare(std::span<const krod::RGBAHalf> a, std::span<const krod::RGBAHalf> b) {
    std::size_t different = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        different += !(isNear(double{a[i].r}, double{b[i].r}) && isNear(double{a[i].g}, double{b[i].g}) &&
                       isNear(double{a[i].b}, double{b[i].b}));
    return static_cast<double>(different) / static_cast<double>(a.size());
}

} // namespace

void checkSecondDriver(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSimpleSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        for (int i = 0; i < 4; ++i) {
            std::string setting;
            const krod::VValuePool pool = i == 0 ? krod::VValuePool() : drawnSetting(*object, trial, setting);
            worksWell(trial, maker.label + setting + ", on " + session->driver(), *object,
                      [&] { static_cast<void>(drawOrProcess(*session, *object, pool, Side, Side)); });
        }
    }
}

void checkDrivers(Trial& trial) {
    const Guest guest(trial);
    std::vector<Maker> displays;
    for (const Maker& maker : guest.makers())
        if (dynamic_cast<krod::MSDeferredObjectDisplay*>(maker.make().get()) &&
            !isExpected(trial, maker.label, "counts_samples"))
            displays.push_back(maker);
    if (displays.empty()) return;
    const SharedPictures usual, simple;
    const pid_t other = ::fork();
    if (other < 0) throw std::runtime_error("no second process can be made");
    if (other == 0) {
        try {
            drawAll(displays, *openSimpleSession(trial), trial, simple);
        } catch (const Skipped&) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    drawAll(displays, *openUsualSession(trial), trial, usual);
    int status = 0;
    while (::waitpid(other, &status, 0) < 0) continue;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 1)
        throw Skipped{"the second driver, softpipe, is not there"};
    trial.require(WIFEXITED(status), "breaks down on the second driver");
    std::vector<std::string> different;
    for (int i = 0; i < Networks; ++i) {
        const std::string text = Network(displays, trial).text; // the same dice again
        if (differentShare(usual.picture(i), simple.picture(i)) > MostDifferent) different.push_back(text);
    }
    if (different.size() <= MostDifferentNetworks) return;
    trial.fail(std::to_string(different.size()) + " of " + std::to_string(Networks) +
               " networks differ between two drivers");
    for (const std::string& text : different) trial.fail(text);
}

} // namespace workbench::validate
