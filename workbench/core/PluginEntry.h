// SPDX-License-Identifier: Apache-2.0
// The one symbol by which a file shows that it is a plug-in, read before any of its code runs.
#pragma once

#include "host/Export.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace workbench {

/// The entry KROD_API_<date>__<name> of a plug-in.
struct PluginEntry {
    std::string symbol; ///< "KROD_API_2022_Feb_15__tovar_plime"
    std::string date;   ///< "2022_Feb_15"
    std::string name;   ///< "tovar_plime"

    /// Takes a symbol's name apart; nothing when it is no entry.
    [[nodiscard]] static std::optional<PluginEntry> parse(std::string_view symbol);
    /// Reads the entry of a library file without running any of it. Throws Failure(Fault::Plugin) when the
    /// file is no usable library of this machine, or has no entry or several.
    [[nodiscard]] KROD_API static PluginEntry read(const std::filesystem::path& path);
};

} // namespace workbench
