// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/exr/ExrChannels.h"

#include "workbench/report/Failure.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::array<std::string_view, 4> UsualNames{"R", "G", "B", "A"};

/// "left.R" has the layer "left."; "R" has the layer "".
std::string layerOf(const std::string& name) {
    const auto point = name.rfind('.');
    return point == std::string::npos ? "" : name.substr(0, point + 1);
}

/// The red, green, blue and alpha channels that exist in a layer.
std::array<std::string, 4> colourOf(const Imf::ChannelList& channels, const std::string& layer) {
    std::array<std::string, 4> names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string name = layer + std::string(UsualNames[i]);
        if (channels.findChannel(name)) names[i] = name;
    }
    return names;
}

std::size_t coloursIn(const std::array<std::string, 4>& names) {
    return static_cast<std::size_t>(
        std::count_if(names.begin(), names.end() - 1, [](auto& n) { return !n.empty(); }));
}

std::array<std::string, 4> chooseColour(const Imf::ChannelList& channels) {
    std::array<std::string, 4> names = colourOf(channels, "");
    if (coloursIn(names) > 0) return names;
    if (channels.findChannel("Y")) return {"Y", "", "", names[3]};
    for (auto it = channels.begin(); it != channels.end(); ++it) {
        const auto layered = colourOf(channels, layerOf(it.name()));
        if (coloursIn(layered) == 3) return layered;
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
    // The names of a grey file do not fit a picture that has become coloured.
    const bool fromGrey = names[1].empty() && names[2].empty();
    if (!names[i].empty() && (i == 3 || fromGrey == description.isGrey)) return names[i];
    if (description.isGrey) return i == 3 ? "A" : "Y";
    return (fromGrey ? "" : layerOf(names[1].empty() ? names[2] : names[1])) + std::string(UsualNames[i]);
}

} // namespace workbench
