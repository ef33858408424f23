// SPDX-License-Identifier: Apache-2.0
// How a picture is made, as a network.
#pragma once

#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/terminal/Report.h"
#include "workbench/files/PictureFormat.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/network/Network.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace workbench {

/// A module as an object of a network: creator and source, every parameter that was set, in the host's order,
/// and those that are not readable. `input` is the name of the object it takes, or empty.
[[nodiscard]] NetworkObject describe(const std::string& name, const ModuleInstance& module,
                                     const std::string& input);

/// Builds the network behind one picture, which is its only view, "main" unless it comes from a network.
class Provenance {
public:
    Provenance();
    /// Goes on with a network that has one view.
    explicit Provenance(Network part) : made(std::move(part)) {}

    /// Appends a module under a name made of its own ("blurred", "blurred2") and returns that name.
    std::string add(const ModuleInstance& module, const std::string& input = "");
    /// Says which object is drawn.
    void show(const std::string& object) { view().shows = object; }
    /// Says which picture file is processed, instead.
    void showPicture(const std::string& path) { view().picture = path; }
    /// Appends a tile module that works on the picture.
    void addProcessor(const ModuleInstance& module) { view().processors.push_back(add(module)); }
    /// How the scene is seen, in coordinates that have their 0 at the origin; tiles are told when these, or those
    /// that are usual, would cut it.
    void setFrame(const FrameSetup& setup, const glm::dvec3& origin = glm::dvec3(0));
    /// How tile processors saw a picture: tiles of that size and the pixels around what is kept of each.
    void setTiles(int width, int height, int overlap) { view().tiles = {width, height, overlap}; }

    /// The same of a picture that is drawn, where it is cut for them.
    void setProcessorTiles(int width, int height, int overlap) {
        view().processorTiles = {width, height, overlap};
    }

    /// Values below 0 are 0 before the processors.
    void clipNegative(bool clips) { view().clipNegative = clips; }
    /// What was asked of the file: -d and --srgb.
    void setOutput(const WriteOptions& options) {
        view().depth = options.depth;
        view().srgb = options.srgb;
    }

    /// Everything; paths are as they were given.
    [[nodiscard]] const Network& network() const noexcept { return made; }
    /// What pictures keep: of files only the names, so that the same work leaves the same bytes.
    [[nodiscard]] Network kept() const;

private:
    [[nodiscard]] NetworkView& view() noexcept { return made.views.front(); }

    Network made;
};

/// Where the networks of pictures go: into the pictures, and, where it is asked for, into a file.
class NetworkOutput {
public:
    /// Into so many pictures only. The report is borrowed.
    NetworkOutput(Report& report, std::size_t pictures) : report(report), isForSeveral(pictures > 1) {}
    /// Into one picture, and into a file where there is a path. Looks whether the file can be written:
    /// Failure(Output).
    NetworkOutput(Report& report, const std::optional<std::string>& path, bool noClobber);

    /// The line that a picture keeps; empty where it keeps none. Before the work on it: throws Failure(Network) where save would. Without a
    /// file a network that could not be read again as it is becomes a warning, once per cause, and an empty line.
    [[nodiscard]] std::string lineFor(const Provenance& provenance);
    /// Writes the file; the network is given the paths that lead from there. Throws as saveNetwork.
    void save(const Network& network) const;

private:
    [[nodiscard]] Network fromItsFolder(Network network) const;
    void requireSavable(const Network& network) const;
    void warnOf(Diagnostic cause, const Provenance& provenance);

    Report& report;
    bool isForSeveral = false, noClobber = false;
    std::optional<std::filesystem::path> file;
    std::set<std::string> told; ///< sentences
};

/// Puts the line into a picture's description; an empty one takes away what an earlier picture kept.
void setNetworkLine(PictureDescription& description, const std::string& line);

} // namespace workbench
