// SPDX-License-Identifier: Apache-2.0
// Level 10: ten minutes of whatever comes.
#include "workbench/core/ObjectRegistry.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include "host/gl/GLImageTileProcessor.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <utility>

namespace workbench::validate {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds UsualTime{600};
constexpr std::size_t FewestOperations = 1000000; // in that time
constexpr std::size_t MostObjects = 50;

/// A host at random work.
class Soak {
public:
    explicit Soak(Trial& trial)
        : trial(trial), guest(std::make_unique<Guest>(trial)), session(openSession(trial)) {}

    void step() {
        constexpr std::array Operations = {&Soak::create, &Soak::create, &Soak::destroy, &Soak::set,
                                           &Soak::set,    &Soak::work,   &Soak::render,  &Soak::tile};
        if (trial.draw(5000) == 0) return reload();
        try {
            (this->*Operations[trial.draw(Operations.size())])();
        } catch (const std::exception&) {
            return; // refusals are right; crashes and hangs are what is looked for
        }
    }

private:
    krod::VObject* any() { return objects.empty() ? nullptr : objects[trial.draw(objects.size())].get(); }

    void create() {
        const auto makers = guest->makers();
        if (objects.size() < MostObjects) objects.push_back(makers[trial.draw(makers.size())].make());
    }

    void destroy() {
        if (objects.empty()) return;
        std::swap(objects[trial.draw(objects.size())], objects.back());
        objects.pop_back();
    }

    void set() {
        krod::VObject* const object = any();
        if (!object || object->slots().inputs().empty()) return;
        const auto& inputs = std::as_const(*object).slots().inputs();
        const auto& parameter = inputs[trial.draw(inputs.size())].parameter;
        const auto values = usualValues(*parameter, trial);
        parameter->setValue(values[trial.draw(values.size())]);
    }

    void work() {
        if (krod::VObject* const object = any()) static_cast<void>(shaderTexts(*object));
    }

    /// Programs of drawn values are compiled anew, which takes as long as hundreds of other operations.
    bool mayCompile() { return trial.draw(20) == 0; }

    void render() {
        krod::VObject* const object = any();
        if (object && draws(*object) && mayCompile()) static_cast<void>(draw(*session, *object, {}, 16, 16));
    }

    void tile() {
        krod::VObject* const object = any();
        const auto processor = object ? processorOf(*object) : krod::StrongPtr<krod::ImageTileProcessor>();
        if (!processor) return;
        const bool compiles = dynamic_cast<krod::GLImageTileProcessor*>(processor.get()) != nullptr;
        if (!compiles || mayCompile()) static_cast<void>(process(*object, drawPixels(trial, 64), 8, 8));
    }

    void reload() {
        guest->unload();
        trial.require(ObjectRegistry::count() == 0, "leaves objects behind when it is unloaded");
        objects.clear();
        delete &guest->manager();
        guest = std::make_unique<Guest>(trial);
    }

    Trial& trial;
    std::unique_ptr<Guest> guest;
    std::unique_ptr<RenderSession> session;
    std::vector<Object> objects;
};

/// KROD_VALIDATE_SOAK takes the place of the usual number of seconds.
std::chrono::seconds timeToSoak() {
    int seconds = 0;
    if (const char* text = std::getenv("KROD_VALIDATE_SOAK"))
        std::from_chars(text, text + std::strlen(text), seconds);
    return seconds > 0 ? std::chrono::seconds(seconds) : UsualTime;
}

} // namespace

void checkSoak(Trial& trial) {
    const std::chrono::seconds time = timeToSoak();
    const std::size_t fewest = time == UsualTime ? FewestOperations : 0;
    Soak soak(trial);
    std::size_t operations = 0;
    const auto begin = Clock::now();
    const auto goesOn = [&] {
        const auto passed = Clock::now() - begin;
        return passed < time || (operations < fewest && passed < 2 * time); // a busy machine gets more time
    };
    while (goesOn() && !trial.hasFailed())
        for (int i = 0; i < 100; ++i, ++operations) soak.step();
    if (operations < fewest)
        trial.warn("got through " + std::to_string(operations) + " operations only, on this machine");
}

} // namespace workbench::validate
