// SPDX-License-Identifier: Apache-2.0
#include "DisplayRecord.h"

#include "tests/support/Goldens.h"

#include "host/memory/Typename.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

namespace recording {

const Display& displayOf(std::string_view unit) {
    const auto found = std::find_if(Displays.begin(), Displays.end(),
                                    [unit](const Display& display) { return display.unit == unit; });
    if (found == Displays.end()) throw std::runtime_error("no display: " + std::string(unit));
    return *found;
}

std::string replaced(std::string text, std::string_view part, std::string_view by) {
    const std::size_t at = text.find(part);
    if (at == std::string::npos) throw std::runtime_error("not in the text: " + std::string(part));
    return text.replace(at, part.size(), by);
}

std::string DisplayRecord::callsOfFrame() {
    host().calls.clear();
    host().programsMade = 0;
    drawFrame();
    return host().calls.text();
}

std::string DisplayRecord::callsOfFrameWith(std::string_view words) {
    std::istringstream calls(callsOfFrame());
    std::string found;
    for (std::string line; std::getline(calls, line);)
        if (line.find(words) != std::string::npos) found += line + '\n';
    return found;
}

testing::AssertionResult DisplayRecord::frameMatches(const std::string& name) {
    static const support::Goldens golden(GOLDEN_FOLDER, ACTUAL_FOLDER);
    return golden.match(std::string(tested.unit) + '/' + name + ".calls", callsOfFrame());
}

std::string DisplayRecord::rendererClass() {
    const auto renderer = makeRenderer();
    const auto& made = *renderer;
    return krod::typenameOf(typeid(made));
}

int DisplayRecord::expertLevel(std::string_view name) const {
    for (const auto& input : object->slots().inputs())
        if (input.name == name) return input.expertLevel;
    throw std::runtime_error("no parameter: " + std::string(name));
}

void DisplayRecord::makeAllUnreadable() {
    for (const auto& input : object->slots().inputs()) pool.makeUnreadable(input.name);
}

} // namespace recording
