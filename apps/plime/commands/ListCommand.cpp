// SPDX-License-Identifier: Apache-2.0
// plime list: which modules are there?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/ModulePages.h"
#include "apps/plime/terminal/Html.h"
#include "apps/plime/terminal/Text.h"

#include <algorithm>
#include <map>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime list [--json]

Lists the modules of all plug-ins, grouped by category: the key that other
commands take, and what the module does. [host] marks the words of this host
for a module that says nothing itself. Where two modules share a key, the name
of the source is shown behind an "@"; KEY@SOURCE means just one of them.

  --json   an array in the order of registration, for scripts; null stands for
           what a module does not set

Examples:
  plime list
  plime list --json | jq -r '.[].key'
)";

/// What to show in one line: many modules have a placeholder in one of their texts, some in all.
std::string lineOf(const CatalogueEntry& entry) {
    for (const auto& text : {entry.brief, entry.help})
        if (saysSomething(text)) {
            const std::string readable = readableText(*text);
            return printable(readable.substr(0, readable.find('\n')));
        }
    if (const ModulePage* const page = pageOf(entry)) return page->sentence() + " [host]";
    return {};
}

/// The first part of a key, under which the module is listed.
std::string headingOf(const CatalogueEntry& entry) {
    const std::size_t stroke = entry.key.find('/');
    return stroke == std::string::npos ? "Other" : entry.key.substr(0, stroke);
}

std::string table(const Catalogue& catalogue, std::size_t columns) {
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> groups;
    std::size_t widest = 0;
    for (const CatalogueEntry& entry : catalogue.entries()) {
        const std::string reference = printable(catalogue.shortReference(entry));
        widest = std::max(widest, columnsOf(reference));
        groups[printable(headingOf(entry))].emplace_back(reference, lineOf(entry));
    }
    std::string text;
    for (auto& [heading, rows] : groups) {
        std::ranges::sort(rows);
        text += (text.empty() ? "" : "\n") + heading + '\n';
        for (const auto& [reference, line] : rows) {
            const std::string row =
                "  " + (line.empty() ? reference : padded(reference, widest) + "  " + line);
            text += shortened(row, columns) + '\n';
        }
    }
    return text;
}

class ListCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "list"; }
    [[nodiscard]] std::string_view purpose() const noexcept override { return "list all modules"; }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override { return {{{"--json", &asJson}}, {}, nullptr, {}}; }

    int run(Session& session) override {
        const Catalogue& catalogue = session.catalogue();
        if (catalogue.entries().empty())
            session.report().warning({"",
                                      "no module is there",
                                      "",
                                      "",
                                      "See \"plime doctor\" for the plug-ins that were tried",
                                      {}});
        session.streams().write(asJson ? json(catalogue) : table(catalogue, session.streams().columns()));
        return 0;
    }

private:
    static std::string json(const Catalogue& catalogue) {
        Json list = Json::array();
        for (const CatalogueEntry& entry : catalogue.entries()) list.push_back(toJson(entry));
        return document(list);
    }

    bool asJson = false;
};

} // namespace

std::unique_ptr<Command> makeListCommand() { return std::make_unique<ListCommand>(); }

} // namespace workbench
