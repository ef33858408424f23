// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/OutputFile.h"
#include "workbench/network/NetworkCheck.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include "host/values/VValueTrait.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>

namespace workbench {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const NetworkObject& object) {
    Json json{{"name", object.name}, {"creator", object.creator}};
    if (!object.source.empty()) json["source"] = object.source;
    if (!object.input.empty()) json["input"] = object.input;
    for (const NetworkParameter& parameter : object.parameters)
        json["parameters"][parameter.name] = parameter.text;
    if (!object.unset.empty()) json["unset"] = object.unset;
    return json;
}

Json toJson(const NetworkSharing& sharing) {
    Json json = Json::array();
    for (const NetworkSharing::End& end : sharing.ends) json.push_back(end.object + '.' + end.parameter);
    return json;
}

Json toJson(const NetworkView::Tiles& tiles) {
    Json json{{"size", {tiles.width, tiles.height}}};
    if (tiles.overlap > 0) json["overlap"] = tiles.overlap;
    return json;
}

Json toJson(const NetworkView& view) {
    Json json{{"name", view.name}};
    if (!view.shows.empty()) json["shows"] = view.shows;
    if (!view.picture.empty()) json["picture"] = view.picture;
    if (!view.processors.empty()) json["processors"] = view.processors;
    if (view.size) json["size"] = *view.size;
    if (view.camera)
        json["camera"] = {{"eye", view.camera->eye},
                          {"target", view.camera->target},
                          {"up", view.camera->up},
                          {"fieldOfView", view.camera->fieldOfView}};
    if (view.background) json["background"] = *view.background;
    if (view.tiles) json["tiles"] = toJson(*view.tiles);
    if (view.processorTiles) json["processorTiles"] = toJson(*view.processorTiles);
    if (view.depth) json["depth"] = std::string(depthName(*view.depth));
    if (view.srgb) json["srgb"] = true;
    if (view.clipNegative) json["clipNegative"] = true;
    return json;
}

Json toJson(const Network& network) {
    Json json{{"version", Network::Version}};
    const auto add = [&json](const char* name, const auto& list) {
        for (const auto& item : list) json[name].push_back(toJson(item));
    };
    add("objects", network.objects);
    add("shared", network.shared);
    add("views", network.views);
    return json;
}

std::string lineOf(const Json& json) { return json.dump(); }

bool isPlain(const Json& value) { return !value.is_structured(); }

/// Two blanks per level, and lists of plain values in one line.
void append(std::string& text, const Json& json, std::size_t level) {
    const bool inOneLine =
        isPlain(json) || json.empty() || (json.is_array() && std::ranges::all_of(json, isPlain));
    if (inOneLine && !json.is_array()) {
        text += lineOf(json);
        return;
    }
    const std::string end = inOneLine ? "" : '\n' + std::string(2 * level, ' ');
    const std::string begin = inOneLine ? "" : end + "  ";
    const char* separator = "";
    text += json.is_object() ? '{' : '[';
    for (const auto& [name, value] : json.items()) {
        text += separator + begin;
        if (json.is_object()) text += lineOf(name) + ": ";
        append(text, value, level + 1);
        separator = inOneLine ? ", " : ",";
    }
    text += end + (json.is_object() ? '}' : ']');
}

} // namespace

std::string textOf(const Network& network, NetworkLayout layout) {
    requireWritable(network);
    const Json json = toJson(network);
    if (layout == NetworkLayout::OneLine) return lineOf(json);
    std::string text;
    append(text, json, 0);
    return text + '\n';
}

std::string exactTextOf(const Network& network, NetworkLayout layout, const std::string& who) {
    bool isWritten = false;
    try {
        std::string text = textOf(network, layout);
        isWritten = true;
        if (textOf(networkFromText(text, ""), layout) == text) return text;
    } catch (const Failure& failure) {
        Diagnostic message = failure.diagnostic();
        if (isWritten) message.who = "the network"; // the lines of its text are nowhere to be seen
        if (!who.empty()) message.who = who + ", " + message.who;
        throw Failure(failure.fault(), message);
    }
    refuseNetwork(who.empty() ? "the network" : who, {}, "would be read as another network");
}

std::string fingerprintOf(const Network& network) {
    const std::vector<std::uint8_t> bytes = Json::to_cbor(toJson(network)); // which takes texts as bytes
    return {bytes.begin(), bytes.end()};
}

void saveNetwork(const Network& network, const std::filesystem::path& file, bool noClobber) {
    const std::string text = exactTextOf(network, NetworkLayout::Lines, file.string());
    OutputFile output(file, noClobber);
    output.write(text);
    output.finish();
}

} // namespace workbench
