// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModuleChain.h"

#include "apps/plime/terminal/Text.h"
#include "workbench/report/Failure.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace workbench {
namespace {

ParameterSetting settingFrom(const std::string& text) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        throw Failure(Fault::Usage, {"-p", "is no setting", "NAME=VALUE", '"' + text + '"', "", {}});
    return {text.substr(0, sign), text.substr(sign + 1)};
}

constexpr std::size_t LongestQuote = 40; // columns; a value may be a whole program

std::string quoted(const std::string& value) { return '"' + shortened(printable(value), LongestQuote) + '"'; }

/// Walks over the arguments once.
class Walk {
public:
    Walk(std::vector<std::string>& arguments, const ModuleGroups& groups)
        : arguments(arguments), groups(groups), current(groups.own ? &chain.own : nullptr) {}

    ModuleChain run() {
        while (position < arguments.size() && arguments[position] != "--")
            if (!take()) rest.push_back(arguments[position++]);
        rest.insert(rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(position), arguments.end());
        arguments = std::move(rest);
        return std::move(chain);
    }

private:
    /// Takes one option with its value; false when the argument at the position is none of ours.
    bool take() {
        if (arguments[position] == "--unchecked") {
            ++position;
            return chain.unchecked = true;
        }
        if (groups.displays)
            if (auto key = value("--display")) return open(chain.displays, *std::move(key), "--display");
        if (groups.tiles)
            if (auto key = value("--with")) return open(chain.tiles, *std::move(key), "--with");
        if (auto text = value("-p")) {
            add(module("-p"), settingFrom(*text));
            return true;
        }
        if (auto name = value("--unset")) {
            module("--unset").unset.push_back(*std::move(name));
            return true;
        }
        return false;
    }

    /// The value of an option if it stands at the position: attached to it, or the next argument.
    std::optional<std::string> value(std::string_view option) {
        const std::string_view argument = arguments[position];
        if (!argument.starts_with(option)) return std::nullopt;
        const std::string_view attached = argument.substr(option.size());
        const bool isLong = option.starts_with("--");
        if (attached.empty()) {
            if (++position == arguments.size()) {
                const char* const wanted = option == "-p"        ? "NAME=VALUE"
                                           : option == "--unset" ? "NAME"
                                                                 : "KEY";
                throw Failure(Fault::Usage, {std::string(option), "has no value", wanted, "nothing", "", {}});
            }
            return arguments[position++];
        }
        if (isLong && attached[0] != '=') return std::nullopt;
        std::string text(isLong ? attached.substr(1) : attached);
        ++position;
        return text;
    }

    static void add(ModuleRequest& module, ParameterSetting setting) {
        const auto known = std::ranges::find(module.settings, setting.name, &ParameterSetting::name);
        if (known != module.settings.end())
            throw Failure(Fault::Usage, {"-p",
                                         "sets \"" + setting.name + '"' +
                                             (module.key.empty() ? "" : " of " + module.key) + " twice",
                                         "one value",
                                         quoted(known->text) + " and " + quoted(setting.text),
                                         "",
                                         {}});
        module.settings.push_back(std::move(setting));
    }

    bool open(std::vector<ModuleRequest>& list, std::string key, const char* option) {
        if (key.empty()) throw Failure(Fault::Usage, {option, "names no module", "KEY", "\"\"", "", {}});
        // The two lists may grow while `current` points into one of them, but only here, where it is renewed.
        current = &list.emplace_back(ModuleRequest{std::move(key), {}, {}});
        return true;
    }

    ModuleRequest& module(const char* option) {
        if (current) return *current;
        const std::string kinds = groups.displays && groups.tiles ? "--display or --with"
                                  : groups.displays               ? "--display"
                                                                  : "--with";
        throw Failure(Fault::Usage,
                      {option, "belongs to no module", kinds + " before it", "nothing", "", {}});
    }

    std::vector<std::string>& arguments;
    const ModuleGroups& groups;
    ModuleChain chain;
    ModuleRequest* current;
    std::vector<std::string> rest;
    std::size_t position = 0;
};

} // namespace

ModuleChain takeModuleChain(std::vector<std::string>& arguments, const ModuleGroups& groups) {
    return Walk(arguments, groups).run();
}

} // namespace workbench
