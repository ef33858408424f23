// SPDX-License-Identifier: Apache-2.0
// plime help: how do I call it, and what does this module do?
#include "apps/plime/commandline/Help.h"
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/terminal/Html.h"
#include "apps/plime/terminal/Suggest.h"
#include "apps/plime/terminal/Text.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime help [COMMAND|KEY[@SOURCE]]

Without an argument, tells what the program can do. With a command, how it is
called. With the key of a module, what the module does, in the words of whoever
wrote it.

Examples:
  plime help describe
  plime help Hollywood/PixelBlur
)";

constexpr std::size_t WidestText = 100;
constexpr std::size_t UsualText = 80;

class HelpCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "help"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "explain a command or a module";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override { return {{}, {{"COMMAND|KEY", &topic}}, nullptr, {}}; }

    int run(Session& session) override {
        session.streams().write(topic ? textOf(session, *topic) : programHelp(session.commands()));
        return 0;
    }

private:
    static std::string textOf(Session& session, const std::string& topic) {
        for (const auto& command : session.commands())
            if (command->name() == topic) return std::string(command->help());
        const Catalogue& catalogue = session.catalogue();
        const std::vector<std::string> keys = catalogue.references();
        if (std::ranges::find(keys, topic.substr(0, topic.find('@'))) == keys.end())
            refuse(session, topic, keys);
        std::string text;
        for (const CatalogueEntry& entry : catalogue.find(topic))
            text += (text.empty() ? "" : "\n") +
                    moduleHelp(ModuleInstance(entry), catalogue.shortReference(entry), session.streams());
        return text;
    }

    [[noreturn]] static void refuse(const Session& session, const std::string& topic,
                                    std::vector<std::string> known) {
        for (const auto& command : session.commands()) known.emplace_back(command->name());
        throw Failure(Fault::Usage, {topic,
                                     "is neither a command nor the key of a module",
                                     "",
                                     "",
                                     didYouMean(topic, known, "See \"plime help\" and \"plime list\""),
                                     {}});
    }

    static std::string moduleHelp(const ModuleInstance& module, const std::string& reference,
                                  const Streams& streams) {
        const ModuleTexts texts = textsOf(module);
        std::string text;
        for (const auto& part : {texts.detailed, texts.brief})
            if (text.empty() && saysSomething(part)) text = printableLines(readableText(*part));
        if (text.empty()) text = "The module has no text about itself.";
        const std::size_t columns = streams.columns() == 0 ? UsualText : streams.columns();
        return printable(reference) + '\n' + wrapped(text, std::min(columns, WidestText), 2) +
               "\nIts parameters: plime describe " + printable(reference) + '\n';
    }

    std::optional<std::string> topic;
};

} // namespace

std::unique_ptr<Command> makeHelpCommand() { return std::make_unique<HelpCommand>(); }

} // namespace workbench
