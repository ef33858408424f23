// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/NetworkOutputs.h"

#include "apps/plime/commandline/ViewOptions.h"
#include "apps/plime/pictures/OutputPattern.h"
#include "workbench/files/PictureFormat.h"
#include "workbench/network/NetworkFile.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string_view>

namespace workbench {
namespace {

constexpr std::string_view Placeholder = "{view}";

std::string filled(std::string pattern, const std::string& name) {
    for (std::size_t at = pattern.find(Placeholder); at != std::string::npos;
         at = pattern.find(Placeholder, at + name.size()))
        pattern.replace(at, Placeholder.size(), name);
    return pattern;
}

} // namespace

std::vector<std::string> outputsOf(const Network& network, const std::string& file,
                                   const std::optional<std::string>& pattern) {
    if (network.views.empty())
        refuseNetwork(file, {}, "has no view, so that there is nothing to make",
                      "a picture or an object under \"views\"");
    if (pattern) requireKnownPlaceholders(*pattern, {"view"}, "{view}, the name of a view");
    const std::string usual = std::filesystem::path(file).stem().string() + "_{view}.exr";
    const std::string name = pattern.value_or(usual);
    const bool distinguishes = name.find(Placeholder) != std::string::npos;
    if (network.views.size() > 1 && !distinguishes)
        throw Failure(Fault::Usage, {"-o",
                                     "leads " + std::to_string(network.views.size()) + " views to one file",
                                     "{view}, the name of a view",
                                     '"' + name + '"',
                                     "Write it like -o {view}.exr",
                                     {}});
    static_cast<void>(outputFormat(name));
    std::vector<std::string> outputs;
    for (const NetworkView& view : network.views) {
        if (distinguishes && view.name.find('/') != std::string::npos)
            refuseNetwork(file, view.place, "the view " + view.name + " cannot name a file",
                          "a name without strokes");
        outputs.push_back(filled(name, view.name));
    }
    return outputs;
}

void requirePossible(const NetworkView& view, const std::string& who) {
    const auto refuse = [&](const std::string& what, const std::string& expected) {
        refuseNetwork(who, view.place, "the view " + view.name + ' ' + what, expected);
    };
    if (view.size && std::int64_t{(*view.size)[0]} * (*view.size)[1] > MostPixels)
        refuse("is too large", "at most " + std::to_string(MostPixels) + " pixels in all");
    const double largest = std::numeric_limits<float>::max();
    if (view.background &&
        std::ranges::any_of(*view.background, [&](double v) { return std::abs(v) > largest; }))
        refuse("has a background beyond what can be drawn", "values of single precision");
    if (view.camera) {
        try {
            static_cast<void>(cameraOf(*view.camera, {}));
        } catch (const Failure& failure) {
            refuse("is seen by a camera that " + failure.diagnostic().what, failure.diagnostic().expected);
        }
    }
    if (view.shows.empty() || !view.tiles) return;
    const auto& [width, height, overlap] = *view.tiles;
    if (width != height || width < SmallestDrawnTile || width > LargestDrawnTile || width <= 2 * overlap)
        refuse("is drawn in tiles that cannot be",
               "tiles of " + std::to_string(SmallestDrawnTile) + " to " + std::to_string(LargestDrawnTile) +
                   " pixels on both sides alike, more than twice the overlap");
}

} // namespace workbench
