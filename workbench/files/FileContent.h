// SPDX-License-Identifier: Apache-2.0
// Facts about the file that a scene draws.
#pragma once

#include "workbench/files/Export.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// The corners of a box around everything.
struct ContentBox {
    glm::dvec3 low{0}, high{0};
};

/// What is known of a file once it has been read.
struct ContentFacts {
    std::uint64_t bytes = 0; ///< held in memory
    glm::dvec3 origin{0};    ///< where in the file's coordinates the scene has its 0
    /// In the coordinates of the scene; nothing where there is nothing.
    std::optional<ContentBox> box;
    bool isPlane = false;           ///< a rectangle that looks towards +z
    bool isBlack = false;           ///< every colour in it is 0
    std::vector<std::string> notes; ///< sentences without a full stop that are good to know and no loss
};

/// Scene modules that draw what is in a file. Applications find this with dynamic_cast.
class KROD_FILES_API FileContent {
public:
    virtual ~FileContent();
    /// Reads the file, if it has not been read yet, and throws as reading does.
    [[nodiscard]] virtual ContentFacts facts() const = 0;
};

} // namespace workbench
