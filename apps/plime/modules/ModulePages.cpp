// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModulePages.h"

#include "apps/plime/terminal/Text.h"

#include "ArcTangens.md.h"
#include "Blurred.md.h"
#include "CMYK.md.h"
#include "ColorGammaCorrection.md.h"
#include "CurveAdjust.md.h"
#include "DisplayDepth.md.h"
#include "GammaCorrection.md.h"
#include "HDRColoredToneMapping.md.h"
#include "HDRObjectDisplay.md.h"
#include "HDRToneMapping.md.h"
#include "HSVAdjust.md.h"
#include "PixelBlur.md.h"
#include "PixelContours.md.h"
#include "ProximityHDR.md.h"
#include "TileProgram.md.h"

#include <algorithm>
#include <array>
#include <regex>

namespace workbench {
namespace {

/// The plug-in that the pages are about.
constexpr std::string_view Plugin = "tovar_plime";
constexpr std::string_view TableBegin = "<!-- parameters -->\n", TableEnd = "<!-- end of parameters -->";

/// Takes the first line off the text.
std::string_view nextLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// Markdown without its marks: code and links become their texts.
std::string plain(std::string_view markdown) {
    static const std::regex link("\\[([^\\]]*)\\]\\([^)]*\\)");
    std::string text = std::regex_replace(std::string(markdown), link, "$1");
    std::erase(text, '`');
    return text;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// The cells of "| a | b |".
std::vector<std::string> cellsOf(std::string_view row) {
    std::vector<std::string> cells;
    row.remove_prefix(std::min(row.find('|') + 1, row.size()));
    for (std::size_t end; (end = row.find('|')) != std::string_view::npos; row.remove_prefix(end + 1))
        cells.push_back(plain(trimmed(row.substr(0, end))));
    return cells;
}

const std::array<ModulePage, 15>& pages() {
    static const std::array<ModulePage, 15> all = {
        readModulePage("docs/modules/ArcTangens.md", plime::text::ArcTangens::Body),
        readModulePage("docs/modules/Blurred.md", plime::text::Blurred::Body),
        readModulePage("docs/modules/CMYK.md", plime::text::CMYK::Body),
        readModulePage("docs/modules/ColorGammaCorrection.md", plime::text::ColorGammaCorrection::Body),
        readModulePage("docs/modules/CurveAdjust.md", plime::text::CurveAdjust::Body),
        readModulePage("docs/modules/DisplayDepth.md", plime::text::DisplayDepth::Body),
        readModulePage("docs/modules/GammaCorrection.md", plime::text::GammaCorrection::Body),
        readModulePage("docs/modules/HDRColoredToneMapping.md", plime::text::HDRColoredToneMapping::Body),
        readModulePage("docs/modules/HDRObjectDisplay.md", plime::text::HDRObjectDisplay::Body),
        readModulePage("docs/modules/HDRToneMapping.md", plime::text::HDRToneMapping::Body),
        readModulePage("docs/modules/HSVAdjust.md", plime::text::HSVAdjust::Body),
        readModulePage("docs/modules/PixelBlur.md", plime::text::PixelBlur::Body),
        readModulePage("docs/modules/PixelContours.md", plime::text::PixelContours::Body),
        readModulePage("docs/modules/ProximityHDR.md", plime::text::ProximityHDR::Body),
        readModulePage("docs/modules/TileProgram.md", plime::text::TileProgram::Body),
    };
    return all;
}

} // namespace

std::string ModulePage::sentence() const {
    const std::size_t end = std::min(summary.find(". "), summary.size());
    std::string first = summary.substr(0, end);
    if (first.ends_with('.')) first.pop_back();
    return first;
}

std::string ModulePage::meaningsText(std::size_t columns) const {
    std::size_t widest = 0;
    for (const auto& [name, meaning] : meanings) widest = std::max(widest, columnsOf(name));
    const std::size_t indent = widest + 4;
    std::string text;
    for (const auto& [name, meaning] : meanings)
        text += "  " + padded(name, widest) + "  " + wrapped(meaning, columns, indent).substr(indent);
    return text;
}

ModulePage readModulePage(std::string file, std::string_view markdown) {
    ModulePage page;
    page.file = std::move(file);
    for (const std::string_view words : {"NaN", "no numbers"})
        page.tellsOfNaN |= markdown.find(words) != std::string_view::npos;
    const std::size_t table = markdown.find(TableBegin);
    std::string_view rows = markdown.substr(std::min(table + TableBegin.size(), markdown.size()));
    rows = rows.substr(0, rows.find(TableEnd));
    const std::string_view heading = nextLine(markdown);
    page.key = trimmed(heading.substr(std::min(heading.find(' '), heading.size())));
    nextLine(markdown);
    for (std::string_view line = nextLine(markdown); !line.empty(); line = nextLine(markdown))
        page.summary += (page.summary.empty() ? "" : " ") + plain(line);
    nextLine(rows); // the names of the columns
    nextLine(rows); // the line below them
    while (!rows.empty())
        if (const std::vector<std::string> cells = cellsOf(nextLine(rows)); cells.size() > 1)
            page.meanings.emplace_back(cells.front(), cells.back());
    return page;
}

const ModulePage* pageOf(const CatalogueEntry& entry) {
    if (entry.plugin != Plugin) return nullptr;
    const auto isMeant = [&](const ModulePage& page) {
        return page.key == entry.key || page.key == entry.reference();
    };
    const auto found = std::ranges::find_if(pages(), isMeant);
    return found == pages().end() ? nullptr : &*found;
}

bool makesNaN(const CatalogueEntry& entry) {
    const ModulePage* const page = pageOf(entry);
    return page && page->tellsOfNaN;
}

} // namespace workbench
