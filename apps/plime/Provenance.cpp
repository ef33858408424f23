// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/Provenance.h"

#include <filesystem>

namespace workbench {
namespace {

constexpr int SchemaVersion = 1;

Json point(const glm::dvec3& p) { return {p.x, p.y, p.z}; }

/// The text form of a parameter; of files only the name.
std::string valueText(const krod::VParameter& parameter) {
    const std::string text = parameter.value().text();
    return parameter.name() == "file" ? std::filesystem::path(text).filename().string() : text;
}

} // namespace

std::string Provenance::add(const ModuleInstance& module, const std::string& input) {
    const CatalogueEntry& entry = module.entry();
    Json object;
    object["name"] = "object" + std::to_string(objects.size() + 1);
    object["creator"] = entry.key;
    if (entry.source) object["source"] = *entry.source;
    if (!input.empty()) object["input"] = input;
    Json parameters = Json::object();
    for (const auto& slot : module.object().slots().inputs())
        if ((slot.parameter->state() & krod::VParameter::ValueSet) != 0)
            parameters[slot.name] = valueText(*slot.parameter);
    if (!parameters.empty()) object["parameters"] = parameters;
    objects.push_back(object);
    return object["name"];
}

std::string Provenance::addPicture(const std::string& path) {
    Json object;
    object["name"] = "object" + std::to_string(objects.size() + 1);
    object["picture"] = std::filesystem::path(path).filename().string();
    objects.push_back(object);
    return object["name"];
}

void Provenance::setView(const FrameSetup& setup) {
    const Camera& camera = setup.camera;
    view["size"] = {setup.width, setup.height};
    view["eye"] = point(camera.eye);
    view["target"] = point(camera.target);
    view["up"] = point(camera.up);
    view["fieldOfView"] = camera.fieldOfView;
    view["background"] = setup.background;
    if (planTiles(setup.width, setup.height, setup.tiles).size() > 1)
        view["tiles"] = {{"size", setup.tiles.size}, {"overlap", setup.tiles.overlap}};
}

void Provenance::setTiles(int width, int height, int overlap) {
    tiles = {width, height};
    if (overlap > 0) tileOverlap = overlap;
}

std::string Provenance::text() const {
    Json network;
    network["version"] = SchemaVersion;
    network["objects"] = objects;
    if (!view.is_null()) network["view"] = view;
    if (!tiles.is_null()) network["tiles"] = tiles;
    if (!tileOverlap.is_null()) network["tileOverlap"] = tileOverlap;
    return network.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace workbench
