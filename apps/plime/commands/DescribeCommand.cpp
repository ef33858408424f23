// SPDX-License-Identifier: Apache-2.0
// plime describe: what does a module do, and what can be set?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/modules/ModulePages.h"
#include "apps/plime/terminal/Html.h"
#include "apps/plime/terminal/Text.h"

#include <algorithm>
#include <array>

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime describe KEY[@SOURCE] [--json]

Shows what a module does, its parameters with type, initial value, limits and
meaning, what it can be connected to, and what it gives. Parameters with an
expert level above 0 are for special cases. Where two modules share a key, both
are shown.

  --json   an object for scripts; an array where two modules share the key

Examples:
  plime describe Display/CMYK
  plime describe Display/Depth@DisplayDepth
  plime describe Hollywood/PixelBlur --json | jq '.parameters[].name'
)";

constexpr std::size_t TextColumns = 80;
constexpr std::size_t LongestValue = 40;

using Row = std::array<std::string, 5>;

/// A value as one short piece; shader texts have many lines.
std::string valueText(const std::string& value) {
    const auto lines = std::ranges::count(value, '\n');
    if (lines > 0) return "(" + std::to_string(lines) + " lines, see --json)";
    return value.empty() ? "(empty)" : shortened(printable(value), LongestValue);
}

std::string limitsText(const krod::VParameter& parameter) {
    const auto least = parameter.property("min");
    const auto most = parameter.property("max");
    if (least && most) return printable(least->text() + " to " + most->text());
    if (least) return printable("at least " + least->text());
    return most ? printable("at most " + most->text()) : "";
}

/// Rows under a heading, each column as wide as its widest text; nothing without rows.
std::string table(const std::vector<Row>& rows) {
    if (rows.size() < 2) return {};
    std::array<std::size_t, 5> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], columnsOf(row[i]));
    std::string text = "\n";
    for (const Row& row : rows) {
        std::string line = " ";
        for (std::size_t i = 0; i < row.size(); ++i) line += ' ' + padded(row[i], widths[i]) + ' ';
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return text;
}

std::string descriptionOf(const ModuleInstance& module) {
    const ModuleTexts texts = textsOf(module);
    std::string text;
    std::string last;
    for (const auto& part : {texts.brief, texts.detailed}) {
        const std::string readable = saysSomething(part) ? printableLines(readableText(*part)) : "";
        if (readable.empty() || readable == last) continue;
        text += (text.empty() ? "" : "\n") + wrapped(readable, TextColumns, 2);
        last = readable;
    }
    if (const ModulePage* const page = pageOf(module.entry()))
        text += (text.empty() ? "" : "\n") + wrapped("This host: " + page->summary, TextColumns, 2);
    return text;
}

/// In the words of the module's page.
std::string meaningsOf(const CatalogueEntry& entry) {
    const ModulePage* const page = pageOf(entry);
    if (!page) return {};
    const std::string meanings = page->meaningsText(TextColumns);
    return (meanings.empty() ? "" : "\n  Meaning, as " + page->file + " says:\n" + meanings);
}

std::string describe(const ModuleInstance& module, const std::string& reference) {
    const CatalogueEntry& entry = module.entry();
    std::string text = printable(reference);
    if (entry.plugin) text += "  (plug-in " + printable(*entry.plugin) + ")";
    text += '\n' + descriptionOf(module);

    const krod::VSlotContainer& slots = module.object().slots();
    std::vector<Row> rows = {{"Parameter", "type", "value", "limits", "expert"}};
    for (const auto& [name, level, parameter] : slots.inputs())
        rows.push_back({printable(name), parameter->typeName(), valueText(parameter->value().text()),
                        limitsText(*parameter), level == 0 ? "" : std::to_string(level)});
    text += table(rows);
    text += meaningsOf(entry);
    rows = {{"Input", "type", "", "", ""}};
    for (const auto& [name, type] : slots.sinks()) rows.push_back({printable(name), type, "", "", ""});
    text += table(rows);
    rows = {{"Output", "type", "", "", ""}};
    for (const auto& [name, parameter] : slots.outputs())
        rows.push_back({printable(name), parameter->typeName(), "", "", ""});
    return text + table(rows);
}

class DescribeCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "describe"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "show a module's parameters and texts";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        return {{{"--json", &asJson}}, {{"KEY[@SOURCE]", &key}}, nullptr, {}};
    }

    int run(Session& session) override {
        const Catalogue& catalogue = session.catalogue();
        Json objects = Json::array();
        std::string text;
        for (const CatalogueEntry& entry : catalogue.find(key)) {
            const ModuleInstance module(entry);
            if (asJson)
                objects.push_back(toJson(module));
            else
                text += (text.empty() ? "" : "\n") + describe(module, catalogue.shortReference(entry));
        }
        if (asJson) text = document(objects.size() == 1 ? objects[0] : objects);
        session.streams().write(text);
        return 0;
    }

private:
    std::string key;
    bool asJson = false;
};

} // namespace

std::unique_ptr<Command> makeDescribeCommand() { return std::make_unique<DescribeCommand>(); }

} // namespace workbench
