// SPDX-License-Identifier: Apache-2.0
// A saved network, as data: which objects, with which parameters, connected how, seen how.
#pragma once

#include "workbench/files/PictureDescription.h"
#include "workbench/network/NetworkPlace.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// A parameter that was set, in text form.
struct NetworkParameter {
    std::string name;
    std::string text;
    NetworkPlace place;
};

/// A module object.
struct NetworkObject {
    std::string name;                         ///< once in a network
    std::string creator;                      ///< key, "Display/CMYK"
    std::string source;                       ///< tells creators of one key apart; empty where there is none
    std::string input;                        ///< name of the object that it takes, or empty
    std::vector<NetworkParameter> parameters; ///< in the host's order
    std::vector<std::string> unset;           ///< parameters that are not readable
    NetworkPlace place;
};

/// Parameters that have one value together: setting one sets all.
struct NetworkSharing {
    struct End {
        std::string object, parameter;
    };
    std::vector<End> ends; ///< two or more
    NetworkPlace place;
};

/// What comes out: an object drawn, or a picture file, through tile processors.
struct NetworkView {
    std::string name;                    ///< once in a network
    std::string shows;                   ///< name of the object that is drawn; empty where `picture` stands
    std::string picture;                 ///< path of the picture file that is processed instead
    std::vector<std::string> processors; ///< names of tile modules, in the order of their work

    /// How an object is seen; world units, degrees. Without it, the command that draws decides.
    struct Camera {
        std::array<double, 3> eye{}, target{}, up{};
        double fieldOfView = 0;
    };
    std::optional<std::array<int, 2>> size; ///< width and height in pixels
    std::optional<Camera> camera;
    std::optional<std::array<double, 4>> background; ///< linear RGBA

    /// Tiles that the picture is made in: in which it is drawn or, of a file, in which the processors see it.
    struct Tiles {
        int width = 0, height = 0, overlap = 0;
    };
    std::optional<Tiles> tiles;
    /// Tiles in which the processors see a picture that is drawn, where it was cut for them.
    std::optional<Tiles> processorTiles;
    std::optional<PixelDepth> depth; ///< of the file; without it, what its format usually has
    bool srgb = false;               ///< whether colours are encoded for viewing
    bool clipNegative = false;       ///< whether values below 0 are 0 before the processors
    NetworkPlace place;
};

/// The whole. Lists keep their order.
struct Network {
    static constexpr int Version = 1;

    std::vector<NetworkObject> objects;
    std::vector<NetworkSharing> shared;
    std::vector<NetworkView> views;

    [[nodiscard]] const NetworkObject* object(const std::string& name) const noexcept;
};

/// What one of the network's views needs, and nothing else: that view, its objects in the order of the whole, and
/// what they share among each other.
[[nodiscard]] Network partFor(const Network& network, const NetworkView& view);

/// Replaces the path of every file that the network reads by what `change` makes of it: the parameters called
/// "file" and the pictures of views. Empty ones are left alone.
void changePaths(Network& network, const std::function<std::string(const std::string& path)>& change);

} // namespace workbench
