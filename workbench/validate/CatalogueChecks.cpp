// SPDX-License-Identifier: Apache-2.0
// Level 3: creators and their texts, alone and compared with what is expected.
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Expectation.h"
#include "workbench/validate/Guest.h"
#include "workbench/validate/Module.h"

#include <algorithm>
#include <map>
#include <set>
#include <typeindex>

namespace workbench::validate {
namespace {

/// The number of bytes of the first character, or 0 where there is none in UTF-8.
std::size_t characterAt(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = byte(0) < 0x80 ? 1 : byte(0) >> 5U == 6 ? 2 : byte(0) >> 4U == 14 ? 3 : 4;
    if (byte(0) >= 0x80 && (byte(0) < 0xC2 || byte(0) > 0xF4)) return 0;
    if (length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (byte(i) >> 6U != 2) return 0;
    return length;
}

/// Whether the text is UTF-8 without control characters, but for line ends and tabs.
bool isReadable(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterAt(text);
        const auto first = static_cast<unsigned char>(text[0]);
        if (length == 0 || first == 0x7F || (first < 0x20 && first != '\n' && first != '\t')) return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

void checkKeys(Trial& trial) {
    const Guest guest(trial);
    std::set<std::string> labels;
    for (const Maker& maker : guest.makers()) {
        const std::string key = maker.creator->keyname();
        const std::size_t slash = key.find('/');
        trial.require(slash != std::string::npos && slash > 0 && slash + 1 < key.size(),
                      "has the key \"" + key + "\", which is no category and name with a slash between them");
        trial.require(key.find_first_of("@ \t\n") == std::string::npos,
                      "has the key \"" + key + "\", which holds a blank or an @");
        trial.require(labels.insert(maker.label).second,
                      "has two creators \"" + maker.label +
                          "\"; give them names or source files of their own");
    }
}

void checkTexts(Trial& trial) {
    const Guest guest(trial);
    for (const Maker& maker : guest.makers()) {
        const krod::VCreatorProperties& texts = maker.creator->properties();
        for (const auto& text :
             {texts.category, texts.name, texts.help, texts.description, texts.group, texts.source})
            trial.require(!text || isReadable(*text),
                          maker.label + ": has a text that is no UTF-8, or holds control characters");
        trial.require(isReadable(maker.creator->name()), "has a creator whose name is not readable");
    }
}

void checkCatalogue(Trial& trial) {
    const Guest guest(trial);
    const auto makers = guest.makers();
    const auto& modules = trial.expectation().at("modules");
    for (std::size_t i = 0; i < std::max(makers.size(), modules.size()); ++i) {
        if (i >= makers.size()) {
            trial.fail("lacks the creator " + expectedLabel(modules[i]));
        } else if (i >= modules.size()) {
            trial.fail("has the creator " + makers[i].label + ", which is not expected");
        } else {
            compareTexts(trial, *makers[i].creator, makers[i].label, modules[i]);
        }
    }
}

void checkTypes(Trial& trial) {
    const Guest guest(trial);
    std::map<std::type_index, std::string> classes;
    std::vector<Object> objects; // kept, so that no class is looked at twice at one place
    const auto enter = [&](const auto& thing, const std::string& label) {
        const auto [first, isNew] = classes.emplace(typeid(thing), label);
        trial.require(isNew, label + ": has the class of " + first->second +
                                 "; put the classes of each unit into a namespace without a name");
    };
    for (const Maker& maker : guest.makers()) {
        objects.push_back(maker.make());
        enter(*objects.back(), maker.label);
        if (const auto processor = processorOf(*objects.back()))
            enter(*processor, maker.label + "'s processor");
    }
}

void checkInputCreators(Trial& trial) {
    const Guest guest(trial);
    const auto offered = InputCreatorRegistry::find(typeid(krod::StrongPtr<krod::ImageTileProcessor>));
    for (const Maker& maker : guest.makers()) {
        const auto count = std::ranges::count_if(offered, [&](const krod::VInputCreatorBase* input) {
            return &input->creator() == maker.creator;
        });
        const bool gives = processorOf(*maker.make()) != nullptr;
        if (gives && count != 1)
            trial.fail(maker.label + ": gives a tile processor, but is offered as an input creator " +
                       std::to_string(count) + " times");
        if (!gives && count != 0)
            trial.fail(maker.label + ": is offered as an input creator, but gives no tile processor");
    }
}

} // namespace workbench::validate
