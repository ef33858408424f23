// SPDX-License-Identifier: Apache-2.0
// What every command of the program has.
#pragma once

#include "apps/plime/modules/ModuleChain.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace workbench {

class Session;

/// The arguments that a command takes, as data. The targets belong to the command.
struct Syntax {
    /// An option; what it takes follows from its target: nothing, one value, or one value each time.
    struct Option {
        std::string names; ///< "-o,--output"
        std::variant<bool*, std::optional<std::string>*, std::vector<std::string>*> target;
    };
    /// An argument without a name; what it takes follows from its target: exactly one, at most one, or at
    /// least one.
    struct Positional {
        std::string name; ///< as the help calls it: "KEY[@SOURCE]"
        std::variant<std::string*, std::optional<std::string>*, std::vector<std::string>*> target;
    };

    std::vector<Option> options;
    std::vector<Positional> positionals; ///< only the last one may take several
    ModuleChain* modules = nullptr;      ///< null: the command takes no module arguments
    ModuleGroups groups;
};

/// One command: "plime <name> …".
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    [[nodiscard]] virtual std::string_view name() const noexcept = 0;
    /// One line for the list of commands, without a full stop.
    [[nodiscard]] virtual std::string_view purpose() const noexcept = 0;
    /// The whole help: how to call it, what it does, its options, examples.
    [[nodiscard]] virtual std::string_view help() const noexcept = 0;
    /// What it takes. Called once, before run.
    [[nodiscard]] virtual Syntax syntax() = 0;
    /// Does the work and returns the exit code. Throws Failure.
    virtual int run(Session& session) = 0;
};

using Commands = std::vector<std::unique_ptr<Command>>;

} // namespace workbench
