// SPDX-License-Identifier: Apache-2.0
// Level 4: what a creator makes.
#include "host/core/TypedSlotCreator.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/report/Failure.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <algorithm>
#include <array>
#include <exception>
#include <set>

#include <malloc.h>

namespace workbench::validate {
namespace {

constexpr std::size_t MostGrowth = 4096; // bytes

/// Calls a function for each creator and its new object. What is thrown is noted with the creator's name.
template <class Function>
void forEachObject(Trial& trial, const Guest& guest, Function function) {
    for (const Maker& maker : guest.makers()) {
        try {
            function(maker, maker.make());
        } catch (const std::exception& error) {
            trial.fail(maker.label + ": throws \"" + error.what() + '"');
        }
    }
}

std::string cut(const std::string& text) { return text.size() > 40 ? text.substr(0, 40) + "…" : text; }

/// Bytes of the heap in use, after the pools of the host have been filled.
std::size_t bytesInUse() { return ::mallinfo2().uordblks + ::mallinfo2().hblkhd; }

template <class T>
bool isAbove(const krod::VValueBase& low, const krod::VValueBase& high) {
    const auto* a = dynamic_cast<const krod::TypedValue<T>*>(&low);
    const auto* b = dynamic_cast<const krod::TypedValue<T>*>(&high);
    return a && b && a->value() > b->value();
}

bool isAbove(const krod::VValueBase& low, const krod::VValueBase& high) {
    return isAbove<int>(low, high) || isAbove<double>(low, high);
}

void checkLimits(Trial& trial, const std::string& who, const krod::VParameter& parameter) {
    const Value least = parameter.property("min"), most = parameter.property("max");
    for (const Value& limit : {least, most})
        trial.require(!limit || limit->type() == parameter.value().type(),
                      who + ": has a limit of another type");
    if (least && most)
        trial.require(!isAbove(*least, *most), who + ": has its least value above its greatest");
    if ((least && isAbove(*least, parameter.value())) || (most && isAbove(parameter.value(), *most)))
        trial.warn(who + ": begins outside of its limits");
}

} // namespace

void checkCreation(Trial& trial) {
    const Guest guest(trial);
    forEachObject(trial, guest, [&](const Maker& maker, const Object& object) {
        trial.require(object->creator().get() == maker.creator,
                      maker.label + ": makes objects of another creator");
    });
}

void checkNames(Trial& trial) {
    const Guest guest(trial);
    const std::array<std::string, 4> names = {"x", std::string(4096, 'n'), "%n%s%s%s", "\xff\xfe\x01"};
    for (const Maker& maker : guest.makers()) {
        const std::string usual = maker.make()->name();
        trial.require(usual == maker.creator->name(),
                      maker.label + ": names an object \"" + cut(usual) + "\" where no name is asked for");
        for (const std::string& name : names)
            trial.require(maker.make(name)->name() == name,
                          maker.label + ": does not give an object the name \"" + cut(name) + '"');
    }
}

void checkCreationPath(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const TraceRecord trace;
        const Ears ears;
        krod::VCreationContext context;
        const Object object = maker.creator->create("name", context);
        const std::vector<std::string> expected = {"VCreator::create(name)\n",
                                                   "VCreator::create(name) got derived object\n"};
        trial.require(trace.lines == expected,
                      maker.label + ": does not trace the two steps of its creation");
        trial.require(object->processesRequests(), maker.label + ": does not enable the object's requests");
        const auto& told = ears.creations;
        if (!trial.require(told.size() == 1,
                           maker.label + ": reports a creation " + std::to_string(told.size()) + " times"))
            continue;
        trial.require(told[0].object == object.get() && told[0].creator == maker.creator,
                      maker.label + ": reports the creation of something else");
        trial.require(told[0].context == &context,
                      maker.label + ": does not hand on the host's creation context");
    }
}

void checkParameters(Trial& trial) {
    const Guest guest(trial);
    forEachObject(trial, guest, [&](const Maker& maker, const Object& object) {
        for (const auto& [name, level, parameter] : object->slots().inputs()) {
            const std::string who = maker.label + ", parameter \"" + name + '"';
            trial.require(!name.empty() && name.find_first_of("=\n\t") == std::string::npos,
                          who + ": has a name that cannot be typed");
            trial.require((parameter->state() & krod::VParameter::ValueSet) == 0,
                          who + ": counts as set although nobody has set it");
            trial.require(level >= 0, who + ": has an expert level below 0");
            trial.require(parameter->creator().get() == object.get(), who + ": belongs to another object");
            checkLimits(trial, who, *parameter);
        }
    });
}

void checkSlotTypes(Trial& trial) {
    const Guest guest(trial);
    OutputRecord output;
    forEachObject(trial, guest, [&](const Maker& maker, const Object& object) {
        for (const auto& [name, level, parameter] : object->slots().inputs())
            trial.require(krod::TypedSlotCreator::find(parameter->value().type()) != nullptr,
                          maker.label + ", parameter \"" + name +
                              "\": has a type without a typed-slot creator");
    });
    trial.require(output.text().find("its creators were not registered") == std::string::npos,
                  "has parameters whose types it has not registered");
}

void checkOutputs(Trial& trial) {
    const Guest guest(trial);
    forEachObject(trial, guest, [&](const Maker& maker, const Object& object) {
        const auto& outputs = object->slots().outputs();
        for (const auto& [name, parameter] : outputs) {
            trial.require(parameter->creator().get() == object.get(),
                          maker.label + ", output \"" + name + "\": belongs to another object");
            using Held = krod::TypedValue<krod::StrongPtr<krod::ImageTileProcessor>>;
            const auto* held = dynamic_cast<const Held*>(&parameter->value());
            trial.require(!held || held->value(),
                          maker.label + ", output \"" + name + "\": holds no processor");
        }
        const Object other = maker.make();
        const auto processor = processorOf(*object);
        trial.require(!processor || processor.get() != processorOf(*other).get(),
                      maker.label + ": has one processor for two objects");
    });
}

void checkModules(Trial& trial) {
    const Guest guest(trial);
    forEachObject(trial, guest, [&](const Maker& maker, const Object& object) {
        if (const auto* expected = findExpected(trial, maker.label))
            compareModule(trial, *object, maker.label, *expected);
    });
}

void checkRelease(Trial& trial) {
    const Guest guest(trial);
    const std::size_t objects = ObjectRegistry::count(), living = guest.livingObjects();
    forEachObject(trial, guest, [&](const Maker& maker, Object object) {
        const std::int64_t references = object->referenceCount().strongReferences();
        trial.require(references == 1, maker.label + ": holds " + std::to_string(references - 1) +
                                           " references to its own new object");
        object.reset();
        trial.require(ObjectRegistry::count() == objects,
                      maker.label + ": keeps an object that nobody holds");
    });
    const std::size_t left = guest.livingObjects();
    trial.require(left == living, "leaves " + std::to_string(left - living) +
                                      " processors or values alive after all of its objects are gone");
}

void checkMemory(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const auto hundred = [&] {
            for (int i = 0; i < 100; ++i) static_cast<void>(maker.make());
        };
        hundred();
        const std::size_t before = bytesInUse();
        hundred();
        const std::size_t after = bytesInUse();
        trial.require(after <= before + MostGrowth, maker.label + ": loses " +
                                                        std::to_string((after - before) / 100) +
                                                        " bytes with each object");
    }
}

void checkEmptyReferences(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    for (const Maker& maker : guest.makers()) {
        const Object object = maker.make();
        auto* const display = dynamic_cast<krod::MSDeferredObjectDisplay*>(object.get());
        if (!display) continue;
        trial.require(display->accept({}).empty(), maker.label + ": accepts nothing as its input");
        connectScene(*object);
        display->setInput({});
        const krod::VValuePool pool;
        krod::VGLRenderContext context(pool, 4, 4);
        try {
            display->render(context);
            trial.fail(maker.label + ": draws without an input");
        } catch (const Failure&) {
            continue; // that is what the host says
        }
    }
}

void checkDestructionOrder(Trial& trial) {
    const Guest guest(trial);
    std::vector<Object> objects;
    for (int round = 0; round < 10; ++round)
        for (const Maker& maker : guest.makers()) objects.push_back(maker.make());
    while (!objects.empty()) {
        const std::size_t next = trial.draw(objects.size());
        std::swap(objects[next], objects.back());
        objects.pop_back();
    }
    trial.require(ObjectRegistry::count() == 0, "keeps objects that nobody holds");
}

} // namespace workbench::validate
