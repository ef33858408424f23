// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/Options.h"

#include "apps/plime/terminal/Numbers.h"
#include "apps/plime/terminal/Suggest.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <deque>
#include <limits>
#include <utility>

namespace workbench {
namespace {

/// Values as they were typed. Every option may come several times here, so that we say what is wrong with it.
using Typed = std::vector<std::string>;

/// The global options before their values are looked at.
struct RawGlobals {
    GlobalOptions options;
    bool help = false, version = false;
    Typed gpu, trace, memory, colour;

    std::vector<Syntax::Option> switches() {
        return {{"--strict-glsl", &options.strictGlsl},
                {"--no-clobber", &options.noClobber},
                {"-q,--quiet", &options.quiet},
                {"-v,--verbose", &options.verbose},
                {"-h,--help", &help},
                {"--version", &version}};
    }
    std::vector<std::pair<std::string, Typed*>> valued() {
        return {{"--plugin", &options.plugins},
                {"--shader-dir", &options.shaderFolders},
                {"--gpu", &gpu},
                {"--trace", &trace},
                {"--memory", &memory},
                {"--color", &colour}};
    }
};

[[noreturn]] void refuse(std::string who, std::string what, std::string advice) {
    throw Failure(Fault::Usage, {std::move(who), std::move(what), "", "", std::move(advice), {}});
}

std::string helpFor(const Command* command) {
    return command ? "See \"plime help " + std::string(command->name()) + '"' : "See \"plime help\"";
}

/// The last value of an option that is given at most once.
const std::string* single(const std::string& name, const Typed& values, const Command* command) {
    if (values.size() > 1) refuse(name, "is given more than once", helpFor(command));
    return values.empty() ? nullptr : &values.front();
}

Colour colourFrom(const std::string& text) {
    if (text == "auto") return Colour::Auto;
    if (text == "always") return Colour::Always;
    if (text == "never") return Colour::Never;
    throw Failure(Fault::Usage,
                  {"--color", "has a wrong value", "auto, always or never", '"' + text + '"', "", {}});
}

void checkGlobals(RawGlobals& raw, const Command* command) {
    GlobalOptions& options = raw.options;
    if (const std::string* text = single("--color", raw.colour, command)) options.colour = colourFrom(*text);
    if (const std::string* text = single("--gpu", raw.gpu, command)) options.gpu = parseGpuChoice(*text);
    if (const std::string* text = single("--trace", raw.trace, command))
        options.traceLevel = wholeNumber("--trace", *text, 0, std::numeric_limits<int>::max());
    if (const std::string* text = single("--memory", raw.memory, command))
        options.memory = byteSize("--memory", *text);
    if (options.quiet && options.verbose) refuse("-q", "contradicts -v", "Give one of them");
}

/// The option of that name, long or short; null where the syntax has none.
const Syntax::Option* optionNamed(const Syntax& syntax, const std::string& name) {
    const auto isMeant = [&](const Syntax::Option& option) {
        return (',' + option.names + ',').find(',' + name + ',') != std::string::npos;
    };
    const auto found = std::ranges::find_if(syntax.options, isMeant);
    return found == syntax.options.end() ? nullptr : &*found;
}

bool takesValue(const Syntax& syntax, const std::string& name) {
    const Syntax::Option* const option = optionNamed(syntax, name);
    return option && !std::holds_alternative<bool*>(option->target);
}

/// Throws when a command's own option stands before it, so that its value was taken for the command.
void refuseOptionBefore(const std::vector<std::string>& arguments, std::size_t at, const Commands& commands) {
    if (at == 0) return;
    for (const auto& command : commands)
        if (std::ranges::find(arguments, command->name()) != arguments.end() &&
            takesValue(command->syntax(), arguments[at - 1]))
            refuse(arguments[at - 1], "belongs behind the command " + std::string(command->name()),
                   helpFor(command.get()));
}

/// Takes the command's name, the first word that is neither an option nor the value of a global one, out of
/// the arguments.
Command* takeCommand(std::vector<std::string>& arguments, const Commands& commands, RawGlobals& globals) {
    const auto valued = globals.valued();
    std::size_t at = 0;
    while (at < arguments.size() && arguments[at].starts_with('-'))
        at += std::ranges::any_of(valued, [&](const auto& option) { return option.first == arguments[at]; })
                  ? 2
                  : 1;
    if (at >= arguments.size()) return nullptr;
    const std::string word = arguments[at];
    arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(at));
    std::vector<std::string> names;
    for (const auto& command : commands) {
        if (command->name() == word) return command.get();
        names.emplace_back(command->name());
    }
    refuseOptionBefore(arguments, at, commands);
    refuse(word, "is not a command", didYouMean(word, names, helpFor(nullptr)));
}

/// The command's options and positional words as CLI11 collects them, before they go to their targets.
class Collector {
public:
    Collector(CLI::App& app, const Syntax& syntax, const Command* command)
        : syntax(syntax), command(command) {
        for (const Syntax::Option& option : syntax.options) add(app, option, options.emplace_back());
        app.add_option("words", words);
    }

    static void addValued(CLI::App& app, const std::string& names, Typed& values) {
        app.add_option(names, values)->expected(1)->allow_extra_args(false)->take_all();
    }
    static void addSwitch(CLI::App& app, const std::string& names, bool& target) {
        app.add_flag(names, target)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
            ->disable_flag_override();
    }

    void deliver() {
        for (std::size_t i = 0; i < options.size(); ++i) deliverOption(syntax.options[i], options[i]);
        std::size_t next = 0;
        for (const Syntax::Positional& positional : syntax.positionals) deliverWords(positional, next);
        if (next < words.size()) refuse('"' + words[next] + '"', "is one word too many", helpFor(command));
    }

private:
    static void add(CLI::App& app, const Syntax::Option& option, Typed& values) {
        if (bool* const* flag = std::get_if<bool*>(&option.target))
            addSwitch(app, option.names, **flag);
        else
            addValued(app, option.names, values);
    }

    void deliverOption(const Syntax::Option& option, const Typed& values) const {
        if (const auto* const list = std::get_if<std::vector<std::string>*>(&option.target))
            **list = values;
        else if (const auto* const one = std::get_if<std::optional<std::string>*>(&option.target))
            if (const std::string* text = single(option.names, values, command)) **one = *text;
    }

    void deliverWords(const Syntax::Positional& positional, std::size_t& next) const {
        const bool there = next < words.size();
        if (const auto* const perhaps = std::get_if<std::optional<std::string>*>(&positional.target)) {
            if (there) **perhaps = words[next++];
            return;
        }
        if (!there)
            refuse("plime " + std::string(command->name()), positional.name + " is missing",
                   helpFor(command));
        if (const auto* const one = std::get_if<std::string*>(&positional.target)) {
            **one = words[next++];
            return;
        }
        std::get<std::vector<std::string>*>(positional.target)
            ->assign(words.begin() + static_cast<std::ptrdiff_t>(next), words.end());
        next = words.size();
    }

    const Syntax& syntax;
    const Command* command;
    std::deque<Typed> options; // CLI11 keeps their addresses
    Typed words;
};

void refuseUnknownOption(const std::string& typed, const CLI::App& app, const Syntax& syntax,
                         const Command* command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    }
    if (syntax.modules) names.insert(names.end(), {"-p", "--unset", "--unchecked"});
    if (syntax.groups.displays) names.emplace_back("--display");
    if (syntax.groups.tiles) names.emplace_back("--with");
    const std::string name = typed.substr(0, typed.find('='));
    const std::string owner = command ? "plime " + std::string(command->name()) : "plime";
    refuse(name, "is not an option of \"" + owner + '"', didYouMean(name, names, helpFor(command)));
}

/// CLI11 wants the arguments in reverse order, and has exit codes and sentences of its own; ours replace
/// both.
void parseWith(CLI::App& app, std::vector<std::string> arguments, const Syntax& syntax,
               const Command* command) {
    std::ranges::reverse(arguments);
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ArgumentMismatch& error) {
        const std::string text = error.what();
        const std::string word = text.substr(0, text.find_first_of(": "));
        const std::string name =
            word.starts_with('-') ? word : "--" + word; // CLI11 leaves out a switch's dashes
        const CLI::Option* const option = app.get_option_no_throw(name);
        const bool isSwitch = option && option->get_items_expected_max() == 0;
        const Syntax::Option* const known = optionNamed(syntax, name);
        refuse(known ? known->names : name, isSwitch ? "takes no value" : "has no value", helpFor(command));
    } catch (const CLI::ParseError& error) {
        const std::string text = error.what();
        refuse(text.substr(0, text.find(':')), "cannot be understood", helpFor(command));
    }
    for (const std::string& unknown : app.remaining())
        if (unknown.starts_with('-') && unknown != "--") refuseUnknownOption(unknown, app, syntax, command);
}

/// "-o=FILE" as "-oFILE", as with the long name; no file whose name begins with "=" is meant.
void dropEqualSigns(std::vector<std::string>& arguments, const Syntax& syntax) {
    for (std::size_t at = 0; at < arguments.size() && arguments[at] != "--"; ++at) {
        std::string& argument = arguments[at];
        if (argument.size() < 3 || argument[0] != '-' || argument[1] == '-' || argument[2] != '=') continue;
        if (!takesValue(syntax, argument.substr(0, 2))) continue;
        const bool isEmpty = argument.size() == 3;
        argument.erase(2, 1);
        if (isEmpty) arguments.emplace(arguments.begin() + static_cast<std::ptrdiff_t>(++at));
    }
}

} // namespace

Invocation parseArguments(std::vector<std::string> arguments, const Commands& commands) {
    RawGlobals raw;
    Command* const command = takeCommand(arguments, commands, raw);
    const Syntax syntax = command ? command->syntax() : Syntax{};
    if (syntax.modules) *syntax.modules = takeModuleChain(arguments, syntax.groups);
    dropEqualSigns(arguments, syntax);

    CLI::App app;
    app.set_help_flag();
    app.allow_extras();
    for (const Syntax::Option& option : raw.switches())
        Collector::addSwitch(app, option.names, **std::get_if<bool*>(&option.target));
    for (const auto& [names, values] : raw.valued()) Collector::addValued(app, names, *values);
    Collector collector(app, syntax, command);
    parseWith(app, std::move(arguments), syntax, command);

    if (!raw.help && !raw.version) {
        if (!command) refuse("", "no command is given", helpFor(nullptr));
        checkGlobals(raw, command);
        collector.deliver();
    }
    return {std::move(raw.options), command, raw.help, raw.version};
}

} // namespace workbench
