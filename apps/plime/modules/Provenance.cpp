// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/Provenance.h"

#include "apps/plime/terminal/Text.h"
#include "workbench/files/OutputFile.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace workbench {
namespace {

namespace fs = std::filesystem;

std::array<double, 3> numbers(const glm::dvec3& p) { return {p.x, p.y, p.z}; }

/// The double with the fewest digits that is this float again: 0.3, not 0.30000001192092896.
double shortest(float value) {
    std::array<char, 64> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    double result = 0;
    std::from_chars(digits.data(), written.ptr, result);
    return result;
}

/// A key's last part in lower case, without the characters that names must not have.
std::string baseName(const std::string& key) {
    std::string name = lowerCase(key.substr(key.rfind('/') + 1));
    std::ranges::replace_if(
        name, [](char c) { return c == '.' || c == '=' || (c >= 0 && c < ' '); }, '_');
    return name.empty() ? "object" : name;
}

/// What leads from a folder to a file that was typed as a path from the current folder. Absolute paths stay.
std::string pathFrom(const fs::path& folder, const std::string& typed) {
    const fs::path path = typed;
    const fs::path from = fs::weakly_canonical(folder);
    if (path.is_absolute() || from == fs::weakly_canonical(fs::current_path())) return typed;
    const fs::path real = fs::weakly_canonical(fs::absolute(path).parent_path()) / path.filename();
    return real.lexically_relative(from).string();
}

/// Whether the network could be written if its picture were called otherwise.
bool hasUnsavableName(Network network) {
    std::string& picture = network.views.front().picture;
    if (picture.empty()) return false;
    picture = "picture";
    try {
        static_cast<void>(exactTextOf(network, NetworkLayout::OneLine));
        return true;
    } catch (const Failure&) {
        return false;
    }
}

} // namespace

NetworkObject describe(const std::string& name, const ModuleInstance& module, const std::string& input) {
    const CatalogueEntry& entry = module.entry();
    NetworkObject object{name, entry.key, entry.source.value_or(""), input, {}, {}, {}};
    for (const auto& slot : module.object().slots().inputs()) {
        if ((slot.parameter->state() & krod::VParameter::ValueSet) != 0)
            object.parameters.push_back({slot.name, slot.parameter->value().text(), {}});
        if (module.isUnset(slot.name)) object.unset.push_back(slot.name);
    }
    return object;
}

Provenance::Provenance() { made.views.emplace_back().name = "main"; }

std::string Provenance::add(const ModuleInstance& module, const std::string& input) {
    const std::string base = baseName(module.entry().key);
    std::string name = base;
    for (int number = 2; made.object(name); ++number) name = base + std::to_string(number);
    made.objects.push_back(describe(name, module, input));
    return name;
}

void Provenance::setFrame(const FrameSetup& setup, const glm::dvec3& origin) {
    const Camera& camera = setup.camera;
    view().size = {setup.width, setup.height};
    view().camera = {numbers(camera.eye + origin), numbers(camera.target + origin), numbers(camera.up),
                     camera.fieldOfView};
    std::array<double, 4> background{};
    std::ranges::transform(setup.background, background.begin(), shortest);
    view().background = background;
    const auto isCut = [&](const TileWish& tiles) {
        return planTiles(setup.width, setup.height, tiles).size() > 1;
    };
    view().tiles.reset();
    view().processorTiles.reset();
    if (isCut(setup.tiles) || isCut({}))
        view().tiles = {setup.tiles.size, setup.tiles.size, setup.tiles.overlap};
}

Network Provenance::kept() const {
    Network named = made;
    changePaths(named, [](const std::string& path) { return fs::path(path).filename().string(); });
    return named;
}

NetworkOutput::NetworkOutput(Report& report, const std::optional<std::string>& path, bool noClobber)
    : report(report), noClobber(noClobber) {
    if (!path) return;
    file = *path;
    static_cast<void>(OutputFile(*file, noClobber));
}

std::string NetworkOutput::lineFor(const Provenance& provenance) {
    requireSavable(provenance.network());
    try {
        return exactTextOf(provenance.kept(), NetworkLayout::OneLine);
    } catch (const Failure& failure) {
        if (failure.fault() != Fault::Network) throw;
        warnOf(failure.diagnostic(), provenance);
        return "";
    }
}

void NetworkOutput::requireSavable(const Network& network) const {
    if (!file) return;
    try {
        static_cast<void>(exactTextOf(fromItsFolder(network), NetworkLayout::Lines, file->string()));
    } catch (const Failure& failure) {
        Diagnostic message = failure.diagnostic();
        message.advice = "The picture can be made without --save-network";
        throw Failure(failure.fault(), message);
    }
}

void NetworkOutput::warnOf(Diagnostic cause, const Provenance& provenance) {
    if (hasUnsavableName(provenance.kept())) {
        cause.who = provenance.network().views.front().picture;
        cause.what = "its name cannot be saved as it is, so the picture keeps no network";
    } else {
        cause.what +=
            isForSeveral ? ", so pictures made with it keep no network" : ", so the picture keeps no network";
    }
    if (told.insert(cause.sentence()).second) report.warning(cause);
}

Network NetworkOutput::fromItsFolder(Network network) const {
    changePaths(network,
                [&](const std::string& path) { return pathFrom(fs::absolute(*file).parent_path(), path); });
    return network;
}

void NetworkOutput::save(const Network& network) const {
    if (file) saveNetwork(fromItsFolder(network), *file, noClobber);
}

void setNetworkLine(PictureDescription& description, const std::string& line) {
    if (line.empty())
        description.remove(NetworkName);
    else
        description.setText(NetworkName, line);
}

} // namespace workbench
