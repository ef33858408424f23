// SPDX-License-Identifier: Apache-2.0
// plime help: how do I call it, and what does this module do?
#include "apps/plime/commandline/Help.h"
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commandline/Topics.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/modules/ModulePages.h"
#include "apps/plime/terminal/Html.h"
#include "apps/plime/terminal/Suggest.h"
#include "apps/plime/terminal/Text.h"

#include <algorithm>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime help [COMMAND|KEY[@SOURCE]|SUBJECT]

Without an argument, tells what the program can do. With a command, how it is
called. With the key of a module, what the module does, in the words of whoever
wrote it and in those of this host, and what its parameters mean. Subjects are

  environment   environment variables
  networks      how a picture is made, as a file
  points        the format of point lists
  shaders       shaders of your own

Examples:
  plime help describe
  plime help Hollywood/PixelBlur
  plime help points
)";

constexpr std::size_t WidestText = 100;
constexpr std::size_t UsualText = 80;

class HelpCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "help"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "explain a command, a module or a subject";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override { return {{}, {{"COMMAND|KEY|SUBJECT", &topic}}, nullptr, {}}; }

    int run(Session& session) override {
        session.streams().write(topic ? textOf(session, *topic) : programHelp(session.commands()));
        return 0;
    }

private:
    static std::string textOf(Session& session, const std::string& topic) {
        for (const auto& command : session.commands())
            if (command->name() == topic) return std::string(command->help());
        for (const Topic& subject : helpTopics())
            if (subject.name == topic) return std::string(subject.text);
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
        for (const Topic& subject : helpTopics()) known.emplace_back(subject.name);
        throw Failure(Fault::Usage, {topic,
                                     "is neither a command, nor the key of a module, nor a subject",
                                     "",
                                     "",
                                     didYouMean(topic, known, "See \"plime help\" and \"plime list\""),
                                     {}});
    }

    static std::string moduleHelp(const ModuleInstance& module, const std::string& reference,
                                  const Streams& streams) {
        const std::size_t columns =
            std::min(streams.columns() == 0 ? UsualText : streams.columns(), WidestText);
        const ModuleTexts texts = textsOf(module);
        const ModulePage* const page = pageOf(module.entry());
        std::string own;
        for (const auto& part : {texts.detailed, texts.brief})
            if (own.empty() && saysSomething(part)) own = printableLines(readableText(*part));
        if (own.empty() && !page) own = "The module has no text about itself.";
        return printable(reference) + '\n' + wrapped(own, columns, 2) +
               (page ? pageHelp(*page, !own.empty(), columns) : "") +
               "\nTypes, initial values and limits: plime describe " + printable(reference) + '\n';
    }

    static std::string pageHelp(const ModulePage& page, bool follows, std::size_t columns) {
        const std::string meanings = page.meaningsText(columns);
        return (follows ? "\n" : "") + wrapped("This host: " + page.summary, columns, 2) +
               (meanings.empty() ? "" : "\nParameters:\n" + meanings) +
               "\nFormula, example and what may surprise: " + page.file + '\n';
    }

    std::optional<std::string> topic;
};

} // namespace

std::unique_ptr<Command> makeHelpCommand() { return std::make_unique<HelpCommand>(); }

} // namespace workbench
