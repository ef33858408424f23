// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/NetworkModules.h"

#include "apps/plime/modules/Provenance.h"
#include "apps/plime/modules/TileChain.h"
#include "apps/plime/terminal/Suggest.h"
#include "workbench/network/NetworkFile.h"

#include "host/gl/MSDeferredObjectDisplay.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

namespace workbench {
namespace {

std::string nameOf(const NetworkSharing::End& end) { return end.object + '.' + end.parameter; }

krod::MSDeferredObjectDisplay* displayOf(const ModuleInstance& module) {
    return dynamic_cast<krod::MSDeferredObjectDisplay*>(&module.object());
}

/// A module that is not in the catalogue may belong to a plug-in that is not loaded.
CatalogueEntry entryFor(const Catalogue& catalogue, const NetworkObject& object) {
    const auto isKnown = [&](const CatalogueEntry& entry) { return entry.key == object.creator; };
    if (std::ranges::none_of(catalogue.entries(), isKnown))
        throw Failure(Fault::Usage, {object.creator,
                                     "is not the key of a module",
                                     "",
                                     "",
                                     didYouMean(object.creator, catalogue.references(),
                                                "Its plug-in is not loaded; see \"plime doctor\""),
                                     {}});
    return catalogue.one(object.source.empty() ? object.creator : object.creator + '@' + object.source);
}

struct Setting {
    NetworkSharing::End end;
    std::string text;
};

Setting settingFrom(const std::string& text) {
    const std::size_t point = text.find('.'), sign = text.find('=');
    if (sign == std::string::npos || point == 0 || point >= sign || point + 1 == sign)
        throw Failure(Fault::Usage,
                      {"--set", "is no setting", "OBJECT.PARAMETER=VALUE", '"' + text + '"', "", {}});
    return {{text.substr(0, point), text.substr(point + 1, sign - point - 1)}, text.substr(sign + 1)};
}

} // namespace

template <class Work>
void NetworkModules::inPlace(NetworkPlace place, const std::string& object, const Work& work) const {
    try {
        work();
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Usage) throw;
        const Diagnostic& message = failure.diagnostic();
        refuseNetwork(who, place, object + ", " + message.who + ": " + message.what, message.expected,
                      message.got, message.advice);
    }
}

NetworkModules::NetworkModules(const Catalogue& catalogue, Network network, std::string name, Limits limits)
    : given(std::move(network)), who(std::move(name)) {
    for (const NetworkObject& object : given.objects) setUp(catalogue, object, limits);
    for (const NetworkSharing& sharing : given.shared) share(sharing, limits);
    for (const NetworkObject& object : given.objects) connect(object);
    for (const NetworkView& view : given.views) {
        if (!view.shows.empty()) requireDrawable(view);
        for (const std::string& processor : view.processors)
            inPlace(view.place, processor,
                    [&] { static_cast<void>(TileChain(TileChain::Modules{modules.at(processor)})); });
    }
}

void NetworkModules::setUp(const Catalogue& catalogue, const NetworkObject& object, Limits limits) {
    auto& module = modules[object.name];
    inPlace(object.place, object.name,
            [&] { module = std::make_shared<ModuleInstance>(entryFor(catalogue, object)); });
    for (const NetworkParameter& parameter : object.parameters)
        inPlace(parameter.place, object.name,
                [&] { module->setText(parameter.name, parameter.text, limits); });
    for (const std::string& parameter : object.unset)
        inPlace(object.place, object.name, [&] { module->unset(parameter); });
}

void NetworkModules::share(const NetworkSharing& sharing, Limits limits) {
    const auto parameterOf = [&](const End& end) -> krod::VParameter& {
        return modules.at(end.object)->parameter(end.parameter);
    };
    const End* source = nullptr; // the first one that has a value
    for (const End& end : sharing.ends)
        inPlace(sharing.place, end.object, [&] {
            const krod::VParameter& parameter = parameterOf(end);
            if ((parameter.state() & krod::VParameter::ValueSet) != 0 && !source) source = &end;
        });
    const krod::VParameter& first = parameterOf(source ? *source : sharing.ends.front());
    for (const End& end : sharing.ends) {
        const krod::VParameter& other = parameterOf(end);
        if (other.value().type() != first.value().type())
            refuseNetwork(who, sharing.place, nameOf(end) + " shares a value of another type",
                          first.typeName(), other.typeName());
        if (!source) continue;
        const bool isSet = (other.state() & krod::VParameter::ValueSet) != 0;
        if (isSet && other.value().text() != first.value().text())
            refuseNetwork(who, sharing.place, nameOf(end) + " contradicts the value that it shares",
                          first.value().text() + ", as " + nameOf(*source) + " has it", other.value().text());
        if (!isSet)
            inPlace(sharing.place, end.object,
                    [&] { modules.at(end.object)->setText(end.parameter, first.value().text(), limits); });
    }
    for (const End& end : sharing.ends) parameterOf(end).shareValue(parameterOf(sharing.ends.front()));
}

void NetworkModules::connect(const NetworkObject& object) {
    if (object.input.empty()) return;
    const ModuleInstance& module = *modules.at(object.name);
    const ModuleInstance& source = *modules.at(object.input);
    auto* const display = displayOf(module);
    if (!display)
        refuseNetwork(who, object.place, object.name + ", " + module.entry().key + ": takes no input",
                      "an \"input\" only of displays", object.input);
    const auto drawn = krod::castStrong<krod::VGLRenderObject>(source.reference());
    if (!drawn)
        refuseNetwork(who, object.place, object.name + " takes an object that cannot be drawn",
                      "a scene or a display", object.input + ", " + source.entry().key);
    try {
        display->setInput(drawn);
    } catch (const std::invalid_argument&) { // circles were refused before any module was made
        refuseNetwork(who, object.place, object.name + " takes an object that the display does not accept",
                      "", object.input + ", " + source.entry().key);
    }
}

void NetworkModules::requireDrawable(const NetworkView& view) const {
    for (const NetworkObject* object = given.object(view.shows); object;) {
        const ModuleInstance& module = *modules.at(object->name);
        if (!krod::castStrong<krod::VGLRenderObject>(module.reference()))
            refuseNetwork(who, view.place, "the view " + view.name + " shows what cannot be drawn",
                          "a scene or a display", object->name + ", " + module.entry().key);
        if (!displayOf(module)) return;
        if (object->input.empty())
            refuseNetwork(who, object->place,
                          object->name + ", " + module.entry().key + ": has nothing to draw",
                          "an \"input\", the name of an object");
        object = given.object(object->input);
    }
}

std::vector<NetworkSharing::End> NetworkModules::endsWith(const End& end) const {
    for (const NetworkSharing& sharing : given.shared)
        if (std::ranges::any_of(sharing.ends, [&](const End& other) { return nameOf(other) == nameOf(end); }))
            return sharing.ends;
    return {end};
}

void NetworkModules::set(const std::vector<std::string>& settings, Limits limits) {
    std::set<std::string> done;
    for (const std::string& setting : settings) {
        const auto [end, text] = settingFrom(setting);
        if (!modules.contains(end.object)) {
            std::vector<std::string> names;
            for (const NetworkObject& object : given.objects) names.push_back(object.name);
            throw Failure(Fault::Usage, {"--set",
                                         "names an object that is not in " + who,
                                         "",
                                         '"' + end.object + '"',
                                         didYouMean(end.object, names, "See \"plime info\""),
                                         {}});
        }
        for (const End& each : endsWith(end)) {
            if (!done.insert(nameOf(each)).second)
                throw Failure(Fault::Usage, {"--set",
                                             "sets " + nameOf(each) + " twice",
                                             "one value for all that share it",
                                             '"' + setting + '"',
                                             "",
                                             {}});
            setOf(each, text, limits);
        }
    }
}

void NetworkModules::setOf(const End& end, const std::string& text, Limits limits) {
    try {
        modules.at(end.object)->set(end.parameter, text, limits);
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Usage) throw;
        Diagnostic message = failure.diagnostic();
        message.who = "--set, " + end.object + ", " + message.who;
        throw Failure(failure.fault(), message);
    }
}

Network NetworkModules::network() const {
    Network now = given;
    for (NetworkObject& object : now.objects)
        object = describe(object.name, *modules.at(object.name), object.input);
    return now;
}

ShownObject NetworkModules::shownBy(const NetworkView& view) const {
    ShownObject shown;
    for (const NetworkObject* object = given.object(view.shows); object;
         object = given.object(object->input)) {
        const ModuleInstance* const module = modules.at(object->name).get();
        if (displayOf(*module))
            shown.displays.insert(shown.displays.begin(), module);
        else
            shown.scene = module;
    }
    return shown;
}

std::vector<std::shared_ptr<ModuleInstance>> NetworkModules::processorsOf(const NetworkView& view) const {
    std::vector<std::shared_ptr<ModuleInstance>> processors;
    for (const std::string& name : view.processors) processors.push_back(modules.at(name));
    return processors;
}

} // namespace workbench
