// SPDX-License-Identifier: Apache-2.0
#include "workbench/network/NetworkCheck.h"

#include "workbench/network/NetworkFile.h"
#include "workbench/network/PlainText.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <string_view>

namespace workbench {
namespace {

[[noreturn]] void refuse(const std::string& where, const std::string& expected, const std::string& got) {
    throw Failure(Fault::Network, {where, "cannot be saved as it is", expected, got, "", {}});
}

/// The bytes as they are written in programs, and the line, where there are several.
std::string shown(std::string_view text, const TextFlaw& flaw) {
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string bytes;
    for (const char byte : text.substr(flaw.at, flaw.size)) {
        const auto value = static_cast<unsigned char>(byte);
        bytes += {'\\', 'x', Digits[value >> 4U], Digits[value & 15U]};
    }
    if (text.find('\n') == std::string_view::npos) return bytes;
    return bytes + " in line " + std::to_string(1 + std::ranges::count(text.substr(0, flaw.at), '\n'));
}

void require(const std::string& text, const std::string& where) {
    if (text.size() > NetworkLimits::TextBytes)
        refuse(where, "at most " + std::to_string(NetworkLimits::TextBytes) + " bytes",
               std::to_string(text.size()));
    if (const auto flaw = flawOf(text)) refuse(where, "UTF-8 without control characters", shown(text, *flaw));
}

void require(const std::vector<std::string>& texts, const std::string& where) {
    for (const std::string& text : texts) require(text, where);
}

/// What stands before the colon of a JSON object.
void requireMember(const std::string& name, const std::string& where) {
    require(name, where);
    if (name.size() > LongestMember || name.find_first_of(White) != std::string::npos)
        refuse(where, "at most " + std::to_string(LongestMember) + " bytes without line ends",
               std::to_string(name.size()));
}

void require(std::span<const double> numbers, const std::string& where) {
    for (const double number : numbers)
        if (!std::isfinite(number))
            refuse(where, "finite numbers", std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf");
}

/// Names come first, so that the other sentences can hold them.
void requireWritable(const NetworkObject& object) {
    require(object.name, "the name of an object");
    require(object.creator, "\"creator\" of " + object.name);
    require(object.source, "\"source\" of " + object.name);
    require(object.input, "\"input\" of " + object.name);
    for (const NetworkParameter& parameter : object.parameters) {
        requireMember(parameter.name, "the name of a parameter of " + object.name);
        require(parameter.text, object.name + '.' + parameter.name);
    }
    require(object.unset, "\"unset\" of " + object.name);
}

void requireWritable(const NetworkView& view) {
    require(view.name, "the name of a view");
    const auto field = [&](const std::string& name) { return '"' + name + "\" of the view " + view.name; };
    require(view.shows, field("shows"));
    require(view.picture, field("picture"));
    require(view.processors, field("processors"));
    if (view.background) require(*view.background, field("background"));
    if (!view.camera) return;
    require(view.camera->eye, field("camera"));
    require(view.camera->target, field("camera"));
    require(view.camera->up, field("camera"));
    require(std::span(&view.camera->fieldOfView, 1), field("camera"));
}

} // namespace

void requireWritable(const Network& network) {
    for (const NetworkObject& object : network.objects) requireWritable(object);
    for (const NetworkSharing& sharing : network.shared)
        for (const auto& [object, parameter] : sharing.ends)
            require(object + '.' + parameter, "what a list of \"shared\" names");
    for (const NetworkView& view : network.views) requireWritable(view);
}

} // namespace workbench
