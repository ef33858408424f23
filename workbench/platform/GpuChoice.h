// SPDX-License-Identifier: Apache-2.0
// Which device is to draw, as people write it behind --gpu.
#pragma once

#include <string>
#include <string_view>

namespace workbench {

/// The wish for a device.
struct GpuChoice {
    enum class Kind {
        Automatic, ///< hardware if it works, else software
        Software,  ///< a software renderer
        Index,     ///< the device with this number in the list of `listDevices`
        Name,      ///< the first device whose vendor or renderer text contains the name, in any case
    };

    Kind kind = Kind::Automatic;
    int index = 0;    ///< with Kind::Index
    std::string name; ///< with Kind::Name

    /// As it would be typed: "auto", "software", "2", "radeon".
    [[nodiscard]] std::string text() const;
};

/// Reads "auto", "software", a device number or a part of a device's name.
/// Throws Failure(Usage) for an empty text and for a number that is no device number.
[[nodiscard]] GpuChoice parseGpuChoice(std::string_view text);

} // namespace workbench
