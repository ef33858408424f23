// SPDX-License-Identifier: Apache-2.0
// What a command works with.
#pragma once

#include "apps/plime/commandline/Command.h"
#include "apps/plime/commandline/Options.h"
#include "apps/plime/modules/Catalogue.h"
#include "apps/plime/modules/PluginSetup.h"
#include "apps/plime/terminal/Report.h"
#include "apps/plime/terminal/Streams.h"

#include <optional>
#include <vector>

namespace workbench {

/// One run of the program. Plug-ins are loaded when they are first needed and unloaded at the end; modules
/// must be gone by then.
class Session {
public:
    /// Everything is borrowed.
    Session(const GlobalOptions& options, const Commands& commands, Streams& streams, Report& report)
        : global(options), all(commands), out(streams), messages(report) {}

    [[nodiscard]] const GlobalOptions& options() const noexcept { return global; }
    [[nodiscard]] const Commands& commands() const noexcept { return all; }
    [[nodiscard]] Streams& streams() const noexcept { return out; }
    [[nodiscard]] Report& report() const noexcept { return messages; }

    /// Where shader files of users are looked for, the first folder first: --shader-dir, then those of the
    /// environment.
    [[nodiscard]] std::vector<std::filesystem::path> shaderFolders() const;
    /// Loads the plug-ins, if they are not yet, and tells what became of every path. Says nothing.
    const std::vector<PluginAttempt>& plugins();
    /// The modules of all plug-ins. Warns of libraries that do not load; throws Failure(Plugin) for one that
    /// was asked for with --plugin.
    const Catalogue& catalogue();
    /// Notes which shader files of users have taken the place of modules' texts so far.
    void noteShaderFiles() const;

private:
    const GlobalOptions& global;
    const Commands& all;
    Streams& out;
    Report& messages;
    PluginManager manager;
    std::optional<std::vector<PluginAttempt>> attempts;
    std::optional<Catalogue> modules;
};

} // namespace workbench
