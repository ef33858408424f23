// SPDX-License-Identifier: Apache-2.0
// The small differences between drivers, as a table: what is put around a module's text so that every driver
// takes it.
#pragma once

#include "workbench/gl/dialect/LineTable.h"
#include "workbench/gl/dialect/TextScan.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

enum class ShaderStage { Vertex, Fragment };

/// One row of the table.
struct Shim {
    enum class Position {
        First,      ///< in front of the text
        BehindHead, ///< behind the text's #version and #extension lines, or in front if it has none
    };

    std::string_view name;
    std::string_view reason;
    bool (*applies)(const TextScan& text, ShaderStage stage);
    Position position;
    std::string_view prologue;    ///< whole lines of GLSL
    std::string_view renamedWord; ///< the text's word that the driver sees under another name; may be empty
    std::string_view renamedTo;
};

/// All rows, in the order in which they are applied.
[[nodiscard]] std::span<const Shim> shims() noexcept;

/// A module's text, ready for a driver.
struct AdaptedText {
    std::vector<std::string>
        strings; ///< the text, in up to two pieces but unchanged, and the shims around it
    std::vector<std::string> shimNames; ///< in the order of the table; empty if the text stands alone
    LineTable lines;                    ///< for the messages of the driver

    /// All strings as one. Drivers number the lines of several strings differently, those of one string
    /// alike.
    [[nodiscard]] std::string joined() const;
};

/// Chooses the shims by scanning the text, so the choice is the same on every driver; none with `strict`.
/// `regions` name the lines of the text for messages (see LineTable).
[[nodiscard]] AdaptedText adaptText(std::string_view text, ShaderStage stage, bool strict,
                                    std::vector<TextRegion> regions = {});

} // namespace workbench
