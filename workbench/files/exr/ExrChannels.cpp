// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrChannels.h"

#include "workbench/report/Failure.h"

#include <algorithm>

namespace workbench {
namespace {

using Names = std::array<std::string, 4>;

/// What programs call red, green, blue and alpha.
constexpr std::array<std::array<std::string_view, 4>, 3> ColorNames{
    {{"R", "G", "B", "A"}, {"r", "g", "b", "a"}, {"red", "green", "blue", "alpha"}}};
constexpr const std::array<std::string_view, 4>& UsualNames = ColorNames[0];
/// Directions and places that are looked at as colors where there are none.
constexpr std::array<std::array<std::string_view, 4>, 2> VectorNames{
    {{"X", "Y", "Z", "A"}, {"U", "V", "", "A"}}};
/// Layers that hold the whole picture, by the last part of their name in lower case; the first one counts most.
constexpr std::array<std::string_view, 3> PictureLayers{"combined", "rgba", "beauty"};

/// "left.R" has the layer "left."; "R" has the layer "".
std::string layerOf(const std::string& name) {
    const auto point = name.rfind('.');
    return point == std::string::npos ? "" : name.substr(0, point + 1);
}

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::size_t coloursIn(const Names& names) {
    return static_cast<std::size_t>(
        std::count_if(names.begin(), names.end() - 1, [](auto& n) { return !n.empty(); }));
}

/// Those channels of a layer that exist. Long names count in any case.
Names existing(const Imf::ChannelList& channels, const std::string& layer,
               const std::array<std::string_view, 4>& wanted) {
    Names names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (wanted[i].empty()) continue;
        for (auto it = channels.begin(); it != channels.end() && names[i].empty(); ++it) {
            const std::string name = it.name(), own = name.substr(layerOf(name).size());
            if (layerOf(name) != layer) continue;
            if (own == wanted[i] || (own.size() > 1 && lower(own) == wanted[i])) names[i] = name;
        }
    }
    return names;
}

/// The red, green, blue and alpha channels of a layer, under whatever names.
Names colourOf(const Imf::ChannelList& channels, const std::string& layer) {
    Names best;
    for (const auto& wanted : ColorNames) {
        Names names = existing(channels, layer, wanted);
        if (coloursIn(names) > coloursIn(best) || (coloursIn(best) == 0 && best[3].empty())) best = names;
    }
    return best;
}

/// All layers, in the order of the file, those that hold the whole picture first.
std::vector<std::string> layersOf(const Imf::ChannelList& channels) {
    std::vector<std::string> layers;
    for (auto it = channels.begin(); it != channels.end(); ++it)
        if (const std::string layer = layerOf(it.name());
            std::find(layers.begin(), layers.end(), layer) == layers.end())
            layers.push_back(layer);
    const auto rank = [](const std::string& layer) {
        const std::string path = layer.substr(0, layer.empty() ? 0 : layer.size() - 1);
        const std::string last = lower(path.substr(layerOf(path).size()));
        return std::find(PictureLayers.begin(), PictureLayers.end(), last) - PictureLayers.begin();
    };
    std::stable_sort(layers.begin(), layers.end(), [&](auto& a, auto& b) { return rank(a) < rank(b); });
    return layers;
}

Names chooseColour(const Imf::ChannelList& channels) {
    const Names names = colourOf(channels, "");
    if (coloursIn(names) > 0) return names;
    const bool isVector = channels.findChannel("X") && channels.findChannel("Z");
    if (channels.findChannel("Y") && !isVector) return {"Y", "", "", names[3]};
    const std::vector<std::string> layers = layersOf(channels);
    for (const std::string& layer : layers)
        if (const Names layered = colourOf(channels, layer); coloursIn(layered) == 3) return layered;
    for (const auto& wanted : VectorNames)
        for (const std::string& layer : layers) {
            const Names vector = existing(channels, layer, wanted);
            if (!vector[0].empty() && !vector[1].empty() && vector[2].empty() == wanted[2].empty())
                return vector;
        }
    for (auto it = channels.begin(); it != channels.end(); ++it)
        if (it.name() != names[3]) return {it.name(), "", "", names[3]};
    return {names[3], "", "", ""};
}

void refuseSubsampling(const std::filesystem::path& path, const Imf::ChannelList& channels) {
    for (auto it = channels.begin(); it != channels.end(); ++it)
        if (it.channel().xSampling != 1 || it.channel().ySampling != 1)
            throw Failure(Fault::Input, {path.string(),
                                         "has the subsampled channel " + std::string(it.name()),
                                         "channels with a value for each pixel",
                                         "",
                                         "Convert luminance and chroma to RGB first",
                                         {}});
}

} // namespace

void enterChannels(const std::filesystem::path& path, const Imf::ChannelList& channels,
                   PictureDescription& description) {
    refuseSubsampling(path, channels);
    auto names = chooseColour(channels);
    description.isGrey = coloursIn(names) == 1;
    if (description.isGrey) // a single G or B is grey as well, under its own name
        for (std::size_t i = 1; i < 3; ++i)
            if (names[0].empty()) names[0].swap(names[i]);
    description.channelNames = names;
    if (const std::string layer = layerOf(names[0]); !layer.empty())
        description.layer = layer.substr(0, layer.size() - 1);
    description.hasAlpha = !names[3].empty();
    description.depth = PixelDepth::Half;
    for (auto it = channels.begin(); it != channels.end(); ++it) {
        const Imf::PixelType type = it.channel().type;
        if (std::find(names.begin(), names.end(), it.name()) != names.end()) {
            if (type != Imf::HALF) description.depth = PixelDepth::Float;
            continue;
        }
        description.extraChannels.push_back({it.name(), type == Imf::HALF    ? ExtraType::Half
                                                        : type == Imf::FLOAT ? ExtraType::Float
                                                                             : ExtraType::UInt});
    }
}

std::string channelName(const PictureDescription& description, std::size_t i) {
    const auto& names = description.channelNames;
    // The names of a grey file do not fit a picture that has become coloured, nor do those of two colors.
    const bool fromGrey = names[1].empty() && names[2].empty();
    const bool isComplete = fromGrey || (!names[0].empty() && !names[1].empty() && !names[2].empty());
    if (!names[i].empty() && (i == 3 || (isComplete && fromGrey == description.isGrey))) return names[i];
    if (description.isGrey) return i == 3 ? "A" : "Y";
    return (fromGrey ? "" : layerOf(names[1].empty() ? names[2] : names[1])) + std::string(UsualNames[i]);
}

} // namespace workbench
